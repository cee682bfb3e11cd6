#pragma once

#include <atomic>
#include <functional>
#include <memory>

#include "Base/Mutex.h"
#include "Foundation/NSError.h"
#include "ObjectiveC/NSObject.h"
#include "ReplayKit/RPError.h"
#include "ReplayKit/RPPreviewViewController.h"

namespace ios {

class DisplayRecording;

/// The callbacks of a recorder, on a queue of its own.
class RPScreenRecorderDelegate {
 public:
  virtual ~RPScreenRecorderDelegate() = default;
  /// A recording that nobody stopped has ended; `previewViewController` shows what was recorded, and is empty if
  /// nothing was.
  virtual void screenRecorderDidStopRecordingWithError(
      const std::shared_ptr<class RPScreenRecorder>& screenRecorder, const std::shared_ptr<NSError>& error,
      const std::shared_ptr<RPPreviewViewController>& previewViewController) {
    (void)screenRecorder, (void)error, (void)previewViewController;
  }
};

/// The system's own recorder: a movie of what the display shows while the application is in front, its alerts included.
/// The application never gets the movie; it gets a screen on which the user watches the movie and decides what becomes
/// of it.
///
/// Handlers come once, on the queue on which the delegate is told, in the order of events. Errors are
/// of RPRecordingErrorDomain. Any thread; requests made off the main thread are carried out there soon.
class RPScreenRecorder : public Subclass<RPScreenRecorder, NSObject> {
 public:
  using Started = std::function<void(std::shared_ptr<NSError> error)>;
  using Stopped = std::function<void(std::shared_ptr<RPPreviewViewController> previewViewController,
                                     std::shared_ptr<NSError> error)>;

  /// Made on first use.
  static const std::shared_ptr<RPScreenRecorder>& sharedRecorder();
  static MethodList methods();

  /// Not kept alive.
  std::shared_ptr<RPScreenRecorderDelegate> delegate() const;
  void setDelegate(const std::shared_ptr<RPScreenRecorderDelegate>& delegate);

  /// From the moment a start succeeds until the stop is requested, or the recording is interrupted.
  bool isRecording() const { return recording_; }
  /// Whether the device's owner lets this application record.
  bool isAvailable() const;

  /// Asks the user unless they have answered before; with the microphone, asks for that too, and records
  /// without sound when it is refused. Refused while a recording runs or is being started.
  void startRecordingWithMicrophoneEnabled(bool microphoneEnabled, Started handler);
  void stopRecordingWithHandler(Stopped handler);

 private:
  RPScreenRecorder() = default;  // one, which stays: what it submits need not keep it alive
  void answered(bool allowed, bool microphone, const Started& started);
  void begin(bool microphone, const Started& started);
  void applicationDidEnterBackground();
  /// Ends the recording for the given reason, or else for that of the movie's writer.
  void interrupt(const std::shared_ptr<NSError>& reason);
  std::shared_ptr<DisplayRecording> takeRecording();

  mutable Mutex mutex_;  // held only for copying
  std::weak_ptr<RPScreenRecorderDelegate> delegate_ IOS_GUARDED_BY(mutex_);
  std::atomic<bool> recording_ = false;
  bool starting_ = false;                      // main thread
  std::shared_ptr<DisplayRecording> current_;  // main thread
};

}  // namespace ios
