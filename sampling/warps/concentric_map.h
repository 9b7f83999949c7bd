#pragma once

#include "sampling/angles.h"

// The concentric square-to-disk map in polar form: the body of
// Sampling::to_unit_disk, inline for the sample loops that evaluate it once
// per ray. (u, v) in [0,1]^2 gives radius in [0, 1] and angle in
// (-pi/4, 7pi/4]; the centre gives radius -0.0, angle 0. The strict and
// non-strict comparisons decide which sector owns each diagonal; the guards
// only matter at the exact centre.
inline void concentric_map(double const& u, double const& v, double& radius, double& angle) {
  double const a = u * 2.0 - 1.0;
  double const b = v * 2.0 - 1.0;
  if (a > -b) {
    if (a > b) {
      radius = a;
      angle = (b / a) * k_sampling_quarter_pi;
    } else {
      radius = b;
      angle = (2.0 - a / b) * k_sampling_quarter_pi;
    }
  } else {
    if (a >= b) {
      radius = -b;
      angle = (-b > 0.0) ? (a / (-b) + 6.0) * k_sampling_quarter_pi : 0.0;
    } else {
      radius = -a;
      angle = (-a > 0.0) ? (4.0 - b / (-a)) * k_sampling_quarter_pi : 0.0;
    }
  }
}
