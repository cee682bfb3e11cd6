#include "AppDelegate.h"

#include <Tellvane/Tellvane.h>
#include "AboutViewController.h"
#include "Foundation/NSUserDefaults.h"
#include "ListViewController.h"
#include "NoteStore.h"
#include "UIKit/UINavigationController.h"
#include "UIKit/UIScreen.h"
#include "UIKit/UITabBarController.h"

namespace Notes {

using namespace ios;

bool AppDelegate::applicationDidFinishLaunching(UIApplication&) {
  auto list = UINavigationController::withRootViewController(
      std::make_shared<ListViewController>(std::make_shared<NoteStore>(NoteStore::examples())));
  list->setTitle("Notes");
  auto tabs = std::make_shared<UITabBarController>();
  tabs->setViewControllers({list, std::make_shared<AboutViewController>()});

  interface_ = tabs;

  window_ = std::make_shared<UIWindow>(UIScreen::mainScreen()->bounds());
  window_->setRootViewController(interface_);
  window_->makeKeyAndVisible();

  const auto& settings = NSUserDefaults::standardUserDefaults();
  tellvane::Tellvane::instantiateSDK(settings->boolForKey("debug"), settings->boolForKey("microphone"));
  return true;
}

bool AppDelegate::applicationOpenURL(UIApplication&, const NSURL& url) {
  const std::string link = url.absoluteString();
  if (link == "notes://record") {
    tellvane::CaptureScreenRecording::shared()->captureScreenRecording();
    return true;
  }
  if (link != "notes://lock" && link != "notes://unlock") return false;
  window_->setRootViewController(link == "notes://lock" ? nullptr : interface_);
  return true;
}

}  // namespace Notes
