#include "simulator/phone/TextPattern.h"

#include <re2/re2.h>

namespace simulator {
namespace {

re2::RE2::Options options() {
  re2::RE2::Options options;
  options.set_case_sensitive(false);
  options.set_dot_nl(true);
  options.set_log_errors(false);
  return options;
}

}  // namespace

TextPattern::TextPattern(std::string text) : text_(std::move(text)) {
  if (text_.find_first_of("\\.[](){}*+?|^$") != std::string::npos) compile();
}

void TextPattern::compile() const {
  expression_ = std::make_shared<const re2::RE2>(text_, options());
}

bool TextPattern::matches(const std::string& candidate) const {
  if (isExactly(candidate)) return true;
  // A plain text needs an expression only for letters in another case.
  if (!expression_ && text_.size() <= candidate.size() * 4 && candidate.size() <= text_.size() * 4) compile();
  return expression_ && expression_->ok() && re2::RE2::FullMatch(candidate, *expression_);
}

bool TextPattern::isExpression() const {
  return !expression_ || expression_->ok();
}

std::string TextPattern::problem() const {
  if (!expression_) return {};
  switch (expression_->error_code()) {
    case re2::RE2::ErrorInternal:
    case re2::RE2::ErrorBadPerlOp:
    case re2::RE2::ErrorRepeatSize:
    case re2::RE2::ErrorPatternTooLarge:
      return expression_->error();
    default:
      return {};
  }
}

}  // namespace simulator
