#include <algorithm>

#include "UIKit/UIGestureRecognizer.h"
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

void UIView::addGestureRecognizer(const std::shared_ptr<UIGestureRecognizer>& recognizer) {
  if (!recognizer) return;
  const auto kept = recognizer;  // the caller's reference may be an element of the list it is taken from
  if (auto old = kept->view()) old->removeGestureRecognizer(kept);
  recognizers_.push_back(kept);
  kept->attach(this);
}

void UIView::removeGestureRecognizer(const std::shared_ptr<UIGestureRecognizer>& recognizer) {
  const auto found = std::find(recognizers_.begin(), recognizers_.end(), recognizer);
  if (found == recognizers_.end()) return;
  const auto removed = *found;
  recognizers_.erase(found);
  removed->attach(nullptr);
}

}  // namespace ios
