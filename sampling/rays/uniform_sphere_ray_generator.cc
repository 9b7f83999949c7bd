#include "sampling/rays/uniform_sphere_ray_generator.h"

#include <cmath>

#include "platform/math/gmath_ray_differential.h"
#include "sampling/angles.h"
#include "sampling/checks.h"
#include "sampling/rays/ray_lanes.h"
#include "sampling/rays/shape_ray_math.h"
#include "sampling/sampling.h"
#include "sampling/warps/polar_warp.h"

// The fields every ray repeats, held in locals: a loop storing rays through
// a GMathRay pointer could alias the record's fields, which would otherwise
// force a reload of each per ray.
struct UniformSphereRayGenerator::RayConstants {
  explicit RayConstants(UniformSphereRayGenerator const& g)
      : origin(g.m_ray_origin),
        type(g.m_ray_type),
        time(g.m_ray_time),
        cos_x(g.m_cos[0]),
        sin_x(g.m_sin[0]),
        cos_y(g.m_cos[1]),
        sin_y(g.m_sin[1]) {}

  // The ray along the unit `direction` with its two auxiliary rays turned
  // towards the unit `tangent` and `bitangent`.
  void build(GMathVec3<double> const& direction, GMathVec3<double> const& tangent,
             GMathVec3<double> const& bitangent, GMathRay& ray) const {
    ray.m_origin = origin;
    ray.set_direction(direction);
    ray.m_type = type;
    ray.m_time = time;
    // (direction, tangent, bitangent) is orthonormal, so the turned
    // directions are unit vectors as they stand.
    GMathRayDifferential differential;
    differential.m_rx_origin = origin;
    differential.m_ry_origin = origin;
    differential.m_rx_direction = direction * cos_x + tangent * sin_x;
    differential.m_ry_direction = direction * cos_y + bitangent * sin_y;
    ray.set_differentials(differential);
    clear_aux_cleared(ray);
  }

  GMathVec3<double> const origin;
  GMathRay::Type const type;
  double const time;
  double const cos_x, sin_x, cos_y, sin_y;
};

UniformSphereRayGenerator::UniformSphereRayGenerator(GMathRay::Type const& type, double const& time)
    : m_ray_type(type), m_ray_time(time), m_ray_origin() {
  set_callbacks<UniformSphereRayGenerator, &get_ray_callback, &get_rays_callback,
                &get_frustum_callback>();
}

void UniformSphereRayGenerator::init(GMathVec3<double> const& centre,
                                     double const& spread_reduction_x,
                                     double const& spread_reduction_y) {
  m_ray_origin = centre;
  double const a = (1.0 - spread_reduction_x) * k_sampling_two_pi;
  double const b = (1.0 - spread_reduction_y) * k_sampling_pi;
  // (cos, sin) of atan(a) and atan(b), without the trigonometry.
  m_cos[0] = 1.0 / std::sqrt(a * a + 1.0);
  m_sin[0] = m_cos[0] * a;
  m_cos[1] = 1.0 / std::sqrt(b * b + 1.0);
  m_sin[1] = m_cos[1] * b;
}

void UniformSphereRayGenerator::create_ray(GMathVec2<double> const& sample, GMathRay& ray) const {
  GMathVec3<double> direction, tangent, bitangent;
  sphere_uniform_frame(sample.x, sample.y, direction, tangent, bitangent);
  create_ray(direction, tangent, bitangent, ray);
}

void UniformSphereRayGenerator::create_ray(GMathVec3<double> const& direction,
                                           GMathVec3<double> const& tangent,
                                           GMathVec3<double> const& bitangent,
                                           GMathRay& ray) const {
  RayConstants(*this).build(direction, tangent, bitangent, ray);
}

bool UniformSphereRayGenerator::get_ray_callback(UniformSphereRayGenerator const& g,
                                                 GMathVec2<double> const& sample, GMathRay& ray,
                                                 double* weight) {
  g.create_ray(sample, ray);
  store_unit_weight(weight);
  return true;
}

unsigned int UniformSphereRayGenerator::get_rays_callback(UniformSphereRayGenerator const& g,
                                                          GMathVec2<double> const* samples,
                                                          unsigned int const& count, GMathRay* rays,
                                                          double* weights) {
  SAMPLING_CHECK(count == 0 || (samples && rays),
                 "UniformSphereRayGenerator get_rays: null sample or ray array");
  // The warp runs inline (polar_warp.h), the same arithmetic as
  // Sampling::sphere_uniform without a call per ray; the record's fields are
  // read once. Two rays at a time in lanes (ray_lanes.h): z, the projected
  // radius, the frame, the differential directions and the derived ray
  // fields; the sine and cosine of the azimuth per ray.
  RayConstants const constants(g);
  unsigned int i = 0;
#if defined(SAMPLING_RAY_LANES)
  using namespace ray_lanes;
  SharedFields const shared = shared_fields(constants.origin, constants.type, constants.time, true);
  Lanes const cos_x = splat(constants.cos_x), sin_x = splat(constants.sin_x);
  Lanes const cos_y = splat(constants.cos_y), sin_y = splat(constants.sin_y);
  i = for_each_pair(
      samples, count,
      [](Lanes const& u, Lanes const& v, Lanes& kept_u) {
        kept_u = u;
        return splat(k_sampling_two_pi) * v;
      },
      [&](unsigned int const& first, Lanes const& u, Lanes const& cos_phi, Lanes const& sin_phi) {
        // sphere_uniform's z and projected radius, then polar_frame.
        Lanes const z = splat(1.0) - u * splat(2.0);
        Lanes const rho = _mm_sqrt_pd(splat(1.0) - z * z);
        Vec const direction{cos_phi * rho, sin_phi * rho, z};
        Vec const tangent{negate(sin_phi), cos_phi, splat(0.0)};
        Vec const bitangent{negate(z) * cos_phi, negate(z) * sin_phi, rho};
        write_rays(shared, direction, combine(direction, cos_x, tangent, sin_x),
                   combine(direction, cos_y, bitangent, sin_y), rays + first, rays + first + 1);
      });
#endif
  for (; i < count; ++i) {
    GMathVec3<double> direction, tangent, bitangent;
    sphere_uniform_frame(samples[i].x, samples[i].y, direction, tangent, bitangent);
    constants.build(direction, tangent, bitangent, rays[i]);
  }
  store_unit_weights(weights, count);
  return count;
}

void UniformSphereRayGenerator::get_frustum_callback(UniformSphereRayGenerator const& g,
                                                     GMathVec2<double> const& corner0,
                                                     GMathVec2<double> const& corner1,
                                                     GMathFrustum& frustum) {
  // The planes point inwards only when u and v run the same way between the
  // corners; nothing turns them afterwards.
  SAMPLING_CHECK(corner0.x <= corner1.x && corner0.y <= corner1.y,
                 "UniformSphereRayGenerator::get_frustum: corner0 is not the low corner");
  GMathVec3<double> c[4];
  for (unsigned int k = 0; k < 4; ++k) {
    GMathVec2<double> const corner = box_corner(corner0, corner1, k);
    Sampling::sphere_uniform(corner.x, corner.y, c[k]);
  }
  fill_shape_frustum(c, false, true, g.m_ray_origin, frustum);
}

// z = 1 - 2u is uniform on [-1, 1] (density 1/2) and the azimuth 2pi' v on
// [0, 2pi') (density 1 / (2pi')); dz dphi is the solid angle.
double UniformSphereRayGenerator::pdf(GMathVec3<double> const&) const {
  return 1.0 / (2.0 * k_sampling_two_pi);
}
