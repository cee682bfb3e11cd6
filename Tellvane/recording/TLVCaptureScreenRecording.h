#pragma once

#include <memory>
#include <optional>
#include <string>

#include "ObjectiveC/Mutex.h"
#include "Platform.h"
#include "recording/TLVScreenRecorder.h"

namespace tellvane {

/// Starts and stops recordings: a recorder of its own for each, stopped by a trigger, by the time limit or by
/// the application going to the background. A recording that was saved is shown on the confirmation screen.
class TLVCaptureScreenRecording : public Subclass<TLVCaptureScreenRecording, NSObject> {
 public:
  /// Made on first use.
  static const std::shared_ptr<TLVCaptureScreenRecording>& shared();
  /// One that watches for the background.
  static std::shared_ptr<TLVCaptureScreenRecording> init();
  static MethodList methods();

  /// Starts a new recording. To be asked while none is running: an earlier recorder is let go, not stopped.
  /// While the user is still being asked for the microphone, nothing happens. Main thread.
  virtual void captureScreenRecording();
  /// Does nothing unless a recording is running. Main thread or the recorder's render queue.
  virtual void stopRecording();
  /// From a successful start to the stop request. Any thread.
  virtual bool isRecording() const;
  /// The application went to the background. Main thread.
  virtual void handleAppBecameInActive();

 private:
  /// The recorder's delegate, on its render queue: `seconds` of movie lie before the frame that is being
  /// drawn.
  void stopRecordingAtDesiredTime(double seconds);
  void recordingEnded(const std::shared_ptr<TLVScreenRecorder>& recorder,
                      const std::optional<std::string>& localIdentifier);
  std::shared_ptr<TLVScreenRecorder> screenRecorder() const;

  bool starting_ = false;  // main thread
  mutable Mutex mutex_;    // held for the copy alone
  std::shared_ptr<TLVScreenRecorder> screenRecorder_ IOS_GUARDED_BY(mutex_);
};

}  // namespace tellvane
