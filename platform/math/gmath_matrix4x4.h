#pragma once

#include "platform/math/gmath_vec3.h"

// 4x4 affine matrix, sixteen values in row-major order: element (r, c) is
// m[4r + c]; the translation sits in the fourth column (m[3], m[7], m[11]).
// Points are transformed by the first three rows; the fourth row is kept for
// completeness and never read by the transforms below.
template <typename T>
struct GMathMatrix4x4 {
  T m[16];

  // The identity.
  GMathMatrix4x4()
      : m{T(1), T(0), T(0), T(0), T(0), T(1), T(0), T(0),
          T(0), T(0), T(1), T(0), T(0), T(0), T(0), T(1)} {}

  T& operator()(int r, int c) { return m[4 * r + c]; }
  T const& operator()(int r, int c) const { return m[4 * r + c]; }
  T& operator[](int i) { return m[i]; }
  T const& operator[](int i) const { return m[i]; }

  // P[r] = m[r][0] p.x + m[r][1] p.y + m[r][2] p.z + m[r][3], terms in that order.
  GMathVec3<T> transform_point(GMathVec3<T> const& p) const {
    return GMathVec3<T>(m[0] * p.x + m[1] * p.y + m[2] * p.z + m[3],
                        m[4] * p.x + m[5] * p.y + m[6] * p.z + m[7],
                        m[8] * p.x + m[9] * p.y + m[10] * p.z + m[11]);
  }
  // The same without the translation.
  GMathVec3<T> transform_vector(GMathVec3<T> const& v) const {
    return GMathVec3<T>(m[0] * v.x + m[1] * v.y + m[2] * v.z, m[4] * v.x + m[5] * v.y + m[6] * v.z,
                        m[8] * v.x + m[9] * v.y + m[10] * v.z);
  }
};

static_assert(sizeof(GMathMatrix4x4<double>) == 128, "GMathMatrix4x4<double> is sixteen doubles");
