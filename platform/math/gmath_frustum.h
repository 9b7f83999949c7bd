#pragma once

#include "platform/math/gmath_vec3.h"

// Up to four side planes bounding a packet of rays. Plane k is the set of
// points X with m_plane_normal[k] . X + m_plane_distance[k] = 0, where
// m_plane_distance[k] = -(m_plane_normal[k] . m_plane_point[k]). Normals
// need not be unit vectors. m_plane_count is 4, or 0 for "no frustum", in
// which case the plane arrays hold nothing meaningful.
//
// Which side is inside is the producer's convention; the ray generators
// document theirs (docs/rays.md).
class GMathFrustum {
 public:
  GMathVec3<double> m_plane_point[4];
  GMathVec3<double> m_plane_normal[4];
  double m_plane_distance[4];
  unsigned int m_plane_count;

  // No planes; every point, normal and distance zero.
  GMathFrustum() : m_plane_distance{}, m_plane_count(0) {}

  // m_plane_normal[k] . x + m_plane_distance[k], the products summed x, y, z
  // in that order: zero on plane k, its sign tells the side. k < 4.
  double evaluate(unsigned int const& k, GMathVec3<double> const& x) const {
    GMathVec3<double> const& n = m_plane_normal[k];
    return n.x * x.x + n.y * x.y + n.z * x.z + m_plane_distance[k];
  }
};

static_assert(sizeof(GMathFrustum) == 232,
              "GMathFrustum: four points, four normals, four distances, a 32-bit count");
