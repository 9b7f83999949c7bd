#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstring>
#include <random>
#include <vector>

#include "sampling/angles.h"
#include "tests/rays/anisotropic_test_support.h"

using namespace anisotropic_test;

namespace {

typedef AnisotropicLobe<AnisotropicReflectionRayGenerator> Lobe;

// The sampled local normal and spread of a generator on the identity frame.
struct LocalNormal {
  GMathVec3<double> normal;
  double spread;
};

LocalNormal sample_local(float nu, float nv, double u, double v) {
  AnisotropicReflectionRayGenerator g;
  init(g, flat_shading(nu, nv, GMathVec3<double>(0.0, 0.0, -1.0)));
  LocalNormal out;
  Lobe::compute_local_normal(g, GMathVec2<double>(u, v), out.normal, out.spread);
  return out;
}

// The normal a sample's ray is mirrored about: the first candidate when it
// faces I and its mirror image leaves above Ng, else the one turned half a
// turn. `spread` receives the sample's spread tangent.
GMathVec3<double> chosen_normal(AnisotropicReflectionRayGenerator const& g, Shading const& s,
                                GMathVec2<double> const& sample, double& spread) {
  GMathVec3<double> first, second;
  candidate_normals(g, sample, first, second, spread);
  GMathVec3<double> const& incoming = s.incoming.m_direction;
  double const d = -dot(first, incoming);
  GMathVec3<double> const mirrored = incoming + first * (2.0 * d);
  return d > 0.0 && dot(mirrored, s.geometric_normal) > 0.0 ? first : second;
}

}  // namespace

TEST(AnisotropicLobe, InverseTwoPiIsTheRunTimeReciprocal) {
  volatile double two_pi = 6.283185307178;
  double const run_time = 1.0 / two_pi;
  EXPECT_EQ(std::memcmp(&run_time, &k_anisotropic_inverse_two_pi, sizeof run_time), 0);
}

TEST(AnisotropicLobe, WorkedHalfVectorsAndSpreads) {
  // v = 1: N itself, the level 0.9 with exponent max(nu, nv).
  LocalNormal const top = sample_local(10.0f, 10.0f, 0.3, 1.0);
  EXPECT_EQ(top.normal, GMathVec3<double>(0.0, 0.0, 1.0));
  EXPECT_TRUE(std::fabs(top.spread - 0.139072) <= 1e-6) << top.spread;
  LocalNormal const top_aniso = sample_local(3.0f, 40.0f, 0.7, 1.0);
  double const p40 = std::pow(0.9, 1.0 / 41.0);
  EXPECT_EQ(top_aniso.spread, std::sqrt(1.0 - p40 * p40) / p40);

  // nu = nv = 10 at (0, 0.5): phi = 0, e = 1/11, the level clamped to 0.9.
  LocalNormal const iso = sample_local(10.0f, 10.0f, 0.0, 0.5);
  EXPECT_TRUE(distance(iso.normal, GMathVec3<double>(0.344106, 0.0, 0.938931)) <= 1e-6)
      << iso.normal.x << " " << iso.normal.z;
  EXPECT_EQ(iso.normal.y, 0.0);
  EXPECT_EQ(iso.spread, top.spread) << "same level and exponent as v = 1";

  // nu = 100, nv = 10 at (0.1, 0.5): first quarter, e about 0.037889.
  LocalNormal const aniso = sample_local(100.0f, 10.0f, 0.1, 0.5);
  EXPECT_TRUE(distance(aniso.normal, GMathVec3<double>(0.093551, 0.205955, 0.974079)) <= 1e-6)
      << aniso.normal.x << " " << aniso.normal.y << " " << aniso.normal.z;
  EXPECT_TRUE(std::fabs(std::log(aniso.normal.z) / std::log(0.5) - 0.037889) <= 1e-6);
  EXPECT_TRUE(std::fabs(aniso.spread - 0.089531) <= 1e-6) << aniso.spread;

  // nu = nv = 1 at (0.5, 0): cos theta = 0, phi = pi', level 0.9 to the 1/2.
  LocalNormal const tangent = sample_local(1.0f, 1.0f, 0.5, 0.0);
  EXPECT_EQ(tangent.normal.z, 0.0);
  EXPECT_TRUE(distance(tangent.normal, GMathVec3<double>(-1.0, 0.0, 0.0)) <= 1e-12);
  EXPECT_TRUE(std::fabs(tangent.spread - 1.0 / 3.0) <= 1e-9) << tangent.spread;

  // Above v = 0.63 the level 1 - v / 2pi' drops below 0.9 unclamped.
  LocalNormal const high = sample_local(10.0f, 10.0f, 0.3, 0.95);
  EXPECT_TRUE(std::fabs(high.spread - 0.17393614136377505) <= 1e-13) << high.spread;

  // compute_ray's spread: the level 0.1 at the exponent of the normal's
  // azimuth (the larger exponent along N itself).
  AnisotropicReflectionRayGenerator g;
  init(g, flat_shading(100.0f, 10.0f, GMathVec3<double>(0.0, 0.0, -1.0)));
  double const along_t = Lobe::spread_of_normal(g, GMathVec3<double>(0.6, 0.0, 0.8));
  double const along_n = Lobe::spread_of_normal(g, GMathVec3<double>(0.0, 0.0, 1.0));
  EXPECT_TRUE(std::fabs(along_t - 0.21598891366323994) <= 1e-14) << along_t;
  EXPECT_TRUE(std::fabs(along_n - 0.21598891366323994) <= 1e-14) << along_n;
  init(g, flat_shading(9.0f, 9.0f, GMathVec3<double>(0.0, 0.0, -1.0)));
  double const iso_spread = Lobe::spread_of_normal(g, GMathVec3<double>(0.0, 0.6, 0.8));
  EXPECT_TRUE(std::fabs(iso_spread - 0.7647831015792083) <= 1e-14) << iso_spread;

  // Isotropic lobes take phi = u 2pi' as it is, with no tangent round trip.
  for (double u : {0.0, 0.1, 0.25, 0.3, 0.5, 0.8, 1.0}) {
    LocalNormal const n = sample_local(5.0f, 5.0f, u, 0.4);
    double const sin_theta = std::sqrt(1.0 - n.normal.z * n.normal.z);
    EXPECT_EQ(n.normal.x, sin_theta * std::cos(u * k_sampling_two_pi)) << u;
    EXPECT_EQ(n.normal.y, sin_theta * std::sin(u * k_sampling_two_pi)) << u;
  }

  // u = 0.25 starts the odd quarter at x = pi'/2, whose tangent is huge: phi
  // ends next to pi'/2, and u = 1 at 2pi'.
  LocalNormal const quarter = sample_local(100.0f, 10.0f, 0.25, 0.5);
  double const phi = std::atan2(quarter.normal.y, quarter.normal.x);
  EXPECT_TRUE(std::fabs(phi - k_sampling_half_pi) <= 1e-12) << phi;
  LocalNormal const full = sample_local(100.0f, 10.0f, 1.0, 0.5);
  EXPECT_TRUE(std::fabs(std::atan2(full.normal.y, full.normal.x)) <= 1e-11);

  // The level never drops to the lower clamp for v < 1: the spread lies
  // between those of the levels 0.9 and 1 - 1/(2pi') at the sample's
  // exponent.
  std::mt19937_64 rng(5);
  std::uniform_real_distribution<double> unit_interval(0.0, 1.0);
  for (int i = 0; i < 2000; ++i) {
    double const v = unit_interval(rng);
    LocalNormal const n = sample_local(7.0f, 7.0f, unit_interval(rng), v);
    double const e = 1.0 / 8.0;
    double const low = std::pow(0.9, e);
    double const high = std::pow(1.0 - 1.0 / k_sampling_two_pi, e);
    double const narrowest = std::sqrt(1.0 - low * low) / low;
    double const widest = std::sqrt(1.0 - high * high) / high;
    ASSERT_TRUE(n.spread >= narrowest * (1.0 - 1e-12) && n.spread <= widest * (1.0 + 1e-12))
        << v << " " << n.spread;
  }
}

TEST(AnisotropicReflectionRayGenerator, InitBuildsTheTangentFrame) {
  // Anisotropy along M's second column: T is that column, B = N x T minus the
  // first, N the third; the spread scales are 1 - reduction.
  std::mt19937_64 rng(17);
  for (int i = 0; i < 100; ++i) {
    Shading const s = random_shading(rng, 3.0f, 30.0f, false);
    AnisotropicReflectionRayGenerator g;
    g.init(s.incoming, s.position, s.matrix, s.geometric_normal, s.differential, s.nu, s.nv,
           GMathVec2<float>(0.0f, 1.0f), 0.25f, 0.125f);
    GMathVec3<double> const frame[3] = {s.matrix.column(1), -s.matrix.column(0),
                                        s.matrix.column(2)};
    for (int k = 0; k < 3; ++k) {
      GMathVec3<double> axis;
      axis[k] = 1.0;
      ASSERT_TRUE(distance(Lobe::local_to_global(g, axis), frame[k]) <= 1e-15) << k;
      ASSERT_TRUE(distance(Lobe::global_to_local(g, frame[k]), axis) <= 1e-14) << k;
    }
  }
  AnisotropicReflectionRayGenerator g;
  g.init(GMathRay(), GMathVec3<double>(), GMathMatrix3x3<double>(), GMathVec3<double>(0, 0, 1),
         GeometryDifferential(), 1.0f, 1.0f, GMathVec2<float>(1.0f, 0.0f), 0.25f, 0.125f);
  EXPECT_EQ(g.get_spread_scale(), GMathVec2<float>(0.75f, 0.875f));
  EXPECT_EQ(g.get_spread_scale_min(), 0.75f);
}

TEST(AnisotropicReflectionRayGenerator, MirrorsAboutTheChosenHalfVector) {
  std::mt19937_64 rng(23);
  int retried = 0, kept_first = 0;
  for (int scene = 0; scene < 40; ++scene) {
    float const nu = scene % 2 ? 2.0f : 50.0f;
    float const nv = scene % 3 ? 2.0f : 8.0f;
    Shading const s = random_shading(rng, nu, nv, scene % 2 == 0);
    AnisotropicReflectionRayGenerator g;
    init(g, s);
    std::vector<GMathVec2<double>> const samples = random_samples(rng, 500);
    std::vector<GMathRay> rays(samples.size());
    ASSERT_EQ(g.get_rays(samples.data(), 500, rays.data(), nullptr), 500u);
    GMathVec3<double> const& incoming = s.incoming.m_direction;
    for (size_t i = 0; i < samples.size(); ++i) {
      double spread;
      GMathVec3<double> const h = chosen_normal(g, s, samples[i], spread);
      GMathVec3<double> first, second;
      candidate_normals(g, samples[i], first, second, spread);
      (h == first ? kept_first : retried) += 1;
      GMathVec3<double> const& r = rays[i].m_direction;
      // A mirror image: same length as I, and R - I along H (its sign is
      // that of -(I . H)).
      ASSERT_TRUE(std::fabs(r.length() - 1.0) <= 1e-12) << scene << " " << i;
      GMathVec3<double> const chord = r - incoming;
      double const side = -dot(h, incoming) >= 0.0 ? 1.0 : -1.0;
      if (chord.length() > 1e-6) {
        ASSERT_TRUE(distance(chord * (1.0 / chord.length()), h * side) <= 1e-9)
            << scene << " " << i;
      }
      // With H facing I, the angle to H is kept: R . H = -(I . H).
      ASSERT_TRUE(std::fabs(dot(r, h) + dot(incoming, h)) <= 1e-12);
    }
  }
  EXPECT_GT(retried, 100) << "the half-turn retry must be exercised";
  EXPECT_GT(kept_first, 1000);

  // Normal incidence with the sampled normal N (v = 1) sends the ray back.
  AnisotropicReflectionRayGenerator g;
  GMathVec3<double> const down(0.0, 0.0, -1.0);
  init(g, flat_shading(4.0f, 9.0f, down));
  GMathRay ray;
  ASSERT_TRUE(g.get_ray(GMathVec2<double>(0.6, 1.0), ray, nullptr));
  EXPECT_EQ(ray.m_direction, -down);
  g.compute_ray(GMathVec3<double>(0.0, 0.0, 1.0), ray);
  EXPECT_EQ(ray.m_direction, -down);
}

TEST(AnisotropicReflectionRayGenerator, DifferentialsMatchFiniteDifferences) {
  std::mt19937_64 rng(29);
  for (int scene = 0; scene < 30; ++scene) {
    Shading const s = random_shading(rng, scene % 2 ? 5.0f : 80.0f, 12.0f, true);
    AnisotropicReflectionRayGenerator g;
    init(g, s);
    for (GMathVec2<double> const& sample : random_samples(rng, 40)) {
      SCOPED_TRACE(testing::Message()
                   << "scene " << scene << " sample " << sample.x << " " << sample.y);
      GMathRay ray;
      ASSERT_TRUE(g.get_ray(sample, ray, nullptr));
      ASSERT_TRUE(ray.m_has_differentials);
      double spread;
      GMathVec3<double> const normal = chosen_normal(g, s, sample, spread);
      expect_differentials_match_finite_differences(
          s, ray, normal, spread, [](Shading const& p, GMathVec3<double> const& n, GMathRay& out) {
            AnisotropicReflectionRayGenerator moved;
            init(moved, p);
            moved.compute_ray(n, out);
          });
      if (HasFatalFailure())
        return;
    }
  }
}

// Weights, cleared fields and the missing frustum are the rays harness's.
TEST(AnisotropicReflectionRayGenerator, RayFields) {
  std::mt19937_64 rng(31);
  for (bool differentials : {false, true}) {
    Shading const s = random_shading(rng, 6.0f, 60.0f, differentials);
    AnisotropicReflectionRayGenerator g;
    init(g, s);
    std::vector<GMathVec2<double>> const samples = random_samples(rng, 64);
    // Stale content everywhere: flags set, cone and tracer values non-zero.
    std::vector<GMathRay> rays = patterned_rays(samples.size(), 0x3C);
    for (GMathRay& r : rays)
      r.m_has_differentials = true;
    ASSERT_EQ(g.get_rays(samples.data(), 64, rays.data(), nullptr), 64u);
    for (GMathRay const& r : rays) {
      EXPECT_TRUE(r.m_origin == s.position && r.m_type == GMathRay::k_type_reflection &&
                  r.m_time == 0.25 && r.m_has_differentials == differentials);
      EXPECT_EQ(r.m_inverse_direction.x, 1.0 / r.m_direction.x);
      if (differentials) {
        EXPECT_TRUE(r.m_differential.m_rx_origin == s.position + s.differential.m_dpdx &&
                    r.m_differential.m_ry_origin == s.position + s.differential.m_dpdy &&
                    r.m_aux[1] > 0.0);
      }
    }
  }
}

TEST(AnisotropicReflectionRayGenerator, ShortSurfaceDifferentialCarriesNoNormalChange) {
  // |dpdx| below 1e-8 normalises to zero: with an unchanged incoming
  // direction the x auxiliary direction is R itself; dpdy just above the
  // threshold still turns the normal.
  Shading s = flat_shading(10.0f, 10.0f, unit(GMathVec3<double>(0.3, 0.1, -1.0)));
  GMathRayDifferential d;
  d.m_rx_direction = s.incoming.m_direction;
  d.m_ry_direction = s.incoming.m_direction;
  s.incoming.set_differentials(d);
  s.differential =
      GeometryDifferential(GMathVec3<double>(1e-8, 0.0, 0.0), GMathVec3<double>(0.0, 2e-8, 0.0));
  AnisotropicReflectionRayGenerator g;
  init(g, s);
  GMathRay ray;
  ASSERT_TRUE(g.get_ray(GMathVec2<double>(0.4, 0.3), ray, nullptr));
  EXPECT_EQ(ray.m_differential.m_rx_direction, ray.m_direction);
  EXPECT_TRUE(distance(ray.m_differential.m_ry_direction, ray.m_direction) > 1e-3);
}

#ifdef SAMPLING_CHECKS
TEST(AnisotropicReflectionRayGeneratorDeathTest, CallerContracts) {
  AnisotropicReflectionRayGenerator g;
  init(g, flat_shading(2.0f, 2.0f, GMathVec3<double>(0.0, 0.0, -1.0)));
  expect_sample_contract_deaths(g);
  GMathRay ray;
  EXPECT_DEATH(g.compute_ray(GMathVec3<double>(0.0, 0.0, 2.0), ray),
               "compute_ray: normal not of unit length");
  EXPECT_DEATH(g.compute_ray(GMathVec3<double>(0.0, 0.0, -1.0), ray), "opposite");
}
#endif
