// get_rays of the shape generators on 1024 samples, per generator, mode,
// weight array and differentials, against the store bound: a plain loop
// writing the same 1024 GMathRay records, timed right after in the same run
// (thread CPU time for both). Counters: samples/s (items_per_second),
// rays_kept per batch, ns_per_sample, store_ns_per_ray and x_store = time per
// sample over the store bound's time per ray.

#include <benchmark/benchmark.h>

#include <time.h>

#include <random>
#include <string>
#include <vector>

#include "sampling/ray_generators.h"

namespace {

constexpr unsigned int k_count = 1024;

std::vector<GMathVec2<double>> const& bench_samples() {
  static std::vector<GMathVec2<double>> const samples = [] {
    std::mt19937_64 rng(12345);
    std::uniform_real_distribution<double> uniform(0.0, 1.0);
    std::vector<GMathVec2<double>> s(k_count);
    for (GMathVec2<double>& p : s)
      p = GMathVec2<double>(uniform(rng), uniform(rng));
    return s;
  }();
  return samples;
}

// A rotated, scaled and moved frame, and an origin off every shape.
GMathMatrix4x4<double> bench_frame() {
  GMathMatrix4x4<double> m;
  double const c = 0.8, s = 0.6;
  m(0, 0) = 2.0 * c;
  m(0, 1) = -1.5 * s;
  m(1, 0) = 2.0 * s;
  m(1, 1) = 1.5 * c;
  m(0, 3) = 0.5;
  m(1, 3) = -0.25;
  m(2, 3) = 1.0;
  return m;
}
GMathVec3<double> const k_origin(0.3, 0.2, 4.0);

// CPU time of the calling thread, the clock the benchmark's own CPU column
// uses, so that ratios are not skewed by other loads on the machine.
double thread_seconds() {
  timespec t;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

enum Shape { k_sphere, k_line, k_plane, k_disk };

// Time per ray of the store bound, over `iterations` batches.
double store_bound_seconds_per_ray(GMathRay* rays, int64_t iterations) {
  GMathRay const prototype(k_origin, GMathVec3<double>(0.0, 0.6, 0.8));
  double const start = thread_seconds();
  for (int64_t it = 0; it < iterations; ++it) {
    for (unsigned int i = 0; i < k_count; ++i)
      rays[i] = prototype;
    benchmark::ClobberMemory();
  }
  return (thread_seconds() - start) / (static_cast<double>(iterations) * k_count);
}

void run(benchmark::State& state, SampleRayGenerator const& g, bool weighted) {
  std::vector<GMathRay> rays(k_count);
  std::vector<double> weights(k_count);
  double* const w = weighted ? weights.data() : nullptr;
  GMathVec2<double> const* const samples = bench_samples().data();
  unsigned int produced = 0;
  double const start = thread_seconds();
  for (auto _ : state) {
    produced = g.get_rays(samples, k_count, rays.data(), w);
    benchmark::DoNotOptimize(produced);
    benchmark::ClobberMemory();
  }
  double const elapsed = thread_seconds() - start;
  int64_t const iterations = state.iterations();
  double const per_sample = elapsed / (static_cast<double>(iterations) * k_count);
  double const store = store_bound_seconds_per_ray(rays.data(), iterations);
  state.SetItemsProcessed(iterations * k_count);
  state.counters["rays_kept"] = produced;
  state.counters["ns_per_sample"] = per_sample * 1e9;
  state.counters["store_ns_per_ray"] = store * 1e9;
  state.counters["x_store"] = per_sample / store;
}

void shape_rays(benchmark::State& state, Shape shape, bool discard, bool weighted,
                bool differentials) {
  // A spread reduction of 1 switches the differentials off.
  double const reduction = differentials ? 0.5 : 1.0;
  GMathMatrix4x4<double> const frame = bench_frame();
  UniformSphereRayGenerator sphere;
  LineRayGenerator line;
  PlaneRayGenerator plane;
  DiskRayGenerator disk;
  sphere.init(k_origin, 0.99, 0.99);
  line.init(k_origin, frame, reduction);
  plane.init(k_origin, frame, reduction, reduction);
  disk.init(k_origin, frame, 0.75, reduction, reduction);
  if (discard) {
    // A plane through the origin, the shape's centre and its local x axis:
    // it keeps about half the samples (all of the line's or none, so the
    // line's plane is tilted off its axis).
    GMathVec3<double> const centre(frame(0, 3), frame(1, 3), frame(2, 3));
    GMathVec3<double> const x_axis(frame(0, 0), frame(1, 0), frame(2, 0));
    GMathVec3<double> const y_axis(frame(0, 1), frame(1, 1), frame(2, 1));
    GMathVec3<double> const normal = cross(centre - k_origin, x_axis);
    line.discard_clipped_samples(cross(centre - k_origin, y_axis));
    plane.discard_clipped_samples(normal);
    disk.discard_clipped_samples(normal);
  }
  SampleRayGenerator const* const generators[4] = {&sphere, &line, &plane, &disk};
  run(state, *generators[shape], weighted);
}

// The store bound on its own, for reference beside the counters.
void BM_ShapeRaysStoreBound_Sphere_Line_Plane_Disk(benchmark::State& state) {
  std::vector<GMathRay> rays(k_count);
  GMathRay const prototype(k_origin, GMathVec3<double>(0.0, 0.6, 0.8));
  for (auto _ : state) {
    for (unsigned int i = 0; i < k_count; ++i)
      rays[i] = prototype;
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * k_count);
}
BENCHMARK(BM_ShapeRaysStoreBound_Sphere_Line_Plane_Disk);

[[maybe_unused]] int const k_registered = [] {
  char const* const names[4] = {"Sphere", "Line", "Plane", "Disk"};
  for (int shape = k_sphere; shape <= k_disk; ++shape) {
    for (int discard = 0; discard < 2; ++discard) {
      for (int differentials = 0; differentials < 2; ++differentials) {
        // The sphere has no clipping and always carries differentials.
        if (shape == k_sphere && (discard || !differentials))
          continue;
        for (int weighted = 0; weighted < 2; ++weighted) {
          std::string const name = std::string("BM_ShapeRays/") + names[shape] +
                                   (discard ? "/discard" : "/plain") +
                                   (weighted ? "/weights" : "/no_weights") +
                                   (differentials ? "/differentials" : "/no_differentials");
          benchmark::RegisterBenchmark(name.c_str(), shape_rays, static_cast<Shape>(shape),
                                       discard != 0, weighted != 0, differentials != 0);
        }
      }
    }
  }
  return 0;
}();

}  // namespace
