#include "CoreFoundation/Unicode.h"

#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace ios {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

}  // namespace

std::optional<char32_t> takeCodePoint(std::string_view& text) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  std::size_t length = 0;
  UChar32 codePoint = -1;
  U8_NEXT(bytes, length, text.size(), codePoint);
  if (codePoint < 0) {
    text.remove_prefix(1);
    return std::nullopt;
  }
  text.remove_prefix(length);
  return static_cast<char32_t>(codePoint);
}

void appendUTF8(std::string& text, char32_t codePoint) {
  if (codePoint > 0x10FFFF || U_IS_SURROGATE(codePoint)) codePoint = kReplacement;
  std::array<char, U8_MAX_LENGTH> bytes{};
  std::size_t length = 0;
  U8_APPEND_UNSAFE(bytes, length, codePoint);
  text.append(bytes.data(), length);
}

bool isUTF8(std::string_view bytes) {
  while (!bytes.empty()) {
    if (!takeCodePoint(bytes)) return false;
  }
  return true;
}

std::string repairedUTF8(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  while (!bytes.empty()) appendUTF8(text, takeCodePoint(bytes).value_or(kReplacement));
  return text;
}

std::string utf8FromUTF16(std::string_view bytes, bool bigEndian) {
  std::u16string units;
  units.reserve(bytes.size() / 2);
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const auto first = static_cast<std::uint8_t>(bytes[i]), second = static_cast<std::uint8_t>(bytes[i + 1]);
    units += static_cast<char16_t>(bigEndian ? first << 8 | second : second << 8 | first);
  }
  std::string text;
  for (std::size_t i = 0; i < units.size();) {
    char32_t codePoint = 0;
    U16_NEXT(units, i, units.size(), codePoint);
    appendUTF8(text, codePoint);
  }
  if (bytes.size() % 2 != 0) appendUTF8(text, kReplacement);
  return text;
}

}  // namespace ios
