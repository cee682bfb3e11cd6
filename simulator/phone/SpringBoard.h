#pragma once

#include <memory>
#include <optional>
#include <string>

#include "UIKit/AutomationCoding.h"
#include "UIKit/AutomationServer.h"
#include "UIKit/UIWindow.h"
#include "simulator/screens/Screens.h"

namespace simulator {

/// What the phone shows while no application that it steers is in front: icons, the companion, pages.
/// It is an application in this process, so that it is drawn, read and tapped like any other. Main
/// thread, one per process.
class SpringBoard {
 public:
  SpringBoard();

  /// Where "step" puts the picture.
  void setDisplay(std::shared_ptr<ios::DisplayMemory> display) { server_.setDisplay(std::move(display)); }
  /// Shows the screen that `front` names: "home", a page's URL, or an application's identifier. What is on that
  /// screen is brought up to date.
  void show(const std::string& front, const std::string& backTo);
  template <class Request>
  typename Request::Answer ask(const Request& request) {
    return ios::automation::ask(
               request, [this](const auto& message) { return std::optional(server_.answer(message)); })
        ->answer;
  }
  /// What was tapped since the last call, for the phone to carry out.
  std::optional<ScreenWish> takeWish() { return std::exchange(wish_, std::nullopt); }

 private:
  std::shared_ptr<ios::UIViewController> screenFor(const std::string& front, const std::string& backTo);

  std::shared_ptr<ios::UIWindow> window_;
  ios::AutomationServer server_;
  std::string shown_;  // all that the screen on display was made from
  std::optional<ScreenWish> wish_;
};

}  // namespace simulator
