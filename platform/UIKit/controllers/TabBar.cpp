#include "UIKit/Private/TabBar.h"

#include <string_view>

#include "CoreFoundation/Unicode.h"
#include "UIKit/Private/Chrome.h"
#include "UIKit/UIGraphics.h"
#include "UIKit/UILabel.h"

namespace ios {

namespace {

constexpr unsigned kUnselected = 0x929292;
constexpr CGFloat kSignSize = 25;

std::string firstCharacter(std::string_view text) {
  std::string_view rest = text;
  if (!rest.empty()) takeCodePoint(rest);
  return std::string(text.substr(0, text.size() - rest.size()));
}

}  // namespace

TabBarItem::TabBarItem(const std::string& title, Sign sign, bool selected)
    : sign_(sign), title_(std::make_shared<UILabel>()) {
  setSelected(selected);
  title_->setText(title);
  title_->setFont(UIFont::systemFontOfSize(10));
  title_->setTextColor(UIColor::colorWithHex(selected ? chrome::kTint : kUnselected));
  title_->setTextAlignment(TextAlignment::center);
  addSubview(title_);
  if (sign == Sign::more) return;
  initial_ = std::make_shared<UILabel>();
  initial_->setText(firstCharacter(title));
  initial_->setFont(UIFont::boldSystemFontOfSize(15));
  initial_->setTextColor(selected ? UIColor::colorWithHex(chrome::kBar) : UIColor::colorWithHex(kUnselected));
  initial_->setTextAlignment(TextAlignment::center);
  addSubview(initial_);
}

std::string TabBarItem::accessibilityLabel() const {
  return title_->text();
}

CGRect TabBarItem::signFrame() const {
  return {{std::round((bounds().width() - kSignSize) / 2), 6}, {kSignSize, kSignSize}};
}

void TabBarItem::layoutSubviews() {
  title_->setFrame({{2, 34}, {std::max(0.0, bounds().width() - 4), 13}});
  if (initial_) initial_->setFrame(signFrame());
}

void TabBarItem::drawRect(const CGRect&) {
  const auto context = UIGraphicsGetCurrentContext();
  const CGColor color = UIColor::colorWithHex(isSelected() ? chrome::kTint : kUnselected)->CGColorValue();
  const CGRect frame = signFrame();
  CGContextSetFillColorWithColor(context, color);
  CGContextSetStrokeColorWithColor(context, color);
  if (sign_ == Sign::more) {
    for (const CGFloat x : {-8.0, 0.0, 8.0}) {
      CGContextAddPath(context, CGPath::ellipse({{frame.midX() + x - 2.5, frame.midY() - 2.5}, {5, 5}}));
      CGContextFillPath(context);
    }
    return;
  }
  CGContextAddPath(context, CGPath::roundedRect(CGRectInset(frame, 1, 1), 6));
  if (isSelected()) return CGContextFillPath(context);
  CGContextSetLineWidth(context, 1.5);
  CGContextStrokePath(context);
}

TabBar::TabBar() : edge_(chrome::plate(chrome::kBarEdge)) {
  setBackgroundColor(UIColor::colorWithHex(chrome::kBar));
  addSubview(edge_);
}

void TabBar::setItems(std::vector<std::shared_ptr<TabBarItem>> items) {
  for (const auto& item : items_) item->removeFromSuperview();
  items_ = std::move(items);
  for (const auto& item : items_) addSubview(item);
  bringSubviewToFront(edge_);
  setNeedsLayout();
}

void TabBar::layoutSubviews() {
  const CGSize size = bounds().size;
  edge_->setFrame({{0, 0}, {size.width, chrome::hairline()}});
  const CGFloat width = items_.empty() ? 0 : size.width / static_cast<CGFloat>(items_.size());
  CGFloat x = 0;
  for (const auto& item : items_) {
    item->setFrame(chrome::mirrored({{x, 0}, {width, size.height}}, size.width, chrome::isMirrored()));
    x += width;
  }
}

}  // namespace ios
