#pragma once

#include <string_view>

namespace ios {

/// Writes `text` to standard output in one operation, behind whatever the process's own buffers hold. Any
/// thread; texts of several threads do not mix.
void print(std::string_view text);

}  // namespace ios
