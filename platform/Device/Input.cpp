#include "Device/Input.h"

#include <algorithm>
#include <cmath>

#include "Dispatch/Queue.h"

namespace ios {

void Input::setSinks(TouchSink touches, ShakeSink shake) {
  touchSink_ = std::move(touches);
  shakeSink_ = std::move(shake);
}

void Input::touches(const std::vector<TouchSample>& samples) {
  assertMainThread("Input::touches");
  // Copied, since what the sink sets off may replace it.
  if (const auto sink = touchSink_) sink(samples);
}

void Input::shake() {
  assertMainThread("Input::shake");
  if (const auto sink = shakeSink_) sink();
}

void Input::tap(const Tap& tap) {
  constexpr CGFloat kFingerDistance = 40;
  for (int i = 0; i < tap.count; ++i) {
    if (i > 0) Clock::shared().runFor(tap.delay);
    std::vector<TouchSample> samples;
    for (int finger = 0; finger < tap.fingers; ++finger) {
      const CGFloat offset = (finger - (tap.fingers - 1) / 2.0) * kFingerDistance;
      samples.push_back(
          {nextFinger_++, TouchSample::Phase::began, {tap.location.x + offset, tap.location.y}});
    }
    touches(samples);
    Clock::shared().runFor(tap.hold);
    for (auto& sample : samples) sample.phase = TouchSample::Phase::ended;
    touches(samples);
  }
}

void Input::swipe(CGPoint from, CGPoint to, Clock::Duration duration) {
  const double seconds = std::chrono::duration<double>(duration).count();
  const auto steps = std::max<std::int64_t>(1, std::llround(seconds * Clock::kRefreshesPerSecond));
  TouchSample sample{nextFinger_++, TouchSample::Phase::began, from};
  touches({sample});
  sample.phase = TouchSample::Phase::moved;
  for (std::int64_t step = 1; step <= steps; ++step) {
    Clock::shared().runFor(duration * step / steps - duration * (step - 1) / steps);
    const CGFloat share = static_cast<CGFloat>(step) / static_cast<CGFloat>(steps);
    sample.location = {from.x + (to.x - from.x) * share, from.y + (to.y - from.y) * share};
    touches({sample});
  }
  sample.phase = TouchSample::Phase::ended;
  touches({sample});
}

}  // namespace ios
