#include "UIKit/Private/AlertRow.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "UIKit/Private/Chrome.h"
#include "UIKit/UILabel.h"

namespace ios {

namespace {
constexpr CGFloat kSide = 12;
constexpr CGFloat kAboveAndBelow = 10;
constexpr CGFloat kSmallestScale = 0.6;
}  // namespace

AlertRow::AlertRow(const std::shared_ptr<UIAlertAction>& action, const UIFont& font)
    : action_(action), label_(std::make_shared<UILabel>()), fullSize_(font.pointSize()) {
  label_->setText(action->title());
  label_->setFont(fontOfSize(fullSize_));
  const bool destructive = action->style() == UIAlertActionStyle::destructive;
  label_->setTextColor(UIColor::colorWithHex(destructive ? chrome::kDestructive : chrome::kTint));
  label_->setTextAlignment(TextAlignment::center);
  label_->setMinimumScaleFactor(kSmallestScale);
  addSubview(label_);
  oneLine_ = label_->sizeThatFits({0, 0});
  if (chrome::isAccessibilityTextSize()) {
    label_->setNumberOfLines(0);
    longestWord_ = longestWord();
  }
}

std::shared_ptr<UIFont> AlertRow::fontOfSize(CGFloat size) const {
  return isCancel() ? UIFont::boldSystemFontOfSize(size) : UIFont::systemFontOfSize(size);
}

CGFloat AlertRow::longestWord() const {
  UILabel measure;
  measure.setFont(label_->font());
  CGFloat longest = 0;
  std::istringstream words(action_->title());
  for (std::string word; words >> word;) {
    measure.setText(word);
    longest = std::max(longest, measure.sizeThatFits({0, 0}).width);
  }
  return longest;
}

CGFloat AlertRow::naturalWidth() const {
  return oneLine_.width + 2 * kSide;
}

CGFloat AlertRow::fit(CGFloat width) {
  const CGFloat room = width - 2 * kSide;
  CGFloat height = oneLine_.height;
  if (longestWord_ > 0 && oneLine_.width > room) {
    label_->setFont(fontOfSize(std::floor(fullSize_ * std::clamp(room / longestWord_, kSmallestScale, 1.0))));
    height = label_->sizeThatFits({room, 0}).height;
  }
  return std::ceil(height) + 2 * kAboveAndBelow;
}

void AlertRow::setHighlighted(bool highlighted) {
  UIControl::setHighlighted(highlighted);
  setBackgroundColor(highlighted ? UIColor::colorWithHex(chrome::kPressed) : nullptr);
}

void AlertRow::layoutSubviews() {
  label_->setFrame(CGRectInset({{0, 0}, bounds().size}, kSide, 0));
}

}  // namespace ios
