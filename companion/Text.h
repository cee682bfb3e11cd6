#pragma once

#include <string>
#include <string_view>

#include "CoreFoundation/Unicode.h"

namespace companion {

// Untrusted text, and how to show it. Pure functions.

using ios::isUTF8;
using ios::takeCodePoint;

/// Whether a code point shows nothing of its own or changes how its neighbours are shown: controls,
/// line breaks, changes of writing direction, blanks without width. (Joiners are not among them:
/// scripts and emoji need them.)
bool isInvisible(char32_t codePoint);

/// "U+202E"
std::string codePointName(char32_t codePoint);

/// `text` in double quotes as a part of one line: what is invisible or ill-formed is named, and what is
/// longer than 60 code points is cut.
std::string inQuotes(std::string_view text);

}  // namespace companion
