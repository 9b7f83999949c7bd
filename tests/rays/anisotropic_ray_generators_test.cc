// The anisotropic lobe and its two generators: sampled normals and spreads,
// the shading frame, mirror and Snell directions with their side tests and
// retries, and differentials against finite differences. (Distributions are
// the densities test's; weights, packing and the array paths the rays
// harness's.)
#include <gtest/gtest.h>

#include "sampling/angles.h"
#include "tests/rays/anisotropic_test_support.h"

using namespace anisotropic_test;

namespace {

typedef GMathVec3<double> Vec3;
typedef GMathVec2<double> Vec2;
typedef AnisotropicLobe<AnisotropicReflectionRayGenerator> Lobe;

// The auxiliary rays of `ray` (sampled about `normal` with spread tangent
// `spread`) against central differences: perturbing I by h Dx, P by h dpdx
// and the normal by h spread dpdx / |dpdx| moves the ray that compute_ray
// builds by h (rx_direction - D), to first order; the auxiliary origins are
// P + dpdx and P + dpdy.
template <typename G, typename... Eta>
void expect_differentials_match_finite_differences(Shading const& s, GMathRay const& ray,
                                                   Vec3 const& normal, double const& spread,
                                                   Eta... eta) {
  double const h = 1e-5;
  ASSERT_TRUE(ray.m_has_differentials);
  for (int axis = 0; axis < 2; ++axis) {
    Vec3 const dpd = axis ? s.differential.m_dpdy : s.differential.m_dpdx;
    GMathRayDifferential const& in = s.incoming.m_differential;
    Vec3 const di = (axis ? in.m_ry_direction : in.m_rx_direction) - s.incoming.m_direction;
    auto const moved = [&](double step) {
      Shading p = s;
      p.incoming = GMathRay(s.incoming.m_origin, s.incoming.m_direction + di * step);
      p.position = s.position + dpd * step;
      G moved;
      init(moved, p, eta...);
      GMathRay out;
      moved.compute_ray(normal + dpd * (spread / dpd.length() * step), out);
      return out.m_direction;
    };
    Vec3 const fd = (moved(h) - moved(-h)) * (0.5 / h);
    GMathRayDifferential const& d = ray.m_differential;
    Vec3 const aux = (axis ? d.m_ry_direction : d.m_rx_direction) - ray.m_direction;
    ASSERT_TRUE((fd - aux).length() <= 1e-7 * (1.0 + aux.length())) << "axis " << axis;
    ASSERT_EQ(axis ? d.m_ry_origin : d.m_rx_origin, s.position + dpd);
  }
}

}  // namespace

// Normals and spreads of known samples: v = 1 is N with the level 0.9 at the
// larger exponent; below, phi follows the quarter-wise tangent warp and the
// level 1 - v / 2pi' is clamped to [0.1, 0.9].
TEST(AnisotropicLobe, SampledNormalsAndSpreads) {
  double const p40 = std::pow(0.9, 1.0 / 41.0);
  struct Case {
    float nu, nv;
    double u, v, x, y, z, spread, tol;
  } const cases[] = {
      {3, 40, 0.7, 1.0, 0.0, 0.0, 1.0, std::sqrt(1.0 - p40 * p40) / p40, 1e-15},
      {10, 10, 0.0, 0.5, 0.344106, 0.0, 0.938931, 0.139072, 1e-6},
      {100, 10, 0.1, 0.5, 0.093551, 0.205955, 0.974079, 0.089531, 1e-6},
      {1, 1, 0.5, 0.0, -1.0, 0.0, 0.0, 1.0 / 3.0, 1e-9},
      {10, 10, 0.3, 0.95, NAN, 0, 0, 0.17393614136377505, 1e-13},
  };
  for (Case const& c : cases) {
    AnisotropicReflectionRayGenerator g;
    init(g, flat_shading(c.nu, c.nv, Vec3(0.0, 0.0, -1.0)));
    Vec3 n;
    double spread;
    Lobe::compute_local_normal(g, Vec2(c.u, c.v), n, spread);
    EXPECT_TRUE(std::fabs(spread - c.spread) <= c.tol) << c.nu << " " << c.u << " " << spread;
    EXPECT_TRUE(std::isnan(c.x) || (n - Vec3(c.x, c.y, c.z)).length() <= 1e-6) << n.x << " " << n.z;
  }
  // Head on, the ray back along N has a density (the normal's azimuth is
  // undefined); the incoming direction itself, which a normal lying in the
  // surface sends on, has none (no half vector).
  AnisotropicReflectionRayGenerator g;
  init(g, flat_shading(100.0f, 10.0f, Vec3(0.0, 0.0, -1.0)));
  EXPECT_TRUE(g.pdf(Vec3(0.0, 0.0, 1.0)) > 0.0 && std::isfinite(g.pdf(Vec3(0.0, 0.0, 1.0))));
  EXPECT_EQ(g.pdf(Vec3(0.0, 0.0, -1.0)), 0.0);
  // The normal's density is continuous at N, where its azimuth is undefined
  // (approached along the tangent, whose exponent N takes).
  AnisotropicReflectionRayGenerator steep;
  init(steep, flat_shading(1.0f, 1000.0f, Vec3(0.0, 0.0, -1.0)));
  double const at_n = Lobe::normal_pdf(steep, Vec3(0.0, 0.0, 1.0));
  EXPECT_TRUE(std::fabs(Lobe::normal_pdf(steep, Vec3(1e-7, 0.0, std::sqrt(1.0 - 1e-14))) - at_n) <=
              1e-10 * at_n);
  double spread;
  // u = 0.25 starts the odd quarter at x = pi'/2, whose tangent is huge, and
  // just below it the even quarter ends there: phi stays next to pi'/2.
  // compute_ray's spread: the level 0.1 at the exponent of the normal's
  // azimuth (the larger exponent along N itself).
  for (double const u : {0.25, 0.25 - 1e-7}) {
    Vec3 n;
    Lobe::compute_local_normal(g, Vec2(u, 0.5), n, spread);
    EXPECT_TRUE(std::fabs(std::atan2(n.y, n.x) - k_sampling_half_pi) <= 1e-6) << u;
  }
  for (Vec3 const& n : {Vec3(0.6, 0.0, 0.8), Vec3(0.0, 0.0, 1.0)})
    EXPECT_TRUE(std::fabs(Lobe::spread_of_normal(g, n) - 0.21598891366323994) <= 1e-14) << n.z;
  init(g, flat_shading(9.0f, 9.0f, Vec3(0.0, 0.0, -1.0)));
  EXPECT_TRUE(std::fabs(Lobe::spread_of_normal(g, Vec3(0.0, 0.6, 0.8)) - 0.7647831015792083) <=
              1e-14);
  // Isotropic lobes take phi = u 2pi' as it is; the level never reaches the
  // lower clamp for v < 1.
  init(g, flat_shading(7.0f, 7.0f, Vec3(0.0, 0.0, -1.0)));
  double const low = std::pow(0.9, 0.125), high = std::pow(1.0 - 1.0 / k_sampling_two_pi, 0.125);
  for (Vec2 const& s : test_samples(500, 5)) {
    Vec3 n;
    Lobe::compute_local_normal(g, s, n, spread);
    double const sin_theta = std::sqrt(1.0 - n.z * n.z);
    ASSERT_TRUE(n.x == sin_theta * std::cos(s.x * k_sampling_two_pi) &&
                n.y == sin_theta * std::sin(s.x * k_sampling_two_pi))
        << s.x;
    ASSERT_TRUE(spread >= std::sqrt(1.0 - low * low) / low * (1.0 - 1e-12) &&
                spread <= std::sqrt(1.0 - high * high) / high * (1.0 + 1e-12))
        << s.y << " " << spread;
  }
}

// Anisotropy along M's second column: T is that column, B = N x T minus the
// first, N the third.
TEST(AnisotropicReflectionRayGenerator, InitBuildsTheTangentFrame) {
  std::mt19937_64 rng(17);
  for (int i = 0; i < 50; ++i) {
    Shading const s = random_shading(rng, 3.0f, 30.0f, false);
    AnisotropicReflectionRayGenerator g;
    g.init(s.incoming, s.position, s.matrix, s.geometric_normal, s.differential, s.nu, s.nv,
           GMathVec2<float>(0.0f, 1.0f), 0.25f, 0.125f);
    Vec3 const frame[3] = {s.matrix.column(1), -s.matrix.column(0), s.matrix.column(2)};
    for (int k = 0; k < 3; ++k) {
      Vec3 axis;
      axis[k] = 1.0;
      ASSERT_TRUE((Lobe::local_to_global(g, axis) - frame[k]).length() <= 1e-15 &&
                  (Lobe::global_to_local(g, frame[k]) - axis).length() <= 1e-14)
          << k;
    }
  }
}

// Both generators' differentials match finite differences, over shading
// points where the half-turn retry and (for refraction) both total internal
// reflection and missing rays occur. (Mirror and Snell directions, sides and
// fields are the rays harness's.)
TEST(AnisotropicRayGenerators, DifferentialsMatchFiniteDifferences) {
  std::mt19937_64 rng(23);
  int retries = 0, tangential = 0, failed = 0, refracted = 0;
  for (int scene = 0; scene < 30; ++scene) {
    Shading const s = random_shading(rng, scene % 2 ? 3.0f : 50.0f, scene % 3 ? 20.0f : 1.0f, true);
    float const eta = scene % 3 == 0 ? 0.75f : 1.5f;
    AnisotropicReflectionRayGenerator reflection;
    AnisotropicRefractionRayGenerator refraction;
    init(reflection, s);
    init(refraction, s, eta);
    Vec3 const& i = s.incoming.m_direction;
    for (Vec2 const& sample : test_samples(40, static_cast<unsigned int>(scene))) {
      SCOPED_TRACE(testing::Message()
                   << "scene " << scene << " at " << sample.x << " " << sample.y);
      GMathRay ray;
      ASSERT_TRUE(reflection.get_ray(sample, ray, nullptr));
      double spread;
      bool retried;
      Vec3 const normal = mirror_normal(reflection, i, s.geometric_normal, sample, spread, retried);
      retries += retried;
      expect_differentials_match_finite_differences<AnisotropicReflectionRayGenerator>(
          s, ray, normal, spread);
      Refracted const e = expected_refraction(refraction, i, s.geometric_normal, eta, sample);
      failed += !e.produced;
      tangential += e.produced && !e.transmits;
      double const c = -dot(e.normal, i);
      if (!e.produced || !e.transmits || (1.0 - c * c) * eta * eta > 0.9)
        continue;
      ++refracted;
      ASSERT_TRUE(refraction.get_ray(sample, ray, nullptr));
      expect_differentials_match_finite_differences<AnisotropicRefractionRayGenerator>(
          s, ray, e.normal, e.spread, eta);
    }
  }
  EXPECT_TRUE(retries > 20 && tangential > 5 && failed > 5 && refracted > 300)
      << retries << " " << tangential << " " << failed << " " << refracted;
}

// Light leaving from below: no ray, the arrays left as they were (get_ray
// still stores its weight).
TEST(AnisotropicRefractionRayGenerator, NoRayFromBelow) {
  std::vector<Vec2> const samples = test_samples(500, 5);
  AnisotropicRefractionRayGenerator g;
  init(g, flat_shading(5.0f, 5.0f, unit(Vec3(0.2, 0.1, 1.0))), 1.2f);
  std::vector<GMathRay> rays = patterned_rays(samples.size(), 0x5A);
  std::vector<double> weights(samples.size(), -1.0);
  EXPECT_EQ(g.get_rays(samples.data(), 500, rays.data(), weights.data()), 0u);
  EXPECT_TRUE(same_ray_bits(rays[0], patterned_rays(1, 0x5A)[0]) && weights[0] == -1.0);
  double weight = -1.0;
  EXPECT_FALSE(g.get_ray(samples[7], rays[0], &weight));
  EXPECT_EQ(weight, 1.0);
}
