#pragma once

#include <string_view>

namespace ios {

/// Writes all of `text` to standard output, or to standard error, behind what the process's own buffers hold.
/// Where nobody reads any more nothing happens, no signal either: that is no business of whoever prints. Any
/// thread; texts of several threads do not mix.
void writeOutput(std::string_view text);
void writeErrors(std::string_view text);

}  // namespace ios
