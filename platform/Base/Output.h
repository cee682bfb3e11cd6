#pragma once

#include <string_view>

namespace ios {

/// Writes all of `text` to standard output or to standard error, after what the process's own buffers hold. Without a
/// reader at the other end nothing happens, and no signal is raised: a missing reader does not concern the writer. Any
/// thread; output of several threads does not mix.
void writeOutput(std::string_view text);
void writeErrors(std::string_view text);

}  // namespace ios
