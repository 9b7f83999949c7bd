#pragma once

// Rays written two at a time: everything of a ray's record but the libm
// calls in the two 64-bit lanes of SSE2 registers, lane k holding ray k of
// the pair. Internal: inlined into the generators' array paths.
//
// Every field is the one the one-ray builders write, bit for bit: sums,
// differences, products, quotients and square roots round in a lane as
// their scalar forms do (the same IEEE operation on the same operands, no
// fused multiply-add), comparisons and sign tests read the same bits, and
// each formula keeps its order of operations. The libm calls (sincos and
// the like) stay scalar, one per ray, between the lane steps. Every field is
// written one by one, so the records' padding bytes stay untouched as in the
// one-ray builders. Platforms without SSE2 keep the one-ray loops
// (SAMPLING_RAY_LANES unset).

#include "platform/math/gmath_matrix4x4.h"
#include "platform/math/gmath_ray.h"
#include "platform/math/gmath_vec2.h"
#include "platform/math/gmath_vec3.h"
#include "sampling/angles.h"
#include "sampling/warps.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#define SAMPLING_RAY_LANES 1

namespace ray_lanes {

// Two doubles; GCC and Clang give the vector type the arithmetic operators.
typedef __m128d Lanes;

// A vector of lanes, component by component.
struct Vec {
  Lanes x, y, z;
};

inline Lanes splat(double const& value) {
  return _mm_set1_pd(value);
}

// mask ? a : b, lane by lane, for masks of all ones or all zeros.
inline Lanes select(Lanes const& mask, Lanes const& a, Lanes const& b) {
  return _mm_or_pd(_mm_and_pd(mask, a), _mm_andnot_pd(mask, b));
}

// mask ? a : b, component by component.
inline Vec select(Lanes const& mask, Vec const& a, Vec const& b) {
  return Vec{select(mask, a.x, b.x), select(mask, a.y, b.y), select(mask, a.z, b.z)};
}

inline Lanes negate(Lanes const& a) {
  return _mm_xor_pd(a, _mm_set1_pd(-0.0));
}

// The u and v lanes of two consecutive samples.
inline void load_samples(GMathVec2<double> const* samples, Lanes& u, Lanes& v) {
  Lanes const s0 = _mm_loadu_pd(&samples[0].x);
  Lanes const s1 = _mm_loadu_pd(&samples[1].x);
  u = _mm_unpacklo_pd(s0, s1);
  v = _mm_unpackhi_pd(s0, s1);
}

// The concentric map of sampling::warps::to_unit_disk in lanes: the sector
// tests pick the numerator and the denominator of its one quotient (the
// denominator is the radius in every sector), then the sector's angle
// formula. The centre's guard (angle 0 where the radius is not positive)
// only fires there: the two other sectors have a positive radius.
inline void to_unit_disk(Lanes const& u, Lanes const& v, Lanes& radius, Lanes& angle) {
  Lanes const a = u * splat(2.0) - splat(1.0);
  Lanes const b = v * splat(2.0) - splat(1.0);
  Lanes const upper_right = _mm_cmpgt_pd(a, negate(b));  // a > -b
  Lanes const right = _mm_cmpgt_pd(a, b);                // a > b
  Lanes const bottom = _mm_cmpge_pd(a, b);               // a >= b
  Lanes const numerator = select(upper_right, select(right, b, a), select(bottom, a, b));
  radius = select(upper_right, select(right, a, b), select(bottom, negate(b), negate(a)));
  Lanes const t = numerator / radius;
  Lanes const sectors = select(upper_right, select(right, t, splat(2.0) - t),
                               select(bottom, t + splat(6.0), splat(4.0) - t));
  angle =
      _mm_and_pd(_mm_cmpgt_pd(radius, _mm_setzero_pd()), sectors * splat(k_sampling_quarter_pi));
}

// Lane k of `lanes`, taken in registers: reloading the upper half of a
// spilled pair from memory would wait on store forwarding.
template <int k>
inline double lane(Lanes const& lanes) {
  static_assert(k == 0 || k == 1, "two lanes");
  return _mm_cvtsd_f64(k == 0 ? lanes : _mm_unpackhi_pd(lanes, lanes));
}

// Lane k of a vector of lanes.
template <int k>
inline GMathVec3<double> lane(Vec const& v) {
  return GMathVec3<double>(lane<k>(v.x), lane<k>(v.y), lane<k>(v.z));
}

// Two doubles stored one by one, loaded as lanes with two 8-byte loads (one
// 16-byte load would wait for both stores to leave the store buffer).
inline Lanes load_pair(double const* values) {
  return _mm_loadh_pd(_mm_load_sd(values), values + 1);
}

// Stores lane k of a double into `out`.
template <int k>
inline void store_lane(Lanes const& lanes, double& out) {
  static_assert(k == 0 || k == 1, "two lanes");
  if (k == 0)
    _mm_storel_pd(&out, lanes);
  else
    _mm_storeh_pd(&out, lanes);
}

// The upper three rows of a matrix, each entry in both lanes.
struct Matrix {
  explicit Matrix(GMathMatrix4x4<double> const& matrix) {
    for (int i = 0; i < 12; ++i)
      m[i] = splat(matrix[i]);
  }

  // GMathMatrix4x4::transform_vector in lanes, terms in the same order.
  Vec transform_vector(Vec const& v) const {
    return Vec{m[0] * v.x + m[1] * v.y + m[2] * v.z, m[4] * v.x + m[5] * v.y + m[6] * v.z,
               m[8] * v.x + m[9] * v.y + m[10] * v.z};
  }

  // GMathMatrix4x4::transform_point in lanes, terms in the same order.
  Vec transform_point(Vec const& p) const {
    return Vec{m[0] * p.x + m[1] * p.y + m[2] * p.z + m[3],
               m[4] * p.x + m[5] * p.y + m[6] * p.z + m[7],
               m[8] * p.x + m[9] * p.y + m[10] * p.z + m[11]};
  }

  Lanes m[12];
};

// a * s + b * t, component by component (GMathVec3's a * s + b * t).
inline Vec combine(Vec const& a, Lanes const& s, Vec const& b, Lanes const& t) {
  return Vec{a.x * s + b.x * t, a.y * s + b.y * t, a.z * s + b.z * t};
}

// a . b, the products summed x, y, z.
inline Lanes dot(Vec const& a, Vec const& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

inline Vec splat(GMathVec3<double> const& v) {
  return Vec{splat(v.x), splat(v.y), splat(v.z)};
}

inline Vec operator+(Vec const& a, Vec const& b) {
  return Vec{a.x + b.x, a.y + b.y, a.z + b.z};
}

inline Vec operator-(Vec const& a, Vec const& b) {
  return Vec{a.x - b.x, a.y - b.y, a.z - b.z};
}

inline Vec operator*(Vec const& v, Lanes const& s) {
  return Vec{v.x * s, v.y * s, v.z * s};
}

// GMathVec3's cross(a, b) in lanes.
inline Vec cross(Vec const& a, Vec const& b) {
  return Vec{a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

// GMathVec3::length in lanes.
inline Lanes length(Vec const& v) {
  return _mm_sqrt_pd(v.x * v.x + v.y * v.y + v.z * v.z);
}

// safe_normalize (ray_math.h) in lanes: v times 1 / |v| where |v| > eps,
// else +0 (a lane of zero length divides by zero, then is masked).
inline Vec safe_normalize(Vec const& v, double const& eps) {
  Lanes const l = length(v);
  Lanes const keep = _mm_cmpgt_pd(l, splat(eps));
  Vec const unit = v * (splat(1.0) / l);
  return Vec{_mm_and_pd(keep, unit.x), _mm_and_pd(keep, unit.y), _mm_and_pd(keep, unit.z)};
}

// Calls f(first, u, v) with the u and v lanes of the pairs of
// samples[0..count-1] (an odd last sample is left to the caller); returns
// the number of samples walked.
template <typename F>
inline unsigned int for_each_sample_pair(GMathVec2<double> const* samples,
                                         unsigned int const& count, F const& f) {
  unsigned int i = 0;
  for (; i + 1 < count; i += 2) {
    Lanes u, v;
    load_samples(samples + i, u, v);
    f(i, u, v);
  }
  return i;
}

// |a - b|^2 with the squares summed x, y, z.
inline Lanes squared_distance(Vec const& a, Vec const& b) {
  Lanes const dx = a.x - b.x;
  Lanes const dy = a.y - b.y;
  Lanes const dz = a.z - b.z;
  return dx * dx + dy * dy + dz * dz;
}

// The fields every ray of a call shares: origin, type, time and, when the
// rays have differentials, the auxiliary origins and m_aux[0] (the larger
// distance of those origins from the origin, the same for every ray).
struct SharedFields {
  GMathVec3<double> origin;
  GMathRay::Type type;
  double time;
  bool differentials;
  GMathVec3<double> rx_origin;
  GMathVec3<double> ry_origin;
  double aux_origin;
};

// SharedFields of the rays that take the origin, type, time and (when it
// has them) the differential origins of `ray`, as GMathRay::set_differentials
// computes m_aux[0] from them.
inline SharedFields shared_fields(GMathRay const& ray) {
  return SharedFields{ray.m_origin,
                      ray.m_type,
                      ray.m_time,
                      ray.m_has_differentials,
                      ray.m_differential.m_rx_origin,
                      ray.m_differential.m_ry_origin,
                      ray.m_aux[0]};
}

// SharedFields of rays from `origin` of the given type and time, with
// differentials from that same origin when `differentials` holds: both
// auxiliary origins are the origin, so m_aux[0] is 0.
inline SharedFields shared_fields(GMathVec3<double> const& origin, GMathRay::Type const& type,
                                  double const& time, bool const& differentials) {
  return SharedFields{origin, type, time, differentials, origin, origin, 0.0};
}

// Samples per block of for_each_pair.
constexpr unsigned int k_block = 8;
static_assert(k_block % 2 == 0, "for_each_pair: a block holds whole pairs");

// Walks the pairs of samples[0..count-1] (an odd last sample is left to the
// caller) in blocks of up to k_block samples, in three steps per block:
// angle(u, v, kept) gives each pair's angle lanes (and keeps other lanes for
// build), then each sample's cosine and sine (one libm call per sample, as
// sampling::warps::detail::cos_sin), then build(first, kept, cos, sin) with
// `first` the index of the pair's first sample. Each libm call finds its
// angle long computed, and the ray work of a block follows its calls rather
// than waiting on each in turn. Returns the number of samples walked.
template <typename Angle, typename Build>
inline unsigned int for_each_pair(GMathVec2<double> const* samples, unsigned int const& count,
                                  Angle const& angle, Build const& build) {
  unsigned int i = 0;
  while (count - i >= 2) {
    unsigned int const pairs = (count - i) / 2 < k_block / 2 ? (count - i) / 2 : k_block / 2;
    Lanes angles[k_block / 2], kept[k_block / 2];
    for (unsigned int p = 0; p < pairs; ++p) {
      Lanes u, v;
      load_samples(samples + i + 2 * p, u, v);
      angles[p] = angle(u, v, kept[p]);
    }
    double cosines[k_block], sines[k_block];
    for (unsigned int p = 0; p < pairs; ++p) {
      sampling::warps::detail::cos_sin(lane<0>(angles[p]), cosines[2 * p], sines[2 * p]);
      sampling::warps::detail::cos_sin(lane<1>(angles[p]), cosines[2 * p + 1], sines[2 * p + 1]);
    }
    for (unsigned int p = 0; p < pairs; ++p, i += 2)
      build(i, kept[p], load_pair(cosines + 2 * p), load_pair(sines + 2 * p));
  }
  return i;
}

// Lane k of the vector v stored into `out`: x and y with one 16-byte store.
template <int k>
inline void store_lane(Vec const& v, GMathVec3<double>& out) {
  _mm_storeu_pd(&out.x, k == 0 ? _mm_unpacklo_pd(v.x, v.y) : _mm_unpackhi_pd(v.x, v.y));
  store_lane<k>(v.z, out.z);
}

// The derived fields of two rays, computed in lanes.
struct DerivedFields {
  Vec inverse_direction;
  int sign_x, sign_y, sign_z;  // bit k: the sign bit of lane k
  int xy, xz, yz;              // bit k: |x| >= |y|, |x| >= |z|, |y| >= |z| in lane k
  Lanes aux_direction;         // m_aux[1] with differentials
};

// Writes lane k of the rays described by write_rays into `ray`.
template <int k>
inline void write_lane(SharedFields const& shared, Vec const& direction, Vec const& rx,
                       Vec const& ry, DerivedFields const& derived, GMathRay& ray) {
  ray.m_origin = shared.origin;
  store_lane<k>(direction, ray.m_direction);
  store_lane<k>(derived.inverse_direction, ray.m_inverse_direction);
  ray.m_sign[0] = static_cast<unsigned int>(derived.sign_x >> k) & 1u;
  ray.m_sign[1] = static_cast<unsigned int>(derived.sign_y >> k) & 1u;
  ray.m_sign[2] = static_cast<unsigned int>(derived.sign_z >> k) & 1u;
  // set_direction's ax >= ay ? (ax >= az ? 0 : 2) : (ay >= az ? 1 : 2) from a
  // table of the eight outcomes, two bits each: outcomes 0-2 give 2, 3 gives
  // 0, 4 gives 1, 5 gives 2, 6 gives 1, 7 gives 0.
  unsigned int const outcome = static_cast<unsigned int>(
      ((derived.xy >> k) & 1) | (((derived.xz >> k) & 1) << 1) | (((derived.yz >> k) & 1) << 2));
  ray.m_major_axis = (0x192Au >> (2u * outcome)) & 3u;
  ray.m_type = shared.type;
  ray.m_time = shared.time;
  if (shared.differentials) {
    ray.m_differential.m_rx_origin = shared.rx_origin;
    store_lane<k>(rx, ray.m_differential.m_rx_direction);
    ray.m_differential.m_ry_origin = shared.ry_origin;
    store_lane<k>(ry, ray.m_differential.m_ry_direction);
    ray.m_has_differentials = true;
    ray.m_aux[0] = shared.aux_origin;
    store_lane<k>(derived.aux_direction, ray.m_aux[1]);
  } else {
    ray.m_has_differentials = false;
    ray.m_aux[0] = 0.0;
    ray.m_aux[1] = 0.0;
  }
  ray.m_aux_cleared[0] = 0.0;
  ray.m_aux_cleared[1] = 0.0;
}

// Writes two rays of directions `direction` and, with shared.differentials,
// auxiliary directions rx and ry (not read otherwise), lane 0 to *ray0 and
// lane 1 to *ray1; a null pointer skips its lane. The derived fields are
// GMathBasicRay::set_direction's and GMathRay::set_differentials' (m_aux[1]
// from the directions; m_aux[0] is shared).
inline void write_rays(SharedFields const& shared, Vec const& direction, Vec const& rx,
                       Vec const& ry, GMathRay* ray0, GMathRay* ray1) {
  DerivedFields derived;
  Lanes const one = splat(1.0);
  derived.inverse_direction = Vec{one / direction.x, one / direction.y, one / direction.z};
  derived.sign_x = _mm_movemask_pd(direction.x);
  derived.sign_y = _mm_movemask_pd(direction.y);
  derived.sign_z = _mm_movemask_pd(direction.z);
  Lanes const sign = splat(-0.0);
  Lanes const ax = _mm_andnot_pd(sign, direction.x);
  Lanes const ay = _mm_andnot_pd(sign, direction.y);
  Lanes const az = _mm_andnot_pd(sign, direction.z);
  derived.xy = _mm_movemask_pd(_mm_cmpge_pd(ax, ay));
  derived.xz = _mm_movemask_pd(_mm_cmpge_pd(ax, az));
  derived.yz = _mm_movemask_pd(_mm_cmpge_pd(ay, az));
  derived.aux_direction = _mm_setzero_pd();
  if (shared.differentials) {
    // The larger squared distance, the first when it is greater (maxpd's
    // rule, that of larger_squared_distance).
    derived.aux_direction =
        _mm_sqrt_pd(_mm_max_pd(squared_distance(rx, direction), squared_distance(ry, direction)));
  }
  if (ray0)
    write_lane<0>(shared, direction, rx, ry, derived, *ray0);
  if (ray1)
    write_lane<1>(shared, direction, rx, ry, derived, *ray1);
}

}  // namespace ray_lanes

#endif
