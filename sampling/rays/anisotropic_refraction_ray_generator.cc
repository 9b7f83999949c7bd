#include "sampling/rays/anisotropic_refraction_ray_generator.h"

#include <cstddef>

#include "sampling/checks.h"
#include "sampling/rays/anisotropic_lobe.h"

namespace {

typedef AnisotropicLobe<AnisotropicRefractionRayGenerator> Lobe;

// I refracted through H: c = -(H . I), s2 = (1 - c^2) eta2 and
// T = eta I + (eta c - root) H with root = sqrt(1 - s2), or 0 when s2 >= 1
// (total internal reflection, reported by returning false).
inline bool refract(GMathVec3<double> const& incoming, GMathVec3<double> const& normal,
                    float const& eta, double& c, GMathVec3<double>& direction) {
  c = -dot(normal, incoming);
  double const s2 = (1.0 - c * c) * static_cast<double>(eta * eta);
  bool const transmits = s2 < 1.0;
  double const root = transmits ? std::sqrt(1.0 - s2) : 0.0;
  double const mu_coef = static_cast<double>(eta) * c - root;
  direction = incoming * eta + normal * mu_coef;
  return transmits;
}

// The side tests of a sampled normal: it faces the incoming ray and the
// transmitted direction does not leave by the near side of Ng (a dot
// product that is not a number counts as the far side).
inline bool enters(double const& c, GMathVec3<double> const& direction,
                   GMathVec3<double> const& geometric_normal) {
  return c > 0.0 && !(dot(direction, geometric_normal) >= 0.0);
}

}  // namespace

AnisotropicRefractionRayGenerator::AnisotropicRefractionRayGenerator() {
  set_callbacks<AnisotropicRefractionRayGenerator, &Lobe::get_ray, &Lobe::get_rays,
                &Lobe::get_frustum>();
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
  static_assert(offsetof(AnisotropicRefractionRayGenerator, m_incoming_ray) == 24,
                "the incoming ray follows the callbacks");
  static_assert(offsetof(AnisotropicRefractionRayGenerator, m_tangent) == 264, "frame");
  static_assert(offsetof(AnisotropicRefractionRayGenerator, m_dpdy_unit) == 456, "surface");
  static_assert(offsetof(AnisotropicRefractionRayGenerator, m_eta) == 480, "eta first");
  static_assert(offsetof(AnisotropicRefractionRayGenerator, m_exponent_u) == 484, "exponents");
  static_assert(offsetof(AnisotropicRefractionRayGenerator, m_spread_scale_min) == 508,
                "spread scales last");
#pragma GCC diagnostic pop
}

void AnisotropicRefractionRayGenerator::init(
    GMathRay const& incoming_ray, GMathVec3<double> const& position,
    GMathMatrix3x3<double> const& shading, GMathVec3<double> const& geometric_normal,
    GeometryDifferential const& differential, float const& nu, float const& nv,
    GMathVec2<float> const& direction, float const& eta, float const& spread_reduction_x,
    float const& spread_reduction_y) {
  m_eta = eta;
  Lobe::init(*this, incoming_ray, position, shading, geometric_normal, differential, nu, nv,
             direction, spread_reduction_x, spread_reduction_y);
}

bool AnisotropicRefractionRayGenerator::compute_ray(GMathVec3<double> const& normal,
                                                    GMathRay& ray) const {
  SAMPLING_CHECK(std::fabs(dot(normal, normal) - 1.0) <= 1e-3,
                 "AnisotropicRefractionRayGenerator::compute_ray: normal not of unit length");
  SAMPLING_CHECK(Lobe::global_to_local(*this, normal).z > -1.0,
                 "AnisotropicRefractionRayGenerator::compute_ray: normal opposite to the shading "
                 "normal");
  double c;
  GMathVec3<double> direction;
  if (!refract(m_incoming_ray.m_direction, normal, m_eta, c, direction))
    return false;
  create_ray(direction, normal, Lobe::spread_of_normal(*this, normal), ray);
  return true;
}

bool AnisotropicRefractionRayGenerator::create_ray(GMathVec2<double> const& sample,
                                                   GMathRay& ray) const {
  GMathVec3<double> local;
  double spread;
  Lobe::compute_local_normal(*this, sample, local, spread);
  GMathVec3<double> normal = Lobe::local_to_global(*this, local);
  double c;
  GMathVec3<double> direction;
  refract(m_incoming_ray.m_direction, normal, m_eta, c, direction);
  if (!enters(c, direction, m_geometric_normal)) {
    Lobe::turn_half(local);
    normal = Lobe::local_to_global(*this, local);
    refract(m_incoming_ray.m_direction, normal, m_eta, c, direction);
    if (!enters(c, direction, m_geometric_normal))
      return false;
  }
  create_ray(direction, normal, spread, ray);
  return true;
}

void AnisotropicRefractionRayGenerator::create_ray(GMathVec3<double> const& direction,
                                                   GMathVec3<double> const& normal,
                                                   double const& spread, GMathRay& ray) const {
  // T = eta I - mu H with mu = eta (I . H) - (H . T) = eta (I . H) + root, so
  // dT = eta dI - mu dH - dmu H, dmu = f (I . dH + H . dI),
  // f = eta - eta^2 (I . H) / (H . T).
  GMathVec3<double> const& incoming = m_incoming_ray.m_direction;
  double const eta = static_cast<double>(m_eta);
  double const eta2 = static_cast<double>(m_eta * m_eta);
  double const ih = dot(incoming, normal);
  double const ht = dot(normal, direction);
  double const mu = eta * ih - ht;
  double const f = eta - eta2 * ih / ht;
  Lobe::create_ray(*this, direction, GMathRay::k_type_refraction, spread, ray,
                   [&](GMathVec3<double> const& dn, GMathVec3<double> const& di) {
                     double const dmu = f * (dot(incoming, dn) + dot(normal, di));
                     return direction + di * m_eta - dn * mu - normal * dmu;
                   });
}

double AnisotropicRefractionRayGenerator::pdf(GMathVec3<double> const& direction) const {
  GMathVec3<double> const& incoming = m_incoming_ray.m_direction;
  GMathVec3<double> const bend = incoming * m_eta - direction;
  GMathVec3<double> half = ::safe_normalize(bend, k_ray_normalize_epsilon);
  if (dot(half, incoming) > 0.0)
    half = -half;
  double const cosine = -dot(direction, half);
  GMathVec3<double> const local = Lobe::global_to_local(*this, half);
  if (!(cosine > 0.0) || !enters(-dot(half, incoming), direction, m_geometric_normal) ||
      !(local.z > 0.0))
    return 0.0;
  GMathVec3<double> first = local;
  Lobe::turn_half(first);
  double c;
  GMathVec3<double> transmitted;
  refract(incoming, Lobe::local_to_global(*this, first), m_eta, c, transmitted);
  double const ways = enters(c, transmitted, m_geometric_normal) ? 1.0 : 2.0;
  return ways * Lobe::normal_pdf(*this, local) * cosine / dot(bend, bend);
}
