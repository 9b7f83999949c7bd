#pragma once

#include <cmath>

#include "platform/math/gmath_frustum.h"
#include "platform/math/gmath_vec2.h"
#include "platform/math/gmath_vec3.h"
#include "sampling/rays/ray_math.h"

// Internal helpers of the shape ray generators (sphere, line, plane, disk).
// Not exported: they are inlined where used.

// Weight of the corner sum in the centroid vector that orients and widens
// the side planes of a shape frustum. Its size only matters for the widening
// (the orientation reads its sign alone): four unit corners sum to at most 4,
// so the added tilt stays below a tenth of the normal's length.
constexpr double k_shape_frustum_centroid_factor = 0.025;
static_assert(k_shape_frustum_centroid_factor == 0x1.999999999999ap-6, "0.025, nearest double");

// A spread reduction clamped to [0, 1]: 0 unless it is greater than 0 (so a
// NaN gives 0), 1 when it is at least 1.
inline double clamp_spread_reduction(double const& spread_reduction) {
  if (!(spread_reduction > 0.0))
    return 0.0;
  if (spread_reduction >= 1.0)
    return 1.0;
  return spread_reduction;
}

// Unit direction towards to_sample + displacement, or the zero vector when
// that target lies within 1e-8 of the ray origin.
inline GMathVec3<double> aim_displaced(GMathVec3<double> const& to_sample,
                                       GMathVec3<double> const& displacement) {
  return safe_normalize(to_sample + displacement, k_ray_normalize_epsilon);
}

// Corner k of the sample box [corner0, corner1], counter-clockwise from the
// low corner: (umin, vmin), (umax, vmin), (umax, vmax), (umin, vmax).
inline GMathVec2<double> box_corner(GMathVec2<double> const& corner0,
                                    GMathVec2<double> const& corner1, unsigned int const& k) {
  return GMathVec2<double>((k == 1 || k == 2) ? corner1.x : corner0.x,
                           k < 2 ? corner0.y : corner1.y);
}

// Fills the four side planes through `origin` of the rays towards the corner
// vectors c[0..3] (counter-clockwise, as box_corner orders them). Side k
// holds the rays of corners k and k + 1: N_k = c_k x (c_(k+1) - c_k).
//  - orient: each normal is turned towards the centroid vector S (a NaN dot
//    product also flips), so the inner side is N . X + d >= 0 whatever the
//    winding of the corners;
//  - widen: each normal is tilted towards S by S times its own length, which
//    turns the plane outwards, for shapes whose box edges are curves.
// Normals are not normalised; m_plane_distance[k] = -(N_k . origin).
inline void fill_shape_frustum(GMathVec3<double> const (&c)[4], bool const& orient,
                               bool const& widen, GMathVec3<double> const& origin,
                               GMathFrustum& frustum) {
  GMathVec3<double> n[4];
  for (unsigned int k = 0; k < 4; ++k)
    n[k] = cross(c[k], c[(k + 1) & 3u] - c[k]);
  GMathVec3<double> const s = (((c[0] + c[1]) + c[2]) + c[3]) * k_shape_frustum_centroid_factor;
  for (unsigned int k = 0; k < 4; ++k) {
    if (orient && !(n[k].x * s.x + n[k].y * s.y + n[k].z * s.z >= 0.0))
      n[k] = -n[k];
    if (widen)
      n[k] = n[k] + s * n[k].length();
  }
  frustum.m_plane_count = 4;
  for (unsigned int k = 0; k < frustum.m_plane_count; ++k) {
    frustum.m_plane_point[k] = origin;
    frustum.m_plane_normal[k] = n[k];
    frustum.m_plane_distance[k] = -(n[k].x * origin.x + n[k].y * origin.y + n[k].z * origin.z);
  }
}
