#include "UIKit/Private/PermissionAlert.h"

#include <map>
#include <optional>
#include <utility>

#include "Dispatch/Queue.h"
#include "Foundation/NSBundle.h"
#include "UIKit/Private/SystemText.h"
#include "UIKit/UIAlertController.h"
#include "UIKit/UIApplication.h"
#include "UIKit/UIScreen.h"

namespace ios {
namespace {

/// The window of the question that is up.
std::shared_ptr<UIWindow>& shownWindow() {
  static auto& window = *new std::shared_ptr<UIWindow>;
  return window;
}

std::string applicationName() {
  const auto bundle = NSBundle::mainBundle();
  if (const auto& info = bundle->infoDictionary()) {
    for (const char* key : {"CFBundleDisplayName", "CFBundleName"}) {
      const auto found = info->find(key);
      if (found != info->end() && found->second.text() && !found->second.text()->empty())
        return *found->second.text();
    }
  }
  return bundle->bundleIdentifier().value_or("This application");
}

}  // namespace

std::string PermissionAlert::title(const std::string& service) {
  static const std::map<std::string, const char*> kNames = {{"microphone", "Access the Microphone"},
                                                            {"photos", "Access Your Photos"},
                                                            {"camera", "Access the Camera"},
                                                            {"screen", "Record the Screen"}};
  const auto known = kNames.find(service);
  const std::string wish = known == kNames.end() ? "Access " + service : known->second;
  return systemText("\"%@\" Would Like to " + wish, applicationName());
}

std::shared_ptr<UIWindow> PermissionAlert::makeWindow() {
  auto window = std::make_shared<UIWindow>(UIScreen::mainScreen()->bounds());
  window->ofSystem_ = true;
  window->setWindowLevel(UIWindowLevelAlert);
  window->setRootViewController(std::make_shared<UIViewController>());
  // Not made key: the application does not know of this window, and keeps its own key window.
  window->setHidden(false);
  return window;
}

void PermissionAlert::show(const PermissionQuestion& question, std::function<void(bool granted)> answer) {
  UIApplication::sharedApplication()->setCovered(true);
  const auto window = makeWindow();
  shownWindow() = window;
  const std::optional<std::string> reason =
      question.reason.empty() ? std::nullopt : std::optional(question.reason);
  const auto alert = UIAlertController::alertControllerWithTitle(title(question.service), reason,
                                                                 UIAlertControllerStyle::alert);
  const auto add = [&](const char* title, bool granted) {
    alert->addAction(UIAlertAction::actionWithTitle(
        systemText(title), UIAlertActionStyle::default_,
        [answer, granted](const std::shared_ptr<UIAlertAction>&) { finish(granted, answer); }));
  };
  add("Don't Allow", false);
  add("OK", true);
  window->rootViewController()->presentViewController(alert, true);
}

void PermissionAlert::finish(bool granted, const std::function<void(bool)>& answer) {
  if (const auto window = std::exchange(shownWindow(), nullptr)) window->setHidden(true);
  answer(granted);
  // Queued behind the answer, which has been stored by then; the next question may already be up.
  dispatch_async(dispatch_get_main_queue(), [] {
    if (!shownWindow()) UIApplication::sharedApplication()->setCovered(false);
  });
}

}  // namespace ios
