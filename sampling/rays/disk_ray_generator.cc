#include "sampling/rays/disk_ray_generator.h"

#include <cmath>

#include "sampling/angles.h"
#include "sampling/rays/shape_ray_family.h"
#include "sampling/warps/concentric_map.h"

namespace {

typedef ShapeRayFamily<DiskRayGenerator> Family;

}  // namespace

DiskRayGenerator::DiskRayGenerator(GMathRay::Type const& type, double const& time)
    : m_ray_type(type),
      m_ray_time(time),
      m_ray_origin(),
      m_differential_delta_x(),
      m_differential_delta_y(),
      m_clip_normal() {
  disable_clipping();
}

void DiskRayGenerator::init(GMathVec3<double> const& ray_origin,
                            GMathMatrix4x4<double> const& frame, double const& radius,
                            double const& spread_reduction_x, double const& spread_reduction_y) {
  m_ray_origin = ray_origin;
  m_frame = frame;
  m_radius = radius;
  if (Family::init_two_sided_differentials(*this, spread_reduction_x, spread_reduction_y)) {
    // Fractions of the diameter, not of the radius.
    double const diameter = radius * 2.0;
    m_differential_delta_x = m_differential_delta_x * diameter;
    m_differential_delta_y = m_differential_delta_y * diameter;
  }
}

void DiskRayGenerator::discard_clipped_samples(GMathVec3<double> const& normal) {
  m_clip_normal = normal;
  set_callbacks<DiskRayGenerator, &Family::get_ray_discard, &Family::get_rays_discard,
                &get_frustum_callback>();
}

void DiskRayGenerator::disable_clipping() {
  set_callbacks<DiskRayGenerator, &Family::get_ray, &Family::get_rays, &get_frustum_callback>();
}

// The concentric map's point, each component scaled by the radius (z too, so
// a negative radius gives -0.0 there).
inline GMathVec3<double> DiskRayGenerator::local_point(GMathVec2<double> const& sample) const {
  double r, phi;
  concentric_map(sample.x, sample.y, r, phi);
  double c, s;
  sampling::warps::detail::cos_sin(phi, c, s);
  return GMathVec3<double>(c * r * m_radius, s * r * m_radius, 0.0 * m_radius);
}

// The corners' own points; the concentric map bends the box edges, which the
// frustum's widening covers.
inline GMathVec3<double> DiskRayGenerator::frustum_local_point(GMathVec2<double> const& corner,
                                                               unsigned int const&) const {
  return local_point(corner);
}

// Each auxiliary ray aims at the target moved along one local axis.
inline void DiskRayGenerator::aim_differentials(GMathVec3<double> const& to_sample,
                                                GMathRayDifferential& differential) const {
  Family::aim_two_sided(*this, to_sample, differential);
}

#if defined(SAMPLING_RAY_LANES)
// local_point two at a time: the concentric map in lanes, the sine and
// cosine per sample (ray_lanes::for_each_pair).
template <typename Build>
inline unsigned int DiskRayGenerator::for_each_local_pair(GMathVec2<double> const* samples,
                                                          unsigned int const& count,
                                                          Build const& build) const {
  using namespace ray_lanes;
  Lanes const scale = splat(m_radius);
  return for_each_pair(
      samples, count,
      [](Lanes const& u, Lanes const& v, Lanes& r) {
        Lanes angle;
        ray_lanes::to_unit_disk(u, v, r, angle);
        return angle;
      },
      [&](unsigned int const& first, Lanes const& r, Lanes const& c, Lanes const& s) {
        build(first, Vec{c * r * scale, s * r * scale, splat(0.0) * scale});
      });
}

template <typename LaneVec>
inline void DiskRayGenerator::aim_differential_lanes(LaneVec const& to_sample, LaneVec& rx,
                                                     LaneVec& ry) const {
  Family::aim_two_sided_lanes(*this, to_sample, rx, ry);
}
#endif

void DiskRayGenerator::create_ray(GMathVec3<double> const& to_sample, GMathRay& ray,
                                  double& distance) const {
  Family::build_ray(*this, to_sample, ray, distance);
}

void DiskRayGenerator::create_ray(GMathVec2<double> const& sample, GMathRay& ray,
                                  double& distance) const {
  create_ray(Family::to_sample(*this, sample), ray, distance);
}

unsigned int DiskRayGenerator::create_ray_discard(GMathVec2<double> const& sample, GMathRay& ray,
                                                  double& distance) const {
  return Family::build_ray_discard(*this, sample, ray, distance);
}

void DiskRayGenerator::get_frustum_callback(DiskRayGenerator const& g,
                                            GMathVec2<double> const& corner0,
                                            GMathVec2<double> const& corner1,
                                            GMathFrustum& frustum) {
  Family::get_frustum(g, corner0, corner1, true, frustum);
}

// The concentric map has density 1 / pi' on the unit disk (its angles span
// 2pi'); the radius and the frame scale areas by radius^2 |X x Y|.
double DiskRayGenerator::pdf_area() const {
  return 1.0 / (k_sampling_pi * m_radius * m_radius * Family::unit_square_area(*this));
}

double DiskRayGenerator::pdf(GMathVec3<double> const& direction) const {
  double const r2 = m_radius * m_radius;
  return Family::solid_angle_pdf(*this, direction, pdf_area(),
                                 [&](double x, double y) { return x * x + y * y <= r2; });
}
