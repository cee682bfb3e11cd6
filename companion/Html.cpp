#include "Html.h"

#include <cstdint>
#include <cstdio>

#include "Style.h"
#include "Text.h"

namespace companion {
namespace {

constexpr std::string_view kReplacement = "\uFFFD";

std::string_view entityOf(char32_t codePoint) {
  switch (codePoint) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\'':
      return "&#39;";
    default:
      return {};
  }
}

template <typename NameInvisible>
std::string escapedWith(std::string_view text, NameInvisible nameInvisible) {
  std::string result;
  while (!text.empty()) {
    const std::string_view before = text;
    const auto codePoint = takeCodePoint(text);
    if (!codePoint) {
      result += kReplacement;
    } else if (isInvisible(*codePoint)) {
      result += nameInvisible(*codePoint);
    } else if (const auto entity = entityOf(*codePoint); !entity.empty()) {
      result += entity;
    } else {
      result += before.substr(0, before.size() - text.size());
    }
  }
  return result;
}

}  // namespace

std::string escaped(std::string_view text) {
  return escapedWith(text, [](char32_t) { return kReplacement; });
}

std::string shown(std::string_view text) {
  return "<bdi>" +
         escapedWith(text,
                     [](char32_t codePoint) {
                       return "<span class=\"code\">" + codePointName(codePoint) + "</span>";
                     }) +
         "</bdi>";
}

std::string sizeText(std::uintmax_t bytes) {
  char text[32];
  if (bytes < 1000) {
    std::snprintf(text, sizeof text, "%d bytes", static_cast<int>(bytes));
  } else if (bytes < 999'500) {
    std::snprintf(text, sizeof text, "%.0f KB", static_cast<double>(bytes) / 1e3);
  } else {
    std::snprintf(text, sizeof text, "%.1f MB", static_cast<double>(bytes) / 1e6);
  }
  return text;
}

std::string page(std::string_view title, std::string_view body) {
  std::string result = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="script-src 'none'; object-src 'none'; base-uri 'none'; form-action 'none'">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
)";
  result += "<title>" + escaped(title) + "</title>\n<style>\n" + std::string(kStyle) +
            "</style>\n</head>\n<body>\n";
  result += body;
  return result + "</body>\n</html>\n";
}

}  // namespace companion
