#pragma once

#include <functional>
#include <string>

namespace ios {

/// A question to the user: may this application use something guarded?
struct PermissionQuestion {
  std::string service;  // "microphone", "photos", "screen": recording it
  /// The reason that the application's Info dictionary gives; may be empty.
  std::string reason;
};

/// Shows such questions: called on the main thread, one question at a time; must call `answer` once, at any
/// later time and on any thread. `UIApplicationMain` sets one that shows alerts. Without one, permissions
/// that were not decided before are refused, and nothing is stored.
using PermissionPresenter =
    std::function<void(const PermissionQuestion& question, std::function<void(bool granted)> answer)>;
void setPermissionPresenter(PermissionPresenter presenter);

/// Answers on a serial queue of the platform's own, once: the user's earlier answer, or the one they give
/// now, which is kept in the device's settings. Questions for one service that come while it is being asked
/// share the answer. Any thread.
void requestPermission(const PermissionQuestion& question, std::function<void(bool granted)> answer);

}  // namespace ios
