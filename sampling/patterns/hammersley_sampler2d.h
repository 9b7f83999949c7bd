#pragma once

#include "platform/random/grandom_mt.h"
#include "sampling/patterns/sampler2d.h"

// Two-dimensional Hammersley set of N = count_x * count_y points:
//   u(k) = radical_inverse_2(k + seed)          (the sum wrapping modulo 2^32)
//   v(k) = (k + v_offset) / N                   (times the stored 1/N)
// where v_offset is the base-3 radical inverse of the seed. Seeds keep their
// low 16 bits only, so seeds that differ by a multiple of 65536 agree. With
// seed 0 this is the classic set; every seed keeps one point in each of the N
// horizontal strips of height 1/N. Both coordinates stay below 1.
//
// Modes (chosen by the init operation, which stores the callbacks):
//  - single packet: every packet query returns all N points, box (0,0)-(1,1);
//  - packet grid: Px columns by Py bands (powers of two); packet p takes every
//    Px-th index of band p div Px starting p mod Px places in; its u lie in a
//    column of width 1/Px, its v in a band of nominal height 1/Py (leaving it
//    by under half a point spacing when Py does not divide N);
//  - sub-sets (init_sub): one of subset_count disjoint sets of a larger set.
class SAMPLING_API HammersleySampler2d : public Sampler2d {
 public:
  // Sets nothing: an init operation must run before the first query.
  HammersleySampler2d() {}
  HammersleySampler2d(HammersleySampler2d const& other) = default;

  // Single-packet mode: N = count_x * count_y, one packet.
  void init(unsigned int const& seed, unsigned int const& count_x, unsigned int const& count_y);

  // Packet-grid mode: the packet count along each axis is the smallest power
  // of two 2^k with (count >> k) <= packet_size. The largest packet holds at
  // most ceil((N / Py + 1) / Px) samples, which bounds the caller's array.
  void init(unsigned int const& seed, unsigned int const& count_x, unsigned int const& count_y,
            unsigned int const& packet_size_x, unsigned int const& packet_size_y);

  // Packet-grid mode with the seed drawn from `random` (one output, of which
  // the low 16 bits are kept). Nothing else is drawn.
  void init(GRandomMt& random, unsigned int const& count_x, unsigned int const& count_y,
            unsigned int const& packet_size_x, unsigned int const& packet_size_y);

  // Sub-set mode: splits the Hammersley set of T = subset_count * count points
  // into subset_count disjoint sets of count points and serves set
  // subset_index. Caller guarantees subset_index < subset_count and T != 0.
  void init_sub(unsigned int const& seed, unsigned int const& subset_count,
                unsigned int const& subset_index, unsigned int const& count);

  // Replaces the seed (mod 65536) and nothing else: u moves at once, the v
  // offset keeps the value computed by the last init.
  void set_seed(unsigned int const& seed);

  // u and v of point `index` of the underlying set.
  void get_sample_u(unsigned int const& index, double& u) const;
  void get_sample_v(unsigned int const& index, double& v) const;

  unsigned int get_packet_count_x() const { return m_packet_count_x; }
  unsigned int get_packet_count_y() const { return m_packet_count_y; }

  HammersleySampler2d& operator=(HammersleySampler2d const& other) = default;

 private:
  struct HammersleyPoints;

  // m_v_offset = base-3 radical inverse of m_seed.
  SAMPLING_LOCAL void compute_v_offset();
  // Index into the whole set of sample i of the selected sub-set.
  SAMPLING_LOCAL unsigned int get_sub_index(unsigned int const& i) const;

  SAMPLING_LOCAL static void get_sample_callback(HammersleySampler2d& sampler,
                                                 unsigned int const& index,
                                                 GMathVec2<double>& sample);
  SAMPLING_LOCAL static void get_all_samples_callback(HammersleySampler2d& sampler,
                                                      GMathVec2<double>* samples);
  SAMPLING_LOCAL static unsigned int get_single_packet_samples_callback(
      HammersleySampler2d& sampler, unsigned int const& packet, GMathVec2<double>* samples,
      GMathVec2<double>& corner0, GMathVec2<double>& corner1);
  SAMPLING_LOCAL static unsigned int get_packet_samples_callback(HammersleySampler2d& sampler,
                                                                 unsigned int const& packet,
                                                                 GMathVec2<double>* samples,
                                                                 GMathVec2<double>& corner0,
                                                                 GMathVec2<double>& corner1);
  SAMPLING_LOCAL static void get_sub_sample_callback(HammersleySampler2d& sampler,
                                                     unsigned int const& index,
                                                     GMathVec2<double>& sample);
  SAMPLING_LOCAL static void get_all_sub_samples_callback(HammersleySampler2d& sampler,
                                                          GMathVec2<double>* samples);
  SAMPLING_LOCAL static unsigned int get_sub_packet_samples_callback(HammersleySampler2d& sampler,
                                                                     unsigned int const& packet,
                                                                     GMathVec2<double>* samples,
                                                                     GMathVec2<double>& corner0,
                                                                     GMathVec2<double>& corner1);

  unsigned int m_count_x;
  unsigned int m_count_y;
  unsigned int m_packet_count_x;
  unsigned int m_packet_count_y;
  unsigned int m_seed;
  unsigned int m_subset_index;
  unsigned int m_subset_count;
  double m_inv_packet_count_x;
  double m_inv_packet_count_y;
  double m_band_size;
  double m_v_offset;
  double m_inv_point_count;

  friend struct HammersleySampler2dLayout;
};

static_assert(sizeof(HammersleySampler2d) == 32 + 28 + 4 + 40, "HammersleySampler2d layout");
