#pragma once

#include <cstdint>

#include "platform/geometry/ctx_eval.h"
#include "platform/math/gmath_matrix4x4.h"
#include "platform/math/gmath_vec3.h"
#include "platform/platform_export.h"

class GeometryObject;

// A point on the surface of a geometry object: which object and primitive,
// where on the primitive, and, once evaluated, where in the world.
//
// The caller fills the input fields (the two object references, the sample
// scalar, the matrix, the primitive and the parametric coordinates) and
// calls compute_world_sample, which writes the three world-space fields. The
// world fields follow each other in this order, position first, then the
// two surface vectors:
//  - m_world_position: the surface point under m_matrix;
//  - m_world_normal: the unit geometric normal in world space, the
//    normalised cross product of the world tangents dP/du and dP/dv (so a
//    mirroring matrix flips it); the zero vector on a degenerate primitive;
//  - m_world_dpdu: the world tangent dP/du, not normalised (its length is
//    the world distance per unit of u).
class PLATFORM_API GeometryFragment {
 public:
  // The object whose primitive is evaluated.
  GeometryObject const* m_object;
  // The object the fragment was reached through (an instancing parent, or
  // the object itself); kept for shading, never evaluated.
  GeometryObject const* m_root_object;
  // The evaluated object's get_sample_scalar().
  double m_sample_scalar;
  // Object-to-world matrix.
  GMathMatrix4x4<double> m_matrix;
  // Primitive index within m_object.
  std::uint32_t m_primitive;
  // Parametric coordinates (u, v, w); surfaces read u and v.
  GMathVec3<double> m_uvw;

  GMathVec3<double> m_world_position;
  GMathVec3<double> m_world_normal;
  GMathVec3<double> m_world_dpdu;

  GeometryFragment();

  // Evaluates m_object at (m_primitive, m_uvw) in the given context and
  // writes the three world fields. m_object must be set.
  void compute_world_sample(CtxEval const& context);
};
