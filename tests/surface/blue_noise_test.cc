#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "sampling/sampling.h"
#include "sampling/surface/area_table.h"
#include "sampling/surface/blue_noise_placement.h"
#include "tests/surface/surface_fixtures.h"

namespace {

void add_square(GeometryMesh& mesh, double x, double y, double side, unsigned int group) {
  unsigned int const a = mesh.add_vertex(GMathVec3<double>(x, y, 0));
  unsigned int const b = mesh.add_vertex(GMathVec3<double>(x + side, y, 0));
  unsigned int const c = mesh.add_vertex(GMathVec3<double>(x + side, y + side, 0));
  unsigned int const d = mesh.add_vertex(GMathVec3<double>(x, y + side, 0));
  mesh.add_quad(a, b, c, d, group);
}

// Smallest distance between two points that share a tree (same group, or
// any two when `one_tree`), and between points of different groups.
void closest_pairs(GeometryObject const& object, Descriptors const& descriptors,
                   Vectors const& positions, bool one_tree, double& same, double& across) {
  same = across = 1e300;
  for (std::size_t i = 0; i < positions.count(); ++i) {
    for (std::size_t j = i + 1; j < positions.count(); ++j) {
      double const d = (positions[i] - positions[j]).length();
      bool const shared = one_tree || object.get_primitive_group(descriptors[i].m_primitive) ==
                                          object.get_primitive_group(descriptors[j].m_primitive);
      (shared ? same : across) = std::min(shared ? same : across, d);
    }
  }
}

}  // namespace

TEST(SurfaceBlueNoise, ExactPlacementsOnSmallMeshes) {
  // One triangle of area 1, count 1: spacing 1, and the point from the
  // second and first outputs of the generator, in that order.
  GeometryMesh triangle;
  add_right_triangle(triangle, 0, 0, 1, 2);
  Descriptors descriptors;
  Vectors positions, a, b;
  double spacing = 0.0;
  EXPECT_TRUE(Sampling::surface_blue_noise_count(CtxEval(), triangle, GMathMatrix4x4<double>(), 1,
                                                 descriptors, positions, a, b, spacing, k_all));
  std::mt19937 reference(1);
  ASSERT_EQ(descriptors.count(), 1u);
  expect_descriptor(descriptors[0], expected_descriptor(0, 3, reference, DrawOrder::k_dart));
  EXPECT_EQ(spacing, 1.0);
  ASSERT_EQ(positions.count(), 1u);
  EXPECT_EQ(positions[0].x, static_cast<double>(descriptors[0].m_u));

  // Density 1.5 on it: count 1; the expected 1.5 costs one draw for its
  // fraction before the dart's two.
  EXPECT_TRUE(Sampling::surface_blue_noise_density(CtxEval(), triangle, GMathMatrix4x4<double>(),
                                                   1.5, descriptors, spacing, k_all));
  reference.seed(1);
  reference();
  ASSERT_EQ(descriptors.count(), 1u);
  expect_descriptor(descriptors[0], expected_descriptor(0, 3, reference, DrawOrder::k_dart));
  EXPECT_EQ(spacing, 1.0 / std::sqrt(1.5));

  // The fraction of an expected count decides one more candidate against
  // the first draw (0.417...): kept for 2.5, not for 2.3. With a dart radius
  // far below the point spacing every candidate lands.
  GeometryMesh square;
  add_square(square, 0, 0, 1, 0);
  for (double density : {2.5, 2.3}) {
    CoreArray<PrimitiveArea> table;
    double total = 0.0;
    build_area_table(CtxEval(), square, GMathMatrix4x4<double>(), k_all, table, total);
    place_blue_noise_samples(CtxEval(), square, GMathMatrix4x4<double>(), k_all, 1000, density,
                             1e-9, table, descriptors);
    reference.seed(1);
    ASSERT_LE(unit_from_u32(reference()), 0.45);
    ASSERT_EQ(descriptors.count(), density == 2.5 ? 3u : 2u);
    for (GeometryPrimitiveSampleDescriptor const& d : descriptors) {
      expect_descriptor(d, expected_descriptor(0, 4, reference, DrawOrder::k_dart));
    }
  }

  // A candidate that finds no free spot gives up after 128 throws (the
  // budget of the largest primitive) and ends its primitive's candidates:
  // the next primitive's dart follows those draws.
  GeometryMesh two;
  add_square(two, 0, 0, 1, 0);
  add_square(two, 5, 5, 0.5, 1);
  {
    CoreArray<PrimitiveArea> table;
    double total = 0.0;
    build_area_table(CtxEval(), two, GMathMatrix4x4<double>(), k_all, table, total);
    place_blue_noise_samples(CtxEval(), two, GMathMatrix4x4<double>(), k_all, 1000, 4.0, 10.0,
                             table, descriptors);
    reference.seed(1);
    ASSERT_EQ(descriptors.count(), 2u);
    expect_descriptor(descriptors[0], expected_descriptor(0, 4, reference, DrawOrder::k_dart));
    for (int i = 0; i < 2 * 128; ++i)
      reference();
    expect_descriptor(descriptors[1], expected_descriptor(1, 4, reference, DrawOrder::k_dart));
  }

  // A large triangle, a tiny one far away (expected count far below 1: one
  // candidate, one throw, free space) and a degenerate one (one candidate,
  // no throw).
  GeometryMesh mesh;
  add_right_triangle(mesh, 0, 0, 4, 4);
  unsigned int const tiny = add_right_triangle(mesh, 100, 100, 0.01, 0.01);
  unsigned int const flat = add_right_triangle(mesh, 50, 50, 1, 0);
  CoreArray<PrimitiveArea> table;
  double total = 0.0;
  build_area_table(CtxEval(), mesh, GMathMatrix4x4<double>(), k_all, table, total);
  place_blue_noise_samples(CtxEval(), mesh, GMathMatrix4x4<double>(), k_all, 1000, 0.25, 1.0, table,
                           descriptors);
  unsigned int on_tiny = 0, on_flat = 0;
  for (GeometryPrimitiveSampleDescriptor const& d : descriptors) {
    on_tiny += d.m_primitive == tiny;
    on_flat += d.m_primitive == flat;
  }
  EXPECT_EQ(on_tiny, 1u);
  EXPECT_EQ(on_flat, 0u);
  EXPECT_GE(descriptors.count(), 2u);
  EXPECT_LE(descriptors.count(), 3u);
}

TEST(SurfaceBlueNoise, OverfullRequestsAreTrimmed) {
  GeometryMesh square;
  add_square(square, 0, 0, 1, 0);
  Descriptors descriptors;
  Vectors positions, a, b;
  double spacing = 0.0;
  // Far more points than fit at that spacing: the outputs are trimmed to
  // the points placed, all of the same length, and the spacing is the
  // request's.
  EXPECT_TRUE(Sampling::surface_blue_noise_count(CtxEval(), square, GMathMatrix4x4<double>(), 2000,
                                                 descriptors, positions, a, b, spacing, k_all));
  EXPECT_LT(descriptors.count(), 2000u);
  EXPECT_GT(descriptors.count(), 500u);
  EXPECT_EQ(positions.count(), descriptors.count());
  EXPECT_EQ(a.count(), descriptors.count());
  EXPECT_EQ(b.count(), descriptors.count());
  EXPECT_EQ(spacing, 1.0 / std::sqrt(2000.0));
}

TEST(SurfaceBlueNoise, PointsKeepTheirDistanceWithinATree) {
  // Two coincident unit squares in groups 0 and 1, and a third square in
  // group 0 on top of the first: selecting group 0 puts all its points in
  // one tree, even across primitives; selecting all groups gives each group
  // its own tree, so groups 0 and 1 ignore each other.
  GeometryMesh mesh;
  add_square(mesh, 0, 0, 1, 0);
  add_square(mesh, 0, 0, 1, 1);
  add_square(mesh, 0, 0, 1, 0);
  for (unsigned int group : {0u, k_all}) {
    Descriptors descriptors;
    Vectors positions, a, b;
    double spacing = 0.0;
    Sampling::surface_blue_noise_count(CtxEval(), mesh, GMathMatrix4x4<double>(), 300, descriptors,
                                       positions, a, b, spacing, group);
    ASSERT_GT(descriptors.count(), 50u);
    expect_valid_descriptors(mesh, group, descriptors);
    double same = 0.0, across = 0.0;
    closest_pairs(mesh, descriptors, positions, group != k_all, same, across);
    // Positions come back from float coordinates, a few 1e-8 off the
    // double points the trees compared.
    EXPECT_TRUE(same >= spacing - 1e-6) << "group " << group << " closest " << same;
    if (group == k_all) {
      EXPECT_LT(across, 0.5 * spacing);
    }
  }

  // On the terrain under a matrix, per group and with every group.
  GeometryMesh const terrain = make_terrain();
  GMathMatrix4x4<double> const matrix =
      GMathMatrix4x4<double>::translation(3, 0, 1) * GMathMatrix4x4<double>::scale(0.5, 2, 1);
  for (unsigned int group : {1u, k_all}) {
    Descriptors descriptors;
    Vectors positions, a, b;
    double spacing = 0.0;
    Sampling::surface_blue_noise_count(CtxEval(), terrain, matrix, 600, descriptors, positions, a,
                                       b, spacing, group);
    ASSERT_GT(descriptors.count(), 200u);
    double same = 0.0, across = 0.0;
    closest_pairs(terrain, descriptors, positions, group != k_all, same, across);
    EXPECT_TRUE(same >= spacing - 1e-6) << "group " << group << " closest " << same;
  }
}
