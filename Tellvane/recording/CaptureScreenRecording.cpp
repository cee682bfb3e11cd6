#include "Tellvane/CaptureScreenRecording.h"

#include <utility>

#include "Dispatch/Queue.h"
#include "Foundation/NSTimer.h"
#include "UIKit/UIAlertController.h"
#include "ground/Memory.h"
#include "ground/Switches.h"
#include "info/LocalizedText.h"
#include "info/TLVConstants.h"
#include "info/printTLV.h"
#include "triggers/PresentOnTop.h"
#include "triggers/UIApplication+TopViewController.h"

namespace tellvane {
namespace {

/// The system calls back on a queue of its own; alerts and timers belong to the main thread.
template <class Work>
void onMainThread(const Work& work) {
  unlessMemoryRunsOut([&] {
    if (isMainThread()) return work();
    dispatch_async(dispatch_get_main_queue(), [work] { unlessMemoryRunsOut(work); });
  });
}

/// Where the alert was, or on top of what has taken that screen's place meanwhile.
void show(const std::shared_ptr<RPPreviewViewController>& preview,
          const std::shared_ptr<UIViewController>& top) {
  if (top && !top->presentedViewController() && !top->isBeingDismissed() && top->view()->window()) {
    top->presentViewController(preview, true);
  } else {
    presentOnTop(preview);
  }
}

}  // namespace

MethodList CaptureScreenRecording::methods() {
  return {{"captureScreenRecording", &CaptureScreenRecording::captureScreenRecording},
          {"stopRecording", &CaptureScreenRecording::stopRecording},
          {"isRecording", &CaptureScreenRecording::isRecording},
          {"screenRecorder:didStopRecordingWithError:previewViewController:",
           &CaptureScreenRecording::screenRecorderDidStopRecordingWithError},
          {"previewController:didFinishWithActivityTypes:",
           &CaptureScreenRecording::previewControllerDidFinishWithActivityTypes}};
}

const std::shared_ptr<CaptureScreenRecording>& CaptureScreenRecording::shared() {
  static auto& instance = *new std::shared_ptr(std::make_shared<CaptureScreenRecording>());
  return instance;
}

bool CaptureScreenRecording::isRecording() const {
  return RPScreenRecorder::sharedRecorder()->isRecording();
}

void CaptureScreenRecording::captureScreenRecording() {
  unlessMemoryRunsOut([this] {
    const auto& recorder = RPScreenRecorder::sharedRecorder();
    const auto self = sharedAs<CaptureScreenRecording>();
    recorder->setDelegate(self);
    recorder->startRecordingWithMicrophoneEnabled(microphoneEnabled(),
                                                  [self](const std::shared_ptr<NSError>& error) {
                                                    onMainThread([self, error] { self->started(error); });
                                                  });
  });
}

void CaptureScreenRecording::started(const std::shared_ptr<NSError>& error) {
  if (error) {
    printTLV("Start recording Error: " + error->localizedDescription());
    return;
  }
  const bool willEnd = unlessMemoryRunsOut([this] {
    NSTimer::scheduledTimerWithTimeInterval(TLV_RECORDING_TIME_SEC, shared_from_this(), "stopRecording",
                                            nullptr, false);
  });
  if (!willEnd) stopRecording();
}

void CaptureScreenRecording::stopRecording() {
  if (!isRecording()) return;
  unlessMemoryRunsOut([this] {
    RPScreenRecorder::sharedRecorder()->stopRecordingWithHandler(
        [self = sharedAs<CaptureScreenRecording>()](const std::shared_ptr<RPPreviewViewController>& preview,
                                                    const std::shared_ptr<NSError>& error) {
          onMainThread([self, preview, error] { self->stopped(preview, error); });
        });
  });
}

void CaptureScreenRecording::stopped(const std::shared_ptr<RPPreviewViewController>& preview,
                                     const std::shared_ptr<NSError>& error) {
  if (error) {
    printTLV("Error stopping recording: " + error->localizedDescription());
    return;
  }
  offer(preview, Ending::asAsked);
}

void CaptureScreenRecording::screenRecorderDidStopRecordingWithError(
    const std::shared_ptr<RPScreenRecorder>&, const std::shared_ptr<NSError>& error,
    const std::shared_ptr<RPPreviewViewController>& previewViewController) {
  onMainThread([self = sharedAs<CaptureScreenRecording>(), error, previewViewController] {
    printTLV("Stopped recording with error: " + error->localizedDescription());
    self->offer(previewViewController, Ending::abrupt);
  });
}

void CaptureScreenRecording::offer(const std::shared_ptr<RPPreviewViewController>& preview, Ending ending) {
  if (!preview || !topViewController()) return;
  preview->setPreviewControllerDelegate(sharedAs<CaptureScreenRecording>());
  const bool abrupt = ending == Ending::abrupt;
  const auto alert = UIAlertController::alertControllerWithTitle(
      localizedText(abrupt ? "Recording ended abruptly!" : "Recording video succesful!"),
      localizedText("Save the video"), UIAlertControllerStyle::alert);
  const auto presenter = std::make_shared<std::weak_ptr<UIViewController>>();
  alert->addAction(
      UIAlertAction::actionWithTitle(localizedText("Save"), UIAlertActionStyle::default_,
                                     [preview, presenter](const std::shared_ptr<UIAlertAction>&) {
                                       unlessMemoryRunsOut([&] { show(preview, presenter->lock()); });
                                     }));
  if (abrupt) {
    alert->addAction(
        UIAlertAction::actionWithTitle(localizedText("Cancel"), UIAlertActionStyle::cancel, nullptr));
  }
  presentOnTop(alert, [presenter](const std::shared_ptr<UIViewController>& top) { *presenter = top; });
}

void CaptureScreenRecording::previewControllerDidFinishWithActivityTypes(
    const std::shared_ptr<RPPreviewViewController>& previewController,
    const std::set<std::string>& activityTypes) {
  onMainThread([previewController, activityTypes] {
    for (const auto& type : activityTypes) printTLV(type);
    if (previewController) previewController->dismissViewControllerAnimated(true);
  });
}

}  // namespace tellvane
