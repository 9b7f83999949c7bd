// get_rays of the anisotropic reflection and refraction generators for 1024
// samples, isotropic and anisotropic exponents, with and without incoming
// differentials and weights, beside a plain reference written from the
// lobe's formulas (rays and weights checked bit for bit before timing) and
// the store bound of the rays and weights written (bench_support.h).

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "bench/bench_support.h"
#include "platform/geometry/geometry_differential.h"
#include "sampling/ray_generators.h"

namespace {

constexpr unsigned int k_batch = 1024;

// The shading point of every benchmark: N = z, a grazing-ish incoming ray,
// incoming and surface differentials when asked.
struct Scene {
  GMathRay incoming;
  GMathVec3<double> position;
  GMathMatrix3x3<double> shading;
  GMathVec3<double> geometric_normal;
  GeometryDifferential differential;
};

Scene make_scene(bool differentials) {
  Scene s;
  GMathVec3<double> const i(0.3, -0.2, -1.0);
  GMathVec3<double> const direction = i * (1.0 / i.length());
  s.position = GMathVec3<double>(1.0, 2.0, 0.0);
  s.incoming = GMathRay(s.position - direction * 4.0, direction, GMathRay::k_type_camera, 0.5);
  s.geometric_normal = GMathVec3<double>(0.0, 0.0, 1.0);
  if (differentials) {
    GMathRayDifferential d;
    d.m_rx_origin = s.incoming.m_origin;
    d.m_ry_origin = s.incoming.m_origin;
    d.m_rx_direction = direction + GMathVec3<double>(0.001, 0.0, 0.0);
    d.m_ry_direction = direction + GMathVec3<double>(0.0, 0.001, 0.0);
    s.incoming.set_differentials(d);
    s.differential = GeometryDifferential(GMathVec3<double>(0.004, 0.0, 0.0),
                                          GMathVec3<double>(0.0, 0.004, 0.0));
  }
  return s;
}

using Vec3 = GMathVec3<double>;

// The Ashikhmin-Shirley half-vector lobe about the shading frame (T, B, N),
// then the mirror or the refraction (eta) of the incoming direction I about
// the sampled normal H, turned by half a turn about N when it lands on the
// wrong side; the auxiliary directions follow the normal's change (the unit
// surface derivatives times the spread tangent) and the incoming one.
struct AnisotropicReference {
  bool refraction;
  float eta, nu, nv, ratio, n_max;
  GMathRay incoming;
  Vec3 position, geometric_normal, t, b, n, dpdx, dpdy, dpdx_unit, dpdy_unit;

  AnisotropicReference(Scene const& s, float const& u_exponent, float const& v_exponent,
                       bool const& refracts, float const& refraction_eta)
      : refraction(refracts),
        eta(refraction_eta),
        nu(u_exponent),
        nv(v_exponent),
        ratio(std::sqrt((u_exponent + 1.0f) / (v_exponent + 1.0f))),
        n_max(u_exponent > v_exponent ? u_exponent : v_exponent),
        incoming(s.incoming),
        position(s.position),
        geometric_normal(s.geometric_normal) {
    n = s.shading.column(2);
    t = s.shading.column(0) * 1.0 + s.shading.column(1) * 0.0;  // tangent direction (1, 0)
    b = cross(n, t);
    dpdx = s.differential.m_dpdx;
    dpdy = s.differential.m_dpdy;
    dpdx_unit = bench::plain_normalize(dpdx);
    dpdy_unit = bench::plain_normalize(dpdy);
  }

  // Azimuth of u: u 2pi for equal exponents, else atan(ratio tan x) within
  // each quarter turn, mirrored in odd quarters.
  double azimuth(double const& u) const {
    double const phi0 = u * bench::k_plain_two_pi;
    if (nu == nv)
      return phi0;
    int const q = static_cast<int>(u * 4.0);
    double const base = q * bench::k_plain_half_pi;
    bool const odd = (q & 1) != 0;
    double const x = odd ? base + bench::k_plain_half_pi - phi0 : phi0 - base;
    double const phi1 = std::atan(std::tan(x) * static_cast<double>(ratio));
    return odd ? base + bench::k_plain_half_pi - phi1 : phi1 + base;
  }

  // Local normal of (u, v): cos theta = v^e, e = 1 / (nu cos^2 + nv sin^2
  // + 1); the spread tangent at the level p = 1 - v / 2pi in [0.1, 0.9].
  void local_normal(double const& u, double const& v, Vec3& local, double& spread) const {
    double e, p;
    if (v >= 1.0) {
      local = Vec3(0.0, 0.0, 1.0);
      e = 1.0 / static_cast<double>(n_max + 1.0f);
      p = 0.9;
    } else {
      double const phi = azimuth(u);
      double const sp = std::sin(phi), cp = std::cos(phi);
      e = 1.0 / (static_cast<double>(nv) * (sp * sp) + static_cast<double>(nu) * (cp * cp) + 1.0);
      double const ct = std::pow(v, e), st = std::sqrt(1.0 - ct * ct);
      local = Vec3(st * cp, st * sp, ct);
      p = 1.0 - v * (1.0 / bench::k_plain_two_pi);
      p = p <= 0.1 ? 0.1 : (p >= 0.9 ? 0.9 : p);
    }
    double const level = std::pow(p, e);
    spread = std::sqrt(1.0 - level * level) / level;
  }

  // The scattered direction about h; false when it is on the wrong side
  // (or, refracting, totally reflected).
  bool scatter(Vec3 const& h, Vec3& direction) const {
    Vec3 const& i = incoming.m_direction;
    double const c = -bench::plain_dot(h, i);
    if (!refraction) {
      direction = i + h * (2.0 * c);
      return c > 0.0 && bench::plain_dot(direction, geometric_normal) > 0.0;
    }
    double const s2 = (1.0 - c * c) * static_cast<double>(eta * eta);
    double const root = s2 < 1.0 ? std::sqrt(1.0 - s2) : 0.0;
    direction = i * static_cast<double>(eta) + h * (static_cast<double>(eta) * c - root);
    return c > 0.0 && !(bench::plain_dot(direction, geometric_normal) >= 0.0);
  }

  // Auxiliary direction for the normal change dn and incoming change di.
  Vec3 auxiliary(Vec3 const& direction, Vec3 const& h, Vec3 const& dn, Vec3 const& di) const {
    Vec3 const& i = incoming.m_direction;
    double const ih = bench::plain_dot(i, h);
    if (!refraction)
      return direction + di -
             (dn * ih + h * (bench::plain_dot(i, dn) + bench::plain_dot(h, di))) * 2.0;
    double const e = static_cast<double>(eta), e2 = static_cast<double>(eta * eta);
    double const ht = bench::plain_dot(h, direction);
    double const mu = e * ih - ht, f = e - e2 * ih / ht;
    double const dmu = f * (bench::plain_dot(i, dn) + bench::plain_dot(h, di));
    return direction + di * e - dn * mu - h * dmu;
  }

  unsigned int operator()(GMathVec2<double> const* samples, unsigned int const& count,
                          GMathRay* rays, double* weights) const {
    unsigned int written = 0;
    for (unsigned int k = 0; k < count; ++k) {
      Vec3 local, direction;
      double spread;
      local_normal(samples[k].x, samples[k].y, local, spread);
      Vec3 h = t * local.x + b * local.y + n * local.z;
      if (!scatter(h, direction)) {
        local.x = -local.x;
        local.y = -local.y;
        h = t * local.x + b * local.y + n * local.z;
        if (!scatter(h, direction) && refraction)
          continue;
      }
      GMathRay& ray = rays[written];
      ray.m_origin = position;
      ray.set_direction(direction);
      ray.m_type = refraction ? GMathRay::k_type_refraction : GMathRay::k_type_reflection;
      ray.m_time = incoming.m_time;
      if (incoming.m_has_differentials) {
        GMathRayDifferential d;
        d.m_rx_origin = position + dpdx;
        d.m_ry_origin = position + dpdy;
        d.m_rx_direction = auxiliary(direction, h, dpdx_unit * spread,
                                     incoming.m_differential.m_rx_direction - incoming.m_direction);
        d.m_ry_direction = auxiliary(direction, h, dpdy_unit * spread,
                                     incoming.m_differential.m_ry_direction - incoming.m_direction);
        ray.set_differentials(d);
      } else {
        ray.m_has_differentials = false;
        ray.m_aux[0] = ray.m_aux[1] = 0.0;
      }
      ray.m_aux_cleared[0] = ray.m_aux_cleared[1] = 0.0;
      if (weights)
        weights[written] = 1.0;
      ++written;
    }
    return written;
  }
};

// range(0) selects the exponents, (20, 20) or (100, 8); range(1) incoming
// differentials; range(2) the weight array. `init` prepares the generator
// from the scene and exponents.
template <typename G, typename Init>
void run_generator(benchmark::State& state, Init const& init, bool const& refracts) {
  Scene const s = make_scene(state.range(1) != 0);
  bool const anisotropic = state.range(0) != 0;
  G generator;
  init(generator, s, anisotropic ? 100.0f : 20.0f, anisotropic ? 8.0f : 20.0f);
  static std::vector<GMathVec2<double>> const samples = bench::unit_samples(k_batch, 99);
  bench::run_generator(state, generator, samples, state.range(2) != 0,
                       AnisotropicReference(s, anisotropic ? 100.0f : 20.0f,
                                            anisotropic ? 8.0f : 20.0f, refracts, 1.5f));
}

void BM_AnisotropicReflectionGetRays(benchmark::State& state) {
  run_generator<AnisotropicReflectionRayGenerator>(
      state,
      [](AnisotropicReflectionRayGenerator& g, Scene const& s, float nu, float nv) {
        g.init(s.incoming, s.position, s.shading, s.geometric_normal, s.differential, nu, nv,
               GMathVec2<float>(1.0f, 0.0f), 0.0f, 0.0f);
      },
      false);
}

// Refracting with eta 1.5; some samples give no ray ("produced").
void BM_AnisotropicRefractionGetRays(benchmark::State& state) {
  run_generator<AnisotropicRefractionRayGenerator>(
      state,
      [](AnisotropicRefractionRayGenerator& g, Scene const& s, float nu, float nv) {
        g.init(s.incoming, s.position, s.shading, s.geometric_normal, s.differential, nu, nv,
               GMathVec2<float>(1.0f, 0.0f), 1.5f, 0.0f, 0.0f);
      },
      true);
}

}  // namespace

BENCHMARK(BM_AnisotropicReflectionGetRays)
    ->ArgNames({"aniso", "diff", "weights"})
    ->ArgsProduct({{0, 1}, {0, 1}, {0, 1}});
BENCHMARK(BM_AnisotropicRefractionGetRays)
    ->ArgNames({"aniso", "diff", "weights"})
    ->ArgsProduct({{0, 1}, {0, 1}, {0, 1}});
