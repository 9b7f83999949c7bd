// The array paths that build rays two at a time in SSE2 lanes against the
// one-ray paths, bit for bit: every clipping mode, with and without
// differentials and weights, odd and even counts (an odd last sample takes
// the one-ray builder); about 10^5 samples per generator.

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "sampling/ray_generators.h"
#include "tests/support/ray_bits.h"

namespace {

// g.get_rays over `samples` (with a weight array when `weighted`) against
// g.get_ray sample by sample: the same rays bit for bit, packed in sample
// order, the same weights and count.
::testing::AssertionResult lanes_match(SampleRayGenerator const& g,
                                       std::vector<GMathVec2<double>> const& samples,
                                       bool const& weighted) {
  unsigned int const count = static_cast<unsigned int>(samples.size());
  std::vector<GMathRay> rays(count);
  std::vector<double> weights(count);
  unsigned int const n =
      g.get_rays(samples.data(), count, rays.data(), weighted ? weights.data() : nullptr);
  unsigned int k = 0;
  for (unsigned int i = 0; i < count; ++i) {
    GMathRay ray = k < n ? rays[k] : GMathRay();  // rays without differentials keep the rest
    double weight = 0.0;
    if (!g.get_ray(samples[i], ray, &weight))
      continue;
    if (k >= n || !same_ray_bits(rays[k], ray) || (weighted && weights[k] != weight))
      return ::testing::AssertionFailure() << "sample " << i << " (ray " << k << " of " << n << ")";
    ++k;
  }
  if (k != n)
    return ::testing::AssertionFailure() << k << " rays one by one, " << n << " in the array";
  return ::testing::AssertionSuccess();
}

// With and without weights, over `samples` and all but its last one.
void expect_lanes_match(SampleRayGenerator const& g, std::vector<GMathVec2<double>> const& samples,
                        std::string const& label) {
  std::vector<GMathVec2<double>> const even(samples.begin(), samples.end() - 1);
  for (bool const weighted : {false, true}) {
    EXPECT_TRUE(lanes_match(g, samples, weighted)) << label;
    EXPECT_TRUE(lanes_match(g, even, weighted)) << label << " even";
  }
}

TEST(RayLanes, CosineArrayPathsMatchTheOneRayPath) {
  std::mt19937_64 rng(1616);
  std::vector<GMathVec2<double>> const samples = test_samples(4097, 16);
  for (int round = 0; round < 4; ++round) {
    // Kinds: 0 cone spread only, 1 incoming differentials, 2 none at all.
    for (int kind = 0; kind < 3; ++kind) {
      GMathRay incoming(GMathVec3<double>(1.0, -2.0, 0.5), random_unit(rng),
                        GMathRay::k_type_diffuse, 0.5);
      if (kind == 1) {
        GMathRayDifferential d;
        d.m_rx_origin = incoming.m_origin + random_unit(rng) * 0.01;
        d.m_ry_origin = incoming.m_origin + random_unit(rng) * 0.01;
        d.m_rx_direction = unit(incoming.m_direction + random_unit(rng) * 0.02);
        d.m_ry_direction = unit(incoming.m_direction + random_unit(rng) * 0.02);
        incoming.set_differentials(d);
      }
      CosineWeightedHemisphereRayGenerator g;
      g.init(incoming, kind == 2 ? -90.0 * (round + 1) : 45.0 * (round + 1) + 0.5, 0.25 * round,
             0.5);
      std::string const label = std::to_string(round) + "/" + std::to_string(kind);
      expect_lanes_match(g, samples, label + " plain");
      g.discard_clipped_samples(random_unit(rng));
      expect_lanes_match(g, samples, label + " discard");
      g.project_clipped_samples(random_unit(rng));
      expect_lanes_match(g, samples, label + " project");
    }
  }
}

TEST(RayLanes, SphereAndShapeArrayPathsMatchTheOneRayPath) {
  std::vector<GMathVec2<double>> const samples = test_samples(4001, 17);
  GMathMatrix4x4<double> frame;  // the unit square sheared, scaled and moved
  frame(0, 0) = 2.0;
  frame(0, 1) = 0.5;
  frame(1, 1) = 1.5;
  frame(2, 0) = 0.25;
  frame(0, 3) = 0.3;
  frame(2, 3) = 2.0;
  GMathVec3<double> const normal(0.3, 1.0, -0.2);
  for (double const reduction : {1.0, 0.5, 0.0}) {
    std::string const label = std::to_string(reduction);
    UniformSphereRayGenerator sphere(GMathRay::k_type_probe, 0.75);
    sphere.init(GMathVec3<double>(3.0, -1.0, 0.25), reduction, 1.0 - reduction);
    expect_lanes_match(sphere, samples, label + " sphere");
    GMathVec3<double> const origin(0.1, -0.4, 0.5 * reduction);
    LineRayGenerator line;
    PlaneRayGenerator plane;
    DiskRayGenerator disk;
    line.init(origin, frame, reduction);
    plane.init(origin, frame, reduction, 1.0);
    disk.init(origin, frame, 0.75, 1.0, reduction);
    for (bool const discard : {false, true}) {
      if (discard) {
        line.discard_clipped_samples(normal);
        plane.discard_clipped_samples(normal);
        disk.discard_clipped_samples(normal);
      }
      expect_lanes_match(line, samples, label + " line");
      expect_lanes_match(plane, samples, label + " plane");
      expect_lanes_match(disk, samples, label + " disk");
    }
  }
}

}  // namespace
