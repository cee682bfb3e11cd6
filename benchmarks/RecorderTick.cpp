// A tick of the recorder that queues its render step: what a frame costs the main thread before it is drawn.
#include <benchmark/benchmark.h>

#include <chrono>

#include "BenchmarkPhone.h"
#include "DeviceClock/Clock.h"
#include "recording/TLVScreenRecorder.h"

namespace {

using namespace ios;
using std::chrono::steady_clock;

void tick(benchmark::State& state) {
  BenchmarkPhone::shared();
  // Without a writer the render step ends at once, so each tick finds the stage free.
  const auto recorder = std::make_shared<tellvane::TLVScreenRecorder>(0.6, 30, false);
  for (auto _ : state) {
    const auto before = steady_clock::now();
    send(*recorder, "writeVideoFrame");
    state.SetIterationTime(std::chrono::duration<double>(steady_clock::now() - before).count());
    Clock::shared().runUntilRest();
  }
}
BENCHMARK(tick)->Name("recording/tick")->UseManualTime()->Iterations(20000);

}  // namespace
