#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>

namespace ios {

/// A table of localised texts by key.
struct StringsTable {
  std::map<std::string, std::string> texts;
  /// Empty, or what is wrong, beginning with the line ("12: expected ;"); then `texts` has the entries
  /// before it.
  std::string problem;
};

/// Reads a `.strings` file: `"key" = "value";` with comments, in UTF-8 or UTF-16 with a byte order mark, or a property
/// list of strings.
StringsTable readStringsTable(std::span<const std::uint8_t> bytes);

}  // namespace ios
