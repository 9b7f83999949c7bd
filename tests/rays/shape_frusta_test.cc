#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstring>
#include <random>
#include <vector>

#include "sampling/ray_generators.h"
#include "shape_ray_test_support.h"

namespace {

void expect_plane(GMathFrustum const& f, unsigned int k, GMathVec3<double> const& normal,
                  double distance, GMathVec3<double> const& point) {
  EXPECT_EQ(f.m_plane_normal[k], normal) << "plane " << k << ": " << f.m_plane_normal[k].x << " "
                                         << f.m_plane_normal[k].y << " " << f.m_plane_normal[k].z;
  EXPECT_EQ(f.m_plane_distance[k], distance) << "plane " << k;
  EXPECT_EQ(f.m_plane_point[k], point) << "plane " << k;
}

// Field by field, bit for bit (the record's tail padding is not compared).
bool same_frustum(GMathFrustum const& a, GMathFrustum const& b) {
  return std::memcmp(&a, &b, offsetof(GMathFrustum, m_plane_count) + sizeof(unsigned int)) == 0;
}

GMathFrustum frustum_of(SampleRayGenerator const& g, GMathVec2<double> const& c0,
                        GMathVec2<double> const& c1) {
  GMathFrustum f;
  g.get_frustum(c0, c1, f);
  return f;
}

// Every ray of a sample in [c0, c1] (its corners, edge points and random
// inner points) lies on the inner side of all four planes, N . X + d >= 0,
// up to rounding. Returns the number of rays checked.
unsigned int expect_box_holds_its_rays(SampleRayGenerator const& g, GMathVec2<double> const& c0,
                                       GMathVec2<double> const& c1, std::mt19937_64& rng) {
  GMathFrustum const f = frustum_of(g, c0, c1);
  EXPECT_EQ(f.m_plane_count, 4u);
  std::uniform_real_distribution<double> uniform(0.0, 1.0);
  unsigned int checked = 0;
  for (int i = 0; i < 48; ++i) {
    // Nine points on the corners, edges and centre, then random ones.
    double const a = i < 9 ? 0.5 * (i % 3) : uniform(rng);
    double const b = i < 9 ? 0.5 * (i / 3) : uniform(rng);
    GMathVec2<double> const s(c0.x + (c1.x - c0.x) * a, c0.y + (c1.y - c0.y) * b);
    GMathRay ray;
    double t = 1.0;
    if (!g.get_ray(s, ray, &t))
      continue;
    GMathVec3<double> const x = ray.m_origin + ray.m_direction * t;
    for (unsigned int k = 0; k < 4; ++k) {
      double const tol = 1e-12 * f.m_plane_normal[k].length() * (ray.m_origin.length() + t + 1.0);
      EXPECT_TRUE(f.evaluate(k, x) >= -tol)
          << "plane " << k << " box (" << c0.x << ", " << c0.y << ")-(" << c1.x << ", " << c1.y
          << ") sample (" << s.x << ", " << s.y << "): " << f.evaluate(k, x);
    }
    ++checked;
  }
  return checked;
}

// The boxes of an nx x ny grid over the square, each checked in its low-high
// order and, where `any_order`, with its corners swapped.
void expect_grid_holds_its_rays(SampleRayGenerator const& g, int nx, int ny, bool any_order) {
  SCOPED_TRACE(testing::Message() << nx << " x " << ny << " grid");
  std::mt19937_64 rng(static_cast<unsigned int>(nx * 31 + ny));
  for (int i = 0; i < nx; ++i) {
    for (int j = 0; j < ny; ++j) {
      GMathVec2<double> const c0(double(i) / nx, double(j) / ny);
      GMathVec2<double> const c1(double(i + 1) / nx, double(j + 1) / ny);
      EXPECT_GT(expect_box_holds_its_rays(g, c0, c1, rng), 0u);
      if (any_order)
        expect_box_holds_its_rays(g, c1, c0, rng);
    }
  }
}

}  // namespace

TEST(ShapeFrusta, WorkedLineAndPlaneFrusta) {
  GMathVec3<double> const origin(0.0, 0.0, 1.0);
  LineRayGenerator line;
  line.init(origin, GMathMatrix4x4<double>(), 0.5);
  GMathFrustum const f = frustum_of(line, GMathVec2<double>(0.0, 0.2), GMathVec2<double>(1.0, 0.7));
  EXPECT_EQ(f.m_plane_count, 4u);
  expect_plane(f, 0, GMathVec3<double>(0.0, 1.0, -0.01), 0.01, origin);
  expect_plane(f, 1, GMathVec3<double>(-0.02, 0.0, -0.01), 0.01, origin);
  expect_plane(f, 2, GMathVec3<double>(0.0, -1.0, -0.01), 0.01, origin);
  expect_plane(f, 3, GMathVec3<double>(0.02, 0.0, -0.01), 0.01, origin);
  // The line's frustum ignores v.
  GMathFrustum const other =
      frustum_of(line, GMathVec2<double>(0.0, 0.0), GMathVec2<double>(1.0, 1.0));
  EXPECT_TRUE(same_frustum(f, other));

  PlaneRayGenerator plane;
  plane.init(origin, GMathMatrix4x4<double>(), 0.5, 0.5);
  GMathFrustum const p =
      frustum_of(plane, GMathVec2<double>(0.0, 0.0), GMathVec2<double>(1.0, 1.0));
  expect_plane(p, 0, GMathVec3<double>(0.0, 1.0, -0.5), 0.5, origin);
  expect_plane(p, 1, GMathVec3<double>(-1.0, 0.0, -0.5), 0.5, origin);
  expect_plane(p, 2, GMathVec3<double>(0.0, -1.0, -0.5), 0.5, origin);
  expect_plane(p, 3, GMathVec3<double>(1.0, 0.0, -0.5), 0.5, origin);
  // A corner of the rectangle lies exactly on its two sides.
  GMathVec3<double> const corner(0.5, 0.5, 0.0);
  EXPECT_EQ(p.evaluate(1, corner), 0.0);
  EXPECT_EQ(p.evaluate(2, corner), 0.0);
  EXPECT_GT(p.evaluate(0, corner), 0.0);
}

TEST(ShapeFrusta, WorkedSphereFrustumAndPoles) {
  UniformSphereRayGenerator sphere;
  sphere.init(GMathVec3<double>(0.0, 0.0, 0.0), 0.5, 0.5);
  GMathFrustum const f =
      frustum_of(sphere, GMathVec2<double>(0.25, 0.0), GMathVec2<double>(0.75, 0.25));
  EXPECT_EQ(f.m_plane_count, 4u);
  EXPECT_EQ(f.m_plane_normal[0], GMathVec3<double>(0.03750000000001487, 0.9035254037844386, 0.0));
  for (unsigned int k = 0; k < 4; ++k) {
    EXPECT_EQ(f.m_plane_distance[k], 0.0);
    EXPECT_TRUE(std::signbit(f.m_plane_distance[k])) << "-(0) is negative zero, plane " << k;
  }
  // umin = 0 puts corners 0 and 3 on the +z pole: side 3 collapses.
  GMathFrustum const pole =
      frustum_of(sphere, GMathVec2<double>(0.0, 0.1), GMathVec2<double>(0.2, 0.3));
  EXPECT_EQ(pole.m_plane_normal[3], GMathVec3<double>(0.0, 0.0, 0.0));
  EXPECT_GT(pole.m_plane_normal[1].length(), 0.0);
}

TEST(ShapeFrusta, DegenerateBoxGivesZeroPlanes) {
  GMathMatrix4x4<double> const frame = test_frame();
  GMathVec3<double> const origin(2.0, -1.0, 4.0);
  UniformSphereRayGenerator sphere;
  PlacedShapes shapes;
  sphere.init(origin, 0.5, 0.5);
  shapes.init(origin, frame, 0.8, 0.5, 0.5);
  SampleRayGenerator const* const generators[4] = {&sphere, shapes.all[0], shapes.all[1],
                                                   shapes.all[2]};
  GMathVec2<double> const c(0.3, 0.6);
  for (SampleRayGenerator const* g : generators) {
    GMathFrustum const f = frustum_of(*g, c, c);
    EXPECT_EQ(f.m_plane_count, 4u);
    for (unsigned int k = 0; k < 4; ++k) {
      // The line's strip keeps a width, so only the sides along it vanish.
      if (g == &shapes.line && (k == 1 || k == 3))
        continue;
      EXPECT_EQ(f.m_plane_normal[k], GMathVec3<double>(0.0, 0.0, 0.0)) << k;
      EXPECT_EQ(f.m_plane_distance[k], 0.0) << k;
      EXPECT_EQ(f.m_plane_point[k], origin) << k;
    }
  }
}

TEST(ShapeFrusta, LinePlaneAndDiskBoxesHoldTheirRaysInAnyCornerOrder) {
  PlacedShapes shapes;
  // Near and far origins: the widening of the disk grows with the distance.
  for (GMathVec3<double> const& origin :
       {GMathVec3<double>(2.0, -1.0, 4.0), GMathVec3<double>(-40.0, 25.0, 60.0)}) {
    shapes.init(origin, test_frame(), 0.8, 0.5, 0.5);
    for (SampleRayGenerator const* g : shapes.all) {
      SCOPED_TRACE(shapes.name(g));
      SCOPED_TRACE(testing::Message() << "origin " << origin.x);
      expect_grid_holds_its_rays(*g, 8, 8, true);
      expect_grid_holds_its_rays(*g, 3, 5, true);
      expect_grid_holds_its_rays(*g, 2, 2, true);
      // The whole square: exact for the straight-edged shapes; the disk's
      // widening covers its rim only from far enough away.
      if (g != &shapes.disk || origin.length() > 10.0)
        expect_grid_holds_its_rays(*g, 1, 1, true);
    }
  }
}

TEST(ShapeFrusta, ModeSwitchesLeaveTheFrustumUnchanged) {
  PlacedShapes shapes;
  shapes.init(GMathVec3<double>(2.0, -1.0, 4.0), test_frame(), 0.8, 0.5, 0.5);
  GMathVec2<double> const c0(0.125, 0.5), c1(0.375, 0.625);
  GMathFrustum before[3], discard[3], after[3];
  for (int i = 0; i < 3; ++i)
    before[i] = frustum_of(*shapes.all[i], c0, c1);
  shapes.discard_clipped_samples(GMathVec3<double>(0.3, -0.2, 0.9));
  for (int i = 0; i < 3; ++i)
    discard[i] = frustum_of(*shapes.all[i], c0, c1);
  shapes.disable_clipping();
  for (int i = 0; i < 3; ++i) {
    after[i] = frustum_of(*shapes.all[i], c0, c1);
    EXPECT_TRUE(same_frustum(before[i], discard[i])) << shapes.name(shapes.all[i]);
    EXPECT_TRUE(same_frustum(before[i], after[i])) << shapes.name(shapes.all[i]);
  }
}
