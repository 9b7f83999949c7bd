#pragma once

// Helpers shared by the point-pattern tests.

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "platform/random/grandom_mt.h"
#include "sampling/patterns/hierarchical_sampler2d.h"
#include "sampling/patterns/radical_inverse.h"
#include "sampling/patterns/sampler2d.h"
#include "sampling/sampling.h"

using Points = std::vector<GMathVec2<double>>;

// All samples of `sampler`, checking that nothing is written past them.
inline Points all_samples(Sampler2d& sampler) {
  Points samples(sampler.get_sample_count() + 1, GMathVec2<double>(-1.0, -1.0));
  sampler.get_all_samples(samples.data());
  EXPECT_TRUE(samples.back() == GMathVec2<double>(-1.0, -1.0)) << "written past the samples";
  samples.pop_back();
  return samples;
}

inline bool same_bits(Points const& a, Points const& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof a[0]) == 0;
}

// All samples of a sampler of one packet, checking that the packet of the
// whole square and every get_sample give them too, bit for bit.
inline Points all_paths(Sampler2d& sampler) {
  Points const all = all_samples(sampler);
  Points packet(all.size() + 1), one(all.size());
  GMathVec2<double> c0, c1;
  EXPECT_EQ(sampler.get_packet_count(), 1u);
  EXPECT_EQ(sampler.get_packet_samples(0, packet.data(), c0, c1), all.size());
  packet.pop_back();
  EXPECT_TRUE(same_bits(packet, all) && c0 == GMathVec2<double>(0, 0) &&
              c1 == GMathVec2<double>(1, 1));
  for (unsigned int i = 0; i < all.size(); ++i)
    sampler.get_sample(i, one[i]);
  EXPECT_TRUE(same_bits(one, all)) << "get_sample";
  return all;
}

// The base-2 radical inverse by its digit loop.
inline double plain_radical_inverse_2(unsigned int n) {
  double result = 0.0, w = 0.5;
  for (; n != 0; n >>= 1, w = w * 0.5) {
    if (n & 1u)
      result = w + result;
  }
  return result;
}

// The jittered sample of stratum (ix, iy) written out from the formula,
// drawing from its own generator, x first.
inline GMathVec2<double> plain_stratum(GRandomMt& mt, unsigned ix, unsigned iy, unsigned nx,
                                       unsigned ny, double jx, double jy) {
  GMathVec2<double> s;
  s.x = ((unit_from_u32(mt.genrand_int32()) * jx + ix) + (0.5 - jx * 0.5)) * (1.0 / nx);
  s.y = ((unit_from_u32(mt.genrand_int32()) * jy + iy) + (0.5 - jy * 0.5)) * (1.0 / ny);
  return s;
}

// Reaches the private shared table of HierarchicalSampler2d for the tests.
struct HierarchicalSampler2dAccess {
  static unsigned int* get_indices(unsigned int const& count) {
    return HierarchicalSampler2d::get_indices(count);
  }
  static CoreAtomic64* table() { return HierarchicalSampler2d::m_table; }
  static unsigned int table_size() { return HierarchicalSampler2d::m_table_size; }
  static unsigned int const* indices(HierarchicalSampler2d const& sampler) {
    return sampler.m_indices;
  }
};

// Holds the library started for the length of a test, so that every test
// ends with the table freed (the leak checker of the sanitizer build sees
// any permutation left behind).
struct LibraryScope {
  LibraryScope() { Sampling::init(); }
  ~LibraryScope() { Sampling::destroy(); }
};
