#pragma once

#include <cmath>
#include <cstddef>
#include <type_traits>

// A 3D vector of the platform's math layer: points, directions and normals.
// The operations are the component-wise ones the ray code relies on; a
// division by a scalar is a multiplication by its reciprocal (one division,
// three products), which is part of the numeric contract of the callers.
template <typename T>
struct GMathVec3 {
  T x;
  T y;
  T z;

  GMathVec3() : x(T(0)), y(T(0)), z(T(0)) {}
  GMathVec3(T const& x_, T const& y_, T const& z_) : x(x_), y(y_), z(z_) {}

  T& operator[](std::size_t i) { return i == 0 ? x : (i == 1 ? y : z); }
  T const& operator[](std::size_t i) const { return i == 0 ? x : (i == 1 ? y : z); }

  GMathVec3 operator-() const { return GMathVec3(-x, -y, -z); }
  GMathVec3 operator+(GMathVec3 const& o) const { return GMathVec3(x + o.x, y + o.y, z + o.z); }
  GMathVec3 operator-(GMathVec3 const& o) const { return GMathVec3(x - o.x, y - o.y, z - o.z); }
  GMathVec3 operator*(T const& s) const { return GMathVec3(x * s, y * s, z * s); }
  // Scaling by a float widens the float first.
  template <typename U = T,
            typename = typename std::enable_if<!std::is_same<U, float>::value>::type>
  GMathVec3 operator*(float const& s) const {
    T const w = static_cast<T>(s);
    return GMathVec3(x * w, y * w, z * w);
  }
  GMathVec3 operator/(T const& s) const {
    T const r = T(1) / s;
    return GMathVec3(x * r, y * r, z * r);
  }
  bool operator==(GMathVec3 const& o) const { return x == o.x && y == o.y && z == o.z; }

  // Euclidean length, sqrt(x*x + y*y + z*z) summed left to right.
  T length() const { return std::sqrt(x * x + y * y + z * z); }
};

// a x b = (a.y b.z - a.z b.y, a.z b.x - a.x b.z, a.x b.y - a.y b.x).
template <typename T>
inline GMathVec3<T> cross(GMathVec3<T> const& a, GMathVec3<T> const& b) {
  return GMathVec3<T>(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
}

static_assert(sizeof(GMathVec3<double>) == 24, "GMathVec3<double> is three packed doubles");
