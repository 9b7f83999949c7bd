#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "tests/rays/anisotropic_test_support.h"

using namespace anisotropic_test;

namespace {

// What a sample should give, found through compute_ray (the refraction of a
// chosen normal) and the side tests: the first candidate normal that faces I
// and sends T below Ng, else the half-turned one, else no ray. Under total
// internal reflection the sample path keeps the tangential T = eta I +
// (eta c) H, which compute_ray refuses.
struct Expected {
  bool produced = false;
  bool transmits = false;
  GMathVec3<double> normal;
  GMathVec3<double> direction;
};

Expected expected_ray(AnisotropicRefractionRayGenerator const& g, Shading const& s, float eta,
                      GMathVec2<double> const& sample) {
  GMathVec3<double> candidates[2];
  double spread;
  candidate_normals(g, sample, candidates[0], candidates[1], spread);
  GMathVec3<double> const& incoming = s.incoming.m_direction;
  Expected e;
  for (GMathVec3<double> const& h : candidates) {
    double const c = -dot(h, incoming);
    GMathRay ray;
    e.transmits = g.compute_ray(h, ray);
    e.direction =
        e.transmits ? ray.m_direction : incoming * eta + h * (static_cast<double>(eta) * c);
    e.normal = h;
    if (c > 0.0 && !(dot(e.direction, s.geometric_normal) >= 0.0)) {
      e.produced = true;
      return e;
    }
  }
  e.produced = false;
  return e;
}

}  // namespace

TEST(AnisotropicRefractionRayGenerator, SamplesTheReflectionGeneratorsHalfVectors) {
  std::mt19937_64 rng(41);
  for (int scene = 0; scene < 6; ++scene) {
    Shading const s = random_shading(rng, 4.0f * scene, 9.0f, false);
    AnisotropicReflectionRayGenerator reflection;
    AnisotropicRefractionRayGenerator refraction;
    init(reflection, s);
    init(refraction, s, 1.5f);
    for (GMathVec2<double> const& sample : random_samples(rng, 500)) {
      GMathVec3<double> a0, a1, b0, b1;
      double ta, tb;
      candidate_normals(reflection, sample, a0, a1, ta);
      candidate_normals(refraction, sample, b0, b1, tb);
      ASSERT_EQ(std::memcmp(&a0, &b0, sizeof a0), 0);
      ASSERT_EQ(std::memcmp(&a1, &b1, sizeof a1), 0);
      ASSERT_EQ(ta, tb);
    }
  }
}

TEST(AnisotropicRefractionRayGenerator, SnellsLawAndSidesHoldForProducedRays) {
  std::mt19937_64 rng(43);
  int transmitted = 0, tangential = 0, failed = 0;
  for (float const eta : {0.75f, 1.0f, 1.5f}) {
    for (int scene = 0; scene < 20; ++scene) {
      Shading const s =
          random_shading(rng, scene % 2 ? 3.0f : 1.0f, scene % 3 ? 20.0f : 1.0f, false);
      AnisotropicRefractionRayGenerator g;
      init(g, s, eta);
      GMathVec3<double> const& incoming = s.incoming.m_direction;
      for (GMathVec2<double> const& sample : random_samples(rng, 300)) {
        GMathRay ray;
        bool const made = g.get_ray(sample, ray, nullptr);
        Expected const e = expected_ray(g, s, eta, sample);
        ASSERT_EQ(made, e.produced) << eta << " " << scene << " " << sample.x << " " << sample.y;
        if (!made) {
          ++failed;
          continue;
        }
        ASSERT_EQ(ray.m_direction, e.direction);
        EXPECT_EQ(ray.m_type, GMathRay::k_type_refraction);
        EXPECT_EQ(ray.m_origin, s.position);
        EXPECT_EQ(ray.m_time, 0.25);
        GMathVec3<double> const& t = ray.m_direction;
        GMathVec3<double> const& h = e.normal;
        // Both directions on the far side of H, T below Ng.
        ASSERT_TRUE(dot(incoming, h) < 0.0);
        ASSERT_TRUE(!(dot(t, s.geometric_normal) >= 0.0));
        // T lies in the plane of I and H.
        ASSERT_TRUE(std::fabs(dot(cross(incoming, h), t)) <= 1e-12);
        if (!e.transmits) {
          ++tangential;
          ASSERT_TRUE(std::fabs(dot(t, h)) <= 1e-12) << "total internal reflection is tangential";
          continue;
        }
        ++transmitted;
        // eta sin(theta_i) = sin(theta_t), T a unit vector leaving through -H.
        double const sin_i = cross(incoming, h).length();
        double const sin_t = cross(t, h).length();
        ASSERT_TRUE(std::fabs(t.length() - 1.0) <= 1e-12);
        ASSERT_TRUE(dot(t, h) < 0.0);
        ASSERT_TRUE(std::fabs(eta * sin_i - sin_t) <= 1e-12) << eta << " " << sin_i << " " << sin_t;
        if (eta == 1.0f) {
          // T = I up to the rounding of sqrt(1 - (1 - c^2)) against c, which
          // grows as c shrinks.
          double const c = -dot(h, incoming);
          ASSERT_TRUE(distance(t, incoming) <= 1e-14 + 1e-16 / c)
              << "eta 1 leaves I unbent: " << distance(t, incoming) << " c " << c;
        }
      }
    }
  }
  EXPECT_GT(transmitted, 5000);
  EXPECT_GT(tangential, 50);
  EXPECT_GT(failed, 50);
}

// Light leaving from below: every normal faces away, no ray at all, the ray
// and weight arrays are left as they were; get_ray still stores its weight.
// (Packing and weights of the produced rays are the rays harness's.)
TEST(AnisotropicRefractionRayGenerator, LightFromBelowGivesNoRay) {
  std::mt19937_64 rng(47);
  std::vector<GMathVec2<double>> const samples = random_samples(rng, 2000);
  AnisotropicRefractionRayGenerator from_below;
  init(from_below, flat_shading(5.0f, 5.0f, unit(GMathVec3<double>(0.2, 0.1, 1.0))), 1.2f);
  std::vector<GMathRay> rays = patterned_rays(samples.size(), 0x5A);
  std::vector<GMathRay> const before = rays;
  std::vector<double> weights(samples.size(), -1.0);
  EXPECT_EQ(from_below.get_rays(samples.data(), 2000, rays.data(), weights.data()), 0u);
  EXPECT_EQ(std::memcmp(rays.data(), before.data(), rays.size() * sizeof(GMathRay)), 0);
  EXPECT_EQ(weights[0], -1.0);
  double weight = -1.0;
  EXPECT_FALSE(from_below.get_ray(samples[7], rays[0], &weight));
  EXPECT_EQ(weight, 1.0);
}

TEST(AnisotropicRefractionRayGenerator, ComputeRayReportsTotalInternalReflection) {
  // eta 1.5 at c about 0.29: s2 about 2.06. compute_ray refuses the normal
  // N, while a sample that picks N (v = 1) keeps the tangential direction,
  // which points below the tilted Ng.
  Shading s = flat_shading(8.0f, 8.0f, unit(GMathVec3<double>(1.0, 0.0, -0.3)));
  s.geometric_normal = unit(GMathVec3<double>(-0.1, 0.0, 1.0));
  AnisotropicRefractionRayGenerator g;
  init(g, s, 1.5f);
  GMathVec3<double> const n(0.0, 0.0, 1.0);
  std::vector<GMathRay> ray = patterned_rays(1, 0xC3);
  std::vector<GMathRay> const before = ray;
  EXPECT_FALSE(g.compute_ray(n, ray[0]));
  EXPECT_EQ(std::memcmp(ray.data(), before.data(), sizeof(GMathRay)), 0) << "ray untouched";
  ASSERT_TRUE(g.get_ray(GMathVec2<double>(0.3, 1.0), ray[0], nullptr));
  EXPECT_EQ(ray[0].m_direction.z, 0.0);
  EXPECT_TRUE(ray[0].m_direction.x > 1.4);

  // A normal that transmits: Snell's law, type 4, no differentials.
  GMathVec3<double> const tilted = unit(GMathVec3<double>(-1.0, 0.0, 1.0));
  ASSERT_TRUE(g.compute_ray(tilted, ray[0]));
  EXPECT_TRUE(std::fabs(1.5 * cross(s.incoming.m_direction, tilted).length() -
                        cross(ray[0].m_direction, tilted).length()) <= 1e-12);
  EXPECT_EQ(ray[0].m_type, GMathRay::k_type_refraction);
  EXPECT_FALSE(ray[0].m_has_differentials);
  EXPECT_EQ(ray[0].m_aux[0] + ray[0].m_aux[1] + ray[0].m_aux_cleared[0] + ray[0].m_aux_cleared[1],
            0.0);
}

TEST(AnisotropicRefractionRayGenerator, DifferentialsMatchFiniteDifferences) {
  // Away from total internal reflection.
  std::mt19937_64 rng(53);
  int checked = 0;
  for (float const eta : {0.7f, 1.3f}) {
    for (int scene = 0; scene < 20; ++scene) {
      Shading const s = random_shading(rng, 6.0f, scene % 2 ? 6.0f : 40.0f, true);
      AnisotropicRefractionRayGenerator g;
      init(g, s, eta);
      for (GMathVec2<double> const& sample : random_samples(rng, 30)) {
        GMathRay ray;
        if (!g.get_ray(sample, ray, nullptr))
          continue;
        Expected const e = expected_ray(g, s, eta, sample);
        double const c = -dot(e.normal, s.incoming.m_direction);
        if (!e.transmits || (1.0 - c * c) * eta * eta > 0.9)
          continue;
        ++checked;
        GMathVec3<double> first, second;
        double spread;
        candidate_normals(g, sample, first, second, spread);
        SCOPED_TRACE(testing::Message() << "eta " << eta << " scene " << scene);
        expect_differentials_match_finite_differences(
            s, ray, e.normal, spread,
            [eta](Shading const& p, GMathVec3<double> const& n, GMathRay& out) {
              AnisotropicRefractionRayGenerator moved;
              init(moved, p, eta);
              EXPECT_TRUE(moved.compute_ray(n, out));
            });
        if (HasFatalFailure())
          return;
      }
    }
  }
  EXPECT_GT(checked, 300);
}

#ifdef SAMPLING_CHECKS
TEST(AnisotropicRefractionRayGeneratorDeathTest, CallerContracts) {
  AnisotropicRefractionRayGenerator g;
  init(g, flat_shading(2.0f, 2.0f, GMathVec3<double>(0.0, 0.0, -1.0)), 1.3f);
  expect_sample_contract_deaths(g);
  GMathRay ray;
  EXPECT_DEATH(g.compute_ray(GMathVec3<double>(0.1, 0.0, 0.5), ray),
               "compute_ray: normal not of unit length");
  EXPECT_DEATH(g.compute_ray(GMathVec3<double>(0.0, 0.0, -1.0), ray), "opposite");
}
#endif
