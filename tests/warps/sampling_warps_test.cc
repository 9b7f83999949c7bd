#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <numeric>
#include <vector>

#include "platform/random/grandom_mt.h"
#include "sampling/patterns/radical_inverse.h"
#include "sampling/sampling.h"
#include "tests/support/density_harness.h"

namespace {

using Vec3 = GMathVec3<double>;
double const K = k_sampling_quarter_pi;
// Distribution tests of the whole suite share one Sidak-corrected level.
double const alpha = chi_square_alpha(12);

// Independent uniform inputs: a fixed-seed Mersenne Twister through unit_from_u32.
struct Uniform {
  GRandomMt mt;
  explicit Uniform(unsigned seed) : mt(seed) {}
  double operator()() { return unit_from_u32(mt.genrand_int32()); }
};

std::uint64_t bits_of(double const& d) {
  std::uint64_t b;
  std::memcpy(&b, &d, 8);
  return b;
}

double dot(Vec3 const& a, Vec3 const& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
double dist(Vec3 const& a, Vec3 const& b) {
  return (a - b).length();
}

}  // namespace

TEST(SamplingWarps, AngleConstantsHaveTheLibraryBits) {
  EXPECT_EQ(bits_of(k_sampling_pi), 0x400921FB5444261Eu);
  EXPECT_EQ(bits_of(k_sampling_two_pi), 0x401921FB5444261Eu);
  EXPECT_EQ(bits_of(k_sampling_half_pi), 0x3FF921FB5444261Eu);
  EXPECT_EQ(bits_of(k_sampling_quarter_pi), 0x3FE921FB5444261Eu);
  EXPECT_EQ(bits_of(k_sampling_degree), 0x3F91DF46A2529843u);
}

TEST(SamplingWarps, ToUnitDiskCentreEdgesCornersAndDiagonals) {
  double r, a;
  Sampling::to_unit_disk(0.5, 0.5, r, a);
  EXPECT_EQ(r, 0.0);
  EXPECT_TRUE(std::signbit(r)) << "the centre falls into the bottom sector: radius -0.0";
  EXPECT_EQ(bits_of(a), 0u);
  struct Case {
    double u, v, radius, angle;
  };
  // Each diagonal belongs to the sector that the strict and non-strict
  // comparisons give it: angles K, 3K, 5K and 7K (not -K).
  for (Case const& c :
       {Case{1, 0.5, 1, 0}, Case{0.5, 1, 1, 2 * K}, Case{0, 0.5, 1, 4 * K}, Case{0.5, 0, 1, 6 * K},
        Case{1, 1, 1, K}, Case{0, 1, 1, 3 * K}, Case{0, 0, 1, 5 * K}, Case{1, 0, 1, 7 * K},
        Case{0.75, 0.75, 0.5, K}, Case{0.25, 0.75, 0.5, 3 * K}, Case{0.25, 0.25, 0.5, 5 * K},
        Case{0.75, 0.25, 0.5, 7 * K}}) {
    Sampling::to_unit_disk(c.u, c.v, r, a);
    EXPECT_EQ(r, c.radius) << c.u << ", " << c.v;
    EXPECT_EQ(a, c.angle) << c.u << ", " << c.v;
  }
  EXPECT_EQ(2 * K, k_sampling_half_pi);
  EXPECT_EQ(4 * K, k_sampling_pi);
  Sampling::to_unit_disk(0.9, 0.6, r, a);
  EXPECT_DOUBLE_EQ(r, 0.8);
  EXPECT_DOUBLE_EQ(a, K / 4);
  // Everywhere: radius is max(|a|, |b|) and the angle lies in its sector.
  Uniform uniform(1);
  for (int i = 0; i < 100000; ++i) {
    double const u = uniform(), v = uniform();
    double const x = u * 2.0 - 1.0, y = v * 2.0 - 1.0;
    Sampling::to_unit_disk(u, v, r, a);
    EXPECT_EQ(r, std::max(std::fabs(x), std::fabs(y))) << u << ", " << v;
    double const lo =
        x > std::fabs(y) ? -K : (y >= std::fabs(x) ? K : (x < -std::fabs(y) ? 3 * K : 5 * K));
    EXPECT_TRUE(a >= lo && a <= lo + 2 * K && a > -K) << u << ", " << v << " angle " << a;
  }
}

TEST(SamplingWarps, WorkedExamples) {
  Vec3 d, t, b;
  Sampling::disk_concentric(1.0, 0.5, d, t, b);
  EXPECT_EQ(d, Vec3(1, 0, 0));
  EXPECT_EQ(t, Vec3(1, 0, 0));
  EXPECT_EQ(b, Vec3(0, 1, 0));
  for (double const v : {0.0, 0.3, 1.0}) {
    Sampling::sphere_uniform(0.0, v, d);
    EXPECT_EQ(d, Vec3(0, 0, 1)) << v;
    Sampling::sphere_uniform(1.0, v, d);
    EXPECT_EQ(d, Vec3(0, 0, -1)) << v;
    Sampling::sphere_uniform(0.5, v, d);
    EXPECT_EQ(d, Vec3(std::cos(k_sampling_two_pi * v), std::sin(k_sampling_two_pi * v), 0)) << v;
    // Radius scale 0 sends every hemisphere warp to the pole.
    using Hemisphere = void (*)(double const&, double const&, Vec3&, double const&);
    Hemisphere const hemispheres[] = {
        &Sampling::hemisphere_uniform, &Sampling::hemisphere_uniform_concentric,
        &Sampling::hemisphere_cosine, &Sampling::hemisphere_cosine_concentric};
    for (Hemisphere const warp : hemispheres) {
      warp(0.3, v, d, 0.0);
      EXPECT_EQ(d, Vec3(0, 0, 1)) << v;
    }
  }
  Sampling::hemisphere_cosine_concentric(0.75, 0.5, d, 1.0);
  EXPECT_EQ(d, Vec3(0.5, 0, std::sqrt(0.75)));
  Sampling::hemisphere_uniform(1.0, 0.0, d, 1.0);
  EXPECT_EQ(d, Vec3(1, 0, 0));
  // The library's 2pi * 0.25 lies just below the true right angle.
  Sampling::hemisphere_cosine(0.5, 0.25, d, 1.0);
  EXPECT_TRUE(d.x > 1.9e-13 && d.x < 2.1e-13) << d.x;
  EXPECT_EQ(d.y, 0.5);
  EXPECT_EQ(d.z, std::sqrt(0.75));
}

namespace {

// The sphere warps take no radius scale; these give them the hemisphere form.
template <void (*F)(double const&, double const&, Vec3&)>
void no_scale(double const& u, double const& v, Vec3& d, double const&) {
  F(u, v, d);
}
template <void (*F)(double const&, double const&, Vec3&, Vec3&, Vec3&)>
void no_scale_frame(double const& u, double const& v, Vec3& d, Vec3& t, Vec3& b, double const&) {
  F(u, v, d, t, b);
}

}  // namespace

TEST(SamplingWarps, FramesAreOrthonormalRightHandedAndDomainsHold) {
  struct Warp {
    char const* name;
    void (*plain)(double const&, double const&, Vec3&, double const&);
    void (*framed)(double const&, double const&, Vec3&, Vec3&, Vec3&, double const&);
    bool hemisphere;
  };
  Warp const warps[] = {
      {"hemisphere_uniform", &Sampling::hemisphere_uniform, &Sampling::hemisphere_uniform, true},
      {"hemisphere_uniform_concentric", &Sampling::hemisphere_uniform_concentric,
       &Sampling::hemisphere_uniform_concentric, true},
      {"hemisphere_cosine", &Sampling::hemisphere_cosine, &Sampling::hemisphere_cosine, true},
      {"hemisphere_cosine_concentric", &Sampling::hemisphere_cosine_concentric,
       &Sampling::hemisphere_cosine_concentric, true},
      {"sphere_uniform", &no_scale<&Sampling::sphere_uniform>,
       &no_scale_frame<&Sampling::sphere_uniform>, false},
      {"sphere_cosine", &no_scale<&Sampling::sphere_cosine>,
       &no_scale_frame<&Sampling::sphere_cosine>, false}};
  Uniform uniform(2);
  for (Warp const& w : warps) {
    for (double const s : {1.0, 0.8, 0.5}) {
      // Every hemisphere warp stays inside the cone whose half-angle has sine s.
      double const z_min = w.hemisphere ? std::sqrt(1.0 - s * s) : -1.0;
      for (int i = 0; i < 20000; ++i) {
        double const u = uniform(), v = uniform();
        Vec3 plain, d, t, b;
        w.plain(u, v, plain, s);
        w.framed(u, v, d, t, b, s);
        ASSERT_EQ(std::memcmp(&plain, &d, sizeof d), 0) << w.name << " " << u << ", " << v;
        double const err =
            std::max({std::fabs(d.length() - 1), std::fabs(t.length() - 1),
                      std::fabs(b.length() - 1), std::fabs(dot(t, b)), dist(cross(t, b), d)});
        EXPECT_TRUE(err <= 1e-12) << w.name << " s " << s << " at " << u << ", " << v;
        EXPECT_TRUE(d.z >= z_min) << w.name << " s " << s << " z " << d.z;
        EXPECT_EQ(t.z, 0.0);
      }
    }
  }
  // The disk: the framed form is the plain one, t radial, (t, b, z) right-handed.
  for (int i = 0; i < 20000; ++i) {
    double const u = uniform(), v = uniform();
    Vec3 plain, p, t, b;
    Sampling::disk_concentric(u, v, plain);
    Sampling::disk_concentric(u, v, p, t, b);
    ASSERT_EQ(std::memcmp(&plain, &p, sizeof p), 0) << u << ", " << v;
    double const err =
        std::max({std::fabs(t.length() - 1), std::fabs(b.length() - 1), std::fabs(dot(t, b)),
                  dist(cross(t, b), Vec3(0, 0, 1)), dist(cross(t, p), Vec3())});
    EXPECT_TRUE(err <= 1e-12 && p.length() <= 1 + 1e-15) << u << ", " << v;
    EXPECT_TRUE(p.z == 0.0 && t.z == 0.0 && b.z == 0.0);
  }
}

namespace {

double const pi = std::acos(-1.0);

DensitySampler sampler_of(void (*warp)(double const&, double const&, Vec3&)) {
  return [warp](GMathVec2<double> const& uv, Vec3& d) { return warp(uv.x, uv.y, d), true; };
}

}  // namespace

TEST(SamplingWarps, WarpsFollowTheirDensities) {
  double const s = 0.5, mu0 = std::sqrt(1 - s * s);
  struct Case {
    char const* name;
    DensityDomain domain;
    DensitySampler sampler;
    Density density;
  } const cases[] = {
      {"sphere_uniform", DensityDomain::sphere, sampler_of(&Sampling::sphere_uniform),
       [](Vec3 const&) { return 0.25 / pi; }},
      {"hemisphere_cosine_concentric", DensityDomain::hemisphere,
       [](GMathVec2<double> const& uv, Vec3& d) {
         return Sampling::hemisphere_cosine_concentric(uv.x, uv.y, d, 1.0), true;
       },
       [](Vec3 const& d) { return d.z / pi; }},
      {"hemisphere_cosine_concentric in a cone", DensityDomain::hemisphere,
       [s](GMathVec2<double> const& uv, Vec3& d) {
         return Sampling::hemisphere_cosine_concentric(uv.x, uv.y, d, s), true;
       },
       [=](Vec3 const& d) { return d.z >= mu0 ? d.z / (pi * s * s) : 0.0; }},
      {"disk_concentric", DensityDomain::disk, sampler_of(&Sampling::disk_concentric),
       [](Vec3 const&) { return 1.0 / pi; }},
  };
  DensityTestOptions options;
  options.alpha = alpha;
  for (Case const& c : cases) {
    auto const r = chi_square_density(c.domain, c.sampler, c.density, options);
    EXPECT_TRUE(r.passed) << c.name << ": " << r.message;
    ++options.seed;
  }
}

// The harness has the power to see a density 5% off: tilted (still
// normalised, so only the counts can tell), scaled, or missing the samples
// a sampler declines.
TEST(DensityHarness, RejectsADensityFivePercentWrong) {
  DensitySampler const sphere = sampler_of(&Sampling::sphere_uniform);
  DensityTestOptions options;
  options.alpha = alpha;
  auto const tilted = chi_square_density(
      DensityDomain::sphere, sphere, [](Vec3 const& d) { return (1 + 0.05 * d.z) * 0.25 / pi; },
      options);
  EXPECT_FALSE(tilted.passed) << tilted.message;
  EXPECT_TRUE(tilted.dof > 1000 && tilted.p_value < alpha) << tilted.message;
  std::printf("tilted by 5%%: %s\n", tilted.message.c_str());
  auto const scaled = chi_square_density(
      DensityDomain::sphere, sphere, [](Vec3 const&) { return 1.05 * 0.25 / pi; }, options);
  EXPECT_FALSE(scaled.passed) << scaled.message;
  std::printf("scaled by 1.05: %s\n", scaled.message.c_str());
  // Declining the lower 5% of the sphere against the whole density: the
  // declined cell expects nothing and fails; against the clipped density it
  // passes.
  DensitySampler const clipped = [](GMathVec2<double> const& uv, Vec3& d) {
    Sampling::sphere_uniform(uv.x, uv.y, d);
    return d.z > -0.9;
  };
  auto const full = chi_square_density(
      DensityDomain::sphere, clipped, [](Vec3 const&) { return 0.25 / pi; }, options);
  EXPECT_FALSE(full.passed) << full.message;
  auto const kept = chi_square_density(
      DensityDomain::sphere, clipped, [](Vec3 const& d) { return d.z > -0.9 ? 0.25 / pi : 0.0; },
      options);
  EXPECT_TRUE(kept.passed) << kept.message;
  EXPECT_TRUE(
      std::fabs(integrate_density(DensityDomain::sphere,
                                  [](Vec3 const& d) { return d.z > -0.9 ? 0.25 / pi : 0.0; }) -
                0.95) <= 1e-6);
}

// The rank test below proves every count up to 300 and positions past the
// count; a worked table pins the rank order itself, and count 0 maps all to 0.
TEST(SamplingShuffleIndex, WorkedTableAndEmptyCount) {
  unsigned const table[10] = {0, 5, 3, 8, 2, 7, 4, 9, 1, 6};
  for (unsigned i = 0; i < 10; ++i)
    EXPECT_EQ(Sampling::shuffle_index(i, 10), table[i]) << i;
  EXPECT_EQ(Sampling::shuffle_index(9, 8), 5u);
  for (unsigned i : {0u, 1u, 77u, 4294967295u})
    EXPECT_EQ(Sampling::shuffle_index(i, 0), 0u);
  EXPECT_EQ(Sampling::shuffle_index(0, 4294967295u), 0u);
}

TEST(SamplingShuffleIndex, IsTheRankOfTheRadicalInverseAndABijection) {
  for (unsigned count = 1; count <= 300; ++count) {
    // Indices below count sorted by their radical inverse; the shuffle of an
    // index is its place in that order.
    std::vector<unsigned> order(count);
    std::iota(order.begin(), order.end(), 0u);
    std::sort(order.begin(), order.end(),
              [](unsigned a, unsigned b) { return radical_inverse_2(a) < radical_inverse_2(b); });
    std::vector<int> hit(count, 0);
    for (unsigned rank = 0; rank < count; ++rank) {
      unsigned const got = Sampling::shuffle_index(order[rank], count);
      ASSERT_EQ(got, rank) << "index " << order[rank] << " of " << count;
      ++hit[got];
    }
    EXPECT_EQ(std::count(hit.begin(), hit.end(), 1), static_cast<long>(count));
    // Indices beyond the count get their insertion position.
    for (unsigned index = count; index < count + 40; ++index) {
      double const ri = radical_inverse_2(index);
      unsigned const below = static_cast<unsigned>(std::count_if(
          order.begin(), order.end(), [ri](unsigned j) { return radical_inverse_2(j) < ri; }));
      ASSERT_EQ(Sampling::shuffle_index(index, count), below) << index << " of " << count;
    }
  }
}
