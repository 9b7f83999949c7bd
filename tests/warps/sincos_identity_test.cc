// The compiler turns a sine and a cosine of the same angle into one sincos
// call (every warp and ray generator computes both). That is only allowed
// here because the C library's sincos gives the very bits of sin and cos
// called apart; this test holds it to that over the angles the library
// takes and beyond.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>

#include "sampling/angles.h"

namespace {

// Called through volatile pointers, so that the compiler cannot fuse them.
double (*volatile plain_sin)(double) = &::sin;
double (*volatile plain_cos)(double) = &::cos;
void (*volatile fused_sincos)(double, double*, double*) = &::sincos;

bool same_bits(double const& a, double const& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

TEST(SinCos, FusedCallGivesTheBitsOfSinAndCosOnMillionsOfAngles) {
  std::mt19937_64 rng(4242);
  // Angles of the warps (concentric angles in (-pi/4, 7pi/4], azimuths in
  // [0, 2pi], half-angles up to pi/2) with margins, then a wide range, then
  // tiny magnitudes where the results come out of different branches.
  std::uniform_real_distribution<double> warp(-k_sampling_pi, 2.5 * k_sampling_two_pi);
  std::uniform_real_distribution<double> wide(-1e6, 1e6);
  std::uniform_real_distribution<double> exponent(-40.0, 0.0);
  unsigned int failures = 0;
  for (unsigned int i = 0; i < 1500000; ++i) {
    double x;
    if (i % 3 == 0)
      x = warp(rng);
    else if (i % 3 == 1)
      x = i % 6 == 1 ? wide(rng) : -warp(rng);
    else
      x = std::ldexp(1.0 + (rng() >> 11) * 0x1p-53, static_cast<int>(exponent(rng)));
    double s, c;
    fused_sincos(x, &s, &c);
    if (!same_bits(s, plain_sin(x)) || !same_bits(c, plain_cos(x))) {
      ADD_FAILURE() << "angle " << x;
      if (++failures > 10)
        return;
    }
  }
  // Special values.
  for (double const x : {0.0, -0.0, k_sampling_pi, k_sampling_half_pi, k_sampling_quarter_pi,
                         k_sampling_two_pi, 1e300, -1e-320}) {
    double s, c;
    fused_sincos(x, &s, &c);
    EXPECT_TRUE(same_bits(s, plain_sin(x)) && same_bits(c, plain_cos(x))) << x;
  }
}

}  // namespace
