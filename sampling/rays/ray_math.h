#pragma once

#include <cmath>

#include "platform/math/gmath_vec2.h"
#include "platform/math/gmath_vec3.h"

// Internal vector helpers shared by the ray generators. Not exported: they
// are inlined where used.

// Threshold below which a guarded normalisation yields the zero vector.
constexpr double k_ray_normalize_epsilon = 1e-8;

// The callers' contract on samples and packet corners: both coordinates in
// [0, 1].
inline bool in_unit_square(GMathVec2<double> const& sample) {
  return sample.x >= 0.0 && sample.x <= 1.0 && sample.y >= 0.0 && sample.y <= 1.0;
}

// a . b, the products summed x, y, z in that order.
inline double dot(GMathVec3<double> const& a, GMathVec3<double> const& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

// v / |v| (as v times 1 / |v|) when |v| > eps, else (0, 0, 0).
inline GMathVec3<double> safe_normalize(GMathVec3<double> const& v, double const& eps) {
  double const length = v.length();
  if (length > eps)
    return v * (1.0 / length);
  return GMathVec3<double>(0.0, 0.0, 0.0);
}

// Two unit tangents t1, t2 of the unit vector n with t1 x t2 = n, so that
// (t1, t2, n) is a right-handed orthonormal frame. t1 is the Y axis crossed
// with n, normalised; when n is (anti)parallel to Y a fixed pair is used:
// (1,0,0), (0,0,1) for n.y <= 0 and (0,0,1), (1,0,0) for n.y > 0.
inline void orthonormal_basis(GMathVec3<double> const& n, GMathVec3<double>& t1,
                              GMathVec3<double>& t2) {
  t1 = cross(GMathVec3<double>(0.0, 1.0, 0.0), n);
  double const length = t1.length();
  if (length > k_ray_normalize_epsilon) {
    t1 = t1 * (1.0 / length);
    t2 = cross(n, t1);
  } else if (n.y <= 0.0) {
    t1 = GMathVec3<double>(1.0, 0.0, 0.0);
    t2 = GMathVec3<double>(0.0, 0.0, 1.0);
  } else {
    t1 = GMathVec3<double>(0.0, 0.0, 1.0);
    t2 = GMathVec3<double>(1.0, 0.0, 0.0);
  }
}
