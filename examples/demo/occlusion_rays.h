#pragma once

#include "platform/math/gmath_vec2.h"
#include "platform/math/gmath_vec3.h"

// The occlusion directions of one hit: cosine-weighted about the shading
// normal, one per sample, with discard clipping against the geometric
// normal: a direction that does not point strictly above the true surface
// (dot with the geometric normal <= 0) is dropped, because the surface itself
// blocks it. The kept directions are packed at the front of directions[] in
// sample order; returns how many were written (at most count).
//
// Both normals are unit length and on the side the camera ray came from.
//
// Today: Sampling::hemisphere_cosine_concentric in a local frame of the
// shading normal. This is the seam where
// CosineWeightedHemisphereRayGenerator takes over: init from a ray at the hit
// along the shading normal with a 180 degree cone, discard_clipped_samples
// with the geometric normal, then get_rays over the samples.
unsigned int occlusion_directions(GMathVec3<double> const& shading_normal,
                                  GMathVec3<double> const& geometric_normal,
                                  GMathVec2<double> const* samples, unsigned int count,
                                  GMathVec3<double>* directions);
