#pragma once

#include "platform/math/gmath_frustum.h"
#include "platform/math/gmath_matrix4x4.h"
#include "platform/math/gmath_ray.h"
#include "platform/math/gmath_ray_differential.h"
#include "platform/math/gmath_vec2.h"
#include "platform/math/gmath_vec3.h"
#include "sampling/rays/sample_ray_generator.h"
#include "sampling/sampling_export.h"

template <typename G>
struct ShapeRayFamily;

// Rays from one point, the ray origin, towards points of a line segment that
// a matrix places in the world.
//
// In the frame's local coordinates the segment runs from (-0.5, 0, 0) to
// (0.5, 0, 0); sample (u, v) aims at the local point (u - 0.5, 0, 0), so the
// targets are uniform along the segment and v is not used. The frame (a
// row-major affine matrix, translation in the fourth column) gives the
// segment its length, orientation and position.
//
// Each ray leaves the ray origin with unit direction towards its target, and
// its weight is the distance from the origin to the target in world units
// (not the 1.0 of the lobe generators). Rays carry differentials when init
// enables them: the x auxiliary ray aims at the target moved along the
// segment by m_differential_delta, the y auxiliary ray is the main ray turned
// about the segment's axis; both leave the ray origin, their directions are
// unit vectors (or zero when an auxiliary target falls on the origin).
//
// Modes: plain (every sample gives a ray) and discard, in which a sample
// gives a ray only when its target lies strictly on the side of the clip
// plane (through the ray origin) into which the clip normal points. The
// frustum is the same in both modes.
//
// The caller keeps the ray origin off the segment: a target at the origin
// has distance 0 and no direction.
class SAMPLING_API LineRayGenerator : public SampleRayGenerator {
 public:
  // Plain mode; rays get `type` (default 5, GMathRay::k_type_probe) and
  // `time`. Ray origin, displacement and clip normal are zero; the frame and
  // the differentials are set by init, which must run before the first ray.
  LineRayGenerator(GMathRay::Type const& type = GMathRay::k_type_probe, double const& time = 0.0);
  LineRayGenerator(LineRayGenerator const& other) = default;
  // Owns nothing.
  ~LineRayGenerator() {}

  // Places the segment by `frame` and the rays' origin at `ray_origin`.
  // spread_reduction is clamped to [0, 1] (NaN counts as 0) to c; with
  // s = 1 - c > 0 rays get differentials whose x target moves by s times the
  // world segment vector; c = 1 gives rays without differentials (the
  // previous displacement is then kept in the record, unused). Keeps the mode
  // and the clip normal.
  void init(GMathVec3<double> const& ray_origin, GMathMatrix4x4<double> const& frame,
            double const& spread_reduction);

  // Time written into later rays.
  void set_ray_time(double const& time) { m_ray_time = time; }
  // Type written into later rays.
  void set_ray_type(GMathRay::Type const& type) { m_ray_type = type; }

  // Discard mode: a sample gives a ray only when (target - ray origin) .
  // normal > 0. The normal need not be of unit length; a zero normal rejects
  // every sample.
  void discard_clipped_samples(GMathVec3<double> const& normal);
  // Plain mode: every sample gives a ray. The clip normal stays stored.
  void disable_clipping();

  // Copies the whole record, mode included.
  // Density of the targets per unit world length of the segment: 1 / L, L
  // the length of the frame's local x axis (the segment's world vector);
  // the same at every point of the segment and 0 off it. The frame must not
  // collapse the segment to a point (the density is then infinite).
  // Discard mode drops the rays whose target lies on the wrong side of the
  // clip plane; the survivors keep this density (not renormalised over the
  // survivors), the rest of the mass is missing.
  double pdf_length() const;
  // The rays of a segment all lie in the plane through the ray origin and
  // the segment: a set of zero solid angle, on which no density per unit
  // solid angle exists. pdf returns 0 for every direction (a solid-angle
  // strategy never samples those rays, and this generator never samples any
  // other); weigh the line's rays with pdf_length.
  double pdf(GMathVec3<double> const& direction) const;

  LineRayGenerator& operator=(LineRayGenerator const& other) = default;

 private:
  // Fills `ray` towards m_ray_origin + to_sample and its distance.
  SAMPLING_LOCAL void create_ray(GMathVec3<double> const& to_sample, GMathRay& ray,
                                 double& distance) const;
  // The same for the target of `sample`.
  SAMPLING_LOCAL void create_ray(GMathVec2<double> const& sample, GMathRay& ray,
                                 double& distance) const;
  // 1 with ray and distance when the sample passes the clip test, else 0
  // with both untouched.
  SAMPLING_LOCAL unsigned int create_ray_discard(GMathVec2<double> const& sample, GMathRay& ray,
                                                 double& distance) const;

  // Hooks of the family code (sampling/rays/shape_ray_family.h), which
  // holds the bodies of the builders above and of the frustum callback below;
  // its get_ray and get_rays functions (plain and discard) are stored as the
  // ray callbacks themselves. Defined inline in the generator's source, the
  // only place that calls them.
  SAMPLING_LOCAL inline GMathVec3<double> local_point(GMathVec2<double> const& sample) const;
  SAMPLING_LOCAL inline GMathVec3<double> frustum_local_point(GMathVec2<double> const& corner,
                                                              unsigned int const& k) const;
  SAMPLING_LOCAL inline void aim_differentials(GMathVec3<double> const& to_sample,
                                               GMathRayDifferential& differential) const;
  // The family's lane hooks (shape_ray_family.h): the local points of the
  // samples two at a time, and aim_differentials, in lanes.
  template <typename Build>
  SAMPLING_LOCAL unsigned int for_each_local_pair(GMathVec2<double> const* samples,
                                                  unsigned int const& count,
                                                  Build const& build) const;
  template <typename LaneVec>
  SAMPLING_LOCAL void aim_differential_lanes(LaneVec const& to_sample, LaneVec& rx,
                                             LaneVec& ry) const;

  // The frustum of a sample box: see docs/rays.md, "Shape generators".
  SAMPLING_LOCAL static void get_frustum_callback(LineRayGenerator const& g,
                                                  GMathVec2<double> const& corner0,
                                                  GMathVec2<double> const& corner1,
                                                  GMathFrustum& frustum);

  GMathRay::Type m_ray_type;
  double m_ray_time;
  GMathMatrix4x4<double> m_frame;
  GMathVec3<double> m_ray_origin;
  GMathVec3<double> m_differential_delta;
  GMathVec3<double> m_clip_normal;
  bool m_differentials_enabled;

  friend struct ShapeRayFamily<LineRayGenerator>;
};

static_assert(sizeof(LineRayGenerator) == 24 + 8 + 8 + 128 + 3 * 24 + 8, "LineRayGenerator layout");
