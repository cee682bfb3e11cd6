#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "DeviceClock/Clock.h"
#include "Dispatch/Queue.h"
#include "Foundation/NSRunLoop.h"
#include "Foundation/NSTimer.h"

namespace {

using namespace ios;
using namespace std::chrono_literals;

/// Writes down when it was called, in milliseconds, and with whom.
class Target : public Subclass<Target, NSObject> {
 public:
  static MethodList methods() {
    return {{"fire:", &Target::fire}, {"call", &Target::call}, {"callWith:", &Target::callWith}};
  }
  std::vector<double> times;
  std::vector<id> arguments;
  std::function<void(const std::shared_ptr<NSTimer>&)> then;

 private:
  void call() { times.push_back(Clock::shared().secondsNow() * 1000); }
  void callWith(const id& argument) {
    call();
    arguments.push_back(argument);
  }
  void fire(const std::shared_ptr<NSTimer>& timer) {
    call();
    if (then) then(timer);
  }
};

class TimerTest : public testing::Test {
 protected:
  TimerTest() { Clock::shared().useVirtualTime(); }
  std::shared_ptr<NSTimer> every(double seconds, bool repeats = true) {
    return NSTimer::scheduledTimerWithTimeInterval(seconds, target_, "fire:", nullptr, repeats);
  }
  using Times = std::vector<double>;
  std::shared_ptr<Target> target_ = std::make_shared<Target>();
};

TEST_F(TimerTest, ARepeatingTimerKeepsToItsGridAndSkipsWhatItMissed) {
  target_->then = [this](const auto&) {
    // The third firing keeps the main thread for 250 ms, over the fourth and the fifth.
    if (target_->times.size() == 3) Clock::shared().moveWithoutRest(250ms);
  };
  const auto timer = every(0.1);
  Clock::shared().runFor(750ms);
  EXPECT_EQ(target_->times, (Times{100, 200, 300, 600, 700}));
  timer->invalidate();
  Clock::shared().runFor(1s);
  EXPECT_EQ(target_->times.size(), 5u);
}

TEST_F(TimerTest, HoldsItsTargetUntilItHasFiredOrWasInvalidated) {
  std::weak_ptr<Target> target = target_;
  std::weak_ptr<NSTimer> once = every(1, false);
  target_.reset();
  EXPECT_FALSE(target.expired());
  EXPECT_FALSE(once.expired()) << "the run loop keeps it";
  Clock::shared().runFor(1s);
  EXPECT_TRUE(target.expired());
  EXPECT_TRUE(once.expired());

  target_ = std::make_shared<Target>();
  target = target_;
  // Invalidated by its own firing, with nothing else holding either.
  target_->then = [](const std::shared_ptr<NSTimer>& timer) {
    timer->invalidate();
    EXPECT_FALSE(timer->isValid());
  };
  std::weak_ptr<NSTimer> repeating = every(1);
  target_.reset();
  Clock::shared().runFor(5s);
  EXPECT_TRUE(target.expired());
  EXPECT_TRUE(repeating.expired());
}

TEST_F(TimerTest, DefaultModeWaitsForTheEndOfADragAndCommonModesDoNot) {
  const auto common = std::make_shared<Target>();
  const auto& loop = NSRunLoop::mainRunLoop();
  const auto both = std::make_shared<NSTimer>(0.1, common, "fire:", nullptr, true);
  loop->addTimer(both, NSRunLoopCommonModes);
  const auto timer = every(0.1);
  performSelectorAfterDelay(target_, "callWith:", nullptr, 0.15);
  const auto cancelled = std::make_shared<Target>();
  performSelectorAfterDelay(cancelled, "call", nullptr, 0.15);

  loop->pushMode(UITrackingRunLoopMode);
  Clock::shared().runFor(350ms);
  EXPECT_EQ(common->times, (Times{100, 200, 300}));
  EXPECT_EQ(target_->times, Times{});
  cancelPreviousPerformRequestsWithTarget(*cancelled);
  loop->popMode();
  EXPECT_EQ(target_->times, Times{}) << "called inside popMode";
  Clock::shared().runFor(100ms);
  // The timer once for all it missed, and the delayed perform, as soon as the drag is over; then
  // the grid again.
  EXPECT_EQ(target_->times, (Times{350, 350, 400}));
  EXPECT_EQ(cancelled->times, Times{});
}

TEST_F(TimerTest, OddIntervalsNeitherSpinNorOverflow) {
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double interval : {infinity, 1e300, 1e10}) {
    every(interval);
    performSelectorAfterDelay(target_, "call", nullptr, interval);
  }
  Clock::shared().runFor(1h);
  EXPECT_EQ(target_->times, Times{});
  for (const double interval : {0.0, -5.0, std::nan(""), -infinity}) {
    target_ = std::make_shared<Target>();
    const auto timer = every(interval);
    Clock::shared().runFor(1ms);
    EXPECT_EQ(target_->times.size(), 10u) << interval;
    timer->invalidate();
  }
}

TEST_F(TimerTest, OffTheMainThreadNothingFires) {
  dispatch_async(dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0), [this] {
    every(0.1);
    performSelectorAfterDelay(target_, "call", nullptr, 0);
  });
  Clock::shared().runFor(1s);
  EXPECT_EQ(target_->times, Times{});
  EXPECT_EQ(target_.use_count(), 1) << "nobody ever lets go of it";
}

TEST_F(TimerTest, DelayedPerformsComeInOrderNeverAtOnceAndCanBeCancelled) {
  const auto other = std::make_shared<Target>();
  const id argument = std::make_shared<NSObject>();
  performSelectorAfterDelay(target_, "callWith:", argument, 0);
  performSelectorAfterDelay(target_, "call", argument, -1);
  performSelectorAfterDelay(other, "callWith:", nullptr, 0.5);
  performSelectorAfterDelay(target_, "call", nullptr, 0.5);
  performSelectorAfterDelay(target_, "call", nullptr, 0.25);
  EXPECT_EQ(target_->times, Times{});
  Clock::shared().runFor(300ms);
  EXPECT_EQ(target_->times, (Times{0, 0, 250}));
  EXPECT_EQ(target_->arguments, std::vector<id>{argument});
  cancelPreviousPerformRequestsWithTarget(*target_);
  EXPECT_EQ(target_.use_count(), 1);
  Clock::shared().runFor(1s);
  EXPECT_EQ(target_->times.size(), 3u);
  EXPECT_EQ(other->times, Times{500});
}

}  // namespace
