#include "sampling/patterns/halton_sampler2d.h"

#include "sampling/checks.h"
#include "sampling/patterns/radical_inverse.h"

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
  Callbacks::get_all_samples(sampler, samples);
}

unsigned int HaltonSampler2d::get_packet_samples_callback(HaltonSampler2d& sampler,
                                                          unsigned int const& packet,
                                                          GMathVec2<double>* samples,
                                                          GMathVec2<double>& corner0,
                                                          GMathVec2<double>& corner1) {
  return Callbacks::get_packet_samples(sampler, packet, samples, corner0, corner1);
}
