#include <algorithm>
#include <cmath>

#include "DeviceClock/Clock.h"
#include "UIKit/Private/UIScrollView.h"

namespace ios {
namespace {

using State = UIGestureRecognizerState;

// A finger that strays less than this may still be tapping.
constexpr CGFloat kThreshold = 10;
// The span of time from which the speed at the drag's end is computed.
constexpr double kVelocityWindow = 0.1;

}  // namespace

CGPoint UIScrollView::DragRecognizer::locationInView(const UIView* view) const {
  return finger_ ? finger_->locationInView(view) : CGPoint{};
}

CGPoint UIScrollView::DragRecognizer::translation() const {
  if (!finger_) return {};
  const CGPoint now = finger_->locationInView(nullptr);
  return {now.x - start_.x, now.y - start_.y};
}

CGPoint UIScrollView::DragRecognizer::velocity() const {
  const double now = Clock::shared().secondsNow();
  const Sample* oldest = nullptr;
  for (const Sample& sample : samples_) {
    if (!oldest && now - sample.time <= kVelocityWindow) oldest = &sample;
  }
  if (!oldest) return {};
  const Sample& last = samples_.back();
  const double elapsed = last.time - oldest->time;
  if (elapsed <= 0) return {};
  return {(last.location.x - oldest->location.x) / elapsed, (last.location.y - oldest->location.y) / elapsed};
}

void UIScrollView::DragRecognizer::note(const UITouch& touch) {
  std::erase_if(samples_, [&](const Sample& s) { return touch.timestamp() - s.time > 2 * kVelocityWindow; });
  samples_.push_back({touch.timestamp(), touch.locationInView(nullptr)});
}

void UIScrollView::DragRecognizer::touchesBegan(const UITouches& touches, const std::shared_ptr<UIEvent>&) {
  if (finger_) return;  // a second finger neither moves the content nor ends the drag
  finger_ = touches.front();
  start_ = finger_->locationInView(nullptr);
  note(*finger_);
  if (auto scroll = std::dynamic_pointer_cast<UIScrollView>(view())) scroll->stopMoving();
}

void UIScrollView::DragRecognizer::touchesMoved(const UITouches& touches, const std::shared_ptr<UIEvent>&) {
  if (std::find(touches.begin(), touches.end(), finger_) == touches.end()) return;
  note(*finger_);
  if (state() != State::possible) return setState(State::changed);
  const CGPoint moved = translation();
  if (std::hypot(moved.x, moved.y) <= kThreshold) return;
  const auto scroll = std::dynamic_pointer_cast<UIScrollView>(view());
  if (!scroll || !scroll->canScroll(moved)) return setState(State::failed);
  start_ = finger_->locationInView(nullptr);  // so that the content does not jump by the threshold
  setState(State::began);
}

void UIScrollView::DragRecognizer::touchesEnded(const UITouches& touches, const std::shared_ptr<UIEvent>&) {
  if (std::find(touches.begin(), touches.end(), finger_) == touches.end()) return;
  setState(state() == State::possible ? State::failed : State::ended);
}

void UIScrollView::DragRecognizer::touchesCancelled(const UITouches& touches,
                                                    const std::shared_ptr<UIEvent>& event) {
  if (std::find(touches.begin(), touches.end(), finger_) == touches.end()) return;
  UIGestureRecognizer::touchesCancelled(touches, event);
}

void UIScrollView::DragRecognizer::reset() {
  finger_.reset();
  samples_.clear();
  // Taken off, or switched off, in the middle of a drag.
  if (auto scroll = std::dynamic_pointer_cast<UIScrollView>(view())) scroll->setDragging(false);
}

}  // namespace ios
