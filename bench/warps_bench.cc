#include <benchmark/benchmark.h>

#include "sampling/sampling.h"

static void BM_ToUnitDisk(benchmark::State& state) {
  double u = 0.3, v = 0.7, r, a;
  for (auto _ : state) {
    Sampling::to_unit_disk(u, v, r, a);
    benchmark::DoNotOptimize(r);
    benchmark::DoNotOptimize(a);
  }
}
BENCHMARK(BM_ToUnitDisk);
