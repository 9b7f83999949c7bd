#pragma once

#include <cmath>

#include "platform/math/gmath_vec3.h"
#include "sampling/angles.h"

// The polar constructions the warps end with, and the uniform sphere warp
// with its frame, inline: the bodies of the Sampling warps, shared with the
// ray generators' sample loops so that those evaluate the very same
// arithmetic without a call per ray.

// Writes (cos(phi) rho, sin(phi) rho, z).
inline void polar_point(double const& phi, double const& rho, double const& z,
                        GMathVec3<double>& out) {
  out.x = std::cos(phi) * rho;
  out.y = std::sin(phi) * rho;
  out.z = z;
}

// The same, plus tangent (increasing azimuth) and bitangent (towards +z).
inline void polar_frame(double const& phi, double const& rho, double const& z,
                        GMathVec3<double>& out, GMathVec3<double>& tangent,
                        GMathVec3<double>& bitangent) {
  double const c = std::cos(phi);
  double const s = std::sin(phi);
  out.x = c * rho;
  out.y = s * rho;
  out.z = z;
  tangent.x = -s;
  tangent.y = c;
  tangent.z = 0.0;
  bitangent.x = -z * c;
  bitangent.y = -z * s;
  bitangent.z = rho;
}

// Uniform direction on the unit sphere of (u, v) in [0,1]^2, z = 1 - 2u and
// azimuth 2 pi v, with its frame: the body of Sampling::sphere_uniform.
inline void sphere_uniform_frame(double const& u, double const& v, GMathVec3<double>& direction,
                                 GMathVec3<double>& tangent, GMathVec3<double>& bitangent) {
  double const z = 1.0 - u * 2.0;
  polar_frame(k_sampling_two_pi * v, std::sqrt(1.0 - z * z), z, direction, tangent, bitangent);
}
