#include <benchmark/benchmark.h>

#include "BenchmarkPhone.h"

int main(int count, char** arguments) {
  benchmark::Initialize(&count, arguments);
  if (benchmark::ReportUnrecognizedArguments(count, arguments)) return 1;
  // First of all: its clock is chosen before anything uses one, and the benchmarks come in any order.
  BenchmarkPhone::shared();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
}
