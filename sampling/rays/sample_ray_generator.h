#pragma once

#include "platform/math/gmath_frustum.h"
#include "platform/math/gmath_ray.h"
#include "platform/math/gmath_vec2.h"
#include "sampling/sampling_export.h"

// Base record of every ray generator: three callbacks, nothing else.
//
// A generator maps samples of the closed unit square [0,1]^2 to rays: one at
// a time (get_ray), a whole array with one dispatch (get_rays), and a
// four-plane frustum bounding the rays of a box of samples (get_frustum), for
// packet tracing. Concrete generators are records that begin with these three
// fields and choose their behaviour (for example a clipping mode) by storing
// other callbacks; there is no virtual table. Records are copied by plain
// assignment, own nothing outside themselves, and once initialised are
// read-only during generation, so one generator may serve many threads.
//
// Shared contract of every generator:
//  - samples and frustum corners lie in [0,1]^2; corner0 = (umin, vmin) and
//    corner1 = (umax, vmax) are the low and high corners of the box;
//  - get_rays writes the produced rays packed at the front of the ray array,
//    in sample order, skipping rejected samples, and returns their number;
//  - a non-null weight pointer or array receives one weight per produced ray
//    (its value is the generator's); a null one means no weights are wanted;
//  - every produced ray either gets differentials (GMathRay::set_differentials)
//    or has m_has_differentials, m_aux[0] and m_aux[1] cleared, and always has
//    m_aux_cleared[0] and m_aux_cleared[1] cleared.
class SAMPLING_API SampleRayGenerator {
 public:
  typedef bool (*GetRayCallback)(SampleRayGenerator const&, GMathVec2<double> const&, GMathRay&,
                                 double*);
  typedef unsigned int (*GetRaysCallback)(SampleRayGenerator const&, GMathVec2<double> const*,
                                          unsigned int const&, GMathRay*, double*);
  typedef void (*GetFrustumCallback)(SampleRayGenerator const&, GMathVec2<double> const&,
                                     GMathVec2<double> const&, GMathFrustum&);

  // Maps one sample to one ray. Returns true when a ray was written; when it
  // returns false the ray's content is not to be relied on. `weight` may be
  // null.
  bool get_ray(GMathVec2<double> const& sample, GMathRay& ray, double* weight) const {
    return m_get_ray_callback(*this, sample, ray, weight);
  }

  // Maps samples[0..count-1] to rays packed at rays[0..n-1] in sample order and
  // returns n <= count. `rays` must hold count rays; `weights` is null or holds
  // count values, of which the first n are written.
  unsigned int get_rays(GMathVec2<double> const* samples, unsigned int const& count, GMathRay* rays,
                        double* weights) const {
    return m_get_rays_callback(*this, samples, count, rays, weights);
  }

  // Writes the frustum of the rays generated from samples in the box
  // [corner0, corner1]: four planes (m_plane_count = 4), or m_plane_count = 0
  // with nothing else written when the generator cannot bound its rays.
  void get_frustum(GMathVec2<double> const& corner0, GMathVec2<double> const& corner1,
                   GMathFrustum& frustum) const {
    m_get_frustum_callback(*this, corner0, corner1, frustum);
  }

  // Copies the three callbacks.
  SampleRayGenerator& operator=(SampleRayGenerator const& other) = default;

 protected:
  // Sets nothing: a concrete generator stores its callbacks itself.
  SampleRayGenerator() {}
  SampleRayGenerator(SampleRayGenerator const& other) = default;

  SAMPLING_LOCAL void set_callbacks(GetRayCallback ray_callback, GetRaysCallback rays_callback,
                                    GetFrustumCallback frustum_callback);

  // Stores callbacks written against the concrete record type G. Each is
  // reached through a small thunk that restores the concrete type with a
  // static_cast (the callee is inlined into it), so no call goes through a
  // function pointer of the wrong type.
  template <typename G, bool (*GetRay)(G const&, GMathVec2<double> const&, GMathRay&, double*),
            unsigned int (*GetRays)(G const&, GMathVec2<double> const*, unsigned int const&,
                                    GMathRay*, double*),
            void (*GetFrustum)(G const&, GMathVec2<double> const&, GMathVec2<double> const&,
                               GMathFrustum&)>
  void set_callbacks() {
    set_callbacks(&get_ray_thunk<G, GetRay>, &get_rays_thunk<G, GetRays>,
                  &get_frustum_thunk<G, GetFrustum>);
  }

  // Helpers for the ray builders of every generator.

  // A ray without differentials: flag and m_aux cleared.
  static void clear_differentials(GMathRay& ray) {
    ray.m_has_differentials = false;
    ray.m_aux[0] = 0.0;
    ray.m_aux[1] = 0.0;
  }
  // Every generated ray starts with the tracer's accumulators at zero.
  static void clear_aux_cleared(GMathRay& ray) {
    ray.m_aux_cleared[0] = 0.0;
    ray.m_aux_cleared[1] = 0.0;
  }
  // Weight 1.0 through a non-null pointer.
  static void store_unit_weight(double* weight) {
    if (weight)
      *weight = 1.0;
  }
  // Weight 1.0 into weights[0..count-1] of a non-null array (the second pass
  // of the array forms, after the rays are written).
  static void store_unit_weights(double* weights, unsigned int const& count) {
    if (!weights)
      return;
    for (unsigned int i = 0; i < count; ++i)
      weights[i] = 1.0;
  }

  GetRayCallback m_get_ray_callback;
  GetRaysCallback m_get_rays_callback;
  GetFrustumCallback m_get_frustum_callback;

 private:
  template <typename G, bool (*F)(G const&, GMathVec2<double> const&, GMathRay&, double*)>
  static bool get_ray_thunk(SampleRayGenerator const& g, GMathVec2<double> const& sample,
                            GMathRay& ray, double* weight) {
    return F(static_cast<G const&>(g), sample, ray, weight);
  }
  template <typename G, unsigned int (*F)(G const&, GMathVec2<double> const*, unsigned int const&,
                                          GMathRay*, double*)>
  static unsigned int get_rays_thunk(SampleRayGenerator const& g, GMathVec2<double> const* samples,
                                     unsigned int const& count, GMathRay* rays, double* weights) {
    return F(static_cast<G const&>(g), samples, count, rays, weights);
  }
  template <typename G,
            void (*F)(G const&, GMathVec2<double> const&, GMathVec2<double> const&, GMathFrustum&)>
  static void get_frustum_thunk(SampleRayGenerator const& g, GMathVec2<double> const& corner0,
                                GMathVec2<double> const& corner1, GMathFrustum& frustum) {
    F(static_cast<G const&>(g), corner0, corner1, frustum);
  }
};

static_assert(sizeof(SampleRayGenerator) == 24, "SampleRayGenerator: three callbacks");
