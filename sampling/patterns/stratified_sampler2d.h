#pragma once

#include "platform/random/grandom_mt.h"
#include "sampling/patterns/sampler2d.h"

// Jittered grid of count_x by count_y strata. Stratum (ix, iy) is the cell
// [ix/count_x, (ix+1)/count_x) x [iy/count_y, (iy+1)/count_y); sample index i
// belongs to stratum (i mod count_x, i div count_x), rows of x first.
//
// The sampler is a stream, not a function of the index: every sample written
// draws two outputs from the caller's GRandomMt, so asking twice for one
// index gives two points of the same stratum. The generator is not owned,
// must outlive every query, and must not be used elsewhere meanwhile.
//
// Packets are blocks of packet_size_x by packet_size_y strata, cut at the
// grid's edge, numbered row by row.
class SAMPLING_API StratifiedSampler2d : public Sampler2d {
 public:
  // Stores the callbacks; the other fields are set by init().
  StratifiedSampler2d();
  StratifiedSampler2d(StratifiedSampler2d const& other) = default;

  // Sets up the grid; draws nothing. jitter_x and jitter_y in [0, 1] are the
  // fractions of a stratum over which a sample moves: 0 puts every sample at
  // its stratum's centre, 1 anywhere in the stratum, edges included.
  // Caller guarantees: packet_size_x, packet_size_y >= 1; count_x >= 1 for the
  // single-sample and packet queries; `random` outlives the sampler's use.
  void init(GRandomMt& random, unsigned int const& count_x, unsigned int const& count_y,
            unsigned int const& packet_size_x, unsigned int const& packet_size_y,
            double const& jitter_x, double const& jitter_y);

  // Copies the whole record; the copy draws from the same generator.
  StratifiedSampler2d& operator=(StratifiedSampler2d const& other) = default;

 private:
  // Jittered sample of stratum (ix, iy); two draws, x first.
  SAMPLING_LOCAL void get_sample_xy(unsigned int const& ix, unsigned int const& iy,
                                    GMathVec2<double>& sample);
  struct StratumPoints;

  SAMPLING_LOCAL static void get_sample_callback(StratifiedSampler2d& sampler,
                                                 unsigned int const& index,
                                                 GMathVec2<double>& sample);
  SAMPLING_LOCAL static void get_all_samples_callback(StratifiedSampler2d& sampler,
                                                      GMathVec2<double>* samples);
  SAMPLING_LOCAL static unsigned int get_packet_samples_callback(StratifiedSampler2d& sampler,
                                                                 unsigned int const& packet,
                                                                 GMathVec2<double>* samples,
                                                                 GMathVec2<double>& corner0,
                                                                 GMathVec2<double>& corner1);

  GRandomMt* m_random;
  unsigned int m_count_x;
  unsigned int m_count_y;
  unsigned int m_packet_count_x;
  unsigned int m_packet_count_y;
  unsigned int m_packet_size_x;
  unsigned int m_packet_size_y;
  double m_inv_count_x;
  double m_inv_count_y;
  double m_jitter_x;
  double m_jitter_y;
  double m_offset_x;
  double m_offset_y;

  friend struct StratifiedSampler2dLayout;
};

static_assert(sizeof(StratifiedSampler2d) == 32 + 8 + 24 + 48, "StratifiedSampler2d layout");
