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

// Rays from one point, the ray origin, towards points of a disk that a
// radius and a matrix place in the world.
//
// In the frame's local coordinates the disk lies in the plane z = 0, centred
// on the origin, with radius m_radius; sample (u, v) aims at the concentric
// map's point (Sampling::to_unit_disk: radius r, angle phi) scaled by the
// radius, (cos(phi) r m_radius, sin(phi) r m_radius, 0), so targets are
// uniform per unit area of the disk. The frame (a row-major affine matrix,
// translation in the fourth column) orients and places it (and may scale it
// further).
//
// Otherwise it works as LineRayGenerator, the family's first member: rays leave
// the ray origin with unit directions towards their targets, the weight is the
// distance to the target, discard mode keeps a sample only when its target lies
// strictly on the clip normal's side of the plane through the ray origin, and
// the caller keeps the ray origin off the disk. Its differentials are
// two-sided: the x and y auxiliary rays aim at the target moved along the
// disk's local x and y axes by m_differential_delta_x and
// m_differential_delta_y.
class SAMPLING_API DiskRayGenerator : public SampleRayGenerator {
 public:
  // Plain mode; rays get `type` (default 5, GMathRay::k_type_probe) and
  // `time`. Ray origin, displacement and clip normal are zero; the radius,
  // the frame and the differentials are set by init, which must run before the first ray.
  DiskRayGenerator(GMathRay::Type const& type = GMathRay::k_type_probe, double const& time = 0.0);
  DiskRayGenerator(DiskRayGenerator const& other) = default;
  // Owns nothing.
  ~DiskRayGenerator() {}

  // Places the disk of radius `radius` (not validated: 0 collapses it to its
  // centre, a negative radius mirrors it through the centre) by `frame` and
  // the rays' origin at `ray_origin`. Each spread reduction is clamped to
  // [0, 1] (NaN counts as 0) to cx, cy; when sx = 1 - cx or sy = 1 - cy is
  // positive rays get differentials whose x and y targets move by sx and sy
  // times the disk's diameter along its local x and y axes, carried into the
  // world by the frame.
  // cx = cy = 1 gives rays without differentials (the previous displacements
  // are then kept in the record, unused). Keeps the mode and the clip normal.
  void init(GMathVec3<double> const& ray_origin, GMathMatrix4x4<double> const& frame,
            double const& radius, double const& spread_reduction_x,
            double const& spread_reduction_y);

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
  // Density of the targets per unit world area of the disk:
  // 1 / (pi' radius^2 |X x Y|), X and Y the frame's local x and y axes and
  // pi' = 3.141592653589 the library's pi, over which the concentric map
  // spreads its angles (so the map is uniform with exactly this density);
  // 0 off the disk. A radius of 0 or a flattening frame leaves no area (the
  // density is then infinite).
  // Discard mode drops the rays whose target lies on the wrong side of the
  // clip plane; the survivors keep this density (not renormalised over the
  // survivors), the rest of the mass is missing.
  double pdf_area() const;
  // Density per unit solid angle with which get_ray returns the unit world
  // `direction` for uniform samples of [0,1]^2, before clipping: where the
  // ray from the ray origin along `direction` meets the disk, at distance t
  // and with cosine c to its normal, pdf_area() t^2 / |c| (the area density
  // carried over by dA = t^2 dw / |c|); 0 for a direction that misses the
  // disk. Discard mode: the survivors keep this density, the rays towards
  // targets behind the clip plane are missing.
  double pdf(GMathVec3<double> const& direction) const;

  DiskRayGenerator& operator=(DiskRayGenerator const& other) = default;

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
  SAMPLING_LOCAL static void get_frustum_callback(DiskRayGenerator const& g,
                                                  GMathVec2<double> const& corner0,
                                                  GMathVec2<double> const& corner1,
                                                  GMathFrustum& frustum);

  GMathRay::Type m_ray_type;
  double m_ray_time;
  double m_radius;
  GMathMatrix4x4<double> m_frame;
  GMathVec3<double> m_ray_origin;
  GMathVec3<double> m_differential_delta_x;
  GMathVec3<double> m_differential_delta_y;
  GMathVec3<double> m_clip_normal;
  bool m_differentials_enabled;

  friend struct ShapeRayFamily<DiskRayGenerator>;
};

static_assert(sizeof(DiskRayGenerator) == 24 + 8 + 8 + 8 + 128 + 4 * 24 + 8,
              "DiskRayGenerator layout");
