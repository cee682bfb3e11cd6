#pragma once

#include <string>
#include <string_view>

namespace ios {

/// Appends `character` as UTF-8; U+FFFD in place of a surrogate or a number that is no character.
void appendUTF8(std::string& text, char32_t character);

bool isUTF8(std::string_view bytes);

/// `bytes` with U+FFFD in place of each sequence that is not UTF-8.
std::string repairedUTF8(std::string_view bytes);

/// UTF-16 bytes as UTF-8; U+FFFD in place of lone surrogates and of half a unit at the end.
std::string utf8FromUTF16(std::string_view bytes, bool bigEndian);

}  // namespace ios
