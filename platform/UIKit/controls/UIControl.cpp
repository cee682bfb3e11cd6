#include "UIKit/UIControl.h"

#include <algorithm>

#include "UIKit/UITapGestureRecognizer.h"

namespace ios {
namespace {

// How far outside a control a finger that began on it still counts as inside, as on the platform.
constexpr CGFloat kSlack = 70;

bool isOn(const UIControl& control, const UITouches& touches) {
  const CGRect area = CGRectMake(-kSlack, -kSlack, control.bounds().width() + 2 * kSlack,
                                 control.bounds().height() + 2 * kSlack);
  return std::any_of(touches.begin(), touches.end(), [&](const auto& touch) {
    return CGRectContainsPoint(CGRectOffset(area, control.bounds().minX(), control.bounds().minY()),
                               touch->locationInView(&control));
  });
}

}  // namespace

UIControl::UIControl(CGRect frame) : Subclass(frame) {}

void UIControl::addTarget(const id& target, Selector action, unsigned events) {
  const Action made(target, action);
  for (auto& entry : targets_) {
    if (entry.target.lock() != target || entry.action.selector != action) continue;
    entry.events |= events;
    return;
  }
  targets_.push_back({target, made, events});
}

void UIControl::sendActionsForControlEvents(unsigned events) {
  const auto self = weak_from_this().lock();
  std::erase_if(targets_, [](const TargetAction& entry) { return entry.target.expired(); });
  const auto targets = targets_;
  for (const TargetAction& entry : targets) {
    if (!(entry.events & events)) continue;
    if (auto target = entry.target.lock()) entry.action.perform(*target, self);
  }
}

void UIControl::setEnabled(bool enabled) {
  if (enabled == enabled_) return;
  enabled_ = enabled;
  if (!enabled) setHighlighted(false);
  setNeedsDisplay();
}

void UIControl::setSelected(bool selected) {
  if (selected == selected_) return;
  selected_ = selected;
  setNeedsDisplay();
}

void UIControl::setHighlighted(bool highlighted) {
  if (highlighted == highlighted_) return;
  highlighted_ = highlighted;
  setNeedsDisplay();
}

bool UIControl::gestureRecognizerShouldBegin(const UIGestureRecognizer& recognizer) const {
  const auto* tap = dynamic_cast<const UITapGestureRecognizer*>(&recognizer);
  const bool singleTap = tap && tap->numberOfTapsRequired() <= 1 && tap->numberOfTouchesRequired() <= 1;
  return !singleTap || !enabled_ || recognizer.view().get() == this;
}

void UIControl::touchesBegan(const UITouches&, const std::shared_ptr<UIEvent>&) {
  if (!enabled_) return;
  setHighlighted(true);
  sendActionsForControlEvents(UIControlEventTouchDown);
}

void UIControl::touchesMoved(const UITouches& touches, const std::shared_ptr<UIEvent>&) {
  if (enabled_) setHighlighted(isOn(*this, touches));
}

void UIControl::touchesEnded(const UITouches& touches, const std::shared_ptr<UIEvent>&) {
  if (!enabled_) return;
  const bool inside = isOn(*this, touches);
  setHighlighted(false);
  if (inside) sendActionsForControlEvents(UIControlEventTouchUpInside);
}

void UIControl::touchesCancelled(const UITouches&, const std::shared_ptr<UIEvent>&) {
  setHighlighted(false);
}

}  // namespace ios
