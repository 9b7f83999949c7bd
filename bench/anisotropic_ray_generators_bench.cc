// get_rays of the anisotropic reflection and refraction generators for 1024
// samples, isotropic and anisotropic exponents, with and without incoming
// differentials and weights, against the store bound of the rays and weights
// written (shared helper, bench_support.h). No plain reference here: the lobe
// sampling is checked against its formulas by the tests.

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "bench/bench_support.h"
#include "platform/geometry/geometry_differential.h"
#include "sampling/ray_generators.h"

namespace {

constexpr unsigned int k_batch = 1024;

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

// range(0) selects the exponents, (20, 20) or (100, 8); range(1) incoming
// differentials; range(2) the weight array. `init` prepares the generator
// from the scene and exponents.
template <typename G, typename Init>
void run_generator(benchmark::State& state, Init const& init) {
  Scene const s = make_scene(state.range(1) != 0);
  bool const anisotropic = state.range(0) != 0;
  G generator;
  init(generator, s, anisotropic ? 100.0f : 20.0f, anisotropic ? 8.0f : 20.0f);
  static std::vector<GMathVec2<double>> const samples = bench::unit_samples(k_batch, 99);
  bench::run_generator(state, generator, samples, state.range(2) != 0, bench::RaysReference());
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

BENCHMARK(BM_AnisotropicReflectionGetRays)
    ->ArgNames({"aniso", "diff", "weights"})
    ->ArgsProduct({{0, 1}, {0, 1}, {0, 1}});
BENCHMARK(BM_AnisotropicRefractionGetRays)
    ->ArgNames({"aniso", "diff", "weights"})
    ->ArgsProduct({{0, 1}, {0, 1}, {0, 1}});
