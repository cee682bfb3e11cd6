#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace companion {

// Pieces of the pages. A page is one file: its style is in it, it runs no script, and it asks for nothing but
// the files of the inbox.

/// `text` where markup cannot stand: an attribute's value, a title. What is invisible or
/// ill-formed becomes U+FFFD.
std::string escaped(std::string_view text);

/// `text` as content, kept apart from the writing direction around it. What is invisible
/// is shown by its name.
std::string shown(std::string_view text);

/// "143 KB", in thousands as file managers count.
std::string sizeText(std::uintmax_t bytes);

/// A whole page. `title` is plain text, `body` is markup.
std::string page(std::string_view title, std::string_view body);

}  // namespace companion
