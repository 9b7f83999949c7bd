#pragma once

// Objects and checks shared by the surface scattering tests.

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "platform/core/core_array.h"
#include "platform/geometry/geometry_fragment.h"
#include "platform/geometry/geometry_mesh.h"
#include "platform/geometry/geometry_primitive_sample_descriptor.h"

using Descriptors = CoreArray<GeometryPrimitiveSampleDescriptor>;
using Vectors = CoreArray<GMathVec3<double>>;
unsigned int const k_all = 0xFFFFFFFFu;

// An object whose primitives have preset areas (scaled by the matrix's
// first diagonal element, squared), vertex counts and groups, and which
// counts the calls the area table makes. Sample i evaluates to
// (10 i + u, v, 0).
class TableObject : public GeometryObject {
 public:
  struct Primitive {
    double m_area;
    unsigned int m_vertex_count;
    unsigned int m_group;
  };
  explicit TableObject(std::vector<Primitive> const& primitives, unsigned int group_count = 1)
      : m_primitives(primitives), m_group_count(group_count) {}

  unsigned int const& get_group_count() const override { return m_group_count; }
  double get_sample_scalar() const override { return 0.0; }
  unsigned int get_primitive_count() const override {
    return static_cast<unsigned int>(m_primitives.size());
  }
  unsigned int get_primitive_vertex_count(unsigned int const& i) const override {
    ++m_vertex_count_calls;
    return m_primitives[i].m_vertex_count;
  }
  void get_primitive_bbox(CtxEval const&, unsigned int const& i,
                          GMathBbox3<double>& box) const override {
    box = GMathBbox3<double>(GMathVec3<double>(10.0 * i, 0, 0),
                             GMathVec3<double>(10.0 * i + 1, 1, 0));
  }
  double get_primitive_area(CtxEval const&, unsigned int const& i,
                            GMathMatrix4x4<double> const& matrix) const override {
    ++m_area_calls;
    return m_primitives[i].m_area * matrix.m[0] * matrix.m[0];
  }
  unsigned int get_primitive_group(unsigned int const& i) const override {
    ++m_group_calls;
    return m_primitives[i].m_group;
  }
  void evaluate_sample(CtxEval const&, GeometryFragment& fragment) const override {
    fragment.m_world_position =
        GMathVec3<double>(10.0 * fragment.m_primitive + fragment.m_uvw.x, fragment.m_uvw.y, 0.0);
  }

  mutable unsigned int m_area_calls = 0;
  mutable unsigned int m_vertex_count_calls = 0;
  mutable unsigned int m_group_calls = 0;

 private:
  std::vector<Primitive> m_primitives;
  unsigned int m_group_count;
};

// Adds the right triangle (x, y), (x + a, y), (x, y + b) in the z = 0
// plane, of area a b / 2.
inline unsigned int add_right_triangle(GeometryMesh& mesh, double x, double y, double a, double b,
                                       unsigned int group = 0) {
  unsigned int const p = mesh.add_vertex(GMathVec3<double>(x, y, 0));
  unsigned int const q = mesh.add_vertex(GMathVec3<double>(x + a, y, 0));
  unsigned int const r = mesh.add_vertex(GMathVec3<double>(x, y + b, 0));
  return mesh.add_triangle(p, q, r, group);
}

// A bumpy 12 x 12 heightfield over [0, 6]^2: quads in the even rows,
// triangle pairs in the odd ones; three groups by column band.
GeometryMesh make_terrain();

// Every descriptor names a primitive of the selected group, with
// coordinates in [0, 1] and, on triangles, u + v <= 1 (up to the float
// narrowing of the stored coordinates).
void expect_valid_descriptors(GeometryObject const& object, unsigned int group,
                              CoreArray<GeometryPrimitiveSampleDescriptor> const& descriptors);

// Two descriptor arrays are identical, bit for bit.
void expect_same_descriptors(CoreArray<GeometryPrimitiveSampleDescriptor> const& a,
                             CoreArray<GeometryPrimitiveSampleDescriptor> const& b);

// The descriptor a placement writes from the next two outputs of
// `reference`: white noise takes (u, v) from (first, second), a blue-noise
// dart from (second, first); both fold on triangles.
enum class DrawOrder { k_white, k_dart };
GeometryPrimitiveSampleDescriptor expected_descriptor(unsigned int primitive, unsigned int vertices,
                                                      std::mt19937& reference, DrawOrder order);

// Field-by-field equality with the expected descriptor.
void expect_descriptor(GeometryPrimitiveSampleDescriptor const& got,
                       GeometryPrimitiveSampleDescriptor const& want);
