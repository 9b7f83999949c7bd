#pragma once

#include <cmath>
#include <cstring>

#include "platform/geometry/geometry_differential.h"
#include "platform/math/gmath_frustum.h"
#include "platform/math/gmath_matrix3x3.h"
#include "platform/math/gmath_ray.h"
#include "platform/math/gmath_ray_differential.h"
#include "platform/math/gmath_vec2.h"
#include "platform/math/gmath_vec3.h"
#include "sampling/angles.h"
#include "sampling/checks.h"
#include "sampling/rays/ray_math.h"

// Internal: what the anisotropic reflection and refraction generators share.
// Both records hold the same fields under the same names (the refraction one
// adds m_eta), so one template over the record type serves both: the shading
// frame and init, the half-vector sampling of the anisotropic Phong lobe with
// its spread, the ray builder with the differential step, and the three
// callbacks, which both generators register as they stand. Each generator
// keeps only its scattering law (mirror or refraction) and its side tests.
// Not exported; every function is inlined where used.

// 1 / (2 pi'), the reciprocal of the library's 2 pi: the level of the lobe's
// spread falls by this much per unit of v. A constant expression: the
// compile-time division rounds as the run-time one would (a test checks the
// two against each other), so nothing is left to compute when the library
// loads.
constexpr double k_anisotropic_inverse_two_pi = 1.0 / k_sampling_two_pi;
static_assert(k_anisotropic_inverse_two_pi == 0x1.45f306dc9ce2bp-3, "1 / 6.283185307178");

// The cosine-power level that sets a sampled normal's spread is kept in
// [0.1, 0.9]; compute_ray always uses the low end.
constexpr double k_anisotropic_level_min = 0.1;
constexpr double k_anisotropic_level_max = 0.9;

// tan of the angle at which a cosine power reaches the level p (given as the
// level raised to the lobe's 1 / (n + 1)): sqrt(1 - p^2) / p.
inline double anisotropic_spread_tangent(double const& p) {
  return std::sqrt(1.0 - p * p) / p;
}

template <typename G>
struct AnisotropicLobe {
  // The frame, the exponents and the surface of a shading point (all of init
  // after m_eta). N is the third column of M, T = d.x M_0 + d.y M_1 (not
  // normalised), B = N x T.
  static void init(G& g, GMathRay const& incoming_ray, GMathVec3<double> const& position,
                   GMathMatrix3x3<double> const& shading, GMathVec3<double> const& geometric_normal,
                   GeometryDifferential const& differential, float const& nu, float const& nv,
                   GMathVec2<float> const& direction, float const& spread_reduction_x,
                   float const& spread_reduction_y) {
    SAMPLING_CHECK(std::fabs(dot(incoming_ray.m_direction, incoming_ray.m_direction) - 1.0) <= 1e-3,
                   "anisotropic ray generator init: the incoming direction is not a unit vector");
    g.m_exponent_u = nu;
    g.m_exponent_v = nv;
    g.m_exponent_ratio = std::sqrt((nu + 1.0f) / (nv + 1.0f));
    g.m_exponent_max = static_cast<double>(nu) > static_cast<double>(nv) ? nu : nv;
    g.m_spread_scale = GMathVec2<float>(1.0f - spread_reduction_x, 1.0f - spread_reduction_y);
    g.m_spread_scale_min =
        g.m_spread_scale.x < g.m_spread_scale.y ? g.m_spread_scale.x : g.m_spread_scale.y;
    std::memcpy(static_cast<void*>(&g.m_incoming_ray), &incoming_ray, sizeof(GMathRay));
    g.m_normal = shading.column(2);
    g.m_tangent = shading.column(0) * static_cast<double>(direction.x) +
                  shading.column(1) * static_cast<double>(direction.y);
    g.m_bitangent = cross(g.m_normal, g.m_tangent);
    g.m_position = position;
    g.m_geometric_normal = geometric_normal;
    g.m_dpdx = differential.m_dpdx;
    g.m_dpdy = differential.m_dpdy;
    g.m_dpdx_unit = ::safe_normalize(g.m_dpdx, k_ray_normalize_epsilon);
    g.m_dpdy_unit = ::safe_normalize(g.m_dpdy, k_ray_normalize_epsilon);
  }

  // L.x T + L.y B + L.z N.
  static GMathVec3<double> local_to_global(G const& g, GMathVec3<double> const& local) {
    return g.m_tangent * local.x + g.m_bitangent * local.y + g.m_normal * local.z;
  }

  // (V . T, V . B, V . N).
  static GMathVec3<double> global_to_local(G const& g, GMathVec3<double> const& v) {
    return GMathVec3<double>(dot(v, g.m_tangent), dot(v, g.m_bitangent), dot(v, g.m_normal));
  }

  // Ashikhmin-Shirley half-vector sampling: sample (u, v) to a unit normal in
  // the local frame (x along T with exponent nu, y along B with nv, z along
  // N), with density sqrt((nu + 1)(nv + 1)) / (2 pi) cos^(nu cos^2 phi +
  // nv sin^2 phi) theta per unit solid angle, and the tangent of the lobe's
  // spread at that normal.
  static void compute_local_normal(G const& g, GMathVec2<double> const& sample,
                                   GMathVec3<double>& local, double& spread) {
    double const u = sample.x;
    double const v = sample.y;
    double e;
    double p;
    if (v >= 1.0) {
      local = GMathVec3<double>(0.0, 0.0, 1.0);
      e = 1.0 / static_cast<double>(g.m_exponent_max + 1.0f);
      p = k_anisotropic_level_max;
    } else {
      double const phi = azimuth(g, u);
      double const sin_phi = std::sin(phi);
      double const cos_phi = std::cos(phi);
      e = 1.0 / (static_cast<double>(g.m_exponent_v) * (sin_phi * sin_phi) +
                 static_cast<double>(g.m_exponent_u) * (cos_phi * cos_phi) + 1.0);
      double const cos_theta = std::pow(v, e);
      double const sin_theta = std::sqrt(1.0 - cos_theta * cos_theta);
      local = GMathVec3<double>(sin_theta * cos_phi, sin_theta * sin_phi, cos_theta);
      p = 1.0 - v * k_anisotropic_inverse_two_pi;
      if (p <= k_anisotropic_level_min)
        p = k_anisotropic_level_min;
      else if (p >= k_anisotropic_level_max)
        p = k_anisotropic_level_max;
    }
    spread = anisotropic_spread_tangent(std::pow(p, e));
  }

  // The spread tangent of a world normal H chosen by the caller: the lobe's
  // exponent in H's azimuth, (nu L.x^2 + nv L.y^2) / (1 - L.z^2) (the larger
  // exponent along N itself), at the level 0.1.
  static double spread_of_normal(G const& g, GMathVec3<double> const& normal) {
    GMathVec3<double> const local = global_to_local(g, normal);
    double const n = local.z >= 1.0 ? static_cast<double>(g.m_exponent_max)
                                    : (static_cast<double>(g.m_exponent_u) * (local.x * local.x) +
                                       static_cast<double>(g.m_exponent_v) * (local.y * local.y)) /
                                          (1.0 - local.z * local.z);
    return anisotropic_spread_tangent(std::pow(k_anisotropic_level_min, 1.0 / (n + 1.0)));
  }

  // Density per unit solid angle with which compute_local_normal returns
  // the unit local normal `local`, 0 below the tangent plane. The azimuth
  // phi0 = 2pi' u is uniform; the anisotropic lobe maps it within each
  // quarter through phi = atan(r tan phi0), r the stored single-precision
  // ratio, so phi has density r / (r^2 cos^2 phi + sin^2 phi) / (2pi'); then
  // cos theta = v^(1 / (n + 1)) with n = nu cos^2 phi + nv sin^2 phi has
  // density (n + 1) cos^n theta. With the exact ratio this is
  // sqrt((nu + 1)(nv + 1)) / (2pi') cos^n theta; equal exponents give r = 1
  // exactly. The point v = 1 (the normal N itself) carries no density.
  static double normal_pdf(G const& g, GMathVec3<double> const& local) {
    if (!(local.z > 0.0))
      return 0.0;
    double const xy = local.x * local.x + local.y * local.y;
    double const cos2 = xy > 0.0 ? local.x * local.x / xy : 1.0;
    double const sin2 = xy > 0.0 ? local.y * local.y / xy : 0.0;
    double const n =
        static_cast<double>(g.m_exponent_u) * cos2 + static_cast<double>(g.m_exponent_v) * sin2;
    double const r = static_cast<double>(g.m_exponent_ratio);
    return (n + 1.0) * std::pow(local.z, n) * r / (r * r * cos2 + sin2) *
           k_anisotropic_inverse_two_pi;
  }

  // The local normal with its azimuth turned by half a turn about N.
  static void turn_half(GMathVec3<double>& local) {
    local.x = -local.x;
    local.y = -local.y;
  }

  // Fills a generated ray: origin P, the given direction, the type, the
  // incoming ray's time; then either differentials or none, then the cleared
  // tracer pair. The auxiliary directions come from
  // auxiliary(normal change, incoming direction change), called for x then
  // y with Nx = spread m_dpdx_unit, Dx = rx_direction - I (and likewise y).
  template <typename Auxiliary>
  static void create_ray(G const& g, GMathVec3<double> const& direction, GMathRay::Type const& type,
                         double const& spread, GMathRay& ray, Auxiliary const& auxiliary) {
    GMathRay const& incoming = g.m_incoming_ray;
    ray.m_origin = g.m_position;
    ray.set_direction(direction);
    ray.m_type = type;
    ray.m_time = incoming.m_time;
    if (incoming.m_has_differentials) {
      GMathRayDifferential differential;
      GMathVec3<double> const nx = g.m_dpdx_unit * spread;
      GMathVec3<double> const ny = g.m_dpdy_unit * spread;
      GMathVec3<double> const dx = incoming.m_differential.m_rx_direction - incoming.m_direction;
      GMathVec3<double> const dy = incoming.m_differential.m_ry_direction - incoming.m_direction;
      differential.m_rx_origin = g.m_position + g.m_dpdx;
      differential.m_ry_origin = g.m_position + g.m_dpdy;
      differential.m_rx_direction = auxiliary(nx, dx);
      differential.m_ry_direction = auxiliary(ny, dy);
      ray.set_differentials(differential);
    } else {
      G::clear_differentials(ray);
    }
    G::clear_aux_cleared(ray);
  }

  // The callbacks both generators register: G::create_ray(sample, ray)
  // returns whether it wrote a ray (refraction rejects some samples); the
  // rays are packed, each with weight 1, and no frustum bounds the lobe.
  static bool get_ray(G const& g, GMathVec2<double> const& sample, GMathRay& ray, double* weight) {
    SAMPLING_CHECK(in_unit_square(sample),
                   "anisotropic ray generator get_ray: sample outside [0,1]^2");
    G::store_unit_weight(weight);
    return g.create_ray(sample, ray);
  }

  static unsigned int get_rays(G const& g, GMathVec2<double> const* samples,
                               unsigned int const& count, GMathRay* rays, double* weights) {
    SAMPLING_CHECK(count == 0 || (samples && rays),
                   "anisotropic ray generator get_rays: null sample or ray array");
    unsigned int produced = 0;
    for (unsigned int i = 0; i < count; ++i) {
      SAMPLING_CHECK(in_unit_square(samples[i]),
                     "anisotropic ray generator get_rays: sample outside [0,1]^2");
      produced += g.create_ray(samples[i], rays[produced]) ? 1u : 0u;
    }
    G::store_unit_weights(weights, produced);
    return produced;
  }

  static void get_frustum(G const&, GMathVec2<double> const&, GMathVec2<double> const&,
                          GMathFrustum& frustum) {
    frustum.m_plane_count = 0;
  }

 private:
  // The azimuth of a sample's u. Isotropic lobes (and exponents that are not
  // numbers) take u 2pi'. Anisotropic ones map u within its quarter turn q
  // through atan(ratio tan x), mirrored in odd quarters so that every quarter
  // runs from its start to its end.
  static double azimuth(G const& g, double const& u) {
    double const phi0 = u * k_sampling_two_pi;
    if (!(g.m_exponent_u < g.m_exponent_v || g.m_exponent_u > g.m_exponent_v))
      return phi0;
    int const q = static_cast<int>(u * 4.0);
    double const base = q * k_sampling_half_pi;
    bool const odd = (q & 1) != 0;
    double const x = odd ? base + k_sampling_half_pi - phi0 : phi0 - base;
    double const phi1 = std::atan(std::tan(x) * static_cast<double>(g.m_exponent_ratio));
    return odd ? base + k_sampling_half_pi - phi1 : phi1 + base;
  }
};
