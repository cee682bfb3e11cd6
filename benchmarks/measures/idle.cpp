// Heap blocks before and after an hour of a phone that lies idle, while the library puts its recognisers on
// anew every ten seconds.
#include <chrono>
#include <cstdio>

#include "AllocationCount.h"
#include "BenchmarkPhone.h"
#include "DeviceClock/Clock.h"
#include "front/Tellvane.h"

int main() {
  BenchmarkPhone phone;
  tellvane::Tellvane::instantiateSDK(true, false);
  ios::Clock::shared().runFor(std::chrono::minutes(5));  // all that is made once has been made
  const long before = liveBlocks();
  ios::Clock::shared().runFor(std::chrono::hours(1));
  const long growth = liveBlocks() - before;
  std::fprintf(stderr, "blocks %ld\ngrowth %ld\n", before, growth);
}
