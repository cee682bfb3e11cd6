#pragma once

#include <string_view>

namespace ios {

/// Stops the process with `message` on standard error. For a caller's mistake that has no meaning to go on
/// with: a selector that its target lacks, a synchronous submission that can never run. Never for bad input.
[[noreturn]] void programmingError(std::string_view message);

}  // namespace ios
