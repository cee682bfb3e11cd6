#include "UIKit/UIScrollView.h"

#include <algorithm>
#include <cmath>

#include "Foundation/NSRunLoop.h"
#include "QuartzCore/CAAnimation.h"
#include "UIKit/Private/UIScrollView.h"
#include "UIKit/UIScreen.h"

namespace ios {
namespace {

// Share of the speed that is left after a second of gliding: the platform's normal rate, 0.998 a millisecond.
const double kDecay = -1000 * std::log(0.998);
// Gliding ends when it is slower than this, in points a second.
constexpr double kSlowest = 15;
constexpr double kOffsetAnimation = 0.3;

constexpr CGFloat kIndicatorWidth = 2.5;
constexpr CGFloat kIndicatorMargin = 3;
constexpr CGFloat kShortestIndicator = 36;
constexpr CGColor kIndicatorColor{0, 0, 0, 0.35};

/// Content moves by whole pixels: what scrolls stays as sharp as it was, and the same from frame to frame.
CGPoint onPixels(CGPoint offset) {
  const CGFloat scale = UIScreen::mainScreen()->scale();
  return {std::round(offset.x * scale) / scale, std::round(offset.y * scale) / scale};
}

}  // namespace

UIScrollView::UIScrollView(CGRect frame) : Subclass(frame) {
  setClipsToBounds(true);
}

UIScrollView::~UIScrollView() {
  setDragging(false);
}

MethodList UIScrollView::methods() {
  return {{"dragChanged:", &UIScrollView::dragChanged}};
}

void UIScrollView::didMoveToWindow() {
  // Not in the constructor: a target must be held by a reference when it is registered.
  if (!drag_ && window()) {
    drag_ = std::make_shared<DragRecognizer>(sharedAs<NSObject>(), "dragChanged:");
    addGestureRecognizer(drag_);
  }
  if (drag_ && !window()) {
    stopMoving();
    drag_->setEnabled(false);  // ends the drag under way
    drag_->setEnabled(true);
  }
}

void UIScrollView::setContentSize(CGSize size) {
  contentSize_ = size;
  setContentOffset(clamped(contentOffset()));
  setNeedsDisplay();
}

void UIScrollView::setContentOffset(CGPoint offset, bool animated) {
  stopMoving();
  const CGPoint from = contentOffset();
  if (!animated) return setBounds({onPixels(offset), bounds().size});
  moveTo(kOffsetAnimation, [from, offset](double fraction) -> CGPoint {
    const double share = easeInEaseOut(fraction);
    return {from.x + (offset.x - from.x) * share, from.y + (offset.y - from.y) * share};
  });
}

CGPoint UIScrollView::clamped(CGPoint offset) const {
  const CGSize room{std::max(0.0, contentSize_.width - bounds().width()),
                    std::max(0.0, contentSize_.height - bounds().height())};
  return {std::clamp(offset.x, 0.0, room.width), std::clamp(offset.y, 0.0, room.height)};
}

bool UIScrollView::canScroll(CGPoint direction) const {
  return std::abs(direction.x) > std::abs(direction.y) ? contentSize_.width > bounds().width()
                                                       : contentSize_.height > bounds().height();
}

void UIScrollView::dragChanged(const id&) {
  const auto self = weak_from_this().lock();
  const auto drag = drag_;
  if (!drag) return;
  switch (drag->state()) {
    case UIGestureRecognizerState::began:
      dragStart_ = contentOffset();
      setDragging(true);
      break;
    case UIGestureRecognizerState::changed: {
      const CGPoint moved = drag->translation();
      setBounds({onPixels(clamped({dragStart_.x - moved.x, dragStart_.y - moved.y})), bounds().size});
      break;
    }
    case UIGestureRecognizerState::ended: {
      const CGPoint velocity = drag->velocity();
      setDragging(false);
      glide({-velocity.x, -velocity.y});
      break;
    }
    default:
      setDragging(false);
      break;
  }
}

void UIScrollView::glide(CGPoint velocity) {
  const double speed = std::hypot(velocity.x, velocity.y);
  if (speed <= kSlowest) return;
  const CGPoint from = contentOffset();
  const double seconds = std::log(speed / kSlowest) / kDecay;
  moveTo(seconds, [this, from, velocity, seconds](double fraction) {
    const double gone = (1 - std::exp(-kDecay * fraction * seconds)) / kDecay;
    return clamped({from.x + velocity.x * gone, from.y + velocity.y * gone});
  });
}

void UIScrollView::moveTo(double seconds, std::function<CGPoint(double fraction)> offset) {
  stopMoving();
  motion_ = std::make_shared<Motion>();
  const auto motion = motion_;
  const std::weak_ptr<UIScrollView> weakSelf = sharedAs<UIScrollView>();
  animateOnDisplay(
      seconds,
      [motion, weakSelf, offset = std::move(offset)](double fraction) {
        const auto self = weakSelf.lock();
        if (self && !motion->stopped) self->setBounds({onPixels(offset(fraction)), self->bounds().size});
      },
      [motion, weakSelf] {
        const auto self = weakSelf.lock();
        if (self && !motion->stopped) self->stopMoving();
      });
}

void UIScrollView::stopMoving() {
  if (!motion_) return;
  motion_->stopped = true;
  motion_.reset();
  setNeedsDisplay();  // the indicator goes
}

void UIScrollView::setDragging(bool dragging) {
  if (dragging == dragging_) return;
  dragging_ = dragging;
  if (dragging) {
    NSRunLoop::mainRunLoop()->pushMode(UITrackingRunLoopMode);
  } else {
    NSRunLoop::mainRunLoop()->popMode();
  }
  setNeedsDisplay();
}

void UIScrollView::drawOverSubviews(const CGContextRef& context) const {
  const CGRect area = bounds();
  if (!(dragging_ || motion_) || contentSize_.height <= area.height() || area.height() <= 0) return;
  const CGFloat track = area.height() - 2 * kIndicatorMargin;
  const CGFloat length =
      std::min(track, std::max(kShortestIndicator, track * area.height() / contentSize_.height));
  const CGFloat share = std::clamp(area.minY() / (contentSize_.height - area.height()), 0.0, 1.0);
  const CGRect bar =
      CGRectMake(area.maxX() - kIndicatorMargin - kIndicatorWidth,
                 area.minY() + kIndicatorMargin + (track - length) * share, kIndicatorWidth, length);
  CGContextSetFillColorWithColor(context, kIndicatorColor);
  CGContextAddPath(context, CGPath::roundedRect(bar, kIndicatorWidth / 2));
  CGContextFillPath(context);
}

}  // namespace ios
