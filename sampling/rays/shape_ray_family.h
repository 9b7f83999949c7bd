#pragma once

#include <cmath>

#include "platform/math/gmath_frustum.h"
#include "platform/math/gmath_ray.h"
#include "platform/math/gmath_ray_differential.h"
#include "platform/math/gmath_vec2.h"
#include "platform/math/gmath_vec3.h"
#include "sampling/checks.h"
#include "sampling/rays/ray_lanes.h"
#include "sampling/rays/ray_math.h"
#include "sampling/rays/shape_ray_math.h"

// The code shared by the line, plane and disk generators: rays from one
// origin towards points of a shape that a matrix places in the world, the
// distance to the point as weight, a strict clip plane through the origin in
// discard mode, and the packet frustum. Internal; each generator's own
// ray builders (create_ray, create_ray_discard) and frustum callback forward
// here, and its ray callbacks are get_ray, get_rays, get_ray_discard and
// get_rays_discard below, so the three share one body.
//
// G is the generator record. It befriends this template and provides, besides
// the fields m_ray_type, m_ray_time, m_frame, m_ray_origin, m_clip_normal and
// m_differentials_enabled:
//   GMathVec3<double> local_point(GMathVec2<double> const& sample) const;
//       the shape's point of a sample in the frame's local coordinates;
//   GMathVec3<double> frustum_local_point(GMathVec2<double> const& corner,
//                                         unsigned int const& k) const;
//       the local point standing for box corner k in the frustum;
//   void aim_differentials(GMathVec3<double> const& to_sample,
//                          GMathRayDifferential& differential) const;
//       the two auxiliary directions of the ray towards to_sample.
//   unsigned int for_each_local_pair(samples, count, build) const;
//       the local points of the samples two at a time as lanes, handed to
//       build(first, points); returns the samples walked (ray_lanes.h);
//   void aim_differential_lanes(to_sample, rx, ry) const;
//       aim_differentials in lanes.
// Those hooks are defined inline in the generator's source, the only place
// where this template is instantiated, so every path inlines them.
template <typename G>
struct ShapeRayFamily {
  // The two-sided differentials of the plane and the disk: the spread
  // reductions clamped to cx, cy; enabled when sx = 1 - cx or sy = 1 - cy is
  // positive, and then m_differential_delta_x and _y = the frame applied to
  // the local directions (sx, 0, 0) and (0, sy, 0). Otherwise both keep their
  // values. Returns whether differentials are enabled.
  static bool init_two_sided_differentials(G& g, double const& spread_reduction_x,
                                           double const& spread_reduction_y) {
    double const sx = 1.0 - clamp_spread_reduction(spread_reduction_x);
    double const sy = 1.0 - clamp_spread_reduction(spread_reduction_y);
    g.m_differentials_enabled = sx > 0.0 || sy > 0.0;
    if (g.m_differentials_enabled) {
      g.m_differential_delta_x = g.m_frame.transform_vector(GMathVec3<double>(sx, 0.0, 0.0));
      g.m_differential_delta_y = g.m_frame.transform_vector(GMathVec3<double>(0.0, sy, 0.0));
    }
    return g.m_differentials_enabled;
  }

  // Auxiliary directions towards the target moved by m_differential_delta_x
  // and by m_differential_delta_y (plane and disk).
  static void aim_two_sided(G const& g, GMathVec3<double> const& to_sample,
                            GMathRayDifferential& differential) {
    differential.m_rx_direction = aim_displaced(to_sample, g.m_differential_delta_x);
    differential.m_ry_direction = aim_displaced(to_sample, g.m_differential_delta_y);
  }

  // World vector from the ray origin to the shape's point of `sample`.
  static GMathVec3<double> to_sample(G const& g, GMathVec2<double> const& sample) {
    SAMPLING_CHECK(in_unit_square(sample), "shape ray generator: sample outside [0,1]^2");
    return g.m_frame.transform_point(g.local_point(sample)) - g.m_ray_origin;
  }

  // Body of G::create_ray(to_sample, ray, distance): the ray from
  // m_ray_origin towards m_ray_origin + to_sample, and its length. The
  // direction is to_sample times 1/distance, unguarded: the caller keeps the
  // origin off the shape.
  static void build_ray(G const& g, GMathVec3<double> const& to_sample, GMathRay& ray,
                        double& distance) {
    distance = to_sample.length();
    SAMPLING_CHECK(distance != 0.0, "shape ray generator: the ray origin lies on the shape");
    ray.m_type = g.m_ray_type;
    ray.m_time = g.m_ray_time;
    ray.m_origin = g.m_ray_origin;
    ray.set_direction(to_sample * (1.0 / distance));
    ray.m_aux_cleared[0] = 0.0;
    ray.m_aux_cleared[1] = 0.0;
    if (g.m_differentials_enabled) {
      GMathRayDifferential differential;
      differential.m_rx_origin = g.m_ray_origin;
      differential.m_ry_origin = g.m_ray_origin;
      g.aim_differentials(to_sample, differential);
      ray.set_differentials(differential);
    } else {
      ray.m_has_differentials = false;
      ray.m_aux[0] = 0.0;
      ray.m_aux[1] = 0.0;
    }
  }

#if defined(SAMPLING_RAY_LANES)
  // aim_two_sided in lanes.
  static void aim_two_sided_lanes(G const& g, ray_lanes::Vec const& to_sample, ray_lanes::Vec& rx,
                                  ray_lanes::Vec& ry) {
    rx = ray_lanes::safe_normalize(to_sample + ray_lanes::splat(g.m_differential_delta_x),
                                   k_ray_normalize_epsilon);
    ry = ray_lanes::safe_normalize(to_sample + ray_lanes::splat(g.m_differential_delta_y),
                                   k_ray_normalize_epsilon);
  }

  // The rays of get_rays (all samples) or get_rays_discard (those that pass
  // the clip test, packed) two at a time: to_sample, build_ray and the clip
  // test in lanes, each distance into `weights` beside its ray when it is
  // not null. Sets `written` to the rays written and returns the samples
  // walked; an odd last sample is left to the caller.
  static unsigned int build_rays_in_lanes(G const& g, GMathVec2<double> const* samples,
                                          unsigned int const& count, GMathRay* rays,
                                          double* weights, bool const& discard,
                                          unsigned int& written) {
    using namespace ray_lanes;
    SharedFields const shared =
        shared_fields(g.m_ray_origin, g.m_ray_type, g.m_ray_time, g.m_differentials_enabled);
    Matrix const frame(g.m_frame);
    Vec const origin = splat(g.m_ray_origin);
    Vec const clip_normal = splat(g.m_clip_normal);
    unsigned int n = 0;
    unsigned int const walked =
        g.for_each_local_pair(samples, count, [&](unsigned int const& first, Vec const& local) {
          (void)first;  // read by the checks only
          SAMPLING_CHECK(in_unit_square(samples[first]) && in_unit_square(samples[first + 1]),
                         "shape ray generator: sample outside [0,1]^2");
          Vec const to_sample = frame.transform_point(local) - origin;
          Lanes const distance = length(to_sample);
          Vec const direction = to_sample * (splat(1.0) / distance);
          Vec rx = direction, ry = direction;
          if (shared.differentials)
            g.aim_differential_lanes(to_sample, rx, ry);
          int keep = 3;
          if (discard)
            keep = _mm_movemask_pd(_mm_cmpgt_pd(dot(to_sample, clip_normal), _mm_setzero_pd()));
          // Only the rays kept (a discarded sample may aim at the origin).
          SAMPLING_CHECK((_mm_movemask_pd(_mm_cmpeq_pd(distance, _mm_setzero_pd())) & keep) == 0,
                         "shape ray generator: the ray origin lies on the shape");
          GMathRay* const ray0 = (keep & 1) ? rays + n : nullptr;
          GMathRay* const ray1 = (keep & 2) ? rays + n + (keep & 1) : nullptr;
          if (weights && (keep & 1))
            store_lane<0>(distance, weights[n]);
          if (weights && (keep & 2))
            store_lane<1>(distance, weights[n + (keep & 1)]);
          n += static_cast<unsigned int>((keep & 1) + (keep >> 1));
          write_rays(shared, direction, rx, ry, ray0, ray1);
        });
    written = n;
    return walked;
  }
#endif

  // True when the shape's point lies strictly on the side of the clip plane
  // into which m_clip_normal points.
  static bool passes_clip(G const& g, GMathVec3<double> const& to_sample) {
    GMathVec3<double> const& n = g.m_clip_normal;
    return to_sample.x * n.x + to_sample.y * n.y + to_sample.z * n.z > 0.0;
  }

  // Body of G::create_ray_discard: 1 and the ray when the sample passes the
  // clip test, else 0 with ray and distance untouched.
  static unsigned int build_ray_discard(G const& g, GMathVec2<double> const& sample, GMathRay& ray,
                                        double& distance) {
    GMathVec3<double> const t = to_sample(g, sample);
    if (!passes_clip(g, t))
      return 0;
    g.create_ray(t, ray, distance);
    return 1;
  }

  // The callbacks. The distance goes through the weight pointer, or to a
  // scratch value when it is null.
  static bool get_ray(G const& g, GMathVec2<double> const& sample, GMathRay& ray, double* weight) {
    double scratch;
    g.create_ray(sample, ray, weight ? *weight : scratch);
    return true;
  }

  static bool get_ray_discard(G const& g, GMathVec2<double> const& sample, GMathRay& ray,
                              double* weight) {
    double scratch;
    return g.create_ray_discard(sample, ray, weight ? *weight : scratch) != 0;
  }

  // With a weight array the target is computed here and the distance goes
  // straight into the array beside its ray; without one each sample goes
  // through the sample builder with a scratch distance. Both paths give the
  // same rays, bit for bit. Pairs of samples go through build_rays_in_lanes
  // first where SSE2 is available.
  static unsigned int get_rays(G const& g, GMathVec2<double> const* samples,
                               unsigned int const& count, GMathRay* rays, double* weights) {
    SAMPLING_CHECK(count == 0 || (samples && rays),
                   "shape ray generator get_rays: null sample or ray array");
    if (count == 0)
      return 0;
    // A local copy of the record: the stores through `rays` and `weights`
    // could alias the caller's record, which would force every field to be
    // read again per ray; a local cannot be aliased.
    G const local = g;
    unsigned int i = 0;
#if defined(SAMPLING_RAY_LANES)
    unsigned int written;
    i = build_rays_in_lanes(local, samples, count, rays, weights, false, written);
#endif
    if (weights) {
      for (; i < count; ++i)
        local.create_ray(to_sample(local, samples[i]), rays[i], weights[i]);
    } else {
      double scratch;
      for (; i < count; ++i)
        local.create_ray(samples[i], rays[i], scratch);
    }
    return count;
  }

  // Rays of the samples that pass the clip test, packed at the front in
  // sample order, each distance beside its ray; entries from the returned
  // count on are not touched. The paths as in get_rays.
  static unsigned int get_rays_discard(G const& g, GMathVec2<double> const* samples,
                                       unsigned int const& count, GMathRay* rays, double* weights) {
    SAMPLING_CHECK(count == 0 || (samples && rays),
                   "shape ray generator get_rays: null sample or ray array");
    unsigned int n = 0;
    unsigned int i = 0;
    G const local = g;  // as in get_rays
#if defined(SAMPLING_RAY_LANES)
    i = build_rays_in_lanes(local, samples, count, rays, weights, true, n);
#endif
    if (weights) {
      for (; i < count; ++i) {
        GMathVec3<double> const t = to_sample(local, samples[i]);
        if (passes_clip(local, t)) {
          local.create_ray(t, rays[n], weights[n]);
          ++n;
        }
      }
    } else {
      double scratch;
      for (; i < count; ++i)
        n += local.create_ray_discard(samples[i], rays[n], scratch);
    }
    return n;
  }

  // World area of the local unit square: |X x Y| for the frame's local x and
  // y axes.
  static double unit_square_area(G const& g) {
    return cross(g.m_frame.transform_vector(GMathVec3<double>(1.0, 0.0, 0.0)),
                 g.m_frame.transform_vector(GMathVec3<double>(0.0, 1.0, 0.0)))
        .length();
  }

  // The density per unit solid angle of the unit `direction` for a flat
  // shape (plane or disk) whose targets have the density `area_pdf` per
  // unit world area: the ray from m_ray_origin along `direction` meets the
  // shape's plane at distance t and at the local point (x, y), and where
  // covers(x, y) holds the density is area_pdf t^2 / |cos|, cos being the
  // cosine between the direction and the shape's normal. 0 when the ray
  // misses the shape, runs parallel to its plane or leaves it behind.
  template <typename Covers>
  static double solid_angle_pdf(G const& g, GMathVec3<double> const& direction,
                                double const& area_pdf, Covers const& covers) {
    GMathVec3<double> const side_x = g.m_frame.transform_vector(GMathVec3<double>(1.0, 0.0, 0.0));
    GMathVec3<double> const side_y = g.m_frame.transform_vector(GMathVec3<double>(0.0, 1.0, 0.0));
    GMathVec3<double> const centre = g.m_frame.transform_point(GMathVec3<double>(0.0, 0.0, 0.0));
    GMathVec3<double> const normal = cross(side_x, side_y);
    double const along = dot(direction, normal);
    double const t = dot(centre - g.m_ray_origin, normal) / along;
    if (!(t > 0.0) || !std::isfinite(t))
      return 0.0;
    // (x side_x + y side_y) crossed with side_y, or side_x crossed with it,
    // is x or y times the normal.
    GMathVec3<double> const offset = g.m_ray_origin + direction * t - centre;
    double const nn = dot(normal, normal);
    if (!covers(dot(cross(offset, side_y), normal) / nn, dot(cross(side_x, offset), normal) / nn))
      return 0.0;
    return area_pdf * t * t * std::sqrt(nn) / std::fabs(along);
  }

  // Four oriented side planes through m_ray_origin spanned by the vectors
  // towards the world points of the box corners; `widen` tilts them outwards
  // for shapes whose box edges are curves.
  static void get_frustum(G const& g, GMathVec2<double> const& corner0,
                          GMathVec2<double> const& corner1, bool const& widen,
                          GMathFrustum& frustum) {
    SAMPLING_CHECK(in_unit_square(corner0) && in_unit_square(corner1),
                   "shape ray generator get_frustum: box corner outside [0,1]^2");
    GMathVec3<double> c[4];
    for (unsigned int k = 0; k < 4; ++k)
      c[k] = g.m_frame.transform_point(g.frustum_local_point(box_corner(corner0, corner1, k), k)) -
             g.m_ray_origin;
    fill_shape_frustum(c, true, widen, g.m_ray_origin, frustum);
  }
};
