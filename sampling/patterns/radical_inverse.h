#pragma once

#include <cstdint>

// Internal scalar helpers shared by the sample patterns and the surface
// scattering. Not exported: they are inlined where used.

// 1 / (2^32 - 1), bit pattern 0x3DF0000000100000.
constexpr double k_unit_from_u32_scale = 0x1.00000001p-32;
static_assert(k_unit_from_u32_scale == 2.3283064370807974e-10, "1 / (2^32 - 1)");

// 1/3, bit pattern 0x3FD5555555555555.
constexpr double k_one_third = 0x1.5555555555555p-2;
static_assert(k_one_third == 1.0 / 3.0, "1/3");

// Maps a 32-bit integer onto [0, 1], both ends included: 0 -> 0.0 and
// 4294967295 -> exactly 1.0. A product by 1/(2^32 - 1), not a division.
inline double unit_from_u32(unsigned int const& r) {
  return static_cast<double>(r) * k_unit_from_u32_scale;
}

// The 32 bits of n in reverse order (bit 0 becomes bit 31 and so on).
constexpr unsigned int reverse_bits(unsigned int n) {
  n = ((n >> 1) & 0x55555555u) | ((n & 0x55555555u) << 1);
  n = ((n >> 2) & 0x33333333u) | ((n & 0x33333333u) << 2);
  n = ((n >> 4) & 0x0F0F0F0Fu) | ((n & 0x0F0F0F0Fu) << 4);
  n = ((n >> 8) & 0x00FF00FFu) | ((n & 0x00FF00FFu) << 8);
  return (n >> 16) | (n << 16);
}

// Calls write(j) for j = begin .. end - 1 of a run of at most 16 indices that
// share all but their low four bits (the array paths of the base-2 patterns
// build such runs from one base): a whole run (0 .. 16) as a loop of fixed
// count, which the compiler unrolls, a part of one as a plain loop.
template <typename Write>
inline void for_each_in_run(unsigned int const& begin, unsigned int const& end,
                            Write const& write) {
  if (begin == 0u && end == 16u) {
    for (unsigned int j = 0; j < 16u; ++j)
      write(j);
  } else {
    for (unsigned int j = begin; j < end; ++j)
      write(j);
  }
}

// Base-2 radical inverse: the 32 bits of n mirrored about the binary point,
// in [0, 1 - 2^-32]. Defined as the digit loop
//   result = 0, w = 0.5; per bit from the lowest: if set, result = w + result;
//   w = w * 0.5
// whose partial sums are all exact in double, so it equals
// bit_reverse(n) * 2^-32 exactly: an integer below 2^32 converts to double
// without rounding and the power-of-two scale is exact. That closed form is
// what runs; the tests compare it with the loop bit for bit.
constexpr double radical_inverse_2(unsigned int const& n) {
  return static_cast<double>(reverse_bits(n)) * 0x1p-32;
}

// The weights of the base-3 digits of a 32-bit integer (at most 21 of them,
// 3^21 > 2^32): 1/3, then each the previous one times the double 1/3, the
// products the digit loop would form one by one, rounded alike (constant
// evaluation rounds each IEEE product to nearest as the processor does).
struct Base3Weights {
  double weight[21];
};

constexpr Base3Weights make_base3_weights() {
  Base3Weights t{};
  double w = k_one_third;
  for (int k = 0; k < 21; ++k) {
    t.weight[k] = w;
    w = w * k_one_third;
  }
  return t;
}

inline constexpr Base3Weights k_base3_weights = make_base3_weights();

// Base-3 radical inverse, digits from the least significant one up, the
// weight shrinking by repeated multiplication with the double 1/3 (read from
// the table above: the same weights without their chain of products). A zero
// digit adds 0.0 * w = +0.0, which leaves the non-negative sum unchanged, so
// every digit is added without a branch (random indices would mispredict it
// a third of the time).
inline double radical_inverse_3(unsigned int n) {
  double result = 0.0;
  for (unsigned int k = 0; n != 0; ++k) {
    unsigned int const q = n / 3u;
    result = static_cast<double>(n - 3u * q) * k_base3_weights.weight[k] + result;
    n = q;
  }
  return result;
}

// Radical inverse in any base >= 2, given the base and its stored inverse:
// digits from the least significant one up, one unsigned division per digit,
// the weight shrinking by repeated multiplication with inv_base (never a
// division). With base 3 and inv_base the double 1/3 it equals
// radical_inverse_3 bit for bit. n = 0 gives 0.0.
// A zero digit adds 0.0 * w = +0.0, which leaves the non-negative sum
// unchanged, so every digit is added without a branch: the same bits, and no
// mispredicted jump per digit.
inline double radical_inverse_b(unsigned int n, unsigned int const& base, double const& inv_base) {
  double result = 0.0;
  double w = inv_base;
  while (n != 0) {
    unsigned int const d = n % base;
    unsigned int const q = n / base;
    result = static_cast<double>(d) * w + result;
    w = w * inv_base;
    n = q;
  }
  return result;
}

// Division of 32-bit integers by a divisor d >= 2 fixed for many divisions
// (the base of a digit loop run over a whole sample array): the quotient is
// floor(n m / 2^64) with m = ceil(2^64 / d), one wide multiplication instead
// of a division. Exact for every 32-bit n: with m = 2^64/d + e, 0 <= e < 1,
// n m / 2^64 = floor(n/d) + r/d + n e / 2^64 where r <= d - 1 and
// n e / 2^64 < 2^-32 < 1/d, so the fraction never reaches 1.
struct DigitDivisor {
  explicit DigitDivisor(unsigned int const& d)
      : divisor(d), magic(~static_cast<std::uint64_t>(0) / d + 1) {}

  unsigned int quotient(unsigned int const& n) const {
    return static_cast<unsigned int>((static_cast<unsigned __int128>(n) * magic) >> 64);
  }

  unsigned int const divisor;
  std::uint64_t const magic;
};

// radical_inverse_b with the base's division prepared once: the same digits
// in the same order, so the same bits.
inline double radical_inverse_b(unsigned int n, DigitDivisor const& base, double const& inv_base) {
  double result = 0.0;
  double w = inv_base;
  while (n != 0) {
    unsigned int const q = base.quotient(n);
    unsigned int const d = n - q * base.divisor;
    result = static_cast<double>(d) * w + result;
    w = w * inv_base;
    n = q;
  }
  return result;
}
