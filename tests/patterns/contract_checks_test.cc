// Caller contracts of the sample patterns that checked builds report.
#include <gtest/gtest.h>

#include "sampling/samplers.h"
#include "sampling/sampling.h"

#ifdef SAMPLING_CHECKS
TEST(PatternContractsDeathTest, CallerErrorsAreReported) {
  HammersleySampler2d empty;
  empty.init(3u, 0u, 5u);
  GMathVec2<double> sample, c0, c1;
  EXPECT_DEATH(empty.get_sample(0, sample), "HammersleySampler2d::get_sample: the set is empty");
  // The array and packet queries of an empty set are defined: nothing written.
  EXPECT_EQ(empty.get_packet_samples(0, &sample, c0, c1), 0u);
  EXPECT_DEATH(empty.init_sub(0, 3, 3, 4),
               "HammersleySampler2d::init_sub: subset_index must be below subset_count");
  HaltonSampler2d halton;
  EXPECT_DEATH(halton.init(0, 4, 4, 1), "HaltonSampler2d::init: base must be at least 2");
  GRandomMt mt(5);
  StratifiedSampler2d s;
  EXPECT_DEATH(s.init(mt, 4, 4, 0, 1, 1.0, 1.0), "packet sizes must be at least 1");
  EXPECT_DEATH(s.init(mt, 4, 4, 2, 0, 1.0, 1.0), "packet sizes must be at least 1");
  s.init(mt, 0, 4, 1, 1, 1.0, 1.0);
  EXPECT_DEATH(s.get_sample(0, sample), "StratifiedSampler2d::get_sample: count_x is 0");
  EXPECT_DEATH(s.get_packet_samples(0, &sample, c0, c1), "get_packet_samples: count_x is 0");
  // Hammersley mode needs the shared table; the other modes do not.
  Sampling::destroy();
  HierarchicalSampler2d hierarchical;
  EXPECT_DEATH(hierarchical.init(0, 4, 4, 0), "Hammersley mode before Sampling::init");
  hierarchical.set_mode(HierarchicalSampler2d::HALTON);
  hierarchical.init(0, 4, 4, 0);
  EXPECT_EQ(hierarchical.get_sample_count(), 4u);
}
#endif
