#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include "DeviceClock/Clock.h"
#include "Dispatch/Queue.h"
#include "Dispatch/Semaphore.h"
#include "Dispatch/Time.h"

namespace ios {
namespace {

using namespace std::chrono_literals;
using Log = std::vector<std::string>;

Clock::Instant at(Clock::Duration sinceStart) {
  return Clock::Instant(sinceStart);
}

class VirtualTime : public testing::Test {
 protected:
  VirtualTime() { clock.useVirtualTime(); }
  Clock::Duration now() const { return clock.now().time_since_epoch(); }

  Clock& clock = Clock::shared();
};

TEST_F(VirtualTime, FiresInOrderOfDeadlineAndThenOfRegistration) {
  Log log;
  const auto note = [&](const std::string& name) {
    return [&log, this, name] { log.push_back(name + " " + std::to_string(now() / 1ms)); };
  };
  clock.schedule(at(20ms), Clock::Lane::main, note("third"));
  clock.schedule(at(10ms), Clock::Lane::any, [&] {
    note("first")();
    // For the current instant, after what was registered for it; for the past, as soon as possible.
    clock.schedule(at(10ms), Clock::Lane::main, note("same instant"));
    clock.schedule(at(3ms), Clock::Lane::main, note("past"));
  });
  clock.schedule(at(10ms), Clock::Lane::main, note("second"));
  clock.schedule(at(50ms), Clock::Lane::main, note("too late"));
  clock.runFor(49ms);
  EXPECT_EQ(log, (Log{"first 10", "past 10", "second 10", "same instant 10", "third 20"}));
  EXPECT_EQ(now(), 49ms);
  clock.runFor(1ms);
  EXPECT_EQ(log.back(), "too late 50");
}

// Fault: time moves on while work of an earlier event still travels between queues and the main thread.
TEST_F(VirtualTime, FollowsEachEventToRestBeforeTheNext) {
  const auto first = dispatch_queue_create("first");
  const auto second = dispatch_queue_create("second");
  constexpr int kEvents = 100;
  int finished = 0;  // no lock: each access is ordered after the last by the clock and the queues
  int early = 0;
  for (int i = 1; i <= kEvents; ++i) {
    const auto deadline = Clock::Duration(i);
    clock.schedule(at(deadline), i % 2 ? Clock::Lane::main : Clock::Lane::any, [&, i, deadline] {
      if (finished != i - 1) ++early;
      dispatch_async(first, [&, deadline] {
        dispatch_async(second, [&, deadline] {
          dispatch_sync(first, [] {});
          dispatch_sync(dispatch_get_main_queue(), [] {});
          dispatch_async(dispatch_get_main_queue(), [&, deadline] {
            if (now() != deadline) ++early;
            ++finished;
          });
        });
      });
    });
  }
  clock.runFor(1s);
  EXPECT_EQ(finished, kEvents);
  EXPECT_EQ(early, 0);
}

// Fault: the condition is asked only after main-thread steps, and time jumps although a worker has met it.
TEST_F(VirtualTime, RunUntilAsksAgainAtRestBeforeTimeMoves) {
  const auto queue = dispatch_queue_create("worker");
  clock.schedule(at(1h), Clock::Lane::main, [] {});
  for (int i = 0; i < 200; ++i) {
    std::atomic<bool> done = false;
    dispatch_async(queue, [&] { done = true; });
    EXPECT_TRUE(clock.runUntil([&] { return done.load(); }, Clock::Duration::max()));
    ASSERT_EQ(now(), 0s);
  }
}

TEST_F(VirtualTime, RunUntilThatGivesUpNamesWhatIsPending) {
  const auto stuck = dispatch_queue_create("stuck queue");
  const auto never = dispatch_semaphore_create(0);
  dispatch_async(stuck, [&] { dispatch_semaphore_wait(never, DISPATCH_TIME_FOREVER); });
  dispatch_async(stuck, [] {});
  clock.schedule(at(7s), Clock::Lane::main, [] {});
  const auto result = clock.runUntil([] { return false; }, 5s);
  EXPECT_FALSE(result);
  EXPECT_EQ(now(), 5s);
  EXPECT_NE(result.pending.find("\"stuck queue\": busy, 1 waiting"), std::string::npos) << result.pending;
  EXPECT_NE(result.pending.find("event at 7.0"), std::string::npos) << result.pending;
  {
    Clock::Activity movie("finishing a movie");
    EXPECT_NE(clock.pending().find("under way: finishing a movie"), std::string::npos) << clock.pending();
  }
  EXPECT_EQ(clock.pending().find("movie"), std::string::npos);
  dispatch_semaphore_signal(never);
  clock.runUntilRest();
  EXPECT_EQ(clock.pending(), "event at 7.000000 s\n");
}

TEST_F(VirtualTime, MovesWithoutRestPastABusyStage) {
  std::promise<void> stageMayGoOn;
  std::atomic<bool> stageIsDone = false;
  bool fired = false, mainWorkRan = false;
  dispatch_async(dispatch_queue_create("stage"), [&] {
    stageMayGoOn.get_future().wait();  // not a wait that the clock knows: the stage is busy
    stageIsDone = true;
  });
  dispatch_async(dispatch_get_main_queue(), [&] { mainWorkRan = true; });
  clock.schedule(at(1s), Clock::Lane::main, [&] { fired = true; });
  clock.moveWithoutRest(2s);
  EXPECT_TRUE(fired);
  EXPECT_FALSE(mainWorkRan);
  EXPECT_FALSE(stageIsDone);
  EXPECT_EQ(now(), 2s);
  stageMayGoOn.set_value();
  clock.runUntilRest();
  EXPECT_TRUE(mainWorkRan);
  EXPECT_TRUE(stageIsDone);
  EXPECT_EQ(now(), 2s);
}

// Fault: work that waits behind a parked thread counts as busy, and time never reaches the end of the wait.
TEST_F(VirtualTime, NeitherATimedWaitNorTheWorkBehindItHoldsTime) {
  const auto queue = dispatch_queue_create("waits");
  const auto other = dispatch_queue_create("other");
  const auto never = dispatch_semaphore_create(0);
  std::vector<std::pair<std::string, Clock::Duration>> log;
  std::atomic<long> outcome = -1;
  dispatch_async(queue, [&] {
    outcome = dispatch_semaphore_wait(never, dispatch_time(DISPATCH_TIME_NOW, 2 * NSEC_PER_SEC));
  });
  dispatch_async(queue, [&] { log.emplace_back("behind", now()); });
  dispatch_async(other, [&] { dispatch_sync(queue, [&] { log.emplace_back("in sync", now()); }); });
  clock.schedule(at(1s), Clock::Lane::main, [&] { log.emplace_back("event", now()); });
  clock.runFor(3s);
  ASSERT_EQ(log.size(), 3u);
  EXPECT_EQ(log[0], std::pair(std::string("event"), Clock::Duration(1s)));
  EXPECT_EQ(log[1].second, 2s);
  EXPECT_EQ(log[2].second, 2s);
  EXPECT_NE(outcome, 0);
}

TEST_F(VirtualTime, AMainThreadThatWaitsMovesTimeItselfAndLeavesMainWorkAlone) {
  const auto signal = dispatch_semaphore_create(0);
  bool mainEventFired = false;
  clock.schedule(at(1s), Clock::Lane::main, [&] { mainEventFired = true; });
  dispatch_after(dispatch_time(DISPATCH_TIME_NOW, 2 * NSEC_PER_SEC), dispatch_queue_create("helper"),
                 [&] { dispatch_semaphore_signal(signal); });
  EXPECT_EQ(dispatch_semaphore_wait(signal, DISPATCH_TIME_FOREVER), 0);
  EXPECT_EQ(now(), 2s);
  EXPECT_NE(dispatch_semaphore_wait(signal, dispatch_time(DISPATCH_TIME_NOW, NSEC_PER_SEC)), 0);
  EXPECT_EQ(now(), 3s);
  EXPECT_FALSE(mainEventFired);
  clock.runUntilRest();
  EXPECT_TRUE(mainEventFired);
  EXPECT_EQ(now(), 3s);
}

TEST_F(VirtualTime, CancelsFromInsideAnEvent) {
  bool fired = false;
  Clock::EventId self = 0, later = 0;
  bool selfCancelled = true, laterCancelled = false, twice = true;
  self = clock.schedule(at(1s), Clock::Lane::main, [&] {
    selfCancelled = clock.cancel(self);
    laterCancelled = clock.cancel(later);
    twice = clock.cancel(later);
  });
  later = clock.schedule(at(1s), Clock::Lane::main, [&] { fired = true; });
  clock.runFor(2s);
  EXPECT_FALSE(fired);
  EXPECT_FALSE(selfCancelled);
  EXPECT_TRUE(laterCancelled);
  EXPECT_FALSE(twice);
}

// Fault: what an event holds is destroyed under the clock's lock, and its destructor calls the clock.
TEST_F(VirtualTime, ACancelledEventMayHoldWhatCallsTheClock) {
  int fired = 0;
  std::shared_ptr<void> held(nullptr,
                             [&](void*) { clock.schedule(at(1s), Clock::Lane::main, [&] { ++fired; }); });
  const auto event = clock.schedule(at(5s), Clock::Lane::main, [held] {});
  held.reset();
  EXPECT_TRUE(clock.cancel(event));
  clock.runFor(1s);
  EXPECT_EQ(fired, 1);
}

TEST_F(VirtualTime, AVerbInsideAnEventDoesNotTurnTimeBack) {
  Clock::Duration inside{};
  clock.schedule(at(1s), Clock::Lane::main, [&] {
    clock.runFor(10s);
    inside = now();
  });
  clock.moveWithoutRest(2s);
  EXPECT_EQ(inside, 11s);
  EXPECT_EQ(now(), 11s);
}

TEST_F(VirtualTime, FramesLieOnTheSixtyHertzGridWithoutDrift) {
  for (int frame = 1; frame <= 120; ++frame) {
    clock.advanceFrame();
    ASSERT_EQ(now(), Clock::Duration(frame * 1'000'000'000LL / 60)) << "frame " << frame;
  }
  const struct {
    const char* name;
    Clock::Duration after, next;
  } rows[] = {
      {"on a refresh", 1s, 1'016'666'666ns},
      {"just before one", 999'999'999ns, 1s},
      {"after a hundred years", 876'000h + 1ns, 876'000h + 16'666'666ns},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Clock::nextRefresh(at(row.after)).time_since_epoch(), row.next) << row.name;
  }
}

TEST_F(VirtualTime, WallTimeStartsAtAFixedDateAndKeepsStep) {
  EXPECT_EQ(clock.wallTime(), Clock::kVirtualEpoch);
  clock.runFor(90s);
  EXPECT_EQ(clock.wallTime(), Clock::kVirtualEpoch + 90s);
}

using VirtualTimeDeathTest = VirtualTime;

TEST_F(VirtualTimeDeathTest, StopsWhatCanNeverGoOn) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(clock.useVirtualTime(), "before the clock's first use");
  EXPECT_DEATH(
      {
        dispatch_async(dispatch_queue_create("off main"), [this] { clock.runFor(1s); });
        clock.runUntilRest();
      },
      "verbs belong to the main thread");
  EXPECT_DEATH(
      {
        const auto queue = dispatch_queue_create("forgotten");
        const auto never = dispatch_semaphore_create(0);
        dispatch_async(queue, [&] { dispatch_sync(dispatch_get_main_queue(), [] {}); });
        dispatch_semaphore_wait(never, DISPATCH_TIME_FOREVER);
      },
      "nothing can bring about(.|\n)*\"forgotten\": busy");
}

}  // namespace
}  // namespace ios
