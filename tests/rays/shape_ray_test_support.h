#pragma once

#include "platform/math/gmath_matrix4x4.h"
#include "platform/math/gmath_vec3.h"
#include "sampling/ray_generators.h"
#include "sampling/rays/ray_math.h"
#include "tests/support/ray_bits.h"

// Fixtures shared by the shape generator tests.

// A frame with translation, rotation and an uneven scale (2.5, 0.75, 1.3):
// its columns are orthogonal but not unit.
inline GMathMatrix4x4<double> test_frame() {
  GMathVec3<double> axis[3];
  axis[2] = unit(GMathVec3<double>(1.0, 2.0, 2.0));
  orthonormal_basis(axis[2], axis[0], axis[1]);
  double const scale[3] = {2.5, 0.75, 1.3}, translation[3] = {0.3, -1.2, 2.0};
  GMathMatrix4x4<double> m;
  for (int r = 0; r < 3; ++r) {
    for (int c = 0; c < 3; ++c)
      m(r, c) = axis[c][r] * scale[c];
    m(r, 3) = translation[r];
  }
  return m;
}

// The line, plane and disk generators, placed by one frame and shooting from
// one origin, switched together.
struct PlacedShapes {
  LineRayGenerator line;
  PlaneRayGenerator plane;
  DiskRayGenerator disk;
  SampleRayGenerator const* all[3] = {&line, &plane, &disk};

  // Spread reduction x for all three, y for the plane and disk.
  void init(GMathVec3<double> const& origin, GMathMatrix4x4<double> const& frame,
            double const& radius, double const& reduction_x, double const& reduction_y) {
    line.init(origin, frame, reduction_x);
    plane.init(origin, frame, reduction_x, reduction_y);
    disk.init(origin, frame, radius, reduction_x, reduction_y);
  }
  char const* name(SampleRayGenerator const* g) const {
    return g == &line ? "line" : (g == &plane ? "plane" : "disk");
  }
};
