// From the stop of a recording of 30 seconds to the confirmation screen, and its player.
//   measure_confirmation virtual|real
#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <optional>
#include <string>

#include "AVFoundation/AVPlayer.h"
#include "AVKit/AVPlayerViewController.h"
#include "BenchmarkPhone.h"
#include "DeviceClock/Clock.h"
#include "QuartzCore/CADisplayLink.h"
#include "ScrolledList.h"
#include "TLVSaveRecordingConfirmation/TLVSaveRecordingViewController.h"
#include "Tellvane/Tellvane.h"
#include "UIKit/UIApplication.h"
#include "UIKit/UIGraphics.h"
#include "recording/TLVCaptureScreenRecording.h"

using namespace ios;
using namespace tellvane;
using std::chrono::duration;
using std::chrono::seconds;
using std::chrono::steady_clock;

namespace {

double processorSeconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// The longest time that the main thread keeps a refresh of the display waiting.
class Lateness : public Subclass<Lateness, NSObject> {
 public:
  static MethodList methods() { return {{"refresh", &Lateness::refresh}}; }
  void begin() {
    link_ = CADisplayLink::displayLinkWithTarget(shared_from_this(), "refresh");
    link_->addToRunLoop(NSRunLoop::mainRunLoop(), NSRunLoopCommonModes);
  }
  double most = 0;

 private:
  void refresh() {
    // Not the link's own time: a tick that is late has the time of the newest refresh.
    const auto now = steady_clock::now();
    if (last_) most = std::max(most, duration<double>(now - *last_).count() - 1 / 60.0);
    last_ = now;
  }
  std::shared_ptr<CADisplayLink> link_;
  std::optional<steady_clock::time_point> last_;
};

std::shared_ptr<UIViewController> screen() {
  return UIApplication::sharedApplication()->keyWindow()->rootViewController()->presentedViewController();
}

/// The player of the confirmation screen, once it is ready.
std::shared_ptr<AVPlayer> readyPlayer() {
  if (!screen() || screen()->childViewControllers().empty()) return nullptr;
  const auto controller =
      std::dynamic_pointer_cast<AVPlayerViewController>(screen()->childViewControllers().front());
  const auto player = controller ? controller->player() : nullptr;
  return player && player->status() == AVPlayerStatusReadyToPlay ? player : nullptr;
}

void drawScreen() {
  const auto window = UIApplication::sharedApplication()->keyWindow();
  UIGraphicsBeginImageContextWithOptions(window->bounds().size, true, 0);
  window->drawViewHierarchyInRectAfterScreenUpdates(window->bounds(), true);
  UIGraphicsEndImageContext();
}

}  // namespace

int main(int count, char** arguments) {
  const bool real = count > 1 && std::string(arguments[1]) == "real";
  BenchmarkPhone phone(real ? BenchmarkPhone::Time::real : BenchmarkPhone::Time::virtual_);
  Clock& clock = Clock::shared();
  const auto list = std::make_shared<ScrolledList>(phone.window());
  list->setScrolling(true);
  Tellvane::instantiateSDK(false, false);
  const auto session = TLVCaptureScreenRecording::shared();
  session->captureScreenRecording();
  clock.runFor(std::chrono::milliseconds(29'500));
  list->setScrolling(false);
  if (!session->isRecording()) return 1;

  const auto lateness = std::make_shared<Lateness>();
  lateness->begin();
  const auto stopped = steady_clock::now();
  session->stopRecording();
  if (!clock.runUntil([] { return screen() != nullptr; }, seconds(10))) return 1;
  const double presented = duration<double>(steady_clock::now() - stopped).count();
  const double before = processorSeconds();
  if (!clock.runUntil([] { return readyPlayer() != nullptr; }, seconds(10))) return 1;
  drawScreen();
  const double opening = processorSeconds() - before;
  std::fprintf(stderr, "presented_ms %f\nopening_ms %f\nlateness_ms %f\n", presented * 1e3, opening * 1e3,
               lateness->most * 1e3);
  if (real) return 0;

  const auto player = readyPlayer();
  const double length = CMTimeGetSeconds(player->duration());
  const auto begun = steady_clock::now();
  player->play();
  if (!clock.runUntil([&] { return player->rate() == 0; }, seconds(60))) return 1;
  std::fprintf(stderr, "length_seconds %f\nplaying_seconds %f\n", length,
               duration<double>(steady_clock::now() - begun).count());
}
