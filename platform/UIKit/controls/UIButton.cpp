#include "UIKit/UIButton.h"

#include <cmath>

#include "CoreGraphics/Text.h"
#include "UIKit/Private/Chrome.h"
#include "UIKit/UIGraphics.h"

namespace ios {
namespace {

constexpr CGFloat kTitleSize = 17;
// The platform's looks: a pressed title is a shade of itself, one that cannot be pressed is grey.
constexpr double kPressedShare = 0.3;
constexpr CGColor kDisabledColor{0.56, 0.56, 0.58, 1};

TextLayout layoutOf(const std::string& title, const UIFont& font, CGColor color, CGFloat width,
                    TextAlignment alignment) {
  return TextLayout({TextRun{title, font.description(), color}}, width, alignment, 1);
}

}  // namespace

UIButton::UIButton(CGRect frame)
    : Subclass(frame),
      titleColor_(UIColor::colorWithHex(chrome::kTint)),
      font_(UIFont::systemFontOfSize(kTitleSize)) {}

void UIButton::setTitle(std::string title) {
  title_ = std::move(title);
  setNeedsDisplay();
}

void UIButton::setTitleColor(std::shared_ptr<UIColor> color) {
  titleColor_ = color ? std::move(color) : UIColor::colorWithHex(chrome::kTint);
  setNeedsDisplay();
}

void UIButton::setFont(std::shared_ptr<UIFont> font) {
  font_ = font ? std::move(font) : UIFont::systemFontOfSize(kTitleSize);
  setNeedsDisplay();
}

void UIButton::setTitleAlignment(TextAlignment alignment) {
  alignment_ = alignment;
  setNeedsDisplay();
}

CGSize UIButton::sizeThatFits(CGSize) const {
  return layoutOf(title_, *font_, CGColor{}, 0, alignment_).size();
}

void UIButton::drawRect(const CGRect&) {
  if (title_.empty()) return;
  CGColor color = titleColor_->CGColorValue();
  if (!isEnabled()) color = kDisabledColor;
  if (isHighlighted()) color.alpha *= kPressedShare;
  const TextLayout layout = layoutOf(title_, *font_, color, bounds().width(), alignment_);
  const CGFloat y = bounds().minY() + std::floor((bounds().height() - layout.size().height) / 2);
  layout.draw(UIGraphicsGetCurrentContext(), {bounds().minX(), y});
}

std::string UIButton::accessibilityLabel() const {
  const std::string label = UIControl::accessibilityLabel();
  return label.empty() ? title_ : label;
}

}  // namespace ios
