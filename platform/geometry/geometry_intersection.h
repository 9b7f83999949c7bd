#pragma once

#include "platform/geometry/geometry_fragment.h"

// A fragment found by a ray: the surface point plus the ray parameter at
// which the ray met it. Code that only needs the surface point (the surface
// scattering, for one) uses it through its GeometryFragment part.
class GeometryIntersection : public GeometryFragment {
 public:
  // Ray parameter of the hit; 0 for fragments not produced by a ray.
  double m_distance;

  GeometryIntersection() : m_distance(0.0) {}
};
