#include "QuartzCore/CADisplayLink.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "DeviceClock/Clock.h"
#include "Dispatch/Queue.h"
#include "Dispatch/Semaphore.h"

using namespace ios;
using namespace std::chrono_literals;

namespace {

class Watcher : public Subclass<Watcher, NSObject> {
 public:
  static MethodList methods() { return {{"frame:", &Watcher::frame}}; }
  ~Watcher() override {
    if (onEnd) onEnd();
  }
  void frame(const std::shared_ptr<CADisplayLink>& link) {
    frames.push_back(std::lround(link->timestamp() * 60));
    EXPECT_TRUE(isMainThread());
    if (onFrame) onFrame(*link);
  }
  std::vector<long> frames;  // the refreshes that ticks were for
  std::function<void(CADisplayLink&)> onFrame;
  std::function<void()> onEnd;
};

class CADisplayLinkTest : public testing::Test {
 protected:
  void SetUp() override { clock.useVirtualTime(Clock::Instant(5ms)); }
  void attach(const NSRunLoopMode& mode = NSRunLoopCommonModes) { link->addToRunLoop(loop, mode); }
  void detach(const NSRunLoopMode& mode = NSRunLoopCommonModes) { link->removeFromRunLoop(loop, mode); }
  /// To just after the n-th refresh.
  void runTo(std::int64_t n) { clock.runFor(Clock::refresh(n) + 1ms - clock.now()); }

  Clock& clock = Clock::shared();
  std::shared_ptr<NSRunLoop> loop = NSRunLoop::mainRunLoop();
  std::shared_ptr<Watcher> watcher = std::make_shared<Watcher>();
  std::shared_ptr<CADisplayLink> link = CADisplayLink::displayLinkWithTarget(watcher, "frame:");
};

using Frames = std::vector<long>;

}  // namespace

TEST_F(CADisplayLinkTest, TicksOnTheGridOnceAnInterval) {
  attach();
  EXPECT_TRUE(watcher->frames.empty());
  runTo(3);
  EXPECT_EQ((Frames{1, 2, 3}), watcher->frames);
  EXPECT_EQ(Clock::refresh(3).time_since_epoch(),
            std::chrono::round<Clock::Duration>(std::chrono::duration<double>(link->timestamp())));
  link->setFrameInterval(2);
  runTo(9);
  EXPECT_EQ((Frames{1, 2, 3, 4, 6, 8}), watcher->frames);
  link->setFrameInterval(0);
  EXPECT_EQ(1, link->frameInterval());
  runTo(11);
  EXPECT_EQ((Frames{1, 2, 3, 4, 6, 8, 10, 11}), watcher->frames);
}

TEST_F(CADisplayLinkTest, RestsWhilePausedAndResumesInStep) {
  link->setFrameInterval(3);
  attach();
  runTo(1);
  link->setPaused(true);
  runTo(2);
  link->setPaused(false);
  link->setPaused(false);
  runTo(5);
  EXPECT_EQ((Frames{1, 4}), watcher->frames);
  link->setPaused(true);
  runTo(20);
  link->setPaused(false);
  runTo(24);
  EXPECT_EQ((Frames{1, 4, 21, 24}), watcher->frames);
}

TEST_F(CADisplayLinkTest, TicksOnceWithTheNewestTimeWhenTheMainThreadWasLate) {
  attach();
  runTo(1);
  clock.moveWithoutRest(100ms);
  EXPECT_EQ((Frames{1}), watcher->frames);
  clock.runUntilRest();
  EXPECT_EQ((Frames{1, 7}), watcher->frames);
  // The same when it is the target itself that takes long.
  watcher->onFrame = [&](CADisplayLink&) {
    watcher->onFrame = nullptr;
    clock.moveWithoutRest(60ms);
  };
  runTo(14);
  EXPECT_EQ((Frames{1, 7, 8, 11, 12, 13, 14}), watcher->frames);
}

// A pause that is over before the late tick came must not leave two of them on their way.
TEST_F(CADisplayLinkTest, ForgetsTheTickOnItsWayWhenPaused) {
  attach();
  clock.moveWithoutRest(40ms);
  link->setPaused(true);
  link->setPaused(false);
  clock.runUntilRest();
  EXPECT_TRUE(watcher->frames.empty());
  runTo(4);
  EXPECT_EQ((Frames{3, 4}), watcher->frames);
}

TEST_F(CADisplayLinkTest, WaitsForItsModeOfTheRunLoop) {
  attach(NSDefaultRunLoopMode);
  runTo(1);
  loop->pushMode(UITrackingRunLoopMode);
  runTo(5);
  detach(UITrackingRunLoopMode);  // it is not in that one
  EXPECT_EQ((Frames{1}), watcher->frames);
  loop->popMode();
  clock.runUntilRest();
  EXPECT_EQ((Frames{1, 5}), watcher->frames);
  detach(NSDefaultRunLoopMode);
  runTo(9);
  EXPECT_EQ((Frames{1, 5}), watcher->frames);

  const auto other = std::make_shared<Watcher>();
  const auto common = CADisplayLink::displayLinkWithTarget(other, "frame:");
  common->addToRunLoop(loop, NSRunLoopCommonModes);
  loop->pushMode(UITrackingRunLoopMode);
  runTo(11);
  EXPECT_EQ((Frames{10, 11}), other->frames);
}

TEST_F(CADisplayLinkTest, IsKeptWithItsTargetByTheRunLoopUntilRemoved) {
  attach();
  const std::weak_ptr<CADisplayLink> held = link;
  const std::weak_ptr<Watcher> target = watcher;
  bool inside = false;
  watcher->onEnd = [&] { EXPECT_FALSE(inside) << "the target went while its tick was under way"; };
  watcher->onFrame = [&](CADisplayLink& ticking) {
    if (watcher || target.lock()->frames.size() < 3) return;
    inside = true;
    ticking.removeFromRunLoop(loop, NSRunLoopCommonModes);
    ticking.invalidate();
    EXPECT_FALSE(target.expired());
    inside = false;
  };
  link.reset();
  watcher.reset();
  runTo(2);
  EXPECT_FALSE(held.expired());
  EXPECT_FALSE(target.expired());
  runTo(4);
  EXPECT_TRUE(held.expired());
  EXPECT_TRUE(target.expired());
}

TEST_F(CADisplayLinkTest, EndsATickThatAnotherThreadRemovesItDuring) {
  attach();
  bool ended = false;
  watcher->onEnd = [&] { ended = true; };
  watcher->onFrame = [&](CADisplayLink& ticking) {
    watcher.reset();
    const auto removed = dispatch_semaphore_create(0);
    dispatch_async(dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0), [&] {
      ticking.removeFromRunLoop(loop, NSRunLoopCommonModes);
      dispatch_semaphore_signal(removed);
    });
    dispatch_semaphore_wait(removed, DISPATCH_TIME_FOREVER);
    EXPECT_FALSE(ended);
  };
  runTo(4);
  EXPECT_TRUE(ended);
}

// For the thread sanitizer: removal, pause and tick meet in every order.
TEST_F(CADisplayLinkTest, MayBeRemovedByAnyThreadAtAnyTime) {
  const auto queue = dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_HIGH, 0);
  for (int round = 0; round < 300; ++round) {
    const auto target = std::make_shared<Watcher>();
    const auto racing = CADisplayLink::displayLinkWithTarget(target, "frame:");
    racing->addToRunLoop(loop, NSRunLoopCommonModes);
    clock.moveWithoutRest(20ms);
    dispatch_async(queue, [racing] { racing->setPaused(true); });
    dispatch_async(queue, [racing] { racing->setPaused(false); });
    dispatch_async(queue, [racing, loop = loop] { racing->removeFromRunLoop(loop, NSRunLoopCommonModes); });
    clock.runUntilRest();
    const std::size_t ticks = target->frames.size();
    EXPECT_LE(ticks, 2u);
    clock.runFor(40ms);
    EXPECT_EQ(ticks, target->frames.size());
  }
}

TEST(CADisplayLinkDeathTest, RefusesASelectorThatItsTargetLacks) {
  const auto watcher = std::make_shared<Watcher>();
  EXPECT_DEATH(CADisplayLink::displayLinkWithTarget(watcher, "nothing"), "nothing");
}
