#include "sampling/rays/line_ray_generator.h"

#include "sampling/rays/shape_ray_family.h"

namespace {

typedef ShapeRayFamily<LineRayGenerator> Family;

// Half-width, in local units across the segment, of the strip that stands in
// for the segment in the frustum, so that no two corner vectors coincide.
constexpr double k_line_frustum_half_width = 0.01;

}  // namespace

LineRayGenerator::LineRayGenerator(GMathRay::Type const& type, double const& time)
    : m_ray_type(type), m_ray_time(time), m_ray_origin(), m_differential_delta(), m_clip_normal() {
  disable_clipping();
}

void LineRayGenerator::init(GMathVec3<double> const& ray_origin,
                            GMathMatrix4x4<double> const& frame, double const& spread_reduction) {
  m_ray_origin = ray_origin;
  m_frame = frame;
  double const s = 1.0 - clamp_spread_reduction(spread_reduction);
  m_differentials_enabled = s > 0.0;
  if (m_differentials_enabled)
    m_differential_delta = m_frame.transform_vector(GMathVec3<double>(s, 0.0, 0.0));
}

void LineRayGenerator::discard_clipped_samples(GMathVec3<double> const& normal) {
  m_clip_normal = normal;
  set_callbacks<LineRayGenerator, &Family::get_ray_discard, &Family::get_rays_discard,
                &get_frustum_callback>();
}

void LineRayGenerator::disable_clipping() {
  set_callbacks<LineRayGenerator, &Family::get_ray, &Family::get_rays, &get_frustum_callback>();
}

inline GMathVec3<double> LineRayGenerator::local_point(GMathVec2<double> const& sample) const {
  return GMathVec3<double>(sample.x - 0.5, 0.0, 0.0);
}

// Corners 0 and 1 on the low side of the strip, 2 and 3 on the high side.
inline GMathVec3<double> LineRayGenerator::frustum_local_point(GMathVec2<double> const& corner,
                                                               unsigned int const& k) const {
  return GMathVec3<double>(corner.x - 0.5,
                           k < 2 ? -k_line_frustum_half_width : k_line_frustum_half_width, 0.0);
}

// x: the target moved along the segment; y: to_sample plus delta x
// to_sample, the main ray turned about the segment's axis.
inline void LineRayGenerator::aim_differentials(GMathVec3<double> const& to_sample,
                                                GMathRayDifferential& differential) const {
  differential.m_rx_direction = aim_displaced(to_sample, m_differential_delta);
  differential.m_ry_direction = aim_displaced(to_sample, cross(m_differential_delta, to_sample));
}

#if defined(SAMPLING_RAY_LANES)
template <typename Build>
inline unsigned int LineRayGenerator::for_each_local_pair(GMathVec2<double> const* samples,
                                                          unsigned int const& count,
                                                          Build const& build) const {
  using namespace ray_lanes;
  return for_each_sample_pair(samples, count,
                              [&](unsigned int const& first, Lanes const& u, Lanes const&) {
                                build(first, Vec{u - splat(0.5), splat(0.0), splat(0.0)});
                              });
}

template <typename LaneVec>
inline void LineRayGenerator::aim_differential_lanes(LaneVec const& to_sample, LaneVec& rx,
                                                     LaneVec& ry) const {
  ray_lanes::Vec const delta = ray_lanes::splat(m_differential_delta);
  rx = ray_lanes::safe_normalize(to_sample + delta, k_ray_normalize_epsilon);
  ry = ray_lanes::safe_normalize(to_sample + ray_lanes::cross(delta, to_sample),
                                 k_ray_normalize_epsilon);
}
#endif

void LineRayGenerator::create_ray(GMathVec3<double> const& to_sample, GMathRay& ray,
                                  double& distance) const {
  Family::build_ray(*this, to_sample, ray, distance);
}

void LineRayGenerator::create_ray(GMathVec2<double> const& sample, GMathRay& ray,
                                  double& distance) const {
  create_ray(Family::to_sample(*this, sample), ray, distance);
}

unsigned int LineRayGenerator::create_ray_discard(GMathVec2<double> const& sample, GMathRay& ray,
                                                  double& distance) const {
  return Family::build_ray_discard(*this, sample, ray, distance);
}

void LineRayGenerator::get_frustum_callback(LineRayGenerator const& g,
                                            GMathVec2<double> const& corner0,
                                            GMathVec2<double> const& corner1,
                                            GMathFrustum& frustum) {
  Family::get_frustum(g, corner0, corner1, false, frustum);
}

// u - 0.5 is uniform on the local segment of length 1, which the frame
// stretches to its world length.
double LineRayGenerator::pdf_length() const {
  return 1.0 / m_frame.transform_vector(GMathVec3<double>(1.0, 0.0, 0.0)).length();
}

double LineRayGenerator::pdf(GMathVec3<double> const&) const {
  return 0.0;
}
