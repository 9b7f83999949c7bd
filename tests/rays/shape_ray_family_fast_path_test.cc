// The line, plane and disk generators' array paths (which read the record
// from a local copy) against their one-ray path, which reads the record
// itself: rays, weights and the packing of discard mode, over a million
// random samples spread over every mode, weight option and spread.

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "tests/rays/shape_ray_test_support.h"
#include "tests/support/ray_bits.h"

namespace {

TEST(ShapeRayFamilyFastPath, ArrayPathsMatchTheOneRayPathOnAMillionSamples) {
  std::mt19937_64 rng(31);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  GMathVec3<double> const origin(0.4, -0.3, 5.0);
  GMathMatrix4x4<double> const frame = test_frame();
  PlacedShapes shapes;
  std::vector<GMathVec2<double>> samples(2048);
  for (unsigned int round = 0; round < 512; ++round) {
    // Reductions of 1 switch the differentials off; a clip plane through
    // the origin and near the shape's centre keeps part of the samples.
    double const rx = round % 4 == 0 ? 1.0 : unit(rng);
    double const ry = round % 4 == 0 ? 1.0 : unit(rng);
    shapes.init(origin, frame, 0.5 + unit(rng), rx, ry);
    bool const discard = round % 3 != 0;
    bool const weighted = round % 2 == 0;
    if (discard) {
      GMathVec3<double> const centre(frame(0, 3), frame(1, 3), frame(2, 3));
      GMathVec3<double> const tilt(unit(rng) - 0.5, unit(rng) - 0.5, unit(rng) - 0.5);
      shapes.discard_clipped_samples(cross(centre - origin, tilt));
    } else {
      shapes.disable_clipping();
    }
    SampleRayGenerator const& g = *shapes.all[round % 3];
    for (GMathVec2<double>& s : samples)
      s = GMathVec2<double>(unit(rng), unit(rng));
    ASSERT_TRUE(array_path_matches_one_ray_path(g, samples, weighted))
        << shapes.name(&g) << " round " << round;
  }
}

}  // namespace
