#pragma once

#include <filesystem>

namespace simulator {

/// `simulator phone …`: the phone in a browser, until it is switched off. `executable` is this program; the arguments
/// begin with "phone". The result is the process's exit status.
int runPhoneCommand(int argc, char** argv, const std::filesystem::path& executable);

}  // namespace simulator
