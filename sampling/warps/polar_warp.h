#pragma once

#include "sampling/warps.h"

// The uniform sphere warp with its frame under the name the uniform-sphere
// ray generator's sample loops call it by; the body is that of
// sampling::warps::sphere_uniform.
inline void sphere_uniform_frame(double const& u, double const& v, GMathVec3<double>& direction,
                                 GMathVec3<double>& tangent, GMathVec3<double>& bitangent) {
  sampling::warps::sphere_uniform(u, v, direction, tangent, bitangent);
}
