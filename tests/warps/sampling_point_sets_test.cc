#include <gtest/gtest.h>

#include <cmath>

#include "sampling/sampling.h"

using Vec2 = GMathVec2<double>;

TEST(SamplingPointSets, DiskUniformRingsFromTheOutsideIn) {
  CoreArray<Vec2> points(3);
  Sampling::disk_uniform(points, 0);
  EXPECT_TRUE(points.empty());
  for (unsigned n = 1; n <= 7; ++n) {
    Sampling::disk_uniform(points, n);
    ASSERT_EQ(points.count(), n * n);
    // Ring k holds 4N - 4 - 8k points at radius 1 - 2k/(N-1) (odd N) or
    // (N-1-2k)/N (even N), from angle 0 counter-clockwise in equal steps:
    // N = 2 gives four points at radius 0.5, N = 4 twelve at 0.75 and four at
    // 0.25, N = 5 sixteen at 1, eight at 0.5 and the centre.
    unsigned at = 0;
    for (unsigned k = 0; k < n / 2; ++k) {
      unsigned const m = 4 * n - 4 - 8 * k;
      double const r = n % 2 ? 1.0 - 2.0 * k / (n - 1) : (n - 1.0 - 2.0 * k) / n;
      EXPECT_EQ(points[at].y, 0.0) << "N " << n << " ring " << k;
      for (unsigned j = 0; j < m; ++j, ++at) {
        double const phi = k_sampling_two_pi * j / m;
        double const err =
            std::hypot(points[at].x - std::cos(phi) * r, points[at].y - std::sin(phi) * r);
        EXPECT_TRUE(err <= 1e-12) << "N " << n << " ring " << k << " point " << j;
      }
    }
    if (n % 2) {
      ASSERT_EQ(at, n * n - 1) << n;
      EXPECT_EQ(points[at], Vec2(0.0, 0.0)) << n;
    } else {
      EXPECT_EQ(at, n * n) << n;
    }
  }
}

TEST(SamplingPointSets, GridUniformCornersAndRowOrder) {
  CoreArray<Vec2> points(5);
  Sampling::grid_uniform(points, 0, Vec2(0, 0), Vec2(1, 1));
  EXPECT_TRUE(points.empty());
  Sampling::grid_uniform(points, 1, Vec2(-1, 2), Vec2(3, 5));
  ASSERT_EQ(points.count(), 1u);
  EXPECT_EQ(points[0], Vec2(-1, 2));
  Sampling::grid_uniform(points, 2, Vec2(-1, 2), Vec2(3, 5));
  ASSERT_EQ(points.count(), 4u);
  EXPECT_EQ(points[0], Vec2(-1, 2));
  EXPECT_EQ(points[1], Vec2(3, 2));
  EXPECT_EQ(points[2], Vec2(-1, 5));
  EXPECT_EQ(points[3], Vec2(3, 5));
  Sampling::grid_uniform(points, 3, Vec2(0, 0), Vec2(1, 1));
  double const c[3] = {0, 0.5, 1};
  for (unsigned i = 0; i < 9; ++i)
    EXPECT_EQ(points[i], Vec2(c[i % 3], c[i / 3])) << i;
  // A reversed box runs in the negative direction, x fastest.
  Sampling::grid_uniform(points, 6, Vec2(2, 1), Vec2(-3, -1));
  ASSERT_EQ(points.count(), 36u);
  for (unsigned i = 0; i < 36; ++i) {
    double const err = std::hypot(points[i].x - (2.0 - i % 6), points[i].y - (1.0 - 0.4 * (i / 6)));
    EXPECT_TRUE(err <= 1e-14) << i;
  }
}
