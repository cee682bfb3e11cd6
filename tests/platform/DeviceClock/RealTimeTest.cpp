#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <thread>
#include <vector>

#include "DeviceClock/Clock.h"
#include "Dispatch/Queue.h"
#include "Dispatch/Semaphore.h"
#include "Dispatch/Time.h"

// The clock as it is without `useVirtualTime`. Nothing here depends on the machine's speed; a lost wake shows
// as a test that never ends.
namespace ios {
namespace {

using namespace std::chrono_literals;

auto threadCount() {
  const std::filesystem::directory_iterator tasks("/proc/self/task");
  return std::distance(begin(tasks), end(tasks));
}

TEST(RealTime, AProcessThatSubmitsNothingStartsNoThread) {
  const auto before = threadCount();
  Clock& clock = Clock::shared();
  const auto queue = dispatch_queue_create("unused");
  dispatch_set_target_queue(queue, dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_HIGH, 0));
  const auto semaphore = dispatch_semaphore_create(0);
  bool ran = false, posted = false;
  clock.schedule(clock.now() + 1ms, Clock::Lane::main, [&] { ran = true; });
  dispatch_async(dispatch_get_main_queue(), [&] { posted = true; });
  dispatch_sync(queue, [] {});
  EXPECT_NE(dispatch_semaphore_wait(semaphore, DISPATCH_TIME_NOW), 0);
  EXPECT_TRUE(clock.runUntil([&] { return ran && posted; }, 1h));
  EXPECT_EQ(threadCount(), before);
  dispatch_async(queue, [] {});
  EXPECT_GT(threadCount(), before);
}

TEST(RealTime, FiresInOrderAndNeverEarly) {
  Clock& clock = Clock::shared();
  const auto start = clock.now();
  std::vector<int> order;
  int early = 0;
  for (const int i : {3, 1, 2, 1}) {
    const auto deadline = start + i * 2ms;
    clock.schedule(deadline, Clock::Lane::main, [&, i, deadline] {
      order.push_back(i);
      if (clock.now() < deadline) ++early;
    });
  }
  const auto dropped = clock.schedule(start + 3ms, Clock::Lane::main, [&] { order.push_back(99); });
  EXPECT_TRUE(clock.cancel(dropped));
  EXPECT_TRUE(clock.runUntil([&] { return order.size() == 4; }, 1h));
  EXPECT_EQ(order, (std::vector<int>{1, 1, 2, 3}));
  EXPECT_EQ(early, 0);
}

// Fault: the worker ends between the question and the wait, and the main thread sleeps until the limit.
TEST(RealTime, RunUntilSeesWhatAWorkerDid) {
  Clock& clock = Clock::shared();
  const auto queue = dispatch_queue_create("worker");
  for (int i = 0; i < 200; ++i) {
    std::atomic<bool> done = false;
    bool asked = false;
    ASSERT_TRUE(clock.runUntil(
        [&] {
          if (asked) return done.load();
          asked = true;
          dispatch_async(queue, [&] { done = true; });
          dispatch_sync(queue, [] {});
          return false;  // as an answer that was given a moment earlier
        },
        Clock::Duration::max()));
  }
}

TEST(RealTime, AFarDeadlineIsWaitedForAndDoesNotSpin) {
  Clock& clock = Clock::shared();
  bool far = false, near = false;
  clock.schedule(Clock::Instant::max() - 1ns, Clock::Lane::main, [&] { far = true; });
  dispatch_after(static_cast<dispatch_time_t>(Clock::Duration::max().count() - 1), dispatch_get_main_queue(),
                 [&] { far = true; });
  dispatch_after(dispatch_time(DISPATCH_TIME_NOW, 1'000'000), dispatch_get_main_queue(),
                 [&] { near = true; });
  int questions = 0;
  EXPECT_TRUE(clock.runUntil(
      [&] {
        ++questions;
        return near;
      },
      Clock::Duration::max()));
  EXPECT_FALSE(far);
  EXPECT_LT(questions, 20);  // a deadline that overflows makes the loop spin instead
}

TEST(RealTime, ABusyMainThreadHoldsNoQueueUp) {
  Clock& clock = Clock::shared();
  const auto ran = dispatch_semaphore_create(0);
  std::atomic<bool> onMain = true;
  dispatch_after(dispatch_time(DISPATCH_TIME_NOW, 1'000'000), dispatch_queue_create("late"), [&] {
    onMain = isMainThread();
    dispatch_semaphore_signal(ran);
  });
  EXPECT_EQ(dispatch_semaphore_wait(ran, DISPATCH_TIME_FOREVER), 0);  // the loop does not run meanwhile
  EXPECT_FALSE(onMain);
  const auto start = clock.now();
  EXPECT_NE(dispatch_semaphore_wait(ran, dispatch_time(DISPATCH_TIME_NOW, 2'000'000)), 0);
  EXPECT_GE(clock.now() - start, 2ms);
}

TEST(RealTime, WorkersReachTheMainThread) {
  Clock& clock = Clock::shared();
  constexpr int kCallers = 8;
  int count = 0;  // only ever touched on the main thread
  int offMain = 0;
  std::atomic<int> returned = 0;
  for (int i = 0; i < kCallers; ++i) {
    dispatch_async(dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0), [&] {
      dispatch_sync(dispatch_get_main_queue(), [&] {
        ++count;
        if (!isMainThread()) ++offMain;
      });
      ++returned;
    });
  }
  EXPECT_TRUE(clock.runUntil([&] { return returned == kCallers; }, Clock::Duration::max()));
  EXPECT_EQ(count, kCallers);
  EXPECT_EQ(offMain, 0);
}

}  // namespace
}  // namespace ios
