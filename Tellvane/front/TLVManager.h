#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "Dispatch/Queue.h"
#include "Foundation/NSData.h"
#include "Foundation/NSNotificationCenter.h"
#include "Tellvane/Platform.h"
#include "UIKit/UIAlertController.h"

namespace tellvane {

class CaptureMenu;

/// The library's coordinator: starts it, answers triggers with the capture menu, and hands captures over to
/// the companion application. Main thread, except where stated otherwise.
class TLV_EXPORT TLVManager : public Subclass<TLVManager, NSObject> {
 public:
  /// The one instance, made on first use. Any thread.
  static const std::shared_ptr<TLVManager>& shared();
  static MethodList methods();

  /// Debug mode (true, also before the start) or production mode; one switch per process. Any thread.
  virtual bool isDebugMode() const;
  virtual void setIsDebugMode(bool debugMode);
  /// Name of the screen on which the capture menu was last opened; "App Screen" before that.
  virtual const std::string& currentScreen() const { return currentScreen_; }
  virtual void setCurrentScreen(std::string screen) { currentScreen_ = std::move(screen); }

  TLVManager();
  ~TLVManager() override;

  /// Whether recordings include the microphone; false before the start. One switch per process. Any thread.
  virtual bool getRecordWithMicrophoneEnabled() const;
  virtual void instantiateSDK(bool debugMode, bool microphoneEnabled);
  /// Whether the application is active: not covered by a system alert, not in the background. Any thread.
  virtual bool checkIfAppIsActive() const;

  /// Runs `closure` on the main thread and returns when it has run: directly when already there,
  /// else by waiting for the main queue; the caller must then hold nothing that the main thread
  /// waits for. Any thread.
  static void runOnMainThread(const std::function<void()>& closure);
  /// Runs `closure` once on `queue`, `seconds` from now and never inside this call; a negative time counts as
  /// zero. Nothing happens without a queue or for a number that is not finite; a time beyond 2^63 ns never
  /// comes. Any thread.
  static void delay(double seconds, const dispatch_queue_t& queue, std::function<void()> closure);

 private:
  void start();
  // Handlers of the library's notifications, which a host may post on any thread: they go
  // on to the main thread.
  void captureScreen();
  void captureOrStop();
  void saveVideoRecordingAndOpenTLV(const std::shared_ptr<NSNotification>& notification);

  void captureScreenshot(const std::shared_ptr<UIAlertAction>& action);
  void captureScreenRecording(const std::shared_ptr<UIAlertAction>& action);

  void setPasteBoardAndOpenTLV(const std::map<std::string, std::shared_ptr<NSData>>& item);
  void isAppRedirectedtoTLV();
  void openAppStore(const std::shared_ptr<UIAlertAction>& action);

  std::string currentScreen_ = "App Screen";
  bool started_ = false;
  std::shared_ptr<CaptureMenu> menu_;
};

}  // namespace tellvane
