#pragma once

#include <memory>
#include <string>
#include <vector>

#include "simulator/verbs/Verb.h"

namespace simulator {

/// The verb that a command line asks for, with its values. Empty when it asks for help, which is printed. Throws a
/// Refusal of the kind `usage` that says what is wrong with it.
std::unique_ptr<Verb> readCommand(const std::vector<std::string>& words);

}  // namespace simulator
