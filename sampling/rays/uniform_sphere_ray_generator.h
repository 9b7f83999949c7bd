#pragma once

#include "platform/math/gmath_frustum.h"
#include "platform/math/gmath_ray.h"
#include "platform/math/gmath_vec2.h"
#include "platform/math/gmath_vec3.h"
#include "sampling/rays/sample_ray_generator.h"
#include "sampling/sampling_export.h"

// Rays from one point, the centre, in every direction.
//
// Sample (u, v) becomes the direction of Sampling::sphere_uniform in the
// world axes: z = 1 - 2u (from the +z pole at u = 0 to the -z pole at u = 1),
// azimuth 2pi v with the library's pi. Directions are unit vectors uniform
// over the sphere, density 1 / (4 pi) per unit solid angle. Every ray has
// weight 1.0 and differentials of a fixed angular spread: the x auxiliary ray
// is the main ray turned by atan(A) towards increasing azimuth (increasing
// v), the y auxiliary ray turned by atan(B) towards the +z pole (decreasing
// u), both from the centre and of unit length. A and B come from the spread
// reductions given to init. No sample is ever rejected; there is no clipping
// mode.
class SAMPLING_API UniformSphereRayGenerator : public SampleRayGenerator {
 public:
  // Rays get `type` (default 5, GMathRay::k_type_probe) and `time`, fixed for
  // the generator's life. The centre is the world origin; the spread is set
  // by init, which must run before the first ray.
  UniformSphereRayGenerator(GMathRay::Type const& type = GMathRay::k_type_probe,
                            double const& time = 0.0);
  UniformSphereRayGenerator(UniformSphereRayGenerator const& other) = default;
  // Owns nothing.
  ~UniformSphereRayGenerator() {}

  // Centre of the rays, and the spread of the differentials:
  // A = (1 - spread_reduction_x) 2pi and B = (1 - spread_reduction_y) pi
  // (not clamped), the tangents of the x and y spread angles. A reduction of
  // 1 gives auxiliary rays equal to the main ray, one above 1 turns them the
  // other way. (1 - reduction) is meant as the sample step between
  // neighbouring rays: the spread tangent is then the angle such a step spans
  // in azimuth (along v) or, on average, in polar angle (along u). Keeps type
  // and time.
  void init(GMathVec3<double> const& centre, double const& spread_reduction_x,
            double const& spread_reduction_y);

  // Density per unit solid angle with which get_ray returns the unit world
  // `direction` for uniform samples of [0,1]^2: 1 / (4 pi') with the
  // library's pi' = 3.141592653589, the same for every direction (the sliver
  // of azimuth between 2pi' and 2pi that the map never reaches has measure
  // about 1.6e-12 and is ignored). There is no clipping to account for.
  double pdf(GMathVec3<double> const& direction) const;

  // Copies the whole record.
  UniformSphereRayGenerator& operator=(UniformSphereRayGenerator const& other) = default;

 private:
  // Direction, tangent and bitangent of `sample`, then the ray.
  SAMPLING_LOCAL void create_ray(GMathVec2<double> const& sample, GMathRay& ray) const;
  // The ray along the unit `direction` with its two auxiliary rays turned
  // towards the unit `tangent` and `bitangent`.
  SAMPLING_LOCAL void create_ray(GMathVec3<double> const& direction,
                                 GMathVec3<double> const& tangent,
                                 GMathVec3<double> const& bitangent, GMathRay& ray) const;

  struct RayConstants;

  SAMPLING_LOCAL static bool get_ray_callback(UniformSphereRayGenerator const& g,
                                              GMathVec2<double> const& sample, GMathRay& ray,
                                              double* weight);
  SAMPLING_LOCAL static unsigned int get_rays_callback(UniformSphereRayGenerator const& g,
                                                       GMathVec2<double> const* samples,
                                                       unsigned int const& count, GMathRay* rays,
                                                       double* weights);
  // The frustum of a sample box: see docs/rays.md, "Shape generators". The
  // corners must be the low and the high corner of the box.
  SAMPLING_LOCAL static void get_frustum_callback(UniformSphereRayGenerator const& g,
                                                  GMathVec2<double> const& corner0,
                                                  GMathVec2<double> const& corner1,
                                                  GMathFrustum& frustum);

  GMathRay::Type m_ray_type;
  double m_ray_time;
  GMathVec3<double> m_ray_origin;
  double m_cos[2];  // [0]: x spread angle, [1]: y spread angle
  double m_sin[2];
};

static_assert(sizeof(UniformSphereRayGenerator) == 24 + 8 + 8 + 24 + 16 + 16,
              "UniformSphereRayGenerator layout");
