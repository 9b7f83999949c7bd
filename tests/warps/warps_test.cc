// Properties every warp shares, over one table of them: frames, domains,
// distributions against the library's own densities, density integrals and
// inverse round trips; then the concentric map, worked bits and the index
// shuffle.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>
#include <vector>

#include "sampling/patterns/radical_inverse.h"
#include "sampling/rays/ray_math.h"
#include "sampling/sampling.h"
#include "tests/support/density_harness.h"

namespace {

using Vec2 = GMathVec2<double>;
using Vec3 = GMathVec3<double>;
double const K = k_sampling_quarter_pi;

// Every warp in one shape: radius scale last, ignored by the disk and sphere.
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
double disk_pdf(Vec3 const&, double const&) {
  return Sampling::disk_concentric_pdf();
}

struct Warp {
  char const* name;
  DensityDomain domain;
  std::vector<double> radius_scales;
  void (*warp)(double const&, double const&, Vec3&, double const&);
  void (*framed)(double const&, double const&, Vec3&, Vec3&, Vec3&, double const&);
  double (*pdf)(Vec3 const&, double const&);
  void (*inverse)(Vec3 const&, double const&, double&, double&);
};

// clang-format off
#define SCALED(name)                                                                  \
  Warp{#name, DensityDomain::hemisphere, {1.0, 0.5}, &Sampling::name, &Sampling::name, \
       &Sampling::name##_pdf, &Sampling::name##_inverse}
#define UNSCALED(name, domain, pdf)                                                   \
  Warp{#name, DensityDomain::domain, {1.0}, &no_scale<&Sampling::name>,               \
       &no_scale<&Sampling::name>, pdf, &no_scale<&Sampling::name##_inverse>}
// clang-format on
Warp const k_warps[] = {UNSCALED(disk_concentric, disk, &disk_pdf),
                        SCALED(hemisphere_uniform),
                        SCALED(hemisphere_uniform_concentric),
                        SCALED(hemisphere_cosine),
                        SCALED(hemisphere_cosine_concentric),
                        UNSCALED(sphere_uniform, sphere, &no_scale<&Sampling::sphere_uniform_pdf>),
                        UNSCALED(sphere_cosine, sphere, &no_scale<&Sampling::sphere_cosine_pdf>)};

DensitySampler sampler(Warp const& w, double s) {
  return [&w, s](Vec2 const& uv, Vec3& d) { return w.warp(uv.x, uv.y, d, s), true; };
}

// Distribution tests of the suite (11 warps and radius scales, one in the
// harness test) share one Sidak-corrected level.
double const alpha = chi_square_alpha(12);

}  // namespace

TEST(Warps, FramesAreOrthonormalRightHandedAndDomainsHold) {
  UniformSquare uniform(2);
  for (Warp const& w : k_warps) {
    bool const disk = w.domain == DensityDomain::disk;
    for (double const s : {1.0, 0.8, 0.5}) {
      // Every hemisphere warp stays inside the cone whose half-angle has sine s.
      double const z_min = w.domain == DensityDomain::hemisphere ? std::sqrt(1.0 - s * s) : -1.0;
      for (int i = 0; i < 20000; ++i) {
        // The edges, the middle and their neighbours, then random points.
        double const edge[] = {0.0, 1e-300, 0.25, 0.5, 0.75, 1.0 - 0x1p-53, 1.0};
        Vec2 const uv = i < 49 ? Vec2(edge[i % 7], edge[i / 7]) : uniform();
        Vec3 plain, d, t, b;
        w.warp(uv.x, uv.y, plain, s);
        w.framed(uv.x, uv.y, d, t, b, s);
        ASSERT_TRUE(plain == d) << w.name << " " << uv.x << ", " << uv.y;
        // The disk's frame is (radial, increasing angle, +z), the others'
        // (increasing azimuth, towards the pole, direction).
        Vec3 const normal = disk ? Vec3(0, 0, 1) : d;
        double const err = std::max({std::fabs(t.length() - 1), std::fabs(b.length() - 1),
                                     std::fabs(dot(t, b)), (cross(t, b) - normal).length(),
                                     disk ? cross(t, d).length() : std::fabs(d.length() - 1)});
        ASSERT_TRUE(err <= 1e-12) << w.name << " s " << s << " at " << uv.x << ", " << uv.y;
        ASSERT_TRUE(disk ? d.length() <= 1 + 1e-15 && d.z == 0.0 && b.z == 0.0 : d.z >= z_min)
            << w.name << " s " << s << " at " << uv.x << ", " << uv.y;
        ASSERT_EQ(t.z, 0.0);
        // The density is positive at every sample, the horizon included
        // (where only the cosine-weighted hemisphere densities vanish).
        bool const vanishes = d.z == 0.0 && !disk && std::strstr(w.name, "hemisphere_cosine");
        ASSERT_TRUE(w.pdf(d, s) > 0.0 || vanishes)
            << w.name << " s " << s << " at " << uv.x << ", " << uv.y;
      }
    }
    // Radius scale 0 sends every hemisphere warp to the pole, which the
    // inverse maps into the square and back to the pole.
    Vec3 d, again;
    double u, v;
    w.warp(0.3, 0.7, d, 0.0);
    w.inverse(d, 0.0, u, v);
    ASSERT_TRUE(u >= 0.0 && u <= 1.0 && v >= 0.0 && v <= 1.0) << w.name << " " << u << " " << v;
    w.warp(u, v, again, 0.0);
    EXPECT_TRUE(w.domain != DensityDomain::hemisphere || (d == Vec3(0, 0, 1) && again == d))
        << w.name;
  }
}

// Each warp against its own density, which integrates to 1 by quadrature;
// sample -> inverse -> sample returns to the sample.
TEST(Warps, DensitiesAndInversesMatchTheWarps) {
  DensityTestOptions options;
  options.alpha = alpha;
  for (Warp const& w : k_warps) {
    for (double const s : w.radius_scales) {
      Density const pdf = [&w, s](Vec3 const& d) { return w.pdf(d, s); };
      auto const r = chi_square_density(w.domain, sampler(w, s), pdf, options);
      EXPECT_TRUE(r.passed) << w.name << " s " << s << ": " << r.message;
      ++options.seed;
      double const integral = integrate_density(w.domain, pdf);
      EXPECT_TRUE(std::fabs(integral - 1.0) <= 1e-3) << w.name << " s " << s << ": " << integral;
      // Continuous at the pole (the centre), where densities take their limit.
      double const at = pdf(Vec3(0, 0, 1)), near = pdf(Vec3(1e-7, 0, std::sqrt(1.0 - 1e-14)));
      EXPECT_TRUE(std::fabs(at - near) <= 1e-9 * at) << w.name << " s " << s << ": " << at;
      // The inverse stays in the square and leads back to the sample; the
      // density is the reciprocal of the warp's area (solid angle) element,
      // by central differences (off the concentric map's diagonal kinks).
      UniformSquare uniform(options.seed);
      for (int i = 0; i < 100000; ++i) {
        Vec2 const uv = uniform();
        Vec3 d, again;
        double u, v;
        w.warp(uv.x, uv.y, d, s);
        double const h = 1e-5, a = std::fabs(uv.x - 0.5), b = std::fabs(uv.y - 0.5);
        if (i < 2000 && std::fmax(a, b) < 0.45 && std::fmin(a, b) > 0.05 &&
            std::fabs(a - b) > 0.01) {
          Vec3 up, um, vp, vm;
          w.warp(uv.x + h, uv.y, up, s), w.warp(uv.x - h, uv.y, um, s);
          w.warp(uv.x, uv.y + h, vp, s), w.warp(uv.x, uv.y - h, vm, s);
          double const element = cross(up - um, vp - vm).length() / (4.0 * h * h);
          ASSERT_TRUE(std::fabs(w.pdf(d, s) * element - 1.0) <= 1e-7)
              << w.name << " s " << s << " at " << uv.x << ", " << uv.y << ": "
              << w.pdf(d, s) * element;
        }
        w.inverse(d, s, u, v);
        ASSERT_TRUE(u >= 0.0 && u <= 1.0 && v >= 0.0 && v <= 1.0) << w.name << " " << u << " " << v;
        w.warp(u, v, again, s);
        ASSERT_TRUE((again - d).length() <= 1e-9)
            << w.name << " s " << s << " at " << uv.x << ", " << uv.y;
      }
    }
  }
  // The harness sees a density 5% off even when it stays normalised.
  double const pdf = Sampling::sphere_uniform_pdf(Vec3(0, 0, 1));
  auto const tilted = chi_square_density(
      DensityDomain::sphere, sampler(k_warps[5], 1.0),
      [pdf](Vec3 const& d) { return (1 + 0.05 * d.z) * pdf; }, options);
  EXPECT_TRUE(!tilted.passed && tilted.dof > 1000) << tilted.message;
}

TEST(Warps, ConcentricMapSectorsCentreAndDiagonals) {
  double r, a;
  Sampling::to_unit_disk(0.5, 0.5, r, a);
  EXPECT_TRUE(r == 0.0 && std::signbit(r) && a == 0.0 && !std::signbit(a))
      << "the centre falls into the bottom sector: radius -0.0, angle +0";
  // Each diagonal belongs to the sector that the strict and non-strict
  // comparisons give it: angles K, 3K, 5K and 7K (not -K).
  double const cases[][4] = {{1, 0.5, 1, 0},
                             {0.5, 1, 1, 2 * K},
                             {0, 0.5, 1, 4 * K},
                             {0.5, 0, 1, 6 * K},
                             {1, 1, 1, K},
                             {0, 1, 1, 3 * K},
                             {0, 0, 1, 5 * K},
                             {1, 0, 1, 7 * K},
                             {0.75, 0.75, 0.5, K},
                             {0.25, 0.75, 0.5, 3 * K},
                             {0.25, 0.25, 0.5, 5 * K},
                             {0.75, 0.25, 0.5, 7 * K}};
  for (auto const& c : cases) {
    Sampling::to_unit_disk(c[0], c[1], r, a);
    EXPECT_TRUE(r == c[2] && a == c[3]) << c[0] << ", " << c[1];
    // The inverse finds the same sector, also from atan2's angle.
    for (double const angle : {a, std::atan2(std::sin(a), std::cos(a))}) {
      double u, v;
      Sampling::to_unit_disk_inverse(r, angle, u, v);
      EXPECT_TRUE(std::fabs(u - c[0]) + std::fabs(v - c[1]) <= 1e-12) << c[0] << ", " << c[1];
    }
  }
  // Everywhere: radius is max(|a|, |b|) and the angle lies in its sector;
  // the inverse leads back from the map's angle, atan2's and a turn from 0.
  UniformSquare uniform(1);
  double const turn = 2.0 * std::acos(-1.0);
  for (int i = 0; i < 100000; ++i) {
    double const u = uniform.next(), v = uniform.next();
    double const x = u * 2.0 - 1.0, y = v * 2.0 - 1.0;
    Sampling::to_unit_disk(u, v, r, a);
    ASSERT_EQ(r, std::max(std::fabs(x), std::fabs(y))) << u << ", " << v;
    double const lo =
        x > std::fabs(y) ? -K : (y >= std::fabs(x) ? K : (x < -std::fabs(y) ? 3 * K : 5 * K));
    ASSERT_TRUE(a >= lo && a <= lo + 2 * K && a > -K) << u << ", " << v << " angle " << a;
    for (double const angle : {a, std::atan2(std::sin(a), std::cos(a)), a < 0.0 ? a + turn : a}) {
      double iu, iv;
      Sampling::to_unit_disk_inverse(r, angle, iu, iv);
      ASSERT_TRUE(std::fabs(iu - u) + std::fabs(iv - v) <= 1e-12) << u << ", " << v << " " << angle;
    }
  }
}

// Bits that hinge on the order of operations and the library's angles.
TEST(Warps, WorkedBits) {
  Vec3 d;
  for (double const v : {0.0, 0.3, 1.0}) {
    Sampling::sphere_uniform(0.0, v, d);
    EXPECT_EQ(d, Vec3(0, 0, 1)) << v;
    Sampling::sphere_uniform(1.0, v, d);
    EXPECT_EQ(d, Vec3(0, 0, -1)) << v;
    Sampling::sphere_uniform(0.5, v, d);
    EXPECT_EQ(d, Vec3(std::cos(k_sampling_two_pi * v), std::sin(k_sampling_two_pi * v), 0)) << v;
  }
  Sampling::hemisphere_cosine_concentric(0.75, 0.5, d, 1.0);
  EXPECT_EQ(d, Vec3(0.5, 0, std::sqrt(0.75)));
  Sampling::hemisphere_uniform(1.0, 0.0, d, 1.0);
  EXPECT_EQ(d, Vec3(1, 0, 0));
  // The library's 2pi * 0.25 lies just below the true right angle.
  Sampling::hemisphere_cosine(0.5, 0.25, d, 1.0);
  EXPECT_TRUE(d.x > 1.9e-13 && d.x < 2.1e-13 && d.y == 0.5 && d.z == std::sqrt(0.75)) << d.x;
  // Azimuth 0, from y = +0 or -0, starts the turn: v = 0, not 1.
  for (double const y : {0.0, -0.0}) {
    double u, v0, v1;
    Sampling::sphere_uniform_inverse(Vec3(0.6, y, 0.8), u, v0);
    Sampling::hemisphere_uniform_inverse(Vec3(0.6, y, 0.8), 1.0, u, v1);
    EXPECT_TRUE(v0 == 0.0 && v1 == 0.0) << v0 << " " << v1;
  }
}

// The shuffle of an index is its rank by radical inverse among the indices
// below the count; beyond the count (to 2^32 - 1), its insertion position.
TEST(Warps, ShuffleIndexIsTheRankOfTheRadicalInverse) {
  for (unsigned count = 1; count <= 300; ++count) {
    std::vector<unsigned> order(count);
    std::iota(order.begin(), order.end(), 0u);
    std::sort(order.begin(), order.end(),
              [](unsigned a, unsigned b) { return radical_inverse_2(a) < radical_inverse_2(b); });
    for (unsigned rank = 0; rank < count; ++rank)
      ASSERT_EQ(Sampling::shuffle_index(order[rank], count), rank)
          << order[rank] << " of " << count;
    for (unsigned k = 0; k < 48; ++k) {
      unsigned const index = k < 40 ? count + k : 0x9E3779B9u * (k * count + 1u);  // all 32 bits
      double const ri = radical_inverse_2(index);
      auto const below = std::count_if(order.begin(), order.end(),
                                       [ri](unsigned j) { return radical_inverse_2(j) < ri; });
      ASSERT_EQ(Sampling::shuffle_index(index, count), below) << index << " of " << count;
    }
  }
  for (unsigned i : {0u, 1u, 77u, 4294967295u})
    EXPECT_EQ(Sampling::shuffle_index(i, 0), 0u);
  EXPECT_EQ(Sampling::shuffle_index(0, 4294967295u), 0u);
}

TEST(Warps, PointSetsRingsAndGrids) {
  CoreArray<Vec2> points(3);
  Sampling::disk_uniform(points, 0);
  EXPECT_TRUE(points.empty());
  for (unsigned n = 1; n <= 7; ++n) {
    Sampling::disk_uniform(points, n);
    ASSERT_EQ(points.count(), n * n);
    // Ring k holds 4N - 4 - 8k points at radius 1 - 2k/(N-1) (odd N) or
    // (N-1-2k)/N (even N), from angle 0 counter-clockwise in equal steps;
    // an odd N ends with the centre.
    unsigned at = 0;
    for (unsigned k = 0; k < n / 2; ++k) {
      unsigned const m = 4 * n - 4 - 8 * k;
      double const r = n % 2 ? 1.0 - 2.0 * k / (n - 1) : (n - 1.0 - 2.0 * k) / n;
      EXPECT_EQ(points[at].y, 0.0) << "N " << n << " ring " << k;
      for (unsigned j = 0; j < m; ++j, ++at) {
        double const phi = k_sampling_two_pi * j / m;
        EXPECT_TRUE(
            std::hypot(points[at].x - std::cos(phi) * r, points[at].y - std::sin(phi) * r) <= 1e-12)
            << "N " << n << " ring " << k << " point " << j;
      }
    }
    EXPECT_EQ(at + n % 2, n * n) << n;
    EXPECT_TRUE(n % 2 == 0 || points[at] == Vec2(0.0, 0.0)) << n;
  }
  Sampling::grid_uniform(points, 0, Vec2(0, 0), Vec2(1, 1));
  EXPECT_TRUE(points.empty());
  Sampling::grid_uniform(points, 1, Vec2(-1, 2), Vec2(3, 5));
  EXPECT_TRUE(points.count() == 1 && points[0] == Vec2(-1, 2));
  // Corners exact, x fastest; a reversed box runs in the negative direction.
  Sampling::grid_uniform(points, 2, Vec2(-1, 2), Vec2(3, 5));
  EXPECT_TRUE(points.count() == 4 && points[0] == Vec2(-1, 2) && points[1] == Vec2(3, 2) &&
              points[2] == Vec2(-1, 5) && points[3] == Vec2(3, 5));
  Sampling::grid_uniform(points, 6, Vec2(2, 1), Vec2(-3, -1));
  ASSERT_EQ(points.count(), 36u);
  for (unsigned i = 0; i < 36; ++i)
    EXPECT_TRUE(std::hypot(points[i].x - (2.0 - i % 6), points[i].y - (1.0 - 0.4 * (i / 6))) <=
                1e-14)
        << i;
}

#ifdef SAMPLING_CHECKS
// Samples in [0,1]^2 (edges inside), radius scales in [0,1], unit directions
// for the densities and inverses, angles of the disk inverse in [-pi, 2pi).
TEST(WarpsDeathTest, CallerContracts) {
  Vec3 d, t, b;
  double r, a;
  EXPECT_DEATH(Sampling::to_unit_disk(1.5, 0.5, r, a), "to_unit_disk: sample \\(u, v\\) outside");
  EXPECT_DEATH(Sampling::hemisphere_uniform(-1e-9, 0.5, d, t, b, 1.0),
               "hemisphere_uniform: sample");
  EXPECT_DEATH(Sampling::hemisphere_cosine_concentric(0.5, 0.5, d, 1.0 + 1e-12),
               "hemisphere_cosine_concentric: radius_scale outside \\[0,1\\]");
  // Directions are unit to 1e-6 in their squared length.
  EXPECT_DEATH(Sampling::sphere_cosine_inverse(Vec3(0, 0, std::sqrt(1 + 1.5e-6)), r, a),
               "sphere_cosine_inverse: direction not of unit length");
  Sampling::sphere_cosine_inverse(Vec3(0, 0, std::sqrt(1 - 0.5e-6)), r, a);
  EXPECT_DEATH(Sampling::to_unit_disk_inverse(0.5, 7.0, r, a),
               "to_unit_disk_inverse: angle outside \\[-pi, 2pi\\)");
  Sampling::to_unit_disk(0.0, 1.0, r, a);
  Sampling::hemisphere_cosine_concentric(1.0, 0.0, d, t, b, 0.0);
  Sampling::hemisphere_uniform(1.0, 1.0, d, 1.0);
  Sampling::to_unit_disk_inverse(1.0, -std::atan2(0.0, -1.0), r, a);  // -pi
  // sphere_uniform keeps the formulas' result outside the square.
  Sampling::sphere_uniform(1.5, 0.5, d);
  EXPECT_TRUE(std::isnan(d.x));
}
#endif

// The compiler fuses a sine and a cosine of one angle into one sincos call
// (every warp computes both); that keeps the bits only because the C
// library's sincos gives those of sin and cos called apart.
TEST(Warps, FusedSinCosGivesTheBitsOfSinAndCos) {
  // Called through volatile pointers, so that the compiler cannot fuse them.
  double (*volatile plain_sin)(double) = &::sin;
  double (*volatile plain_cos)(double) = &::cos;
  void (*volatile fused)(double, double*, double*) = &::sincos;
  UniformSquare uniform(4242);
  for (int i = 0; i < 1000000; ++i) {
    // The warps' angles with margins, a wide range, and tiny magnitudes.
    double const t = uniform.next();
    double const x = i % 3 == 0   ? (t * 6 - 1) * k_sampling_pi
                     : i % 3 == 1 ? (t - 0.5) * 2e6
                                  : std::ldexp(1.0 + t, -static_cast<int>(uniform.next() * 40));
    double s, c;
    fused(x, &s, &c);
    ASSERT_TRUE(s == plain_sin(x) && c == plain_cos(x)) << "angle " << x;
  }
}
