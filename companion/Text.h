#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace companion {

// Texts that came from strangers, and how to show them. Pure functions.

/// Takes one code point off the front of UTF-8 `text`. Where its bytes are ill-formed, takes one byte and
/// gives nothing. `text` is not empty.
std::optional<char32_t> takeCodePoint(std::string_view& text);

bool isUtf8(std::string_view text);

/// Whether a code point shows nothing of its own or changes how its neighbours are shown: controls, line
/// breaks, changes of writing direction, blanks without width. (Joiners are not among them: scripts and emoji
/// need them.)
bool isInvisible(char32_t codePoint);

/// "U+202E"
std::string codePointName(char32_t codePoint);

/// `text` in double quotes as a part of one line: what is invisible or ill-formed is named, and what is
/// longer than 60 code points is cut.
std::string inQuotes(std::string_view text);

}  // namespace companion
