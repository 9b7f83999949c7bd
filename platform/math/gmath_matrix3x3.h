#pragma once

#include "platform/math/gmath_vec3.h"

// 3x3 matrix, nine values in row-major order: element (r, c) is m[3r + c].
template <typename T>
struct GMathMatrix3x3 {
  T m[9];

  // The identity.
  GMathMatrix3x3() : m{T(1), T(0), T(0), T(0), T(1), T(0), T(0), T(0), T(1)} {}
  GMathMatrix3x3(T const& m00, T const& m01, T const& m02, T const& m10, T const& m11, T const& m12,
                 T const& m20, T const& m21, T const& m22)
      : m{m00, m01, m02, m10, m11, m12, m20, m21, m22} {}

  // Column c as a vector (elements c, c + 3, c + 6).
  GMathVec3<T> column(int c) const { return GMathVec3<T>(m[c], m[c + 3], m[c + 6]); }
};

static_assert(sizeof(GMathMatrix3x3<double>) == 72, "GMathMatrix3x3<double> is nine doubles");
