// Caller contracts of the ray generators that checked builds report, every
// generator in every mode: unit directions and normals, samples and box
// corners in [0,1]^2 (the square's edges inside; the sphere takes any),
// arrays present when count > 0, an origin off the shape, the sphere's low
// corner first.
#include <gtest/gtest.h>

#include "platform/geometry/geometry_differential.h"
#include "platform/math/gmath_matrix3x3.h"
#include "platform/math/gmath_matrix4x4.h"
#include "sampling/ray_generators.h"
#include "tests/support/placement.h"

#ifdef SAMPLING_CHECKS
TEST(RayContractsDeathTest, EveryGeneratorChecksItsCaller) {
  typedef GMathVec2<double> Vec2;
  typedef GMathVec3<double> Vec3;
  GMathMatrix4x4<double> const frame = scaled_and_moved(1.0, 1.0, 1.0, 0.0, 0.0, -2.0);
  GMathMatrix3x3<double> const shading;
  GeometryDifferential const none;
  GMathVec2<float> const axis(1.0f, 0.0f);
  Vec3 const up(0.0, 0.0, 1.0);
  GMathRay const incoming(Vec3(), -up), longer(Vec3(), up * 2.0);
  CosineWeightedHemisphereRayGenerator cosine[3];
  AnisotropicReflectionRayGenerator reflection;
  AnisotropicRefractionRayGenerator refraction;
  UniformSphereRayGenerator sphere;
  LineRayGenerator line;
  PlaneRayGenerator plane;
  DiskRayGenerator disk;
  EXPECT_DEATH(cosine[0].init(longer, 90.0, 0.0, 0.0), "unit vector");
  EXPECT_DEATH(reflection.init(longer, Vec3(), shading, up, none, 9.0f, 9.0f, axis, 0.0f, 0.0f),
               "incoming direction is not a unit vector");
  EXPECT_DEATH(refraction.init(longer, Vec3(), shading, up, none, 9.0f, 9.0f, axis, 1.5f, 0.f, 0.f),
               "incoming direction is not a unit vector");
  for (CosineWeightedHemisphereRayGenerator& g : cosine)
    g.init(incoming, 90.0, 0.0, 0.0);
  cosine[1].discard_clipped_samples(-up);
  cosine[2].project_clipped_samples(-up);
  reflection.init(incoming, Vec3(), shading, up, none, 2.0f, 2.0f, axis, 0.0f, 0.0f);
  refraction.init(incoming, Vec3(), shading, up, none, 2.0f, 2.0f, axis, 1.3f, 0.0f, 0.0f);
  GMathRay rays[2];
  EXPECT_DEATH(reflection.compute_ray(up * 2.0, rays[0]), "normal not of unit length");
  EXPECT_DEATH(refraction.compute_ray(up * 0.5, rays[0]), "normal not of unit length");
  EXPECT_DEATH(reflection.compute_ray(-up, rays[0]), "opposite");
  EXPECT_DEATH(refraction.compute_ray(-up, rays[0]), "opposite");
  sphere.init(Vec3(), 0.5, 0.5);
  line.init(Vec3(), frame, 0.5);
  plane.init(Vec3(), frame, 0.5, 0.5);
  disk.init(Vec3(), frame, 1.0, 0.5, 0.5);
  disk.discard_clipped_samples(-up);
  SampleRayGenerator const* const all[] = {
      &sphere, &cosine[0], &cosine[1], &cosine[2], &reflection, &refraction, &line, &plane, &disk};
  Vec2 const samples[2] = {Vec2(0.5, 0.5), Vec2(0.5, -0.25)};
  double weights[2];
  GMathFrustum frustum;
  for (SampleRayGenerator const* g : all) {
    EXPECT_DEATH(g->get_rays(samples, 1, nullptr, nullptr), "null sample or ray array");
    EXPECT_DEATH(g->get_rays(nullptr, 2, rays, nullptr), "null sample or ray array");
    EXPECT_EQ(g->get_rays(nullptr, 0, nullptr, nullptr), 0u);
    if (g == &sphere)
      continue;
    EXPECT_DEATH(g->get_ray(Vec2(1.0 + 1e-9, 0.5), rays[0], nullptr), "sample.* \\[0,1\\]\\^2 \\(");
    EXPECT_DEATH(g->get_rays(samples, 2, rays, weights), "sample.* \\[0,1\\]\\^2 \\(");
    if (g != &reflection && g != &refraction) {
      EXPECT_DEATH(g->get_frustum(Vec2(-1e-9, 0.0), Vec2(1.0, 1.0), frustum), " \\[0,1\\]\\^2 \\(");
    }
  }
  EXPECT_DEATH(sphere.get_frustum(Vec2(0.5, 0.2), Vec2(0.25, 0.4), frustum), "not the low corner");
  plane.init(Vec3(0.0, 0.0, -2.0), frame, 0.5, 0.5);
  EXPECT_DEATH(plane.get_ray(samples[0], rays[0], nullptr), "ray origin lies on the shape");
}
#endif
