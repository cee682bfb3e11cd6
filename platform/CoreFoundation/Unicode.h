#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ios {

/// Takes one code point off the front of UTF-8 `text`, which is not empty. Where its bytes are ill-formed,
/// takes one byte and returns nothing.
std::optional<char32_t> takeCodePoint(std::string_view& text);

/// Appends `codePoint` as UTF-8; U+FFFD in place of a surrogate or a number that is not a code point.
void appendUTF8(std::string& text, char32_t codePoint);

bool isUTF8(std::string_view bytes);

/// `bytes` with U+FFFD in place of each byte that does not belong to a well-formed sequence.
std::string repairedUTF8(std::string_view bytes);

/// UTF-16 bytes as UTF-8; U+FFFD in place of lone surrogates and of half a unit at the end.
std::string utf8FromUTF16(std::string_view bytes, bool bigEndian);

}  // namespace ios
