#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <vector>

#include "sampling/patterns/radical_inverse.h"
#include "sampling/sampling.h"
#include "tests/support/density_harness.h"

namespace {

using Vec3 = GMathVec3<double>;
double const K = k_sampling_quarter_pi;

std::uint64_t bits_of(double const& d) {
  std::uint64_t b;
  std::memcpy(&b, &d, 8);
  return b;
}

}  // namespace

TEST(SamplingWarps, AngleConstantsHaveTheLibraryBits) {
  EXPECT_EQ(bits_of(k_sampling_pi), 0x400921FB5444261Eu);
  EXPECT_EQ(bits_of(k_sampling_two_pi), 0x401921FB5444261Eu);
  EXPECT_EQ(bits_of(k_sampling_half_pi), 0x3FF921FB5444261Eu);
  EXPECT_EQ(bits_of(k_sampling_quarter_pi), 0x3FE921FB5444261Eu);
  EXPECT_EQ(bits_of(k_sampling_degree), 0x3F91DF46A2529843u);
}

TEST(SamplingWarps, ToUnitDiskCentreEdgesCornersAndDiagonals) {
  double r, a;
  Sampling::to_unit_disk(0.5, 0.5, r, a);
  EXPECT_EQ(r, 0.0);
  EXPECT_TRUE(std::signbit(r)) << "the centre falls into the bottom sector: radius -0.0";
  EXPECT_EQ(bits_of(a), 0u);
  struct Case {
    double u, v, radius, angle;
  };
  // Each diagonal belongs to the sector that the strict and non-strict
  // comparisons give it: angles K, 3K, 5K and 7K (not -K).
  for (Case const& c :
       {Case{1, 0.5, 1, 0}, Case{0.5, 1, 1, 2 * K}, Case{0, 0.5, 1, 4 * K}, Case{0.5, 0, 1, 6 * K},
        Case{1, 1, 1, K}, Case{0, 1, 1, 3 * K}, Case{0, 0, 1, 5 * K}, Case{1, 0, 1, 7 * K},
        Case{0.75, 0.75, 0.5, K}, Case{0.25, 0.75, 0.5, 3 * K}, Case{0.25, 0.25, 0.5, 5 * K},
        Case{0.75, 0.25, 0.5, 7 * K}}) {
    Sampling::to_unit_disk(c.u, c.v, r, a);
    EXPECT_EQ(r, c.radius) << c.u << ", " << c.v;
    EXPECT_EQ(a, c.angle) << c.u << ", " << c.v;
    // The inverse finds the same sector, also from atan2's angle.
    for (double const angle : {a, std::atan2(std::sin(a), std::cos(a))}) {
      double u, v;
      Sampling::to_unit_disk_inverse(r, angle, u, v);
      EXPECT_TRUE(std::fabs(u - c.u) + std::fabs(v - c.v) <= 1e-12) << c.u << ", " << c.v;
    }
  }
  EXPECT_EQ(2 * K, k_sampling_half_pi);
  EXPECT_EQ(4 * K, k_sampling_pi);
  Sampling::to_unit_disk(0.9, 0.6, r, a);
  EXPECT_DOUBLE_EQ(r, 0.8);
  EXPECT_DOUBLE_EQ(a, K / 4);
  // Everywhere: radius is max(|a|, |b|) and the angle lies in its sector.
  UniformSquare uniform(1);
  for (int i = 0; i < 100000; ++i) {
    double const u = uniform.next(), v = uniform.next();
    double const x = u * 2.0 - 1.0, y = v * 2.0 - 1.0;
    Sampling::to_unit_disk(u, v, r, a);
    EXPECT_EQ(r, std::max(std::fabs(x), std::fabs(y))) << u << ", " << v;
    double const lo =
        x > std::fabs(y) ? -K : (y >= std::fabs(x) ? K : (x < -std::fabs(y) ? 3 * K : 5 * K));
    EXPECT_TRUE(a >= lo && a <= lo + 2 * K && a > -K) << u << ", " << v << " angle " << a;
  }
}

TEST(SamplingWarps, WorkedExamples) {
  Vec3 d, t, b;
  Sampling::disk_concentric(1.0, 0.5, d, t, b);
  EXPECT_EQ(d, Vec3(1, 0, 0));
  EXPECT_EQ(t, Vec3(1, 0, 0));
  EXPECT_EQ(b, Vec3(0, 1, 0));
  for (double const v : {0.0, 0.3, 1.0}) {
    Sampling::sphere_uniform(0.0, v, d);
    EXPECT_EQ(d, Vec3(0, 0, 1)) << v;
    Sampling::sphere_uniform(1.0, v, d);
    EXPECT_EQ(d, Vec3(0, 0, -1)) << v;
    Sampling::sphere_uniform(0.5, v, d);
    EXPECT_EQ(d, Vec3(std::cos(k_sampling_two_pi * v), std::sin(k_sampling_two_pi * v), 0)) << v;
  }
  Sampling::hemisphere_cosine_concentric(0.75, 0.5, d, 1.0);
  EXPECT_EQ(d, Vec3(0.5, 0, std::sqrt(0.75)));
  Sampling::hemisphere_uniform(1.0, 0.0, d, 1.0);
  EXPECT_EQ(d, Vec3(1, 0, 0));
  // The library's 2pi * 0.25 lies just below the true right angle.
  Sampling::hemisphere_cosine(0.5, 0.25, d, 1.0);
  EXPECT_TRUE(d.x > 1.9e-13 && d.x < 2.1e-13) << d.x;
  EXPECT_EQ(d.y, 0.5);
  EXPECT_EQ(d.z, std::sqrt(0.75));
}

// The rank test below proves every count up to 300 and positions past the
// count; a worked table pins the rank order itself, and count 0 maps all to 0.
TEST(SamplingShuffleIndex, WorkedTableAndEmptyCount) {
  unsigned const table[10] = {0, 5, 3, 8, 2, 7, 4, 9, 1, 6};
  for (unsigned i = 0; i < 10; ++i)
    EXPECT_EQ(Sampling::shuffle_index(i, 10), table[i]) << i;
  EXPECT_EQ(Sampling::shuffle_index(9, 8), 5u);
  for (unsigned i : {0u, 1u, 77u, 4294967295u})
    EXPECT_EQ(Sampling::shuffle_index(i, 0), 0u);
  EXPECT_EQ(Sampling::shuffle_index(0, 4294967295u), 0u);
}

TEST(SamplingShuffleIndex, IsTheRankOfTheRadicalInverseAndABijection) {
  for (unsigned count = 1; count <= 300; ++count) {
    // Indices below count sorted by their radical inverse; the shuffle of an
    // index is its place in that order.
    std::vector<unsigned> order(count);
    std::iota(order.begin(), order.end(), 0u);
    std::sort(order.begin(), order.end(),
              [](unsigned a, unsigned b) { return radical_inverse_2(a) < radical_inverse_2(b); });
    std::vector<int> hit(count, 0);
    for (unsigned rank = 0; rank < count; ++rank) {
      unsigned const got = Sampling::shuffle_index(order[rank], count);
      ASSERT_EQ(got, rank) << "index " << order[rank] << " of " << count;
      ++hit[got];
    }
    EXPECT_EQ(std::count(hit.begin(), hit.end(), 1), static_cast<long>(count));
    // Indices beyond the count get their insertion position.
    for (unsigned index = count; index < count + 40; ++index) {
      double const ri = radical_inverse_2(index);
      unsigned const below = static_cast<unsigned>(std::count_if(
          order.begin(), order.end(), [ri](unsigned j) { return radical_inverse_2(j) < ri; }));
      ASSERT_EQ(Sampling::shuffle_index(index, count), below) << index << " of " << count;
    }
  }
}
