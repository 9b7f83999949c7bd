// The digit loop with the base's division prepared once (DigitDivisor), and
// the Halton sampler's array path built on it, against the plain division:
// quotients, radical inverses and samples bit for bit over millions of
// random in-contract inputs.

#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "sampling/patterns/radical_inverse.h"
#include "sampling/samplers.h"
#include "tests/patterns/pattern_support.h"

namespace {

// A base: small ones (the samplers' range), powers of two, and any 32-bit
// value from 2 up, the extremes included.
unsigned int random_divisor(std::mt19937& rng, unsigned int const& i) {
  switch (i % 4) {
    case 0:
      return 2u + rng() % 63u;
    case 1:
      return 1u << (1u + rng() % 31u);
    case 2:
      return i % 8 == 2 ? 0xFFFFFFFFu - rng() % 3u : 2u + rng() % 0xFFFFu;
    default:
      return rng() | 2u;
  }
}

TEST(DigitDivisorFastPath, QuotientIsTheIntegerDivisionOnMillionsOfPairs) {
  std::mt19937 rng(2718);
  for (unsigned int i = 0; i < 1000000; ++i) {
    unsigned int const d = random_divisor(rng, i);
    DigitDivisor const divisor(d);
    // Random n, then the values around a multiple of d where the quotient
    // steps, and the ends of the range.
    unsigned int const k = rng() / d;
    unsigned int const ns[5] = {static_cast<unsigned int>(rng()), k * d, k * d - 1u, 0xFFFFFFFFu,
                                d - 1u};
    for (unsigned int const n : ns)
      ASSERT_EQ(divisor.quotient(n), n / d) << "n " << n << " d " << d;
  }
}

TEST(DigitDivisorFastPath, RadicalInverseMatchesThePlainDigitLoop) {
  std::mt19937 rng(3141);
  for (unsigned int i = 0; i < 1000000; ++i) {
    unsigned int const base = i % 16 == 0 ? random_divisor(rng, i) : 2u + rng() % 62u;
    double const inv_base = 1.0 / static_cast<double>(base);
    unsigned int const n = rng();
    double const fast = radical_inverse_b(n, DigitDivisor(base), inv_base);
    double const plain = radical_inverse_b(n, base, inv_base);
    ASSERT_EQ(std::memcmp(&fast, &plain, sizeof fast), 0) << "n " << n << " base " << base;
  }
}

// The array path (get_all_samples, get_packet_samples) against the
// one-sample path, which divides by the base per digit.
TEST(DigitDivisorFastPath, HaltonArrayPathsMatchTheOneSamplePath) {
  std::mt19937 rng(1618);
  HaltonSampler2d sampler;
  unsigned int compared = 0;
  while (compared < 1100000) {
    unsigned int const base = 2u + rng() % 40u;
    unsigned int const count = 1u + rng() % 8192u;
    sampler.init(rng(), count, 1, base);
    ASSERT_TRUE(single_packet_paths_match_get_sample(sampler)) << "base " << base;
    compared += count;
  }
}

}  // namespace
