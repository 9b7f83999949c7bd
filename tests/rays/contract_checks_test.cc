// Caller contracts of the ray generators that checked builds report, beyond
// those covered beside each generator (unit directions and normals, samples
// of the cosine and anisotropic generators, null arrays, origin on a shape).
#include <gtest/gtest.h>

#include "platform/geometry/geometry_differential.h"
#include "platform/math/gmath_matrix3x3.h"
#include "platform/math/gmath_matrix4x4.h"
#include "sampling/ray_generators.h"

#ifdef SAMPLING_CHECKS
namespace {

typedef GMathVec2<double> Vec2;
typedef GMathVec3<double> Vec3;

}  // namespace

// Line, plane and disk map only samples and box corners of [0,1]^2 onto
// their shape; the checks hold in every mode and on every path.
TEST(RayContractsDeathTest, ShapeSamplesAndCornersOutsideTheSquare) {
  GMathMatrix4x4<double> const frame = GMathMatrix4x4<double>::translation(0.0, 0.0, -2.0);
  LineRayGenerator line;
  PlaneRayGenerator plane;
  DiskRayGenerator disk;
  line.init(Vec3(), frame, 0.5);
  plane.init(Vec3(), frame, 0.5, 0.5);
  disk.init(Vec3(), frame, 1.0, 0.5, 0.5);
  disk.discard_clipped_samples(Vec3(0.0, 0.0, -1.0));
  SampleRayGenerator const* const generators[3] = {&line, &plane, &disk};
  Vec2 const outside[2] = {Vec2(0.5, 0.5), Vec2(0.5, -0.25)};
  for (SampleRayGenerator const* g : generators) {
    GMathRay rays[2];
    double weights[2];
    EXPECT_DEATH(g->get_ray(Vec2(1.0 + 1e-9, 0.5), rays[0], nullptr),
                 "shape ray generator: sample outside \\[0,1\\]\\^2");
    EXPECT_DEATH(g->get_rays(outside, 2, rays, weights), "shape ray generator: sample outside");
    EXPECT_DEATH(g->get_rays(outside, 2, rays, nullptr), "shape ray generator: sample outside");
    GMathFrustum frustum;
    EXPECT_DEATH(g->get_frustum(Vec2(0.0, 0.0), Vec2(1.5, 1.0), frustum),
                 "get_frustum: box corner outside \\[0,1\\]\\^2");
    // The edges of the square are inside.
    EXPECT_TRUE(g->get_ray(Vec2(1.0, 0.0), rays[0], nullptr) || g == &disk);
  }
}

TEST(RayContractsDeathTest, AnisotropicInitNeedsAUnitIncomingDirection) {
  GMathRay const incoming(Vec3(0.0, 0.0, 1.0), Vec3(0.0, 0.0, -2.0));
  AnisotropicReflectionRayGenerator reflection;
  AnisotropicRefractionRayGenerator refraction;
  GMathMatrix3x3<double> const shading;
  Vec3 const normal(0.0, 0.0, 1.0);
  GMathVec2<float> const axis(1.0f, 0.0f);
  EXPECT_DEATH(reflection.init(incoming, Vec3(), shading, normal, GeometryDifferential(), 10.0f,
                               10.0f, axis, 0.0f, 0.0f),
               "anisotropic ray generator init: the incoming direction is not a unit vector");
  EXPECT_DEATH(refraction.init(incoming, Vec3(), shading, normal, GeometryDifferential(), 10.0f,
                               10.0f, axis, 1.5f, 0.0f, 0.0f),
               "incoming direction is not a unit vector");
}

TEST(RayContractsDeathTest, CosineGetRaysNeedsItsArraysInEveryMode) {
  CosineWeightedHemisphereRayGenerator g;
  g.init(GMathRay(GMathVec3<double>(), GMathVec3<double>(0.0, 0.0, 1.0)), 90.0, 0.0, 0.0);
  GMathVec2<double> const sample(0.5, 0.5);
  GMathRay ray;
  for (int mode = 0; mode < 3; ++mode) {
    if (mode == 1)
      g.discard_clipped_samples(GMathVec3<double>(0.0, 0.0, 1.0));
    if (mode == 2)
      g.project_clipped_samples(GMathVec3<double>(0.0, 0.0, 1.0));
    EXPECT_DEATH(g.get_rays(nullptr, 2, &ray, nullptr),
                 "CosineWeightedHemisphereRayGenerator::get_rays: null sample or ray array");
    EXPECT_DEATH(g.get_rays(&sample, 1, nullptr, nullptr), "null sample or ray array");
    EXPECT_EQ(g.get_rays(nullptr, 0, nullptr, nullptr), 0u);
  }
}
#endif
