#pragma once

#include "platform/math/gmath_vec3.h"

// The two auxiliary rays that travel with a main ray, one for a step of one
// pixel in image x and one in image y. Origins are absolute points and
// directions absolute directions (not differences from the main ray); how a
// direction is scaled is up to the producer (docs/rays.md lists what each ray
// generator writes).
class GMathRayDifferential {
 public:
  GMathVec3<double> m_rx_origin;
  GMathVec3<double> m_rx_direction;
  GMathVec3<double> m_ry_origin;
  GMathVec3<double> m_ry_direction;

  // All four vectors zero.
  GMathRayDifferential() {}
};

static_assert(sizeof(GMathRayDifferential) == 96, "GMathRayDifferential: four GMathVec3<double>");
