#pragma once

#include <string>
#include <vector>

#include "simulator/flow/Flow.h"

namespace simulator {

/// What in a flow, and in those that it runs, another tool for flows would not take, as far as is known here: commands,
/// fields and forms that are this simulator's own. In the order of the steps: "f.yaml:4: shake: …".
std::vector<std::string> portabilityProblems(const Flow& flow);

}  // namespace simulator
