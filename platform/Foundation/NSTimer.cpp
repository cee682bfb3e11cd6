#include "Foundation/NSTimer.h"

#include <algorithm>
#include <utility>

#include "DeviceClock/Clock.h"
#include "Foundation/NSRunLoop.h"
#include "Foundation/Private/Interval.h"

namespace ios {
namespace {

constexpr double kShortestInterval = 0.0001;

}  // namespace

NSTimer::NSTimer(double interval, const id& target, Selector selector, const id& userInfo, bool repeats)
    : interval_(interval > kShortestInterval ? interval : kShortestInterval),
      target_(target),
      action_(target, selector),
      userInfo_(userInfo),
      repeats_(repeats) {}

NSTimer::~NSTimer() = default;

std::shared_ptr<NSTimer> NSTimer::scheduledTimerWithTimeInterval(double interval, const id& target,
                                                                 Selector selector, const id& userInfo,
                                                                 bool repeats) {
  auto timer = std::make_shared<NSTimer>(interval, target, selector, userInfo, repeats);
  NSRunLoop::currentRunLoop()->addTimer(timer, NSDefaultRunLoopMode);
  return timer;
}

void NSTimer::schedule(const std::shared_ptr<NSRunLoop>& runLoop, const std::string& mode) {
  if (!valid_) return;
  if (!mode_.empty()) {
    // There are two modes, so a second one makes it both.
    if (mode_ != mode) mode_ = NSRunLoopCommonModes;
    return;
  }
  mode_ = mode;
  runLoop_ = runLoop;
  nextFire_ = (Clock::shared().now() + durationFromSeconds(interval_)).time_since_epoch().count();
  arm();
}

void NSTimer::arm() {
  event_ = Clock::shared().schedule(Clock::Instant(Clock::Duration(nextFire_)), Clock::Lane::main,
                                    [self = sharedAs<NSTimer>()] {
                                      self->event_.reset();
                                      if (const auto runLoop = self->runLoop_.lock()) {
                                        runLoop->performWhenMode(self->mode_, [self] { self->fire(); });
                                      }
                                    });
}

void NSTimer::fire() {
  if (!valid_) return;
  const id self = sharedAs<NSTimer>();
  const id target = target_;
  if (!repeats_) invalidate();
  action_.perform(*target, self);
  if (!valid_) return;
  const std::int64_t interval = durationFromSeconds(interval_).count();
  const std::int64_t late =
      std::max<std::int64_t>(0, Clock::shared().now().time_since_epoch().count() - nextFire_);
  nextFire_ += (late / interval + 1) * interval;
  arm();
}

void NSTimer::invalidate() {
  if (!std::exchange(valid_, false)) return;
  // What the timer held may call back when it is destroyed, so it is destroyed last.
  const id self = sharedAs<NSTimer>();
  const id target = std::exchange(target_, nullptr);
  if (event_) Clock::shared().cancel(*std::exchange(event_, std::nullopt));
}

}  // namespace ios
