#pragma once

#include "platform/math/gmath_vec2.h"

// The three callbacks of a sampler whose pattern is a pure function of the
// sample index and which hands out all its samples as one packet. Point is
// the sampler's own member function writing (u, v) of a sample index; the
// sampler's named callbacks forward to these, so every such sampler
// walks its samples and writes its box the same way. Not part of the API.
// The box of a single-packet sampler's one packet: the whole square, (0,0)
// to (1,1). Returns `count`, the number of samples that packet holds.
inline unsigned int whole_square_packet(GMathVec2<double>& corner0, GMathVec2<double>& corner1,
                                        unsigned int const& count) {
  corner0 = GMathVec2<double>(0.0, 0.0);
  corner1 = GMathVec2<double>(1.0, 1.0);
  return count;
}

template <typename S, void (S::*Point)(unsigned int const&, double&, double&) const>
struct SinglePacketCallbacks {
  // Sample `index`.
  static void get_sample(S& sampler, unsigned int const& index, GMathVec2<double>& sample) {
    (sampler.*Point)(index, sample.x, sample.y);
  }

  // Samples 0 to N-1 into elements 0 to N-1. The point function runs on a
  // local copy of the record: the stores through `samples` could alias the
  // caller's record, which would force its fields to be read again per
  // sample; a local cannot be aliased.
  static void get_all_samples(S& sampler, GMathVec2<double>* samples) {
    S const local = sampler;
    unsigned int const n = local.get_sample_count();
    for (unsigned int i = 0; i < n; ++i)
      (local.*Point)(i, samples[i].x, samples[i].y);
  }

  // Ignores the packet number: all N samples, box (0,0) to (1,1); returns N.
  static unsigned int get_packet_samples(S& sampler, unsigned int const&,
                                         GMathVec2<double>* samples, GMathVec2<double>& corner0,
                                         GMathVec2<double>& corner1) {
    get_all_samples(sampler, samples);
    return whole_square_packet(corner0, corner1, sampler.get_sample_count());
  }
};
