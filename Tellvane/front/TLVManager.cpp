#include "front/TLVManager.h"

#include <cmath>
#include <cstdint>
#include <limits>

#include "Dispatch/Time.h"
#include "Foundation/NSTimer.h"
#include "UIKit/UIApplication.h"
#include "info/TLVConstants.h"
#include "info/printTLV.h"
#include "triggers/GestureListeners.h"

namespace tellvane {
namespace {

// How soon a window that the host makes key gets the recognisers.
constexpr double kReinstallationInterval = 10.0;

// Selectors belong to instances here, so these stand for the class operations of the same names.
void runOnMainThread(TLVManager&, const std::function<void()>& closure) {
  TLVManager::runOnMainThread(closure);
}
void delay(TLVManager&, double seconds, const dispatch_queue_t& queue, const std::function<void()>& closure) {
  TLVManager::delay(seconds, queue, closure);
}

}  // namespace

MethodList TLVManager::methods() {
  return {{"captureScreen", &TLVManager::captureScreen},
          {"saveVideoRecordingAndOpenTLV:", &TLVManager::saveVideoRecordingAndOpenTLV},
          {"isAppRedirectedtoTLV", &TLVManager::isAppRedirectedtoTLV},
          {"runOnMainThread:", &tellvane::runOnMainThread},
          {"delay:queue:closure:", &tellvane::delay}};
}

const std::shared_ptr<TLVManager>& TLVManager::shared() {
  static auto& manager = *new std::shared_ptr<TLVManager>(std::make_shared<TLVManager>());
  return manager;
}

void TLVManager::instantiateSDK(bool debugMode, bool microphoneEnabled) {
  setIsDebugMode(debugMode);
  recordWithMicrophoneEnabled_ = microphoneEnabled;
  if (!std::exchange(started_, true)) {
    const auto center = NSNotificationCenter::defaultCenter();
    center->addObserver(shared_from_this(), "captureScreen", TLV_GESTURE_SUCCESS, nullptr);
    center->addObserver(shared_from_this(), "saveVideoRecordingAndOpenTLV:", TLV_SCREEN_RECORD, nullptr);
    NSTimer::scheduledTimerWithTimeInterval(kReinstallationInterval, GestureListeners::shared(),
                                            "addTapGesturesToKeyWindow", nullptr, true);
  }
  printTLV(std::string("SDK Instantiated in ") + (isDebugMode() ? "debug mode" : "production mode"));
}

bool TLVManager::checkIfAppIsActive() const {
  return UIApplication::sharedApplication()->applicationState() == UIApplicationState::active;
}

void TLVManager::runOnMainThread(const std::function<void()>& closure) {
  if (isMainThread()) {
    closure();
  } else {
    dispatch_sync(dispatch_get_main_queue(), closure);
  }
}

void TLVManager::delay(double seconds, const dispatch_queue_t& queue, std::function<void()> closure) {
  if (!queue || !closure || !std::isfinite(seconds)) return;
  const double nanoseconds = seconds * static_cast<double>(NSEC_PER_SEC);
  constexpr double kRange = 9223372036854775808.0;  // 2^63, the first number that does not fit
  if (nanoseconds >= kRange) return;
  const auto delta = nanoseconds < -kRange ? std::numeric_limits<std::int64_t>::min()
                                           : static_cast<std::int64_t>(nanoseconds);
  dispatch_after(dispatch_time(DISPATCH_TIME_NOW, delta), queue, std::move(closure));
}

}  // namespace tellvane
