#include <algorithm>
#include <utility>

#include "Device/Device.h"
#include "DeviceClock/Clock.h"
#include "UIKit/UIApplication.h"
#include "UIKit/UIEvent.h"

namespace ios {
namespace {

bool hasLeft(const UITouch& touch) {
  return touch.phase() == UITouchPhase::ended || touch.phase() == UITouchPhase::cancelled;
}

}  // namespace

void UIApplication::receiveTouches(const std::vector<TouchSample>& samples) {
  if (state_ == UIApplicationState::background) return;
  const auto self = sharedApplication();
  auto event = std::make_shared<UIEvent>(UIEventType::touches, UIEventSubtype::none);
  for (const auto& [finger, touch] : fingers_) touch->phase_ = UITouchPhase::stationary;

  bool changed = false;
  for (const TouchSample& sample : samples) {
    auto known = std::find_if(fingers_.begin(), fingers_.end(),
                              [&](const auto& f) { return f.first == sample.finger; });
    if (known == fingers_.end()) {
      // A finger that came down outside every view is not tracked.
      if (sample.phase != TouchSample::Phase::began) continue;
      auto touch = touchAt(sample.location, event);
      if (!touch) continue;
      fingers_.emplace_back(sample.finger, std::move(touch));
      changed = true;
      continue;
    }
    UITouch& touch = *known->second;
    if (touch.phase_ == UITouchPhase::began || hasLeft(touch)) continue;  // one change per finger and event
    switch (sample.phase) {
      case TouchSample::Phase::began:
      case TouchSample::Phase::moved:
        if (sample.location == touch.location_) continue;
        touch.phase_ = UITouchPhase::moved;
        break;
      case TouchSample::Phase::ended:
        touch.phase_ = UITouchPhase::ended;
        break;
      case TouchSample::Phase::cancelled:
        touch.phase_ = UITouchPhase::cancelled;
        break;
    }
    touch.location_ = sample.location;
    touch.timestamp_ = Clock::shared().secondsNow();
    changed = true;
  }
  if (changed) dispatchTouches(event);
}

std::shared_ptr<UITouch> UIApplication::touchAt(CGPoint location,
                                                const std::shared_ptr<UIEvent>& event) const {
  const auto visible = windowsOnScreen();
  for (auto window = visible.rbegin(); window != visible.rend(); ++window) {
    if (covered_ && !(*window)->ofSystem_) continue;
    (*window)->layoutIfNeeded();
    const auto view = (*window)->hitTest((*window)->pointFromSuperview(location), event);
    if (!view) continue;
    auto touch = std::make_shared<UITouch>();
    touch->location_ = location;
    touch->timestamp_ = Clock::shared().secondsNow();
    touch->view_ = view;
    touch->window_ = *window;
    return touch;
  }
  return nullptr;
}

void UIApplication::dispatchTouches(const std::shared_ptr<UIEvent>& event) {
  for (const auto& [finger, touch] : fingers_) event->touches_.push_back(touch);
  // Before the delivery, which may cause the next event.
  std::erase_if(fingers_, [](const auto& finger) { return hasLeft(*finger.second); });
  sendEvent(event);
}

void UIApplication::endTouches() {
  if (fingers_.empty()) return;
  auto event = std::make_shared<UIEvent>(UIEventType::touches, UIEventSubtype::none);
  for (const auto& [finger, touch] : fingers_) touch->phase_ = UITouchPhase::cancelled;
  dispatchTouches(event);
}

void UIApplication::sendEvent(const std::shared_ptr<UIEvent>& event) {
  if (!event) return;
  std::vector<std::shared_ptr<UIWindow>> windows;
  for (const auto& touch : event->allTouches()) {
    auto window = touch->window();
    if (window && std::find(windows.begin(), windows.end(), window) == windows.end())
      windows.push_back(window);
  }
  for (const auto& window : windows) window->sendEvent(event);
}

void UIApplication::receiveShake() {
  if (state_ == UIApplicationState::background || covered_) return;
  const auto visible = windows();
  // The first responder, which is the window itself until another one is chosen.
  std::shared_ptr<UIResponder> first = keyWindow();
  if (!first && !visible.empty()) first = visible.back();
  if (!first) first = sharedApplication();
  const auto event = std::make_shared<UIEvent>(UIEventType::motion, UIEventSubtype::motionShake);
  send(*first, "motionBegan:withEvent:", UIEventSubtype::motionShake, event);
  send(*first, "motionEnded:withEvent:", UIEventSubtype::motionShake, event);
}

}  // namespace ios
