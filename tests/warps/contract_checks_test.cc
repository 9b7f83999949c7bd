// Caller contracts of the warps that checked builds report: samples in
// [0,1]^2, radius scales in [0,1], unit directions for the densities and
// inverses. The square's edges are inside.
#include <gtest/gtest.h>

#include <cmath>

#include "sampling/sampling.h"

#ifdef SAMPLING_CHECKS
TEST(WarpContractsDeathTest, SamplesAndRadiusScalesOutsideTheUnitRange) {
  GMathVec3<double> d, t, b;
  double radius, angle;
  EXPECT_DEATH(Sampling::to_unit_disk(1.5, 0.5, radius, angle),
               "Sampling::to_unit_disk: sample \\(u, v\\) outside");
  EXPECT_DEATH(Sampling::disk_concentric(0.5, -0.25, d), "Sampling::disk_concentric: sample");
  EXPECT_DEATH(Sampling::disk_concentric(0.5, std::nan(""), d, t, b), "disk_concentric: sample");
  EXPECT_DEATH(Sampling::hemisphere_uniform(-1e-9, 0.5, d, 1.0), "hemisphere_uniform: sample");
  EXPECT_DEATH(Sampling::hemisphere_uniform(0.5, 0.5, d, t, b, 1.5),
               "Sampling::hemisphere_uniform: radius_scale outside \\[0,1\\]");
  EXPECT_DEATH(Sampling::hemisphere_uniform_concentric(0.5, 2.0, d, 1.0),
               "hemisphere_uniform_concentric: sample");
  EXPECT_DEATH(Sampling::hemisphere_uniform_concentric(0.5, 0.5, d, t, b, -0.5),
               "hemisphere_uniform_concentric: radius_scale");
  EXPECT_DEATH(Sampling::hemisphere_cosine(0.5, 0.5, d, 1.0 + 1e-12), "hemisphere_cosine: radius");
  EXPECT_DEATH(Sampling::hemisphere_cosine(3.0, 0.5, d, t, b, 1.0), "hemisphere_cosine: sample");
  EXPECT_DEATH(Sampling::hemisphere_cosine_concentric(0.5, 0.5, d, 2.0),
               "hemisphere_cosine_concentric: radius_scale");
  EXPECT_DEATH(Sampling::hemisphere_cosine_concentric(0.5, -1.0, d, t, b, 1.0),
               "hemisphere_cosine_concentric: sample");
  EXPECT_DEATH(Sampling::sphere_cosine(1.25, 0.5, d), "Sampling::sphere_cosine: sample");
  EXPECT_DEATH(Sampling::sphere_cosine(0.5, -0.5, d, t, b), "sphere_cosine: sample");
  // Densities and inverses read a direction as a unit vector.
  double u, v;
  EXPECT_DEATH(Sampling::hemisphere_cosine_pdf(GMathVec3<double>(0, 0, 2), 1.0),
               "Sampling::hemisphere_cosine_pdf: direction not of unit length");
  EXPECT_DEATH(Sampling::sphere_cosine_inverse(GMathVec3<double>(0, 0.5, 0), u, v),
               "sphere_cosine_inverse: direction not of unit length");
  EXPECT_DEATH(Sampling::hemisphere_uniform_inverse(GMathVec3<double>(0, 0, 1), 1.5, u, v),
               "hemisphere_uniform_inverse: radius_scale outside");
  EXPECT_DEATH(Sampling::to_unit_disk_inverse(0.5, 7.0, u, v),
               "to_unit_disk_inverse: angle outside \\[-pi, 2pi\\)");
  // The edges and the ends of the radius scale are in contract.
  Sampling::to_unit_disk(0.0, 1.0, radius, angle);
  Sampling::hemisphere_cosine_concentric(1.0, 0.0, d, t, b, 0.0);
  Sampling::hemisphere_uniform(1.0, 1.0, d, 1.0);
  // sphere_uniform keeps the formulas' result outside the square.
  Sampling::sphere_uniform(1.5, 0.5, d);
  EXPECT_TRUE(std::isnan(d.x));
}
#endif
