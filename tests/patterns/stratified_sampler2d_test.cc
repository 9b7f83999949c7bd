#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "platform/random/grandom_mt.h"
#include "sampling/patterns/radical_inverse.h"
#include "sampling/patterns/stratified_sampler2d.h"
#include "tests/patterns/pattern_support.h"

// Every path against the stratum formula written out with its own generator,
// over random grids, packet sizes and jitters: all samples (rows of x first),
// get_sample continuing the stream, then every packet, whose blocks of strata
// are cut at the grid's edge and together cover every stratum once.
TEST(StratifiedSampler2d, EveryPathIsTheStratumFormula) {
  EXPECT_TRUE(unit_from_u32(0u) == 0.0 && unit_from_u32(4294967295u) == 1.0 &&
              unit_from_u32(4294967294u) < 1.0);
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
    auto const same = [&](unsigned ix, unsigned iy, GMathVec2<double> const& got) {
      GMathVec2<double> const e = plain_stratum(reference, ix, iy, nx, ny, jx, jy);
      return std::memcmp(&e, &got, sizeof e) == 0;
    };
    std::vector<GMathVec2<double>> out(nx * ny);
    sampler.get_all_samples(out.data());
    for (unsigned int i = 0; i < nx * ny; ++i)
      ASSERT_TRUE(same(i % nx, i / nx, out[i])) << "all, sample " << i;
    for (unsigned int i = 0; round % 8 == 0 && i < nx * ny; ++i) {
      GMathVec2<double> one;
      sampler.get_sample(i, one);
      ASSERT_TRUE(same(i % nx, i / nx, one)) << "one, sample " << i;
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
      for (unsigned int iy = y0; iy < y1; ++iy)
        for (unsigned int ix = x0; ix < x1; ++ix, ++k)
          ASSERT_TRUE(same(ix, iy, out[k])) << "packet " << p << " sample " << k;
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
