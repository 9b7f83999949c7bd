#include "sampling/patterns/stratified_sampler2d.h"

#include <algorithm>

#include "sampling/checks.h"
#include "sampling/patterns/radical_inverse.h"

StratifiedSampler2d::StratifiedSampler2d() {
  set_callbacks<StratifiedSampler2d, &get_sample_callback, &get_all_samples_callback,
                &get_packet_samples_callback>();
}

void StratifiedSampler2d::init(GRandomMt& random, unsigned int const& count_x,
                               unsigned int const& count_y, unsigned int const& packet_size_x,
                               unsigned int const& packet_size_y, double const& jitter_x,
                               double const& jitter_y) {
  SAMPLING_CHECK(packet_size_x >= 1 && packet_size_y >= 1,
                 "StratifiedSampler2d::init: packet sizes must be at least 1");
  m_count_x = count_x;
  m_count_y = count_y;
  m_packet_size_x = packet_size_x;
  m_packet_size_y = packet_size_y;
  m_random = &random;
  m_packet_count_x = (count_x + packet_size_x - 1) / packet_size_x;
  m_packet_count_y = (count_y + packet_size_y - 1) / packet_size_y;
  Sampler2d::init(count_x * count_y, m_packet_count_x * m_packet_count_y);
  m_inv_count_x = 1.0 / static_cast<double>(count_x);
  m_inv_count_y = 1.0 / static_cast<double>(count_y);
  m_jitter_x = jitter_x;
  m_jitter_y = jitter_y;
  m_offset_x = 0.5 - (jitter_x * 0.5);
  m_offset_y = 0.5 - (jitter_y * 0.5);
}

// The stratum formula with the record's fields held in locals: each draw is
// a call the compiler cannot see into, after which it would otherwise read
// every field of the record again.
struct StratifiedSampler2d::StratumPoints {
  explicit StratumPoints(StratifiedSampler2d const& sampler)
      : random(*sampler.m_random),
        jitter_x(sampler.m_jitter_x),
        jitter_y(sampler.m_jitter_y),
        offset_x(sampler.m_offset_x),
        offset_y(sampler.m_offset_y),
        inv_count_x(sampler.m_inv_count_x),
        inv_count_y(sampler.m_inv_count_y) {}

  void write(unsigned int const& ix, unsigned int const& iy, GMathVec2<double>& sample) const {
    // x is stored before the second draw: the draw order is part of the
    // stream.
    sample.x =
        ((unit_from_u32(random.genrand_int32()) * jitter_x + static_cast<double>(ix)) + offset_x) *
        inv_count_x;
    sample.y =
        ((unit_from_u32(random.genrand_int32()) * jitter_y + static_cast<double>(iy)) + offset_y) *
        inv_count_y;
  }

  GRandomMt const& random;
  double const jitter_x, jitter_y, offset_x, offset_y, inv_count_x, inv_count_y;
};

void StratifiedSampler2d::get_sample_xy(unsigned int const& ix, unsigned int const& iy,
                                        GMathVec2<double>& sample) {
  StratumPoints(*this).write(ix, iy, sample);
}

void StratifiedSampler2d::get_sample_callback(StratifiedSampler2d& sampler,
                                              unsigned int const& index,
                                              GMathVec2<double>& sample) {
  SAMPLING_CHECK(sampler.m_count_x >= 1, "StratifiedSampler2d::get_sample: count_x is 0");
  sampler.get_sample_xy(index % sampler.m_count_x, index / sampler.m_count_x, sample);
}

void StratifiedSampler2d::get_all_samples_callback(StratifiedSampler2d& sampler,
                                                   GMathVec2<double>* samples) {
  unsigned int const count_x = sampler.m_count_x;
  unsigned int const count_y = sampler.m_count_y;
  StratumPoints const points(sampler);
  for (unsigned int iy = 0; iy < count_y; ++iy) {
    GMathVec2<double>* row = samples + static_cast<unsigned int>(iy * count_x);
    for (unsigned int ix = 0; ix < count_x; ++ix)
      points.write(ix, iy, row[ix]);
  }
}

unsigned int StratifiedSampler2d::get_packet_samples_callback(StratifiedSampler2d& sampler,
                                                              unsigned int const& packet,
                                                              GMathVec2<double>* samples,
                                                              GMathVec2<double>& corner0,
                                                              GMathVec2<double>& corner1) {
  SAMPLING_CHECK(sampler.m_count_x >= 1, "StratifiedSampler2d::get_packet_samples: count_x is 0");
  unsigned int const px = packet % sampler.m_packet_count_x;
  unsigned int const py = packet / sampler.m_packet_count_x;
  unsigned int const x0 = px * sampler.m_packet_size_x;
  unsigned int const x1 = std::min(x0 + sampler.m_packet_size_x, sampler.m_count_x);
  unsigned int const y0 = py * sampler.m_packet_size_y;
  unsigned int const y1 = std::min(y0 + sampler.m_packet_size_y, sampler.m_count_y);
  GMathVec2<double>* out = samples;
  StratumPoints const points(sampler);
  for (unsigned int iy = y0; iy < y1; ++iy) {
    for (unsigned int ix = x0; ix < x1; ++ix)
      points.write(ix, iy, *out++);
  }
  corner0 = GMathVec2<double>(static_cast<double>(x0) * sampler.m_inv_count_x,
                              static_cast<double>(y0) * sampler.m_inv_count_y);
  corner1 = GMathVec2<double>(static_cast<double>(x1) * sampler.m_inv_count_x,
                              static_cast<double>(y1) * sampler.m_inv_count_y);
  return static_cast<unsigned int>(out - samples);
}
