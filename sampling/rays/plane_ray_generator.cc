#include "sampling/rays/plane_ray_generator.h"

#include <cmath>

#include "sampling/rays/shape_ray_family.h"

namespace {

typedef ShapeRayFamily<PlaneRayGenerator> Family;

}  // namespace

PlaneRayGenerator::PlaneRayGenerator(GMathRay::Type const& type, double const& time)
    : m_ray_type(type),
      m_ray_time(time),
      m_ray_origin(),
      m_differential_delta_x(),
      m_differential_delta_y(),
      m_clip_normal() {
  disable_clipping();
}

void PlaneRayGenerator::init(GMathVec3<double> const& ray_origin,
                             GMathMatrix4x4<double> const& frame, double const& spread_reduction_x,
                             double const& spread_reduction_y) {
  m_ray_origin = ray_origin;
  m_frame = frame;
  Family::init_two_sided_differentials(*this, spread_reduction_x, spread_reduction_y);
}

void PlaneRayGenerator::discard_clipped_samples(GMathVec3<double> const& normal) {
  m_clip_normal = normal;
  set_callbacks<PlaneRayGenerator, &Family::get_ray_discard, &Family::get_rays_discard,
                &get_frustum_callback>();
}

void PlaneRayGenerator::disable_clipping() {
  set_callbacks<PlaneRayGenerator, &Family::get_ray, &Family::get_rays, &get_frustum_callback>();
}

inline GMathVec3<double> PlaneRayGenerator::local_point(GMathVec2<double> const& sample) const {
  return GMathVec3<double>(sample.x - 0.5, sample.y - 0.5, 0.0);
}

// The rectangle's edges are straight: the corners themselves.
inline GMathVec3<double> PlaneRayGenerator::frustum_local_point(GMathVec2<double> const& corner,
                                                                unsigned int const&) const {
  return local_point(corner);
}

// Each auxiliary ray aims at the target moved along one side.
inline void PlaneRayGenerator::aim_differentials(GMathVec3<double> const& to_sample,
                                                 GMathRayDifferential& differential) const {
  Family::aim_two_sided(*this, to_sample, differential);
}

#if defined(SAMPLING_RAY_LANES)
template <typename Build>
inline unsigned int PlaneRayGenerator::for_each_local_pair(GMathVec2<double> const* samples,
                                                           unsigned int const& count,
                                                           Build const& build) const {
  using namespace ray_lanes;
  return for_each_sample_pair(samples, count,
                              [&](unsigned int const& first, Lanes const& u, Lanes const& v) {
                                build(first, Vec{u - splat(0.5), v - splat(0.5), splat(0.0)});
                              });
}

template <typename LaneVec>
inline void PlaneRayGenerator::aim_differential_lanes(LaneVec const& to_sample, LaneVec& rx,
                                                      LaneVec& ry) const {
  Family::aim_two_sided_lanes(*this, to_sample, rx, ry);
}
#endif

void PlaneRayGenerator::create_ray(GMathVec3<double> const& to_sample, GMathRay& ray,
                                   double& distance) const {
  Family::build_ray(*this, to_sample, ray, distance);
}

void PlaneRayGenerator::create_ray(GMathVec2<double> const& sample, GMathRay& ray,
                                   double& distance) const {
  create_ray(Family::to_sample(*this, sample), ray, distance);
}

unsigned int PlaneRayGenerator::create_ray_discard(GMathVec2<double> const& sample, GMathRay& ray,
                                                   double& distance) const {
  return Family::build_ray_discard(*this, sample, ray, distance);
}

void PlaneRayGenerator::get_frustum_callback(PlaneRayGenerator const& g,
                                             GMathVec2<double> const& corner0,
                                             GMathVec2<double> const& corner1,
                                             GMathFrustum& frustum) {
  Family::get_frustum(g, corner0, corner1, false, frustum);
}

// (u - 0.5, v - 0.5) is uniform on the local unit square, which the frame
// maps onto a parallelogram of area |X x Y|.
double PlaneRayGenerator::pdf_area() const {
  return 1.0 / Family::unit_square_area(*this);
}

double PlaneRayGenerator::pdf(GMathVec3<double> const& direction) const {
  return Family::solid_angle_pdf(*this, direction, pdf_area(), [](double x, double y) {
    return std::fabs(x) <= 0.5 && std::fabs(y) <= 0.5;
  });
}
