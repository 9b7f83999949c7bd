// The stratified sampler's array paths (record fields held in locals across
// the draws) against the stratum formula written out with its own generator,
// over a million samples of random grids, packet sizes and jitters.

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "platform/random/grandom_mt.h"
#include "sampling/patterns/radical_inverse.h"
#include "sampling/patterns/stratified_sampler2d.h"

namespace {

GMathVec2<double> plain_stratum(GRandomMt& mt, unsigned ix, unsigned iy, unsigned nx, unsigned ny,
                                double jx, double jy) {
  GMathVec2<double> s;
  s.x = ((unit_from_u32(mt.genrand_int32()) * jx + ix) + (0.5 - jx * 0.5)) * (1.0 / nx);
  s.y = ((unit_from_u32(mt.genrand_int32()) * jy + iy) + (0.5 - jy * 0.5)) * (1.0 / ny);
  return s;
}

TEST(StratifiedSampler2dFastPath, ArrayPathsMatchTheFormulaOnAMillionSamples) {
  std::mt19937 rng(99);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  unsigned int compared = 0;
  for (unsigned int round = 0; compared < 1000000; ++round) {
    unsigned int const nx = 1 + rng() % 90, ny = 1 + rng() % 90;
    unsigned int const px = 1 + rng() % 12, py = 1 + rng() % 12;
    double const jx = round % 5 == 0 ? 1.0 : unit(rng), jy = round % 7 == 0 ? 0.0 : unit(rng);
    unsigned int const seed = rng();
    GRandomMt mt(seed), reference(seed);
    StratifiedSampler2d sampler;
    sampler.init(mt, nx, ny, px, py, jx, jy);
    std::vector<GMathVec2<double>> out(nx * ny);
    // All samples, rows of x first.
    sampler.get_all_samples(out.data());
    for (unsigned int i = 0; i < nx * ny; ++i) {
      GMathVec2<double> const e = plain_stratum(reference, i % nx, i / nx, nx, ny, jx, jy);
      ASSERT_EQ(std::memcmp(&e, &out[i], sizeof e), 0) << "all, sample " << i;
    }
    // Then every packet, the strata of each row of the packet in turn.
    for (unsigned int p = 0; p < sampler.get_packet_count(); ++p) {
      GMathVec2<double> c0, c1;
      unsigned int const n = sampler.get_packet_samples(p, out.data(), c0, c1);
      unsigned int const packets_x = (nx + px - 1) / px;
      unsigned int const x0 = (p % packets_x) * px, y0 = (p / packets_x) * py;
      unsigned int k = 0;
      for (unsigned int iy = y0; iy < y0 + py && iy < ny; ++iy) {
        for (unsigned int ix = x0; ix < x0 + px && ix < nx; ++ix, ++k) {
          GMathVec2<double> const e = plain_stratum(reference, ix, iy, nx, ny, jx, jy);
          ASSERT_EQ(std::memcmp(&e, &out[k], sizeof e), 0) << "packet " << p << " sample " << k;
        }
      }
      ASSERT_EQ(n, k);
    }
    compared += 2 * nx * ny;
  }
}

}  // namespace
