#include "UIKit/AlertRow+Private.h"

#include "UIKit/Chrome+Private.h"
#include "UIKit/UILabel.h"

namespace ios {

namespace {
constexpr CGFloat kSide = 12;
constexpr CGFloat kSmallestScale = 0.6;
}  // namespace

AlertRow::AlertRow(const std::shared_ptr<UIAlertAction>& action, CGFloat fontSize)
    : action_(action), label_(std::make_shared<UILabel>()) {
  label_->setText(action->title());
  label_->setFont(isCancel() ? UIFont::boldSystemFontOfSize(fontSize) : UIFont::systemFontOfSize(fontSize));
  const bool destructive = action->style() == UIAlertActionStyle::destructive;
  label_->setTextColor(UIColor::colorWithHex(destructive ? chrome::kDestructive : chrome::kTint));
  label_->setTextAlignment(TextAlignment::center);
  label_->setMinimumScaleFactor(kSmallestScale);
  addSubview(label_);
}

CGFloat AlertRow::naturalWidth() const {
  return label_->sizeThatFits({0, 0}).width + 2 * kSide;
}

void AlertRow::setHighlighted(bool highlighted) {
  UIControl::setHighlighted(highlighted);
  setBackgroundColor(highlighted ? UIColor::colorWithHex(chrome::kPressed) : nullptr);
}

void AlertRow::layoutSubviews() {
  label_->setFrame(CGRectInset({{0, 0}, bounds().size}, kSide, 0));
}

}  // namespace ios
