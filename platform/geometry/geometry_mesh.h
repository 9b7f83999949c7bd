#pragma once

#include <vector>

#include "platform/geometry/geometry_object.h"
#include "platform/math/gmath_vec3.h"
#include "platform/platform_export.h"

// A polygon mesh of triangles and quads, each face in one primitive group.
//
// Geometry. Vertices have an object-space position and a velocity (zero
// unless set); in a context of time t a vertex sits at position + velocity t.
// A triangle (p0, p1, p2) evaluates at P(u, v) = p0 + u (p1 - p0) +
// v (p2 - p0) for u, v >= 0, u + v <= 1. A quad (p0, p1, p2, p3), corners in
// order around its boundary, evaluates bilinearly: P(u, v) = (1-u)(1-v) p0 +
// u (1-v) p1 + u v p2 + (1-u) v p3 on [0,1]^2. Uniform (u, v) is uniform per
// unit area on triangles and on parallelogram quads only.
//
// Sample scalar: an offset s along the unit object-space normal n = dP/du x
// dP/dv / |dP/du x dP/dv|. Evaluation returns the world image of P + s n, so
// a non-zero s lifts scattered points off the surface (by s in object
// units); the primitive boxes are widened by |s| to keep holding them. The
// world normal and tangent are those of the surface at (u, v) (see
// GeometryFragment).
//
// Area under a matrix M: a triangle measures |(M p1 - M p0) x (M p2 - M p0)|
// / 2; a quad measures as its two triangles (p0, p1, p2) and (p0, p2, p3),
// which is its exact area when it is planar.
//
// Groups: each face carries a group index; the group count is one more than
// the largest index used, and 1 for a mesh without faces.
//
// Building (add_*, set_*) is not thread-safe; the const queries are.
class PLATFORM_API GeometryMesh : public GeometryObject {
 public:
  GeometryMesh();
  ~GeometryMesh() override;

  // Appends a vertex and returns its index.
  unsigned int add_vertex(GMathVec3<double> const& position);
  // Velocity of vertex `vertex` (below the vertex count), object units per
  // unit of CtxEval::m_time.
  void set_vertex_velocity(unsigned int const& vertex, GMathVec3<double> const& velocity);
  // Appends a triangle or a quad over existing vertices in group `group`;
  // returns the primitive index.
  unsigned int add_triangle(unsigned int const& a, unsigned int const& b, unsigned int const& c,
                            unsigned int const& group);
  unsigned int add_quad(unsigned int const& a, unsigned int const& b, unsigned int const& c,
                        unsigned int const& d, unsigned int const& group);
  // Sets the value get_sample_scalar() reports (the evaluation offset).
  void set_sample_scalar(double const& scalar);

  unsigned int get_vertex_count() const { return static_cast<unsigned int>(m_positions.size()); }

  // Object-space position of a vertex at the context's time.
  GMathVec3<double> get_vertex(CtxEval const& context, unsigned int const& vertex) const;

  unsigned int const& get_group_count() const override;
  double get_sample_scalar() const override;
  unsigned int get_primitive_count() const override;
  unsigned int get_primitive_vertex_count(unsigned int const& primitive) const override;
  void get_primitive_bbox(CtxEval const& context, unsigned int const& primitive,
                          GMathBbox3<double>& box) const override;
  double get_primitive_area(CtxEval const& context, unsigned int const& primitive,
                            GMathMatrix4x4<double> const& matrix) const override;
  unsigned int get_primitive_group(unsigned int const& primitive) const override;
  void evaluate_sample(CtxEval const& context, GeometryFragment& fragment) const override;

 private:
  struct Face {
    unsigned int m_vertex[4];
    unsigned int m_vertex_count;
    unsigned int m_group;
  };

  unsigned int add_face(Face const& face);

  std::vector<GMathVec3<double>> m_positions;
  std::vector<GMathVec3<double>> m_velocities;
  std::vector<Face> m_faces;
  unsigned int m_group_count;
  double m_sample_scalar;
};
