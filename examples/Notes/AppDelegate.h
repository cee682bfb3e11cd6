#pragma once

#include <memory>

#include "UIKit/UIApplication.h"
#include "UIKit/UIWindow.h"

namespace Notes {

/// Builds the interface: the notes in one tab, what the application is in the other.
class AppDelegate : public ios::UIApplicationDelegate {
 public:
  bool applicationDidFinishLaunching(ios::UIApplication& application) override;

 private:
  std::shared_ptr<ios::UIWindow> window_;
};

}  // namespace Notes
