#include "RecordingPhone.h"

#include <gtest/gtest.h>

#include "DeviceClock/Clock.h"
#include "UIKit/UIColor.h"
#include "UIKit/UIGraphics.h"
#include "UIKit/UIImage.h"
#include "info/TLVConstants.h"

namespace testing_support {

using namespace ios;
using namespace tellvane;

MethodList FrameLog::methods() {
  return {{"writeBackgroundFrame:", &FrameLog::writeBackgroundFrame},
          {"stopRecordingAtDesiredTime:", &FrameLog::stopRecordingAtDesiredTime}};
}

std::vector<double> FrameLog::offsets() const {
  MutexLock lock(mutex_);
  return offsets_;
}

void FrameLog::writeBackgroundFrame(const CGContextRef& context) {
  ++backgrounds_;
  if (onBackground) onBackground(context);
}

void FrameLog::stopRecordingAtDesiredTime(double seconds) {
  {
    MutexLock lock(mutex_);
    offsets_.push_back(seconds);
  }
  if (onFrame) onFrame(seconds);
}

/// Paints the quarters of the screen anew at every second refresh, then looks at what the display shows.
class RecordingPhone::Painter : public Subclass<Painter, NSObject> {
 public:
  explicit Painter(std::map<double, Quarters>& shown) : shown_(shown) {}
  static MethodList methods() { return {{"refresh", &Painter::refresh}}; }

  void begin(const std::shared_ptr<UIWindow>& window) {
    window_ = window;
    const CGSize size = window->bounds().size;
    for (int i = 0; i < 4; ++i) {
      quarters_[i] = std::make_shared<UIView>(CGRectMake(i % 2 * size.width / 2, i / 2 * size.height / 2,
                                                         size.width / 2 + 1, size.height / 2 + 1));
      window->rootViewController()->view()->addSubview(quarters_[i]);
    }
    link_ = CADisplayLink::displayLinkWithTarget(shared_from_this(), "refresh");
    link_->setFrameInterval(2);
    link_->addToRunLoop(NSRunLoop::mainRunLoop(), NSRunLoopCommonModes);
  }
  void end() { link_->invalidate(); }

 private:
  void refresh() {
    look();
    ++step_;
    for (int i = 0; i < 4; ++i) {
      const auto channel = [&](int factor) { return (step_ * factor + i * 61) % 256 / 255.0; };
      quarters_[i]->setBackgroundColor(
          UIColor::colorWithRedGreenBlueAlpha(channel(9), channel(5), channel(13), 1));
    }
  }

  void look() {
    UIGraphicsBeginImageContextWithOptions(window_->bounds().size, true, 0);
    window_->drawViewHierarchyInRectAfterScreenUpdates(window_->bounds(), false);
    const auto image = UIGraphicsGetImageFromCurrentImageContext()->CGImageValue();
    UIGraphicsEndImageContext();
    Quarters& quarters = shown_[link_->timestamp()];
    for (std::size_t i = 0; i < 4; ++i) {
      const std::size_t x = image->width() * (1 + 2 * (i % 2)) / 4,
                        y = image->height() * (1 + 2 * (i / 2)) / 4;
      const std::uint8_t* pixel = image->pixels() + y * image->bytesPerRow() + 4 * x;
      quarters[i] = {pixel[2], pixel[1], pixel[0]};
    }
  }

  std::map<double, Quarters>& shown_;
  std::shared_ptr<UIWindow> window_;
  std::array<std::shared_ptr<UIView>, 4> quarters_;
  std::shared_ptr<CADisplayLink> link_;
  int step_ = 0;
};

RecordingPhone::RecordingPhone(const Options& options) : TestPhone(options.phone) {
  device().setPermission("photos", Permission::authorized);
  device().setPermission("microphone", options.microphonePermission);
  painter_ = std::make_shared<Painter>(shown_);
  painter_->begin(show());
  runFor(0.5);
  recorder_ = std::make_shared<TLVScreenRecorder>(0.6, options.fps, options.microphone);
  recorder_->setDelegate(frames_);
}

bool RecordingPhone::start() {
  std::optional<bool> started;
  recorder_->startTLVScreenRecording([&](bool success) { started = success; });
  const auto answered =
      Clock::shared().runUntil([&] { return started.has_value(); }, std::chrono::seconds(1));
  EXPECT_TRUE(answered) << answered.pending;
  return started.value_or(false);
}

int RecordingPhone::stop() {
  auto calls = std::make_shared<int>(0);
  recorder_->stopTLVRecordingWithCompletion([this, calls](std::optional<std::string> localIdentifier) {
    ++*calls;
    savedAs_ = std::move(localIdentifier);
    movieWasThere_ = std::filesystem::exists(temporaryMovie());
  });
  runFor(1);
  painter_->end();
  return *calls;
}

std::filesystem::path RecordingPhone::temporaryMovie() const {
  return TLV_SCREEN_RECORDING_PATH();
}

MovieProbe RecordingPhone::movie() const {
  return MovieProbe(folder() / "Media" / "DCIM" / "100TLVNE" / "IMG_0001.MOV");
}

bool RecordingPhone::libraryIsEmpty() const {
  std::error_code error;
  const std::filesystem::directory_iterator movies(folder() / "Media" / "DCIM" / "100TLVNE", error);
  return error || movies == std::filesystem::directory_iterator();
}

RecordingPhone::Quarters RecordingPhone::quartersOf(const Picture& picture) {
  Quarters quarters;
  for (std::size_t i = 0; i < 4; ++i)
    quarters[i] = picture.at(picture.width * (1 + 2 * (i % 2)) / 4, picture.height * (1 + 2 * (i / 2)) / 4);
  return quarters;
}

}  // namespace testing_support
