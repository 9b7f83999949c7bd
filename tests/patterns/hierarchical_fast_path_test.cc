// The hierarchical sampler's array paths (the point function on a local copy
// of the record; Sobol's second component eight bits at a time) against the
// one-sample path and the bit loop, over millions of random inputs.

#include <gtest/gtest.h>

#include <random>

#include "sampling/patterns/sobol_components.h"
#include "sampling/samplers.h"
#include "sampling/sampling.h"
#include "tests/patterns/pattern_support.h"

namespace {

TEST(HierarchicalSampler2dFastPath, SobolByBytesIsTheBitLoop) {
  for (unsigned int n = 0; n < (1u << 20); ++n)
    ASSERT_EQ(sobol_2_by_bytes(n), sobol_2(n)) << "n " << n;
  std::mt19937 rng(8);
  for (unsigned int i = 0; i < 1000000; ++i) {
    unsigned int const n = rng();
    ASSERT_EQ(sobol_2_by_bytes(n), sobol_2(n)) << "n " << n;
  }
  EXPECT_EQ(sobol_2_by_bytes(0xFFFFFFFFu), sobol_2(0xFFFFFFFFu));
}

TEST(HierarchicalSampler2dFastPath, ArrayPathsMatchTheOneSamplePathInEveryMode) {
  Sampling::init();
  std::mt19937 rng(9);
  HierarchicalSampler2d sampler;
  unsigned int compared = 0;
  for (unsigned int round = 0; compared < 1100000; ++round) {
    auto const mode = static_cast<HierarchicalSampler2d::Mode>(round % 4);
    unsigned int const count = 1u + rng() % 3000u;
    unsigned int const sets = 1u + rng() % 3u;
    sampler.set_mode(mode);
    sampler.init(rng(), count, sets, rng() % sets);
    ASSERT_TRUE(single_packet_paths_match_get_sample(sampler)) << "mode " << mode;
    compared += count;
  }
  Sampling::destroy();
}

}  // namespace
