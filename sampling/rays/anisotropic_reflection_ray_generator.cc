#include "sampling/rays/anisotropic_reflection_ray_generator.h"

#include <cstddef>

#include "sampling/checks.h"
#include "sampling/rays/anisotropic_lobe.h"

namespace {

typedef AnisotropicLobe<AnisotropicReflectionRayGenerator> Lobe;

// R = I + (2d) H with d = -(H . I): I mirrored about H.
inline GMathVec3<double> mirror(GMathVec3<double> const& incoming, GMathVec3<double> const& normal,
                                double const& d) {
  return incoming + normal * (2.0 * d);
}

}  // namespace

AnisotropicReflectionRayGenerator::AnisotropicReflectionRayGenerator() {
  set_callbacks<AnisotropicReflectionRayGenerator, &Lobe::get_ray, &Lobe::get_rays,
                &Lobe::get_frustum>();
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
  static_assert(offsetof(AnisotropicReflectionRayGenerator, m_incoming_ray) == 24,
                "the incoming ray follows the callbacks");
  static_assert(offsetof(AnisotropicReflectionRayGenerator, m_tangent) == 264, "frame");
  static_assert(offsetof(AnisotropicReflectionRayGenerator, m_dpdy_unit) == 456, "surface");
  static_assert(offsetof(AnisotropicReflectionRayGenerator, m_exponent_u) == 480, "exponents");
  static_assert(offsetof(AnisotropicReflectionRayGenerator, m_spread_scale_min) == 504,
                "spread scales last");
#pragma GCC diagnostic pop
}

void AnisotropicReflectionRayGenerator::init(
    GMathRay const& incoming_ray, GMathVec3<double> const& position,
    GMathMatrix3x3<double> const& shading, GMathVec3<double> const& geometric_normal,
    GeometryDifferential const& differential, float const& nu, float const& nv,
    GMathVec2<float> const& direction, float const& spread_reduction_x,
    float const& spread_reduction_y) {
  Lobe::init(*this, incoming_ray, position, shading, geometric_normal, differential, nu, nv,
             direction, spread_reduction_x, spread_reduction_y);
}

void AnisotropicReflectionRayGenerator::compute_ray(GMathVec3<double> const& normal,
                                                    GMathRay& ray) const {
  SAMPLING_CHECK(std::fabs(dot(normal, normal) - 1.0) <= 1e-3,
                 "AnisotropicReflectionRayGenerator::compute_ray: normal not of unit length");
  SAMPLING_CHECK(Lobe::global_to_local(*this, normal).z > -1.0,
                 "AnisotropicReflectionRayGenerator::compute_ray: normal opposite to the shading "
                 "normal");
  double const spread = Lobe::spread_of_normal(*this, normal);
  GMathVec3<double> const& incoming = m_incoming_ray.m_direction;
  create_ray(mirror(incoming, normal, -dot(normal, incoming)), normal, spread, ray);
}

bool AnisotropicReflectionRayGenerator::create_ray(GMathVec2<double> const& sample,
                                                   GMathRay& ray) const {
  GMathVec3<double> local;
  double spread;
  Lobe::compute_local_normal(*this, sample, local, spread);
  GMathVec3<double> normal = Lobe::local_to_global(*this, local);
  GMathVec3<double> const& incoming = m_incoming_ray.m_direction;
  double d = -dot(normal, incoming);
  GMathVec3<double> direction = mirror(incoming, normal, d);
  if (!(d > 0.0 && dot(direction, m_geometric_normal) > 0.0)) {
    Lobe::turn_half(local);
    normal = Lobe::local_to_global(*this, local);
    d = -dot(normal, incoming);
    direction = mirror(incoming, normal, d);
  }
  create_ray(direction, normal, spread, ray);
  return true;
}

void AnisotropicReflectionRayGenerator::create_ray(GMathVec3<double> const& direction,
                                                   GMathVec3<double> const& normal,
                                                   double const& spread, GMathRay& ray) const {
  // R = I - 2 (I . H) H, so dR = dI - 2 ((I . H) dH + (I . dH + H . dI) H).
  GMathVec3<double> const& incoming = m_incoming_ray.m_direction;
  double const ih = dot(incoming, normal);
  Lobe::create_ray(*this, direction, GMathRay::k_type_reflection, spread, ray,
                   [&](GMathVec3<double> const& dn, GMathVec3<double> const& di) {
                     return direction + di -
                            (dn * ih + normal * (dot(incoming, dn) + dot(normal, di))) * 2.0;
                   });
}

double AnisotropicReflectionRayGenerator::pdf(GMathVec3<double> const& direction) const {
  GMathVec3<double> const& incoming = m_incoming_ray.m_direction;
  GMathVec3<double> const half = ::safe_normalize(direction - incoming, k_ray_normalize_epsilon);
  double const jacobian = 4.0 * std::fabs(dot(direction, half));
  if (!(jacobian > 0.0))
    return 0.0;
  GMathVec3<double> local = Lobe::global_to_local(*this, half);
  double ways = local.z > 0.0 && dot(direction, m_geometric_normal) > 0.0 ? 1.0 : 0.0;
  if (!(local.z > 0.0))
    local = -local;
  GMathVec3<double> first = local;
  Lobe::turn_half(first);
  GMathVec3<double> const normal = Lobe::local_to_global(*this, first);
  double const d = -dot(normal, incoming);
  if (!(d > 0.0 && dot(mirror(incoming, normal, d), m_geometric_normal) > 0.0))
    ways += 1.0;
  return ways * Lobe::normal_pdf(*this, local) / jacobian;
}
