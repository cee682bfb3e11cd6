#include <benchmark/benchmark.h>

#include "BenchmarkPhone.h"

int main(int count, char** arguments) {
  benchmark::Initialize(&count, arguments);
  if (benchmark::ReportUnrecognizedArguments(count, arguments)) return 1;
  // Created first: the clock must be chosen before anything uses it, and the benchmarks run in any order.
  BenchmarkPhone::shared();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
}
