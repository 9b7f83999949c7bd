#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "sampling/surface/blue_noise_placement.h"
#include "tests/support/placement.h"
#include "tests/surface/surface_fixtures.h"

namespace {

// Runs the placement with a dart radius of its own over `mesh`.
Descriptors place(GeometryMesh const& mesh, double density, double radius) {
  CoreArray<PrimitiveArea> table;
  double total = 0.0;
  build_area_table(CtxEval(), mesh, Matrix(), k_all, table, total);
  Descriptors descriptors;
  place_blue_noise_samples(CtxEval(), mesh, Matrix(), k_all, 1000, density, radius, table,
                           descriptors);
  return descriptors;
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
  add_face(triangle, 0, 0, 1, 2);
  Descriptors descriptors;
  Vectors positions, a, b;
  double spacing = 0.0;
  EXPECT_TRUE(Sampling::surface_blue_noise_count(CtxEval(), triangle, Matrix(), 1, descriptors,
                                                 positions, a, b, spacing, k_all));
  std::mt19937 reference(1);
  ASSERT_EQ(descriptors.count(), 1u);
  EXPECT_TRUE(descriptors[0] == expected_descriptor(0, 3, reference, true));
  EXPECT_TRUE(spacing == 1.0 && positions.count() == 1 &&
              positions[0].x == static_cast<double>(descriptors[0].m_u));
  // Density 1.5 on it: count 1; the expected 1.5 costs one draw for its
  // fraction before the dart's two.
  EXPECT_TRUE(Sampling::surface_blue_noise_density(CtxEval(), triangle, Matrix(), 1.5, descriptors,
                                                   spacing, k_all));
  reference.seed(1);
  reference();
  ASSERT_EQ(descriptors.count(), 1u);
  EXPECT_TRUE(descriptors[0] == expected_descriptor(0, 3, reference, true));
  EXPECT_EQ(spacing, 1.0 / std::sqrt(1.5));

  // The fraction of an expected count decides one more candidate against
  // the first draw (0.417...): kept for 2.5, not for 2.3. With a dart radius
  // far below the point spacing every candidate lands.
  GeometryMesh square;
  add_face(square, 0, 0, 1, 1, 0, true);
  for (double density : {2.5, 2.3}) {
    descriptors = place(square, density, 1e-9);
    reference.seed(1);
    reference.discard(1);  // the fraction's draw
    ASSERT_EQ(descriptors.count(), density == 2.5 ? 3u : 2u);
    for (GeometryPrimitiveSampleDescriptor const& d : descriptors)
      EXPECT_TRUE(d == expected_descriptor(0, 4, reference, true));
  }

  // A candidate that finds no free spot gives up after 128 throws (the
  // budget of the largest primitive) and ends its primitive's candidates:
  // the next primitive's dart follows those draws.
  add_face(square, 5, 5, 0.5, 0.5, 1, true);
  descriptors = place(square, 4.0, 10.0);
  reference.seed(1);
  ASSERT_EQ(descriptors.count(), 2u);
  EXPECT_TRUE(descriptors[0] == expected_descriptor(0, 4, reference, true));
  reference.discard(2 * 128);
  EXPECT_TRUE(descriptors[1] == expected_descriptor(1, 4, reference, true));

  // A large triangle, a tiny one far away (expected count far below 1: one
  // candidate, one throw, free space) and a degenerate one (one candidate,
  // no throw).
  GeometryMesh mesh;
  add_face(mesh, 0, 0, 4, 4);
  unsigned int const tiny = add_face(mesh, 100, 100, 0.01, 0.01);
  unsigned int const flat = add_face(mesh, 50, 50, 1, 0);
  descriptors = place(mesh, 0.25, 1.0);
  unsigned int on_tiny = 0, on_flat = 0;
  for (GeometryPrimitiveSampleDescriptor const& d : descriptors) {
    on_tiny += d.m_primitive == tiny;
    on_flat += d.m_primitive == flat;
  }
  EXPECT_TRUE(on_tiny == 1 && on_flat == 0 && descriptors.count() >= 2 && descriptors.count() <= 3);

  // Far more points than fit at that spacing: the outputs are trimmed to
  // the points placed, all of the same length, and the spacing is the
  // request's.
  EXPECT_TRUE(Sampling::surface_blue_noise_count(CtxEval(), square, Matrix(), 2000, descriptors,
                                                 positions, a, b, spacing, 0));
  EXPECT_TRUE(descriptors.count() < 2000 && descriptors.count() > 500);
  EXPECT_TRUE(positions.count() == descriptors.count() && a.count() == descriptors.count() &&
              b.count() == descriptors.count());
  EXPECT_EQ(spacing, 1.0 / std::sqrt(2000.0));
}

TEST(SurfaceBlueNoise, PointsKeepTheirDistanceWithinATree) {
  // Two coincident unit squares in groups 0 and 1, and a third square in
  // group 0 on top of the first: selecting group 0 puts all its points in
  // one tree, even across primitives; selecting all groups gives each group
  // its own tree, so groups 0 and 1 ignore each other. Then the terrain
  // under a matrix, per group and with every group.
  GeometryMesh squares;
  for (unsigned int group : {0u, 1u, 0u})
    add_face(squares, 0, 0, 1, 1, group, true);
  GeometryMesh const terrain = make_terrain();
  Matrix const matrix = scaled_and_moved(0.5, 2, 1, 3, 0, 1);
  struct Case {
    GeometryMesh const& mesh;
    Matrix matrix;
    unsigned int count, group, least;
  };
  for (Case const& c :
       {Case{squares, Matrix(), 300, 0, 50}, Case{squares, Matrix(), 300, k_all, 50},
        Case{terrain, matrix, 600, 1, 200}, Case{terrain, matrix, 600, k_all, 200}}) {
    Descriptors descriptors;
    Vectors positions, a, b;
    double spacing = 0.0;
    Sampling::surface_blue_noise_count(CtxEval(), c.mesh, c.matrix, c.count, descriptors, positions,
                                       a, b, spacing, c.group);
    ASSERT_GT(descriptors.count(), c.least);
    double same = 0.0, across = 0.0;
    closest_pairs(c.mesh, descriptors, positions, c.group != k_all, same, across);
    // Positions come back from float coordinates, a few 1e-8 off the
    // double points the trees compared.
    EXPECT_TRUE(same >= spacing - 1e-6) << "group " << c.group << " closest " << same;
    EXPECT_TRUE(&c.mesh != &squares || c.group != k_all || across < 0.5 * spacing);
  }
}
