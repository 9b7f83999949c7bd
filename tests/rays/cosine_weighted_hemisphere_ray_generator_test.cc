#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "sampling/ray_generators.h"
#include "sampling/rays/ray_math.h"
#include "sampling/sampling.h"
#include "tests/support/ray_bits.h"

namespace {

typedef GMathVec3<double> Vec3;
typedef GMathVec2<double> Vec2;

// Column c of the generator's frame: T1, T2, D for c = 0, 1, 2.
Vec3 column(CosineWeightedHemisphereRayGenerator const& g, int c) {
  GMathMatrix4x4<double> const& m = g.get_matrix();
  return Vec3(m(0, c), m(1, c), m(2, c));
}

double distance(Vec3 const& a, Vec3 const& b) {
  return (a - b).length();
}

// An incoming ray with direction `d`, differentials spread by `spread`
// radians about it and footprint offsets of 0.01 along two directions.
GMathRay incoming_ray(Vec3 const& d, bool differentials, double const& spread = 0.05) {
  GMathRay ray(Vec3(0.5, -1.0, 2.0), d, GMathRay::k_type_diffuse, 0.25);
  if (differentials) {
    Vec3 t1, t2;
    orthonormal_basis(d, t1, t2);
    GMathRayDifferential diff;
    diff.m_rx_origin = ray.m_origin + unit(t1 + d) * 0.01;
    diff.m_ry_origin = ray.m_origin + t2 * 0.02;
    diff.m_rx_direction = d * std::cos(spread) + t1 * std::sin(spread);
    diff.m_ry_direction = d * std::cos(2.0 * spread) + t2 * std::sin(2.0 * spread);
    ray.set_differentials(diff);
  }
  return ray;
}

bool same_bits(GMathRay const& a, GMathRay const& b) {
  return std::memcmp(&a, &b, sizeof(GMathRay)) == 0;
}

}  // namespace

TEST(CosineWeightedHemisphereRayGenerator, WorkedValues) {
  Vec3 const d = unit(Vec3(1.0, 2.0, 3.0));
  CosineWeightedHemisphereRayGenerator g;
  g.init(incoming_ray(d, false), 90.0, 0.5, 1.0);
  Vec3 const t1 = column(g, 0), t2 = column(g, 1);
  EXPECT_EQ(column(g, 2), d);
  EXPECT_EQ(g.get_angle_cos(), std::cos(0.25 * k_sampling_pi));
  EXPECT_EQ(g.get_angle_sin(), std::sin(0.25 * k_sampling_pi));

  // The centre of the square is the axis; the tangents are T2 and -T1.
  GMathRay ray;
  double weight = 0.0;
  ASSERT_TRUE(g.get_ray(Vec2(0.5, 0.5), ray, &weight));
  EXPECT_EQ(weight, 1.0);
  EXPECT_EQ(ray.m_direction, d);
  EXPECT_EQ(ray.m_origin, Vec3(0.5, -1.0, 2.0));
  EXPECT_EQ(ray.m_type, GMathRay::k_type_diffuse);
  EXPECT_EQ(ray.m_time, 0.25);

  // (0.75, 0.5): r = 0.5, phi = 0, s = 0.5 sin 45 degrees.
  ASSERT_TRUE(g.get_ray(Vec2(0.75, 0.5), ray, nullptr));
  Vec3 const w = t1 * 0.353553390593 + d * 0.935414346693;
  EXPECT_TRUE(distance(ray.m_direction, w) <= 1e-11) << ray.m_direction.x;
  // Spreads: tx = h / 2 about 0.392699 along the azimuthal tangent T2, none in y.
  ASSERT_TRUE(ray.m_has_differentials);
  GMathRayDifferential const& diff = ray.m_differential;
  Vec3 const rx = ray.m_direction * 0.930802 + t2 * 0.365525;
  EXPECT_TRUE(distance(diff.m_rx_direction, rx) <= 1e-6) << diff.m_rx_direction.x;
  EXPECT_EQ(diff.m_ry_direction, ray.m_direction);
  EXPECT_EQ(diff.m_rx_origin, ray.m_origin);
  EXPECT_EQ(diff.m_ry_origin, ray.m_origin);
  EXPECT_TRUE(std::fabs(ray.m_aux[1] - 2.0 * std::sin(0.5 * std::atan(0.392699))) <= 1e-6);
  EXPECT_EQ(ray.m_aux[0], 0.0);

  // 180 degrees: the square's edge reaches the tangent plane.
  g.init(incoming_ray(d, false), 180.0, 0.0, 0.0);
  ASSERT_TRUE(g.get_ray(Vec2(1.0, 0.5), ray, nullptr));
  EXPECT_TRUE(distance(ray.m_direction, t1) <= 1e-12) << ray.m_direction.x;

  // Angles beyond 180 are clamped; negative ones act as their absolute value.
  CosineWeightedHemisphereRayGenerator wide, negative;
  wide.init(incoming_ray(d, false), 400.0, 0.0, 0.0);
  EXPECT_EQ(wide.get_angle_sin(), g.get_angle_sin());
  negative.init(incoming_ray(d, false), -90.0, 0.3, 0.3);
  CosineWeightedHemisphereRayGenerator positive;
  positive.init(incoming_ray(d, false), 90.0, 0.3, 0.3);
  GMathRay a, b;
  ASSERT_TRUE(negative.get_ray(Vec2(0.2, 0.9), a, nullptr));
  ASSERT_TRUE(positive.get_ray(Vec2(0.2, 0.9), b, nullptr));
  EXPECT_EQ(a.m_direction, b.m_direction);
  // ... but only a positive angle gives rays differentials of their own.
  EXPECT_FALSE(a.m_has_differentials);
  EXPECT_TRUE(b.m_has_differentials);
}

TEST(CosineWeightedHemisphereRayGenerator, EmptyConeKeepsTheAxisAndTheIncomingSpread) {
  Vec3 const d = unit(Vec3(-0.3, 0.1, 0.8));
  std::vector<Vec2> const samples = test_samples(200, 5);
  for (bool differentials : {false, true}) {
    CosineWeightedHemisphereRayGenerator g;
    g.init(incoming_ray(d, differentials), 0.0, 0.0, 0.0);
    for (Vec2 const& s : samples) {
      GMathRay ray;
      // Whatever the record held before is overwritten.
      ray.m_has_differentials = true;
      ray.m_aux[0] = ray.m_aux[1] = ray.m_aux_cleared[0] = ray.m_aux_cleared[1] = 9.0;
      ASSERT_TRUE(g.get_ray(s, ray, nullptr));
      ASSERT_EQ(ray.m_direction, d);
      ASSERT_EQ(ray.m_has_differentials, differentials);
      ASSERT_EQ(ray.m_aux_cleared[0] + ray.m_aux_cleared[1], 0.0);
      if (!differentials) {
        ASSERT_EQ(ray.m_aux[0] + ray.m_aux[1], 0.0);
        continue;
      }
      // The incoming spread angles (0.05 and 0.1 rad) survive, and the
      // footprint keeps the length of the incoming offsets within the frame's
      // tangent plane.
      double const ax = std::acos(dot(ray.m_differential.m_rx_direction, d));
      double const ay = std::acos(dot(ray.m_differential.m_ry_direction, d));
      ASSERT_TRUE(std::fabs(ax - 0.05) <= 1e-7 && std::fabs(ay - 0.1) <= 1e-7) << ax << " " << ay;
      ASSERT_TRUE(std::fabs(distance(ray.m_differential.m_rx_origin, ray.m_origin) -
                            0.01 / std::sqrt(2.0)) <= 1e-12);
      ASSERT_TRUE(std::fabs(distance(ray.m_differential.m_ry_origin, ray.m_origin) - 0.02) <=
                  1e-12);
    }
  }
}

// An incoming auxiliary direction perpendicular to the ray (or beyond it)
// has an infinite spread tangent; the rays then carry a quarter-turn spread
// instead of non-finite auxiliary directions.
TEST(CosineWeightedHemisphereRayGenerator, PerpendicularIncomingSpreadIsAQuarterTurn) {
  Vec3 const d = unit(Vec3(0.1, 0.2, 0.9));
  GMathRay in = incoming_ray(d, true);
  Vec3 t1, t2;
  orthonormal_basis(d, t1, t2);
  GMathRayDifferential diff = in.m_differential;
  diff.m_rx_direction = t1;
  diff.m_ry_direction = t2 * 0.6 - d * 0.8;
  in.set_differentials(diff);
  CosineWeightedHemisphereRayGenerator g;
  g.init(in, 50.0, 0.0, 0.0);
  for (Vec2 const& s : test_samples(300, 8)) {
    GMathRay ray;
    ASSERT_TRUE(g.get_ray(s, ray, nullptr));
    double const cx = dot(ray.m_differential.m_rx_direction, ray.m_direction);
    double const cy = dot(ray.m_differential.m_ry_direction, ray.m_direction);
    ASSERT_TRUE(std::fabs(cx) <= 1e-15 && std::fabs(cy) <= 1e-15) << cx << " " << cy;
    ASSERT_TRUE(std::fabs(ray.m_differential.m_rx_direction.length() - 1.0) <= 1e-15);
  }
}

// The auxiliary directions are unit vectors, turned from the ray's direction
// by atan(tx) within the plane perpendicular to the axis (azimuthal) and by
// atan(ty) towards the axis (polar); the middle ray's turn towards T1 and T2.
// Unequal spreads in x and y, with and without incoming ones.
TEST(CosineWeightedHemisphereRayGenerator, DifferentialsAreUnitAndTiltedByTheSpreads) {
  Vec3 const d = unit(Vec3(0.2, -0.7, 0.4));
  for (double angle : {20.0, 90.0, 170.0}) {
    for (bool incoming : {false, true}) {
      double const h = 0.5 * angle * k_sampling_degree;
      double const tx = 0.75 * h + (incoming ? std::tan(0.05) : 0.0);
      double const ty = 0.5 * h + (incoming ? std::tan(0.1) : 0.0);
      CosineWeightedHemisphereRayGenerator g;
      g.init(incoming_ray(d, incoming), angle, 0.25, 0.5);
      std::vector<GMathRay> rays(1, g.get_middle_ray());
      for (Vec2 const& s : test_samples(2000, 17)) {
        rays.emplace_back();
        ASSERT_TRUE(g.get_ray(s, rays.back(), nullptr));
      }
      for (GMathRay const& ray : rays) {
        Vec3 const& w = ray.m_direction;
        Vec3 const& rx = ray.m_differential.m_rx_direction;
        Vec3 const& ry = ray.m_differential.m_ry_direction;
        double const err_unit = std::fabs(rx.length() - 1.0) + std::fabs(ry.length() - 1.0);
        double const err_x = std::fabs(std::acos(std::min(1.0, dot(rx, w))) - std::atan(tx));
        double const err_y = std::fabs(std::acos(std::min(1.0, dot(ry, w))) - std::atan(ty));
        // The x tilt is perpendicular to the axis; the y tilt lies in the plane
        // of the ray and the axis, on the axis' side (T2 for the middle ray).
        Vec3 const tilt_x = rx - w * dot(rx, w);
        Vec3 const tilt_y = ry - w * dot(ry, w);
        double const err_plane = std::fabs(dot(tilt_x, d)) + std::fabs(dot(tilt_y, cross(d, w)));
        ASSERT_TRUE(err_unit <= 1e-12 && err_x <= 1e-12 && err_y <= 1e-12 && err_plane <= 1e-12)
            << "angle " << angle << " direction " << w.x << " " << w.y << ": " << err_unit << " "
            << err_x << " " << err_y << " " << err_plane;
        if (dot(w, d) < 0.999) {
          ASSERT_GT(dot(tilt_y, d), 0.0) << w.x << " " << w.y;
        }
      }
      EXPECT_GT(dot(rays[0].m_differential.m_rx_direction, column(g, 0)), 0.0);
      EXPECT_GT(dot(rays[0].m_differential.m_ry_direction, column(g, 1)), 0.0);
    }
  }
}

// Which rays discard mode keeps, and that it packs them, is the rays
// harness's; here: the mode outlives init, selecting it stores its normal,
// and disable_clipping generates every ray again.
TEST(CosineWeightedHemisphereRayGenerator, DiscardModeOutlivesInitAndStoresItsNormal) {
  Vec3 const d = unit(Vec3(0.0, 0.3, 1.0));
  std::vector<Vec2> const samples = test_samples(3000, 31);
  unsigned int const n = static_cast<unsigned int>(samples.size());
  std::vector<GMathRay> rays(n);
  CosineWeightedHemisphereRayGenerator g;
  g.init(incoming_ray(d, true), 179.0, 0.0, 0.0);
  g.discard_clipped_samples(-d);
  double weight = -1.0;
  EXPECT_FALSE(g.get_ray(samples[0], rays[0], &weight));
  EXPECT_EQ(weight, 1.0);
  g.init(incoming_ray(d, false), 90.0, 0.0, 0.0);
  EXPECT_EQ(g.get_rays(samples.data(), n, rays.data(), nullptr), 0u);
  g.disable_clipping();
  EXPECT_EQ(g.get_rays(samples.data(), n, rays.data(), nullptr), n);
  g.discard_clipped_samples(d);
  EXPECT_EQ(g.get_rays(samples.data(), n, rays.data(), nullptr), n);
  g.discard_clipped_samples(unit(Vec3(1.0, 0.0, 0.2)));
  unsigned int const kept = g.get_rays(samples.data(), n, rays.data(), nullptr);
  EXPECT_TRUE(kept > n / 4 && kept < n) << kept;
}

TEST(CosineWeightedHemisphereRayGenerator, ProjectKeepsRaysAboveThePlaneAndFlattensTheOthers) {
  Vec3 const d = unit(Vec3(0.3, -0.5, 0.8));
  Vec3 const normal = unit(Vec3(0.2, 0.7, 0.1));
  std::vector<Vec2> const samples = test_samples(4000, 41);
  unsigned int const n = static_cast<unsigned int>(samples.size());
  for (double angle : {60.0, 180.0}) {
    CosineWeightedHemisphereRayGenerator g;
    g.init(incoming_ray(d, true), angle, 0.1, 0.1);
    std::vector<GMathRay> plain = patterned_rays(n), projected = patterned_rays(n);
    g.get_rays(samples.data(), n, plain.data(), nullptr);
    g.project_clipped_samples(normal);
    ASSERT_EQ(g.get_rays(samples.data(), n, projected.data(), nullptr), n);
    unsigned int flattened = 0;
    for (unsigned int i = 0; i < n; ++i) {
      GMathRay const& ray = projected[i];
      if (dot(plain[i].m_direction, normal) >= 0.0) {
        ASSERT_TRUE(same_bits(ray, plain[i])) << "sample " << i;
        continue;
      }
      ++flattened;
      Vec3 const& w = ray.m_direction;
      Vec3 const& rx = ray.m_differential.m_rx_direction;
      Vec3 const& ry = ray.m_differential.m_ry_direction;
      double const err = std::fabs(dot(w, normal)) + std::fabs(w.length() - 1.0) +
                         std::fabs(rx.length() - 1.0) + std::fabs(ry.length() - 1.0);
      ASSERT_TRUE(err <= 1e-12) << "sample " << i << ": " << err;
      ASSERT_TRUE(dot(w, normal) >= -1e-15) << "sample " << i;
      // The flattened direction is the nearest one on the plane.
      Vec3 const below = plain[i].m_direction;
      Vec3 const expected = unit(below - normal * dot(below, normal));
      ASSERT_TRUE(distance(w, expected) <= 1e-12) << "sample " << i;
    }
    EXPECT_GT(flattened, 0u) << angle;
  }
}

#ifdef SAMPLING_CHECKS
TEST(CosineWeightedHemisphereRayGeneratorDeathTest, CallerContractsAreChecked) {
  CosineWeightedHemisphereRayGenerator g;
  GMathRay ray;
  EXPECT_DEATH(g.init(GMathRay(Vec3(), Vec3(0.0, 0.0, 2.0)), 90.0, 0.0, 0.0), "unit vector");
  g.init(ray, 90.0, 0.0, 0.0);
  EXPECT_DEATH(g.get_ray(Vec2(1.5, 0.5), ray, nullptr), "samples must lie in \\[0,1\\]\\^2");
  Vec2 const samples[2] = {{0.5, 0.5}, {0.5, -0.01}};
  GMathRay rays[2];
  EXPECT_DEATH(g.get_rays(samples, 2, rays, nullptr), "samples must lie");
  g.discard_clipped_samples(Vec3(0.0, 0.0, 1.0));
  EXPECT_DEATH(g.get_rays(samples, 2, rays, nullptr), "samples must lie");
  GMathFrustum frustum;
  EXPECT_DEATH(g.get_frustum(Vec2(0.0, 0.0), Vec2(1.0, std::nan("")), frustum), "samples must lie");
}
#endif
