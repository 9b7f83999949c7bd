#include "sampling/patterns/halton_sampler2d.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "sampling/patterns/radical_inverse.h"
#include "tests/patterns/pattern_support.h"

namespace {

// Index of the box of width 1/cells that holds x. Box edges that a point
// reaches exactly may come out a rounding step low, so the point is nudged
// up by far less than any box.
unsigned int box_of(double const& x, unsigned int const& cells) {
  return static_cast<unsigned int>(std::floor(x * cells + 1e-9));
}

}  // namespace

TEST(HaltonSampler2d, FirstPointsInBaseThree) {
  HaltonSampler2d sampler;
  sampler.init(0, 5, 1, 3);
  double const third = 1.0 / 3.0;
  double const ninth = 1.0 * (third * third);
  std::vector<GMathVec2<double>> const expected = {
      {0.0, 0.0}, {0.5, third}, {0.25, 2.0 * third}, {0.75, ninth}, {0.125, 1.0 * ninth + third}};
  std::vector<GMathVec2<double>> const samples = all_samples(sampler);
  ASSERT_EQ(samples.size(), expected.size());
  for (size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(samples[i].x, expected[i].x) << "sample " << i;
    EXPECT_EQ(samples[i].y, expected[i].y) << "sample " << i;
  }
}

TEST(HaltonSampler2d, SeedMovesTheStartAndWraps) {
  HaltonSampler2d from_zero, shifted;
  from_zero.init(0, 64, 1, 5);
  std::vector<GMathVec2<double>> const reference = all_samples(from_zero);
  for (unsigned int seed : {1u, 10u, 33u}) {
    shifted.init(seed, 8, 2, 5);
    for (unsigned int i = 0; i < 16; ++i) {
      GMathVec2<double> sample;
      shifted.get_sample(i, sample);
      EXPECT_EQ(sample.x, reference[i + seed].x) << "seed " << seed << " sample " << i;
      EXPECT_EQ(sample.y, reference[i + seed].y) << "seed " << seed << " sample " << i;
    }
  }
  // Seed and index add modulo 2^32: index 1 of seed 2^32 - 1 is element 0.
  shifted.init(4294967295u, 2, 1, 3);
  GMathVec2<double> sample;
  shifted.get_sample(1, sample);
  EXPECT_EQ(sample.x, 0.0);
  EXPECT_EQ(sample.y, 0.0);
}

// The general digit loop with base 3 is the specialised base-3 inverse bit
// for bit, and every base keeps v inside [0, 1), even for indices near 2^32.
TEST(HaltonSampler2d, GeneralBaseLoopMatchesBaseThreeAndStaysBelowOne) {
  for (unsigned int n = 0; n < 200000; ++n) {
    unsigned int const m = n * 21467u + (n >> 3);
    ASSERT_EQ(radical_inverse_b(m, 3, 1.0 / 3.0), radical_inverse_3(m)) << "n " << m;
  }
  HaltonSampler2d sampler;
  for (unsigned int base = 2; base < 40; ++base) {
    sampler.init(4294967295u - 300u, 300, 1, base);
    for (GMathVec2<double> const& s : all_samples(sampler)) {
      ASSERT_TRUE(s.x >= 0.0 && s.x < 1.0) << "base " << base << " u " << s.x;
      ASSERT_TRUE(s.y >= 0.0 && s.y < 1.0) << "base " << base << " v " << s.y;
    }
  }
}

// Any 2^i b^j consecutive points, wherever they start, put exactly one point
// into each box of 2^-i by b^-j.
TEST(HaltonSampler2d, ConsecutivePointsStratifyElementaryIntervals) {
  for (unsigned int base : {3u, 5u}) {
    for (unsigned int start : {0u, 17u, 1000003u, 4000000000u}) {
      for (unsigned int pow2 = 1, i = 0; pow2 <= 256; pow2 *= 2, ++i) {
        for (unsigned int powb = 1, j = 0; pow2 * powb <= 2048; powb *= base, ++j) {
          HaltonSampler2d sampler;
          sampler.init(start, pow2 * powb, 1, base);
          std::vector<int> hits(pow2 * powb, 0);
          for (GMathVec2<double> const& s : all_samples(sampler)) {
            unsigned int const bx = box_of(s.x, pow2), by = box_of(s.y, powb);
            ASSERT_TRUE(bx < pow2 && by < powb) << s.x << ", " << s.y;
            ++hits[by * pow2 + bx];
          }
          for (size_t b = 0; b < hits.size(); ++b) {
            ASSERT_EQ(hits[b], 1) << "base " << base << " start " << start << " 2^" << i << " x "
                                  << base << "^" << j << " box " << b;
          }
        }
      }
    }
  }
}
