// The Hammersley sub-set paths (the index shuffle evaluated inline) against
// the points written out from the formula with the exported
// Sampling::shuffle_index, over a million samples of random sub-set splits.

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "sampling/patterns/radical_inverse.h"
#include "sampling/samplers.h"
#include "sampling/sampling.h"
#include "tests/patterns/pattern_support.h"

namespace {

TEST(HammersleySubSetFastPath, SubSetPathsMatchTheFormulaOnAMillionSamples) {
  std::mt19937 rng(57);
  HammersleySampler2d sampler;
  unsigned int compared = 0;
  while (compared < 1000000) {
    unsigned int const subsets = 1u + rng() % 16u;
    unsigned int const index = rng() % subsets;
    unsigned int const count = 1u + rng() % 4000u;
    unsigned int const seed = rng();
    sampler.init_sub(seed, subsets, index, count);
    std::vector<GMathVec2<double>> all(count), packet(count);
    sampler.get_all_samples(all.data());
    GMathVec2<double> c0, c1;
    ASSERT_EQ(sampler.get_packet_samples(0, packet.data(), c0, c1), count);
    unsigned int const total = subsets * count;
    double const v_offset = radical_inverse_3(seed & 0xFFFFu), inv_total = 1.0 / total;
    for (unsigned int i = 0; i < count; ++i) {
      unsigned int k = i * subsets + index;
      if (subsets % 2 == 0) {
        unsigned int const n = index * count + i;
        k = (2u * Sampling::shuffle_index(n >> 1, total >> 1)) | (n & 1u);
      }
      GMathVec2<double> const e(plain_radical_inverse_2(k + (seed & 0xFFFFu)),
                                (static_cast<double>(k) + v_offset) * inv_total);
      ASSERT_EQ(std::memcmp(&e, &all[i], sizeof e), 0) << subsets << " sub-sets, sample " << i;
      ASSERT_EQ(std::memcmp(&e, &packet[i], sizeof e), 0) << subsets << " sub-sets, sample " << i;
    }
    compared += count;
  }
}

}  // namespace
