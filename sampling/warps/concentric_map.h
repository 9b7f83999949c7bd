#pragma once

#include "sampling/warps.h"

// The concentric square-to-disk map under the name the library's sample
// loops call it by; the body is sampling::warps::to_unit_disk.
inline void concentric_map(double const& u, double const& v, double& radius, double& angle) {
  sampling::warps::to_unit_disk(u, v, radius, angle);
}
