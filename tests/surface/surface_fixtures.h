#pragma once

// Objects and checks shared by the surface scattering tests.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "platform/core/core_array.h"
#include "platform/geometry/geometry_fragment.h"
#include "platform/geometry/geometry_mesh.h"
#include "platform/geometry/geometry_primitive_sample_descriptor.h"
#include "sampling/sampling.h"
#include "sampling/surface/area_table.h"

using Descriptors = CoreArray<GeometryPrimitiveSampleDescriptor>;
using Vectors = CoreArray<GMathVec3<double>>;
using Matrix = GMathMatrix4x4<double>;
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
    return ++m_calls[1], m_primitives[i].m_vertex_count;
  }
  void get_primitive_bbox(CtxEval const&, unsigned int const& i,
                          GMathBbox3<double>& box) const override {
    box = GMathBbox3<double>(GMathVec3<double>(10.0 * i, 0, 0),
                             GMathVec3<double>(10.0 * i + 1, 1, 0));
  }
  double get_primitive_area(CtxEval const&, unsigned int const& i,
                            Matrix const& matrix) const override {
    return ++m_calls[0], m_primitives[i].m_area * matrix.m[0] * matrix.m[0];
  }
  unsigned int get_primitive_group(unsigned int const& i) const override {
    return ++m_calls[2], m_primitives[i].m_group;
  }
  void evaluate_sample(CtxEval const&, GeometryFragment& fragment) const override {
    fragment.m_world_position =
        GMathVec3<double>(10.0 * fragment.m_primitive + fragment.m_uvw.x, fragment.m_uvw.y, 0.0);
  }

  mutable unsigned int m_calls[3] = {0, 0, 0};  // area, vertex count, group

 private:
  std::vector<Primitive> m_primitives;
  unsigned int m_group_count;
};

// Adds the right triangle (x, y), (x + a, y), (x, y + b) in the z = 0
// plane, of area a b / 2; with `d` the quad (x, y), (x + a, y),
// (x + a, y + b), (x, y + b).
inline unsigned int add_face(GeometryMesh& mesh, double x, double y, double a, double b,
                             unsigned int group = 0, bool quad = false) {
  unsigned int const p = mesh.add_vertex(GMathVec3<double>(x, y, 0));
  unsigned int const q = mesh.add_vertex(GMathVec3<double>(x + a, y, 0));
  if (!quad)
    return mesh.add_triangle(p, q, mesh.add_vertex(GMathVec3<double>(x, y + b, 0)), group);
  unsigned int const r = mesh.add_vertex(GMathVec3<double>(x + a, y + b, 0));
  return mesh.add_quad(p, q, r, mesh.add_vertex(GMathVec3<double>(x, y + b, 0)), group);
}

// A bumpy 12 x 12 heightfield over [0, 6]^2: quads in the even rows,
// triangle pairs in the odd ones; three groups by column band.
inline GeometryMesh make_terrain() {
  GeometryMesh mesh;
  unsigned int const n = 12;
  for (unsigned int j = 0; j <= n; ++j)
    for (unsigned int i = 0; i <= n; ++i)
      mesh.add_vertex(
          GMathVec3<double>(0.5 * i, 0.5 * j, 0.3 * std::sin(0.65 * i) * std::cos(0.35 * j)));
  for (unsigned int j = 0; j < n; ++j) {
    for (unsigned int i = 0; i < n; ++i) {
      unsigned int const a = j * (n + 1) + i, b = a + 1, c = a + n + 2, d = a + n + 1;
      if (j % 2 == 0) {
        mesh.add_quad(a, b, c, d, i / 4);
      } else {
        mesh.add_triangle(a, b, c, i / 4);
        mesh.add_triangle(a, c, d, i / 4);
      }
    }
  }
  return mesh;
}

inline bool same_descriptors(Descriptors const& a, Descriptors const& b) {
  return a.count() == b.count() &&
         (a.empty() || std::memcmp(a.data(), b.data(), a.count() * sizeof a[0]) == 0);
}

// The descriptor a placement writes from the next two outputs of
// `reference`: white noise takes (u, v) from (first, second), a blue-noise
// dart from (second, first); both fold on triangles.
inline GeometryPrimitiveSampleDescriptor expected_descriptor(unsigned int primitive,
                                                             unsigned int vertices,
                                                             std::mt19937& reference, bool dart) {
  double const first = unit_from_u32(reference());
  double const second = unit_from_u32(reference());
  double u = dart ? second : first, v = dart ? first : second;
  fold_to_triangle(vertices, u, v);
  return GeometryPrimitiveSampleDescriptor{primitive, static_cast<float>(u), static_cast<float>(v)};
}

inline bool operator==(GeometryPrimitiveSampleDescriptor const& a,
                       GeometryPrimitiveSampleDescriptor const& b) {
  return a.m_primitive == b.m_primitive && a.m_u == b.m_u && a.m_v == b.m_v;
}
