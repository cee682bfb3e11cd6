#include "simulator/live/PacedPhone.h"

#include <algorithm>

namespace simulator {
namespace {

using ios::Clock;
using Phase = ios::TouchSample::Phase;

constexpr Clock::Duration kFrame = std::chrono::nanoseconds(1'000'000'000 / 60);
constexpr ios::CGFloat kFingerDistance = 40;
/// One equal picture may be an animation that is about to start; a few in a row are rest.
constexpr int kStillFrames = 3;

}  // namespace

void PacedPhone::tap(const ios::automation::Tap& tap) {
  if (!pacer_) return Phone::tap(tap);
  for (int i = 0; i < tap.count; ++i) {
    if (i > 0) runFor(tap.delay);
    std::vector<ios::TouchSample> fingers;
    for (int finger = 0; finger < tap.fingers; ++finger) {
      const ios::CGFloat offset = (finger - (tap.fingers - 1) / 2.0) * kFingerDistance;
      fingers.push_back({nextFinger_++, Phase::began, {tap.location.x + offset, tap.location.y}});
    }
    touch(fingers);
    runFor(tap.hold);
    for (auto& finger : fingers) finger.phase = Phase::ended;
    touch(fingers);
  }
}

void PacedPhone::swipe(ios::CGPoint from, ios::CGPoint to, Clock::Duration duration) {
  if (!pacer_) return Phone::swipe(from, to, duration);
  const auto steps = std::max<std::int64_t>(1, duration / kFrame);
  ios::TouchSample finger{nextFinger_++, Phase::began, from};
  touch({finger});
  finger.phase = Phase::moved;
  for (std::int64_t step = 1; step <= steps; ++step) {
    runFor(duration * step / steps - duration * (step - 1) / steps);
    const double share = static_cast<double>(step) / static_cast<double>(steps);
    finger.location = {from.x + (to.x - from.x) * share, from.y + (to.y - from.y) * share};
    touch({finger});
  }
  finger.phase = Phase::ended;
  touch({finger});
}

void PacedPhone::touch(const std::vector<ios::TouchSample>& samples) {
  if (!pacer_) return Phone::touch(samples);
  pacer_({}, samples);
}

void PacedPhone::runFor(Clock::Duration duration) {
  if (!pacer_) return Phone::runFor(duration);
  pacer_(duration, {});
}

void PacedPhone::settle(Clock::Duration limit) {
  if (!pacer_) return Phone::settle(limit);
  const Clock::Instant end = Clock::shared().now() + limit;
  for (int still = 0; still < kStillFrames && Clock::shared().now() < end;)
    still = pacer_(kFrame, {}).changedWidth > 0 ? 0 : still + 1;
}

}  // namespace simulator
