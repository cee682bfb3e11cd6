#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "DeviceClock/Clock.h"
#include "Dispatch/Queue.h"
#include "Dispatch/Semaphore.h"
#include "Dispatch/Time.h"

namespace ios {
namespace {

using namespace std::chrono_literals;

class Waiting : public testing::Test {
 protected:
  Waiting() { clock.useVirtualTime(); }
  Clock::Duration now() const { return clock.now().time_since_epoch(); }
  Clock& clock = Clock::shared();
};

constexpr std::int64_t kSecond = NSEC_PER_SEC;
constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();

TEST_F(Waiting, TimesSaturateInsteadOfWrapping) {
  clock.runFor(10s);
  const struct {
    const char* name;
    dispatch_time_t when;
    std::int64_t delta;
    dispatch_time_t expected;
  } rows[] = {
      {"now and two seconds", DISPATCH_TIME_NOW, 2 * kSecond, 12 * NSEC_PER_SEC},
      {"now and nothing is a deadline, not the constant", DISPATCH_TIME_NOW, 0, 10 * NSEC_PER_SEC},
      {"back in time", DISPATCH_TIME_NOW, -4 * kSecond, 6 * NSEC_PER_SEC},
      {"before the start", DISPATCH_TIME_NOW, -11 * kSecond, 1},
      {"before the start by the most there is", DISPATCH_TIME_NOW, kLeast, 1},
      {"past the end", DISPATCH_TIME_NOW, kMost, DISPATCH_TIME_FOREVER},
      {"to the last instant but one", 1, kMost - 2, static_cast<dispatch_time_t>(kMost) - 1},
      {"to the end", 1, kMost - 1, DISPATCH_TIME_FOREVER},
      {"from a deadline", 5 * NSEC_PER_SEC, kSecond, 6 * NSEC_PER_SEC},
      {"forever and less", DISPATCH_TIME_FOREVER, -kSecond, DISPATCH_TIME_FOREVER},
      {"nearly forever and more", DISPATCH_TIME_FOREVER - 1, 10, DISPATCH_TIME_FOREVER},
  };
  for (const auto& row : rows) EXPECT_EQ(dispatch_time(row.when, row.delta), row.expected) << row.name;
}

TEST_F(Waiting, DelayedBlocksComeAtTheirTimeAndInOrder) {
  clock.runFor(5s);
  std::vector<std::string> log;
  const auto main = dispatch_get_main_queue();
  const auto note = [&](const std::string& name) {
    return [&log, this, name] { log.push_back(name + " " + std::to_string(now() / 1s)); };
  };
  dispatch_after(DISPATCH_TIME_FOREVER, main, note("never"));
  dispatch_after(static_cast<dispatch_time_t>(kMost), main, note("never"));
  dispatch_after(dispatch_time(DISPATCH_TIME_NOW, 2 * kSecond), main, note("later"));
  dispatch_after(dispatch_time(DISPATCH_TIME_NOW, kSecond), main, note("soon"));
  dispatch_after(dispatch_time(DISPATCH_TIME_NOW, kSecond), main, note("soon too"));
  dispatch_after(1, main, note("past"));
  dispatch_after(DISPATCH_TIME_NOW, main, note("now"));
  EXPECT_TRUE(log.empty());
  clock.runFor(24h * 365);
  EXPECT_EQ(log, (std::vector<std::string>{"past 5", "now 5", "soon 6", "soon too 6", "later 7"}));
}

TEST_F(Waiting, ATryNeverWaits) {
  const auto semaphore = dispatch_semaphore_create(1);
  EXPECT_EQ(dispatch_semaphore_wait(semaphore, DISPATCH_TIME_NOW), 0);
  EXPECT_NE(dispatch_semaphore_wait(semaphore, DISPATCH_TIME_NOW), 0);
  EXPECT_EQ(dispatch_semaphore_signal(semaphore), 0);
  EXPECT_EQ(dispatch_semaphore_wait(semaphore, DISPATCH_TIME_NOW), 0);
  EXPECT_EQ(now(), 0s);
}

TEST_F(Waiting, ATimedWaitEndsAtTheSignalOrAtItsTime) {
  const struct {
    const char* name;
    std::int64_t limit, signal;
    bool taken;
    Clock::Duration ends;
  } rows[] = {
      {"signalled in time", 3 * kSecond, kSecond, true, 1s},
      {"never signalled", 3 * kSecond, 0, false, 3s},
      {"signalled too late", 3 * kSecond, 4 * kSecond, false, 3s},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const auto start = now();
    const auto semaphore = dispatch_semaphore_create(0);
    long outcome = -1;
    Clock::Duration ended{};
    dispatch_async(dispatch_queue_create("waits"), [&] {
      outcome = dispatch_semaphore_wait(semaphore, dispatch_time(DISPATCH_TIME_NOW, row.limit));
      ended = now() - start;
    });
    if (row.signal) {
      dispatch_after(dispatch_time(DISPATCH_TIME_NOW, row.signal), dispatch_queue_create("signals"),
                     [&] { dispatch_semaphore_signal(semaphore); });
    }
    clock.runFor(5s);
    EXPECT_EQ(outcome == 0, row.taken);
    EXPECT_EQ(ended, row.ends);
    // A signal that came too late is still there for the next, and one that was taken is gone.
    EXPECT_EQ(dispatch_semaphore_wait(semaphore, DISPATCH_TIME_NOW) == 0, row.signal > row.limit);
  }
}

// Fault: the count is lost or doubled when a wait ends while a signal is on its way.
TEST_F(Waiting, NoSignalIsLostWhenManyWaitsEndAtOnce) {
  const auto semaphore = dispatch_semaphore_create(0);
  std::atomic<int> taken = 0, late = 0;
  constexpr int kWaiters = 20, kSignals = 10;
  for (int i = 0; i < kWaiters; ++i) {
    dispatch_async(dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0), [&] {
      const bool mine = dispatch_semaphore_wait(semaphore, dispatch_time(0, kSecond)) == 0;
      ++(mine ? taken : late);
    });
  }
  clock.runUntilRest();
  for (int i = 0; i < kSignals; ++i) {
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, kSecond), dispatch_queue_create("signals"),
                   [&] { dispatch_semaphore_signal(semaphore); });
  }
  clock.runFor(2s);
  int left = 0;
  while (dispatch_semaphore_wait(semaphore, DISPATCH_TIME_NOW) == 0) ++left;
  EXPECT_EQ(taken + late, kWaiters);
  EXPECT_EQ(taken + left, kSignals);
}

TEST_F(Waiting, WaitersAreServedInTheOrderInWhichTheyCame) {
  const auto semaphore = dispatch_semaphore_create(0);
  const auto log = dispatch_queue_create("log");
  std::vector<int> order;
  for (int i = 0; i < 5; ++i) {
    dispatch_async(dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_HIGH, 0), [&, i] {
      dispatch_semaphore_wait(semaphore, DISPATCH_TIME_FOREVER);
      dispatch_sync(log, [&] { order.push_back(i); });
    });
    clock.runUntilRest();
  }
  for (int i = 0; i < 5; ++i) {
    EXPECT_NE(dispatch_semaphore_signal(semaphore), 0);
    clock.runUntilRest();
  }
  EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3, 4}));
}

}  // namespace
}  // namespace ios
