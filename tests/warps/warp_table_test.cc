// Properties every warp shares, over one table of them: frames, the inline
// bodies against the exported entries bit for bit, distributions against
// the library's own densities, density integrals and inverse round trips.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

#include "sampling/patterns/radical_inverse.h"
#include "sampling/sampling.h"
#include "sampling/warps.h"
#include "tests/support/density_harness.h"

namespace {

using Vec2 = GMathVec2<double>;
using Vec3 = GMathVec3<double>;
namespace warps = sampling::warps;

// Distribution tests of the suite (11 warps and radius scales below, one in
// the harness test) share one Sidak-corrected level.
double const alpha = chi_square_alpha(12);

// Every warp in one shape: radius scale last, ignored by the disk and the
// sphere.
using Warp = void (*)(double const&, double const&, Vec3&, double const&);
using FramedWarp = void (*)(double const&, double const&, Vec3&, Vec3&, Vec3&, double const&);
using Pdf = double (*)(Vec3 const&, double const&);
using Inverse = void (*)(Vec3 const&, double const&, double&, double&);

template <void (*F)(double const&, double const&, Vec3&)>
void no_scale(double const& u, double const& v, Vec3& d, double const&) {
  F(u, v, d);
}
template <void (*F)(double const&, double const&, Vec3&, Vec3&, Vec3&)>
void no_scale(double const& u, double const& v, Vec3& d, Vec3& t, Vec3& b, double const&) {
  F(u, v, d, t, b);
}
template <double (*F)(Vec3 const&)>
double no_scale(Vec3 const& d, double const&) {
  return F(d);
}
template <void (*F)(Vec3 const&, double&, double&)>
void no_scale(Vec3 const& d, double const&, double& u, double& v) {
  F(d, u, v);
}
template <double (*F)()>
double no_point(Vec3 const&, double const&) {
  return F();
}

// One side of a warp: the exported entries of Sampling or the inline bodies.
struct Side {
  Warp warp;
  FramedWarp framed;
  Pdf pdf;
  Inverse inverse;
};

struct Entry {
  char const* name;
  DensityDomain domain;
  std::vector<double> radius_scales;
  Side exported, inlined;
};

#define SCALED_WARP(ns, name)                                  \
  Side {                                                       \
    &ns::name, &ns::name, &ns::name##_pdf, &ns::name##_inverse \
  }
#define UNSCALED_WARP(ns, name)                                             \
  Side {                                                                    \
    &no_scale<&ns::name>, &no_scale<&ns::name>, &no_scale<&ns::name##_pdf>, \
        &no_scale<&ns::name##_inverse>                                      \
  }
#define HEMISPHERE(name)                                                   \
  Entry {                                                                  \
#name, DensityDomain::hemisphere,                                      \
        {1.0, 0.5 }, SCALED_WARP(Sampling, name), SCALED_WARP(warps, name) \
  }
#define SPHERE(name)                                                      \
  Entry {                                                                 \
#name, DensityDomain::sphere,                                         \
        {1.0 }, UNSCALED_WARP(Sampling, name), UNSCALED_WARP(warps, name) \
  }

std::vector<Entry> const& table() {
  static std::vector<Entry> const entries = {
      Entry{
          "disk_concentric",
          DensityDomain::disk,
          {1.0},
          Side{&no_scale<&Sampling::disk_concentric>, &no_scale<&Sampling::disk_concentric>,
               &no_point<&Sampling::disk_concentric_pdf>,
               &no_scale<&Sampling::disk_concentric_inverse>},
          Side{&no_scale<&warps::disk_concentric>, &no_scale<&warps::disk_concentric>,
               &no_point<&warps::disk_concentric_pdf>, &no_scale<&warps::disk_concentric_inverse>}},
      HEMISPHERE(hemisphere_uniform),
      HEMISPHERE(hemisphere_uniform_concentric),
      HEMISPHERE(hemisphere_cosine),
      HEMISPHERE(hemisphere_cosine_concentric),
      SPHERE(sphere_uniform),
      SPHERE(sphere_cosine)};
  return entries;
}

double dot(Vec3 const& a, Vec3 const& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

template <typename T>
bool same_bits(T const& a, T const& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

DensitySampler sampler(Side const& side, double s) {
  return [&side, s](Vec2 const& uv, Vec3& d) { return side.warp(uv.x, uv.y, d, s), true; };
}

}  // namespace

TEST(SamplingWarps, FramesAreOrthonormalRightHandedAndDomainsHold) {
  UniformSquare uniform(2);
  for (Entry const& w : table()) {
    bool const disk = w.domain == DensityDomain::disk;
    for (double const s : {1.0, 0.8, 0.5}) {
      // Every hemisphere warp stays inside the cone whose half-angle has sine s.
      double const z_min = w.domain == DensityDomain::hemisphere ? std::sqrt(1.0 - s * s) : -1.0;
      for (int i = 0; i < 20000; ++i) {
        Vec2 const uv = uniform();
        double const u = uv.x, v = uv.y;
        Vec3 plain, d, t, b;
        w.exported.warp(u, v, plain, s);
        w.exported.framed(u, v, d, t, b, s);
        ASSERT_TRUE(same_bits(plain, d)) << w.name << " " << u << ", " << v;
        // The disk's frame is (radial, increasing angle, +z), the others'
        // (increasing azimuth, towards the pole, direction).
        Vec3 const normal = disk ? Vec3(0, 0, 1) : d;
        double const err = std::max({std::fabs(t.length() - 1), std::fabs(b.length() - 1),
                                     std::fabs(dot(t, b)), (cross(t, b) - normal).length(),
                                     disk ? cross(t, d).length() : std::fabs(d.length() - 1)});
        EXPECT_TRUE(err <= 1e-12) << w.name << " s " << s << " at " << u << ", " << v;
        EXPECT_TRUE(disk ? d.length() <= 1 + 1e-15 && d.z == 0.0 && b.z == 0.0 : d.z >= z_min)
            << w.name << " s " << s << " at " << u << ", " << v;
        EXPECT_EQ(t.z, 0.0);
      }
    }
    // Radius scale 0 sends every hemisphere warp to the pole.
    Vec3 d;
    w.exported.warp(0.3, 0.7, d, 0.0);
    EXPECT_TRUE(w.domain != DensityDomain::hemisphere || d == Vec3(0, 0, 1)) << w.name;
  }
}

// The exported entries are thin wrappers: the same bits as the inline
// bodies for every output, density and inverse.
TEST(SamplingWarps, InlineBodiesGiveTheExportedBits) {
  UniformSquare uniform(3);
  for (Entry const& w : table()) {
    for (double const s : {1.0, 0.5}) {
      for (int i = 0; i < 20000; ++i) {
        Vec2 const uv = uniform();
        double const u = uv.x, v = uv.y;
        Vec3 e[3], n[3];
        w.exported.framed(u, v, e[0], e[1], e[2], s);
        w.inlined.framed(u, v, n[0], n[1], n[2], s);
        ASSERT_TRUE(same_bits(e, n)) << w.name << " framed at " << u << ", " << v;
        w.exported.warp(u, v, e[0], s);
        w.inlined.warp(u, v, n[0], s);
        ASSERT_TRUE(same_bits(e[0], n[0])) << w.name << " at " << u << ", " << v;
        double eu, ev, nu, nv;
        w.exported.inverse(e[0], s, eu, ev);
        w.inlined.inverse(e[0], s, nu, nv);
        ASSERT_TRUE(same_bits(eu, nu) && same_bits(ev, nv)) << w.name << " inverse";
        ASSERT_TRUE(same_bits(w.exported.pdf(e[0], s), w.inlined.pdf(e[0], s))) << w.name;
      }
    }
  }
  UniformSquare polar(4);
  for (int i = 0; i < 20000; ++i) {
    double const u = polar.next(), v = polar.next(), angle = (polar.next() * 3 - 1) * k_sampling_pi;
    double e[2], n[2];
    Sampling::to_unit_disk(u, v, e[0], e[1]);
    warps::to_unit_disk(u, v, n[0], n[1]);
    ASSERT_TRUE(same_bits(e, n)) << u << ", " << v;
    Sampling::to_unit_disk_inverse(u, angle, e[0], e[1]);
    warps::to_unit_disk_inverse(u, angle, n[0], n[1]);
    ASSERT_TRUE(same_bits(e, n)) << u << ", " << angle;
  }
}

// Each warp against its own density, which integrates to 1 by quadrature;
// sample -> inverse -> sample returns to the sample.
TEST(SamplingWarps, DensitiesAndInversesMatchTheWarps) {
  DensityTestOptions options;
  options.alpha = alpha;
  for (Entry const& w : table()) {
    for (double const s : w.radius_scales) {
      Density const pdf = [&w, s](Vec3 const& d) { return w.exported.pdf(d, s); };
      auto const r = chi_square_density(w.domain, sampler(w.exported, s), pdf, options);
      EXPECT_TRUE(r.passed) << w.name << " s " << s << ": " << r.message;
      ++options.seed;
      double const integral = integrate_density(w.domain, pdf);
      EXPECT_TRUE(std::fabs(integral - 1.0) <= 1e-3) << w.name << " s " << s << ": " << integral;
      auto const trip = round_trip_error(sampler(w.exported, s), [&w, s](Vec3 const& d, Vec2& uv) {
        w.exported.inverse(d, s, uv.x, uv.y);
      });
      EXPECT_TRUE(trip.error <= 1e-9) << w.name << " s " << s << ": error " << trip.error << " at "
                                      << trip.worst_input.x << ", " << trip.worst_input.y;
    }
  }
}

// The harness has the power to see a density 5% off: tilted (still
// normalised, so only the counts can tell), scaled, or blind to the samples
// a sampler declines.
TEST(DensityHarness, RejectsADensityFivePercentWrong) {
  Entry const& sphere = table()[5];
  DensitySampler const uniform = sampler(sphere.exported, 1.0);
  double const pdf = Sampling::sphere_uniform_pdf(Vec3(0, 0, 1));
  DensityTestOptions options;
  options.alpha = alpha;
  auto const tilted = chi_square_density(
      DensityDomain::sphere, uniform, [pdf](Vec3 const& d) { return (1 + 0.05 * d.z) * pdf; },
      options);
  EXPECT_TRUE(!tilted.passed && tilted.dof > 1000) << tilted.message;
  auto const scaled = chi_square_density(
      DensityDomain::sphere, uniform, [pdf](Vec3 const&) { return 1.05 * pdf; }, options);
  EXPECT_FALSE(scaled.passed) << scaled.message;
  std::printf("tilted by 5%%: %s\nscaled by 1.05: %s\n", tilted.message.c_str(),
              scaled.message.c_str());
  // Declining the lowest 5% of the sphere: wrong against the whole density,
  // right against the density of what it keeps.
  DensitySampler const clipped = [](Vec2 const& uv, Vec3& d) {
    Sampling::sphere_uniform(uv.x, uv.y, d);
    return d.z > -0.9;
  };
  Density const kept = [pdf](Vec3 const& d) { return d.z > -0.9 ? pdf : 0.0; };
  auto const whole = chi_square_density(
      DensityDomain::sphere, clipped, [pdf](Vec3 const&) { return pdf; }, options);
  EXPECT_FALSE(whole.passed) << whole.message;
  auto const right = chi_square_density(DensityDomain::sphere, clipped, kept, options);
  EXPECT_TRUE(right.passed) << right.message;
  EXPECT_TRUE(std::fabs(integrate_density(DensityDomain::sphere, kept) - 0.95) <= 1e-6);
}
