#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "platform/octree/octree.h"

namespace {

struct Sphere {
  GMathVec3<double> p;
  double r;
};

// The predicate written out, checked against every stored point.
bool brute_force_overlap(std::vector<Sphere> const& stored, GMathVec3<double> const& p,
                         double const& r) {
  for (Sphere const& s : stored) {
    double const dx = p.x - s.p.x;
    double const dy = p.y - s.p.y;
    double const dz = p.z - s.p.z;
    double const reach = r + s.r;
    if (dx * dx + dy * dy + dz * dz < reach * reach)
      return true;
  }
  return false;
}

// Interleaves adds and queries on a tree over `box`; points fall partly
// outside the box and partly on its faces. Returns the number of queries
// that collided, so callers can check both outcomes were exercised.
int check_against_brute_force(GMathBbox3<double> const& box, unsigned int const& depth,
                              double const& max_radius, unsigned int const& seed) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  auto random_point = [&]() {
    GMathVec3<double> p;
    for (int a = 0; a < 3; ++a) {
      double const extent = box.m_max[a] - box.m_min[a];
      double const t = unit(rng);
      // 10% on a face, the rest spread over the box widened by 20%.
      if (t < 0.05)
        p[a] = box.m_min[a];
      else if (t < 0.1)
        p[a] = box.m_max[a];
      else
        p[a] = box.m_min[a] - 0.2 * extent + 1.4 * extent * unit(rng);
    }
    return p;
  };
  Octree tree;
  tree.create(box, depth);
  std::vector<Sphere> stored;
  int hits = 0;
  for (int i = 0; i < 3000; ++i) {
    GMathVec3<double> const p = random_point();
    double const r = max_radius * unit(rng);
    bool const expected = brute_force_overlap(stored, p, r);
    EXPECT_EQ(tree.overlap(p, r), expected) << "depth " << depth << " query " << i << " at (" << p.x
                                            << ", " << p.y << ", " << p.z << ") radius " << r;
    hits += expected;
    if (i % 3 != 0) {
      tree.add(p, r);
      stored.push_back(Sphere{p, r});
    }
  }
  EXPECT_EQ(tree.get_point_count(), stored.size());
  return hits;
}

}  // namespace

TEST(Octree, OverlapAgreesWithBruteForce) {
  GMathBbox3<double> const cube(GMathVec3<double>(-1.0, -1.0, -1.0), GMathVec3<double>(1, 1, 1));
  GMathBbox3<double> const slab(GMathVec3<double>(10.0, -3.0, 5.0),
                                GMathVec3<double>(14.0, 9.0, 5.25));
  for (unsigned int depth : {0u, 1u, 3u, 6u, 16u, 40u}) {
    int const hits = check_against_brute_force(cube, depth, 0.08, 17 + depth);
    EXPECT_GT(hits, 100) << depth;
    EXPECT_LT(hits, 2900) << depth;
  }
  check_against_brute_force(slab, 6, 0.3, 5);
  // A flat box (one axis of zero extent) and an empty one: everything still
  // answers exactly, the empty box through the overflow list.
  GMathBbox3<double> const flat(GMathVec3<double>(0.0, 0.0, 2.0), GMathVec3<double>(1, 1, 2));
  check_against_brute_force(flat, 6, 0.05, 9);
  check_against_brute_force(GMathBbox3<double>(), 6, 0.05, 11);
}

TEST(Octree, CollisionIsStrictAndSymmetricInTheRadii) {
  Octree tree;
  tree.create(GMathBbox3<double>(GMathVec3<double>(0, 0, 0), GMathVec3<double>(4, 4, 4)), 6);
  tree.add(GMathVec3<double>(1.0, 1.0, 1.0), 0.25);
  // Touching spheres (distance 1 = 0.25 + 0.75) do not collide.
  EXPECT_FALSE(tree.overlap(GMathVec3<double>(2.0, 1.0, 1.0), 0.75));
  EXPECT_TRUE(tree.overlap(GMathVec3<double>(2.0, 1.0, 1.0), 0.7500001));
  EXPECT_TRUE(tree.overlap(GMathVec3<double>(1.0, 1.0, 1.0), 0.0));
  // Radius 0 against radius 0 never collides, even at the same point.
  tree.add(GMathVec3<double>(3.0, 3.0, 3.0), 0.0);
  EXPECT_FALSE(tree.overlap(GMathVec3<double>(3.0, 3.0, 3.0), 0.0));
  EXPECT_TRUE(tree.overlap(GMathVec3<double>(3.0, 3.0, 3.5), 0.5000001));
  // A large stored radius reaches a query far from its cell.
  tree.add(GMathVec3<double>(0.0, 4.0, 0.0), 3.0);
  EXPECT_TRUE(tree.overlap(GMathVec3<double>(0.0, 1.5, 0.0), 0.6));
  // A query of radius 10 that overlaps a point by 1e-12: its cell block
  // must still reach the point's cell, which starts 1e-9 before the point.
  tree.create(GMathBbox3<double>(GMathVec3<double>(0, 0, 0), GMathVec3<double>(1, 1, 1)), 4);
  tree.add(GMathVec3<double>(0.5625 + 1e-9, 0.5, 0.5), 0.0);
  EXPECT_TRUE(tree.overlap(GMathVec3<double>(0.5625 + 1e-9 - 10.0 + 1e-12, 0.5, 0.5), 10.0));
  // create() drops everything.
  tree.create(GMathBbox3<double>(GMathVec3<double>(0, 0, 0), GMathVec3<double>(4, 4, 4)), 2);
  EXPECT_EQ(tree.get_point_count(), 0u);
  EXPECT_FALSE(tree.overlap(GMathVec3<double>(1.0, 1.0, 1.0), 1.0));
}
