#pragma once

#include "platform/math/gmath_vec2.h"
#include "sampling/samplers.h"

// The renderer's one source of 2D samples, HierarchicalSampler2d sets seeded
// per pixel. Per pixel it hands out
//  - the camera samples: the one set of an spp-point pattern with the pixel's
//    camera seed, spread over the pixel square; and
//  - for camera sample s, the occlusion samples of its hit: set s of a
//    pattern of spp sets of occlusion_count points with the pixel's occlusion
//    seed. The sets never repeat a point and together make up the whole
//    pattern, so the spp hits of a pixel, which lie close together, share out
//    one well-spread pattern of hemisphere samples between them; in the
//    Hammersley mode consecutive points of the pattern's order lie far apart,
//    so each set alone is spread too.
//    Set s is the run of occlusion_count points from s occlusion_count on in
//    the pattern's order, in every mode, so the pixel's pattern is written
//    whole, by one init, and hit s reads its set from it: the points of the
//    init of set s alone, without a sampler set-up per hit.
//
// The Hammersley mode needs Sampling::init before the first pixel and serves
// patterns of up to 2048 points; larger ones (spp x occlusion_count above
// that) get the Halton pattern of the same seed and set instead. The first
// init for a pattern size builds the shared permutation; every later one, in
// any thread, only reads it, so the per-pixel path allocates nothing.
//
// One object per thread.
class PixelSampleSets {
 public:
  // Stores the settings and builds the shared permutations of both pattern
  // sizes; call it (after Sampling::init) before the render threads start.
  void init(unsigned int seed, unsigned int samples_per_pixel, unsigned int occlusion_count);

  // Writes the samples_per_pixel camera samples of `pixel` into samples[].
  void camera_samples(unsigned int pixel, GMathVec2<double>* samples);
  // Writes the samples_per_pixel x occlusion_count occlusion samples of
  // `pixel` into samples[]: those of camera sample s from s occlusion_count on.
  void occlusion_samples(unsigned int pixel, GMathVec2<double>* samples);

 private:
  unsigned int m_seed = 0;
  unsigned int m_samples_per_pixel = 1;
  unsigned int m_occlusion_count = 1;
  HierarchicalSampler2d m_sampler;
};

// A 32-bit integer hash (avalanching every input bit), for per-pixel seeds.
unsigned int hash_u32(unsigned int x);
