#pragma once

namespace simulator {

/// `check`: reads flows, and plays nothing. `arguments` begin with the command's own name. What to end with.
int runCheckCommand(int count, char** arguments);

}  // namespace simulator
