#include "sampling/patterns/halton_sampler2d.h"

#include "sampling/checks.h"
#include "sampling/patterns/radical_inverse.h"

// The point formulas with the record's fields held in locals (the stores
// through the sample array could alias them) and the base's division
// prepared once per call.
struct HaltonSampler2d::HaltonPoints {
  explicit HaltonPoints(HaltonSampler2d const& sampler)
      : seed(sampler.m_seed), base(sampler.m_base), inv_base(sampler.m_inv_base) {}

  // Sample i: element n = i + seed of the sequence.
  void write(unsigned int const& i, GMathVec2<double>& sample) const {
    unsigned int const n = i + seed;
    sample.x = radical_inverse_2(n);
    sample.y = radical_inverse_b(n, base, inv_base);
  }

  unsigned int const seed;
  DigitDivisor const base;
  double const inv_base;
};

HaltonSampler2d::HaltonSampler2d() {
  set_callbacks<HaltonSampler2d, &get_sample_callback, &get_all_samples_callback,
                &get_packet_samples_callback>();
}

void HaltonSampler2d::init(unsigned int const& seed, unsigned int const& count_x,
                           unsigned int const& count_y, unsigned int const& base) {
  SAMPLING_CHECK(base >= 2, "HaltonSampler2d::init: base must be at least 2");
  m_seed = seed;
  m_count_x = count_x;
  m_count_y = count_y;
  m_base = base;
  Sampler2d::init(count_x * count_y, 1);
  m_inv_base = 1.0 / static_cast<double>(base);
}

void HaltonSampler2d::get_sample_u(unsigned int const& index, double& u) const {
  u = radical_inverse_2(index + m_seed);
}

void HaltonSampler2d::get_sample_v(unsigned int const& index, double& v) const {
  v = radical_inverse_b(index + m_seed, m_base, m_inv_base);
}

void HaltonSampler2d::get_sample_uv(unsigned int const& index, double& u, double& v) const {
  get_sample_u(index, u);
  get_sample_v(index, v);
}

void HaltonSampler2d::get_sample_callback(HaltonSampler2d& sampler, unsigned int const& index,
                                          GMathVec2<double>& sample) {
  Callbacks::get_sample(sampler, index, sample);
}

void HaltonSampler2d::get_all_samples_callback(HaltonSampler2d& sampler,
                                               GMathVec2<double>* samples) {
  HaltonPoints const points(sampler);
  unsigned int const n = sampler.m_sample_count;
  for (unsigned int i = 0; i < n; ++i)
    points.write(i, samples[i]);
}

unsigned int HaltonSampler2d::get_packet_samples_callback(HaltonSampler2d& sampler,
                                                          unsigned int const& packet,
                                                          GMathVec2<double>* samples,
                                                          GMathVec2<double>& corner0,
                                                          GMathVec2<double>& corner1) {
  // All N samples as one packet, through the array path.
  get_all_samples_callback(sampler, samples);
  (void)packet;
  return whole_square_packet(corner0, corner1, sampler.m_sample_count);
}
