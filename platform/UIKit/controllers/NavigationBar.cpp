#include <algorithm>

#include "UIKit/Private/Chrome.h"
#include "UIKit/Private/NavigationBar.h"
#include "UIKit/Private/SystemText.h"
#include "UIKit/UIGraphics.h"
#include "UIKit/UILabel.h"

namespace ios {

namespace {
constexpr CGFloat kSide = 8;
constexpr CGFloat kArrowWidth = 19;  // with the space after it
constexpr CGFloat kSmallestTitle = 60;
}  // namespace

BackButton::BackButton() : label_(std::make_shared<UILabel>()) {
  label_->setFont(UIFont::systemFontOfSize(17));
  label_->setTextColor(UIColor::colorWithHex(chrome::kTint));
  addSubview(label_);
}

void BackButton::setTitle(const std::string& title) {
  label_->setText(title);
  setNeedsLayout();
}

CGFloat BackButton::naturalWidth() const {
  return kSide + kArrowWidth + label_->sizeThatFits({0, 0}).width + kSide;
}

std::string BackButton::accessibilityLabel() const {
  return label_->text();
}

void BackButton::setHighlighted(bool highlighted) {
  UIControl::setHighlighted(highlighted);
  setAlpha(highlighted ? 0.3 : 1);
}

void BackButton::layoutSubviews() {
  const CGSize size = bounds().size;
  const CGFloat left = kSide + kArrowWidth;
  label_->setFrame(chrome::mirrored({{left, 0}, {std::max(0.0, size.width - left - kSide), size.height}},
                                    size.width, chrome::isMirrored()));
}

void BackButton::drawRect(const CGRect&) {
  const CGSize size = bounds().size;
  const bool mirror = chrome::isMirrored();
  const auto at = [&](CGFloat x, CGFloat y) {
    return CGPoint{mirror ? size.width - x : x, size.height / 2 + y};
  };
  const auto context = UIGraphicsGetCurrentContext();
  CGContextSetStrokeColorWithColor(context, UIColor::colorWithHex(chrome::kTint)->CGColorValue());
  CGContextSetLineWidth(context, 2.5);
  CGContextAddPath(context, CGPath::lines({at(kSide + 11, -9), at(kSide + 2, 0), at(kSide + 11, 9)}));
  CGContextStrokePath(context);
}

NavigationBar::NavigationBar()
    : title_(std::make_shared<UILabel>()),
      back_(std::make_shared<BackButton>()),
      edge_(chrome::plate(chrome::kBarEdge)) {
  setBackgroundColor(UIColor::colorWithHex(chrome::kBar));
  title_->setFont(UIFont::boldSystemFontOfSize(17));
  title_->setTextAlignment(TextAlignment::center);
  addSubview(title_);
  addSubview(back_);
  addSubview(edge_);
}

void NavigationBar::setTitle(const std::string& title) {
  title_->setText(title);
  setNeedsLayout();
}

void NavigationBar::setBackTitle(const std::optional<std::string>& title) {
  back_->setHidden(!title);
  backTitle_ = title && !title->empty() ? *title : systemText("Back");
  setNeedsLayout();
}

void NavigationBar::layoutSubviews() {
  const CGFloat width = bounds().width();
  const CGFloat top = bounds().height() - kHeight;
  const bool mirror = chrome::isMirrored();
  edge_->setFrame({{0, bounds().height() - chrome::hairline()}, {width, chrome::hairline()}});

  const CGFloat titleWidth = std::min(title_->sizeThatFits({0, 0}).width, width - 2 * kSide);
  CGFloat left = kSide;
  if (!back_->isHidden()) {
    // The former title gives way to "Back", and that to the arrow alone, before it pushes
    // the title off the bar.
    const CGFloat room =
        std::max(width / 2 - titleWidth / 2, width - kSide - std::max(titleWidth, kSmallestTitle));
    back_->setTitle(backTitle_);
    if (back_->naturalWidth() > std::min(room, width / 2)) back_->setTitle(systemText("Back"));
    if (back_->naturalWidth() > room) back_->setTitle("");
    left = back_->naturalWidth();
    back_->setFrame(chrome::mirrored({{0, top}, {left, kHeight}}, width, mirror));
  }
  // Centred on the bar where it can be, else in what the button leaves.
  const CGFloat shown = std::min(titleWidth, width - left - kSide);
  const CGFloat x = std::max(left, std::min((width - shown) / 2, width - kSide - shown));
  title_->setFrame(chrome::mirrored({{x, top}, {std::max(0.0, shown), kHeight}}, width, mirror));
}

}  // namespace ios
