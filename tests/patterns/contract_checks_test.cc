// Caller contracts of the sample patterns that checked builds report. The
// older ones (packet sizes, Halton base, Hammersley sub-sets, Hammersley mode
// before Sampling::init) are covered beside their samplers.
#include <gtest/gtest.h>

#include "platform/random/grandom_mt.h"
#include "sampling/samplers.h"

#ifdef SAMPLING_CHECKS
TEST(PatternContractsDeathTest, SinglePointOfAnEmptyHammersleySet) {
  HammersleySampler2d empty;
  empty.init(3u, 0u, 5u);
  GMathVec2<double> sample;
  EXPECT_DEATH(empty.get_sample(0, sample), "HammersleySampler2d::get_sample: the set is empty");
  // The array and packet queries of an empty set are defined: nothing written.
  EXPECT_EQ(empty.get_packet_samples(0, &sample, sample, sample), 0u);
}

TEST(PatternContractsDeathTest, StratifiedQueriesOfAnEmptyGrid) {
  GRandomMt random(5);
  StratifiedSampler2d sampler;
  sampler.init(random, 0, 4, 1, 1, 1.0, 1.0);
  GMathVec2<double> sample, c0, c1;
  EXPECT_DEATH(sampler.get_sample(0, sample), "StratifiedSampler2d::get_sample: count_x is 0");
  EXPECT_DEATH(sampler.get_packet_samples(0, &sample, c0, c1),
               "StratifiedSampler2d::get_packet_samples: count_x is 0");
}
#endif
