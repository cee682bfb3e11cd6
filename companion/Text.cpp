#include "Text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <utility>

namespace companion {

bool isInvisible(char32_t codePoint) {
  static constexpr std::array<std::pair<char32_t, char32_t>, 12> kRanges = {{
      {0x0000, 0x001F},    // controls
      {0x007F, 0x009F},    // delete, and the second set of controls
      {0x00AD, 0x00AD},    // soft hyphen
      {0x061C, 0x061C},    // Arabic letter mark
      {0x180E, 0x180E},    // Mongolian vowel separator
      {0x200B, 0x200B},    // zero-width blank
      {0x200E, 0x200F},    // direction marks
      {0x2028, 0x202E},    // line and paragraph separator, direction embeddings and overrides
      {0x2060, 0x206F},    // word joiner, invisible operators, direction isolates
      {0xFEFF, 0xFEFF},    // byte order mark
      {0xFFF9, 0xFFFB},    // annotations
      {0xE0001, 0xE0001},  // language tag
  }};
  return std::any_of(kRanges.begin(), kRanges.end(), [&](const auto& range) {
    return codePoint >= range.first && codePoint <= range.second;
  });
}

std::string codePointName(char32_t codePoint) {
  char name[16];
  std::snprintf(name, sizeof name, "U+%04X", static_cast<unsigned>(codePoint));
  return name;
}

std::string inQuotes(std::string_view text) {
  constexpr int kLongest = 60;
  std::string result = "\"";
  for (int shown = 0; !text.empty(); ++shown) {
    if (shown == kLongest) {
      result += "…";
      break;
    }
    const std::string_view before = text;
    const auto codePoint = takeCodePoint(text);
    if (!codePoint) {
      char name[8];
      std::snprintf(name, sizeof name, "<%02X>", static_cast<std::uint8_t>(before[0]));
      result += name;
    } else if (isInvisible(*codePoint)) {
      result += "<" + codePointName(*codePoint) + ">";
    } else {
      result += before.substr(0, before.size() - text.size());
    }
  }
  return result + "\"";
}

}  // namespace companion
