#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "sampling/sampling.h"
#include "tests/surface/surface_fixtures.h"

namespace {

typedef bool (*CountEntry)(CtxEval const&, GeometryObject const&, GMathMatrix4x4<double> const&,
                           unsigned int const&, Descriptors&, Vectors&, Vectors&, Vectors&, double&,
                           unsigned int const&);
typedef bool (*DensityEntry)(CtxEval const&, GeometryObject const&, GMathMatrix4x4<double> const&,
                             double const&, Descriptors&, double&, unsigned int const&);

struct Entries {
  char const* m_name;
  CountEntry m_count;
  DensityEntry m_density;
};

Entries const k_entries[] = {
    {"random", &Sampling::surface_random_noise_count, &Sampling::surface_random_noise_density},
    {"blue", &Sampling::surface_blue_noise_count, &Sampling::surface_blue_noise_density},
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
