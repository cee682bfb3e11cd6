#include <algorithm>
#include <cctype>
#include <optional>
#include <string_view>

#include "CoreFoundation/PropertyList.h"
#include "CoreFoundation/Unicode.h"
#include "Foundation/Private/StringsTable.h"

namespace ios {
namespace {

class Parser {
 public:
  Parser(std::string_view text, StringsTable& table) : text_(text), table_(table) {}

  void parse() {
    while (skipBlanks() && !atEnd()) {
      auto key = token();
      if (!key || !skipBlanks()) return;
      std::string value = *key;  // `key;` stands for itself
      if (take('=')) {
        if (!skipBlanks()) return;
        auto text = token();
        if (!text || !skipBlanks()) return;
        value = std::move(*text);
      }
      if (!take(';')) return fail("expected \";\" after \"" + key->substr(0, 60) + "\"");
      table_.texts.emplace(std::move(*key), std::move(value));
    }
  }

 private:
  bool atEnd() const { return at_ >= text_.size(); }
  char peek(std::size_t ahead = 0) const { return at_ + ahead < text_.size() ? text_[at_ + ahead] : '\0'; }
  bool take(char c) {
    if (atEnd() || text_[at_] != c) return false;
    ++at_;
    return true;
  }

  void fail(const std::string& what) { failAt(at_, what); }
  void failAt(std::size_t at, const std::string& what) {
    const auto end = text_.begin() + static_cast<std::ptrdiff_t>(std::min(at, text_.size()));
    table_.problem = std::to_string(1 + std::count(text_.begin(), end, '\n')) + ": " + what;
  }

  /// False when a comment has no end.
  bool skipBlanks() {
    for (;;) {
      while (!atEnd() && std::isspace(static_cast<unsigned char>(text_[at_]))) ++at_;
      if (peek() == '/' && peek(1) == '/') {
        at_ = std::min(text_.find('\n', at_), text_.size());
      } else if (peek() == '/' && peek(1) == '*') {
        const auto end = text_.find("*/", at_ + 2);
        if (end == std::string_view::npos) {
          fail("a comment has no end");
          return false;
        }
        at_ = end + 2;
      } else {
        return true;
      }
    }
  }

  std::optional<std::string> token() {
    if (take('"')) return quoted();
    const std::size_t start = at_;
    const auto isPlain = [](char c) {
      return std::isalnum(static_cast<unsigned char>(c)) ||
             (c && std::string_view("_$:./-").find(c) != std::string_view::npos);
    };
    while (isPlain(peek())) ++at_;
    if (at_ > start) return std::string(text_.substr(start, at_ - start));
    fail(atEnd() ? "the file ends where a string is expected" : "expected a quoted string");
    return std::nullopt;
  }

  std::optional<std::string> quoted() {
    const std::size_t start = at_ - 1;
    std::string text;
    while (!atEnd()) {
      const char c = text_[at_++];
      if (c == '"') return text;
      if (c != '\\') {
        text += c;
      } else if (!escape(text)) {
        return std::nullopt;
      }
    }
    failAt(start, "a string has no closing quote");
    return std::nullopt;
  }

  bool escape(std::string& text) {
    const char c = peek();
    ++at_;
    switch (c) {
      case 'n':
        text += '\n';
        return true;
      case 't':
        text += '\t';
        return true;
      case 'r':
        text += '\r';
        return true;
      case 'U':
      case 'u': {
        auto character = unit();
        if (!character) return false;
        if (*character >= 0xD800 && *character <= 0xDBFF && peek() == '\\' &&
            (peek(1) == 'U' || peek(1) == 'u')) {
          at_ += 2;
          const auto low = unit();
          if (!low) return false;
          character = 0x10000 + ((*character - 0xD800) << 10) + (*low - 0xDC00);
        }
        appendUTF8(text, *character);
        return true;
      }
      default:
        text += c;
        return true;
    }
  }

  /// The four hexadecimal digits of an escape.
  std::optional<char32_t> unit() {
    char32_t value = 0;
    for (int i = 0; i < 4; ++i) {
      const char c = peek();
      if (!std::isxdigit(static_cast<unsigned char>(c))) {
        fail("\"\\U\" takes four hexadecimal digits");
        return std::nullopt;
      }
      value = value * 16 + static_cast<char32_t>(
                               std::isdigit(static_cast<unsigned char>(c)) ? c - '0' : (c | 0x20) - 'a' + 10);
      ++at_;
    }
    return value;
  }

  std::string_view text_;
  StringsTable& table_;
  std::size_t at_ = 0;
};

StringsTable fromPropertyList(std::span<const std::uint8_t> bytes) {
  StringsTable table;
  std::string problem;
  const auto list = PropertyList::parse(bytes, &problem);
  if (!list || !list->dictionary()) {
    table.problem = "1: " + (list ? "is not a dictionary" : problem);
    return table;
  }
  for (const auto& [key, value] : *list->dictionary()) {
    if (value.text()) table.texts.emplace(key, *value.text());
  }
  return table;
}

}  // namespace

StringsTable readStringsTable(std::span<const std::uint8_t> bytes) {
  std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  if (text.starts_with("bplist") || text.starts_with("<?xml")) return fromPropertyList(bytes);
  std::string converted;
  if (text.starts_with("\xFE\xFF") || text.starts_with("\xFF\xFE")) {
    converted = utf8FromUTF16(text.substr(2), text.front() == '\xFE');
    text = converted;
  } else if (text.starts_with("\xEF\xBB\xBF")) {
    text.remove_prefix(3);
  }
  StringsTable table;
  if (!isUTF8(text)) {
    converted = repairedUTF8(text);
    Parser(converted, table).parse();
    if (table.problem.empty()) table.problem = "1: has bytes that are not UTF-8";
  } else {
    Parser(text, table).parse();
  }
  return table;
}

}  // namespace ios
