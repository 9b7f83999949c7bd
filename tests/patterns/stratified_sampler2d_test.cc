#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "platform/random/grandom_mt.h"
#include "sampling/patterns/radical_inverse.h"
#include "sampling/patterns/stratified_sampler2d.h"
#include "tests/patterns/pattern_support.h"

namespace {

bool same_point(GMathVec2<double> const& a, GMathVec2<double> const& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

}  // namespace

TEST(StratifiedSampler2d, UnitFromU32ReachesBothEndsExactly) {
  std::uint64_t bits;
  std::memcpy(&bits, &k_unit_from_u32_scale, 8);
  EXPECT_EQ(bits, 0x3DF0000000100000u);
  EXPECT_EQ(unit_from_u32(0u), 0.0);
  EXPECT_EQ(unit_from_u32(4294967295u), 1.0);
  EXPECT_LT(unit_from_u32(4294967294u), 1.0);
}

TEST(StratifiedSampler2d, JitterZeroGivesStratumCentresInRowOrder) {
  GRandomMt mt(7), reference(7);
  StratifiedSampler2d s;
  s.init(mt, 3, 2, 1, 1, 0.0, 0.0);
  EXPECT_EQ(s.get_sample_count(), 6u);
  std::vector<GMathVec2<double>> out(6);
  s.get_all_samples(out.data());
  double const xs[3] = {1.0 / 6, 0.5, 5.0 / 6};
  for (unsigned i = 0; i < 6; ++i) {
    EXPECT_DOUBLE_EQ(out[i].x, xs[i % 3]) << i;
    EXPECT_DOUBLE_EQ(out[i].y, i < 3 ? 0.25 : 0.75) << i;
  }
  // Two draws per sample even without jitter.
  for (int i = 0; i < 12; ++i)
    reference.genrand_int32();
  EXPECT_EQ(mt.genrand_int32(), reference.genrand_int32());
}

TEST(StratifiedSampler2d, WorkedPacketExamples) {
  GRandomMt mt(3);
  StratifiedSampler2d s;
  GMathVec2<double> out[2], c0, c1;
  // Packet contents and boxes against the formula are the fast-path test's.
  // Five columns in packets of two: the last packet column is one stratum
  // wide and ends at 5 * (1/5).
  s.init(mt, 5, 1, 2, 1, 1.0, 1.0);
  ASSERT_EQ(s.get_packet_count(), 3u);
  EXPECT_EQ(s.get_packet_samples(2, out, c0, c1), 1u);
  EXPECT_EQ(c1.x, 5 * (1.0 / 5));
  // An empty grid writes nothing and draws nothing.
  GRandomMt ref(3);
  mt.seed(3);
  s.init(mt, 4, 0, 1, 1, 1.0, 1.0);
  out[0] = GMathVec2<double>(-1.0, -1.0);
  s.get_all_samples(out);
  EXPECT_EQ(out[0], GMathVec2<double>(-1.0, -1.0));
  EXPECT_EQ(mt.genrand_int32(), ref.genrand_int32());
}

TEST(StratifiedSampler2d, JitterKeepsEverySampleInsideItsOwnStratum) {
  unsigned const nx = 7, ny = 5;
  std::vector<GMathVec2<double>> out(nx * ny);
  for (double const j : {1.0, 0.5}) {
    for (unsigned seed = 0; seed < 200; ++seed) {
      GRandomMt mt(seed);
      StratifiedSampler2d s;
      s.init(mt, nx, ny, 2, 2, j, j);
      s.get_all_samples(out.data());
      for (unsigned i = 0; i < nx * ny; ++i) {
        // The jitter interval is the middle fraction j of the stratum; the
        // multiplication by the stored inverse is monotonic, so its bounds
        // are exact.
        double const lo = 0.5 - j * 0.5, hi = lo + j;
        double const x0 = ((i % nx) + lo) * (1.0 / nx), x1 = ((i % nx) + hi) * (1.0 / nx);
        double const y0 = ((i / nx) + lo) * (1.0 / ny), y1 = ((i / nx) + hi) * (1.0 / ny);
        EXPECT_TRUE(out[i].x >= x0 && out[i].x <= x1 && out[i].y >= y0 && out[i].y <= y1)
            << "seed " << seed << " jitter " << j << " index " << i;
      }
    }
  }
}

TEST(StratifiedSampler2d, CopyDrawsFromTheSameGenerator) {
  GRandomMt mt(99), ref(99);
  StratifiedSampler2d s;
  s.init(mt, 4, 4, 2, 2, 1.0, 1.0);
  StratifiedSampler2d copy;
  copy = s;
  StratifiedSampler2d constructed(s);
  GMathVec2<double> a, b, c;
  copy.get_sample(5, a);
  s.get_sample(5, b);
  constructed.get_sample(5, c);
  for (auto const& got : {a, b, c})
    EXPECT_TRUE(same_point(got, plain_stratum(ref, 1, 1, 4, 4, 1, 1)));
  EXPECT_EQ(copy.get_packet_count(), 4u);
}

#ifdef SAMPLING_CHECKS
TEST(StratifiedSampler2dDeathTest, InitRejectsAZeroPacketSize) {
  GRandomMt mt;
  StratifiedSampler2d s;
  EXPECT_DEATH(s.init(mt, 4, 4, 0, 1, 1.0, 1.0),
               "StratifiedSampler2d::init: packet sizes must be at least 1");
  EXPECT_DEATH(s.init(mt, 4, 4, 2, 0, 1.0, 1.0),
               "StratifiedSampler2d::init: packet sizes must be at least 1");
}
#endif
