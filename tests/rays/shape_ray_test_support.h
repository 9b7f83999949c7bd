#pragma once

#include <cmath>

#include "platform/math/gmath_matrix4x4.h"
#include "platform/math/gmath_vec3.h"
#include "sampling/ray_generators.h"

// Fixtures shared by the shape generator tests.

// A frame with translation, rotation (0.7 rad about (1, 2, 2) / 3) and an
// uneven scale (2.5, 0.75, 1.3): its columns are orthogonal but not unit.
inline GMathMatrix4x4<double> test_frame() {
  double const a[3] = {1.0 / 3.0, 2.0 / 3.0, 2.0 / 3.0};
  double const c = std::cos(0.7), s = std::sin(0.7);
  double const scale[3] = {2.5, 0.75, 1.3};
  double const translation[3] = {0.3, -1.2, 2.0};
  GMathMatrix4x4<double> m;
  for (int r = 0; r < 3; ++r) {
    for (int k = 0; k < 3; ++k) {
      // Rodrigues: c I + s [a]x + (1 - c) a a^T.
      double const cross_term =
          (r == k) ? 0.0 : ((k == (r + 1) % 3) ? -a[3 - r - k] : a[3 - r - k]);
      double const rotation = (r == k ? c : 0.0) + s * cross_term + (1.0 - c) * a[r] * a[k];
      m(r, k) = rotation * scale[k];
    }
    m(r, 3) = translation[r];
  }
  return m;
}

// Local coordinates of the world point p under a frame with orthogonal
// columns.
inline GMathVec3<double> to_local(GMathMatrix4x4<double> const& frame, GMathVec3<double> const& p) {
  GMathVec3<double> const d(p.x - frame(0, 3), p.y - frame(1, 3), p.z - frame(2, 3));
  GMathVec3<double> local;
  for (int k = 0; k < 3; ++k) {
    GMathVec3<double> const column(frame(0, k), frame(1, k), frame(2, k));
    local[k] = (d.x * column.x + d.y * column.y + d.z * column.z) /
               (column.x * column.x + column.y * column.y + column.z * column.z);
  }
  return local;
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
  void discard_clipped_samples(GMathVec3<double> const& normal) {
    line.discard_clipped_samples(normal);
    plane.discard_clipped_samples(normal);
    disk.discard_clipped_samples(normal);
  }
  void disable_clipping() {
    line.disable_clipping();
    plane.disable_clipping();
    disk.disable_clipping();
  }
  char const* name(SampleRayGenerator const* g) const {
    return g == &line ? "line" : (g == &plane ? "plane" : "disk");
  }
};
