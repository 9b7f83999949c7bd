#include "sampling/rays/cosine_weighted_hemisphere_ray_generator.h"

#include <cmath>

#include "sampling/angles.h"
#include "sampling/checks.h"
#include "sampling/rays/ray_lanes.h"
#include "sampling/rays/ray_math.h"
#include "sampling/warps/concentric_map.h"

namespace {

// The clipping modes of create_rays.
constexpr int k_mode_plain = 0;
constexpr int k_mode_discard = 1;
constexpr int k_mode_project = 2;

// Fraction of each side normal's length by which it is tilted towards the
// centroid of the corner directions, turning every side plane outward.
constexpr double k_frustum_margin = 0.025;

inline void check_arrays(GMathVec2<double> const* samples, unsigned int const& count,
                         GMathRay const* rays) {
  SAMPLING_CHECK(count == 0 || (samples && rays),
                 "CosineWeightedHemisphereRayGenerator::get_rays: null sample or ray array");
  (void)samples;
  (void)count;
  (void)rays;
}

inline void check_sample(GMathVec2<double> const& sample) {
  SAMPLING_CHECK(in_unit_square(sample),
                 "CosineWeightedHemisphereRayGenerator: samples must lie in [0,1]^2");
  (void)sample;
}

// Cosine and sine of atan(t): 1 / sqrt(t^2 + 1) and that times t. Where t^2
// overflows (t infinite, from an incoming auxiliary direction perpendicular to
// the ray) the product would be 0 * inf; the limit, a quarter turn, is taken.
inline void spread_cos_sin(double const& t, double& c, double& s) {
  c = 1.0 / std::sqrt(t * t + 1.0);
  s = c == 0.0 ? std::copysign(1.0, t) : c * t;
}

// The incoming spread angle between a ray's direction and one of its
// auxiliary directions, as a tangent; the cosine is clamped to [0, 1].
inline double incoming_spread(GMathVec3<double> const& direction,
                              GMathVec3<double> const& auxiliary_direction) {
  double c = dot(direction, auxiliary_direction);
  if (c <= 0.0) {
    c = 0.0;
  } else if (c >= 1.0) {
    c = 1.0;
  }
  return std::sqrt(1.0 - c * c) / c;
}

// Length of the part of `offset` in the plane of the unit vectors t1 and t2.
inline double in_plane_length(GMathVec3<double> const& offset, GMathVec3<double> const& t1,
                              GMathVec3<double> const& t2) {
  double const a = dot(offset, t1);
  double const b = dot(offset, t2);
  return std::sqrt(a * a + b * b);
}

}  // namespace

CosineWeightedHemisphereRayGenerator::CosineWeightedHemisphereRayGenerator()
    : m_clip_normal(),
      m_angle(0.0),
      m_angle_inverse(1.0),
      m_cos{1.0, 1.0, 1.0},
      m_sin{0.0, 0.0, 0.0} {
  disable_clipping();
}

void CosineWeightedHemisphereRayGenerator::init(GMathRay const& ray, double const& angle,
                                                double const& spread_reduction_x,
                                                double const& spread_reduction_y) {
  GMathVec3<double> const& d = ray.m_direction;
  SAMPLING_CHECK(std::fabs(dot(d, d) - 1.0) <= 1e-6,
                 "CosineWeightedHemisphereRayGenerator::init: the ray direction must be a unit "
                 "vector");
  double const a = std::fabs(angle) * k_sampling_degree;
  double opening = 0.0;
  if (a > 0.0)
    opening = a >= k_sampling_pi ? k_sampling_pi : a;
  double const h = 0.5 * opening;
  // A renderer re-aims one generator at every hit with the same angle: the
  // half-angle's cosine and sine (a libm call, the largest part of init) are
  // kept from the last init of that angle. They always belong to m_angle,
  // from construction (angle 0: cosine 1, sine 0) on.
  if (opening != m_angle) {
    m_angle = opening;
    m_cos[0] = std::cos(h);
    m_sin[0] = std::sin(h);
  }
  m_angle_inverse = m_angle > 1e-8 ? 1.0 / m_angle : 1.0;

  GMathVec3<double> t1, t2;
  orthonormal_basis(d, t1, t2);
  // The columns read in place: copied into an array first, the compiler
  // reloaded pairs of them across two earlier stores, which stalls store
  // forwarding on every init.
  GMathVec3<double> const* const columns[3] = {&t1, &t2, &d};
  for (int c = 0; c < 3; ++c) {
    for (int r = 0; r < 3; ++r)
      m_matrix(r, c) = (*columns[c])[r];
    m_matrix(3, c) = 0.0;
  }
  for (int r = 0; r < 3; ++r)
    m_matrix(r, 3) = 0.0;
  m_matrix(3, 3) = 1.0;

  m_middle_ray = ray;
  // An empty cone about a ray without differentials: rays get none either.
  if (angle <= 1e-8 && !ray.m_has_differentials)
    return;

  double tx = (1.0 - spread_reduction_x) * h;
  double ty = (1.0 - spread_reduction_y) * h;
  double rx = 0.0;
  double ry = 0.0;
  GMathRayDifferential const& in = ray.m_differential;
  if (ray.m_has_differentials) {
    tx += incoming_spread(d, in.m_rx_direction);
    ty += incoming_spread(d, in.m_ry_direction);
    rx = in_plane_length(in.m_rx_origin - ray.m_origin, t1, t2);
    ry = in_plane_length(in.m_ry_origin - ray.m_origin, t1, t2);
  }
  spread_cos_sin(tx, m_cos[1], m_sin[1]);
  spread_cos_sin(ty, m_cos[2], m_sin[2]);

  GMathRayDifferential differential;
  differential.m_rx_origin = ray.m_origin + t1 * rx;
  differential.m_ry_origin = ray.m_origin + t2 * ry;
  differential.m_rx_direction = d * m_cos[1] + t1 * m_sin[1];
  differential.m_ry_direction = d * m_cos[2] + t2 * m_sin[2];
  m_middle_ray.set_differentials(differential);
}

void CosineWeightedHemisphereRayGenerator::disable_clipping() {
  set_callbacks<CosineWeightedHemisphereRayGenerator, &get_ray_callback, &get_rays_callback,
                &get_frustum_callback>();
}

void CosineWeightedHemisphereRayGenerator::discard_clipped_samples(
    GMathVec3<double> const& normal) {
  m_clip_normal = normal;
  set_callbacks<CosineWeightedHemisphereRayGenerator, &get_ray_discard_callback,
                &get_rays_discard_callback, &get_frustum_callback>();
}

void CosineWeightedHemisphereRayGenerator::project_clipped_samples(
    GMathVec3<double> const& normal) {
  m_clip_normal = normal;
  set_callbacks<CosineWeightedHemisphereRayGenerator, &get_ray_project_callback,
                &get_rays_project_callback, &get_frustum_callback>();
}

inline void CosineWeightedHemisphereRayGenerator::warp(double const& radius, double const& angle,
                                                       GMathVec3<double>& direction,
                                                       GMathVec3<double>& tangent_u,
                                                       GMathVec3<double>& tangent_v) const {
  double const s = radius * m_sin[0];
  double const c = std::sqrt(1.0 - s * s);
  double cos_phi, sin_phi;
  sampling::warps::detail::cos_sin(angle, cos_phi, sin_phi);
  // The frame of Sampling::hemisphere_cosine_concentric with radius scale
  // sin h, carried into the world by the frame's columns.
  direction = m_matrix.transform_vector(GMathVec3<double>(cos_phi * s, sin_phi * s, c));
  tangent_u = m_matrix.transform_vector(GMathVec3<double>(-sin_phi, cos_phi, 0.0));
  tangent_v = m_matrix.transform_vector(GMathVec3<double>(-c * cos_phi, -c * sin_phi, s));
}

// The concentric map (the body of Sampling::to_unit_disk) is expanded inline
// here, so the array forms run the whole warp without a call per sample.
inline void CosineWeightedHemisphereRayGenerator::warp_sample(GMathVec2<double> const& sample,
                                                              GMathVec3<double>& direction,
                                                              GMathVec3<double>& tangent_u,
                                                              GMathVec3<double>& tangent_v) const {
  check_sample(sample);
  double radius, angle;
  concentric_map(sample.x, sample.y, radius, angle);
  warp(radius, angle, direction, tangent_u, tangent_v);
}

inline void CosineWeightedHemisphereRayGenerator::create_ray(GMathVec3<double> const& direction,
                                                             GMathVec3<double> const& tangent_u,
                                                             GMathVec3<double> const& tangent_v,
                                                             GMathRay& ray) const {
  ray.m_origin = m_middle_ray.m_origin;
  ray.set_direction(direction);
  ray.m_type = m_middle_ray.m_type;
  ray.m_time = m_middle_ray.m_time;
  if (m_middle_ray.m_has_differentials) {
    // The origins stay those of init; the directions turn with the ray.
    GMathRayDifferential differential = m_middle_ray.m_differential;
    differential.m_rx_direction = direction * m_cos[1] + tangent_u * m_sin[1];
    differential.m_ry_direction = direction * m_cos[2] + tangent_v * m_sin[2];
    ray.set_differentials(differential);
  } else {
    clear_differentials(ray);
  }
  clear_aux_cleared(ray);
}

void CosineWeightedHemisphereRayGenerator::create_ray(GMathVec2<double> const& sample,
                                                      GMathRay& ray) const {
  GMathVec3<double> w, u, v;
  warp_sample(sample, w, u, v);
  create_ray(w, u, v, ray);
}

unsigned int CosineWeightedHemisphereRayGenerator::create_ray_discard(
    GMathVec2<double> const& sample, GMathRay& ray) const {
  GMathVec3<double> w, u, v;
  warp_sample(sample, w, u, v);
  if (!(dot(w, m_clip_normal) > 0.0))
    return 0;
  create_ray(w, u, v, ray);
  return 1;
}

void CosineWeightedHemisphereRayGenerator::create_ray_project(GMathVec2<double> const& sample,
                                                              GMathRay& ray) const {
  GMathVec3<double> w, u, v;
  warp_sample(sample, w, u, v);
  create_ray_project(w, u, v, ray);
}

inline void CosineWeightedHemisphereRayGenerator::create_ray_project(GMathVec3<double> const& w,
                                                                     GMathVec3<double> const& u,
                                                                     GMathVec3<double> const& v,
                                                                     GMathRay& ray) const {
  GMathVec3<double> const& n = m_clip_normal;
  double const d = dot(w, n);
  if (d >= 0.0) {
    create_ray(w, u, v, ray);
    return;
  }
  GMathVec3<double> const w_flat = safe_normalize(w - n * d, k_ray_normalize_epsilon);
  GMathVec3<double> const u_flat =
      safe_normalize(u - w_flat * dot(u, w_flat), k_ray_normalize_epsilon);
  GMathVec3<double> const v_flat =
      safe_normalize(v - w_flat * dot(v, w_flat), k_ray_normalize_epsilon);
  create_ray(w_flat, u_flat, v_flat, ray);
}

// Two samples at a time (ray_lanes::for_each_pair): the concentric map, the
// warp, the differential directions and the ray's derived fields in lanes,
// the sine and cosine per sample in between; an odd last sample, and every
// sample without SSE2, through the one-sample builders. In project mode the
// rays below the plane are projected in lanes too.
template <int mode>
inline unsigned int CosineWeightedHemisphereRayGenerator::create_rays(
    GMathVec2<double> const* samples, unsigned int const& count, GMathRay* rays) const {
  unsigned int written = 0;
  unsigned int i = 0;
#if defined(SAMPLING_RAY_LANES)
  using namespace ray_lanes;
  // The record's fields in lanes, once: the ray stores could alias the
  // record, which would force them to be read again per pair.
  SharedFields const shared = shared_fields(m_middle_ray);
  Matrix const frame(m_matrix);
  Lanes const sin_h = splat(m_sin[0]);
  Lanes const cos_x = splat(m_cos[1]), sin_x = splat(m_sin[1]);
  Lanes const cos_y = splat(m_cos[2]), sin_y = splat(m_sin[2]);
  Vec const clip_normal = splat(m_clip_normal);
  i = for_each_pair(
      samples, count,
      [](Lanes const& u, Lanes const& v, Lanes& radius) {
        Lanes angle;
        ray_lanes::to_unit_disk(u, v, radius, angle);
        return angle;
      },
      [&](unsigned int const& first, Lanes const& radius, Lanes const& cos_phi,
          Lanes const& sin_phi) {
        check_sample(samples[first]);
        check_sample(samples[first + 1]);
        Lanes const s = radius * sin_h;
        Lanes const c = _mm_sqrt_pd(splat(1.0) - s * s);
        Vec w = frame.transform_vector(Vec{cos_phi * s, sin_phi * s, c});
        Vec rx = w, ry = w, tangent_u = w, tangent_v = w;
        if (shared.differentials || mode == k_mode_project) {
          tangent_u = frame.transform_vector(Vec{negate(sin_phi), cos_phi, splat(0.0)});
          tangent_v = frame.transform_vector(Vec{negate(c) * cos_phi, negate(c) * sin_phi, s});
        }
        if (mode == k_mode_project) {
          // A ray not at or above the plane (a NaN too, as in the one-sample
          // path) takes its projection: create_ray_project's three guarded
          // normalisations in lanes, kept where the lane is below.
          Lanes const along = ray_lanes::dot(w, clip_normal);
          Lanes const below = _mm_cmpnge_pd(along, _mm_setzero_pd());
          if (_mm_movemask_pd(below) != 0) {
            Vec const w_flat = safe_normalize(w - clip_normal * along, k_ray_normalize_epsilon);
            Vec const u_flat = safe_normalize(
                tangent_u - w_flat * ray_lanes::dot(tangent_u, w_flat), k_ray_normalize_epsilon);
            Vec const v_flat = safe_normalize(
                tangent_v - w_flat * ray_lanes::dot(tangent_v, w_flat), k_ray_normalize_epsilon);
            w = select(below, w_flat, w);
            tangent_u = select(below, u_flat, tangent_u);
            tangent_v = select(below, v_flat, tangent_v);
          }
        }
        if (shared.differentials) {
          rx = combine(w, cos_x, tangent_u, sin_x);
          ry = combine(w, cos_y, tangent_v, sin_y);
        }
        if (mode == k_mode_discard) {
          Lanes const along = ray_lanes::dot(w, clip_normal);
          int const above = _mm_movemask_pd(_mm_cmpgt_pd(along, _mm_setzero_pd()));
          GMathRay* const ray0 = (above & 1) ? rays + written : nullptr;
          GMathRay* const ray1 = (above & 2) ? rays + written + (above & 1) : nullptr;
          written += static_cast<unsigned int>((above & 1) + (above >> 1));
          write_rays(shared, w, rx, ry, ray0, ray1);
          return;
        }
        write_rays(shared, w, rx, ry, rays + written, rays + written + 1);
        written += 2;
      });
#endif
  for (; i < count; ++i) {
    if (mode == k_mode_discard) {
      written += create_ray_discard(samples[i], rays[written]);
    } else if (mode == k_mode_project) {
      create_ray_project(samples[i], rays[written++]);
    } else {
      create_ray(samples[i], rays[written++]);
    }
  }
  return written;
}

// The three get_rays callbacks. The lane path reads the record's fields into
// locals once per call, so the stores through `rays` cannot make it read
// them again. Without lanes every sample goes through the one-ray builders,
// which read the fields per ray: they run on a local copy of the record,
// which the stores cannot alias, while the lane path skips that copy (480
// bytes, two rays' worth, a real share of a call of a few rays per hit).
template <int mode>
unsigned int CosineWeightedHemisphereRayGenerator::get_rays_in_mode(
    CosineWeightedHemisphereRayGenerator const& generator, GMathVec2<double> const* samples,
    unsigned int const& count, GMathRay* rays, double* weights) {
  check_arrays(samples, count, rays);
#if defined(SAMPLING_RAY_LANES)
  CosineWeightedHemisphereRayGenerator const& source = generator;
#else
  CosineWeightedHemisphereRayGenerator const source = generator;
#endif
  unsigned int const written = source.create_rays<mode>(samples, count, rays);
  store_unit_weights(weights, written);
  return written;
}

bool CosineWeightedHemisphereRayGenerator::get_ray_callback(
    CosineWeightedHemisphereRayGenerator const& generator, GMathVec2<double> const& sample,
    GMathRay& ray, double* weight) {
  generator.create_ray(sample, ray);
  store_unit_weight(weight);
  return true;
}

unsigned int CosineWeightedHemisphereRayGenerator::get_rays_callback(
    CosineWeightedHemisphereRayGenerator const& generator, GMathVec2<double> const* samples,
    unsigned int const& count, GMathRay* rays, double* weights) {
  return get_rays_in_mode<k_mode_plain>(generator, samples, count, rays, weights);
}

bool CosineWeightedHemisphereRayGenerator::get_ray_discard_callback(
    CosineWeightedHemisphereRayGenerator const& generator, GMathVec2<double> const& sample,
    GMathRay& ray, double* weight) {
  // The weight is stored before the sample is known to survive.
  store_unit_weight(weight);
  return generator.create_ray_discard(sample, ray) != 0;
}

unsigned int CosineWeightedHemisphereRayGenerator::get_rays_discard_callback(
    CosineWeightedHemisphereRayGenerator const& generator, GMathVec2<double> const* samples,
    unsigned int const& count, GMathRay* rays, double* weights) {
  return get_rays_in_mode<k_mode_discard>(generator, samples, count, rays, weights);
}

bool CosineWeightedHemisphereRayGenerator::get_ray_project_callback(
    CosineWeightedHemisphereRayGenerator const& generator, GMathVec2<double> const& sample,
    GMathRay& ray, double* weight) {
  generator.create_ray_project(sample, ray);
  store_unit_weight(weight);
  return true;
}

unsigned int CosineWeightedHemisphereRayGenerator::get_rays_project_callback(
    CosineWeightedHemisphereRayGenerator const& generator, GMathVec2<double> const* samples,
    unsigned int const& count, GMathRay* rays, double* weights) {
  return get_rays_in_mode<k_mode_project>(generator, samples, count, rays, weights);
}

// The disk point of radius r sin h has density 1 / (pi' sin^2 h) per unit
// area and is lifted straight up onto the sphere, where dA = cos(theta) dw.
double CosineWeightedHemisphereRayGenerator::pdf(GMathVec3<double> const& direction) const {
  double const s2 = m_sin[0] * m_sin[0];
  double const c = dot(direction, m_middle_ray.m_direction);
  if (!(s2 > 0.0) || !(c > 0.0) || 1.0 - c * c > s2)
    return 0.0;
  return c / (k_sampling_pi * s2);
}

// The box corners (umin, vmin), (umax, vmin), (umax, vmax), (umin, vmax) run
// counter-clockwise through the concentric map; their cone directions c_k,
// taken in that order, span four planes through the origin whose normals
// c_k x (c_(k+1) - c_k) point into the frustum. Each normal is then tilted
// towards the centroid of the corner directions by k_frustum_margin of its own
// length, turning its plane outward, because the box's edges map to curves
// that bulge slightly beyond the planes through the corners.
void CosineWeightedHemisphereRayGenerator::get_frustum_callback(
    CosineWeightedHemisphereRayGenerator const& generator, GMathVec2<double> const& corner0,
    GMathVec2<double> const& corner1, GMathFrustum& frustum) {
  GMathVec2<double> const corners[4] = {corner0, GMathVec2<double>(corner1.x, corner0.y), corner1,
                                        GMathVec2<double>(corner0.x, corner1.y)};
  GMathVec3<double> c[4];
  for (int k = 0; k < 4; ++k) {
    GMathVec3<double> u, v;
    generator.warp_sample(corners[k], c[k], u, v);
  }
  GMathVec3<double> normals[4];
  for (int k = 0; k < 4; ++k)
    normals[k] = cross(c[k], c[(k + 1) & 3] - c[k]);
  GMathVec3<double> const centroid = (((c[0] + c[1]) + c[2]) + c[3]) * k_frustum_margin;
  for (int k = 0; k < 4; ++k)
    normals[k] = normals[k] + centroid * normals[k].length();

  GMathVec3<double> const& origin = generator.m_middle_ray.m_origin;
  frustum.m_plane_count = 4;
  for (unsigned int k = 0; k < frustum.m_plane_count; ++k) {
    frustum.m_plane_point[k] = origin;
    frustum.m_plane_normal[k] = normals[k];
    frustum.m_plane_distance[k] = -dot(normals[k], origin);
  }
}
