#pragma once

#include "platform/math/gmath_vec2.h"
#include "platform/math/gmath_vec3.h"

// How a surface hit changes from one pixel to the next: what the geometry
// module derives at a hit from the ray's differentials and the surface's
// parametrisation, for texture filtering and for ray generators that hand
// differentials on.
//
// The first two members are the change of the hit point per image step in x
// and in y; the ray generators read these two only. The rest is what the
// geometry module computes along with them, kept here so that shading does not
// redo it:
//  - m_dndx, m_dndy: the change of the unit shading normal per image step
//    (zero on a flat surface or where the module has no normal derivatives);
//  - m_duvdx, m_duvdy: the change of the surface parameters (u, v) per image
//    step, (du/dx, dv/dx) and (du/dy, dv/dy), which select a texture's
//    filter footprint.
// Zero vectors mean "no change known": a hit without differentials.
class GeometryDifferential {
 public:
  GMathVec3<double> m_dpdx;
  GMathVec3<double> m_dpdy;
  GMathVec3<double> m_dndx;
  GMathVec3<double> m_dndy;
  GMathVec2<double> m_duvdx;
  GMathVec2<double> m_duvdy;

  // Every member zero: no change known.
  GeometryDifferential() {}
  // The position differentials; the rest zero.
  GeometryDifferential(GMathVec3<double> const& dpdx, GMathVec3<double> const& dpdy)
      : m_dpdx(dpdx), m_dpdy(dpdy) {}
};

static_assert(sizeof(GeometryDifferential) == 128,
              "GeometryDifferential: four GMathVec3<double>, two GMathVec2<double>");
