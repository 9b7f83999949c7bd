#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "sampling/angles.h"
#include "sampling/ray_generators.h"
#include "sampling/rays/ray_math.h"
#include "shape_ray_test_support.h"
#include "tests/support/ray_bits.h"

namespace {

constexpr double k_pi = 3.141592653589793;

// A worked ray of the line, plane or disk generator from the origin
// (0, 0, 1) under the identity frame: exact distance and directions.
struct WorkedRay {
  double distance;
  GMathVec3<double> direction, rx_direction, ry_direction;
};

void expect_worked_ray(SampleRayGenerator const& g, GMathVec2<double> const& sample,
                       WorkedRay const& want) {
  GMathRay ray;
  double distance = 0.0;
  ASSERT_TRUE(g.get_ray(sample, ray, &distance));
  EXPECT_EQ(distance, want.distance);
  EXPECT_EQ(ray.m_direction, want.direction);
  EXPECT_TRUE(ray.m_has_differentials);
  GMathRayDifferential const& d = ray.m_differential;
  EXPECT_EQ(d.m_rx_direction, want.rx_direction);
  EXPECT_EQ(d.m_ry_direction, want.ry_direction);
  GMathVec3<double> const origin(0.0, 0.0, 1.0);
  EXPECT_TRUE(ray.m_origin == origin && d.m_rx_origin == origin && d.m_ry_origin == origin);
  EXPECT_EQ(ray.m_aux_cleared[0] + ray.m_aux_cleared[1], 0.0);
}

// Fills count records at p with the sentinel, padding included.
template <typename T>
void poison(T* p, size_t count) {
  std::memset(static_cast<void*>(p), 0xA5, count * sizeof(T));
}

}  // namespace

// ---- Uniform sphere ---------------------------------------------------------

TEST(UniformSphereRayGenerator, WorkedDirectionsAndSpreads) {
  UniformSphereRayGenerator g;
  GMathVec3<double> const centre(1.0, -2.0, 3.0);
  g.init(centre, 0.0, 0.0);
  GMathRay ray;
  double weight = 0.0;
  ASSERT_TRUE(g.get_ray(GMathVec2<double>(0.5, 0.0), ray, &weight));
  EXPECT_EQ(weight, 1.0);
  EXPECT_EQ(ray.m_direction, GMathVec3<double>(1.0, 0.0, 0.0)) << "equator at v = 0";
  // Turned by atan(2pi) towards increasing azimuth, atan(pi) towards +z.
  EXPECT_EQ(ray.m_differential.m_rx_direction,
            GMathVec3<double>(0.15717672547762854, 0.9875704921513856, 0.0))
      << "x spread";
  EXPECT_EQ(ray.m_differential.m_ry_direction,
            GMathVec3<double>(0.3033144710534224, 0.0, 0.9528905139886652))
      << "y spread";
  EXPECT_EQ(ray.m_origin, centre);
  EXPECT_EQ(ray.m_differential.m_rx_origin, centre);
  EXPECT_EQ(ray.m_differential.m_ry_origin, centre);
  EXPECT_TRUE(ray.m_has_differentials);
  EXPECT_EQ(ray.m_type, GMathRay::k_type_probe);
  EXPECT_EQ(ray.m_time, 0.0);
  EXPECT_EQ(ray.m_aux_cleared[0] + ray.m_aux_cleared[1], 0.0);

  for (double v : {0.0, 0.3, 1.0}) {
    g.get_ray(GMathVec2<double>(0.0, v), ray, nullptr);
    EXPECT_EQ(ray.m_direction, GMathVec3<double>(0.0, 0.0, 1.0)) << "u = 0 is the +z pole";
    g.get_ray(GMathVec2<double>(1.0, v), ray, nullptr);
    EXPECT_EQ(ray.m_direction, GMathVec3<double>(0.0, 0.0, -1.0)) << "u = 1 is the -z pole";
  }
  // The library's pi leaves cos(pi/2) at about 4e-13.
  g.get_ray(GMathVec2<double>(0.5, 0.25), ray, nullptr);
  EXPECT_TRUE(std::fabs(ray.m_direction.x - 3.966e-13) <= 5e-17) << ray.m_direction.x;
  EXPECT_EQ(ray.m_direction.y, 1.0);

  // Reductions of 1: no spread, the auxiliary rays are the main ray. Above 1
  // they turn the other way.
  UniformSphereRayGenerator flat(GMathRay::k_type_shadow, 2.5);
  flat.init(centre, 1.0, 1.0);
  flat.get_ray(GMathVec2<double>(0.3, 0.7), ray, nullptr);
  EXPECT_EQ(ray.m_differential.m_rx_direction, ray.m_direction);
  EXPECT_EQ(ray.m_differential.m_ry_direction, ray.m_direction);
  EXPECT_EQ(ray.m_type, GMathRay::k_type_shadow);
  EXPECT_EQ(ray.m_time, 2.5);
  flat.init(centre, 1.5, 1.5);
  flat.get_ray(GMathVec2<double>(0.5, 0.0), ray, nullptr);
  EXPECT_LT(ray.m_differential.m_rx_direction.y, 0.0);
  EXPECT_LT(ray.m_differential.m_ry_direction.z, 0.0);
}

// ---- Line, plane and disk -----------------------------------------------------

TEST(LineRayGenerator, WorkedRayAndDifferentials) {
  LineRayGenerator g;
  g.init(GMathVec3<double>(0.0, 0.0, 1.0), GMathMatrix4x4<double>(), 0.5);
  WorkedRay const want = {1.118033988749895,
                          {0.4472135954999579, 0.0, -0.8944271909999159},
                          {0.7071067811865475, 0.0, -0.7071067811865475},
                          {0.4082482904638631, 0.4082482904638631, -0.8164965809277261}};
  for (double v : {0.0, 0.4, 1.0})
    expect_worked_ray(g, GMathVec2<double>(1.0, v), want);
  GMathRay ray;
  g.get_ray(GMathVec2<double>(0.3, 0.2), ray, nullptr);
  EXPECT_EQ(ray.m_type, GMathRay::k_type_probe);
  EXPECT_EQ(ray.m_time, 0.0);
  // The ends and the middle of a placed segment.
  GMathMatrix4x4<double> const frame = test_frame();
  g.init(GMathVec3<double>(3.0, 4.0, 5.0), frame, 0.0);
  GMathVec3<double> const ends[3] = {frame.transform_point(GMathVec3<double>(-0.5, 0.0, 0.0)),
                                     frame.transform_point(GMathVec3<double>(0.0, 0.0, 0.0)),
                                     frame.transform_point(GMathVec3<double>(0.5, 0.0, 0.0))};
  for (int i = 0; i < 3; ++i) {
    GMathRay ray;
    double distance = 0.0;
    g.get_ray(GMathVec2<double>(0.5 * i, 0.9), ray, &distance);
    GMathVec3<double> const target = ray.m_origin + ray.m_direction * distance;
    EXPECT_TRUE((target - ends[i]).length() <= 1e-12) << i;
    // A reduction of 0 moves the x target by the whole segment.
    GMathVec3<double> const moved = ends[i] + (ends[2] - ends[0]) - ray.m_origin;
    EXPECT_TRUE((ray.m_differential.m_rx_direction - moved * (1.0 / moved.length())).length() <=
                1e-12)
        << i;
  }
}

TEST(PlaneRayGenerator, WorkedRayAndOneSidedDifferentials) {
  PlaneRayGenerator g;
  g.init(GMathVec3<double>(0.0, 0.0, 1.0), GMathMatrix4x4<double>(), 0.5, 1.0);
  // The y side is reduced to nothing: its auxiliary ray is the main ray.
  expect_worked_ray(g, GMathVec2<double>(1.0, 1.0),
                    {1.224744871391589,
                     {0.4082482904638631, 0.4082482904638631, -0.8164965809277261},
                     {0.6666666666666666, 0.3333333333333333, -0.6666666666666666},
                     {0.4082482904638631, 0.4082482904638631, -0.8164965809277261}});
  GMathRay ray;
  double distance = 0.0;
  // The four corners of the square aim at the four corners of the rectangle.
  GMathMatrix4x4<double> const frame = test_frame();
  g.init(GMathVec3<double>(3.0, 4.0, 5.0), frame, 0.3, 0.3);
  for (int k = 0; k < 5; ++k) {
    GMathVec2<double> const s =
        k < 4 ? GMathVec2<double>(k & 1, k >> 1) : GMathVec2<double>(0.5, 0.5);
    g.get_ray(s, ray, &distance);
    GMathVec3<double> const target = ray.m_origin + ray.m_direction * distance;
    GMathVec3<double> const want =
        frame.transform_point(GMathVec3<double>(s.x - 0.5, s.y - 0.5, 0.0));
    EXPECT_TRUE((target - want).length() <= 1e-12) << k;
  }
}

TEST(DiskRayGenerator, WorkedRayDifferentialsAndDegenerateRadius) {
  DiskRayGenerator g;
  g.init(GMathVec3<double>(0.0, 0.0, 1.0), GMathMatrix4x4<double>(), 2.0, 0.75, 0.75);
  // Displacements of a quarter of the diameter: (1, 0, 0) and (0, 1, 0).
  expect_worked_ray(g, GMathVec2<double>(1.0, 0.5),
                    {2.23606797749979,
                     {0.8944271909999159, 0.0, -0.4472135954999579},
                     {0.9486832980505138, 0.0, -0.31622776601683794},
                     {0.8164965809277261, 0.4082482904638631, -0.4082482904638631}});
  GMathRay ray;
  double distance = 0.0;
  // The centre of the square aims at the frame's translation.
  GMathMatrix4x4<double> const frame = test_frame();
  g.init(GMathVec3<double>(3.0, 4.0, 5.0), frame, 0.7, 0.5, 0.5);
  g.get_ray(GMathVec2<double>(0.5, 0.5), ray, &distance);
  GMathVec3<double> const centre(frame[3], frame[7], frame[11]);
  EXPECT_TRUE((ray.m_origin + ray.m_direction * distance - centre).length() <= 1e-12);
  // Radius 0: every sample aims at the centre, the auxiliary rays equal the
  // main ray although differentials stay on.
  g.init(GMathVec3<double>(3.0, 4.0, 5.0), frame, 0.0, 0.5, 0.5);
  GMathRay centre_ray;
  g.get_ray(GMathVec2<double>(0.5, 0.5), centre_ray, nullptr);
  for (GMathVec2<double> const& s : test_samples(50, 3)) {
    g.get_ray(s, ray, nullptr);
    ASSERT_EQ(ray.m_direction, centre_ray.m_direction);
    ASSERT_TRUE(ray.m_has_differentials);
    ASSERT_EQ(ray.m_differential.m_rx_direction, ray.m_direction);
    ASSERT_EQ(ray.m_differential.m_ry_direction, ray.m_direction);
  }
}

TEST(ShapeRayGenerators, SpreadReductionsSwitchDifferentials) {
  GMathMatrix4x4<double> const frame = test_frame();
  GMathVec3<double> const origin(3.0, 4.0, 5.0);
  LineRayGenerator line;
  PlaneRayGenerator plane;
  DiskRayGenerator disk;
  GMathRay ray;
  auto expect_none = [&](SampleRayGenerator const& g, char const* what) {
    poison(&ray, 1);
    g.get_ray(GMathVec2<double>(0.3, 0.6), ray, nullptr);
    EXPECT_FALSE(ray.m_has_differentials) << what;
    EXPECT_EQ(ray.m_aux[0] + ray.m_aux[1] + ray.m_aux_cleared[0] + ray.m_aux_cleared[1], 0.0)
        << what;
  };
  line.init(origin, frame, 1.0);
  expect_none(line, "line, reduction 1");
  line.init(origin, frame, 7.0);
  expect_none(line, "line, reduction above 1");
  plane.init(origin, frame, 1.0, 2.0);
  expect_none(plane, "plane, both at least 1");
  disk.init(origin, frame, 0.7, 1.0, 1.0);
  expect_none(disk, "disk, both at least 1");
  // NaN and negative reductions count as 0: the whole segment.
  LineRayGenerator zero, nan, negative;
  zero.init(origin, frame, 0.0);
  nan.init(origin, frame, std::nan(""));
  negative.init(origin, frame, -3.0);
  GMathRay r0, r1, r2;
  poison(&r0, 1);
  poison(&r1, 1);
  poison(&r2, 1);
  zero.get_ray(GMathVec2<double>(0.2, 0.0), r0, nullptr);
  nan.get_ray(GMathVec2<double>(0.2, 0.0), r1, nullptr);
  negative.get_ray(GMathVec2<double>(0.2, 0.0), r2, nullptr);
  EXPECT_EQ(std::memcmp(&r0, &r1, sizeof r0), 0);
  EXPECT_EQ(std::memcmp(&r0, &r2, sizeof r0), 0);
  // Setters reach later rays.
  plane.init(origin, frame, 0.5, 0.5);
  plane.set_ray_time(3.25);
  plane.set_ray_type(GMathRay::k_type_shadow);
  plane.get_ray(GMathVec2<double>(0.3, 0.6), ray, nullptr);
  EXPECT_EQ(ray.m_time, 3.25);
  EXPECT_EQ(ray.m_type, GMathRay::k_type_shadow);
  EXPECT_TRUE(ray.m_has_differentials);
}

TEST(ShapeRayGenerators, AuxiliaryTargetOnTheOriginGivesZeroDirection) {
  // Origin beside the rectangle's right edge, one width away from the
  // centre: the x auxiliary target of the centre sample is the origin itself.
  PlaneRayGenerator g;
  g.init(GMathVec3<double>(1.0, 0.0, 0.0), GMathMatrix4x4<double>(), 0.0, 1.0);
  GMathRay ray;
  g.get_ray(GMathVec2<double>(0.5, 0.5), ray, nullptr);
  EXPECT_EQ(ray.m_differential.m_rx_direction, GMathVec3<double>(0.0, 0.0, 0.0));
  EXPECT_EQ(ray.m_differential.m_ry_direction, ray.m_direction);
}

TEST(ShapeRayGenerators, ClipTestIsStrict) {
  // Identity frame, origin above the centre: the target's offset along x is
  // u - 0.5 exactly, so the plane x = 0 holds the samples with u = 0.5.
  PlacedShapes shapes;
  shapes.init(GMathVec3<double>(0.0, 0.0, 1.0), GMathMatrix4x4<double>(), 1.0, 0.5, 0.5);
  for (double scale : {1.0, 1e-3, 250.0}) {
    shapes.discard_clipped_samples(GMathVec3<double>(scale, 0.0, 0.0));
    double const just = std::ldexp(1.0, -40);
    for (SampleRayGenerator const* g : shapes.all) {
      GMathRay ray;
      double weight = -1.0;
      EXPECT_FALSE(g->get_ray(GMathVec2<double>(0.5, 0.5), ray, &weight)) << shapes.name(g);
      EXPECT_EQ(weight, -1.0);
      EXPECT_FALSE(g->get_ray(GMathVec2<double>(0.5 - just, 0.5), ray, &weight));
      EXPECT_TRUE(g->get_ray(GMathVec2<double>(0.5 + just, 0.5), ray, &weight));
    }
    // Copies keep the mode.
    DiskRayGenerator copy;
    copy = shapes.disk;
    GMathRay ray;
    EXPECT_FALSE(copy.get_ray(GMathVec2<double>(0.5 - std::ldexp(1.0, -40), 0.5), ray, nullptr));
  }
}

#ifdef SAMPLING_CHECKS
TEST(ShapeRayGeneratorsDeathTest, CallerContractsAreChecked) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  GMathVec2<double> const sample(0.5, 0.5);
  PlaneRayGenerator plane;
  // The origin on the rectangle: the ray towards its own origin.
  plane.init(GMathVec3<double>(0.0, 0.0, 0.0), GMathMatrix4x4<double>(), 0.5, 0.5);
  GMathRay ray;
  EXPECT_DEATH(plane.get_ray(sample, ray, nullptr), "ray origin lies on the shape");
  plane.init(GMathVec3<double>(0.0, 0.0, 1.0), GMathMatrix4x4<double>(), 0.5, 0.5);
  EXPECT_DEATH(plane.get_rays(&sample, 1, nullptr, nullptr), "null sample or ray array");
  UniformSphereRayGenerator sphere;
  sphere.init(GMathVec3<double>(0.0, 0.0, 0.0), 0.5, 0.5);
  EXPECT_DEATH(sphere.get_rays(nullptr, 2, &ray, nullptr), "null sample or ray array");
  GMathFrustum frustum;
  EXPECT_DEATH(
      sphere.get_frustum(GMathVec2<double>(0.5, 0.2), GMathVec2<double>(0.25, 0.4), frustum),
      "not the low corner");
}
#endif
