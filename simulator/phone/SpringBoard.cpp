#include "simulator/phone/SpringBoard.h"

#include "Device/Device.h"
#include "UIKit/UIApplication.h"
#include "UIKit/UIScreen.h"
#include "UIKit/UIViewController.h"
#include "companion/Inbox.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;

fs::path companionsHome() {
  return ios::Device::current().homeOf(kCompanionIdentifier);
}

/// Everything the screens draw from, as one text: when it changes, they are rebuilt.
std::string world() {
  std::string text;
  for (const auto& application : ios::Device::current().applications().all())
    text += application.bundleIdentifier + "\n";
  for (const auto& [identifier, services] : ios::Device::current().settings().permissions) {
    for (const auto& [service, answer] : services) {
      text += identifier + service + std::to_string(static_cast<int>(answer)) + "\n";
    }
  }
  for (const auto& report : companion::Inbox(companionsHome()).reports()) text += report.name.text() + "\n";
  return text;
}

}  // namespace

SpringBoard::SpringBoard() : server_(*ios::UIApplication::sharedApplication()) {
  ios::UIApplication::sharedApplication()->launch(std::make_shared<ios::UIApplicationDelegate>());
  window_ = std::make_shared<ios::UIWindow>(ios::UIScreen::mainScreen()->bounds());
  show("home", "");
  window_->makeKeyAndVisible();
}

void SpringBoard::show(const std::string& front, const std::string& backTo) {
  std::string made = front + "\n" + backTo + "\n" + world();
  if (made == shown_) return;
  shown_ = std::move(made);
  window_->setRootViewController(screenFor(front, backTo));
}

std::shared_ptr<ios::UIViewController> SpringBoard::screenFor(const std::string& front,
                                                              const std::string& backTo) {
  const WishSink wish = [this](ScreenWish tapped) { wish_ = std::move(tapped); };
  if (front == "home") return makeHomeScreen(wish);
  if (front == kCompanionIdentifier) return makeCompanionScreen(companionsHome(), backTo, wish);
  if (front == kSettingsIdentifier) return makeSettingsScreen(backTo, wish);
  if (front.starts_with("http:") || front.starts_with("https:")) return makeWebScreen(front, backTo, wish);
  return makePlainScreen(front, backTo, wish);
}

}  // namespace simulator
