#include "Tellvane/TLVManager.h"

#include <utility>

#include "Foundation/NSTimer.h"
#include "UIKit/UIApplication.h"
#include "front/CaptureMenu.h"
#include "front/Handoff.h"
#include "front/ScreenName.h"
#include "ground/Memory.h"
#include "ground/Switches.h"
#include "ground/Threading.h"
#include "info/TLVConstants.h"
#include "info/printTLV.h"
#include "media/CaptureScreenshot.h"
#include "recording/TLVCaptureScreenRecording.h"
#include "triggers/GestureListeners.h"
#include "triggers/UIApplication+TopViewController.h"

namespace tellvane {
namespace {

// How soon a window that the host makes key gets the recognisers.
constexpr double kReinstallationInterval = 10.0;
// The time the companion application has to open and to take the item.
constexpr double kRedirectCheckDelay = 3.0;

/// A choice reaches its handler once the sheet has gone, and by then the user may be somewhere else: the
/// companion would come in front of that, and nobody would see what is recorded.
bool userHasLeft() {
  return UIApplication::sharedApplication()->applicationState() == UIApplicationState::background;
}

// Selectors belong to instances here, so these stand for the class operations.
void runBySelector(TLVManager&, const std::function<void()>& closure) {
  TLVManager::runOnMainThread(closure);
}
void delayBySelector(TLVManager&, double seconds, const dispatch_queue_t& queue,
                     const std::function<void()>& closure) {
  TLVManager::delay(seconds, queue, closure);
}

}  // namespace

MethodList TLVManager::methods() {
  return {{"captureScreen", &TLVManager::captureScreen},
          {"saveVideoRecordingAndOpenTLV:", &TLVManager::saveVideoRecordingAndOpenTLV},
          {"isAppRedirectedtoTLV", &TLVManager::isAppRedirectedtoTLV},
          {"runOnMainThread:", &runBySelector},
          {"delay:queue:closure:", &delayBySelector}};
}

const std::shared_ptr<TLVManager>& TLVManager::shared() {
  static auto& manager = *new std::shared_ptr<TLVManager>(std::make_shared<TLVManager>());
  return manager;
}

TLVManager::TLVManager() : menu_(std::make_shared<CaptureMenu>()) {}
TLVManager::~TLVManager() = default;

bool TLVManager::isDebugMode() const {
  return debugMode();
}

void TLVManager::setIsDebugMode(bool debugMode) {
  setDebugMode(debugMode);
}

bool TLVManager::getRecordWithMicrophoneEnabled() const {
  return microphoneEnabled();
}

void TLVManager::instantiateSDK(bool debugMode, bool microphoneEnabled) {
  setIsDebugMode(debugMode);
  setMicrophoneEnabled(microphoneEnabled);
  unlessMemoryRunsOut([this] {
    start();
    printTLV(std::string("SDK Instantiated in ") + (isDebugMode() ? "debug mode" : "production mode"));
  });
}

void TLVManager::start() {
  if (std::exchange(started_, true)) return;
  const auto center = NSNotificationCenter::defaultCenter();
  try {
    center->addObserver(shared_from_this(), "captureScreen", TLV_GESTURE_SUCCESS, nullptr);
    center->addObserver(shared_from_this(), "saveVideoRecordingAndOpenTLV:", TLV_SCREEN_RECORD, nullptr);
    NSTimer::scheduledTimerWithTimeInterval(kReinstallationInterval, GestureListeners::shared(),
                                            "addTapGesturesToKeyWindow", nullptr, true);
  } catch (...) {
    // Half a start would leave nothing for the next one to do.
    center->removeObserver(*this);
    started_ = false;
    throw;
  }
}

bool TLVManager::checkIfAppIsActive() const {
  return UIApplication::sharedApplication()->applicationState() == UIApplicationState::active;
}

void TLVManager::runOnMainThread(const std::function<void()>& closure) {
  tellvane::runOnMainThread(closure);
}

void TLVManager::delay(double seconds, const dispatch_queue_t& queue, std::function<void()> closure) {
  tellvane::delay(seconds, queue, std::move(closure));
}

void TLVManager::captureScreen() {
  unlessMemoryRunsOut([this] {
    if (isMainThread()) return captureOrStop();
    dispatch_async(dispatch_get_main_queue(), [self = sharedAs<TLVManager>()] { self->captureScreen(); });
  });
}

void TLVManager::captureOrStop() {
  if (!isDebugMode()) return;
  const auto& recording = TLVCaptureScreenRecording::shared();
  if (recording->isRecording()) {
    recording->stopRecording();
    return;
  }
  // A second trigger would capture our own sheet and ask it to present another.
  if (menu_->isUp()) return;

  // Now, before the sheet is up: the image shows what the user saw.
  CaptureScreenshot::shared()->saveCurrentScreenshot();

  const auto top = topViewController();
  if (!top) return;
  setCurrentScreen(screenName(top->className(), APP_BUNDLE_NAME()));
  const auto self = sharedAs<TLVManager>();
  menu_->open([self](const auto& action) { self->captureScreenshot(action); },
              [self](const auto& action) { self->captureScreenRecording(action); });
}

void TLVManager::captureScreenshot(const std::shared_ptr<UIAlertAction>&) {
  unlessMemoryRunsOut([this] {
    printTLV("Capture Screenshot selected");
    if (userHasLeft()) return;
    setPasteBoardAndOpenTLV(screenshotItem(currentScreen()));
  });
}

void TLVManager::captureScreenRecording(const std::shared_ptr<UIAlertAction>&) {
  unlessMemoryRunsOut([] {
    printTLV("Capture Screen recording selected");
    if (userHasLeft()) return;
    TLVCaptureScreenRecording::shared()->captureScreenRecording();
  });
}

void TLVManager::saveVideoRecordingAndOpenTLV(const std::shared_ptr<NSNotification>& notification) {
  unlessMemoryRunsOut([&] {
    if (!isMainThread()) {
      dispatch_async(dispatch_get_main_queue(), [self = sharedAs<TLVManager>(), notification] {
        self->saveVideoRecordingAndOpenTLV(notification);
      });
      return;
    }
    printTLV("Saved the recording to TLV");
    if (!notification->userInfo()) return;
    const PropertyList userInfo = *notification->userInfo();
    if (const std::string* assetId = userInfo.text("assetId")) {
      setPasteBoardAndOpenTLV(recordingItem(currentScreen(), *assetId));
    }
  });
}

void TLVManager::setPasteBoardAndOpenTLV(const std::map<std::string, std::shared_ptr<NSData>>& item) {
  unlessMemoryRunsOut([&] { handOver(item); });
  const bool willBeChecked = unlessMemoryRunsOut([this] {
    NSTimer::scheduledTimerWithTimeInterval(kRedirectCheckDelay, shared_from_this(), "isAppRedirectedtoTLV",
                                            nullptr, false);
  });
  // Nobody else would ever take it off the pasteboard.
  if (!willBeChecked) withdrawItem();
}

void TLVManager::isAppRedirectedtoTLV() {
  unlessMemoryRunsOut([] { printTLV("Redirect to App Store"); });
  withdrawItem();
  unlessMemoryRunsOut([this] {
    if (!topViewController()) return;
    // An application that is not active was left for the companion, or is covered by the
    // system's question about it.
    if (!checkIfAppIsActive()) return;
    offerInstallation([self = sharedAs<TLVManager>()](const auto& action) { self->openAppStore(action); });
  });
}

void TLVManager::openAppStore(const std::shared_ptr<UIAlertAction>&) {
  unlessMemoryRunsOut([] { openStorePage(); });
}

}  // namespace tellvane
