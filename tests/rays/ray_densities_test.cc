// Every ray generator's rays against its own pdf: one chi-square per case
// through the shared density harness (discarding and rejecting generators
// with their missing share in the harness's declined cell, and the pdf's
// integral checked there).

#include <gtest/gtest.h>

#include <vector>

#include "tests/rays/anisotropic_test_support.h"
#include "tests/rays/shape_ray_test_support.h"
#include "tests/support/density_harness.h"

namespace {

using Vec2 = GMathVec2<double>;
using Vec3 = GMathVec3<double>;

// The harness frame with pole z and first axis x (perpendicular to z).
DensityFrame frame_about(Vec3 const& z, Vec3 const& x) {
  return DensityFrame{x, cross(z, x), z};
}
DensityFrame frame_about(Vec3 const& z) {
  DensityFrame f;
  f.z = z;
  orthonormal_basis(z, f.x, f.y);
  return f;
}

// A generator's rays as the harness samples them: the direction of each ray
// it writes. `unit_only` also declines rays that are not unit vectors (the
// refraction generator's kept total internal reflections, which its pdf does
// not cover; its refracted rays are unit to about 1e-8, eta^2 being rounded
// to float).
DensitySampler directions_of(SampleRayGenerator const& g, bool unit_only = false) {
  return [&g, unit_only](Vec2 const& uv, Vec3& out) {
    GMathRay ray;
    if (!g.get_ray(uv, ray, nullptr))
      return false;
    out = ray.m_direction;
    return !unit_only || std::fabs(out.length() - 1.0) <= 1e-6;
  };
}

template <typename G>
Density pdf_of(G const& g) {
  return [&g](Vec3 const& w) { return g.pdf(w); };
}

// The pdf times the indicator of the directions a discard plane keeps.
template <typename G>
Density kept_pdf_of(G const& g, Vec3 const& normal) {
  return [&g, normal](Vec3 const& w) { return dot(w, normal) > 0.0 ? g.pdf(w) : 0.0; };
}

// The anisotropic lobes' pole: their shading normal.
template <typename G>
DensityFrame shading_frame(G const& g) {
  return frame_about(AnisotropicLobe<G>::local_to_global(g, Vec3(0.0, 0.0, 1.0)));
}

// The generators, alive as long as the cases that sample them.
struct Generators {
  CosineWeightedHemisphereRayGenerator cone, clipped_hemisphere;
  AnisotropicReflectionRayGenerator brushed;
  AnisotropicRefractionRayGenerator frosted, brushed_glass;
  UniformSphereRayGenerator sphere;
  DiskRayGenerator disk, clipped_disk;
  Vec3 axis, cosine_clip, disk_axis, disk_clip;

  Generators() {
    axis = unit(Vec3(-0.4, 0.2, 0.6));
    GMathRay const ray(Vec3(1.0, 2.0, 3.0), axis);
    clipped_hemisphere.init(ray, 180.0, 1.0, 1.0);
    cone.init(ray, 70.0, 0.3, 0.8);
    // A clip plane through the axis keeps half the azimuths.
    Vec3 t2;
    orthonormal_basis(axis, cosine_clip, t2);
    clipped_hemisphere.discard_clipped_samples(cosine_clip);

    // Obliquely under a tilted Ng, some normals mirror below the surface
    // and are retried.
    Vec3 const down(0.0, 0.0, -1.0);
    std::mt19937_64 rng(14);
    anisotropic_test::init(brushed, anisotropic_test::random_shading(rng, 60.0f, 4.0f, false));
    // Into glass (nothing rejected), out of it (the total internal
    // reflections that the generator keeps are declined).
    anisotropic_test::init(frosted, anisotropic_test::flat_shading(8.0f, 8.0f, down), 1.0f / 1.5f);
    anisotropic_test::init(brushed_glass, anisotropic_test::flat_shading(40.0f, 6.0f, down), 1.3f);

    sphere.init(Vec3(4.0, 5.0, 6.0), 0.5, 0.5);

    // A disk of world radius 0.9 seen from its axis, its rim on the bin edge
    // cos theta = 40 / 101; the clip plane holds the axis.
    disk_axis = unit(Vec3(0.3, -0.5, 0.8));
    orthonormal_basis(disk_axis, disk_clip, t2);
    GMathMatrix4x4<double> disk_frame;
    for (int r = 0; r < 3; ++r) {
      disk_frame(r, 0) = 1.5 * disk_clip[r];
      disk_frame(r, 1) = 1.5 * t2[r];
      disk_frame(r, 2) = 1.5 * disk_axis[r];
      disk_frame(r, 3) = 0.1 * (r + 1);
    }
    double const rim = 40.0 / 101.0;
    Vec3 const origin = disk_frame.transform_point(Vec3(0.0, 0.0, 0.0)) +
                        disk_axis * (0.9 * rim / std::sqrt(1.0 - rim * rim));
    disk.init(origin, disk_frame, 0.6, 0.5, 0.5);
    clipped_disk = disk;
    clipped_disk.discard_clipped_samples(disk_clip);
  }
};

Generators const& generators() {
  static Generators const g;
  return g;
}

struct Case {
  char const* name;
  DensityDomain domain;
  DensityFrame frame;
  DensitySampler sampler;
  Density pdf;
  unsigned int seed;
  // Bins such that a support edge that is not a zero of the density (a clip
  // plane through the pole, a shape's rim) runs along bin edges: the
  // harness's quadrature can take a cell that such an edge cuts a sliver
  // off for an empty one. An even azimuth count puts both halves of a clip
  // plane through the pole on edges.
  int angle_bins = 51;
};

std::vector<Case> const& cases() {
  static std::vector<Case> const table = [] {
    Generators const& g = generators();
    DensityFrame const disk_pole = frame_about(-g.disk_axis, g.disk_clip);
    return std::vector<Case>{
        {"cosine 70, spread reductions 0.3 0.8", DensityDomain::hemisphere, frame_about(g.axis),
         directions_of(g.cone), pdf_of(g.cone), 101},
        {"cosine 180, discard", DensityDomain::hemisphere, frame_about(g.axis, g.cosine_clip),
         directions_of(g.clipped_hemisphere), kept_pdf_of(g.clipped_hemisphere, g.cosine_clip), 102,
         52},
        {"reflection 60 4", DensityDomain::sphere, shading_frame(g.brushed),
         directions_of(g.brushed), pdf_of(g.brushed), 104},
        {"refraction 8 8, eta 1/1.5", DensityDomain::sphere, shading_frame(g.frosted),
         directions_of(g.frosted), pdf_of(g.frosted), 105},
        {"refraction 40 6, eta 1.3", DensityDomain::sphere, shading_frame(g.brushed_glass),
         directions_of(g.brushed_glass, true), pdf_of(g.brushed_glass), 106},
        {"uniform sphere", DensityDomain::sphere, DensityFrame{}, directions_of(g.sphere),
         pdf_of(g.sphere), 107},
        {"disk", DensityDomain::hemisphere, disk_pole, directions_of(g.disk), pdf_of(g.disk), 108},
        {"disk, discard", DensityDomain::hemisphere, disk_pole, directions_of(g.clipped_disk),
         kept_pdf_of(g.clipped_disk, g.disk_clip), 109, 52},
    };
  }();
  return table;
}

double const alpha = chi_square_alpha(8);

class RayDensities : public testing::TestWithParam<int> {};

TEST_P(RayDensities, RaysFollowTheGeneratorsPdf) {
  Case const& c = cases()[static_cast<size_t>(GetParam())];
  DensityTestOptions options;
  options.frame = c.frame;
  options.alpha = alpha;
  options.angle_bins = c.angle_bins;
  options.seed = c.seed;
  ChiSquareResult const r = chi_square_density(c.domain, c.sampler, c.pdf, options);
  EXPECT_TRUE(r.passed) << c.name << ": " << r.message;
}

INSTANTIATE_TEST_SUITE_P(Generators, RayDensities, testing::Range(0, 8));

// The line's and the plane's targets are their samples' points, and their
// pdfs agree with their area densities along every ray (both the rays
// harness's). The plane's pdf is 0 off its rectangle: towards points just
// beyond an edge or a corner, and positive just within. pdf_length is one
// over the world length of the local unit.
TEST(RayDensities, ShapeDensities) {
  GMathMatrix4x4<double> const frame = test_frame();
  Vec3 const origin = frame.transform_point(Vec3(0.1, -0.2, 0.7));
  LineRayGenerator line;
  line.init(origin, frame, 0.5);
  PlaneRayGenerator plane;
  plane.init(origin, frame, 0.5, 0.5);
  EXPECT_TRUE(std::fabs(line.pdf_length() * frame.transform_vector(Vec3(1, 0, 0)).length() - 1.0) <=
              1e-15);
  for (Vec2 const& p : {Vec2(0.5, 0.2), Vec2(-0.3, -0.5), Vec2(-0.5, 0.5)}) {
    for (double const f : {1.0 - 1e-9, 1.0 + 1e-9}) {
      Vec3 const to = frame.transform_point(Vec3(p.x * f, p.y * f, 0.0)) - origin;
      EXPECT_EQ(plane.pdf(unit(to)) > 0.0, f < 1.0) << p.x << " " << p.y << " " << f;
    }
  }
}

}  // namespace
