#pragma once

#include "platform/math/gmath_ray.h"
#include "platform/math/gmath_vec2.h"
#include "platform/math/gmath_vec3.h"
#include "sampling/ray_generators.h"

// The occlusion rays of one hit, made the way a renderer makes them: a
// CosineWeightedHemisphereRayGenerator initialised from a ray at the hit
// along the shading normal with the full 180-degree cone, discarding the
// samples whose direction does not point strictly above the true surface
// (dot with the geometric normal <= 0: the surface itself blocks them).
// The kept rays are packed at the front of rays[] in sample order; returns
// how many were written (at most count).
//
// Both normals are unit length and on the side the camera ray came from.
// `generator` is the caller's, one per thread, reused from hit to hit: init
// sets it up anew for each hit.
unsigned int occlusion_rays(CosineWeightedHemisphereRayGenerator& generator,
                            GMathVec3<double> const& origin,
                            GMathVec3<double> const& shading_normal,
                            GMathVec3<double> const& geometric_normal,
                            GMathVec2<double> const* samples, unsigned int count, GMathRay* rays);
