#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <stdexcept>
#include <string>

#include "DeviceClock/Clock.h"
#include "Dispatch/Queue.h"
#include "Dispatch/Semaphore.h"

namespace ios {
namespace {

struct Misuse {
  const char* name;
  std::function<void()> act;
  const char* message;

  friend void PrintTo(const Misuse& misuse, std::ostream* out) { *out << misuse.name; }
};

// The four queues of the deadlocks: "inner" and "sibling" take their turns on "outer".
struct Family {
  dispatch_queue_t outer = dispatch_queue_create("outer");
  dispatch_queue_t inner = dispatch_queue_create("inner");
  dispatch_queue_t sibling = dispatch_queue_create("sibling");
  dispatch_queue_t apart = dispatch_queue_create("apart");

  Family() {
    dispatch_set_target_queue(inner, outer);
    dispatch_set_target_queue(sibling, outer);
  }
};

void runOn(const dispatch_queue_t& queue, const dispatch_block_t& block) {
  dispatch_async(queue, block);
  Clock::shared().runUntilRest();
}

const Misuse kMisuses[] = {
    {"its own queue",
     [] {
       Family f;
       runOn(f.outer, [&] { dispatch_sync(f.outer, [] {}); });
     },
     "\"outer\" can never run: the caller is on that queue"},
    {"the queue it takes its turns on",
     [] {
       Family f;
       runOn(f.inner, [&] { dispatch_sync(f.outer, [] {}); });
     },
     "\"outer\" can never run"},
    {"a queue that takes its turns where the caller does",
     [] {
       Family f;
       runOn(f.inner, [&] { dispatch_sync(f.sibling, [] {}); });
     },
     "\"sibling\" can never run: it takes its turns on \"outer\""},
    {"its own queue, by way of another",
     [] {
       Family f;
       runOn(f.outer, [&] { dispatch_sync(f.apart, [&] { dispatch_sync(f.outer, [] {}); }); });
     },
     "\"outer\" can never run"},
    {"the main queue, from the main thread", [] { dispatch_sync(dispatch_get_main_queue(), [] {}); },
     "\"com.apple.main-thread\" can never run"},
    {"a queue on the main queue, from the main thread",
     [] {
       Family f;
       dispatch_set_target_queue(f.apart, dispatch_get_main_queue());
       dispatch_sync(f.apart, [] {});
     },
     "\"apart\" can never run: it takes its turns on \"com.apple.main-thread\""},
    {"each other, the main thread and a queue",
     [] {
       Family f;
       dispatch_async(f.outer, [&] {
         dispatch_sync(dispatch_get_main_queue(), [&] { dispatch_sync(f.outer, [] {}); });
       });
       Clock::shared().runUntilRest();
     },
     "the main thread waits for something that nothing can bring about"},
    {"a target that leads back",
     [] {
       Family f;
       dispatch_set_target_queue(f.outer, f.inner);
     },
     "\"outer\" cannot be its own target"},
    {"a target while there is work",
     [] {
       Family f;
       runOn(f.outer, [&] { dispatch_set_target_queue(f.outer, f.apart); });
     },
     "\"outer\" was set while it had work"},
    {"a target for a global queue",
     [] { dispatch_set_target_queue(dispatch_get_global_queue(0, 0), dispatch_get_main_queue()); },
     "\"default priority\" has no target to set"},
    {"flags for a global queue", [] { dispatch_get_global_queue(0, 2); }, "must be 0"},
    {"an empty block", [] { dispatch_async(Family().apart, nullptr); },
     "an empty block for the queue \"apart\""},
    {"no queue", [] { dispatch_async(nullptr, [] {}); }, "a queue was needed"},
    {"an assertion off its queue",
     [] {
       Family f;
       runOn(f.outer, [&] { dispatch_assert_queue(f.inner); });
     },
     "belongs to the queue \"inner\""},
    {"the main thread's work elsewhere", [] { runOn(Family().apart, [] { assertMainThread("the sheet"); }); },
     "the sheet belongs to the main thread"},
    {"a block that throws",
     [] { dispatch_sync(Family().apart, [] { throw std::runtime_error("escaped"); }); }, "escaped"},
    {"a semaphore below zero", [] { dispatch_semaphore_create(-1); }, "0 or more"},
};

class DispatchDeathTest : public testing::TestWithParam<Misuse> {};

TEST_P(DispatchDeathTest, StopsWithAMessage) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(
      {
        Clock::shared().useVirtualTime();
        GetParam().act();
      },
      GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(Misuse, DispatchDeathTest, testing::ValuesIn(kMisuses), [](const auto& row) {
  std::string name = row.param.name;
  std::erase(name, ',');
  std::erase(name, '\'');
  for (char& c : name) {
    if (c == ' ') c = '_';
  }
  return name;
});

}  // namespace
}  // namespace ios
