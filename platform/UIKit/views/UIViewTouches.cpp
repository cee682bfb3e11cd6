#include "UIKit/UIView.h"

namespace ios {
namespace {

// A view less opaque than this takes no touches, as on the platform.
constexpr CGFloat kSmallestTouchableAlpha = 0.01;

}  // namespace

std::shared_ptr<UIView> UIView::hitTest(CGPoint point, const std::shared_ptr<UIEvent>& event) {
  if (!userInteractionEnabled_ || hidden_ || alpha_ < kSmallestTouchableAlpha) return nullptr;
  if (!pointInside(point, event)) return nullptr;
  const auto subviews = subviews_;
  for (auto view = subviews.rbegin(); view != subviews.rend(); ++view) {
    const CGAffineTransform& t = (*view)->transform_;
    if (t.a * t.d - t.b * t.c == 0) continue;  // shrunk to a line or a point, which has no inside
    if (auto hit = (*view)->hitTest((*view)->pointFromSuperview(point), event)) return hit;
  }
  return sharedAs<UIView>();
}

bool UIView::pointInside(CGPoint point, const std::shared_ptr<UIEvent>&) const {
  return CGRectContainsPoint(bounds_, point);
}

}  // namespace ios
