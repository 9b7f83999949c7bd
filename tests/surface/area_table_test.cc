#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "platform/geometry/geometry_intersection.h"
#include "sampling/surface/area_table.h"
#include "sampling/surface/blue_noise_placement.h"
#include "tests/surface/surface_fixtures.h"

namespace {

std::vector<unsigned int> sorted_primitives(std::vector<double> const& areas) {
  CoreArray<PrimitiveArea> table(areas.size());
  for (std::size_t i = 0; i < areas.size(); ++i) {
    table[i] = PrimitiveArea{static_cast<std::uint32_t>(i), 3, areas[i]};
  }
  sort_by_area(table);
  std::vector<unsigned int> order;
  for (PrimitiveArea const& e : table)
    order.push_back(e.m_primitive);
  return order;
}

using Order = std::vector<unsigned int>;

}  // namespace

TEST(SurfaceAreaTable, SortLeavesTiesInItsOwnOrder) {
  EXPECT_EQ(sorted_primitives({2, 5, 2, 5}), (Order{1, 3, 0, 2}));
  EXPECT_EQ(sorted_primitives({1, 1, 1}), (Order{2, 0, 1}));
  EXPECT_EQ(sorted_primitives({2, 2, 1, 1}), (Order{1, 0, 3, 2}));
  EXPECT_EQ(sorted_primitives({1, 2, 3, 4}), (Order{3, 2, 1, 0}));
  EXPECT_EQ(sorted_primitives({}), Order{});
  EXPECT_EQ(sorted_primitives({7}), Order{0});
}

TEST(SurfaceAreaTable, SortIsADecreasingPermutationEqualToTheQuicksort) {
  std::mt19937 rng(42);
  // Few distinct values (many ties), many distinct ones, smooth runs (the
  // quicksort's slow case), ascending and all-equal inputs, signed zeros,
  // and a shuffled table with a NaN (which bypasses the std::sort path).
  for (int trial = 0; trial < 60; ++trial) {
    std::size_t const n = trial < 50 ? 1 + rng() % 2000 : 3000;
    CoreArray<PrimitiveArea> table(n);
    for (std::size_t i = 0; i < n; ++i) {
      double area = trial % 2 ? static_cast<double>(rng() % 5) : rng() * 1e-6;
      if (trial % 5 == 4)
        area = std::sin(0.01 * i) + 2.0;
      if (trial == 50)
        area = static_cast<double>(i);
      if (trial == 51)
        area = 1.0;
      if (trial == 52)
        area = (i % 2) ? 0.0 : -0.0;
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
    ASSERT_EQ(std::memcmp(table.data(), reference.data(), n * sizeof(PrimitiveArea)), 0)
        << "trial " << trial;
    std::vector<bool> seen(n, false);
    for (std::size_t i = 0; i < n; ++i) {
      PrimitiveArea const& e = table[i];
      ASSERT_LT(e.m_primitive, n);
      EXPECT_FALSE(seen[e.m_primitive]) << "trial " << trial << " entry " << i;
      seen[e.m_primitive] = true;
      EXPECT_EQ(e.m_vertex_count, e.m_primitive * 7);
      if (trial == 53)
        continue;
      EXPECT_EQ(e.m_area, before[e.m_primitive].m_area);
      if (i > 0) {
        EXPECT_GE(table[i - 1].m_area, e.m_area) << "trial " << trial << " at " << i;
      }
    }
  }
}

TEST(SurfaceAreaTable, BuildSelectsGroupsAndAsksEachPrimitiveOnce) {
  TableObject const object({{1.0, 3, 0}, {4.0, 4, 1}, {2.0, 3, 0}, {0.5, 3, 1}, {3.0, 4, 0}}, 2);
  GMathMatrix4x4<double> const doubled = GMathMatrix4x4<double>::scale(2.0, 2.0, 2.0);
  CoreArray<PrimitiveArea> table;
  double total = -1.0;

  build_area_table(CtxEval(), object, doubled, 0xFFFFFFFFu, table, total);
  EXPECT_EQ(total, ((((4.0 + 16.0) + 8.0) + 2.0) + 12.0));
  ASSERT_EQ(table.count(), 5u);
  EXPECT_EQ(table[0].m_primitive, 1u);
  EXPECT_EQ(table[0].m_vertex_count, 4u);
  EXPECT_EQ(table[0].m_area, 16.0);
  EXPECT_EQ(table[4].m_primitive, 3u);
  EXPECT_EQ(object.m_area_calls, 5u);
  EXPECT_EQ(object.m_vertex_count_calls, 5u);
  EXPECT_EQ(object.m_group_calls, 0u);

  object.m_area_calls = object.m_vertex_count_calls = 0;
  build_area_table(CtxEval(), object, GMathMatrix4x4<double>(), 0, table, total);
  EXPECT_EQ(total, 6.0);
  ASSERT_EQ(table.count(), 3u);
  EXPECT_EQ(table[0].m_primitive, 4u);
  EXPECT_EQ(table[1].m_primitive, 2u);
  EXPECT_EQ(table[2].m_primitive, 0u);
  EXPECT_EQ(object.m_area_calls, 3u);
  EXPECT_EQ(object.m_vertex_count_calls, 3u);
  EXPECT_EQ(object.m_group_calls, 10u);

  // A group nobody carries and an object without primitives: empty, 0.
  build_area_table(CtxEval(), object, GMathMatrix4x4<double>(), 7, table, total);
  EXPECT_EQ(table.count(), 0u);
  EXPECT_EQ(total, 0.0);
  TableObject const none({});
  build_area_table(CtxEval(), none, GMathMatrix4x4<double>(), 0xFFFFFFFFu, table, total);
  EXPECT_EQ(table.count(), 0u);
  EXPECT_EQ(total, 0.0);
}

TEST(SurfaceAreaTable, FoldDrawsAndTruncation) {
  double u = 0.75, v = 0.5;
  fold_to_triangle(3, u, v);
  EXPECT_EQ(u, 0.25);
  EXPECT_EQ(v, 0.5);
  u = 0.75, v = 0.5;
  fold_to_triangle(4, u, v);
  EXPECT_EQ(u, 0.75);
  EXPECT_EQ(v, 0.5);
  u = 0.25, v = 0.75;
  fold_to_triangle(3, u, v);
  EXPECT_EQ(u, 0.25);
  EXPECT_EQ(v, 0.75);
  EXPECT_EQ(unit_from_u32(0u), 0.0);
  EXPECT_EQ(unit_from_u32(0xFFFFFFFFu), 1.0);

  EXPECT_EQ(truncate_to_u32(3.99), 3u);
  EXPECT_EQ(truncate_to_u32(4294967296.0 + 5.0), 5u);
  EXPECT_EQ(truncate_to_u32(9223372036854775808.0 + 4294967296.0 * 3.0), 0u);
  EXPECT_EQ(truncate_to_u32(-1.5), 0xFFFFFFFFu);
  EXPECT_EQ(truncate_to_u32(std::numeric_limits<double>::quiet_NaN()), 0u);
  EXPECT_EQ(truncate_to_u32(std::numeric_limits<double>::infinity()), 0u);
  EXPECT_EQ(truncate_to_u32(1e30), 0u);
}

TEST(SurfaceAreaTable, WorldSamplesAreTheFragmentsOfTheDescriptors) {
  GeometryMesh const mesh = make_terrain();
  GMathMatrix4x4<double> matrix =
      GMathMatrix4x4<double>::translation(1, -2, 3) * GMathMatrix4x4<double>::scale(1.5, 0.5, 2.0);
  CoreArray<GeometryPrimitiveSampleDescriptor> descriptors(50);
  for (unsigned int k = 0; k < 50; ++k) {
    descriptors[k] = GeometryPrimitiveSampleDescriptor{k * 4, 0.125f * (k % 5), 0.1f * (k % 3)};
  }
  CoreArray<GMathVec3<double>> positions(3), a, b(99);
  compute_world_samples(CtxEval(), mesh, matrix, descriptors, positions, a, b);
  ASSERT_EQ(positions.count(), 50u);
  ASSERT_EQ(a.count(), 50u);
  ASSERT_EQ(b.count(), 50u);
  for (unsigned int k = 0; k < 50; ++k) {
    GeometryFragment f;
    f.m_object = &mesh;
    f.m_matrix = matrix;
    f.m_primitive = descriptors[k].m_primitive;
    f.m_uvw = GMathVec3<double>(descriptors[k].m_u, descriptors[k].m_v, 0.0);
    f.compute_world_sample(CtxEval());
    EXPECT_EQ(positions[k], f.m_world_position) << k;
    EXPECT_EQ(a[k], f.m_world_normal) << k;
    EXPECT_EQ(b[k], f.m_world_dpdu) << k;
  }
  CoreArray<GeometryPrimitiveSampleDescriptor> const none;
  compute_world_samples(CtxEval(), mesh, matrix, none, positions, a, b);
  EXPECT_EQ(positions.count() + a.count() + b.count(), 0u);
}

TEST(SurfaceAreaTable, TransformedBoxBoundsTheTransformedCorners) {
  GMathBbox3<double> const box(GMathVec3<double>(-1, 2, 0.5), GMathVec3<double>(3, 4, 1.5));
  GMathMatrix4x4<double> m;
  double const values[16] = {0.6, -0.8, 0, 5, 0.8, 0.6, 0, -1, 0, 0, 2, 0.25, 9, 9, 9, 9};
  std::copy(values, values + 16, m.m);
  GMathBbox3<double> world;
  transform_bbox(box, m, world);
  // x' = 0.6 x - 0.8 y + 5 over x in [-1, 3], y in [2, 4].
  EXPECT_EQ(world.m_min.x, ((0.6 * -1.0 + -0.8 * 4.0) + 0.0 * 0.5) + 5.0);
  EXPECT_EQ(world.m_max.x, ((0.6 * 3.0 + -0.8 * 2.0) + 0.0 * 0.5) + 5.0);
  EXPECT_EQ(world.m_min.y, ((0.8 * -1.0 + 0.6 * 2.0) + 0.0 * 0.5) + -1.0);
  EXPECT_EQ(world.m_max.z, ((0.0 * 3.0 + 0.0 * 4.0) + 2.0 * 1.5) + 0.25);
  std::mt19937 rng(4);
  std::uniform_real_distribution<double> t(0.0, 1.0);
  for (int i = 0; i < 1000; ++i) {
    GMathVec3<double> p(-1 + 4 * t(rng), 2 + 2 * t(rng), 0.5 + t(rng));
    EXPECT_TRUE(world.contains(m.transform_point(p))) << i;
  }
}
