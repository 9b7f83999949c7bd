// The Hammersley set's runs of sixteen consecutive points against the point
// formula, bit for bit; a set made without packet sizes is one packet.
#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "sampling/samplers.h"
#include "sampling/sampling.h"
#include "tests/patterns/pattern_support.h"

TEST(HammersleyRuns, HammersleyRunsOfSixteenEqualThePointFormula) {
  std::mt19937 rng(1616);
  HammersleySampler2d sampler;
  for (unsigned int trial = 0; trial < 3000; ++trial) {
    unsigned int const seed = rng(), count = 1u + rng() % (trial < 1500 ? 40u : 3000u);
    sampler.init(seed, count, 1);
    Points const all = all_paths(sampler);
    ASSERT_TRUE(sampler.get_packet_count_x() == 1 && sampler.get_packet_count_y() == 1);
    double const v_offset = radical_inverse_3(seed & 0xFFFFu), inv_count = 1.0 / count;
    for (unsigned int k = 0; k < count; ++k) {
      GMathVec2<double> const e(plain_radical_inverse_2(k + (seed & 0xFFFFu)),
                                (static_cast<double>(k) + v_offset) * inv_count);
      ASSERT_EQ(std::memcmp(&e, &all[k], sizeof e), 0) << count << " points, point " << k;
    }
  }
}
