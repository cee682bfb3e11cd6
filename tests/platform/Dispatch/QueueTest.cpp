#include "Dispatch/Queue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "DeviceClock/Clock.h"
#include "Dispatch/Semaphore.h"
#include "Dispatch/Time.h"

namespace ios {
namespace {

dispatch_queue_t standardQueue() {
  return dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0);
}
dispatch_queue_t highQueue() {
  return dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_HIGH, 0);
}

class Queues : public testing::Test {
 protected:
  Queues() { clock.useVirtualTime(); }
  Clock& clock = Clock::shared();
};

// What stands in for state that a serial queue protects: no lock, no atomic, so ThreadSanitizer
// sees any overlap.
struct Guarded {
  std::map<int, int> lastOf;  // submitter → number of its latest block
  int blocks = 0;
  int disorders = 0;

  void note(int submitter, int number) {
    if (number != lastOf[submitter] + 1) ++disorders;
    lastOf[submitter] = number;
    ++blocks;
  }
};

TEST_F(Queues, ASerialQueueRunsOneAtATimeInOrderWhoeverSubmits) {
  const struct {
    const char* name;
    std::function<dispatch_queue_t()> target;
  } rows[] = {
      {"default priority", [] { return standardQueue(); }},
      {"high priority", [] { return highQueue(); }},
      {"another serial queue", [] { return dispatch_queue_create("target"); }},
      {"two serial queues deep",
       [] {
         const auto middle = dispatch_queue_create("middle");
         dispatch_set_target_queue(middle, dispatch_queue_create("bottom"));
         return middle;
       }},
      {"main", [] { return dispatch_get_main_queue(); }},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const auto queue = dispatch_queue_create("serial");
    dispatch_set_target_queue(queue, row.target());
    constexpr int kSubmitters = 6, kBlocks = 150;
    Guarded state;
    for (int submitter = 0; submitter < kSubmitters; ++submitter) {
      dispatch_async(submitter % 2 ? standardQueue() : highQueue(), [&, submitter] {
        for (int number = 1; number <= kBlocks; ++number) {
          if (number % 10 == 0) {
            dispatch_sync(queue, [&] { state.note(submitter, number); });
          } else {
            dispatch_async(queue, [&state, submitter, number] { state.note(submitter, number); });
          }
        }
      });
    }
    clock.runUntilRest();
    EXPECT_EQ(state.blocks, kSubmitters * kBlocks);
    EXPECT_EQ(state.disorders, 0);
  }
}

TEST_F(Queues, QueuesOfOneTargetExcludeEachOther) {
  const auto target = dispatch_queue_create("target");
  std::vector<dispatch_queue_t> queues = {target};
  for (const char* label : {"a", "b", "c"}) {
    queues.push_back(dispatch_queue_create(label));
    dispatch_set_target_queue(queues.back(), target);
  }
  Guarded state;
  for (int submitter = 0; submitter < 4; ++submitter) {
    dispatch_async(standardQueue(), [&, submitter] {
      for (int number = 1; number <= 100; ++number) {
        const auto block = [&state, &target, submitter, number] {
          dispatch_assert_queue(target);
          state.note(submitter, number);
        };
        if (number % 7 == 0) {
          dispatch_sync(queues[submitter], block);
        } else {
          dispatch_async(queues[submitter], block);
        }
      }
    });
  }
  clock.runUntilRest();
  EXPECT_EQ(state.blocks, 400);
  EXPECT_EQ(state.disorders, 0);
}

TEST_F(Queues, SyncRunsAfterEarlierBlocksOnTheCallersOwnThread) {
  const auto plain = dispatch_queue_create("plain");
  const auto nested = dispatch_queue_create("nested");
  dispatch_set_target_queue(nested, plain);
  for (const auto& queue : {plain, nested}) {
    SCOPED_TRACE(queue == plain ? "plain" : "nested");
    int before = 0;
    for (int i = 0; i < 50; ++i) {
      dispatch_async(queue, [&] { ++before; });
    }
    std::thread::id ranOn;
    int seen = -1;
    dispatch_sync(queue, [&] {
      dispatch_assert_queue(queue);
      ranOn = std::this_thread::get_id();
      seen = before;
    });
    EXPECT_EQ(seen, 50);
    EXPECT_EQ(ranOn, std::this_thread::get_id());
  }
}

TEST_F(Queues, WhatTargetsTheMainQueueRunsOnTheMainThread) {
  const auto queue = dispatch_queue_create("on main");
  dispatch_set_target_queue(queue, dispatch_get_main_queue());
  bool asyncOnMain = false, syncOnMain = false;
  dispatch_async(queue, [&] { asyncOnMain = isMainThread(); });
  EXPECT_FALSE(asyncOnMain);
  dispatch_async(standardQueue(), [&] { dispatch_sync(queue, [&] { syncOnMain = isMainThread(); }); });
  clock.runUntilRest();
  EXPECT_TRUE(asyncOnMain);
  EXPECT_TRUE(syncOnMain);
}

// Fault: the pool counts threads that wait as busy, and the one that would wake them never gets a thread.
TEST_F(Queues, ThreadsThatWaitDoNotStarveThePool) {
  constexpr int kWaiting = 12;
  const auto gate = dispatch_semaphore_create(0);
  std::atomic<int> passed = 0;
  for (int i = 0; i < kWaiting; ++i) {
    dispatch_async(standardQueue(), [&] {
      dispatch_semaphore_wait(gate, DISPATCH_TIME_FOREVER);
      ++passed;
    });
  }
  clock.runUntilRest();
  EXPECT_EQ(passed, 0);
  dispatch_async(standardQueue(), [&] {
    for (int i = 0; i < kWaiting; ++i) dispatch_semaphore_signal(gate);
  });
  clock.runUntilRest();
  EXPECT_EQ(passed, kWaiting);
}

// Fault: a copy of a block, and what it holds, outlives the rest or dies on a thread that its owner
// does not expect.
TEST_F(Queues, ABlockIsDestroyedOnTheThreadThatRanItBeforeTheDeviceRests) {
  const auto onMain = dispatch_queue_create("onto main");
  dispatch_set_target_queue(onMain, dispatch_get_main_queue());
  const auto serial = dispatch_queue_create("serial");
  const std::pair<const char*, std::function<void(dispatch_block_t)>> rows[] = {
      {"serial", [&](auto block) { dispatch_async(serial, std::move(block)); }},
      {"global", [](auto block) { dispatch_async(standardQueue(), std::move(block)); }},
      {"main", [](auto block) { dispatch_async(dispatch_get_main_queue(), std::move(block)); }},
      {"onto main", [&](auto block) { dispatch_async(onMain, std::move(block)); }},
      {"delayed",
       [&](auto block) { dispatch_after(dispatch_time(DISPATCH_TIME_NOW, 1), serial, std::move(block)); }},
  };
  for (const auto& [name, submit] : rows) {
    SCOPED_TRACE(name);
    std::thread::id ranOn, destroyedOn;
    for (int i = 0; i < 20; ++i) {
      {
        std::shared_ptr<void> held(nullptr, [&](void*) { destroyedOn = std::this_thread::get_id(); });
        submit([&ranOn, held = std::move(held)] { ranOn = std::this_thread::get_id(); });
      }
      clock.runFor(std::chrono::nanoseconds(1));
      ASSERT_NE(ranOn, std::thread::id());
      ASSERT_EQ(destroyedOn, ranOn);
      ranOn = destroyedOn = {};
    }
  }
}

TEST_F(Queues, WorkKeepsItsQueueAlive) {
  int ran = 0;
  std::weak_ptr<DispatchQueue> watched;
  {
    const auto queue = dispatch_queue_create("short-lived");
    watched = queue;
    for (int i = 0; i < 10; ++i) dispatch_async(queue, [&] { ++ran; });
  }
  clock.runUntilRest();
  EXPECT_EQ(ran, 10);
  EXPECT_EQ(clock.pending(), "nothing pending\n");
}

}  // namespace
}  // namespace ios
