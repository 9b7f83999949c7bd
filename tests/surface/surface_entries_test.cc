#include <gtest/gtest.h>

#include <cmath>
#include <thread>
#include <vector>

#include "sampling/sampling.h"
#include "sampling/surface/area_table.h"
#include "tests/surface/surface_fixtures.h"

namespace {

typedef bool (*CountEntry)(CtxEval const&, GeometryObject const&, GMathMatrix4x4<double> const&,
                           unsigned int const&, Descriptors&, Vectors&, Vectors&, Vectors&, double&,
                           unsigned int const&);
typedef bool (*DensityEntry)(CtxEval const&, GeometryObject const&, GMathMatrix4x4<double> const&,
                             double const&, Descriptors&, double&, unsigned int const&);

typedef bool (*LongDensityEntry)(CtxEval const&, GeometryObject const&,
                                 GMathMatrix4x4<double> const&, double const&, Descriptors&,
                                 Vectors&, Vectors&, Vectors&, double&, unsigned int const&);

struct Entries {
  char const* m_name;
  CountEntry m_count;
  DensityEntry m_density;
  LongDensityEntry m_long_density;
};

Entries const k_entries[] = {
    {"random", &Sampling::surface_random_noise_count, &Sampling::surface_random_noise_density,
     &Sampling::surface_random_noise_density},
    {"blue", &Sampling::surface_blue_noise_count, &Sampling::surface_blue_noise_density,
     &Sampling::surface_blue_noise_density},
};

}  // namespace

// Every form places valid descriptors, grouped by primitive in area-table
// order; the long forms' vectors are the descriptors evaluated; the density
// a count call reports places the same points, and a density call reports
// the spacing of its density. (Short and long forms agreeing and repeated
// calls are the surface harness's.)
TEST(SurfaceEntries, FormsAgree) {
  GeometryMesh const terrain = make_terrain();
  GMathMatrix4x4<double> const matrix =
      GMathMatrix4x4<double>::translation(0.5, 1, -2) * GMathMatrix4x4<double>::scale(2, 1, 3);
  for (Entries const& entry : k_entries) {
    for (unsigned int group : {k_all, 2u}) {
      SCOPED_TRACE(testing::Message() << entry.m_name << " group " << group);
      Descriptors first, by_density, dense;
      Vectors positions, a, b, p2, a2, b2;
      double spacing = 0.0, other = 0.0;
      entry.m_count(CtxEval(), terrain, matrix, 600, first, positions, a, b, spacing, group);
      ASSERT_GT(first.count(), 200u);
      expect_valid_descriptors(terrain, group, first);
      compute_world_samples(CtxEval(), terrain, matrix, first, p2, a2, b2);
      ASSERT_EQ(positions.count(), p2.count());
      for (std::size_t k = 0; k < p2.count(); ++k)
        ASSERT_TRUE(positions[k] == p2[k] && a[k] == a2[k] && b[k] == b2[k]) << k;
      entry.m_density(CtxEval(), terrain, matrix, 1.0000001 / (spacing * spacing), by_density,
                      other, group);
      expect_same_descriptors(first, by_density);
      entry.m_long_density(CtxEval(), terrain, matrix, 40.0, dense, positions, a, b, other, group);
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
  GMathMatrix4x4<double> const identity;
  for (Entries const& entry : k_entries) {
    Descriptors alone;
    Vectors p, a, b;
    double spacing = 0.0;
    entry.m_count(CtxEval(), terrain, identity, 400, alone, p, a, b, spacing, k_all);
    std::vector<Descriptors> results(4);
    std::vector<std::thread> threads;
    for (Descriptors& result : results) {
      threads.emplace_back([&entry, &terrain, &identity, &result] {
        Vectors tp, ta, tb;
        double s = 0.0;
        for (int round = 0; round < 3; ++round) {
          entry.m_count(CtxEval(), terrain, identity, 400, result, tp, ta, tb, s, k_all);
        }
      });
    }
    for (std::thread& t : threads)
      t.join();
    for (Descriptors const& result : results)
      expect_same_descriptors(alone, result);
  }
}

#ifdef SAMPLING_CHECKS
TEST(SurfaceEntriesDeathTest, BlueNoiseNeedsValidGroups) {
  Descriptors descriptors;
  double spacing = 0.0;
  // No group at all, and a primitive whose group is not below the count.
  TableObject const no_group({{1, 3, 0}}, 0);
  EXPECT_DEATH(Sampling::surface_blue_noise_count(CtxEval(), no_group, GMathMatrix4x4<double>(), 3,
                                                  descriptors, spacing, k_all),
               "get_group_count");
  TableObject const beyond({{1, 3, 0}, {1, 3, 2}}, 2);
  EXPECT_DEATH(Sampling::surface_blue_noise_count(CtxEval(), beyond, GMathMatrix4x4<double>(), 3,
                                                  descriptors, spacing, k_all),
               "get_primitive_group");
}
#endif
