#include "recording/TLVCaptureScreenRecording.h"

#include <utility>

#include "Foundation/NSNotificationCenter.h"
#include "TLVSaveRecordingConfirmation/TLVSaveRecordingViewController.h"
#include "UIKit/UIApplication.h"
#include "ground/Memory.h"
#include "ground/Switches.h"
#include "info/TLVConstants.h"
#include "info/printTLV.h"
#include "triggers/PresentOnTop.h"

namespace tellvane {
namespace {

constexpr double kBitRate = 0.6;  // megabits of 1,048,576 bits per second
constexpr long kFramesPerSecond = 30;
constexpr char kInterfaceFile[] = "TLVSaveRecordingViewController";

}  // namespace

MethodList TLVCaptureScreenRecording::methods() {
  return {{"captureScreenRecording", &TLVCaptureScreenRecording::captureScreenRecording},
          {"handleAppBecameInActive", &TLVCaptureScreenRecording::handleAppBecameInActive},
          {"stopRecording", &TLVCaptureScreenRecording::stopRecording},
          {"isRecording", &TLVCaptureScreenRecording::isRecording},
          {"stopRecordingAtDesiredTime:", &TLVCaptureScreenRecording::stopRecordingAtDesiredTime}};
}

const std::shared_ptr<TLVCaptureScreenRecording>& TLVCaptureScreenRecording::shared() {
  static auto& instance = *new std::shared_ptr<TLVCaptureScreenRecording>(init());
  return instance;
}

std::shared_ptr<TLVCaptureScreenRecording> TLVCaptureScreenRecording::init() {
  auto controller = std::make_shared<TLVCaptureScreenRecording>();
  NSNotificationCenter::defaultCenter()->addObserver(controller, "handleAppBecameInActive",
                                                     UIApplicationDidEnterBackgroundNotification, nullptr);
  return controller;
}

std::shared_ptr<TLVScreenRecorder> TLVCaptureScreenRecording::screenRecorder() const {
  MutexLock lock(mutex_);
  return screenRecorder_;
}

bool TLVCaptureScreenRecording::isRecording() const {
  const auto recorder = screenRecorder();
  return recorder && recorder->isRecording();
}

void TLVCaptureScreenRecording::captureScreenRecording() {
  // Two recorders would be answered by one permission, and only one of them would ever be stopped.
  if (starting_.exchange(true)) return;
  if (!unlessMemoryRunsOut([this] { startRecorder(); })) starting_ = false;
}

void TLVCaptureScreenRecording::startRecorder() {
  const auto recorder = std::make_shared<TLVScreenRecorder>(kBitRate, kFramesPerSecond, microphoneEnabled());
  {
    auto earlier = recorder;  // released after the lock
    MutexLock lock(mutex_);
    screenRecorder_.swap(earlier);
  }
  recorder->setDelegate(shared_from_this());
  recorder->startTLVScreenRecording([self = sharedAs<TLVCaptureScreenRecording>()](bool success) {
    self->starting_ = false;
    if (success) unlessMemoryRunsOut([] { printTLV("Screen recording started"); });
  });
}

void TLVCaptureScreenRecording::stopRecording() {
  if (!isRecording()) return;
  const auto recorder = screenRecorder();
  if (!recorder) return;
  const bool willAsk = unlessMemoryRunsOut([&] {
    recorder->stopTLVRecordingWithCompletion(
        [self = sharedAs<TLVCaptureScreenRecording>(), recorder](std::optional<std::string> localIdentifier) {
          self->recordingEnded(recorder, localIdentifier);
        });
  });
  if (willAsk) return;
  // It must not go on all the same, with the microphone on and maybe in the background.
  recorder->stopTLVRecordingWithCompletion(nullptr);
  recordingEnded(recorder, std::nullopt);
}

void TLVCaptureScreenRecording::recordingEnded(const std::shared_ptr<TLVScreenRecorder>& recorder,
                                               const std::optional<std::string>& localIdentifier) {
  unlessMemoryRunsOut([] { printTLV("Screen recording ended"); });
  {
    MutexLock lock(mutex_);
    // By now the next recording may have been started.
    if (screenRecorder_ == recorder) screenRecorder_ = nullptr;
  }
  if (!localIdentifier) return;
  unlessMemoryRunsOut([&] {
    const auto screen =
        std::make_shared<TLVSaveRecordingViewController>(*localIdentifier, kInterfaceFile, TLV_BUNDLE());
    presentOnTop(screen);
  });
}

void TLVCaptureScreenRecording::stopRecordingAtDesiredTime(double seconds) {
  if (TLV_RECORDING_TIME_SEC < seconds) stopRecording();
}

void TLVCaptureScreenRecording::handleAppBecameInActive() {
  unlessMemoryRunsOut([] { printTLV("App went to background"); });
  stopRecording();
}

}  // namespace tellvane
