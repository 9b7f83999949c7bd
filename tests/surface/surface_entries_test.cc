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

typedef bool (*ShortCountEntry)(CtxEval const&, GeometryObject const&,
                                GMathMatrix4x4<double> const&, unsigned int const&, Descriptors&,
                                double&, unsigned int const&);
typedef bool (*LongDensityEntry)(CtxEval const&, GeometryObject const&,
                                 GMathMatrix4x4<double> const&, double const&, Descriptors&,
                                 Vectors&, Vectors&, Vectors&, double&, unsigned int const&);

struct Entries {
  char const* m_name;
  CountEntry m_count;
  DensityEntry m_density;
  ShortCountEntry m_short_count;
  LongDensityEntry m_long_density;
};

Entries const k_entries[] = {
    {"random", &Sampling::surface_random_noise_count, &Sampling::surface_random_noise_density,
     &Sampling::surface_random_noise_count, &Sampling::surface_random_noise_density},
    {"blue", &Sampling::surface_blue_noise_count, &Sampling::surface_blue_noise_density,
     &Sampling::surface_blue_noise_count, &Sampling::surface_blue_noise_density},
};

}  // namespace

TEST(SurfaceEntries, EmptyRequestsAndEmptySurfaces) {
  TableObject const ten({{4, 4, 0}, {6, 4, 1}}, 2);
  GeometryMesh flat;
  add_right_triangle(flat, 0, 0, 1, 0);
  add_right_triangle(flat, 0, 0, 0, 1);
  TableObject const none({});
  GMathMatrix4x4<double> const identity;
  for (Entries const& entry : k_entries) {
    Descriptors descriptors(5);
    Vectors positions(5), a(5), b(5);
    double spacing = -3.0;
    // Count 0, and a density whose count truncates to 0: every output
    // emptied (buffers freed), spacing untouched.
    EXPECT_TRUE(
        entry.m_count(CtxEval(), ten, identity, 0, descriptors, positions, a, b, spacing, k_all));
    EXPECT_EQ(descriptors.count() + positions.count() + a.count() + b.count(), 0u);
    EXPECT_EQ(descriptors.data(), nullptr);
    descriptors.resize(5);
    EXPECT_TRUE(entry.m_density(CtxEval(), ten, identity, 0.0999, descriptors, spacing, k_all));
    EXPECT_EQ(descriptors.count(), 0u) << entry.m_name;
    EXPECT_EQ(spacing, -3.0) << entry.m_name;

    // A group without primitives, an object of zero area, no primitives at
    // all: nothing to place on, so the outputs end empty; a count entry
    // still writes the spacing of its infinite density, 0.
    for (GeometryObject const* object :
         {static_cast<GeometryObject const*>(&ten), static_cast<GeometryObject const*>(&flat),
          static_cast<GeometryObject const*>(&none)}) {
      unsigned int const group = object == &ten ? 5u : k_all;
      positions.resize(2);
      descriptors.resize(2);
      EXPECT_TRUE(entry.m_count(CtxEval(), *object, identity, 10, descriptors, positions, a, b,
                                spacing, group));
      EXPECT_EQ(descriptors.count() + positions.count() + a.count() + b.count(), 0u)
          << entry.m_name;
      EXPECT_EQ(spacing, 0.0) << entry.m_name;
      spacing = -3.0;
      descriptors.resize(2);
      EXPECT_TRUE(entry.m_density(CtxEval(), *object, identity, 1e6, descriptors, spacing, group));
      EXPECT_EQ(descriptors.count(), 0u) << entry.m_name;
      EXPECT_EQ(spacing, -3.0) << entry.m_name;
    }
  }

  // The placeholder entry does nothing.
  Descriptors descriptors(4);
  Vectors positions, a, b;
  double spacing = -3.0;
  EXPECT_FALSE(Sampling::surface_uniform(CtxEval(), ten, identity, 5.0, descriptors, positions, a,
                                         b, spacing, 0, true));
  EXPECT_EQ(descriptors.count(), 4u);
  EXPECT_EQ(spacing, -3.0);
}

// Every form places valid descriptors, grouped by primitive in area-table
// order; the long forms are the short ones evaluated; another call in between
// changes nothing; the density a count call reports places the same points.
TEST(SurfaceEntries, FormsAgreeAndCallsAreIndependent) {
  GeometryMesh const terrain = make_terrain();
  GMathMatrix4x4<double> const matrix =
      GMathMatrix4x4<double>::translation(0.5, 1, -2) * GMathMatrix4x4<double>::scale(2, 1, 3);
  for (Entries const& entry : k_entries) {
    for (unsigned int group : {k_all, 2u}) {
      SCOPED_TRACE(testing::Message() << entry.m_name << " group " << group);
      Descriptors first, second, by_density, dense, dense_long;
      Vectors positions, a, b, p2, a2, b2;
      double spacing = 0.0, spacing_long = 0.0, other = 0.0, dense_spacing = 0.0;
      entry.m_short_count(CtxEval(), terrain, matrix, 600, first, spacing, group);
      ASSERT_GT(first.count(), 200u);
      expect_valid_descriptors(terrain, group, first);
      entry.m_short_count(CtxEval(), terrain, matrix, 77, second, other, k_all);
      entry.m_count(CtxEval(), terrain, matrix, 600, second, positions, a, b, spacing_long, group);
      expect_same_descriptors(first, second);
      EXPECT_EQ(spacing, spacing_long);
      compute_world_samples(CtxEval(), terrain, matrix, second, p2, a2, b2);
      ASSERT_EQ(positions.count(), p2.count());
      for (std::size_t k = 0; k < p2.count(); ++k)
        ASSERT_TRUE(positions[k] == p2[k] && a[k] == a2[k] && b[k] == b2[k]) << k;
      entry.m_density(CtxEval(), terrain, matrix, 1.0000001 / (spacing * spacing), by_density,
                      other, group);
      expect_same_descriptors(first, by_density);
      entry.m_density(CtxEval(), terrain, matrix, 40.0, dense, dense_spacing, group);
      entry.m_long_density(CtxEval(), terrain, matrix, 40.0, dense_long, positions, a, b, other,
                           group);
      expect_same_descriptors(dense, dense_long);
      EXPECT_TRUE(dense_spacing == 1.0 / std::sqrt(40.0) && other == dense_spacing);
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
