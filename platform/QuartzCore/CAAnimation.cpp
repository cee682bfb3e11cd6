#include "QuartzCore/CAAnimation.h"

#include <memory>
#include <utility>

#include "DeviceClock/Clock.h"

namespace ios {
namespace {

struct Run : std::enable_shared_from_this<Run> {
  Clock::Instant start;
  double seconds = 0;
  std::function<void(double)> step;
  std::function<void()> completion;

  // Through the main queue, so that a busy main thread is called once for all the refreshes it has missed.
  void awaitRefresh() {
    Clock& clock = Clock::shared();
    clock.schedule(Clock::nextRefresh(clock.now()), Clock::Lane::main,
                   [self = shared_from_this()] { Clock::shared().postToMain([self] { self->refresh(); }); });
  }

  void refresh() {
    const double elapsed = std::chrono::duration<double>(Clock::shared().now() - start).count();
    const double fraction = elapsed / seconds;
    if (seconds > 0 && fraction < 1) {
      if (step) step(fraction);
      awaitRefresh();
      return;
    }
    if (step) step(1);
    if (completion) completion();
  }
};

// One coordinate of the cubic curve from 0 to 1 with these two handles.
double bezier(double t, double p1, double p2) {
  return 3 * (1 - t) * (1 - t) * t * p1 + 3 * (1 - t) * t * t * p2 + t * t * t;
}

}  // namespace

double easeInEaseOut(double fraction) {
  if (!(fraction > 0)) return 0;
  if (fraction >= 1) return 1;
  double low = 0, high = 1;
  for (int i = 0; i < 40; ++i) {
    const double middle = (low + high) / 2;
    (bezier(middle, 0.42, 0.58) < fraction ? low : high) = middle;
  }
  return bezier(low, 0, 1);
}

void animateOnDisplay(double seconds, std::function<void(double fraction)> step,
                      std::function<void()> completion) {
  auto run = std::make_shared<Run>();
  run->start = Clock::shared().now();
  run->seconds = seconds;
  run->step = std::move(step);
  run->completion = std::move(completion);
  run->awaitRefresh();
}

}  // namespace ios
