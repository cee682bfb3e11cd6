#include "simulator/flow/TextPieces.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace simulator {
namespace {

/// Where the brace is that ends the expression beginning at `start`: braces and quotes within it are its own.
std::size_t endOfExpression(const std::string& text, std::size_t start) {
  int depth = 0;
  char quote = 0;
  for (std::size_t at = start; at < text.size(); ++at) {
    const char c = text[at];
    if (quote) {
      if (c == '\\') {
        ++at;
      } else if (c == quote) {
        quote = 0;
      }
    } else if (c == '"' || c == '\'') {
      quote = c;
    } else if (c == '{') {
      ++depth;
    } else if (c == '}' && depth-- == 0) {
      return at;
    }
  }
  return std::string::npos;
}

std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t\n"), last = text.find_last_not_of(" \t\n");
  return first == std::string::npos ? "" : text.substr(first, last - first + 1);
}

}  // namespace

std::optional<std::vector<TextPiece>> textPieces(const std::string& text) {
  std::vector<TextPiece> pieces;
  std::string plain;
  for (std::size_t at = 0; at < text.size();) {
    if (text.compare(at, 3, "\\${") == 0) {
      plain += "${";
      at += 3;
    } else if (text.compare(at, 2, "${") == 0) {
      const std::size_t end = endOfExpression(text, at + 2);
      if (end == std::string::npos) return std::nullopt;
      if (!plain.empty()) pieces.push_back({std::exchange(plain, {}), false});
      pieces.push_back({trimmed(text.substr(at + 2, end - at - 2)), true});
      at = end + 1;
    } else {
      plain += text[at++];
    }
  }
  if (!plain.empty()) pieces.push_back({plain, false});
  return pieces;
}

bool isName(const std::string& expression) {
  return !expression.empty() && !std::isdigit(static_cast<unsigned char>(expression.front())) &&
         std::all_of(expression.begin(), expression.end(),
                     [](unsigned char c) { return std::isalnum(c) || c == '_' || c == '$'; });
}

}  // namespace simulator
