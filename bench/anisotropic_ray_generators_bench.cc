// get_rays of the anisotropic reflection and refraction generators for 1024
// samples, isotropic and anisotropic exponents, with and without incoming
// differentials. Each benchmark reports rays per second (items) and
// "x_store": its CPU time per batch over the CPU time of a plain loop writing
// the same 1024 GMathRay records, measured in the same process (the store
// bound; BM_AnisotropicStoreBound shows that loop on its own).

#include <benchmark/benchmark.h>

#include <time.h>
#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "platform/geometry/geometry_differential.h"
#include "sampling/ray_generators.h"

namespace {

constexpr unsigned int k_batch = 1024;

// CPU time of this thread in seconds: the machine is shared, so wall time
// would charge other processes' work to ours.
double thread_seconds() {
  timespec t;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

std::vector<GMathVec2<double>> const& batch_samples() {
  static std::vector<GMathVec2<double>> const samples = [] {
    std::mt19937_64 rng(99);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    std::vector<GMathVec2<double>> s(k_batch);
    for (GMathVec2<double>& x : s)
      x = GMathVec2<double>(unit(rng), unit(rng));
    return s;
  }();
  return samples;
}

// One batch of the store bound: every record written whole.
void store_batch(GMathRay* rays, GMathRay const& prototype) {
  for (unsigned int i = 0; i < k_batch; ++i)
    rays[i] = prototype;
  benchmark::ClobberMemory();
}

// Seconds per batch of the store bound: the best of a few timed runs.
double store_seconds_per_batch() {
  static double const seconds = [] {
    std::vector<GMathRay> rays(k_batch);
    GMathRay prototype(GMathVec3<double>(1.0, 2.0, 3.0), GMathVec3<double>(0.0, 0.6, 0.8));
    double best = 1e30;
    for (int run = 0; run < 20; ++run) {
      double const start = thread_seconds();
      for (int k = 0; k < 200; ++k) {
        prototype.m_time = k;
        store_batch(rays.data(), prototype);
      }
      best = std::min(best, (thread_seconds() - start) / 200.0);
    }
    return best;
  }();
  return seconds;
}

// The shading point of every benchmark: N = z, a grazing-ish incoming ray,
// incoming and surface differentials when asked.
struct Scene {
  GMathRay incoming;
  GMathVec3<double> position;
  GMathMatrix3x3<double> shading;
  GMathVec3<double> geometric_normal;
  GeometryDifferential differential;
};

Scene make_scene(bool differentials) {
  Scene s;
  GMathVec3<double> const i(0.3, -0.2, -1.0);
  GMathVec3<double> const direction = i * (1.0 / i.length());
  s.position = GMathVec3<double>(1.0, 2.0, 0.0);
  s.incoming = GMathRay(s.position - direction * 4.0, direction, GMathRay::k_type_camera, 0.5);
  s.geometric_normal = GMathVec3<double>(0.0, 0.0, 1.0);
  if (differentials) {
    GMathRayDifferential d;
    d.m_rx_origin = s.incoming.m_origin;
    d.m_ry_origin = s.incoming.m_origin;
    d.m_rx_direction = direction + GMathVec3<double>(0.001, 0.0, 0.0);
    d.m_ry_direction = direction + GMathVec3<double>(0.0, 0.001, 0.0);
    s.incoming.set_differentials(d);
    s.differential = GeometryDifferential(GMathVec3<double>(0.004, 0.0, 0.0),
                                          GMathVec3<double>(0.0, 0.004, 0.0));
  }
  return s;
}

void run(benchmark::State& state, SampleRayGenerator const& generator) {
  std::vector<GMathRay> rays(k_batch);
  std::vector<double> weights(k_batch);
  GMathVec2<double> const* samples = batch_samples().data();
  unsigned int produced = 0;
  double const start = thread_seconds();
  for (auto _ : state) {
    produced = generator.get_rays(samples, k_batch, rays.data(), weights.data());
    benchmark::DoNotOptimize(produced);
    benchmark::ClobberMemory();
  }
  double const elapsed = thread_seconds() - start;
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * k_batch);
  state.counters["produced"] = static_cast<double>(produced) / k_batch;
  state.counters["x_store"] =
      elapsed / static_cast<double>(state.iterations()) / store_seconds_per_batch();
}

void BM_AnisotropicStoreBound(benchmark::State& state) {
  std::vector<GMathRay> rays(k_batch);
  GMathRay prototype(GMathVec3<double>(1.0, 2.0, 3.0), GMathVec3<double>(0.0, 0.6, 0.8));
  for (auto _ : state) {
    store_batch(rays.data(), prototype);
    benchmark::DoNotOptimize(rays.data());
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * k_batch);
}

// range(0) selects the exponents, (20, 20) or (100, 8); range(1) incoming
// differentials. `init` prepares the generator from the scene and exponents.
template <typename G, typename Init>
void run_generator(benchmark::State& state, Init const& init) {
  Scene const s = make_scene(state.range(1) != 0);
  bool const anisotropic = state.range(0) != 0;
  G generator;
  init(generator, s, anisotropic ? 100.0f : 20.0f, anisotropic ? 8.0f : 20.0f);
  run(state, generator);
}

void BM_AnisotropicReflectionGetRays(benchmark::State& state) {
  run_generator<AnisotropicReflectionRayGenerator>(
      state, [](AnisotropicReflectionRayGenerator& g, Scene const& s, float nu, float nv) {
        g.init(s.incoming, s.position, s.shading, s.geometric_normal, s.differential, nu, nv,
               GMathVec2<float>(1.0f, 0.0f), 0.0f, 0.0f);
      });
}

// Refracting with eta 1.5; some samples give no ray ("produced").
void BM_AnisotropicRefractionGetRays(benchmark::State& state) {
  run_generator<AnisotropicRefractionRayGenerator>(
      state, [](AnisotropicRefractionRayGenerator& g, Scene const& s, float nu, float nv) {
        g.init(s.incoming, s.position, s.shading, s.geometric_normal, s.differential, nu, nv,
               GMathVec2<float>(1.0f, 0.0f), 1.5f, 0.0f, 0.0f);
      });
}

}  // namespace

BENCHMARK(BM_AnisotropicStoreBound);
BENCHMARK(BM_AnisotropicReflectionGetRays)
    ->ArgNames({"aniso", "diff"})
    ->ArgsProduct({{0, 1}, {0, 1}});
BENCHMARK(BM_AnisotropicRefractionGetRays)
    ->ArgNames({"aniso", "diff"})
    ->ArgsProduct({{0, 1}, {0, 1}});
