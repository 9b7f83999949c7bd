#include "examples/demo/pixel_sample_sets.h"

unsigned int hash_u32(unsigned int x) {
  x ^= x >> 16;
  x *= 0x7feb352du;
  x ^= x >> 15;
  x *= 0x846ca68bu;
  x ^= x >> 16;
  return x;
}

void PixelSampleSets::init(unsigned int seed, unsigned int samples_per_pixel,
                           unsigned int occlusion_count) {
  m_seed = seed;
  m_samples_per_pixel = samples_per_pixel;
  m_occlusion_count = occlusion_count;
  m_sampler.set_mode(HierarchicalSampler2d::HAMMERSLEY);
  // The first init for a pattern size builds its shared permutation (the
  // mode's one allocation); doing both sizes here, before the render threads
  // start, leaves every pixel to read them only.
  m_sampler.init(m_seed, m_samples_per_pixel, 1, 0);
  m_sampler.init(m_seed, m_occlusion_count * m_samples_per_pixel, 1, 0);
}

void PixelSampleSets::camera_samples(unsigned int pixel, GMathVec2<double>* samples) {
  m_sampler.init(hash_u32(m_seed ^ hash_u32(pixel)), m_samples_per_pixel, 1, 0);
  m_sampler.get_all_samples(samples);
}

void PixelSampleSets::occlusion_samples(unsigned int pixel, GMathVec2<double>* samples) {
  // Set s of init(seed, count, spp, s) starts count * s positions after the
  // seed's start, so the one set of the same M = count x spp points lists
  // every set in order.
  m_sampler.init(hash_u32(~m_seed ^ hash_u32(pixel)), m_occlusion_count * m_samples_per_pixel, 1,
                 0);
  m_sampler.get_all_samples(samples);
}
