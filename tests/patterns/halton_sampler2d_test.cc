#include "sampling/patterns/halton_sampler2d.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "sampling/patterns/radical_inverse.h"
#include "tests/patterns/pattern_support.h"

// The first points in base 3, bit for bit; a seed s starts the sequence at
// element s, modulo 2^32.
TEST(HaltonSampler2d, FirstPointsAndSeeds) {
  HaltonSampler2d sampler, shifted;
  sampler.init(0, 64, 1, 5);
  Points const reference = all_samples(sampler);
  sampler.init(0, 5, 1, 3);
  double const third = 1.0 / 3.0, ninth = 1.0 * (third * third);
  Points const expected = {
      {0.0, 0.0}, {0.5, third}, {0.25, 2.0 * third}, {0.75, ninth}, {0.125, 1.0 * ninth + third}};
  EXPECT_TRUE(same_bits(all_samples(sampler), expected));
  for (unsigned int seed : {1u, 10u, 33u}) {
    shifted.init(seed, 8, 2, 5);
    EXPECT_TRUE(same_bits(all_samples(shifted),
                          Points(reference.begin() + seed, reference.begin() + seed + 16)))
        << seed;
  }
  shifted.init(4294967295u, 2, 1, 3);
  EXPECT_EQ(all_samples(shifted)[1], GMathVec2<double>(0.0, 0.0));
}

// The general digit loop with base 3 is the specialised base-3 inverse bit
// for bit, and every base keeps v inside [0, 1), even for indices near 2^32;
// the one-sample, all-samples and single-packet paths agree.
TEST(HaltonSampler2d, GeneralBaseLoopMatchesBaseThreeAndStaysBelowOne) {
  for (unsigned int n = 0; n < 200000; ++n) {
    unsigned int const m = n * 21467u + (n >> 3);
    ASSERT_EQ(radical_inverse_b(m, 3, 1.0 / 3.0), radical_inverse_3(m)) << "n " << m;
  }
  HaltonSampler2d sampler;
  for (unsigned int base = 2; base < 40; ++base) {
    sampler.init(4294967295u - 300u, 20, 15, base);
    for (GMathVec2<double> const& s : all_paths(sampler))
      ASSERT_TRUE(s.x >= 0.0 && s.x < 1.0 && s.y >= 0.0 && s.y < 1.0) << base << " " << s.y;
  }
}

// Any 2^i b^j consecutive points, wherever they start, put exactly one point
// into each box of 2^-i by b^-j. Box edges that a point reaches exactly may
// come out a rounding step low, so points are nudged up by far less than a box.
TEST(HaltonSampler2d, ConsecutivePointsStratifyElementaryIntervals) {
  for (unsigned int base : {3u, 5u}) {
    for (unsigned int start : {0u, 17u, 1000003u, 4000000000u}) {
      for (unsigned int pow2 = 1; pow2 <= 256; pow2 *= 2) {
        for (unsigned int powb = 1; pow2 * powb <= 2048; powb *= base) {
          HaltonSampler2d sampler;
          sampler.init(start, pow2 * powb, 1, base);
          std::vector<int> hits(pow2 * powb, 0);
          for (GMathVec2<double> const& s : all_samples(sampler)) {
            auto const bx = static_cast<unsigned int>(std::floor(s.x * pow2 + 1e-9));
            auto const by = static_cast<unsigned int>(std::floor(s.y * powb + 1e-9));
            ASSERT_TRUE(bx < pow2 && by < powb) << s.x << ", " << s.y;
            ++hits[by * pow2 + bx];
          }
          ASSERT_EQ(std::count(hits.begin(), hits.end(), 1), static_cast<long>(hits.size()))
              << "base " << base << " start " << start << " " << pow2 << " x " << powb;
        }
      }
    }
  }
}
