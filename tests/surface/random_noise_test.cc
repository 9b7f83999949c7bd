#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "tests/support/chi_square.h"
#include "tests/surface/surface_fixtures.h"

namespace {

// Fan of 40 triangles from the origin to points spread very unevenly along
// the top and right edges of the unit square, which they tile exactly.
GeometryMesh make_uneven_fan() {
  GeometryMesh mesh;
  unsigned int const origin = mesh.add_vertex(GMathVec3<double>(0, 0, 0));
  std::vector<unsigned int> boundary;
  for (int i = 0; i <= 40; ++i) {
    double const t = (i <= 20 ? 20 - i : 40 - i) / 20.0;
    boundary.push_back(mesh.add_vertex(i <= 20 ? GMathVec3<double>(1 - t * t * t, 1, 0)
                                               : GMathVec3<double>(1, t * t, 0)));
  }
  for (std::size_t i = 0; i + 1 < boundary.size(); ++i)
    mesh.add_triangle(origin, boundary[i], boundary[i + 1], 0);
  return mesh;
}

}  // namespace

TEST(SurfaceRandomNoise, ExactPlacementsOnSmallMeshes) {
  // Areas 3 and 1, count 2: density 0.5, expected 1.5 then 0.5; the carried
  // 0.5 adds nothing to the first, the carried 1.0 one point to the second.
  GeometryMesh mesh;
  add_face(mesh, 5, 0, 2, 1);
  add_face(mesh, 0, 0, 2, 3);
  Descriptors descriptors;
  double spacing = 0.0;
  EXPECT_TRUE(Sampling::surface_random_noise_count(CtxEval(), mesh, Matrix(), 2, descriptors,
                                                   spacing, k_all));
  std::mt19937 reference(1);
  ASSERT_EQ(descriptors.count(), 2u);
  EXPECT_TRUE(descriptors[0] == expected_descriptor(1, 3, reference, false));
  EXPECT_TRUE(descriptors[1] == expected_descriptor(0, 3, reference, false));
  EXPECT_EQ(spacing, 1.0 / std::sqrt(0.5));
  // Density entry: total 10 x density 0.35 gives 3 points.
  EXPECT_TRUE(Sampling::surface_random_noise_density(CtxEval(), TableObject({{4, 4, 0}, {6, 4, 0}}),
                                                     Matrix(), 0.35, descriptors, spacing, k_all));
  EXPECT_TRUE(descriptors.count() == 3 && spacing == 1.0 / std::sqrt(0.35));
}

TEST(SurfaceRandomNoise, CountsPerPrimitiveFollowArea) {
  // Walking the table, the points placed so far stay within half a point of
  // the expected running sum (rounded half down), and each primitive's
  // points come together, largest primitive first.
  GeometryMesh const fan = make_uneven_fan();
  CoreArray<PrimitiveArea> table;
  double total = 0.0;
  build_area_table(CtxEval(), fan, Matrix(), k_all, table, total);
  for (unsigned int count : {1u, 7u, 100u, 1001u, 65536u}) {
    Descriptors descriptors;
    double spacing = 0.0;
    Sampling::surface_random_noise_count(CtxEval(), fan, Matrix(), count, descriptors, spacing,
                                         k_all);
    ASSERT_EQ(descriptors.count(), count);
    double const density = static_cast<double>(count) / total;
    double expected_sum = 0.0;
    std::size_t placed = 0;
    for (PrimitiveArea const& entry : table) {
      while (placed < count && descriptors[placed].m_primitive == entry.m_primitive)
        ++placed;
      expected_sum += entry.m_area * density;
      double const error = expected_sum - static_cast<double>(placed);
      EXPECT_TRUE(error > -0.5 - 1e-9 && error <= 0.5 + 1e-9)
          << "count " << count << " primitive " << entry.m_primitive << " error " << error;
    }
    EXPECT_EQ(placed, count) << "points out of table order";
  }
}

TEST(SurfaceRandomNoise, PositionsAreUniformOverTheSurface) {
  // 10^6 points over an uneven fan tiling the unit square: per-primitive
  // counts, coordinate draws and the fold together must give a uniform
  // density over the square.
  GeometryMesh const fan = make_uneven_fan();
  int const n = 1000000;
  Descriptors descriptors;
  Vectors positions, a, b;
  double spacing = 0.0;
  Sampling::surface_random_noise_count(CtxEval(), fan, Matrix(), n, descriptors, positions, a, b,
                                       spacing, k_all);
  ASSERT_EQ(positions.count(), static_cast<std::size_t>(n));
  ChiSquareResult const result = chi_square_test(
      ChiSquareDomain{0.0, 1.0, 0.0, 1.0, 51, 51}, n,
      [&](int i, double& x, double& y) {
        x = positions[i].x;
        y = positions[i].y;
        return x >= -1e-9 && x <= 1.0 + 1e-9 && y >= -1e-9 && y <= 1.0 + 1e-9;
      },
      [](double, double) { return 1.0; }, chi_square_alpha(1));
  EXPECT_TRUE(result.passed) << result.message;
}
