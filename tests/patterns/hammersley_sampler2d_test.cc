#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "platform/random/grandom_mt.h"
#include "sampling/patterns/hammersley_sampler2d.h"
#include "sampling/patterns/radical_inverse.h"
#include "sampling/sampling.h"
#include "tests/patterns/pattern_support.h"

namespace {

// P is the smallest power of two with (count >> log2 P) <= size.
bool smallest_fitting_power(unsigned p, unsigned count, unsigned size) {
  unsigned k = 0;
  while ((1u << k) < p)
    ++k;
  return (1u << k) == p && (count >> k) <= size && (k == 0 || (count >> (k - 1)) > size);
}

}  // namespace

// Base 3 weighs digits by the double 1/3, shrunk by multiplying with it; the
// sampler's v offset is that value of the seed's low 16 bits (with N = 1,
// v(0) is the offset). Only those 16 bits count; set_seed moves only u.
TEST(HammersleySampler2d, SeedsAndTheBaseThreeOffset) {
  EXPECT_EQ(radical_inverse_3(1), 0x1.5555555555555p-2);
  EXPECT_EQ(radical_inverse_3(2), 0x1.5555555555555p-1);
  EXPECT_EQ(radical_inverse_3(4), 0x1.c71c71c71c71cp-2);  // 1/3 + 1/9
  HammersleySampler2d a, b;
  a.init(3 + 65536u * 5, 1, 1);
  double v;
  a.get_sample_v(0, v);
  EXPECT_EQ(v, 0x1.c71c71c71c71cp-4);  // 1/9
  for (unsigned seed : {5u, 123u, 65535u}) {
    a.init(seed, 7, 3, 2, 2);
    b.init(seed + 65536u * 3, 7, 3, 2, 2);
    EXPECT_TRUE(same_bits(all_samples(a), all_samples(b))) << seed;
  }
  a.init(9, 16, 1);
  auto const before = all_samples(a);
  a.set_seed(70000);  // stores 4464
  auto const after = all_samples(a);
  for (unsigned k = 0; k < 16; ++k)
    EXPECT_TRUE(after[k].x == radical_inverse_2(k + 4464) && after[k].y == before[k].y) << k;
  // From a generator: one output, its low 16 bits.
  GRandomMt mt(42), ref(42);
  a.init(mt, 6, 6, 2, 3);
  b.init(ref.genrand_int32() & 0xFFFFu, 6, 6, 2, 3);
  EXPECT_EQ(mt.genrand_int32(), ref.genrand_int32());
  EXPECT_TRUE(same_bits(all_samples(a), all_samples(b)));
}

TEST(HammersleySampler2d, PowerOfTwoSetsStratifyEveryElementaryInterval) {
  HammersleySampler2d s;
  for (unsigned m = 0; m <= 10; ++m) {
    unsigned const n = 1u << m;
    for (unsigned seed : {0u, 1u, 4321u}) {
      s.init(seed, n, 1);
      auto const p = all_samples(s);
      for (unsigned i = 0; i <= m; ++i) {
        // Boxes of 2^-i by 2^-(m-i): scaling by powers of two is exact.
        std::vector<int> hits(n, 0);
        for (auto const& q : p) {
          ASSERT_TRUE(q.x >= 0.0 && q.x < 1.0 && q.y >= 0.0 && q.y < 1.0);
          ++hits[static_cast<unsigned>(q.y * (1u << (m - i))) * (1u << i) +
                 static_cast<unsigned>(q.x * (1u << i))];
        }
        ASSERT_EQ(std::count(hits.begin(), hits.end(), 1), static_cast<long>(n))
            << "m " << m << " i " << i;
      }
    }
  }
}

// Packet p of a Px x Py grid holds every Px-th index of band p / Px, from
// p % Px places after the band's start; band b runs between the integers
// nearest to b N / Py, halves going up. The packets partition the set, their
// boxes hold their samples (in v within half a spacing), and the packet
// counts are the smallest powers of two that fit the packet sizes.
TEST(HammersleySampler2d, PacketsAreColumnsOfBands) {
  struct Case {
    unsigned nx, ny, sx, sy;
    unsigned first = 0;  // of the two packets checked in a large grid
  };
  std::vector<Case> cases;
  for (unsigned nx : {1u, 2u, 3u, 5u, 6u, 7u, 9u, 10u, 13u, 16u, 33u})
    for (unsigned ny : {0u, 1u, 2u, 3u, 5u, 8u, 17u})
      for (unsigned sx : {1u, 2u, 3u, 4u})
        for (unsigned sy : {1u, 2u, 5u})
          cases.push_back({nx, ny, sx, sy});
  // Packets of 1024: whole runs of 16 points four columns apart.
  cases.push_back({64, 64, 16, 64});
  // N / Py = 1 + 2^-22: band edges a rounding step below a half.
  cases.push_back({1, (1u << 22) + 1, 1, 1, (1u << 21) - 2});
  // N = 2^32 - 1 with seed 7983: in the last packets k + seed wraps past 2^32,
  // between two runs of 16 points 1024 apart.
  cases.push_back({65537, 65535, 64, 64, (1u << 20) - 2});
  // 2^21 bands of N = 2047 (2^21 + 1) points: b N crosses 2^52 between the
  // start and the end of band 1049087 (its last column, then the next band).
  cases.push_back({2047, (1u << 21) + 1, 1, 1, 1049087u * 1024u + 1023u});
  HammersleySampler2d s;
  for (Case const& c : cases) {
    unsigned const seed = c.nx * 7919u + c.sy;
    SCOPED_TRACE(testing::Message() << c.nx << "x" << c.ny << " in packets of " << c.sx << "x"
                                    << c.sy << ", seed " << seed);
    s.init(seed, c.nx, c.ny, c.sx, c.sy);
    std::uint64_t const n = c.nx * c.ny;
    unsigned const px = s.get_packet_count_x(), py = s.get_packet_count_y();
    EXPECT_TRUE(smallest_fitting_power(px, c.nx, c.sx)) << px;
    EXPECT_TRUE(smallest_fitting_power(py, c.ny, c.sy)) << py;
    ASSERT_EQ(s.get_packet_count(), px * py);
    bool const whole = n < 5000;
    std::vector<int> hits(whole ? n : 0, 0);
    // The bound on the largest packet that sizes the caller's array.
    Points packet(static_cast<unsigned>(std::ceil((double(n) / py + 1) / px)));
    unsigned const first = whole ? 0 : c.first, last = whole ? px * py : first + 2;
    for (unsigned p = first; p < last; ++p) {
      std::uint64_t const band = p / px;
      unsigned const start = static_cast<unsigned>((2 * band * n + py) / (2 * py)) + p % px;
      unsigned const end = static_cast<unsigned>((2 * (band + 1) * n + py) / (2 * py));
      GMathVec2<double> c0, c1, expected;
      unsigned const got = s.get_packet_samples(p, packet.data(), c0, c1);
      ASSERT_EQ(got, start < end ? (end - start + px - 1) / px : 0u) << "packet " << p;
      EXPECT_TRUE(c1.x - c0.x == 1.0 / px && c0.y == band * (1.0 / py) && c1.y == c0.y + 1.0 / py);
      for (unsigned j = 0, k = start; j < got; ++j, k += px) {
        s.get_sample(k, expected);
        ASSERT_EQ(std::memcmp(&packet[j], &expected, sizeof expected), 0) << p << " " << j;
        if (whole)
          ++hits[k];
        EXPECT_TRUE(packet[j].x >= c0.x && packet[j].x < c1.x) << p << " u " << packet[j].x;
        EXPECT_TRUE(packet[j].y >= c0.y - 0.5 / n - 1e-15 && packet[j].y <= c1.y + 0.5 / n + 1e-15)
            << p << " v " << packet[j].y;
      }
    }
    EXPECT_EQ(std::count(hits.begin(), hits.end(), 1), static_cast<long>(hits.size()));
    Points const all = whole ? all_samples(s) : Points();
    for (unsigned k = 0; k < all.size(); ++k) {
      GMathVec2<double> one;
      s.get_sample(k, one);
      ASSERT_TRUE(one == all[k]) << "sample " << k;
    }
  }
}

// The sub-set paths (the index shuffle evaluated inline) against the points
// written out from the formula with the exported Sampling::shuffle_index,
// over random splits: every set of an odd split is every S-th point, of an
// even split the shuffled pairs.
TEST(HammersleySampler2d, SubSetsAreTheShuffledPointsOfTheWholeSet) {
  std::mt19937 rng(57);
  HammersleySampler2d sampler;
  for (unsigned int compared = 0; compared < 200000;) {
    unsigned int const subsets = 1u + rng() % 16u;
    unsigned int const index = rng() % subsets;
    unsigned int const count = 1u + rng() % 4000u;
    unsigned int const seed = rng();
    sampler.init_sub(seed, subsets, index, count);
    ASSERT_EQ(sampler.get_sample_count(), count);
    Points const all = all_samples(sampler);
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
    }
    compared += count;
  }
}
