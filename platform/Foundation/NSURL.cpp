#include "Foundation/NSURL.h"

#include <cctype>
#include <string_view>

namespace ios {
namespace {

bool isHexadecimal(char c) {
  return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

/// RFC 3986's five parts, undecoded.
struct Parts {
  std::string_view scheme, authority, path, query, fragment;
};

Parts split(std::string_view text) {
  Parts parts;
  const auto colon = text.find_first_of(":/?#");
  if (colon != std::string_view::npos && text[colon] == ':' &&
      std::isalpha(static_cast<unsigned char>(text[0]))) {
    const auto isSchemeCharacter = [](char c) {
      return std::isalnum(static_cast<unsigned char>(c)) || c == '+' || c == '-' || c == '.';
    };
    bool isScheme = true;
    for (const char c : text.substr(0, colon)) isScheme = isScheme && isSchemeCharacter(c);
    if (isScheme) {
      parts.scheme = text.substr(0, colon);
      text.remove_prefix(colon + 1);
    }
  }
  if (const auto hash = text.find('#'); hash != std::string_view::npos) {
    parts.fragment = text.substr(hash + 1);
    text = text.substr(0, hash);
  }
  if (const auto mark = text.find('?'); mark != std::string_view::npos) {
    parts.query = text.substr(mark + 1);
    text = text.substr(0, mark);
  }
  if (text.starts_with("//")) {
    text.remove_prefix(2);
    const auto slash = text.find('/');
    parts.authority = text.substr(0, slash);
    text = slash == std::string_view::npos ? std::string_view() : text.substr(slash);
  }
  parts.path = text;
  return parts;
}

std::string decoded(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size()) {
      result += static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16));
      i += 2;
    } else {
      result += text[i];
    }
  }
  return result;
}

}  // namespace

std::optional<NSURL> NSURL::URLWithString(const std::string& text) {
  if (text.empty()) return std::nullopt;
  int open = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    constexpr std::string_view kNever = "\"<>\\^`{|}";
    if (c <= ' ' || c > '~' || kNever.find(c) != std::string_view::npos) return std::nullopt;
    if (c == '%' && !(i + 2 < text.size() && isHexadecimal(text[i + 1]) && isHexadecimal(text[i + 2]))) {
      return std::nullopt;
    }
    if (c == '[' && ++open > 1) return std::nullopt;
    if (c == ']' && --open < 0) return std::nullopt;
  }
  if (open != 0) return std::nullopt;
  return NSURL(text);
}

NSURL NSURL::fileURLWithPath(const std::filesystem::path& path) {
  std::error_code error;
  std::string text = "file://";
  for (const char c : std::filesystem::absolute(path, error).string()) {
    constexpr std::string_view kKept = "-._~!$&'()*+,=:@/";
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80 && (std::isalnum(byte) || kKept.find(c) != std::string_view::npos)) {
      text += c;
    } else {
      text += {'%', kDigits[byte >> 4], kDigits[byte & 0x0F]};
    }
  }
  return NSURL(text);
}

std::string NSURL::scheme() const {
  return std::string(split(text_).scheme);
}

std::string NSURL::host() const {
  std::string_view host = split(text_).authority;
  if (const auto at = host.rfind('@'); at != std::string_view::npos) host.remove_prefix(at + 1);
  if (host.starts_with('[')) return std::string(host.substr(1, host.find(']') - 1));
  return decoded(host.substr(0, host.rfind(':')));
}

std::string NSURL::path() const {
  return decoded(split(text_).path);
}

std::string NSURL::query() const {
  return std::string(split(text_).query);
}

}  // namespace ios
