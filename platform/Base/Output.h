#pragma once

#include <string_view>

namespace ios {

/// Writes all of `text` to standard output or to standard error, after what the process's own buffers hold.
/// Without a reader at the other end nothing happens, and no signal is raised: that is not the concern of
/// whoever prints. Any thread; texts of several threads do not mix.
void writeOutput(std::string_view text);
void writeErrors(std::string_view text);

}  // namespace ios
