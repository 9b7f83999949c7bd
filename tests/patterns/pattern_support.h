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

inline Points all_samples(Sampler2d& sampler) {
  Points samples(sampler.get_sample_count());
  sampler.get_all_samples(samples.data());
  return samples;
}

inline bool same_bits(Points const& a, Points const& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof a[0]) == 0;
}

// The array paths of a single-packet sampler (get_all_samples, and packet 0
// with the unit box) against get_sample, sample by sample, bit for bit.
inline ::testing::AssertionResult single_packet_paths_match_get_sample(Sampler2d& sampler) {
  unsigned int const count = sampler.get_sample_count();
  Points all = all_samples(sampler), packet(count);
  GMathVec2<double> c0, c1;
  if (sampler.get_packet_samples(0, packet.data(), c0, c1) != count)
    return ::testing::AssertionFailure() << "packet 0 does not hold every sample";
  if (!(c0.x == 0.0 && c0.y == 0.0 && c1.x == 1.0 && c1.y == 1.0))
    return ::testing::AssertionFailure() << "packet box is not the unit square";
  for (unsigned int i = 0; i < count; ++i) {
    GMathVec2<double> one;
    sampler.get_sample(i, one);
    if (std::memcmp(&one, &all[i], sizeof one) != 0 ||
        std::memcmp(&one, &packet[i], sizeof one) != 0)
      return ::testing::AssertionFailure() << "sample " << i;
  }
  return ::testing::AssertionSuccess();
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
