#pragma once

#include <memory>
#include <optional>
#include <string>

#include "CoreFoundation/PropertyList.h"
#include "UIKit/Automation/AutomationServer.h"
#include "UIKit/UIWindow.h"
#include "simulator/screens/Screens.h"

namespace simulator {

/// What the phone shows while no application that it steers is in front: icons, the companion, pages. It is
/// an application in this process, so that it is drawn, read and tapped like any other. Main thread, one a
/// process.
class SpringBoard {
 public:
  SpringBoard();

  /// Shows what `front` stands for: "home", a page's URL, or an application's identifier. What is on that
  /// screen is brought up to date.
  void show(const std::string& front, const std::string& backTo);
  ios::NSDictionary ask(const ios::NSDictionary& request) { return server_.answer(request); }
  /// What was tapped since the last call and is for the phone to do.
  std::optional<ScreenWish> takeWish() { return std::exchange(wish_, std::nullopt); }

 private:
  std::shared_ptr<ios::UIViewController> screenFor(const std::string& front, const std::string& backTo);

  std::shared_ptr<ios::UIWindow> window_;
  ios::AutomationServer server_;
  std::string shown_;  // all that the screen on display was made from
  std::optional<ScreenWish> wish_;
};

}  // namespace simulator
