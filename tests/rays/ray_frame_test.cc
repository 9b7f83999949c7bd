#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>

#include "platform/math/gmath_ray.h"
#include "sampling/rays/ray_math.h"
#include "tests/support/ray_bits.h"

TEST(GMathBasicRay, SetDirectionDerivesInverseSignsAndMajorAxis) {
  std::mt19937_64 rng(11);
  std::uniform_real_distribution<double> any(-2.0, 2.0);
  for (int i = 0; i < 2000; ++i) {
    GMathVec3<double> d(any(rng), any(rng), any(rng));
    // Exact zeros of either sign and ties between axes.
    if (i % 7 == 0)
      d.y = (i % 14 == 0) ? 0.0 : -0.0;
    if (i % 11 == 0)
      d.z = -d.x;
    GMathBasicRay ray;
    ray.set_direction(d);
    ASSERT_EQ(std::memcmp(&ray.m_direction, &d, sizeof d), 0);
    for (int k = 0; k < 3; ++k) {
      double const inverse = 1.0 / d[k];
      ASSERT_EQ(std::memcmp(&ray.m_inverse_direction[k], &inverse, sizeof inverse), 0) << i;
      // The sign flag agrees with the infinity a zero component produces.
      ASSERT_EQ(ray.m_sign[k], std::signbit(ray.m_inverse_direction[k]) ? 1u : 0u) << i;
    }
    unsigned int const m = ray.m_major_axis;
    ASSERT_LT(m, 3u);
    for (unsigned int k = 0; k < 3; ++k) {
      ASSERT_GE(std::fabs(d[m]), std::fabs(d[k])) << i;
      if (k < m) {
        ASSERT_GT(std::fabs(d[m]), std::fabs(d[k])) << "ties go to the lower axis";
      }
    }
  }
}

TEST(GMathRay, SetDifferentialsCopiesAndSummarisesTheCone) {
  // The tracer reads the type as a number.
  EXPECT_EQ(
      GMathRay::k_type_reflection * 100 + GMathRay::k_type_refraction * 10 + GMathRay::k_type_probe,
      345);
  GMathRay ray(GMathVec3<double>(1.0, 2.0, 3.0), GMathVec3<double>(0.0, 0.0, 1.0));
  ray.m_aux_cleared[0] = 7.0;
  GMathRayDifferential d;
  d.m_rx_origin = GMathVec3<double>(1.5, 2.0, 3.0);  // 0.5 away
  d.m_ry_origin = GMathVec3<double>(1.0, 2.0, 3.0);  // at the origin
  d.m_rx_direction = GMathVec3<double>(0.6, 0.0, 0.8);
  d.m_ry_direction = GMathVec3<double>(0.0, 0.0, 1.0);
  ray.set_differentials(d);
  EXPECT_TRUE(ray.m_has_differentials);
  EXPECT_EQ(std::memcmp(&ray.m_differential, &d, sizeof d), 0);
  EXPECT_EQ(ray.m_aux[0], 0.5);
  EXPECT_TRUE(std::fabs(ray.m_aux[1] - std::sqrt(0.4)) <= 1e-15) << ray.m_aux[1];
  EXPECT_EQ(ray.m_aux_cleared[0], 7.0) << "set_differentials leaves the tracer's values";
  // The larger of the two distances, whichever auxiliary ray it belongs to.
  std::swap(d.m_rx_origin, d.m_ry_origin);
  std::swap(d.m_rx_direction, d.m_ry_direction);
  GMathRay swapped(ray.m_origin, ray.m_direction);
  swapped.set_differentials(d);
  EXPECT_EQ(swapped.m_aux[0], ray.m_aux[0]);
  EXPECT_EQ(swapped.m_aux[1], ray.m_aux[1]);
}

TEST(OrthonormalBasis, FixedAxesAndRightHandedFrames) {
  struct Case {
    GMathVec3<double> n, t1, t2;
  } const cases[] = {
      {{0, 1, 0}, {0, 0, 1}, {1, 0, 0}},
      {{0, -1, 0}, {1, 0, 0}, {0, 0, 1}},
      {{0, 0, 1}, {1, 0, 0}, {0, 1, 0}},
  };
  for (Case const& c : cases) {
    GMathVec3<double> t1, t2;
    orthonormal_basis(c.n, t1, t2);
    EXPECT_EQ(t1, c.t1) << c.n.x << " " << c.n.y << " " << c.n.z;
    EXPECT_EQ(t2, c.t2) << c.n.x << " " << c.n.y << " " << c.n.z;
  }
  std::mt19937_64 rng(3);
  for (int i = 0; i < 5000; ++i) {
    GMathVec3<double> n = random_unit(rng);
    // Every fifth one close to the Y axis, on both sides of the threshold.
    if (i % 5 == 0) {
      double const e = std::ldexp(1.0, -(i % 40));
      n = GMathVec3<double>(e, (i % 2) ? 1.0 : -1.0, -e) * (1.0 / std::sqrt(1.0 + 2.0 * e * e));
    }
    GMathVec3<double> t1, t2;
    orthonormal_basis(n, t1, t2);
    GMathVec3<double> const c = cross(t1, t2);
    double const err = std::fabs(t1.length() - 1.0) + std::fabs(t2.length() - 1.0) +
                       std::fabs(dot(t1, t2)) + std::fabs(dot(t1, n)) + std::fabs(dot(t2, n)) +
                       (c - n).length();
    ASSERT_TRUE(err <= 1e-8) << "n = " << n.x << " " << n.y << " " << n.z;
  }
}

TEST(SafeNormalize, ThresholdIsStrict) {
  GMathVec3<double> const small(1e-8, 0.0, 0.0);
  EXPECT_EQ(safe_normalize(small, 1e-8), GMathVec3<double>(0.0, 0.0, 0.0));
  EXPECT_EQ(safe_normalize(small * 2.0, 1e-8), GMathVec3<double>(1.0, 0.0, 0.0));
  GMathVec3<double> const v(3.0, 0.0, 4.0);
  EXPECT_EQ(safe_normalize(v, 1e-8), v * (1.0 / 5.0));
}
