// Heap blocks before and after an hour on an idle phone, while the library reinstalls its recognisers
// every ten seconds.
#include <chrono>
#include <cstdio>

#include "AllocationCount.h"
#include "BenchmarkPhone.h"
#include "DeviceClock/Clock.h"
#include "Tellvane/Tellvane.h"

int main() {
  BenchmarkPhone phone;
  tellvane::Tellvane::instantiateSDK(true, false);
  ios::Clock::shared().runFor(std::chrono::minutes(5));  // everything that is created once exists by then
  const long before = liveBlocks();
  ios::Clock::shared().runFor(std::chrono::hours(1));
  const long growth = liveBlocks() - before;
  std::fprintf(stderr, "blocks %ld\ngrowth %ld\n", before, growth);
}
