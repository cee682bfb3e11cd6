#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Foundation/NSURL.h"
#include "UIKit/UIImage.h"
#include "UIKit/UIResponder.h"
#include "UIKit/UIWindow.h"

namespace ios {

enum class UIApplicationState : long { active = 0, inactive = 1, background = 2 };

inline const std::string UIApplicationDidBecomeActiveNotification =
    "UIApplicationDidBecomeActiveNotification";
inline const std::string UIApplicationWillResignActiveNotification =
    "UIApplicationWillResignActiveNotification";
inline const std::string UIApplicationDidEnterBackgroundNotification =
    "UIApplicationDidEnterBackgroundNotification";
inline const std::string UIApplicationWillEnterForegroundNotification =
    "UIApplicationWillEnterForegroundNotification";
inline const std::string UIApplicationWillTerminateNotification = "UIApplicationWillTerminateNotification";
/// The URL of the application's page in the system settings.
inline const std::string UIApplicationOpenSettingsURLString = "app-settings:";

/// Callbacks about the host application's own life cycle; all optional.
class UIApplicationDelegate : public NSObject {
 public:
  virtual bool applicationDidFinishLaunching(class UIApplication& application) {
    (void)application;
    return true;
  }
  virtual void applicationDidBecomeActive(class UIApplication& application) { (void)application; }
  virtual void applicationWillResignActive(class UIApplication& application) { (void)application; }
  virtual void applicationDidEnterBackground(class UIApplication& application) { (void)application; }
  virtual void applicationWillEnterForeground(class UIApplication& application) { (void)application; }
  virtual void applicationWillTerminate(class UIApplication& application) { (void)application; }
  /// The application was opened with a URL.
  virtual bool applicationOpenURL(class UIApplication& application, const NSURL& url) {
    (void)application;
    (void)url;
    return false;
  }
};

/// The application: its windows, its state, what it opens. One per process. Main thread.
class UIApplication : public Subclass<UIApplication, UIResponder> {
 public:
  UIApplication();
  static MethodList methods();
  /// Created on first use.
  static const std::shared_ptr<UIApplication>& sharedApplication();

  std::shared_ptr<UIWindow> keyWindow() const { return keyWindow_.lock(); }
  /// The application's visible windows, from back to front.
  std::vector<std::shared_ptr<UIWindow>> windows() const;
  /// The same, plus those in which the system shows its prompts.
  std::vector<std::shared_ptr<UIWindow>> windowsOnScreen() const;
  /// Any thread.
  UIApplicationState applicationState() const { return state_; }
  const std::shared_ptr<UIApplicationDelegate>& delegate() const { return delegate_; }

  /// Whether an application on the device claims the URL's scheme, or the system itself opens it (http,
  /// https, the settings page).
  bool canOpenURL(const NSURL& url) const;
  /// Opens the URL in whatever claims it: this application becomes inactive, then goes to the background,
  /// with the platform's notifications, and the other is launched as a process of its own. False, with
  /// nothing changed, if nothing claims it. Returns before the other application runs.
  bool openURL(const NSURL& url);

  virtual void sendEvent(const std::shared_ptr<UIEvent>& event);

  // What the device does to the application; the driver, tests and the platform call these.

  /// Calls the delegate's start, then makes the application active.
  void launch(std::shared_ptr<UIApplicationDelegate> delegate);
  /// To the background: inactive first, then background. `front` says what the display shows instead.
  void moveToBackground(const std::string& front);
  void moveToForeground();
  /// A system prompt covers the application, which makes it inactive, or has gone, which makes it active
  /// again. While it is covered, touches reach only the prompt.
  void setCovered(bool covered);
  /// Notifies the delegate and the observers, once; the caller ends the process.
  void terminate();
  /// From now on the user is asked for permissions by alerts over the application; until then, permissions
  /// that were not decided before are refused.
  void showPermissionAlerts();
  /// What the user sees: this application's bundle identifier, another's, a page's URL, or "home".
  const std::string& front() const { return front_; }
  /// The picture on the display while this application is in front: its windows, the status bar.
  std::shared_ptr<UIImage> displayImage();

 private:
  friend class UIWindow;
  friend class UIView;
  void receiveTouches(const std::vector<struct TouchSample>& samples);
  void receiveShake();
  void endTouches();
  void deviceChanged();
  void resignActive();
  void becomeActive();
  void launched(const std::string& application, bool started, int status, const std::string& problem);
  std::shared_ptr<UITouch> touchAt(CGPoint location, const std::shared_ptr<UIEvent>& event) const;
  void dispatchTouches(const std::shared_ptr<UIEvent>& event);
  void tell(void (UIApplicationDelegate::*call)(UIApplication&), const std::string& notification);
  void windowShown(const std::shared_ptr<UIWindow>& window);
  void windowGone(const UIWindow& window);

  std::shared_ptr<UIApplicationDelegate> delegate_;
  std::vector<std::weak_ptr<UIWindow>> windows_;
  std::weak_ptr<UIWindow> keyWindow_;
  std::atomic<UIApplicationState> state_ = UIApplicationState::inactive;
  bool covered_ = false;
  bool terminated_ = false;
  std::string front_;
  CGRect screenBounds_;
  long orientation_ = 0;
  struct DisplayCache;
  std::shared_ptr<DisplayCache> displayCache_;
  std::shared_ptr<UIImage> displayed_;
  std::vector<std::pair<std::int64_t, std::shared_ptr<UITouch>>> fingers_;
};

/// Runs the process as an application: starts it with `delegate`, then the main loop, until it is told to
/// end. The result is the process's exit status.
int UIApplicationMain(int argc, char** argv, std::shared_ptr<UIApplicationDelegate> delegate);

}  // namespace ios
