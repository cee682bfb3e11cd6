#pragma once

#include <memory>
#include <set>
#include <string>

#include "ReplayKit/RPScreenRecorder.h"
#include "Tellvane/Platform.h"

namespace tellvane {

/// Records with the system's own recorder, for hosts that ask for it; the library itself does not. The system
/// keeps the movie: when a recording has ended, an alert offers the system's preview, on which the user saves
/// it or not. Each recording ends after TLV_RECORDING_TIME_SEC at the latest. What fails is logged.
///
/// The operations may be called on any thread, and by selector. The system's callbacks on other threads are moved to
/// the main one.
class TLV_EXPORT CaptureScreenRecording : public Subclass<CaptureScreenRecording, NSObject>,
                                          public RPScreenRecorderDelegate,
                                          public RPPreviewViewControllerDelegate {
 public:
  /// The one instance, made on first use.
  static const std::shared_ptr<CaptureScreenRecording>& shared();
  static MethodList methods();

  /// Asks the system for a recording, with the microphone if the library was started so. `isRecording` shows, soon
  /// after, whether it began.
  virtual void captureScreenRecording();
  /// Does nothing unless the system records. The timer of every recording calls this 30 seconds after it
  /// began, even when it has ended by then and the next one runs.
  virtual void stopRecording();
  virtual bool isRecording() const;

  void screenRecorderDidStopRecordingWithError(
      const std::shared_ptr<RPScreenRecorder>& screenRecorder, const std::shared_ptr<NSError>& error,
      const std::shared_ptr<RPPreviewViewController>& previewViewController) override;
  /// Logs what the user did with the movie, and dismisses the preview.
  void previewControllerDidFinishWithActivityTypes(
      const std::shared_ptr<RPPreviewViewController>& previewController,
      const std::set<std::string>& activityTypes) override;

 private:
  enum class Ending { asAsked, abrupt };
  void started(const std::shared_ptr<NSError>& error);
  void stopped(const std::shared_ptr<RPPreviewViewController>& preview,
               const std::shared_ptr<NSError>& error);
  /// Nothing is shown when there is no preview, or no view controller to show it on.
  void offer(const std::shared_ptr<RPPreviewViewController>& preview, Ending ending);
};

}  // namespace tellvane
