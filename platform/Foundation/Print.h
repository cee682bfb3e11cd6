#pragma once

#include <string_view>

namespace ios {

/// Writes `text` to standard output in one operation, after whatever the process's own buffers hold. Any
/// thread; output of several threads does not mix. Does nothing when nobody reads it any more.
void print(std::string_view text);

/// The same for a line to standard error; the end of the line is added.
void NSLog(std::string_view line);

}  // namespace ios
