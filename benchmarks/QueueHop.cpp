// One submission to a serial queue, against one hand-over between two threads by a condition variable.
#include <benchmark/benchmark.h>

#include <condition_variable>
#include <mutex>
#include <thread>

#include "Dispatch/Queue.h"

namespace {

/// A flag that one thread sets and another waits for.
class Baton {
 public:
  void pass() {
    {
      std::lock_guard lock(mutex_);
      passed_ = true;
    }
    condition_.notify_one();
  }
  void take() {
    std::unique_lock lock(mutex_);
    condition_.wait(lock, [this] { return passed_; });
    passed_ = false;
  }

 private:
  std::mutex mutex_;
  std::condition_variable condition_;
  bool passed_ = false;
};

void handOverThereAndBack(benchmark::State& state) {
  Baton there, back;
  bool stop = false;
  std::thread partner([&] {
    for (;;) {
      there.take();
      if (stop) return;
      back.pass();
    }
  });
  for (auto _ : state) {
    there.pass();
    back.take();
  }
  stop = true;
  there.pass();
  partner.join();
}
BENCHMARK(handOverThereAndBack)->Name("queue/hand-over and back")->UseRealTime();

void hopThereAndHandOverBack(benchmark::State& state) {
  const auto queue = ios::dispatch_queue_create("benchmark");
  Baton back;
  for (auto _ : state) {
    ios::dispatch_async(queue, [&] { back.pass(); });
    back.take();
  }
}
BENCHMARK(hopThereAndHandOverBack)->Name("queue/hop and hand-over back")->UseRealTime();

void hopThereAndBack(benchmark::State& state) {
  const auto there = ios::dispatch_queue_create("there");
  const auto back = ios::dispatch_queue_create("back");
  Baton done;
  std::int64_t left = 0;
  std::function<void()> hop = [&] {
    if (--left < 0) {
      done.pass();
    } else {
      ios::dispatch_async(left % 2 ? there : back, hop);
    }
  };
  constexpr int kHops = 100;
  for (auto _ : state) {
    left = kHops;
    ios::dispatch_async(there, hop);
    done.take();
  }
  state.SetItemsProcessed(state.iterations() * kHops);
}
BENCHMARK(hopThereAndBack)->Name("queue/hundred hops between two queues")->UseRealTime();

}  // namespace
