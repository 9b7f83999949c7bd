#include "tests/surface/surface_fixtures.h"

#include <cmath>
#include <cstring>

#include "sampling/surface/area_table.h"

GeometryMesh make_terrain() {
  GeometryMesh mesh;
  unsigned int const n = 12;
  for (unsigned int j = 0; j <= n; ++j) {
    for (unsigned int i = 0; i <= n; ++i) {
      double const x = 0.5 * i;
      double const y = 0.5 * j;
      mesh.add_vertex(GMathVec3<double>(x, y, 0.3 * std::sin(1.3 * x) * std::cos(0.7 * y)));
    }
  }
  for (unsigned int j = 0; j < n; ++j) {
    for (unsigned int i = 0; i < n; ++i) {
      unsigned int const a = j * (n + 1) + i;
      unsigned int const b = a + 1;
      unsigned int const c = a + n + 2;
      unsigned int const d = a + n + 1;
      unsigned int const group = i / 4;
      if (j % 2 == 0) {
        mesh.add_quad(a, b, c, d, group);
      } else {
        mesh.add_triangle(a, b, c, group);
        mesh.add_triangle(a, c, d, group);
      }
    }
  }
  return mesh;
}

void expect_valid_descriptors(GeometryObject const& object, unsigned int group,
                              CoreArray<GeometryPrimitiveSampleDescriptor> const& descriptors) {
  for (std::size_t k = 0; k < descriptors.count(); ++k) {
    GeometryPrimitiveSampleDescriptor const& d = descriptors[k];
    ASSERT_LT(d.m_primitive, object.get_primitive_count()) << "descriptor " << k;
    if (group != 0xFFFFFFFFu) {
      EXPECT_EQ(object.get_primitive_group(d.m_primitive), group) << "descriptor " << k;
    }
    EXPECT_TRUE(d.m_u >= 0.0f && d.m_u <= 1.0f) << "descriptor " << k << " u " << d.m_u;
    EXPECT_TRUE(d.m_v >= 0.0f && d.m_v <= 1.0f) << "descriptor " << k << " v " << d.m_v;
    if (object.get_primitive_vertex_count(d.m_primitive) == 3) {
      double const sum = static_cast<double>(d.m_u) + static_cast<double>(d.m_v);
      EXPECT_TRUE(sum <= 1.0 + 1e-7) << "descriptor " << k << " u + v " << sum;
    }
  }
}

void expect_same_descriptors(CoreArray<GeometryPrimitiveSampleDescriptor> const& a,
                             CoreArray<GeometryPrimitiveSampleDescriptor> const& b) {
  ASSERT_EQ(a.count(), b.count());
  for (std::size_t k = 0; k < a.count(); ++k) {
    EXPECT_EQ(std::memcmp(&a[k], &b[k], sizeof(GeometryPrimitiveSampleDescriptor)), 0)
        << "descriptor " << k;
  }
}

GeometryPrimitiveSampleDescriptor expected_descriptor(unsigned int primitive, unsigned int vertices,
                                                      std::mt19937& reference, DrawOrder order) {
  double const first = unit_from_u32(reference());
  double const second = unit_from_u32(reference());
  double u = order == DrawOrder::k_white ? first : second;
  double v = order == DrawOrder::k_white ? second : first;
  fold_to_triangle(vertices, u, v);
  return GeometryPrimitiveSampleDescriptor{primitive, static_cast<float>(u), static_cast<float>(v)};
}

void expect_descriptor(GeometryPrimitiveSampleDescriptor const& got,
                       GeometryPrimitiveSampleDescriptor const& want) {
  EXPECT_EQ(got.m_primitive, want.m_primitive);
  EXPECT_EQ(got.m_u, want.m_u);
  EXPECT_EQ(got.m_v, want.m_v);
}
