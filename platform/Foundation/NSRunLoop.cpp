#include "Foundation/NSRunLoop.h"

#include <list>
#include <optional>
#include <utility>

#include "Base/Programming.h"
#include "DeviceClock/Clock.h"
#include "Dispatch/Queue.h"
#include "Foundation/NSTimer.h"
#include "Foundation/Private/Interval.h"

namespace ios {
namespace {

struct DelayedPerform {
  id target;
  Action action;
  id argument;
  Clock::EventId event = 0;
};

/// Delayed performs requested on the main thread and not called yet. Main thread.
std::list<std::shared_ptr<DelayedPerform>>& delayedPerforms() {
  static auto& performs = *new std::list<std::shared_ptr<DelayedPerform>>;
  return performs;
}

void callNow(const std::shared_ptr<DelayedPerform>& perform) {
  // One that was cancelled while it waited for its mode is no longer in the list.
  if (delayedPerforms().remove(perform) == 0) return;
  perform->action.perform(*perform->target, perform->argument);
}

}  // namespace

const std::shared_ptr<NSRunLoop>& NSRunLoop::mainRunLoop() {
  static auto& loop = *new std::shared_ptr<NSRunLoop>(std::make_shared<NSRunLoop>());
  return loop;
}

std::shared_ptr<NSRunLoop> NSRunLoop::currentRunLoop() {
  if (isMainThread()) return mainRunLoop();
  thread_local const auto loop = std::make_shared<NSRunLoop>();
  return loop;
}

void NSRunLoop::addTimer(const std::shared_ptr<NSTimer>& timer, const NSRunLoopMode& mode) {
  if (this != mainRunLoop().get()) return;
  assertMainThread("the main run loop");
  timer->schedule(mainRunLoop(), mode);
}

void NSRunLoop::pushMode(const NSRunLoopMode& mode) {
  modes_.push_back(mode);
  releaseWaiting();
}

void NSRunLoop::popMode() {
  if (modes_.size() == 1) programmingError("a run loop's mode was popped that was never pushed");
  modes_.pop_back();
  releaseWaiting();
}

bool NSRunLoop::accepts(const NSRunLoopMode& mode) const {
  if (mode == currentMode()) return true;
  return mode == NSRunLoopCommonModes &&
         (currentMode() == NSDefaultRunLoopMode || currentMode() == UITrackingRunLoopMode);
}

void NSRunLoop::performWhenMode(const NSRunLoopMode& mode, std::function<void()> due) {
  if (accepts(mode)) {
    due();
  } else {
    waiting_.push_back({mode, std::move(due)});
  }
}

void NSRunLoop::releaseWaiting() {
  std::vector<Waiting> still;
  for (auto& waiting : std::exchange(waiting_, {})) {
    if (!accepts(waiting.mode)) {
      still.push_back(std::move(waiting));
      continue;
    }
    // The mode may have changed again by then.
    Clock::shared().postToMain([self = sharedAs<NSRunLoop>(), waiting = std::move(waiting)] {
      self->performWhenMode(waiting.mode, waiting.due);
    });
  }
  waiting_ = std::move(still);
}

void performSelectorAfterDelay(const id& target, Selector selector, const id& argument, double delay) {
  const Action action(target, selector);
  if (!isMainThread()) return;
  Clock& clock = Clock::shared();
  auto perform = std::make_shared<DelayedPerform>(DelayedPerform{target, action, argument});
  auto& performs = delayedPerforms();
  performs.push_back(perform);
  try {
    perform->event = clock.schedule(clock.now() + durationFromSeconds(delay), Clock::Lane::main, [perform] {
      NSRunLoop::mainRunLoop()->performWhenMode(NSDefaultRunLoopMode, [perform] { callNow(perform); });
    });
  } catch (...) {
    performs.remove(perform);
    throw;
  }
}

void cancelPreviousPerformRequestsWithTarget(const NSObject& target) {
  if (!isMainThread()) return;
  // Destroyed at the end: the last reference to the target may be among them.
  std::list<std::shared_ptr<DelayedPerform>> cancelled;
  auto& performs = delayedPerforms();
  for (auto perform = performs.begin(); perform != performs.end();) {
    const auto next = std::next(perform);
    if ((*perform)->target.get() == &target) cancelled.splice(cancelled.end(), performs, perform);
    perform = next;
  }
  for (const auto& perform : cancelled) Clock::shared().cancel(perform->event);
}

}  // namespace ios
