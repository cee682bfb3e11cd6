// A trigger in production mode, which is ignored.
#include <benchmark/benchmark.h>

#include "Tellvane/Tellvane.h"
#include "triggers/GestureListeners.h"

namespace {

void triggerInProductionMode(benchmark::State& state) {
  tellvane::Tellvane::instantiateSDK(false, false);
  const auto listeners = tellvane::GestureListeners::shared();
  for (auto _ : state) ios::send(*listeners, "gestureSuccess");
}
BENCHMARK(triggerInProductionMode)->Name("trigger/production mode")->Unit(benchmark::kMicrosecond);

}  // namespace
