#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>

#include "Base/Mutex.h"
#include "Tellvane/Platform.h"
#include "recording/TLVScreenRecorder.h"

namespace tellvane {

/// Starts and stops recordings: each has a recorder of its own, and is stopped by a trigger, by the time
/// limit or by the application going to the background. A recording that was saved is shown on the
/// confirmation screen.
class TLVCaptureScreenRecording : public Subclass<TLVCaptureScreenRecording, NSObject> {
 public:
  /// The one instance, made on first use. Any thread.
  static const std::shared_ptr<TLVCaptureScreenRecording>& shared();
  /// Observes the application's move to the background.
  static std::shared_ptr<TLVCaptureScreenRecording> init();
  static MethodList methods();

  /// Starts a new recording. To be called while none is running: an earlier recorder is released, not
  /// stopped. Does nothing while the user is still being asked for the microphone. Main thread.
  virtual void captureScreenRecording();
  /// The application went to the background: stops. Main thread.
  virtual void handleAppBecameInActive();
  /// Does nothing unless a recording is running. Main thread or the recorder's render queue.
  virtual void stopRecording();
  /// From a successful start to the stop request. Any thread.
  virtual bool isRecording() const;
  /// Of the recording that runs or was started last; empty once that has ended. Any thread.
  std::shared_ptr<TLVScreenRecorder> screenRecorder() const;

 private:
  /// The recorder's delegate, on its render queue: `seconds` of movie lie before the frame
  /// that is being drawn.
  void stopRecordingAtDesiredTime(double seconds);
  void recordingEnded(const std::shared_ptr<TLVScreenRecorder>& recorder,
                      const std::optional<std::string>& localIdentifier);
  void startRecorder();

  std::atomic<bool> starting_ = false;
  mutable Mutex mutex_;  // held only for copying
  std::shared_ptr<TLVScreenRecorder> screenRecorder_ IOS_GUARDED_BY(mutex_);
};

}  // namespace tellvane
