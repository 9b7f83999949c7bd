#pragma once

#include "platform/math/gmath_vec2.h"
#include "sampling/samplers.h"

// The renderer's one source of 2D samples. Per pixel it hands out
//  - the camera samples: a Hammersley set of spp points over the pixel
//    square, with a seed of its own, so no structure repeats across the
//    image; and
//  - for camera sample s, the occlusion samples of its hit: set s of one
//    pattern of spp x occlusion_count points made for the pixel. A single set
//    covers only part of the square (the split keeps neighbouring points
//    apart, not each set uniform), but the spp hits of a pixel lie close
//    together and their sets make up the whole pattern, each point once: the
//    pixel's average sees a stratified hemisphere.
//
// Today the occlusion sets are HammersleySampler2d::init_sub sub-sets. This is
// the seam where HierarchicalSampler2d::init(seed, count, set_count,
// set_index) takes over for both (its Hammersley mode orders a set's points so
// that consecutive ones lie far apart; it needs Sampling::init at start-up).
//
// One object per thread; nothing allocates.
class PixelSampleSets {
 public:
  void init(unsigned int seed, unsigned int samples_per_pixel, unsigned int occlusion_count);

  // Writes the samples_per_pixel camera samples of `pixel` into samples[].
  void camera_samples(unsigned int pixel, GMathVec2<double>* samples);
  // Writes the occlusion_count occlusion samples of camera sample `sample`
  // of `pixel` into samples[].
  void occlusion_samples(unsigned int pixel, unsigned int sample, GMathVec2<double>* samples);

 private:
  unsigned int m_seed = 0;
  unsigned int m_samples_per_pixel = 1;
  unsigned int m_occlusion_count = 1;
  HammersleySampler2d m_sampler;
};

// A 32-bit integer hash (avalanching every input bit), for per-pixel seeds.
unsigned int hash_u32(unsigned int x);
