#pragma once

#include <string>

namespace tellvane {

/// The entry for `key` of the library's string table, in the user's language; the key itself when there
/// is none. Any thread.
std::string localizedText(const std::string& key);

}  // namespace tellvane
