#include <gtest/gtest.h>

#include "platform/random/grandom_mt.h"
#include "sampling/patterns/radical_inverse.h"
#include "tests/patterns/pattern_support.h"

// The closed form that runs (bit reversal times 2^-32) against the digit loop,
// bit for bit: every 20-bit value, every single- and two-bit pattern, and two
// million random 32-bit values.
TEST(RadicalInverse2, ClosedFormEqualsDigitLoop) {
  for (unsigned int n = 0; n < (1u << 20); ++n) {
    ASSERT_EQ(radical_inverse_2(n), plain_radical_inverse_2(n)) << n;
  }
  for (unsigned int i = 0; i < 32; ++i) {
    for (unsigned int j = 0; j < 32; ++j) {
      unsigned int const n = (1u << i) | (1u << j);
      ASSERT_EQ(radical_inverse_2(n), plain_radical_inverse_2(n)) << n;
      ASSERT_EQ(radical_inverse_2(~n), plain_radical_inverse_2(~n)) << ~n;
    }
  }
  GRandomMt mt(20261123u);
  for (int i = 0; i < 2000000; ++i) {
    unsigned int const n = mt.genrand_int32();
    ASSERT_EQ(radical_inverse_2(n), plain_radical_inverse_2(n)) << n;
  }
  EXPECT_EQ(reverse_bits(1u), 0x80000000u);
  EXPECT_EQ(reverse_bits(0x12345678u), 0x1E6A2C48u);
}
