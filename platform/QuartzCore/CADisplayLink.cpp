#include "QuartzCore/CADisplayLink.h"

#include <algorithm>
#include <utility>

#include "Base/Programming.h"
#include "DeviceClock/Clock.h"

namespace ios {
CADisplayLink::CADisplayLink(const id& target, Selector selector)
    : action_(target, selector), target_(target) {}

std::shared_ptr<CADisplayLink> CADisplayLink::displayLinkWithTarget(const id& target, Selector selector) {
  return std::make_shared<CADisplayLink>(target, selector);
}

void CADisplayLink::addToRunLoop(const std::shared_ptr<NSRunLoop>& runLoop, const NSRunLoopMode& mode) {
  // No other run loop is ever run.
  if (runLoop != NSRunLoop::mainRunLoop()) return;
  MutexLock lock(mutex_);
  mode_ = mode;
  attached_ = target_ != nullptr;
  arm(nextDue());
}

void CADisplayLink::removeFromRunLoop(const std::shared_ptr<NSRunLoop>& runLoop, const NSRunLoopMode& mode) {
  {
    MutexLock lock(mutex_);
    if (!attached_ || runLoop != NSRunLoop::mainRunLoop() || mode != mode_) return;
  }
  invalidate();
}

void CADisplayLink::invalidate() {
  // Both outlive the lock: the target may hold the last reference to this link, and so may the event.
  const auto self = sharedAs<CADisplayLink>();
  id target;
  std::optional<std::uint64_t> event;
  {
    MutexLock lock(mutex_);
    attached_ = false;
    event = disarm();
    target = std::move(target_);
  }
  if (event) Clock::shared().cancel(*event);
}

void CADisplayLink::setPaused(bool paused) {
  const auto self = sharedAs<CADisplayLink>();
  std::optional<std::uint64_t> event;
  {
    MutexLock lock(mutex_);
    paused_ = paused;
    if (paused) {
      event = disarm();
    } else {
      arm(nextDue());
    }
  }
  if (event) Clock::shared().cancel(*event);
}

void CADisplayLink::setFrameInterval(long interval) {
  frameInterval_ = std::max(1L, interval);
}

std::int64_t CADisplayLink::nextDue() const {
  const std::int64_t next = Clock::newestRefresh(Clock::shared().now()) + 1;
  return lastRefresh_ ? std::max(next, *lastRefresh_ + frameInterval_) : next;
}

void CADisplayLink::arm(std::int64_t refresh) {
  if (!attached_ || paused_ || armed_) return;
  const auto self = sharedAs<CADisplayLink>();
  if (!self) programmingError("a display link must be held by a shared reference");
  const std::uint64_t arming = ++arming_;
  Clock& clock = Clock::shared();
  // Through the main queue: while the main thread is busy, one tick waits there for all the
  // refreshes it misses.
  event_ = clock.schedule(Clock::refresh(refresh), Clock::Lane::main, [self, arming] {
    Clock::shared().postToMain([self, arming] { self->tick(arming); });
  });
  armed_ = true;
}

std::optional<std::uint64_t> CADisplayLink::disarm() {
  if (!std::exchange(armed_, false)) return std::nullopt;
  ++arming_;
  return event_;
}

void CADisplayLink::tick(std::uint64_t arming) {
  NSRunLoopMode mode;
  {
    MutexLock lock(mutex_);
    if (!armed_ || arming != arming_) return;
    mode = mode_;
  }
  NSRunLoop::mainRunLoop()->performWhenMode(
      mode, [self = sharedAs<CADisplayLink>(), arming] { self->deliver(arming); });
}

void CADisplayLink::deliver(std::uint64_t arming) {
  id target;
  {
    MutexLock lock(mutex_);
    if (!armed_ || arming != arming_) return;
    armed_ = false;
    target = target_;
    lastRefresh_ = Clock::newestRefresh(Clock::shared().now());
    timestamp_ = std::chrono::duration<double>(Clock::refresh(*lastRefresh_).time_since_epoch()).count();
  }
  action_.perform(*target, sharedAs<NSObject>());
  MutexLock lock(mutex_);
  // Already past if the target took longer than the interval; then a single tick follows at once.
  arm(*lastRefresh_ + frameInterval_);
}

}  // namespace ios
