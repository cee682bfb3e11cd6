#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "CoreGraphics/CGGeometry.h"
#include "DeviceClock/Clock.h"

namespace ios {

/// One change of one finger on the glass, in points of the screen as it is held now.
struct TouchSample {
  enum class Phase { began, moved, ended, cancelled };
  std::int64_t finger = 0;
  Phase phase = Phase::began;
  CGPoint location;
};

/// Raw input of the device: the application object takes it from here, on the main thread; tests, the
/// simulator and the driver supply it. Samples supplied together arrive as one event.
class Input {
 public:
  using TouchSink = std::function<void(const std::vector<TouchSample>&)>;
  using ShakeSink = std::function<void()>;
  void setSinks(TouchSink touches, ShakeSink shake);

  void touches(const std::vector<TouchSample>& samples);
  void shake();

  // Gestures composed of the above, in the clock's time; not to be called inside a verb of the clock. Each
  // returns when the gesture is over. A swipe moves 60 times a second.

  struct Tap {
    CGPoint location;
    int count = 1;
    int fingers = 1;  // side by side, 40 points apart
    Clock::Duration hold = std::chrono::milliseconds(50);
    Clock::Duration delay = std::chrono::milliseconds(100);  // between one tap and the next
  };
  void tap(const Tap& tap);
  void tap(CGPoint location) { tap(Tap{.location = location}); }
  void swipe(CGPoint from, CGPoint to, Clock::Duration duration = std::chrono::milliseconds(400));

 private:
  TouchSink touchSink_;
  ShakeSink shakeSink_;
  std::int64_t nextFinger_ = 1;
};

}  // namespace ios
