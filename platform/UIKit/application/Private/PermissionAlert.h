#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Device/PermissionPrompt.h"

namespace ios {

class UIWindow;

/// The system's question whether the application may use something guarded: an alert in a window of its own,
/// over everything that the application shows, with "Don't Allow" and "OK". While it is up the application is
/// inactive and none of its windows gets touches. Main thread.
class PermissionAlert {
 public:
  /// One at a time; `answer` is called once, when the alert has gone.
  static void show(const PermissionQuestion& question, std::function<void(bool granted)> answer);
  /// `"Notes" Would Like to Access the Microphone`
  static std::string title(const std::string& service);

 private:
  static std::shared_ptr<UIWindow> makeWindow();
  static void finish(bool granted, const std::function<void(bool)>& answer);
};

}  // namespace ios
