#include <gtest/gtest.h>

#include <random>

#include "platform/random/grandom_fast_mt.h"
#include "platform/random/grandom_mt.h"

TEST(GRandomMt, MatchesStdMt19937ForManySeeds) {
  for (unsigned int seed : {0u, 1u, 5489u, 123456789u, 4294967295u}) {
    GRandomMt mt(seed);
    std::mt19937 reference(seed);
    for (int i = 0; i < 5000; ++i) {
      ASSERT_EQ(mt.genrand_int32(), reference()) << "seed " << seed << " output " << i;
    }
    // Reseeding restarts the stream.
    mt.seed(seed);
    reference.seed(seed);
    EXPECT_EQ(mt.genrand_int32(), reference()) << "seed " << seed;
  }
  // The 10000th output of the default seed is the reference value of the
  // C++ standard ([rand.predef]).
  GRandomMt mt;
  unsigned int last = 0;
  for (int i = 0; i < 10000; ++i)
    last = mt.genrand_int32();
  EXPECT_EQ(last, 4123659995u);
}

TEST(GRandomFastMt, TableIsTheDefaultSeedStream) {
  ASSERT_EQ(GRandomFastMt::m_table_size, 65536u);
  std::mt19937 reference(5489u);
  for (unsigned int j = 0; j < GRandomFastMt::m_table_size; ++j) {
    ASSERT_EQ(GRandomFastMt::m_table[j], reference()) << "entry " << j;
  }
  EXPECT_EQ(GRandomFastMt::m_table[0], 3499211612u);
}
