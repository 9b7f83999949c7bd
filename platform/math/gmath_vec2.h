#pragma once

// A 2D vector of the platform's math layer. Plain value record: two public
// components and the arithmetic the sampling code needs, written
// component by component so that every result is the plain IEEE expression.
template <typename T>
struct GMathVec2 {
  T x;
  T y;

  GMathVec2() : x(T(0)), y(T(0)) {}
  GMathVec2(T const& x_, T const& y_) : x(x_), y(y_) {}

  GMathVec2 operator-(GMathVec2 const& o) const { return GMathVec2(x - o.x, y - o.y); }
  bool operator==(GMathVec2 const& o) const { return x == o.x && y == o.y; }
};

static_assert(sizeof(GMathVec2<double>) == 16, "GMathVec2<double> is two packed doubles");
static_assert(sizeof(GMathVec2<float>) == 8, "GMathVec2<float> is two packed floats");
