#pragma once

#include <memory>
#include <string>

namespace re2 {
class RE2;
}

namespace simulator {

/// A text to look for: the text itself, or else a regular expression that matches all of it, ignoring case. A
/// text that is not a regular expression ("Save (") stands for itself alone. Main thread.
class TextPattern {
 public:
  TextPattern() = default;
  explicit TextPattern(std::string text);
  const std::string& text() const { return text_; }
  bool isExactly(const std::string& candidate) const { return candidate == text_; }
  bool matches(const std::string& candidate) const;
  /// Whether it is a regular expression at all.
  bool isExpression() const;
  /// What is wrong with an expression that cannot have been meant as a plain text: it is too large, or uses features
  /// that no linear-time matcher has. Empty if nothing is wrong.
  std::string problem() const;

 private:
  void compile() const;
  std::string text_;
  mutable std::shared_ptr<const re2::RE2> expression_;
};

}  // namespace simulator
