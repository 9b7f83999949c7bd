#pragma once

#include "sampling/patterns/sampler2d.h"
#include "sampling/patterns/single_packet_callbacks.h"

// N = count_x * count_y consecutive points of the two-dimensional Halton
// sequence, starting at sequence element `seed`. Sample i is element
// n = i + seed (wrapping modulo 2^32):
//   u = radical_inverse_2(n)          (the exact base-2 bit loop)
//   v = radical inverse of n in base `base`, weights 1/base, 1/base^2, ...
// Both coordinates lie in [0, 1) and no coordinate depends on N, so a larger
// N returns the same first points. Any 2^i b^j consecutive points put one
// point into every box of size 2^-i by b^-j (for a base b prime to 2).
// One packet: every packet query returns all N points with the box (0,0) to
// (1,1).
class SAMPLING_API HaltonSampler2d : public Sampler2d {
 public:
  // Stores the callbacks; the other fields are set by init().
  HaltonSampler2d();
  HaltonSampler2d(HaltonSampler2d const& other) = default;

  // N = count_x * count_y (modulo 2^32), one packet, sample 0 taken at
  // sequence element `seed` (all 32 bits kept), v in base `base`.
  // Caller guarantees: base >= 2 (the digit loop divides by it; base 2 puts
  // every point on the diagonal u = v).
  void init(unsigned int const& seed, unsigned int const& count_x, unsigned int const& count_y,
            unsigned int const& base);

  // Copies the whole record.
  HaltonSampler2d& operator=(HaltonSampler2d const& other) = default;

 private:
  // u and v of sample `index`.
  SAMPLING_LOCAL void get_sample_u(unsigned int const& index, double& u) const;
  SAMPLING_LOCAL void get_sample_v(unsigned int const& index, double& v) const;
  // Both coordinates of sample `index`: the point function of the callbacks.
  SAMPLING_LOCAL void get_sample_uv(unsigned int const& index, double& u, double& v) const;
  typedef SinglePacketCallbacks<HaltonSampler2d, &HaltonSampler2d::get_sample_uv> Callbacks;
  struct HaltonPoints;

  SAMPLING_LOCAL static void get_sample_callback(HaltonSampler2d& sampler,
                                                 unsigned int const& index,
                                                 GMathVec2<double>& sample);
  SAMPLING_LOCAL static void get_all_samples_callback(HaltonSampler2d& sampler,
                                                      GMathVec2<double>* samples);
  SAMPLING_LOCAL static unsigned int get_packet_samples_callback(HaltonSampler2d& sampler,
                                                                 unsigned int const& packet,
                                                                 GMathVec2<double>* samples,
                                                                 GMathVec2<double>& corner0,
                                                                 GMathVec2<double>& corner1);

  unsigned int m_count_x;
  unsigned int m_count_y;
  unsigned int m_seed;
  unsigned int m_base;
  double m_inv_base;
};

static_assert(sizeof(HaltonSampler2d) == 32 + 16 + 8, "HaltonSampler2d layout");
