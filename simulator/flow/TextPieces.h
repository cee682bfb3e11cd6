#pragma once

#include <optional>
#include <string>
#include <vector>

namespace simulator {

/// A piece of a text as a flow has it: "Hello ${NAME}" is a plain text and an expression.
struct TextPiece {
  std::string text;
  bool isExpression = false;
};

/// The pieces, in order; "\${" is a plain "${". Empty when an expression has no end.
std::optional<std::vector<TextPiece>> textPieces(const std::string& text);
/// Whether it is a name and nothing else.
bool isName(const std::string& expression);

}  // namespace simulator
