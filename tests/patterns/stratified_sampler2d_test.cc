#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "platform/random/grandom_mt.h"
#include "sampling/patterns/radical_inverse.h"
#include "sampling/patterns/stratified_sampler2d.h"
#include "tests/patterns/pattern_support.h"

TEST(StratifiedSampler2d, UnitFromU32ReachesBothEndsExactly) {
  std::uint64_t bits;
  std::memcpy(&bits, &k_unit_from_u32_scale, 8);
  EXPECT_EQ(bits, 0x3DF0000000100000u);
  EXPECT_EQ(unit_from_u32(0u), 0.0);
  EXPECT_EQ(unit_from_u32(4294967295u), 1.0);
  EXPECT_LT(unit_from_u32(4294967294u), 1.0);
}

// Every path against the stratum formula written out with its own generator,
// over random grids, packet sizes and jitters: all samples (rows of x first),
// get_sample continuing the stream, then every packet, whose blocks of strata
// are cut at the grid's edge and together cover every stratum once.
TEST(StratifiedSampler2d, EveryPathIsTheStratumFormula) {
  std::mt19937 rng(99);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  unsigned int compared = 0;
  for (unsigned int round = 0; compared < 200000; ++round) {
    unsigned int const nx = 1 + rng() % 90, ny = 1 + rng() % 90;
    unsigned int const px = 1 + rng() % 12, py = 1 + rng() % 12;
    double const jx = round % 5 == 0 ? 1.0 : unit(rng), jy = round % 7 == 0 ? 0.0 : unit(rng);
    unsigned int const seed = rng();
    GRandomMt mt(seed), reference(seed);
    StratifiedSampler2d sampler;
    sampler.init(mt, nx, ny, px, py, jx, jy);
    ASSERT_EQ(sampler.get_sample_count(), nx * ny);
    std::vector<GMathVec2<double>> out(nx * ny);
    sampler.get_all_samples(out.data());
    for (unsigned int i = 0; i < nx * ny; ++i) {
      GMathVec2<double> const e = plain_stratum(reference, i % nx, i / nx, nx, ny, jx, jy);
      ASSERT_EQ(std::memcmp(&e, &out[i], sizeof e), 0) << "all, sample " << i;
    }
    for (unsigned int i = 0; round % 8 == 0 && i < nx * ny; ++i) {
      GMathVec2<double> one;
      sampler.get_sample(i, one);
      GMathVec2<double> const e = plain_stratum(reference, i % nx, i / nx, nx, ny, jx, jy);
      ASSERT_EQ(std::memcmp(&e, &one, sizeof e), 0) << "one, sample " << i;
    }
    unsigned int const packets_x = (nx + px - 1) / px;
    ASSERT_EQ(sampler.get_packet_count(), packets_x * ((ny + py - 1) / py));
    for (unsigned int p = 0; p < sampler.get_packet_count(); ++p) {
      GMathVec2<double> c0, c1;
      unsigned int const n = sampler.get_packet_samples(p, out.data(), c0, c1);
      unsigned int const x0 = (p % packets_x) * px, y0 = (p / packets_x) * py;
      unsigned int const x1 = std::min(x0 + px, nx), y1 = std::min(y0 + py, ny);
      ASSERT_TRUE(c0 == GMathVec2<double>(x0 * (1.0 / nx), y0 * (1.0 / ny)) &&
                  c1 == GMathVec2<double>(x1 * (1.0 / nx), y1 * (1.0 / ny)))
          << "packet " << p;
      unsigned int k = 0;
      for (unsigned int iy = y0; iy < y1; ++iy) {
        for (unsigned int ix = x0; ix < x1; ++ix, ++k) {
          GMathVec2<double> const e = plain_stratum(reference, ix, iy, nx, ny, jx, jy);
          ASSERT_EQ(std::memcmp(&e, &out[k], sizeof e), 0) << "packet " << p << " sample " << k;
        }
      }
      ASSERT_EQ(n, k);
    }
    // A packet number equal to the count, or an empty grid, writes and
    // draws nothing.
    GMathVec2<double> sentinel(-1.0, -1.0), c0, c1;
    ASSERT_EQ(sampler.get_packet_samples(sampler.get_packet_count(), &sentinel, c0, c1), 0u);
    if (round % 8 == 1) {
      sampler.init(mt, nx, 0, px, py, jx, jy);
      sampler.get_all_samples(&sentinel);
    }
    ASSERT_TRUE(sentinel == GMathVec2<double>(-1.0, -1.0));
    ASSERT_EQ(mt.genrand_int32(), reference.genrand_int32());
    compared += 2 * nx * ny;
  }
}

#ifdef SAMPLING_CHECKS
TEST(StratifiedSampler2dDeathTest, CallerContracts) {
  GRandomMt mt(5);
  StratifiedSampler2d s;
  EXPECT_DEATH(s.init(mt, 4, 4, 0, 1, 1.0, 1.0),
               "StratifiedSampler2d::init: packet sizes must be at least 1");
  EXPECT_DEATH(s.init(mt, 4, 4, 2, 0, 1.0, 1.0),
               "StratifiedSampler2d::init: packet sizes must be at least 1");
  s.init(mt, 0, 4, 1, 1, 1.0, 1.0);
  GMathVec2<double> sample, c0, c1;
  EXPECT_DEATH(s.get_sample(0, sample), "StratifiedSampler2d::get_sample: count_x is 0");
  EXPECT_DEATH(s.get_packet_samples(0, &sample, c0, c1),
               "StratifiedSampler2d::get_packet_samples: count_x is 0");
}
#endif
