#include <algorithm>
#include <cmath>

#include "UIKit/UIView.h"
#include "UIKit/UIWindow.h"

namespace ios {
namespace {

CGFloat finite(CGFloat value) {
  return std::isfinite(value) ? value : 0;
}
CGPoint finite(CGPoint point) {
  return {finite(point.x), finite(point.y)};
}
CGSize finite(CGSize size) {
  return {std::max(0.0, finite(size.width)), std::max(0.0, finite(size.height))};
}

/// What a rectangle of `size` covers after the linear part of `transform`.
CGSize coveredSize(CGSize size, const CGAffineTransform& transform) {
  return {std::abs(transform.a) * size.width + std::abs(transform.c) * size.height,
          std::abs(transform.b) * size.width + std::abs(transform.d) * size.height};
}

}  // namespace

CGRect UIView::frame() const {
  const CGSize size =
      transform_ == CGAffineTransformIdentity ? bounds_.size : coveredSize(bounds_.size, transform_);
  return {{center_.x + transform_.tx - size.width / 2, center_.y + transform_.ty - size.height / 2}, size};
}

void UIView::setFrame(const CGRect& frame) {
  const CGSize covered = finite(frame.size);
  const CGPoint origin = finite(frame.origin);
  CGSize size = covered;
  if (transform_ != CGAffineTransformIdentity)
    size = coveredSize(covered, CGAffineTransformInvert(transform_));
  setCenter({origin.x + covered.width / 2 - transform_.tx, origin.y + covered.height / 2 - transform_.ty});
  setSize(size);
}

void UIView::setBounds(const CGRect& bounds) {
  const CGPoint origin = finite(bounds.origin);
  if (origin != bounds_.origin) {
    willChange(Animatable::bounds);
    bounds_.origin = origin;
    setNeedsLayout();
  }
  setSize(finite(bounds.size));
}

void UIView::setSize(CGSize size) {
  if (size == bounds_.size) return;
  willChange(Animatable::bounds);
  const CGSize old = bounds_.size;
  bounds_.size = size;
  setNeedsLayout();
  autoresizeSubviews(old);
}

void UIView::setCenter(CGPoint center) {
  center = finite(center);
  if (center == center_) return;
  willChange(Animatable::center);
  center_ = center;
  setNeedsDisplay();
}

void UIView::setTransform(const CGAffineTransform& transform) {
  if (transform == transform_) return;
  for (CGFloat value : {transform.a, transform.b, transform.c, transform.d, transform.tx, transform.ty}) {
    if (!std::isfinite(value)) return;
  }
  willChange(Animatable::transform);
  transform_ = transform;
  setNeedsDisplay();
}

CGPoint UIView::pointToSuperview(CGPoint point) const {
  const CGPoint p =
      CGPointApplyAffineTransform({point.x - bounds_.midX(), point.y - bounds_.midY()}, transform_);
  return {p.x + center_.x, p.y + center_.y};
}

CGPoint UIView::pointFromSuperview(CGPoint point) const {
  const CGPoint p = CGPointApplyAffineTransform({point.x - center_.x, point.y - center_.y},
                                                CGAffineTransformInvert(transform_));
  return {p.x + bounds_.midX(), p.y + bounds_.midY()};
}

CGPoint UIView::convertPointToView(CGPoint point, const UIView* view) const {
  const UIView* top = this;
  for (; top != view && top->superview_; top = top->superview_) point = top->pointToSuperview(point);
  if (!view || top == view) return point;

  std::vector<const UIView*> path;
  for (const UIView* ancestor = view; ancestor; ancestor = ancestor->superview_) path.push_back(ancestor);
  // Of two windows, the screen is what they have in common.
  if (path.back() != top) {
    if (dynamic_cast<const UIWindow*>(top)) point = top->pointToSuperview(point);
    if (dynamic_cast<const UIWindow*>(path.back())) point = path.back()->pointFromSuperview(point);
  }
  path.pop_back();
  for (auto step = path.rbegin(); step != path.rend(); ++step) point = (*step)->pointFromSuperview(point);
  return point;
}

CGPoint UIView::convertPointFromView(CGPoint point, const UIView* view) const {
  if (view) return view->convertPointToView(point, this);
  const UIView* top = this;
  while (top->superview_) top = top->superview_;
  return top->convertPointToView(point, this);
}

CGRect UIView::convertRectToView(const CGRect& rect, const UIView* view) const {
  const CGPoint corners[] = {convertPointToView({rect.minX(), rect.minY()}, view),
                             convertPointToView({rect.maxX(), rect.minY()}, view),
                             convertPointToView({rect.minX(), rect.maxY()}, view),
                             convertPointToView({rect.maxX(), rect.maxY()}, view)};
  CGPoint low = corners[0], high = corners[0];
  for (const CGPoint& corner : corners) {
    low = {std::min(low.x, corner.x), std::min(low.y, corner.y)};
    high = {std::max(high.x, corner.x), std::max(high.y, corner.y)};
  }
  return {low, {high.x - low.x, high.y - low.y}};
}

}  // namespace ios
