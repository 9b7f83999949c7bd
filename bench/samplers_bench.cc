// get_all_samples of the stratified and Hammersley samplers at N = 4096, each
// beside a plain loop written straight from the point formulas (same outputs,
// checked before timing), and the store bound: a loop that only writes 4096
// GMathVec2<double> to an array.

#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "platform/random/grandom_mt.h"
#include "sampling/samplers.h"

namespace {

unsigned const k_side = 64;
unsigned const k_count = k_side * k_side;

// Plain jittered grid: two draws per stratum, x first, rows of x first.
void stratified_reference(GRandomMt& mt, double const& jitter, GMathVec2<double>* out) {
  double const inv = 1.0 / k_side;
  double const offset = 0.5 - (jitter * 0.5);
  for (unsigned iy = 0; iy < k_side; ++iy) {
    for (unsigned ix = 0; ix < k_side; ++ix) {
      GMathVec2<double>& s = out[iy * k_side + ix];
      s.x = ((mt.genrand_int32() * 0x1.00000001p-32 * jitter + ix) + offset) * inv;
      s.y = ((mt.genrand_int32() * 0x1.00000001p-32 * jitter + iy) + offset) * inv;
    }
  }
}

// Plain Hammersley set: the base-2 radical inverse by its bit loop, v evenly
// spaced and shifted by the base-3 radical inverse of the seed.
void hammersley_reference(unsigned const& seed, GMathVec2<double>* out) {
  double offset = 0.0;
  double w = 1.0 / 3.0;
  for (unsigned n = seed & 0xFFFFu; n != 0; n /= 3) {
    if (n % 3)
      offset = (n % 3) * w + offset;
    w = w * (1.0 / 3.0);
  }
  double const inv = 1.0 / k_count;
  for (unsigned k = 0; k < k_count; ++k) {
    double u = 0.0, half = 0.5;
    for (unsigned n = k + (seed & 0xFFFFu); n != 0; n >>= 1, half *= 0.5) {
      if (n & 1u)
        u = half + u;
    }
    out[k].x = u;
    out[k].y = (k + offset) * inv;
  }
}

// Times `fill`, which writes the 4096 samples into `out`, after checking that
// what `out` already holds (the timed path's first run) matches `check`.
template <typename Fill>
void time_fill(benchmark::State& state, std::vector<GMathVec2<double>>& out,
               std::vector<GMathVec2<double>> const& check, Fill fill) {
  if (std::memcmp(out.data(), check.data(), k_count * sizeof out[0]) != 0) {
    state.SkipWithError("differs from the plain loop");
  }
  for (auto _ : state) {
    fill();
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * k_count);
}

void BM_StratifiedGetAllSamples(benchmark::State& state) {
  std::vector<GMathVec2<double>> out(k_count), check(k_count);
  GRandomMt mt(1), ref(1);
  StratifiedSampler2d s;
  s.init(mt, k_side, k_side, 8, 8, 1.0, 1.0);
  s.get_all_samples(out.data());
  stratified_reference(ref, 1.0, check.data());
  time_fill(state, out, check, [&] { s.get_all_samples(out.data()); });
}
BENCHMARK(BM_StratifiedGetAllSamples);

void BM_StratifiedPlainLoop(benchmark::State& state) {
  std::vector<GMathVec2<double>> out(k_count);
  GRandomMt mt(1);
  time_fill(state, out, out, [&] { stratified_reference(mt, 1.0, out.data()); });
}
BENCHMARK(BM_StratifiedPlainLoop);

void BM_HammersleyGetAllSamples(benchmark::State& state) {
  std::vector<GMathVec2<double>> out(k_count), check(k_count);
  HammersleySampler2d s;
  s.init(1234, k_side, k_side, 8, 8);
  s.get_all_samples(out.data());
  hammersley_reference(1234, check.data());
  time_fill(state, out, check, [&] { s.get_all_samples(out.data()); });
}
BENCHMARK(BM_HammersleyGetAllSamples);

void BM_HammersleyPlainLoop(benchmark::State& state) {
  std::vector<GMathVec2<double>> out(k_count);
  unsigned seed = 1234;
  time_fill(state, out, out, [&] {
    benchmark::DoNotOptimize(seed);
    hammersley_reference(seed, out.data());
  });
}
BENCHMARK(BM_HammersleyPlainLoop);

// The store bound: the same bytes written with no computation.
void BM_StoreBound4096Vec2(benchmark::State& state) {
  std::vector<GMathVec2<double>> out(k_count);
  double x = 0.25;
  time_fill(state, out, out, [&] {
    benchmark::DoNotOptimize(x);
    for (unsigned k = 0; k < k_count; ++k)
      out[k] = GMathVec2<double>(x, x);
  });
}
BENCHMARK(BM_StoreBound4096Vec2);

}  // namespace
