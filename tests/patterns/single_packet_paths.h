#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "sampling/patterns/sampler2d.h"

// The array paths of a single-packet sampler (get_all_samples, and packet 0
// with the unit box) against get_sample, sample by sample, bit for bit.
inline ::testing::AssertionResult single_packet_paths_match_get_sample(Sampler2d& sampler) {
  unsigned int const count = sampler.get_sample_count();
  std::vector<GMathVec2<double>> all(count), packet(count);
  sampler.get_all_samples(all.data());
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
