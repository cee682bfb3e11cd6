#include "UIKit/UIApplication.h"

#include <algorithm>

#include "CoreGraphics/Text.h"
#include "Device/Device.h"
#include "DeviceClock/Clock.h"
#include "Foundation/NSLocale.h"
#include "Foundation/NSNotificationCenter.h"
#include "UIKit/Private/PermissionAlert.h"
#include "UIKit/UIDevice.h"
#include "UIKit/UIScreen.h"

namespace ios {
namespace {

/// Characters that languages share are drawn as the user's first one writes them.
void adoptLanguage() {
  const auto languages = NSLocale::preferredLanguages();
  if (!languages.empty()) setTextLanguage(languages.front());
}

}  // namespace

UIApplication::UIApplication() {
  adoptLanguage();
  Device& device = Device::current();
  screenBounds_ = UIScreen::mainScreen()->bounds();
  orientation_ = device.settings().orientation;
  device.input().setSinks([this](const std::vector<TouchSample>& samples) { receiveTouches(samples); },
                          [this] { receiveShake(); });
  device.addSettingsObserver([this] { deviceChanged(); });
}

MethodList UIApplication::methods() {
  return {};
}

const std::shared_ptr<UIApplication>& UIApplication::sharedApplication() {
  // Never destroyed: windows with static storage unregister from it.
  static const auto& application = *new std::shared_ptr<UIApplication>(std::make_shared<UIApplication>());
  return application;
}

std::vector<std::shared_ptr<UIWindow>> UIApplication::windows() const {
  auto visible = windowsOnScreen();
  std::erase_if(visible, [](const auto& window) { return window->ofSystem_; });
  return visible;
}

std::vector<std::shared_ptr<UIWindow>> UIApplication::windowsOnScreen() const {
  std::vector<std::shared_ptr<UIWindow>> visible;
  for (const auto& reference : windows_) {
    if (auto window = reference.lock(); window && !window->isHidden()) visible.push_back(std::move(window));
  }
  std::stable_sort(visible.begin(), visible.end(),
                   [](const auto& a, const auto& b) { return a->windowLevel() < b->windowLevel(); });
  return visible;
}

void UIApplication::windowShown(const std::shared_ptr<UIWindow>& window) {
  std::erase_if(windows_, [&](const auto& known) { return known.expired() || known.lock() == window; });
  windows_.push_back(window);
}

void UIApplication::windowGone(const UIWindow& window) {
  const auto key = keyWindow_.lock();
  std::erase_if(windows_,
                [&](const auto& known) { return known.expired() || known.lock().get() == &window; });
  if (key && key.get() != &window) return;
  const auto visible = windows();
  keyWindow_ = visible.empty() ? nullptr : visible.back();
}

void UIApplication::deviceChanged() {
  adoptLanguage();
  const CGRect old = std::exchange(screenBounds_, UIScreen::mainScreen()->bounds());
  if (screenBounds_ != old) {
    for (const auto& reference : std::vector(windows_)) {
      const auto window = reference.lock();
      if (window && window->frame() == old) window->setFrame(screenBounds_);
    }
  }
  const long orientation = Device::current().settings().orientation;
  if (std::exchange(orientation_, orientation) == orientation) return;
  NSNotificationCenter::defaultCenter()->postNotificationName(UIDeviceOrientationDidChangeNotification,
                                                              UIDevice::currentDevice());
}

void UIApplication::tell(void (UIApplicationDelegate::*call)(UIApplication&),
                         const std::string& notification) {
  if (const auto delegate = delegate_) ((*delegate).*call)(*this);
  NSNotificationCenter::defaultCenter()->postNotificationName(notification, sharedApplication());
}

void UIApplication::launch(std::shared_ptr<UIApplicationDelegate> delegate) {
  delegate_ = std::move(delegate);
  front_ = Device::current().bundleIdentifier();
  if (const auto told = delegate_) told->applicationDidFinishLaunching(*this);
  becomeActive();
}

void UIApplication::becomeActive() {
  if (state_ == UIApplicationState::active || covered_ || terminated_) return;
  state_ = UIApplicationState::active;
  tell(&UIApplicationDelegate::applicationDidBecomeActive, UIApplicationDidBecomeActiveNotification);
}

void UIApplication::resignActive() {
  endTouches();
  if (state_ != UIApplicationState::active) return;
  tell(&UIApplicationDelegate::applicationWillResignActive, UIApplicationWillResignActiveNotification);
  state_ = UIApplicationState::inactive;
}

void UIApplication::moveToBackground(const std::string& front) {
  front_ = front;
  if (state_ == UIApplicationState::background || terminated_) return;
  resignActive();
  state_ = UIApplicationState::background;
  tell(&UIApplicationDelegate::applicationDidEnterBackground, UIApplicationDidEnterBackgroundNotification);
}

void UIApplication::moveToForeground() {
  if (state_ != UIApplicationState::background || terminated_) return;
  front_ = Device::current().bundleIdentifier();
  tell(&UIApplicationDelegate::applicationWillEnterForeground, UIApplicationWillEnterForegroundNotification);
  state_ = UIApplicationState::inactive;
  becomeActive();
}

void UIApplication::setCovered(bool covered) {
  if (covered == covered_) return;
  covered_ = covered;
  if (covered) {
    resignActive();
  } else if (state_ == UIApplicationState::inactive) {
    becomeActive();
  }
}

void UIApplication::showPermissionAlerts() {
  setPermissionPresenter(&PermissionAlert::show);
}

void UIApplication::terminate() {
  if (std::exchange(terminated_, true)) return;
  endTouches();
  tell(&UIApplicationDelegate::applicationWillTerminate, UIApplicationWillTerminateNotification);
}

}  // namespace ios
