#include <gtest/gtest.h>

#include <cmath>
#include <thread>
#include <vector>

#include "tests/support/placement.h"
#include "tests/surface/surface_fixtures.h"

namespace {

struct Entries {
  bool (*count)(CtxEval const&, GeometryObject const&, Matrix const&, unsigned int const&,
                Descriptors&, Vectors&, Vectors&, Vectors&, double&, unsigned int const&);
  bool (*density)(CtxEval const&, GeometryObject const&, Matrix const&, double const&, Descriptors&,
                  Vectors&, Vectors&, Vectors&, double&, unsigned int const&);
};
Entries const k_entries[] = {
    {&Sampling::surface_random_noise_count, &Sampling::surface_random_noise_density},
    {&Sampling::surface_blue_noise_count, &Sampling::surface_blue_noise_density}};

}  // namespace

// Each entry places descriptors grouped by primitive in area-table order;
// the vectors are the descriptors evaluated; the density a count call
// reports places the same points, and a density call reports the spacing of
// its density. (Short and long forms agreeing, valid descriptors and
// repeated calls are the surface harness's.)
TEST(SurfaceEntries, FormsAgree) {
  GeometryMesh const terrain = make_terrain();
  Matrix const matrix = scaled_and_moved(2, 1, 3, 0.5, 1, -2);
  for (Entries const& entry : k_entries) {
    for (unsigned int group : {k_all, 2u}) {
      SCOPED_TRACE(testing::Message() << (&entry - k_entries) << " group " << group);
      Descriptors first, by_density;
      Vectors positions, a, b, p2, a2, b2;
      double spacing = 0.0, other = 0.0;
      entry.count(CtxEval(), terrain, matrix, 600, first, positions, a, b, spacing, group);
      ASSERT_GT(first.count(), 200u);
      compute_world_samples(CtxEval(), terrain, matrix, first, p2, a2, b2);
      ASSERT_EQ(positions.count(), p2.count());
      for (std::size_t k = 0; k < p2.count(); ++k)
        ASSERT_TRUE(positions[k] == p2[k] && a[k] == a2[k] && b[k] == b2[k]) << k;
      entry.density(CtxEval(), terrain, matrix, 1.0000001 / (spacing * spacing), by_density, p2, a2,
                    b2, other, group);
      EXPECT_TRUE(same_descriptors(first, by_density));
      entry.density(CtxEval(), terrain, matrix, 40.0, by_density, p2, a2, b2, other, group);
      EXPECT_EQ(other, 1.0 / std::sqrt(40.0));
      CoreArray<PrimitiveArea> table;
      double total = 0.0;
      build_area_table(CtxEval(), terrain, matrix, group, table, total);
      std::vector<std::size_t> rank(terrain.get_primitive_count(), 0);
      for (std::size_t i = 0; i < table.count(); ++i)
        rank[table[i].m_primitive] = i;
      for (std::size_t k = 1; k < first.count(); ++k)
        ASSERT_LE(rank[first[k - 1].m_primitive], rank[first[k].m_primitive]) << k;
    }
  }
}

TEST(SurfaceEntries, ConcurrentCallsMatchASingleCall) {
  // The entries share no state: threads scattering over one object give
  // each what a lone call gives.
  GeometryMesh const terrain = make_terrain();
  for (Entries const& entry : k_entries) {
    Descriptors alone;
    Vectors p, a, b;
    double spacing = 0.0;
    entry.count(CtxEval(), terrain, Matrix(), 400, alone, p, a, b, spacing, k_all);
    std::vector<Descriptors> results(4);
    std::vector<std::thread> threads;
    for (Descriptors& result : results) {
      threads.emplace_back([&entry, &terrain, &result] {
        Vectors tp, ta, tb;
        double s = 0.0;
        for (int round = 0; round < 3; ++round)
          entry.count(CtxEval(), terrain, Matrix(), 400, result, tp, ta, tb, s, k_all);
      });
    }
    for (std::thread& t : threads)
      t.join();
    for (Descriptors const& result : results)
      EXPECT_TRUE(same_descriptors(alone, result));
  }
}

#ifdef SAMPLING_CHECKS
TEST(SurfaceEntriesDeathTest, BlueNoiseNeedsValidGroups) {
  Descriptors descriptors;
  double spacing = 0.0;
  // No group at all, and a primitive whose group is not below the count.
  EXPECT_DEATH(Sampling::surface_blue_noise_count(CtxEval(), TableObject({{1, 3, 0}}, 0), Matrix(),
                                                  3, descriptors, spacing, k_all),
               "get_group_count");
  EXPECT_DEATH(Sampling::surface_blue_noise_count(CtxEval(), TableObject({{1, 3, 0}, {1, 3, 2}}, 2),
                                                  Matrix(), 3, descriptors, spacing, k_all),
               "get_primitive_group");
}
#endif
