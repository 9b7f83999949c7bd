#pragma once

#include "platform/math/gmath_matrix4x4.h"

// A placement that scales by (sx, sy, sz), then moves by (tx, ty, tz).
inline GMathMatrix4x4<double> scaled_and_moved(double sx, double sy, double sz, double tx,
                                               double ty, double tz) {
  GMathMatrix4x4<double> m;
  m(0, 0) = sx;
  m(1, 1) = sy;
  m(2, 2) = sz;
  m(0, 3) = tx;
  m(1, 3) = ty;
  m(2, 3) = tz;
  return m;
}
