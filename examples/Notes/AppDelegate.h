#pragma once

#include <memory>

#include "UIKit/UIApplication.h"
#include "UIKit/UIWindow.h"

namespace Notes {

/// Builds the interface: the notes in one tab, the "About" screen in the other. While it is locked, by
/// opening `notes://lock`, its window shows nothing; `notes://unlock` brings back what it showed.
class AppDelegate : public ios::UIApplicationDelegate {
 public:
  bool applicationDidFinishLaunching(ios::UIApplication& application) override;
  bool applicationOpenURL(ios::UIApplication& application, const ios::NSURL& url) override;

 private:
  std::shared_ptr<ios::UIWindow> window_;
  std::shared_ptr<ios::UIViewController> interface_;
};

}  // namespace Notes
