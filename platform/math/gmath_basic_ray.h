#pragma once

#include <cmath>

#include "platform/math/gmath_vec3.h"

// The leading part of every ray: origin, direction, and what a ray tracer
// derives from the direction once per ray instead of once per box or
// triangle test.
//
// Derived data (refreshed by set_direction, never written by anyone else):
//  - m_inverse_direction: (1/d.x, 1/d.y, 1/d.z), three IEEE divisions. A zero
//    component gives an infinity of the zero's sign, which is what the slab
//    test of a box wants (the slab is then either never or always entered).
//  - m_sign[i]: 1 when d[i] has its sign bit set (negative values and -0.0),
//    else 0; it picks the near and far box bound per axis, bounds[m_sign[i]].
//  - m_major_axis: the axis of the largest |d[i]| (ties go to the lower
//    axis), the axis a watertight ray-triangle test shears along.
class GMathBasicRay {
 public:
  GMathVec3<double> m_origin;
  GMathVec3<double> m_direction;
  GMathVec3<double> m_inverse_direction;
  unsigned int m_sign[3];
  unsigned int m_major_axis;

  // Origin (0, 0, 0), direction (0, 0, 1).
  GMathBasicRay() { set_direction(GMathVec3<double>(0.0, 0.0, 1.0)); }
  GMathBasicRay(GMathVec3<double> const& origin, GMathVec3<double> const& direction)
      : m_origin(origin) {
    set_direction(direction);
  }

  // Stores the direction as given (not normalised) and refreshes the derived
  // data above. The only way a direction is written.
  void set_direction(GMathVec3<double> const& direction) {
    m_direction = direction;
    m_inverse_direction.x = 1.0 / direction.x;
    m_inverse_direction.y = 1.0 / direction.y;
    m_inverse_direction.z = 1.0 / direction.z;
    m_sign[0] = std::signbit(direction.x) ? 1u : 0u;
    m_sign[1] = std::signbit(direction.y) ? 1u : 0u;
    m_sign[2] = std::signbit(direction.z) ? 1u : 0u;
    double const ax = std::fabs(direction.x);
    double const ay = std::fabs(direction.y);
    double const az = std::fabs(direction.z);
    m_major_axis = ax >= ay ? (ax >= az ? 0u : 2u) : (ay >= az ? 1u : 2u);
  }
};

static_assert(sizeof(GMathBasicRay) == 88,
              "GMathBasicRay: origin, direction, inverse direction, three signs, major axis");
