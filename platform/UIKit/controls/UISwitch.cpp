#include "UIKit/UISwitch.h"

#include "CoreGraphics/CGContext.h"
#include "UIKit/UIGraphics.h"

namespace ios {

UISwitch::UISwitch(CGRect frame)
    : Subclass(CGRectMake(frame.minX(), frame.minY(), kSize.width, kSize.height)) {}

MethodList UISwitch::methods() {
  return {};
}

void UISwitch::setOn(bool on, bool) {
  if (on == on_) return;
  on_ = on;
  setNeedsDisplay();
}

void UISwitch::touchesEnded(const UITouches& touches, const std::shared_ptr<UIEvent>& event) {
  // Highlighted as long as the finger is on it.
  const bool turned = isEnabled() && isHighlighted();
  if (turned) setOn(!on_);
  UIControl::touchesEnded(touches, event);
  if (turned) sendActionsForControlEvents(UIControlEventValueChanged);
}

void UISwitch::drawRect(const CGRect&) {
  const CGContextRef context = UIGraphicsGetCurrentContext();
  constexpr CGFloat kRim = 1.5;
  const CGFloat height = kSize.height, knob = height - 2 * kRim;
  CGContextSetFillColorWithColor(context, UIColor::colorWithHex(on_ ? 0x34C759 : 0xD9D9DE)->CGColorValue());
  CGContextAddPath(context, CGPath::roundedRect(bounds(), height / 2));
  CGContextFillPath(context);
  CGContextSetFillColorWithColor(context, {1, 1, 1, 1});
  const CGFloat left = on_ ? kSize.width - knob - kRim : kRim;
  CGContextAddPath(context, CGPath::ellipse(CGRectMake(left, kRim, knob, knob)));
  CGContextFillPath(context);
}

}  // namespace ios
