// The cosine-weighted cone's array paths (which read the generator from a
// local copy) against its one-ray path, which reads the record itself, in
// every clipping mode, with and without differentials and weights, over a
// million random samples.

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "sampling/ray_generators.h"
#include "tests/support/ray_bits.h"

namespace {

TEST(CosineWeightedHemisphereFastPath, ArrayPathsMatchTheOneRayPathOnAMillionSamples) {
  std::mt19937_64 rng(404);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  std::vector<GMathVec2<double>> samples(2048);
  for (unsigned int round = 0; round < 512; ++round) {
    GMathVec3<double> d(unit(rng) - 0.5, unit(rng) - 0.5, unit(rng) - 0.5);
    d = d * (1.0 / d.length());
    GMathRay incoming(GMathVec3<double>(unit(rng), unit(rng), unit(rng)), d,
                      GMathRay::k_type_diffuse, unit(rng));
    if (round % 2 == 0) {
      GMathRayDifferential diff;
      diff.m_rx_origin = incoming.m_origin + GMathVec3<double>(0.01, 0.0, 0.0);
      diff.m_ry_origin = incoming.m_origin + GMathVec3<double>(0.0, 0.01, 0.0);
      diff.m_rx_direction = d + GMathVec3<double>(0.01, 0.0, 0.0);
      diff.m_ry_direction = d + GMathVec3<double>(0.0, 0.0, 0.01);
      incoming.set_differentials(diff);
    }
    // Angles up to beyond 180 degrees; negative ones without incoming
    // differentials give rays without differentials.
    // Every fifth round takes the closed ends 0 and 180 exactly.
    double angle = (round % 3 == 0 ? -1.0 : 1.0) * 200.0 * unit(rng);
    if (round % 5 == 0)
      angle = round % 10 == 0 ? 0.0 : 180.0;
    CosineWeightedHemisphereRayGenerator generator;
    generator.init(incoming, angle, unit(rng), unit(rng));
    GMathVec3<double> normal(unit(rng) - 0.5, unit(rng) - 0.5, unit(rng) - 0.5);
    unsigned int const mode = round % 3;
    if (mode == 1)
      generator.discard_clipped_samples(normal);
    if (mode == 2)
      generator.project_clipped_samples(normal);
    bool const weighted = round % 4 < 2;
    for (GMathVec2<double>& s : samples)
      s = GMathVec2<double>(unit(rng), unit(rng));
    // The concentric map's special points: centre, corners, edge midpoints.
    for (unsigned int i = 0; i < 25; ++i)
      samples[i] = GMathVec2<double>(0.25 * (i % 5), 0.25 * (i / 5));
    ASSERT_TRUE(array_path_matches_one_ray_path(generator, samples, weighted))
        << "mode " << mode << " round " << round;
  }
}

}  // namespace
