// The ray record's derived fields and the vector helpers every generator
// builds on.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "sampling/rays/ray_math.h"
#include "tests/support/ray_bits.h"

typedef GMathVec3<double> V3;

// set_direction: the inverse direction bit for bit, sign flags agreeing with
// the infinity a zero of either sign gives, the major axis the largest
// component with ties to the lower axis. set_differentials copies the record
// and summarises the cone: m_aux[0] the larger auxiliary origin distance,
// m_aux[1] the larger direction distance, whichever auxiliary ray they belong
// to.
TEST(GMathRay, DerivedFields) {
  std::mt19937_64 rng(11);
  std::uniform_real_distribution<double> any(-2.0, 2.0);
  for (int i = 0; i < 2000; ++i) {
    V3 d(any(rng), i % 7 ? any(rng) : (i % 14 ? -0.0 : 0.0), any(rng));
    d.z = i % 11 ? d.z : -d.x;
    GMathBasicRay ray;
    ray.set_direction(d);
    unsigned int const m = ray.m_major_axis;
    ASSERT_TRUE(std::memcmp(&ray.m_direction, &d, sizeof d) == 0 && m < 3u);
    for (unsigned int k = 0; k < 3; ++k) {
      double const inverse = 1.0 / d[k];
      ASSERT_EQ(std::memcmp(&ray.m_inverse_direction[k], &inverse, sizeof inverse), 0) << i;
      ASSERT_TRUE(
          ray.m_sign[k] == (std::signbit(inverse) ? 1u : 0u) &&
          (std::fabs(d[m]) > std::fabs(d[k]) || (k >= m && std::fabs(d[m]) == std::fabs(d[k]))))
          << i << " " << k;
    }
  }
  GMathRayDifferential diff;
  diff.m_rx_origin = V3(1.5, 2.0, 3.0);
  diff.m_ry_origin = V3(1.0, 2.0, 3.0);
  diff.m_rx_direction = V3(0.6, 0.0, 0.8);
  diff.m_ry_direction = V3(0.0, 0.0, 1.0);
  for (int swapped = 0; swapped < 2; ++swapped) {
    GMathRay ray(V3(1.0, 2.0, 3.0), V3(0.0, 0.0, 1.0));
    ray.set_differentials(diff);
    EXPECT_TRUE(ray.m_has_differentials && ray.m_aux[0] == 0.5 &&
                std::memcmp(&ray.m_differential, &diff, sizeof diff) == 0);
    EXPECT_TRUE(std::fabs(ray.m_aux[1] - std::sqrt(0.4)) <= 1e-15) << ray.m_aux[1];
    std::swap(diff.m_rx_origin, diff.m_ry_origin);
    std::swap(diff.m_rx_direction, diff.m_ry_direction);
  }
}

// Right-handed orthonormal frames, near the Y axis on both sides of the
// threshold too, and the fixed pairs on it and at the threshold itself (a
// tangent of length 1e-8); the normalisation threshold is strict.
TEST(RayMath, OrthonormalBasisAndSafeNormalize) {
  V3 const cases[][3] = {{{0, 1, 0}, {0, 0, 1}, {1, 0, 0}},
                         {{1e-8, 1, 0}, {0, 0, 1}, {1, 0, 0}},
                         {{0, -1, 0}, {1, 0, 0}, {0, 0, 1}},
                         {{0, 0, 1}, {1, 0, 0}, {0, 1, 0}}};
  for (auto const& c : cases) {
    V3 t1, t2;
    orthonormal_basis(c[0], t1, t2);
    EXPECT_TRUE(t1 == c[1] && t2 == c[2]) << c[0].y;
  }
  std::mt19937_64 rng(3);
  for (int i = 0; i < 5000; ++i) {
    double const e = std::ldexp(1.0, -(i % 40));
    V3 const n = i % 5 ? random_unit(rng) : unit(V3(e, (i % 2) ? 1.0 : -1.0, -e));
    V3 t1, t2;
    orthonormal_basis(n, t1, t2);
    double const err = std::fabs(t1.length() - 1.0) + std::fabs(t2.length() - 1.0) +
                       std::fabs(dot(t1, t2)) + std::fabs(dot(t1, n)) + std::fabs(dot(t2, n)) +
                       (cross(t1, t2) - n).length();
    ASSERT_TRUE(err <= 1e-8) << "n = " << n.x << " " << n.y << " " << n.z;
  }
  EXPECT_EQ(safe_normalize(V3(1e-8, 0, 0), 1e-8), V3(0, 0, 0));
  EXPECT_EQ(safe_normalize(V3(2e-8, 0, 0), 1e-8), V3(1, 0, 0));
  EXPECT_EQ(safe_normalize(V3(3, 0, 4), 1e-8), V3(3, 0, 4) * 0.2);
}
