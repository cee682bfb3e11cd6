#pragma once

#include <string_view>

namespace ios {

/// Writes `text` to standard output in one operation, behind whatever the process's own buffers hold. Any
/// thread; texts of several threads do not mix. Nothing happens where nobody reads any more.
void print(std::string_view text);

/// The same for a line to standard error; the end of the line is added.
void NSLog(std::string_view line);

}  // namespace ios
