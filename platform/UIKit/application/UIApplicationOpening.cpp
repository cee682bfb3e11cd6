#include <algorithm>
#include <cctype>

#include "Device/Device.h"
#include "DeviceClock/Clock.h"
#include "UIKit/UIApplication.h"

namespace ios {
namespace {

std::string lowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

bool isPage(const std::string& scheme) {
  return scheme == "http" || scheme == "https";
}
bool isSettings(const std::string& scheme) {
  return scheme + ":" == UIApplicationOpenSettingsURLString;
}

}  // namespace

bool UIApplication::canOpenURL(const NSURL& url) const {
  const std::string scheme = lowerCase(url.scheme());
  if (scheme.empty()) return false;
  return isPage(scheme) || isSettings(scheme) ||
         Device::current().applications().forScheme(scheme).has_value();
}

bool UIApplication::openURL(const NSURL& url) {
  const std::string scheme = lowerCase(url.scheme());
  if (scheme.empty()) return false;
  Clock& clock = Clock::shared();
  if (isPage(scheme) || isSettings(scheme)) {
    clock.postToMain([this, front = isPage(scheme) ? url.absoluteString() : std::string("settings")] {
      moveToBackground(front);
    });
    return true;
  }
  const auto application = Device::current().applications().forScheme(scheme);
  if (!application) return false;
  if (application->bundleIdentifier == Device::current().bundleIdentifier()) {
    clock.postToMain([this, url] {
      if (const auto delegate = delegate_) delegate->applicationOpenURL(*this, url);
    });
    return true;
  }
  clock.postToMain([this, application = *application, text = url.absoluteString()] {
    moveToBackground(application.bundleIdentifier);
    Device::current().applications().launch(
        application, text, [this, application](const LaunchResult& result) {
          launched(application.bundleIdentifier, result.started, result.status, result.problem);
        });
  });
  return true;
}

void UIApplication::launched(const std::string& application, bool started, int status,
                             const std::string& problem) {
  if (!started) {
    deviceLog("could not open " + application + ": " + (problem.empty() ? "it did not start" : problem));
    if (front_ == application) moveToForeground();
    return;
  }
  if (status == 0) return;
  deviceLog(application + " ended with status " + std::to_string(status) +
            (problem.empty() ? "" : ": " + problem));
  if (front_ == application) front_ = "home";
}

}  // namespace ios
