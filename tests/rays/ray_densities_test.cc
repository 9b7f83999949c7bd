// Every ray generator's rays against its own pdf: one chi-square per case
// through the shared density harness (discarding and rejecting generators
// with their missing share in the harness's declined cell), and the pdf's
// integral by quadrature.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

#include "sampling/ray_generators.h"
#include "sampling/rays/ray_math.h"
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
  CosineWeightedHemisphereRayGenerator hemisphere, cone, clipped_hemisphere;
  AnisotropicReflectionRayGenerator glossy, brushed;
  AnisotropicRefractionRayGenerator frosted, brushed_glass;
  UniformSphereRayGenerator sphere;
  DiskRayGenerator disk, clipped_disk;
  Vec3 axis, cosine_clip, disk_axis, disk_clip;
  GMathMatrix4x4<double> disk_frame;

  Generators() {
    axis = unit(Vec3(-0.4, 0.2, 0.6));
    GMathRay const ray(Vec3(1.0, 2.0, 3.0), axis);
    hemisphere.init(ray, 180.0, 1.0, 1.0);
    cone.init(ray, 70.0, 0.3, 0.8);
    // A clip plane through the axis keeps half the azimuths.
    Vec3 t2;
    orthonormal_basis(axis, cosine_clip, t2);
    clipped_hemisphere = hemisphere;
    clipped_hemisphere.discard_clipped_samples(cosine_clip);

    // Head on, the normals beyond 45 degrees mirror below the surface and
    // are retried; obliquely under a tilted Ng, some are.
    Vec3 const down(0.0, 0.0, -1.0);
    std::mt19937_64 rng(14);
    anisotropic_test::init(glossy, anisotropic_test::flat_shading(12.0f, 12.0f, down));
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
  bool whole;  // nothing declined: the pdf integrates to 1
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
        {"cosine 180", DensityDomain::hemisphere, frame_about(g.axis), directions_of(g.hemisphere),
         pdf_of(g.hemisphere), true},
        {"cosine 70, spread reductions 0.3 0.8", DensityDomain::hemisphere, frame_about(g.axis),
         directions_of(g.cone), pdf_of(g.cone), true},
        {"cosine 180, discard", DensityDomain::hemisphere, frame_about(g.axis, g.cosine_clip),
         directions_of(g.clipped_hemisphere), kept_pdf_of(g.clipped_hemisphere, g.cosine_clip),
         false, 52},
        {"reflection 12 12", DensityDomain::sphere, shading_frame(g.glossy),
         directions_of(g.glossy), pdf_of(g.glossy), true},
        {"reflection 60 4", DensityDomain::sphere, shading_frame(g.brushed),
         directions_of(g.brushed), pdf_of(g.brushed), true},
        {"refraction 8 8, eta 1/1.5", DensityDomain::sphere, shading_frame(g.frosted),
         directions_of(g.frosted), pdf_of(g.frosted), true},
        {"refraction 40 6, eta 1.3", DensityDomain::sphere, shading_frame(g.brushed_glass),
         directions_of(g.brushed_glass, true), pdf_of(g.brushed_glass), false},
        {"uniform sphere", DensityDomain::sphere, DensityFrame{}, directions_of(g.sphere),
         pdf_of(g.sphere), true},
        {"disk", DensityDomain::hemisphere, disk_pole, directions_of(g.disk), pdf_of(g.disk), true},
        {"disk, discard", DensityDomain::hemisphere, disk_pole, directions_of(g.clipped_disk),
         kept_pdf_of(g.clipped_disk, g.disk_clip), false, 52},
    };
  }();
  return table;
}

// The cases above, and the line's and the plane's targets on their shapes.
double const alpha = chi_square_alpha(12);

class RayDensities : public testing::TestWithParam<int> {};

TEST_P(RayDensities, RaysFollowTheGeneratorsPdf) {
  Case const& c = cases()[static_cast<size_t>(GetParam())];
  DensityTestOptions options;
  options.frame = c.frame;
  options.alpha = alpha;
  options.angle_bins = c.angle_bins;
  options.seed = 100 + static_cast<unsigned>(GetParam());
  ChiSquareResult const r = chi_square_density(c.domain, c.sampler, c.pdf, options);
  EXPECT_TRUE(r.passed) << c.name << ": " << r.message;
  std::printf("%s: %s\n", c.name, r.message.c_str());
  if (c.whole) {
    double const integral = integrate_density(c.domain, c.pdf, c.frame);
    EXPECT_TRUE(std::fabs(integral - 1.0) <= 1e-3) << c.name << ": integral " << integral;
  }
}

INSTANTIATE_TEST_SUITE_P(Generators, RayDensities, testing::Range(0, 10));

// The line and the plane spread their targets uniformly with density
// pdf_length or pdf_area over their shapes (under an unevenly scaled frame);
// the plane's pdf per solid angle is its area density times t^2 / |cos|
// along every ray and integrates to 1; the lobes behind the discard cases
// integrate to 1.
TEST(RayDensities, ShapeTargetsAndWholeLobes) {
  GMathMatrix4x4<double> const frame = test_frame();
  Vec3 const origin = frame.transform_point(Vec3(0.1, -0.2, 0.7));
  Vec3 const x_side = frame.transform_vector(Vec3(1.0, 0.0, 0.0));
  Vec3 const normal = cross(x_side, frame.transform_vector(Vec3(0.0, 1.0, 0.0)));
  LineRayGenerator line;
  line.init(origin, frame, 0.5);
  PlaneRayGenerator plane;
  plane.init(origin, frame, 0.5, 0.5);
  EXPECT_EQ(line.pdf(Vec3(0.0, 0.0, 1.0)), 0.0);
  std::mt19937_64 rng(12);
  std::uniform_real_distribution<double> uniform(0.0, 1.0);
  double worst = 0.0;
  for (SampleRayGenerator const* g : {static_cast<SampleRayGenerator const*>(&line),
                                      static_cast<SampleRayGenerator const*>(&plane)}) {
    bool const is_line = g == &line;
    // Per unit of the local coordinates: the world density times the world
    // length or area of the local unit.
    double const local_density =
        is_line ? line.pdf_length() * x_side.length() : plane.pdf_area() * normal.length();
    ChiSquareResult const r = chi_square_test(
        ChiSquareDomain{0.0, 1.0, 0.0, 1.0, 51, 51}, 1000000,
        [&](int, double& a, double& b) {
          GMathRay ray;
          double t;
          Vec2 const uv(uniform(rng), uniform(rng));
          g->get_ray(uv, ray, &t);
          Vec3 const local = to_local(frame, ray.m_origin + ray.m_direction * t);
          a = local.x + 0.5;
          b = is_line ? uv.y : local.y + 0.5;
          if (!is_line) {
            double const expected = plane.pdf_area() * t * t * normal.length() /
                                    std::fabs(dot(ray.m_direction, normal));
            worst = std::max(worst, std::fabs(plane.pdf(ray.m_direction) / expected - 1.0));
          }
          return std::fabs(local.z) <= 1e-9 && (!is_line || std::fabs(local.y) <= 1e-9);
        },
        [&](double, double) { return local_density; }, alpha);
    EXPECT_TRUE(r.passed) << (is_line ? "line: " : "plane: ") << r.message;
    std::printf("%s targets: %s\n", is_line ? "line" : "plane", r.message.c_str());
    EXPECT_TRUE(std::fabs(local_density - 1.0) <= 1e-12) << local_density;
  }
  EXPECT_TRUE(worst <= 1e-9) << worst;

  Generators const& g = generators();
  double const integrals[3] = {
      integrate_density(DensityDomain::hemisphere, pdf_of(plane),
                        frame_about(unit(frame.transform_point(Vec3(0.0, 0.0, 0.0)) - origin))),
      integrate_density(DensityDomain::hemisphere, pdf_of(g.clipped_hemisphere),
                        frame_about(g.axis)),
      integrate_density(DensityDomain::hemisphere, pdf_of(g.clipped_disk),
                        frame_about(-g.disk_axis))};
  for (double const integral : integrals)
    EXPECT_TRUE(std::fabs(integral - 1.0) <= 1e-3) << integral;
  std::printf("plane pdf integral %.9f\n", integrals[0]);
}

}  // namespace
