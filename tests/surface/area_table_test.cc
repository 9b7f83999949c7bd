#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "platform/geometry/geometry_intersection.h"
#include "sampling/surface/blue_noise_placement.h"
#include "tests/support/placement.h"
#include "tests/surface/surface_fixtures.h"

namespace {

using Order = std::vector<unsigned int>;

Order sorted_primitives(std::vector<double> const& areas) {
  CoreArray<PrimitiveArea> table(areas.size());
  for (std::size_t i = 0; i < areas.size(); ++i)
    table[i] = PrimitiveArea{static_cast<std::uint32_t>(i), 3, areas[i]};
  sort_by_area(table);
  Order order;
  for (PrimitiveArea const& e : table)
    order.push_back(e.m_primitive);
  return order;
}

}  // namespace

// Decreasing areas, ties in the quicksort's own order (which the placements
// depend on): worked orders, then the fast sort against the quicksort over
// many tables. Few distinct values (many ties), many distinct ones, smooth
// runs (the quicksort's slow case), ascending and all-equal inputs, signed
// zeros, and a shuffled table with a NaN (which bypasses the std::sort path).
TEST(SurfaceAreaTable, SortIsADecreasingPermutationEqualToTheQuicksort) {
  EXPECT_EQ(sorted_primitives({2, 5, 2, 5}), (Order{1, 3, 0, 2}));
  EXPECT_EQ(sorted_primitives({1, 1, 1}), (Order{2, 0, 1}));
  EXPECT_EQ(sorted_primitives({2, 2, 1, 1}), (Order{1, 0, 3, 2}));
  EXPECT_EQ(sorted_primitives({1, 2, 3, 4}), (Order{3, 2, 1, 0}));
  EXPECT_EQ(sorted_primitives({}), Order{});
  std::mt19937 rng(42);
  for (int trial = 0; trial < 60; ++trial) {
    std::size_t const n = trial < 50 ? 1 + rng() % 2000 : 3000;
    CoreArray<PrimitiveArea> table(n);
    for (std::size_t i = 0; i < n; ++i) {
      double area = trial % 2 ? static_cast<double>(rng() % 5) : rng() * 1e-6;
      area = trial % 5 == 4 ? std::sin(0.01 * i) + 2.0 : area;
      area = trial == 50 ? i : trial == 51 ? 1.0 : trial == 52 ? (i % 2 ? 0.0 : -0.0) : area;
      // The vertex count is a function of the primitive, so a split entry
      // would show.
      table[i] =
          PrimitiveArea{static_cast<std::uint32_t>(i), static_cast<std::uint32_t>(i * 7), area};
    }
    if (trial == 53) {
      std::shuffle(table.begin(), table.end(), rng);
      table[n / 2].m_area = std::nan("");
    }
    CoreArray<PrimitiveArea> const before = table;
    CoreArray<PrimitiveArea> reference = table;
    sort_by_area(table);
    sort_by_area_quicksort(reference);
    ASSERT_EQ(std::memcmp(table.data(), reference.data(), n * sizeof(PrimitiveArea)), 0) << trial;
    std::vector<bool> seen(n, false);
    for (std::size_t i = 0; i < n; ++i) {
      PrimitiveArea const& e = table[i];
      ASSERT_TRUE(e.m_primitive < n && !seen[e.m_primitive] &&
                  e.m_vertex_count == e.m_primitive * 7)
          << "trial " << trial << " entry " << i;
      seen[e.m_primitive] = true;
      ASSERT_TRUE(trial == 53 || (e.m_area == before[e.m_primitive].m_area &&
                                  (i == 0 || table[i - 1].m_area >= e.m_area)))
          << "trial " << trial << " at " << i;
    }
  }
}

TEST(SurfaceAreaTable, BuildSelectsGroupsAndAsksEachPrimitiveOnce) {
  TableObject const object({{1.0, 3, 0}, {4.0, 4, 1}, {2.0, 3, 0}, {0.5, 3, 1}, {3.0, 4, 0}}, 2);
  CoreArray<PrimitiveArea> table;
  double total = -1.0;
  build_area_table(CtxEval(), object, scaled_and_moved(2.0, 2.0, 2.0, 0.0, 0.0, 0.0), k_all, table,
                   total);
  EXPECT_EQ(total, ((((4.0 + 16.0) + 8.0) + 2.0) + 12.0));
  ASSERT_EQ(table.count(), 5u);
  EXPECT_TRUE(table[0].m_primitive == 1 && table[0].m_vertex_count == 4 &&
              table[0].m_area == 16.0 && table[4].m_primitive == 3);
  EXPECT_TRUE(object.m_calls[0] == 5 && object.m_calls[1] == 5 && object.m_calls[2] == 0);
  object.m_calls[0] = object.m_calls[1] = 0;
  build_area_table(CtxEval(), object, Matrix(), 0, table, total);
  EXPECT_EQ(total, 6.0);
  ASSERT_EQ(table.count(), 3u);
  EXPECT_TRUE(table[0].m_primitive == 4 && table[1].m_primitive == 2 && table[2].m_primitive == 0);
  EXPECT_TRUE(object.m_calls[0] == 3 && object.m_calls[1] == 3 && object.m_calls[2] == 10);
  // A group nobody carries and an object without primitives: empty, 0.
  build_area_table(CtxEval(), object, Matrix(), 7, table, total);
  EXPECT_TRUE(table.empty() && total == 0.0);
  build_area_table(CtxEval(), TableObject({}), Matrix(), k_all, table, total);
  EXPECT_TRUE(table.empty() && total == 0.0);
}

TEST(SurfaceAreaTable, FoldAndTruncation) {
  double const folds[][5] = {{3, 0.75, 0.5, 0.25, 0.5},
                             {4, 0.75, 0.5, 0.75, 0.5},
                             {3, 0.25, 0.75, 0.25, 0.75},
                             {3, 0.5, 0.5000001, 0.5, 1.0 - 0.5000001}};
  for (auto const& f : folds) {
    double u = f[1], v = f[2];
    fold_to_triangle(static_cast<std::uint32_t>(f[0]), u, v);
    EXPECT_TRUE(u == f[3] && v == f[4]) << f[0] << " " << f[1] << " " << f[2];
  }
  double const inf = std::numeric_limits<double>::infinity();
  double const cases[][2] = {{3.99, 3},
                             {4294967296.0 + 5.0, 5},
                             {9223372036854775808.0 + 4294967296.0 * 3.0, 0},
                             {-1.5, 4294967295.0},
                             {std::nan(""), 0},
                             {inf, 0},
                             {1e30, 0},
                             {18446744073709551616.0, 0}};
  for (auto const& c : cases)
    EXPECT_EQ(truncate_to_u32(c[0]), c[1]) << c[0];
}

TEST(SurfaceAreaTable, WorldSamplesAreTheFragmentsOfTheDescriptors) {
  GeometryMesh const mesh = make_terrain();
  Matrix const matrix = scaled_and_moved(1.5, 0.5, 2.0, 1, -2, 3);
  Descriptors descriptors(50);
  for (unsigned int k = 0; k < 50; ++k)
    descriptors[k] = GeometryPrimitiveSampleDescriptor{k * 4, 0.125f * (k % 5), 0.1f * (k % 3)};
  Vectors positions(3), a, b(99);
  compute_world_samples(CtxEval(), mesh, matrix, descriptors, positions, a, b);
  ASSERT_TRUE(positions.count() == 50 && a.count() == 50 && b.count() == 50);
  for (unsigned int k = 0; k < 50; ++k) {
    GeometryFragment f;
    f.m_object = &mesh;
    f.m_matrix = matrix;
    f.m_primitive = descriptors[k].m_primitive;
    f.m_uvw = GMathVec3<double>(descriptors[k].m_u, descriptors[k].m_v, 0.0);
    f.compute_world_sample(CtxEval());
    EXPECT_TRUE(positions[k] == f.m_world_position && a[k] == f.m_world_normal &&
                b[k] == f.m_world_dpdu)
        << k;
  }
  compute_world_samples(CtxEval(), mesh, matrix, Descriptors(), positions, a, b);
  EXPECT_EQ(positions.count() + a.count() + b.count(), 0u);
}

TEST(SurfaceAreaTable, TransformedBoxBoundsTheTransformedCorners) {
  GMathBbox3<double> const box(GMathVec3<double>(-1, 2, 0.5), GMathVec3<double>(3, 4, 1.5));
  Matrix m;
  double const values[16] = {0.6, -0.8, 0.3, 5, 0.8, 0.6, -0.4, -1, 0.2, 0.5, 2, 0.25, 9, 9, 9, 9};
  std::copy(values, values + 16, m.m);
  GMathBbox3<double> world;
  transform_bbox(box, m, world);
  // x' = 0.6 x - 0.8 y + 0.3 z + 5 over x in [-1, 3], y in [2, 4], z in [0.5, 1.5].
  EXPECT_EQ(world.m_min.x, ((0.6 * -1.0 + -0.8 * 4.0) + 0.3 * 0.5) + 5.0);
  EXPECT_EQ(world.m_max.x, ((0.6 * 3.0 + -0.8 * 2.0) + 0.3 * 1.5) + 5.0);
  EXPECT_EQ(world.m_min.y, ((0.8 * -1.0 + 0.6 * 2.0) + -0.4 * 1.5) + -1.0);
  EXPECT_EQ(world.m_max.z, ((0.2 * 3.0 + 0.5 * 4.0) + 2.0 * 1.5) + 0.25);
  std::mt19937 rng(4);
  std::uniform_real_distribution<double> t(0.0, 1.0);
  for (int i = 0; i < 1000; ++i)
    EXPECT_TRUE(world.contains(
        m.transform_point(GMathVec3<double>(-1 + 4 * t(rng), 2 + 2 * t(rng), 0.5 + t(rng)))))
        << i;
}
