#pragma once

// Sample arrays written several samples at a time: the integer work of a
// pattern (bit reversal, XOR) in four 32-bit lanes and the conversion of
// unsigned 32-bit integers to double in two 64-bit lanes. Internal: inlined
// into the samplers' array paths.
//
// Every value is the one the scalar formulas give, bit for bit:
// - an unsigned 32-bit x placed in the low half of a double whose high half
//   is 0x43300000 is 2^52 + x exactly; subtracting 2^52 leaves x, the exact
//   double of x, as static_cast<double> gives it;
// - sums and products in SSE2 lanes round like their scalar counterparts
//   (the same IEEE operations on the same operands; no fused multiply-add).
// Platforms without SSE2 take the scalar paths (SAMPLING_U32_LANES unset).

#include "platform/math/gmath_vec2.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#define SAMPLING_U32_LANES 1

// The 32 bits of each lane in reverse order (reverse_bits in four lanes):
// bits, pairs and nibbles swapped under masks, then the bytes of each 16-bit
// half and the two halves by shifts and shuffles that need none.
inline __m128i reverse_bits_x4(__m128i n) {
  __m128i const m1 = _mm_set1_epi32(0x55555555);
  __m128i const m2 = _mm_set1_epi32(0x33333333);
  __m128i const m4 = _mm_set1_epi32(0x0F0F0F0F);
  n = _mm_or_si128(_mm_and_si128(_mm_srli_epi32(n, 1), m1),
                   _mm_slli_epi32(_mm_and_si128(n, m1), 1));
  n = _mm_or_si128(_mm_and_si128(_mm_srli_epi32(n, 2), m2),
                   _mm_slli_epi32(_mm_and_si128(n, m2), 2));
  n = _mm_or_si128(_mm_and_si128(_mm_srli_epi32(n, 4), m4),
                   _mm_slli_epi32(_mm_and_si128(n, m4), 4));
  n = _mm_or_si128(_mm_srli_epi16(n, 8), _mm_slli_epi16(n, 8));
  return _mm_shufflehi_epi16(_mm_shufflelo_epi16(n, 0xB1), 0xB1);
}

// Samples with u = (double(u_i) + add_u) * scale_u and
// v = (double(v_i) + add_v) * scale_v. An add of +0.0 leaves the
// non-negative double(u_i) unchanged, so u = double(u_i) * scale_u is written
// with add_u = 0.0.
struct PairWriter {
  PairWriter(double const& add_u, double const& add_v, double const& scale_u, double const& scale_v)
      : add(_mm_set_pd(add_v, add_u)), scale(_mm_set_pd(scale_v, scale_u)) {}

  // Two samples from integers interleaved as (u0, v0, u1, v1).
  void write2(__m128i const& uv, GMathVec2<double>* out) const {
    __m128i const high = _mm_set1_epi32(0x43300000);
    store(_mm_unpacklo_epi32(uv, high), out[0]);
    store(_mm_unpackhi_epi32(uv, high), out[1]);
  }

  // Four samples from u lanes and v lanes.
  void write4(__m128i const& u, __m128i const& v, GMathVec2<double>* out) const {
    write2(_mm_unpacklo_epi32(u, v), out);
    write2(_mm_unpackhi_epi32(u, v), out + 2);
  }

  void store(__m128i const& magic, GMathVec2<double>& sample) const {
    __m128d const x = _mm_sub_pd(_mm_castsi128_pd(magic), _mm_set1_pd(0x1p52));
    _mm_storeu_pd(&sample.x, _mm_mul_pd(_mm_add_pd(x, add), scale));
  }

  __m128d add;
  __m128d scale;
};

#endif
