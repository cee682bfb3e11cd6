#pragma once

#include <string_view>

namespace ios {

/// Stops the process with `message` on standard error. For a caller's mistake after which it makes no sense to
/// continue: a selector that its target lacks, a synchronous submission that can never run. Never for bad input.
[[noreturn]] void programmingError(std::string_view message);

}  // namespace ios
