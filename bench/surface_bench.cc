// Surface scattering over a ~10K-triangle heightfield: white and blue noise
// by count (with and without world-space evaluation) against the store bound
// of the descriptors they write, and the dart test on its own with the
// octree against its plain reference, a scan of every accepted point (same
// points kept, checked before timing). Shared helper: bench_support.h.

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "bench/bench_support.h"
#include "platform/geometry/geometry_mesh.h"
#include "platform/octree/octree.h"
#include "platform/random/grandom_mt.h"
#include "sampling/sampling.h"

namespace {

// 71 x 71 cells of two triangles each (10082 triangles) over [0, 10]^2.
GeometryMesh const& terrain() {
  static GeometryMesh const mesh = [] {
    GeometryMesh m;
    unsigned int const n = 71;
    for (unsigned int j = 0; j <= n; ++j) {
      for (unsigned int i = 0; i <= n; ++i) {
        double const x = 10.0 * i / n, y = 10.0 * j / n;
        m.add_vertex(GMathVec3<double>(x, y, 0.5 * std::sin(x) * std::cos(0.8 * y)));
      }
    }
    for (unsigned int j = 0; j < n; ++j) {
      for (unsigned int i = 0; i < n; ++i) {
        unsigned int const a = j * (n + 1) + i;
        m.add_triangle(a, a + 1, a + n + 2, 0);
        m.add_triangle(a, a + n + 2, a + n + 1, 0);
      }
    }
    return m;
  }();
  return mesh;
}

unsigned int const k_all = 0xFFFFFFFFu;

// White (blue) noise by count: `evaluated` adds positions and surface
// vectors. Items are placed points; the store bound writes as many
// descriptors (and three vectors each when evaluated).
void surface_noise(benchmark::State& state, bool const& blue, bool const& evaluated) {
  unsigned int const count = static_cast<unsigned int>(state.range(0));
  CoreArray<GeometryPrimitiveSampleDescriptor> descriptors;
  CoreArray<GMathVec3<double>> positions, a, b;
  double spacing = 0.0;
  auto const scatter = [&] {
    if (blue && evaluated)
      Sampling::surface_blue_noise_count(CtxEval(), terrain(), GMathMatrix4x4<double>(), count,
                                         descriptors, positions, a, b, spacing, k_all);
    else if (blue)
      Sampling::surface_blue_noise_count(CtxEval(), terrain(), GMathMatrix4x4<double>(), count,
                                         descriptors, spacing, k_all);
    else if (evaluated)
      Sampling::surface_random_noise_count(CtxEval(), terrain(), GMathMatrix4x4<double>(), count,
                                           descriptors, positions, a, b, spacing, k_all);
    else
      Sampling::surface_random_noise_count(CtxEval(), terrain(), GMathMatrix4x4<double>(), count,
                                           descriptors, spacing, k_all);
  };
  scatter();
  unsigned int const placed = descriptors.count();
  std::vector<GeometryPrimitiveSampleDescriptor> store(placed);
  std::vector<GMathVec3<double>> store_vectors(evaluated ? 3 * placed : 0);
  bench::run(state, placed, scatter, std::function<void()>(), [&] {
    bench::store_records(store.data(), placed, GeometryPrimitiveSampleDescriptor{1, 0.25f, 0.5f});
    bench::store_records(store_vectors.data(), store_vectors.size(), GMathVec3<double>());
  });
  state.counters["placed"] = placed;
}

void BM_SurfaceRandomNoise(benchmark::State& state) {
  surface_noise(state, false, false);
}
void BM_SurfaceRandomNoiseEvaluated(benchmark::State& state) {
  surface_noise(state, false, true);
}
void BM_SurfaceBlueNoise(benchmark::State& state) {
  surface_noise(state, true, false);
}
void BM_SurfaceBlueNoiseEvaluated(benchmark::State& state) {
  surface_noise(state, true, true);
}

// The dart test alone: candidates are 4 x count white-noise points of the
// terrain; each is kept when no kept point lies closer than the blue-noise
// spacing for `count`. Both variants keep the same points.
struct Darts {
  std::vector<GMathVec3<double>> m_candidates;
  double m_radius;
  GMathBbox3<double> m_box;
};

Darts const& darts(unsigned int const& count) {
  static std::vector<std::pair<unsigned int, Darts>> cache;
  for (auto const& entry : cache) {
    if (entry.first == count)
      return entry.second;
  }
  CoreArray<GeometryPrimitiveSampleDescriptor> descriptors;
  CoreArray<GMathVec3<double>> positions, a, b;
  double spacing = 0.0;
  Sampling::surface_random_noise_count(CtxEval(), terrain(), GMathMatrix4x4<double>(), 4 * count,
                                       descriptors, positions, a, b, spacing, k_all);
  Darts d;
  // Half the spacing of `count`, which is twice the spacing of 4 count.
  d.m_radius = spacing;
  for (GMathVec3<double> const& p : positions) {
    d.m_candidates.push_back(p);
    d.m_box.add(p);
  }
  cache.emplace_back(count, d);
  return cache.back().second;
}

// Kept points of the dart test with the octree, and with the plain scan of
// every kept point.
std::vector<GMathVec3<double>> darts_octree(Darts const& d) {
  std::vector<GMathVec3<double>> kept;
  Octree tree;
  tree.create(d.m_box, 6);
  for (GMathVec3<double> const& p : d.m_candidates) {
    if (!tree.overlap(p, d.m_radius)) {
      tree.add(p, d.m_radius);
      kept.push_back(p);
    }
  }
  return kept;
}

std::vector<GMathVec3<double>> darts_scan(Darts const& d) {
  std::vector<GMathVec3<double>> accepted;
  double const reach = d.m_radius + d.m_radius;
  for (GMathVec3<double> const& p : d.m_candidates) {
    bool hit = false;
    for (GMathVec3<double> const& q : accepted) {
      double const dx = p.x - q.x, dy = p.y - q.y, dz = p.z - q.z;
      if (dx * dx + dy * dy + dz * dz < reach * reach) {
        hit = true;
        break;
      }
    }
    if (!hit)
      accepted.push_back(p);
  }
  return accepted;
}

void BM_SurfaceDarts(benchmark::State& state) {
  Darts const& d = darts(static_cast<unsigned int>(state.range(0)));
  std::vector<GMathVec3<double>> const kept = darts_octree(d);
  if (!bench::check_same(state, kept, darts_scan(d), "octree and scan kept points"))
    return;
  std::vector<GMathVec3<double>> store(kept.size());
  bench::run(
      state, static_cast<double>(d.m_candidates.size()),
      [&] { benchmark::DoNotOptimize(darts_octree(d).data()); },
      [&] { benchmark::DoNotOptimize(darts_scan(d).data()); },
      [&] { bench::store_records(store.data(), store.size(), GMathVec3<double>(1.0, 2.0, 3.0)); });
  state.counters["kept"] = static_cast<double>(kept.size());
}

}  // namespace

BENCHMARK(BM_SurfaceRandomNoise)->Arg(1000)->Arg(100000);
BENCHMARK(BM_SurfaceRandomNoiseEvaluated)->Arg(1000)->Arg(100000);
BENCHMARK(BM_SurfaceBlueNoise)->Arg(1000)->Arg(30000);
BENCHMARK(BM_SurfaceBlueNoiseEvaluated)->Arg(1000)->Arg(30000);
BENCHMARK(BM_SurfaceDarts)->Arg(1000)->Arg(10000);
