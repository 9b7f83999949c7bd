// Thread scaling: one initialised generator shared by the threads, and one
// sampler per thread, each thread writing its own arrays. Run with 1 and 2
// threads on wall-clock time; items_per_second sums the threads, so the
// speed-up is the 2-thread rate over the 1-thread rate
// (bench/make_performance_doc.py reports it).

#include <benchmark/benchmark.h>

#include <vector>

#include "bench/bench_support.h"
#include "sampling/ray_generators.h"
#include "sampling/samplers.h"
#include "sampling/sampling.h"

namespace {

unsigned int const k_rays = 1024;
unsigned int const k_samples = 4096;

// Set up before the threads start, read-only while they run.
template <typename G>
G const& shared_generator();

template <>
CosineWeightedHemisphereRayGenerator const& shared_generator() {
  static CosineWeightedHemisphereRayGenerator const g = [] {
    CosineWeightedHemisphereRayGenerator c;
    GMathVec3<double> d(0.3, 0.5, 0.8);
    c.init(GMathRay(GMathVec3<double>(1.0, 2.0, 3.0), d * (1.0 / d.length())), 120.0, 0.5, 0.5);
    return c;
  }();
  return g;
}

template <>
PlaneRayGenerator const& shared_generator() {
  static PlaneRayGenerator const g = [] {
    PlaneRayGenerator p;
    GMathMatrix4x4<double> frame;
    frame(2, 3) = 1.0;
    p.init(GMathVec3<double>(0.3, 0.2, 4.0), frame, 0.5, 0.5);
    return p;
  }();
  return g;
}

template <typename G>
void BM_SharedGeneratorThreads(benchmark::State& state) {
  SampleRayGenerator const& g = shared_generator<G>();
  std::vector<GMathVec2<double>> const samples =
      bench::unit_samples(k_rays, 7 + state.thread_index());
  std::vector<GMathRay> rays(k_rays);
  std::vector<double> weights(k_rays);
  for (auto _ : state) {
    g.get_rays(samples.data(), k_rays, rays.data(), weights.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * k_rays);
}
BENCHMARK_TEMPLATE(BM_SharedGeneratorThreads, CosineWeightedHemisphereRayGenerator)
    ->Threads(1)
    ->Threads(2)
    ->UseRealTime();
BENCHMARK_TEMPLATE(BM_SharedGeneratorThreads, PlaneRayGenerator)
    ->Threads(1)
    ->Threads(2)
    ->UseRealTime();

// One Hammersley and one hierarchical (Hammersley mode, shared permutation
// table) sampler per thread.
struct LibraryStarted {
  LibraryStarted() { Sampling::init(); }
};

void BM_SamplerPerThread(benchmark::State& state) {
  static LibraryStarted const started;
  HammersleySampler2d hammersley;
  hammersley.init(1234 + state.thread_index(), 64, 64);
  HierarchicalSampler2d hierarchical(HierarchicalSampler2d::HAMMERSLEY);
  hierarchical.init(4711 + state.thread_index(), 1024, 1, 0);
  Sampler2d& sampler = state.range(0) == 0 ? static_cast<Sampler2d&>(hammersley) : hierarchical;
  std::vector<GMathVec2<double>> samples(sampler.get_sample_count());
  for (auto _ : state) {
    sampler.get_all_samples(samples.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * sampler.get_sample_count());
  state.SetLabel(state.range(0) == 0 ? "hammersley" : "hierarchical-hammersley");
}
BENCHMARK(BM_SamplerPerThread)
    ->ArgName("hierarchical")
    ->Arg(0)
    ->Arg(1)
    ->Threads(1)
    ->Threads(2)
    ->UseRealTime();

}  // namespace
