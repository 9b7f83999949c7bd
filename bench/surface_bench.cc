// Surface scattering over a ~10K-triangle heightfield: white and blue noise
// by count, and the dart test on its own with the octree against a plain
// scan of every accepted point.

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

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

void BM_SurfaceRandomNoise(benchmark::State& state) {
  unsigned int const count = static_cast<unsigned int>(state.range(0));
  CoreArray<GeometryPrimitiveSampleDescriptor> descriptors;
  double spacing = 0.0;
  for (auto _ : state) {
    Sampling::surface_random_noise_count(CtxEval(), terrain(), GMathMatrix4x4<double>(), count,
                                         descriptors, spacing, k_all);
    benchmark::DoNotOptimize(descriptors.data());
  }
  state.SetItemsProcessed(state.iterations() * count);
}

void BM_SurfaceRandomNoiseEvaluated(benchmark::State& state) {
  unsigned int const count = static_cast<unsigned int>(state.range(0));
  CoreArray<GeometryPrimitiveSampleDescriptor> descriptors;
  CoreArray<GMathVec3<double>> positions, a, b;
  double spacing = 0.0;
  for (auto _ : state) {
    Sampling::surface_random_noise_count(CtxEval(), terrain(), GMathMatrix4x4<double>(), count,
                                         descriptors, positions, a, b, spacing, k_all);
    benchmark::DoNotOptimize(positions.data());
  }
  state.SetItemsProcessed(state.iterations() * count);
}

// Reference for the white noise: the draws and the descriptor stores alone
// (two generator outputs per point, written to an array of the same size),
// without the area table.
void BM_SurfaceRandomNoiseDrawsOnly(benchmark::State& state) {
  unsigned int const count = static_cast<unsigned int>(state.range(0));
  CoreArray<GeometryPrimitiveSampleDescriptor> descriptors;
  for (auto _ : state) {
    GRandomMt rng(1);
    descriptors.resize(count);
    for (unsigned int i = 0; i < count; ++i) {
      double const u = rng.genrand_int32() * 2.3283064370807974e-10;
      double const v = rng.genrand_int32() * 2.3283064370807974e-10;
      descriptors[i] =
          GeometryPrimitiveSampleDescriptor{i, static_cast<float>(u), static_cast<float>(v)};
    }
    benchmark::DoNotOptimize(descriptors.data());
  }
  state.SetItemsProcessed(state.iterations() * count);
}

void BM_SurfaceBlueNoise(benchmark::State& state) {
  unsigned int const count = static_cast<unsigned int>(state.range(0));
  CoreArray<GeometryPrimitiveSampleDescriptor> descriptors;
  double spacing = 0.0;
  for (auto _ : state) {
    Sampling::surface_blue_noise_count(CtxEval(), terrain(), GMathMatrix4x4<double>(), count,
                                       descriptors, spacing, k_all);
    benchmark::DoNotOptimize(descriptors.data());
  }
  state.SetItemsProcessed(state.iterations() * descriptors.count());
  state.counters["placed"] = static_cast<double>(descriptors.count());
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

void BM_SurfaceDartsOctree(benchmark::State& state) {
  Darts const& d = darts(static_cast<unsigned int>(state.range(0)));
  std::size_t kept = 0;
  for (auto _ : state) {
    Octree tree;
    tree.create(d.m_box, 6);
    kept = 0;
    for (GMathVec3<double> const& p : d.m_candidates) {
      if (!tree.overlap(p, d.m_radius)) {
        tree.add(p, d.m_radius);
        ++kept;
      }
    }
    benchmark::DoNotOptimize(kept);
  }
  state.SetItemsProcessed(state.iterations() * d.m_candidates.size());
  state.counters["kept"] = static_cast<double>(kept);
}

// Plain reference: the collision predicate against every kept point.
void BM_SurfaceDartsBruteForce(benchmark::State& state) {
  Darts const& d = darts(static_cast<unsigned int>(state.range(0)));
  std::size_t kept = 0;
  for (auto _ : state) {
    std::vector<GMathVec3<double>> accepted;
    for (GMathVec3<double> const& p : d.m_candidates) {
      bool hit = false;
      double const reach = d.m_radius + d.m_radius;
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
    kept = accepted.size();
    benchmark::DoNotOptimize(kept);
  }
  state.SetItemsProcessed(state.iterations() * d.m_candidates.size());
  state.counters["kept"] = static_cast<double>(kept);
}

}  // namespace

BENCHMARK(BM_SurfaceRandomNoise)->Arg(1000)->Arg(10000)->Arg(100000);
BENCHMARK(BM_SurfaceRandomNoiseEvaluated)->Arg(1000)->Arg(10000)->Arg(100000);
BENCHMARK(BM_SurfaceRandomNoiseDrawsOnly)->Arg(1000)->Arg(10000)->Arg(100000);
BENCHMARK(BM_SurfaceBlueNoise)->Arg(1000)->Arg(10000)->Arg(30000);
BENCHMARK(BM_SurfaceDartsOctree)->Arg(1000)->Arg(10000);
BENCHMARK(BM_SurfaceDartsBruteForce)->Arg(1000)->Arg(10000);
