#pragma once

#include <cstddef>

// A 2D vector of the platform's math layer. Plain value record: two public
// components and the arithmetic the sampling code needs, written
// component by component so that every result is the plain IEEE expression.
template <typename T>
struct GMathVec2 {
  T x;
  T y;

  GMathVec2() : x(T(0)), y(T(0)) {}
  GMathVec2(T const& x_, T const& y_) : x(x_), y(y_) {}

  T& operator[](std::size_t i) { return i == 0 ? x : y; }
  T const& operator[](std::size_t i) const { return i == 0 ? x : y; }

  GMathVec2 operator-() const { return GMathVec2(-x, -y); }
  GMathVec2 operator+(GMathVec2 const& o) const { return GMathVec2(x + o.x, y + o.y); }
  GMathVec2 operator-(GMathVec2 const& o) const { return GMathVec2(x - o.x, y - o.y); }
  GMathVec2 operator*(T const& s) const { return GMathVec2(x * s, y * s); }
  bool operator==(GMathVec2 const& o) const { return x == o.x && y == o.y; }
  bool operator!=(GMathVec2 const& o) const { return !(*this == o); }
};

template <typename T>
inline GMathVec2<T> operator*(T const& s, GMathVec2<T> const& v) {
  return GMathVec2<T>(s * v.x, s * v.y);
}

static_assert(sizeof(GMathVec2<double>) == 16, "GMathVec2<double> is two packed doubles");
static_assert(sizeof(GMathVec2<float>) == 8, "GMathVec2<float> is two packed floats");
