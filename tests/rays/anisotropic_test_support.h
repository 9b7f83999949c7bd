#pragma once

// Shading points shared by the tests of the two anisotropic generators.

#include <cmath>
#include <random>

#include "platform/geometry/geometry_differential.h"
#include "platform/math/gmath_matrix3x3.h"
#include "platform/math/gmath_ray.h"
#include "sampling/ray_generators.h"
#include "sampling/rays/anisotropic_lobe.h"
#include "sampling/rays/ray_math.h"
#include "tests/support/ray_bits.h"

namespace anisotropic_test {

typedef GMathVec3<double> V3;

// A shading point: the arguments of init except eta.
struct Shading {
  GMathRay incoming;
  V3 position;
  GMathMatrix3x3<double> matrix;  // columns: first tangent, second tangent, N
  V3 geometric_normal{0.0, 0.0, 1.0};
  GeometryDifferential differential;
  float nu = 1.0f, nv = 1.0f;
  GMathVec2<float> direction{1.0f, 0.0f};
};

// Identity frame (T = x, B = y, N = z) at the origin, the incoming ray along
// `incoming` with no differentials.
inline Shading flat_shading(float nu, float nv, V3 const& incoming) {
  Shading s;
  s.incoming = GMathRay(V3(0.0, 0.0, 1.0), incoming);
  s.nu = nu;
  s.nv = nv;
  return s;
}

// A shading point drawn from `src` (any() uniform in [-1, 1], direction() a
// unit vector, pick4() one of 0..3): random N, tangents turned by a random
// angle about it (orthonormal to double precision), the anisotropy along one
// of the four unit axes, Ng within a few degrees of N, I arriving from N's
// side (I . N below -0.1) at time 0.25, and when asked incoming and surface
// differentials of size about 0.01.
template <typename Source>
Shading shading_from(Source& src, float nu, float nv, bool differentials) {
  auto const any3 = [&] { return V3(src.any(), src.any(), src.any()); };
  Shading s;
  V3 const n = src.direction();
  V3 t1, t2;
  orthonormal_basis(n, t1, t2);
  double const angle = 3.0 * src.any();
  // Made orthogonal to N: the library's basis of a direction within 1e-8 of
  // the Y axis is orthonormal to it only to that distance.
  V3 c1 = t1 * std::cos(angle) + t2 * std::sin(angle);
  c1 = unit(c1 - n * dot(c1, n));
  V3 const c2 = cross(n, c1);
  s.matrix = GMathMatrix3x3<double>(c1.x, c2.x, n.x, c1.y, c2.y, n.y, c1.z, c2.z, n.z);
  GMathVec2<float> const axes[4] = {{1.0f, 0.0f}, {0.0f, 1.0f}, {-1.0f, 0.0f}, {0.0f, -1.0f}};
  s.direction = axes[src.pick4()];
  s.geometric_normal = safe_normalize(n + any3() * 0.05, 1e-8);
  V3 incoming = src.direction();
  if (dot(incoming, n) > 0.0)
    incoming = -incoming;
  if (dot(incoming, n) > -0.1)
    incoming = safe_normalize(incoming - n * 0.2, 1e-8);
  s.position = any3() * 10.0;
  s.incoming = GMathRay(s.position - incoming * 3.0, incoming, GMathRay::k_type_camera, 0.25);
  if (differentials) {
    GMathRayDifferential d;
    d.m_rx_origin = s.incoming.m_origin + V3(0.01, 0.0, 0.0);
    d.m_ry_origin = s.incoming.m_origin + V3(0.0, 0.01, 0.0);
    d.m_rx_direction = incoming + any3() * 0.01;
    d.m_ry_direction = incoming + any3() * 0.01;
    s.incoming.set_differentials(d);
    s.differential =
        GeometryDifferential((t1 * src.any() + t2 * src.any()) * 0.01 + n * (0.001 * src.any()),
                             (t1 * src.any() + t2 * src.any()) * 0.01 + n * (0.001 * src.any()));
  }
  s.nu = nu;
  s.nv = nv;
  return s;
}

struct RandomSource {
  std::mt19937_64& rng;
  double any() { return std::uniform_real_distribution<double>(-1.0, 1.0)(rng); }
  V3 direction() { return random_unit(rng); }
  unsigned int pick4() { return static_cast<unsigned int>(rng() % 4); }
};

inline Shading random_shading(std::mt19937_64& rng, float nu, float nv, bool differentials) {
  RandomSource src{rng};
  return shading_from(src, nu, nv, differentials);
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
void candidate_normals(G const& g, GMathVec2<double> const& sample, V3 (&normal)[2],
                       double& spread) {
  V3 local;
  AnisotropicLobe<G>::compute_local_normal(g, sample, local, spread);
  normal[0] = AnisotropicLobe<G>::local_to_global(g, local);
  AnisotropicLobe<G>::turn_half(local);
  normal[1] = AnisotropicLobe<G>::local_to_global(g, local);
}

// The normal the reflection ray of a sample mirrors I about: the first
// candidate when it faces I and its mirror image leaves above Ng, else the
// half-turned one (then `retried`).
inline V3 mirror_normal(AnisotropicReflectionRayGenerator const& g, V3 const& incoming,
                        V3 const& ng, GMathVec2<double> const& sample, double& spread,
                        bool& retried) {
  V3 h[2];
  candidate_normals(g, sample, h, spread);
  double const d = -dot(h[0], incoming);
  retried = !(d > 0.0 && dot(incoming + h[0] * (2.0 * d), ng) > 0.0);
  return h[retried ? 1 : 0];
}

// What the refraction generator makes of a sample, through compute_ray and
// the side tests: the first candidate normal that faces I and sends T below
// Ng, else the half-turned one, else no ray. Under total internal reflection
// (compute_ray refuses the normal) T is the tangential eta I + (eta c) H.
struct Refracted {
  bool produced = false, transmits = false;
  V3 normal, direction;
  double spread;
};

inline Refracted expected_refraction(AnisotropicRefractionRayGenerator const& g, V3 const& incoming,
                                     V3 const& ng, float eta, GMathVec2<double> const& sample) {
  Refracted e;
  V3 h[2];
  candidate_normals(g, sample, h, e.spread);
  for (V3 const& n : h) {
    double const c = -dot(n, incoming);
    GMathRay ray;
    e.transmits = g.compute_ray(n, ray);
    e.normal = n;
    e.direction =
        e.transmits ? ray.m_direction : incoming * eta + n * (static_cast<double>(eta) * c);
    e.produced = c > 0.0 && !(dot(e.direction, ng) >= 0.0);
    if (e.produced)
      break;
  }
  return e;
}

}  // namespace anisotropic_test
