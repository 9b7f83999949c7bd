// The sphere, line, plane and disk generators: edge cases of their targets
// and auxiliary rays, the strict clip test, and the packet frusta. (Targets
// on the shapes, auxiliary rays, weights, packing and the array paths are the
// rays harness's.)
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "shape_ray_test_support.h"
#include "tests/support/ray_bits.h"

namespace {

typedef GMathVec2<double> Vec2;
typedef GMathVec3<double> Vec3;

GMathFrustum frustum_of(SampleRayGenerator const& g, Vec2 const& c0, Vec2 const& c1) {
  GMathFrustum f;
  g.get_frustum(c0, c1, f);
  return f;
}

}  // namespace

// The disk's concentric map: the square's edge midpoints reach the rim on the
// frame's axes; a disk of radius 0 aims them at its centre. (Targets and
// auxiliary rays of every placement are the rays harness's.)
TEST(DiskRayGenerator, RimAndZeroRadius) {
  GMathMatrix4x4<double> const frame = test_frame();
  Vec3 const origin = frame.transform_point(Vec3(0.2, -0.1, 0.6));
  DiskRayGenerator disk;
  for (double const radius : {0.8, 0.0}) {
    disk.init(origin, frame, radius, 0.25, 0.6);
    Vec2 const rim[4] = {{1.0, 0.5}, {0.5, 1.0}, {0.0, 0.5}, {0.5, 0.5}};
    Vec3 const local[4] = {{radius, 0.0, 0.0}, {0.0, radius, 0.0}, {-radius, 0.0, 0.0}, {}};
    for (int k = 0; k < 4; ++k) {
      GMathRay ray;
      double t;
      disk.get_ray(rim[k], ray, &t);
      Vec3 const p = ray.m_origin + ray.m_direction * t - frame.transform_point(local[k]);
      EXPECT_TRUE(p.length() <= 1e-11) << radius << " " << k << ": " << p.x << " " << p.y;
    }
  }
}

// The clip test is strict; generators built without arguments write the
// probe type and time 0.
TEST(ShapeRayGenerators, ClipTestIsStrictAndDefaultTypeAndTime) {
  // Identity frame, origin above the centre: the target's offset along x is
  // u - 0.5 exactly, so the plane x = 0 holds the samples with u = 0.5.
  PlacedShapes shapes;
  UniformSphereRayGenerator sphere;
  sphere.init(Vec3(1.0, 2.0, 3.0), 0.5, 0.5);
  GMathRay probe = patterned_rays(1)[0];
  sphere.get_ray(Vec2(0.3, 0.6), probe, nullptr);
  EXPECT_TRUE(probe.m_type == GMathRay::k_type_probe && probe.m_time == 0.0);
  shapes.init(Vec3(0.0, 0.0, 1.0), GMathMatrix4x4<double>(), 1.0, 0.5, 0.5);
  double const just = std::ldexp(1.0, -40);
  for (double scale : {1.0, 1e-3, 250.0}) {
    shapes.line.discard_clipped_samples(Vec3(scale, 0.0, 0.0));
    shapes.plane.discard_clipped_samples(Vec3(scale, 0.0, 0.0));
    shapes.disk.discard_clipped_samples(Vec3(scale, 0.0, 0.0));
    for (SampleRayGenerator const* g : shapes.all) {
      GMathRay ray;
      double weight = -1.0;
      EXPECT_TRUE(!g->get_ray(Vec2(0.5, 0.5), ray, &weight) &&
                  !g->get_ray(Vec2(0.5 - just, 0.5), ray, &weight) && weight == -1.0 &&
                  g->get_ray(Vec2(0.5 + just, 0.5), ray, &weight) &&
                  ray.m_type == GMathRay::k_type_probe && ray.m_time == 0.0)
          << shapes.name(g) << " " << scale;
    }
  }
}

// Planes of known boxes: the line's strip is 0.02 wide whatever v, the
// plane's sides pass through the rectangle's edges, the sphere's are widened
// towards the corners' centroid. (Boxes of one point are the rays
// harness's.)
TEST(ShapeFrusta, KnownAndDegenerateBoxes) {
  Vec3 const origin(0.0, 0.0, 1.0);
  LineRayGenerator line;
  PlaneRayGenerator plane;
  UniformSphereRayGenerator sphere;
  line.init(origin, GMathMatrix4x4<double>(), 0.5);
  plane.init(origin, GMathMatrix4x4<double>(), 0.5, 0.5);
  sphere.init(origin, 0.5, 0.5);
  // Line and plane, identity frame: the normals and N . X + d through the
  // origin at the frame's unit distance.
  Vec3 const normals[2][4] = {{{0, 1, -0.01}, {-0.02, 0, -0.01}, {0, -1, -0.01}, {0.02, 0, -0.01}},
                              {{0, 1, -0.5}, {-1, 0, -0.5}, {0, -1, -0.5}, {1, 0, -0.5}}};
  GMathFrustum const known[2] = {frustum_of(line, Vec2(0.0, 0.2), Vec2(1.0, 0.7)),
                                 frustum_of(plane, Vec2(0.0, 0.0), Vec2(1.0, 1.0))};
  for (int i = 0; i < 2; ++i) {
    for (unsigned int k = 0; k < 4; ++k) {
      EXPECT_TRUE(known[i].m_plane_normal[k] == normals[i][k] &&
                  known[i].m_plane_distance[k] == -normals[i][k].z &&
                  known[i].m_plane_point[k] == origin)
          << i << " " << k << ": " << known[i].m_plane_normal[k].x << " "
          << known[i].m_plane_normal[k].z;
    }
  }
  GMathFrustum const f = frustum_of(sphere, Vec2(0.25, 0.0), Vec2(0.75, 0.25));
  EXPECT_EQ(f.m_plane_normal[0], Vec3(0.03750000000001487, 0.9035254037844386, 0.0));
  EXPECT_EQ(f.m_plane_distance[0], -0.0);
}

// Every ray of a sample in a box (its corners, edge midpoints, centre and
// random inner points) lies on the inner side N . X + d >= 0 of all four
// planes, whichever way round the corners are given.
TEST(ShapeFrusta, LinePlaneAndDiskBoxesHoldTheirRaysInAnyCornerOrder) {
  PlacedShapes shapes;
  std::mt19937_64 rng(5);
  std::uniform_real_distribution<double> uniform(0.0, 1.0);
  int const grids[][2] = {{8, 8}, {3, 5}, {2, 2}, {1, 1}};
  // Near and far origins: the disk's widening grows with the distance, and
  // covers its rim for the whole square only from far away.
  for (Vec3 const& origin : {Vec3(2.0, -1.0, 4.0), Vec3(-40.0, 25.0, 60.0)}) {
    shapes.init(origin, test_frame(), 0.8, 0.5, 0.5);
    for (SampleRayGenerator const* g : shapes.all) {
      for (auto const& grid : grids) {
        if (g == &shapes.disk && grid[0] == 1 && origin.length() < 10.0)
          continue;
        for (int cell = 0; cell < grid[0] * grid[1]; ++cell) {
          int const i = cell % grid[0], j = cell / grid[0];
          Vec2 const lo(double(i) / grid[0], double(j) / grid[1]);
          Vec2 const hi(double(i + 1) / grid[0], double(j + 1) / grid[1]);
          for (bool const swapped : {false, true}) {
            GMathFrustum const f = swapped ? frustum_of(*g, hi, lo) : frustum_of(*g, lo, hi);
            for (int n = 0; n < 24; ++n) {
              double const a = n < 9 ? 0.5 * (n % 3) : uniform(rng);
              double const b = n < 9 ? 0.5 * (n / 3) : uniform(rng);
              Vec2 const s(lo.x + (hi.x - lo.x) * a, lo.y + (hi.y - lo.y) * b);
              GMathRay ray;
              double t;
              g->get_ray(s, ray, &t);
              Vec3 const x = ray.m_origin + ray.m_direction * t;
              for (unsigned int k = 0; k < 4; ++k) {
                double const tol = 1e-12 * f.m_plane_normal[k].length() * (origin.length() + t + 1);
                ASSERT_TRUE(f.evaluate(k, x) >= -tol)
                    << shapes.name(g) << " plane " << k << " grid " << grid[0] << "x" << grid[1]
                    << " cell " << cell << (swapped ? " swapped" : "") << " origin " << origin.x;
              }
            }
          }
        }
      }
    }
  }
}
