// CosineWeightedHemisphereRayGenerator::get_rays over 1024 samples, per
// clipping mode and per kind of differentials: 0 = incoming ray without
// differentials (the generated rays still get the cone's spread), 1 = with
// incoming differentials, 2 = no differentials at all (incoming ray without
// them and a negative angle, which opens the same cone). Each benchmark
// also times, in the same run, a plain loop that writes the same number of
// GMathRay records (the store bound), and reports
//   store_ns        time of that loop for 1024 rays
//   x_store_bound   generator time / store-bound time
// next to the rays per second (items_per_second).

#include <benchmark/benchmark.h>

#include <time.h>
#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "sampling/ray_generators.h"

namespace {

constexpr unsigned int k_ray_count = 1024;

// CPU time of this thread in nanoseconds: both sides of a ratio are timed on
// the same clock, which other processes on the machine do not advance.
double thread_ns() {
  timespec t;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) * 1e9 + static_cast<double>(t.tv_nsec);
}

std::vector<GMathVec2<double>> bench_samples() {
  std::mt19937_64 rng(2024);
  std::uniform_real_distribution<double> uniform(0.0, 1.0);
  std::vector<GMathVec2<double>> samples(k_ray_count);
  for (GMathVec2<double>& s : samples)
    s = GMathVec2<double>(uniform(rng), uniform(rng));
  return samples;
}

GMathRay bench_incoming_ray(bool differentials) {
  GMathVec3<double> d(0.3, 0.5, 0.8);
  d = d * (1.0 / d.length());
  GMathRay ray(GMathVec3<double>(1.0, 2.0, 3.0), d);
  if (differentials) {
    GMathRayDifferential diff;
    diff.m_rx_origin = ray.m_origin + GMathVec3<double>(0.01, 0.0, 0.0);
    diff.m_ry_origin = ray.m_origin + GMathVec3<double>(0.0, 0.01, 0.0);
    diff.m_rx_direction = d * 0.999 + GMathVec3<double>(0.0447, 0.0, 0.0);
    diff.m_ry_direction = d * 0.999 + GMathVec3<double>(0.0, 0.0447, 0.0);
    ray.set_differentials(diff);
  }
  return ray;
}

// The store bound: k_ray_count whole GMathRay records written in a plain loop.
void store_rays(GMathRay const& source, GMathRay* rays) {
  for (unsigned int i = 0; i < k_ray_count; ++i)
    rays[i] = source;
  benchmark::DoNotOptimize(rays);
  benchmark::ClobberMemory();
}

// Best of several timed batches of the store loop, in nanoseconds per loop.
double store_bound_ns(GMathRay* rays) {
  GMathRay const source = bench_incoming_ray(true);
  int const reps = 2000;
  double best = INFINITY;
  for (int batch = 0; batch < 5; ++batch) {
    double const start = thread_ns();
    for (int r = 0; r < reps; ++r)
      store_rays(source, rays);
    best = std::min(best, (thread_ns() - start) / reps);
  }
  return best;
}

enum Mode { k_plain = 0, k_discard = 1, k_project = 2 };

void BM_CosineGetRays(benchmark::State& state) {
  Mode const mode = static_cast<Mode>(state.range(0));
  int const kind = static_cast<int>(state.range(1));
  bool const differentials = kind == 1;
  std::vector<GMathVec2<double>> const samples = bench_samples();
  std::vector<GMathRay> rays(k_ray_count);
  std::vector<double> weights(k_ray_count);
  CosineWeightedHemisphereRayGenerator generator;
  generator.init(bench_incoming_ray(differentials), kind == 2 ? -120.0 : 120.0, 0.5, 0.5);
  // A clipping plane that cuts the cone near its axis, so that the discard
  // and project modes take both branches.
  GMathMatrix4x4<double> const& m = generator.get_matrix();
  GMathVec3<double> const normal(m(0, 0), m(1, 0), m(2, 0));
  if (mode == k_discard)
    generator.discard_clipped_samples(normal);
  if (mode == k_project)
    generator.project_clipped_samples(normal);
  SampleRayGenerator const& g = generator;

  double const store_ns = store_bound_ns(rays.data());
  unsigned int written = 0;
  double const start = thread_ns();
  for (auto _ : state) {
    written = g.get_rays(samples.data(), k_ray_count, rays.data(), weights.data());
    benchmark::DoNotOptimize(rays.data());
    benchmark::ClobberMemory();
  }
  double const generator_ns = (thread_ns() - start) / static_cast<double>(state.iterations());
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * k_ray_count);
  state.counters["rays_written"] = written;
  state.counters["store_ns"] = store_ns;
  state.counters["x_store_bound"] = generator_ns / store_ns;
  state.SetLabel(std::string(mode == k_plain     ? "plain"
                             : mode == k_discard ? "discard"
                                                 : "project") +
                 (kind == 0   ? "/cone-spread-only"
                  : kind == 1 ? "/incoming-differentials"
                              : "/no-differentials"));
}
BENCHMARK(BM_CosineGetRays)->ArgsProduct({{k_plain, k_discard, k_project}, {0, 1, 2}});

// The same rays one get_ray call at a time, for the dispatch saved by get_rays.
void BM_CosineGetRayLoop(benchmark::State& state) {
  bool const differentials = state.range(0) != 0;
  std::vector<GMathVec2<double>> const samples = bench_samples();
  std::vector<GMathRay> rays(k_ray_count);
  std::vector<double> weights(k_ray_count);
  CosineWeightedHemisphereRayGenerator generator;
  generator.init(bench_incoming_ray(differentials), 120.0, 0.5, 0.5);
  SampleRayGenerator const& g = generator;
  double const store_ns = store_bound_ns(rays.data());
  double const start = thread_ns();
  for (auto _ : state) {
    for (unsigned int i = 0; i < k_ray_count; ++i)
      g.get_ray(samples[i], rays[i], &weights[i]);
    benchmark::DoNotOptimize(rays.data());
    benchmark::ClobberMemory();
  }
  double const elapsed_ns = thread_ns() - start;
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * k_ray_count);
  state.counters["store_ns"] = store_ns;
  state.counters["x_store_bound"] = elapsed_ns / static_cast<double>(state.iterations()) / store_ns;
}
BENCHMARK(BM_CosineGetRayLoop)->Arg(0)->Arg(1);

// The store bound on its own.
void BM_CosineStoreBound(benchmark::State& state) {
  std::vector<GMathRay> rays(k_ray_count);
  GMathRay const source = bench_incoming_ray(true);
  for (auto _ : state)
    store_rays(source, rays.data());
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * k_ray_count);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * k_ray_count *
                          sizeof(GMathRay));
}
BENCHMARK(BM_CosineStoreBound);

}  // namespace
