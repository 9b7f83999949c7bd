// The cosine generator: its cone's edges, its differentials, its clipping
// modes and its packet frustum. (The distribution is the densities test's;
// weights, packing, the array paths and frusta holding quadrant and grid
// boxes are the rays harness's.)
#include <gtest/gtest.h>

#include <cmath>

#include "sampling/angles.h"
#include "sampling/ray_generators.h"
#include "sampling/rays/ray_math.h"
#include "tests/support/ray_bits.h"

namespace {

typedef GMathVec3<double> Vec3;
typedef GMathVec2<double> Vec2;

// An incoming ray along `d` whose auxiliary rays are turned by 0.05 and
// 0.1 rad and whose footprint offsets are 0.01 and 0.02 long.
GMathRay incoming_ray(Vec3 const& d, bool differentials) {
  GMathRay ray(Vec3(0.5, -1.0, 2.0), d, GMathRay::k_type_diffuse, 0.25);
  if (differentials) {
    Vec3 t1, t2;
    orthonormal_basis(d, t1, t2);
    GMathRayDifferential diff;
    diff.m_rx_origin = ray.m_origin + unit(t1 + d) * 0.01;
    diff.m_ry_origin = ray.m_origin + t2 * 0.02;
    diff.m_rx_direction = d * std::cos(0.05) + t1 * std::sin(0.05);
    diff.m_ry_direction = d * std::cos(0.1) + t2 * std::sin(0.1);
    ray.set_differentials(diff);
  }
  return ray;
}

GMathRay ray_of(SampleRayGenerator const& g, Vec2 const& s) {
  GMathRay ray = patterned_rays(1)[0];
  EXPECT_TRUE(g.get_ray(s, ray, nullptr));
  return ray;
}

}  // namespace

// The cone's documented range: the centre is the axis, 180 degrees reaches
// the tangent plane at the square's edge (u = 1 on T1 of the frame T1, T2,
// D), larger angles clamp to 180 and negative ones act as their absolute
// value. Discarding outlives init; disable_clipping generates every ray
// again. (Differentials of negative angles and the clipping modes are the
// rays harness's.)
TEST(CosineWeightedHemisphereRayGenerator, ConeEdgesAngleRangeAndModes) {
  Vec3 const d = unit(Vec3(1.0, 2.0, 3.0));
  Vec3 t1, t2;
  orthonormal_basis(d, t1, t2);
  CosineWeightedHemisphereRayGenerator g, wide, negative, positive;
  g.init(incoming_ray(d, false), 180.0, 0.0, 0.0);
  EXPECT_EQ(ray_of(g, Vec2(0.5, 0.5)).m_direction, d);
  EXPECT_TRUE((ray_of(g, Vec2(1.0, 0.5)).m_direction - t1).length() <= 1e-12);
  wide.init(incoming_ray(d, false), 400.0, 0.0, 0.0);
  EXPECT_EQ(wide.get_angle_sin(), g.get_angle_sin());
  EXPECT_EQ(g.get_angle_sin(), std::sin(0.5 * k_sampling_pi));
  // Re-aimed through a run of angles (repeats included), a generator is a
  // fresh one of the last angle.
  for (double const angle : {90.0, 90.0, 0.0, 30.0, -30.0, 1e-9, 400.0}) {
    CosineWeightedHemisphereRayGenerator fresh;
    fresh.init(incoming_ray(d, false), angle, 0.0, 0.0);
    wide.init(incoming_ray(d, false), angle, 0.0, 0.0);
    EXPECT_TRUE(wide.get_angle_cos() == fresh.get_angle_cos() &&
                ray_of(wide, Vec2(0.2, 0.9)).m_direction ==
                    ray_of(fresh, Vec2(0.2, 0.9)).m_direction);
    EXPECT_EQ(wide.get_angle_sin() > 0.0, angle != 0.0) << angle;  // even 1e-9 degrees opens
  }
  negative.init(incoming_ray(d, false), -90.0, 0.3, 0.3);
  positive.init(incoming_ray(d, false), 90.0, 0.3, 0.3);
  EXPECT_EQ(ray_of(negative, Vec2(0.2, 0.9)).m_direction,
            ray_of(positive, Vec2(0.2, 0.9)).m_direction);
  std::vector<Vec2> const samples = test_samples(500, 41);
  std::vector<GMathRay> rays(samples.size());
  g.discard_clipped_samples(-d);
  g.init(incoming_ray(d, false), 90.0, 0.0, 0.0);
  EXPECT_EQ(g.get_rays(samples.data(), 500, rays.data(), nullptr), 0u);
  g.disable_clipping();
  EXPECT_EQ(g.get_rays(samples.data(), 500, rays.data(), nullptr), 500u);
  // The clip test is strict: the axis itself lies in a plane through it.
  g.init(GMathRay(Vec3(), Vec3(0.0, 0.0, 1.0)), 90.0, 0.0, 0.0);
  g.discard_clipped_samples(Vec3(1.0, 0.0, 0.0));
  Vec2 const axis[3] = {{0.5, 0.5}, {0.5, 0.5}, {0.5, 0.5}};
  EXPECT_TRUE(!g.get_ray(axis[0], rays[0], nullptr) &&
              g.get_rays(axis, 3, rays.data(), nullptr) == 0u);
  // A cone of angle 0 is a single direction: density 0 even on its axis, not
  // the infinity of 1 / sin^2 0.
  g.init(GMathRay(Vec3(), Vec3(0.0, 0.0, 1.0)), 0.0, 0.0, 0.0);
  EXPECT_EQ(g.pdf(Vec3(0.0, 0.0, 1.0)), 0.0);
}

// The middle ray's auxiliary directions turn towards T1 and T2, by the
// spreads the rays get (the rays harness's, for every cone and incoming
// spread, quarter turns included); its auxiliary origins move along T1 and
// T2 by the lengths of the incoming offsets within their plane.
TEST(CosineWeightedHemisphereRayGenerator, MiddleRay) {
  Vec3 const d = unit(Vec3(0.2, -0.7, 0.4));
  Vec3 t1, t2;
  orthonormal_basis(d, t1, t2);
  CosineWeightedHemisphereRayGenerator g;
  g.init(incoming_ray(d, true), 90.0, 0.25, 0.5);
  GMathRay const& middle = g.get_middle_ray();
  double const tx = 0.75 * 0.25 * k_sampling_pi + std::tan(0.05);
  double const ty = 0.5 * 0.25 * k_sampling_pi + std::tan(0.1);
  Vec3 const rx = (d + t1 * tx) * (1.0 / std::sqrt(1.0 + tx * tx));
  Vec3 const ry = (d + t2 * ty) * (1.0 / std::sqrt(1.0 + ty * ty));
  GMathRayDifferential const& aux = middle.m_differential;
  EXPECT_TRUE((aux.m_rx_direction - rx).length() <= 1e-12 &&
              (aux.m_ry_direction - ry).length() <= 1e-12 && middle.m_direction == d);
  EXPECT_TRUE((aux.m_rx_origin - (middle.m_origin + t1 * (0.01 / std::sqrt(2.0)))).length() <=
                  1e-12 &&
              (aux.m_ry_origin - (middle.m_origin + t2 * 0.02)).length() <= 1e-12);
}

// The frustum of the whole square is too narrow: the square's edges map to
// curves that bulge beyond the planes through the corner directions, and
// the widening (0.025 of the corners' sum) does not cover a box that large
// (quadrants, and boxes of one point, are the rays harness's). Exchanging one
// coordinate of the corners turns every normal outward, both keeps them in.
TEST(CosineWeightedHemisphereFrustum, WideningAndReversedBoxes) {
  CosineWeightedHemisphereRayGenerator g;
  g.init(GMathRay(Vec3(0.0, 0.0, 0.0), Vec3(0.0, 0.0, 1.0)), 90.0, 0.0, 0.0);
  GMathFrustum frustum;
  g.get_frustum(Vec2(0.0, 0.0), Vec2(1.0, 1.0), frustum);
  double const w = std::sqrt(2.0) / 2.0, z = 0.5 + std::sqrt(6.0) / 40.0;
  Vec3 const expected[4] = {Vec3(0.0, w, z), Vec3(-w, 0.0, z), Vec3(0.0, -w, z), Vec3(w, 0.0, z)};
  for (unsigned int k = 0; k < 4; ++k)
    EXPECT_TRUE((frustum.m_plane_normal[k] - expected[k]).length() <= 1e-12) << k;
  g.init(GMathRay(Vec3(3.0, 1.0, -1.0), unit(Vec3(-1.0, 0.5, 0.25))), 100.0, 0.0, 0.0);
  Vec2 const lo(0.55, 0.55), hi(0.95, 0.95);
  GMathRay const mid = ray_of(g, Vec2(0.75, 0.75));
  GMathFrustum inward, outward, both;
  g.get_frustum(lo, hi, inward);
  g.get_frustum(Vec2(hi.x, lo.y), Vec2(lo.x, hi.y), outward);
  g.get_frustum(hi, lo, both);
  Vec3 const x = mid.m_origin + mid.m_direction;
  for (unsigned int k = 0; k < 4; ++k) {
    EXPECT_TRUE(inward.evaluate(k, x) > 0.0 && outward.evaluate(k, x) < 0.0 &&
                both.evaluate(k, x) > 0.0)
        << k;
  }
}
