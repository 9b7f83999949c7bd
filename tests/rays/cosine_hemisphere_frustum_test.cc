#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>

#include "sampling/ray_generators.h"
#include "sampling/rays/ray_math.h"
#include "tests/support/ray_bits.h"

namespace {

typedef GMathVec3<double> Vec3;
typedef GMathVec2<double> Vec2;

// Smallest value of the four planes at the tip of the ray's unit direction.
double worst_plane(GMathFrustum const& frustum, GMathRay const& ray) {
  double worst = INFINITY;
  for (unsigned int k = 0; k < 4; ++k) {
    double const e = frustum.evaluate(k, ray.m_origin + ray.m_direction);
    worst = e < worst ? e : worst;
  }
  return worst;
}

}  // namespace

// The frustum of the whole square is too narrow: the edges of the square map
// to curves that bulge beyond the planes through the corner directions, and
// the widening margin does not cover a box that large.
TEST(CosineWeightedHemisphereFrustum, WholeSquareOverflowsItsFrustum) {
  CosineWeightedHemisphereRayGenerator g;
  g.init(GMathRay(Vec3(0.0, 0.0, 0.0), Vec3(0.0, 0.0, 1.0)), 90.0, 0.0, 0.0);
  GMathFrustum frustum;
  g.get_frustum(Vec2(0.0, 0.0), Vec2(1.0, 1.0), frustum);
  double const w = std::sqrt(2.0) / 2.0;
  double const z = 0.5 + std::sqrt(6.0) / 40.0;
  Vec3 const expected[4] = {Vec3(0.0, w, z), Vec3(-w, 0.0, z), Vec3(0.0, -w, z), Vec3(w, 0.0, z)};
  for (unsigned int k = 0; k < 4; ++k) {
    EXPECT_TRUE((frustum.m_plane_normal[k] - expected[k]).length() <= 1e-12)
        << k << ": " << frustum.m_plane_normal[k].x << " " << frustum.m_plane_normal[k].y << " "
        << frustum.m_plane_normal[k].z;
    EXPECT_EQ(frustum.m_plane_distance[k], 0.0);
  }
  // The ray of the right edge's midpoint, (w, 0, w), lies outside plane 1.
  GMathRay ray;
  ASSERT_TRUE(g.get_ray(Vec2(1.0, 0.5), ray, nullptr));
  double const outside = frustum.evaluate(1, ray.m_direction);
  EXPECT_TRUE(std::fabs(outside - (-0.5 + w * z)) <= 1e-12) << outside;
  EXPECT_LT(outside, -0.09);
  // Each quadrant is still held by its own frustum.
  g.get_frustum(Vec2(0.5, 0.0), Vec2(1.0, 0.5), frustum);
  EXPECT_GE(worst_plane(frustum, ray), 0.0);
}

TEST(CosineWeightedHemisphereFrustum, DegenerateAndReversedBoxes) {
  Vec3 const d = unit(Vec3(-1.0, 0.5, 0.25));
  CosineWeightedHemisphereRayGenerator g;
  g.init(GMathRay(Vec3(3.0, 1.0, -1.0), d), 100.0, 0.0, 0.0);
  // A box of one point: four zero normals, zero distances, four planes.
  GMathFrustum frustum;
  g.get_frustum(Vec2(0.3, 0.6), Vec2(0.3, 0.6), frustum);
  ASSERT_EQ(frustum.m_plane_count, 4u);
  for (unsigned int k = 0; k < 4; ++k) {
    EXPECT_EQ(frustum.m_plane_normal[k], Vec3(0.0, 0.0, 0.0));
    EXPECT_EQ(frustum.m_plane_distance[k], 0.0);
  }
  // Exchanging one coordinate of the corners turns every normal outward;
  // exchanging both keeps them inward. (The box is large enough for its
  // middle ray to lie farther from each plane than the widening margin.)
  Vec2 const lo(0.55, 0.55), hi(0.95, 0.95), mid(0.75, 0.75);
  GMathRay ray;
  ASSERT_TRUE(g.get_ray(mid, ray, nullptr));
  GMathFrustum inward, outward, both;
  g.get_frustum(lo, hi, inward);
  g.get_frustum(Vec2(hi.x, lo.y), Vec2(lo.x, hi.y), outward);
  g.get_frustum(hi, lo, both);
  for (unsigned int k = 0; k < 4; ++k) {
    EXPECT_GT(inward.evaluate(k, ray.m_origin + ray.m_direction), 0.0) << k;
    EXPECT_LT(outward.evaluate(k, ray.m_origin + ray.m_direction), 0.0) << k;
    EXPECT_GT(both.evaluate(k, ray.m_origin + ray.m_direction), 0.0) << k;
  }
}

// The frustum ignores the clipping mode and the differentials.
TEST(CosineWeightedHemisphereFrustum, SameInEveryMode) {
  Vec3 const d = unit(Vec3(0.2, 0.2, 1.0));
  GMathRay incoming(Vec3(0.0, 1.0, 0.0), d);
  CosineWeightedHemisphereRayGenerator g;
  g.init(incoming, 45.0, 0.5, 0.5);
  GMathFrustum plain, discard, project;
  // Whole records are compared, padding included.
  for (GMathFrustum* f : {&plain, &discard, &project}) {
    std::memset(static_cast<void*>(f), 0x5A, sizeof(GMathFrustum));
  }
  Vec2 const c0(0.125, 0.25), c1(0.25, 0.375);
  g.get_frustum(c0, c1, plain);
  g.discard_clipped_samples(Vec3(1.0, 0.0, 0.0));
  g.get_frustum(c0, c1, discard);
  g.project_clipped_samples(Vec3(0.0, 1.0, 0.0));
  g.get_frustum(c0, c1, project);
  EXPECT_EQ(std::memcmp(&plain, &discard, sizeof(GMathFrustum)), 0);
  EXPECT_EQ(std::memcmp(&plain, &project, sizeof(GMathFrustum)), 0);
}
