#include "ReplayKit/RPScreenRecorder.h"

#include <utility>

#include "AVFoundation/AVAudioSession.h"
#include "Device/Device.h"
#include "Device/Files.h"
#include "Device/PermissionPrompt.h"
#include "Dispatch/Queue.h"
#include "Foundation/NSNotificationCenter.h"
#include "ReplayKit/Private/DisplayRecording.h"
#include "ReplayKit/Private/RecordingError.h"
#include "UIKit/UIApplication.h"

namespace ios {
namespace {

constexpr const char* kService = "screen";

/// Where applications are told, off the main thread.
const dispatch_queue_t& tellingQueue() {
  static auto& queue = *new dispatch_queue_t(dispatch_queue_create("RPScreenRecorder"));
  return queue;
}

std::shared_ptr<RPPreviewViewController> previewOf(std::shared_ptr<RecordedMovie> movie) {
  return movie ? std::make_shared<RPPreviewViewController>(std::move(movie)) : nullptr;
}

}  // namespace

MethodList RPScreenRecorder::methods() {
  return {{"applicationDidEnterBackground", &RPScreenRecorder::applicationDidEnterBackground}};
}

const std::shared_ptr<RPScreenRecorder>& RPScreenRecorder::sharedRecorder() {
  static auto& recorder = *[] {
    auto* made = new std::shared_ptr<RPScreenRecorder>(new RPScreenRecorder());
    sweepTemporaryFiles(
        DisplayRecording::folder());  // of processes that were killed while they completed a movie
    NSNotificationCenter::defaultCenter()->addObserver(*made, "applicationDidEnterBackground",
                                                       UIApplicationDidEnterBackgroundNotification, nullptr);
    return made;
  }();
  return recorder;
}

std::shared_ptr<RPScreenRecorderDelegate> RPScreenRecorder::delegate() const {
  MutexLock lock(mutex_);
  return delegate_.lock();
}

void RPScreenRecorder::setDelegate(const std::shared_ptr<RPScreenRecorderDelegate>& delegate) {
  MutexLock lock(mutex_);
  delegate_ = delegate;
}

bool RPScreenRecorder::isAvailable() const {
  return Device::current().permission(kService) != Permission::restricted;
}

void RPScreenRecorder::startRecordingWithMicrophoneEnabled(bool microphoneEnabled, Started handler) {
  if (!isMainThread()) {
    return dispatch_async(dispatch_get_main_queue(), [this, microphoneEnabled, handler = std::move(handler)] {
      startRecordingWithMicrophoneEnabled(microphoneEnabled, handler);
    });
  }
  const Started started = [handler = std::move(handler)](const std::shared_ptr<NSError>& error) {
    if (handler) dispatch_async(tellingQueue(), [handler, error] { handler(error); });
  };
  if (starting_ || recording_) return started(recordingError(RPRecordingErrorAttemptToStartInRecordingState));
  if (!isAvailable()) return started(recordingError(RPRecordingErrorDisabled));
  starting_ = true;
  requestPermission({kService, ""}, [this, microphoneEnabled, started](bool allowed) {
    dispatch_async(dispatch_get_main_queue(), [this, allowed, microphoneEnabled, started] {
      answered(allowed, microphoneEnabled, started);
    });
  });
}

void RPScreenRecorder::answered(bool allowed, bool microphone, const Started& started) {
  if (!allowed) {
    starting_ = false;
    return started(recordingError(RPRecordingErrorUserDeclined));
  }
  if (!microphone) return begin(false, started);
  AVAudioSession::sharedInstance()->requestRecordPermission([this, started](bool granted) {
    dispatch_async(dispatch_get_main_queue(), [this, granted, started] { begin(granted, started); });
  });
}

void RPScreenRecorder::begin(bool microphone, const Started& started) {
  starting_ = false;
  // The user may have gone elsewhere while they were asked.
  if (UIApplication::sharedApplication()->applicationState() == UIApplicationState::background) {
    return started(recordingError(RPRecordingErrorFailedToStart));
  }
  std::shared_ptr<NSError> error;
  current_ = DisplayRecording::begin(
      microphone, [this] { interrupt(nullptr); }, error);
  recording_ = current_ != nullptr;
  started(error);
}

std::shared_ptr<DisplayRecording> RPScreenRecorder::takeRecording() {
  recording_ = false;
  return std::exchange(current_, nullptr);
}

void RPScreenRecorder::stopRecordingWithHandler(Stopped handler) {
  if (!isMainThread()) {
    return dispatch_async(dispatch_get_main_queue(),
                          [this, handler = std::move(handler)] { stopRecordingWithHandler(handler); });
  }
  const auto stopped = [handler = std::move(handler)](const std::shared_ptr<RecordedMovie>& movie,
                                                      const std::shared_ptr<NSError>& error) {
    if (!handler) return;
    dispatch_async(tellingQueue(), [handler, preview = previewOf(movie), error] { handler(preview, error); });
  };
  const auto recording = takeRecording();
  if (!recording) return stopped(nullptr, recordingError(RPRecordingErrorAttemptToStopNonRecording));
  recording->end(stopped);
}

void RPScreenRecorder::applicationDidEnterBackground() {
  interrupt(recordingError(RPRecordingErrorInterrupted));
}

void RPScreenRecorder::interrupt(const std::shared_ptr<NSError>& reason) {
  const auto recording = takeRecording();
  if (!recording) return;
  recording->end([this, reason](const std::shared_ptr<RecordedMovie>& movie,
                                const std::shared_ptr<NSError>& failure) {
    dispatch_async(tellingQueue(),
                   [self = sharedAs<RPScreenRecorder>(), delegate = delegate(), preview = previewOf(movie),
                    error = failure  ? failure
                            : reason ? reason
                                     : recordingError(RPRecordingErrorFailed)] {
                     if (delegate) delegate->screenRecorderDidStopRecordingWithError(self, error, preview);
                   });
  });
}

}  // namespace ios
