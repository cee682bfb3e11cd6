#pragma once

#include <array>
#include <atomic>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "QuartzCore/CADisplayLink.h"
#include "UIKit/UIViewController.h"
#include "recording/TLVScreenRecorder.h"
#include "support/MovieProbe.h"
#include "support/TestPhone.h"

namespace testing_support {

/// A recorder's delegate that keeps what it is told. Any of its fields may be set before the start; the
/// closures run on the render queue.
class FrameLog : public ios::Subclass<FrameLog, ios::NSObject> {
 public:
  static ios::MethodList methods();
  std::size_t backgrounds() const { return backgrounds_; }
  std::vector<double> offsets() const;
  std::function<void(const ios::CGContextRef&)> onBackground;
  std::function<void(double)> onFrame;

 private:
  void writeBackgroundFrame(const ios::CGContextRef& context);
  void stopRecordingAtDesiredTime(double seconds);
  std::atomic<std::size_t> backgrounds_ = 0;
  mutable ios::Mutex mutex_;
  std::vector<double> offsets_ IOS_GUARDED_BY(mutex_);
};

/// A phone whose photo library is open to the host, with a screen that changes at every second refresh, and
/// one recording of it.
class RecordingPhone : public TestPhone {
 public:
  struct Options {
    long fps = 30;
    bool microphone = false;
    ios::Permission microphonePermission = ios::Permission::authorized;
    TestPhone::Options phone = {};
  };
  RecordingPhone() : RecordingPhone(Options{}) {}
  explicit RecordingPhone(const Options& options);

  const std::shared_ptr<tellvane::TLVScreenRecorder>& recorder() const { return recorder_; }
  const std::shared_ptr<FrameLog>& frames() const { return frames_; }
  /// Starts, and lets the answer come: success.
  bool start();
  /// Stops, waits for the end; how often the completion came.
  int stop();
  const std::optional<std::string>& savedAs() const { return savedAs_; }
  /// Whether the temporary movie was there when the completion came, and where it is.
  bool movieWasThere() const { return movieWasThere_; }
  std::filesystem::path temporaryMovie() const;
  /// The first movie of the photo library.
  MovieProbe movie() const;
  bool libraryIsEmpty() const;

  /// What the display showed at its refreshes, by time in seconds: colours of the picture's four quarters.
  using Quarters = std::array<Colour, 4>;
  const std::map<double, Quarters>& shown() const { return shown_; }
  static Quarters quartersOf(const Picture& picture);

 private:
  class Painter;
  std::shared_ptr<Painter> painter_;
  std::shared_ptr<FrameLog> frames_ = std::make_shared<FrameLog>();
  std::shared_ptr<tellvane::TLVScreenRecorder> recorder_;
  std::optional<std::string> savedAs_;
  bool movieWasThere_ = false;
  std::map<double, Quarters> shown_;
};

}  // namespace testing_support
