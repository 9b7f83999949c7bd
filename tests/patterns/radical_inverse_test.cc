// The fast digit forms against their plain loops, bit for bit: the base-2
// closed form (bit reversal times 2^-32), Sobol's second component eight bits
// at a time, and the digit loop with the base's division prepared once.
#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "sampling/patterns/radical_inverse.h"
#include "sampling/patterns/sobol_components.h"
#include "tests/patterns/pattern_support.h"

TEST(RadicalInverse2, ClosedFormAndSobolBytesEqualTheirBitLoops) {
  std::mt19937 rng(20261123u);
  for (unsigned int i = 0; i < (1u << 20); ++i) {
    // Every 18-bit value, then random 32-bit ones.
    unsigned int const n = i < (1u << 18) ? i : static_cast<unsigned int>(rng());
    ASSERT_EQ(radical_inverse_2(n), plain_radical_inverse_2(n)) << n;
    ASSERT_EQ(sobol_2_by_bytes(n), sobol_2(n)) << n;
  }
  EXPECT_EQ(radical_inverse_2(0xFFFFFFFFu), 1.0 - 0x1p-32);
  EXPECT_EQ(sobol_2_by_bytes(0xFFFFFFFFu), sobol_2(0xFFFFFFFFu));
}

TEST(DigitDivisor, QuotientAndRadicalInverseAreThePlainDivision) {
  std::mt19937 rng(2718);
  for (unsigned int i = 0; i < 300000; ++i) {
    // A base: the samplers' small ones, powers of two, and any 32-bit value
    // from 2 up, the extremes included.
    unsigned int const r = static_cast<unsigned int>(rng());
    unsigned int const choices[4] = {2u + r % 63u, 1u << (1u + r % 31u),
                                     i % 8 == 2 ? 0xFFFFFFFFu - r % 3u : 2u + r % 0xFFFFu, r | 2u};
    unsigned int const d = choices[i % 4];
    DigitDivisor const divisor(d);
    // Random n, the values around a multiple of d where the quotient steps,
    // and the ends of the range.
    unsigned int const k = rng() / d;
    unsigned int const ns[5] = {static_cast<unsigned int>(rng()), k * d, k * d - 1u, 0xFFFFFFFFu,
                                d - 1u};
    for (unsigned int const n : ns)
      ASSERT_EQ(divisor.quotient(n), n / d) << "n " << n << " d " << d;
    unsigned int const base = i % 16 == 0 ? d : 2u + rng() % 62u;
    double const fast = radical_inverse_b(ns[0], DigitDivisor(base), 1.0 / base);
    double const plain = radical_inverse_b(ns[0], base, 1.0 / base);
    ASSERT_EQ(std::memcmp(&fast, &plain, sizeof fast), 0) << "n " << ns[0] << " base " << base;
  }
}
