#pragma once

// Shading points and checks shared by the tests of the two anisotropic
// generators.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "platform/geometry/geometry_differential.h"
#include "platform/math/gmath_matrix3x3.h"
#include "platform/math/gmath_ray.h"
#include "sampling/ray_generators.h"
#include "sampling/rays/anisotropic_lobe.h"
#include "sampling/rays/ray_math.h"
#include "tests/support/ray_bits.h"

namespace anisotropic_test {

// A shading point: the arguments of init except eta.
struct Shading {
  GMathRay incoming;
  GMathVec3<double> position;
  GMathMatrix3x3<double> matrix;  // columns: first tangent, second tangent, N
  GMathVec3<double> geometric_normal;
  GeometryDifferential differential;
  float nu = 1.0f;
  float nv = 1.0f;
  GMathVec2<float> direction = GMathVec2<float>(1.0f, 0.0f);
};

// The shading matrix whose columns are t1, t2 and n.
inline GMathMatrix3x3<double> frame_matrix(GMathVec3<double> const& t1, GMathVec3<double> const& t2,
                                           GMathVec3<double> const& n) {
  return GMathMatrix3x3<double>(t1.x, t2.x, n.x, t1.y, t2.y, n.y, t1.z, t2.z, n.z);
}

// Identity frame (T = x, B = y, N = z) at the origin, the incoming ray along
// `incoming` with no differentials.
inline Shading flat_shading(float nu, float nv, GMathVec3<double> const& incoming) {
  Shading s;
  s.incoming = GMathRay(GMathVec3<double>(0.0, 0.0, 1.0), incoming);
  s.geometric_normal = GMathVec3<double>(0.0, 0.0, 1.0);
  s.nu = nu;
  s.nv = nv;
  return s;
}

// A random shading point: random N, a random orthonormal tangent pair, Ng within a few degrees of
// N, I arriving from N's side (I . N below -0.1), and when asked incoming and surface differentials
// of size about 0.01.
inline Shading random_shading(std::mt19937_64& rng, float nu, float nv, bool differentials) {
  std::uniform_real_distribution<double> any(-1.0, 1.0);
  Shading s;
  GMathVec3<double> const n = random_unit(rng);
  GMathVec3<double> t1, t2;
  orthonormal_basis(n, t1, t2);
  // The tangent columns turned by a random angle about N, and the anisotropy
  // direction one of the four unit axes, so that the frame stays orthonormal
  // to double precision.
  double const angle = 3.0 * any(rng);
  GMathVec3<double> const c1 = t1 * std::cos(angle) + t2 * std::sin(angle);
  GMathVec3<double> const c2 = cross(n, c1);
  s.matrix = frame_matrix(c1, c2, n);
  GMathVec2<float> const axes[4] = {{1.0f, 0.0f}, {0.0f, 1.0f}, {-1.0f, 0.0f}, {0.0f, -1.0f}};
  s.direction = axes[rng() % 4];
  s.geometric_normal = unit(n + GMathVec3<double>(any(rng), any(rng), any(rng)) * 0.05);
  GMathVec3<double> incoming = random_unit(rng);
  if (dot(incoming, n) > 0.0)
    incoming = -incoming;
  if (dot(incoming, n) > -0.1)
    incoming = unit(incoming - n * 0.2);
  s.position = GMathVec3<double>(any(rng), any(rng), any(rng)) * 10.0;
  s.incoming = GMathRay(s.position - incoming * 3.0, incoming, GMathRay::k_type_camera, 0.25);
  if (differentials) {
    GMathRayDifferential d;
    d.m_rx_origin = s.incoming.m_origin + GMathVec3<double>(0.01, 0.0, 0.0);
    d.m_ry_origin = s.incoming.m_origin + GMathVec3<double>(0.0, 0.01, 0.0);
    d.m_rx_direction = incoming + GMathVec3<double>(any(rng), any(rng), any(rng)) * 0.01;
    d.m_ry_direction = incoming + GMathVec3<double>(any(rng), any(rng), any(rng)) * 0.01;
    s.incoming.set_differentials(d);
    s.differential =
        GeometryDifferential((t1 * any(rng) + t2 * any(rng)) * 0.01 + n * (0.001 * any(rng)),
                             (t1 * any(rng) + t2 * any(rng)) * 0.01 + n * (0.001 * any(rng)));
  }
  s.nu = nu;
  s.nv = nv;
  return s;
}

inline void init(AnisotropicReflectionRayGenerator& g, Shading const& s) {
  g.init(s.incoming, s.position, s.matrix, s.geometric_normal, s.differential, s.nu, s.nv,
         s.direction, 0.0f, 0.0f);
}

inline void init(AnisotropicRefractionRayGenerator& g, Shading const& s, float eta) {
  g.init(s.incoming, s.position, s.matrix, s.geometric_normal, s.differential, s.nu, s.nv,
         s.direction, eta, 0.0f, 0.0f);
}

// The two candidate world normals of a sample (the second turned half a turn
// about N) and the spread tangent, as the generator computes them.
template <typename G>
void candidate_normals(G const& g, GMathVec2<double> const& sample, GMathVec3<double>& first,
                       GMathVec3<double>& second, double& spread) {
  GMathVec3<double> local;
  AnisotropicLobe<G>::compute_local_normal(g, sample, local, spread);
  first = AnisotropicLobe<G>::local_to_global(g, local);
  AnisotropicLobe<G>::turn_half(local);
  second = AnisotropicLobe<G>::local_to_global(g, local);
}

inline std::vector<GMathVec2<double>> random_samples(std::mt19937_64& rng, int count) {
  std::uniform_real_distribution<double> unit_interval(0.0, 1.0);
  std::vector<GMathVec2<double>> samples(static_cast<size_t>(count));
  for (GMathVec2<double>& s : samples)
    s = GMathVec2<double>(unit_interval(rng), unit_interval(rng));
  // The closed square's edges: v = 1 takes N itself, v = 0 a tangent normal.
  samples[0] = GMathVec2<double>(0.0, 0.0);
  samples[1] = GMathVec2<double>(1.0, 1.0);
  samples[2] = GMathVec2<double>(0.25, 0.0);
  samples[3] = GMathVec2<double>(0.75, 1.0);
  return samples;
}

#ifdef SAMPLING_CHECKS
// The sample contract of get_ray and get_rays: samples in [0,1]^2, arrays
// present when count > 0. Each breach aborts naming the operation.
inline void expect_sample_contract_deaths(SampleRayGenerator const& g) {
  GMathRay ray;
  EXPECT_DEATH(g.get_ray(GMathVec2<double>(1.5, 0.5), ray, nullptr),
               "get_ray: sample outside \\[0,1\\]\\^2");
  EXPECT_DEATH(g.get_ray(GMathVec2<double>(0.5, 1.0 + 1e-9), ray, nullptr), "sample outside");
  GMathVec2<double> const outside(-0.1, 0.5);
  EXPECT_DEATH(g.get_rays(&outside, 1, &ray, nullptr), "get_rays: sample outside \\[0,1\\]\\^2");
  EXPECT_DEATH(g.get_rays(&outside, 1, nullptr, nullptr), "null sample or ray array");
  EXPECT_DEATH(g.get_rays(nullptr, 3, &ray, nullptr), "null sample or ray array");
}
#endif

inline double distance(GMathVec3<double> const& a, GMathVec3<double> const& b) {
  return (a - b).length();
}

// The auxiliary rays of `ray` (sampled about the normal `normal` with spread
// tangent `spread`) against central differences: perturbing I by h Dx, P by
// h dpdx and the normal by h Nx (Nx = spread dpdx / |dpdx|) moves the ray
// that compute_ray builds by h (rx_direction - D) and its origin by
// h (rx_origin - P), to first order; likewise in y. `build(p, normal, out)`
// initialises a generator at the shading point p and calls compute_ray.
template <typename Build>
void expect_differentials_match_finite_differences(Shading const& s, GMathRay const& ray,
                                                   GMathVec3<double> const& normal,
                                                   double const& spread, Build const& build) {
  double const h = 1e-5;
  for (int axis = 0; axis < 2; ++axis) {
    SCOPED_TRACE(axis ? "y" : "x");
    GMathVec3<double> const dpd = axis ? s.differential.m_dpdy : s.differential.m_dpdx;
    GMathVec3<double> const dn = dpd * (spread / dpd.length());
    GMathVec3<double> const di = (axis ? s.incoming.m_differential.m_ry_direction
                                       : s.incoming.m_differential.m_rx_direction) -
                                 s.incoming.m_direction;
    auto const moved = [&](double step) {
      Shading p = s;
      p.incoming = GMathRay(s.incoming.m_origin, s.incoming.m_direction + di * step);
      p.position = s.position + dpd * step;
      GMathRay out;
      build(p, normal + dn * step, out);
      return out;
    };
    GMathRay const plus = moved(h), minus = moved(-h);
    GMathVec3<double> const fd_direction = (plus.m_direction - minus.m_direction) * (0.5 / h);
    GMathVec3<double> const fd_origin = (plus.m_origin - minus.m_origin) * (0.5 / h);
    GMathRayDifferential const& d = ray.m_differential;
    GMathVec3<double> const aux_direction = axis ? d.m_ry_direction : d.m_rx_direction;
    GMathVec3<double> const aux_origin = axis ? d.m_ry_origin : d.m_rx_origin;
    double const scale = 1.0 + (aux_direction - ray.m_direction).length();
    ASSERT_TRUE(distance(fd_direction, aux_direction - ray.m_direction) <= 1e-7 * scale);
    ASSERT_TRUE(distance(fd_origin, aux_origin - ray.m_origin) <= 1e-9);
    ASSERT_EQ(aux_origin, s.position + dpd);
  }
}

}  // namespace anisotropic_test
