#include "UIKit/Private/GestureArbiter.h"
#include "UIKit/UIWindow.h"

namespace ios {

void UIWindow::sendEvent(const std::shared_ptr<UIEvent>& event) {
  if (!event || event->type() != UIEventType::touches) return;
  const auto self = sharedAs<UIWindow>();
  UITouches changed;
  for (const auto& touch : event->allTouches()) {
    if (touch->window() == self && touch->phase() != UITouchPhase::stationary) changed.push_back(touch);
  }
  if (!changed.empty()) arbiter().deliver(*this, changed, event);
}

GestureArbiter& UIWindow::arbiter() {
  if (!arbiter_) arbiter_ = std::make_shared<GestureArbiter>();
  return *arbiter_;
}

}  // namespace ios
