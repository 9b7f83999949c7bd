#include "sampling/patterns/hierarchical_sampler2d.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "platform/random/grandom_fast_mt.h"
#include "sampling/patterns/halton_sampler2d.h"
#include "sampling/patterns/radical_inverse.h"
#include "sampling/patterns/sobol_components.h"
#include "tests/patterns/pattern_support.h"

namespace {

typedef HierarchicalSampler2d H;

std::vector<GMathVec2<double>> set_samples(H::Mode const& mode, unsigned int const& seed,
                                           unsigned int const& count, unsigned int const& set_count,
                                           unsigned int const& set_index) {
  H sampler(mode);
  sampler.init(seed, count, set_count, set_index);
  return all_samples(sampler);
}

unsigned int table_entry(unsigned int const& j) {
  return GRandomFastMt::m_table[j % GRandomFastMt::m_table_size];
}

}  // namespace

TEST(HierarchicalSampler2d, DefaultModeIsHammersleyAndSetModeWaitsForInit) {
  LibraryScope library;
  H sampler;
  EXPECT_EQ(sampler.get_mode(), H::HAMMERSLEY);
  sampler.init(3, 16, 4, 1);
  std::vector<GMathVec2<double>> const hammersley = all_samples(sampler);
  sampler.set_mode(H::SOBOL);
  EXPECT_EQ(sampler.get_mode(), H::SOBOL);
  EXPECT_TRUE(same_bits(all_samples(sampler), hammersley)) << "before the next init";
  sampler.init(3, 16, 4, 1);
  EXPECT_TRUE(same_bits(all_samples(sampler), set_samples(H::SOBOL, 3, 16, 4, 1))) << "after init";
}

// Halton mode = the Halton sampler in base 3 started at s + N * c; only the
// seed's low 16 bits count. Hammersley mode serves the same points when no
// permutation exists for M (M above 2048) and keeps reporting its mode.
TEST(HierarchicalSampler2d, HaltonModeIsTheHaltonSamplerOfTheSet) {
  LibraryScope library;
  for (unsigned int seed : {0u, 77u, 65535u}) {
    for (unsigned int count : {1u, 5u, 16u}) {
      for (unsigned int set : {0u, 1u, 3u}) {
        HaltonSampler2d halton;
        halton.init(seed + count * set, count, 1, 3);
        std::vector<GMathVec2<double>> const expected = all_samples(halton);
        EXPECT_TRUE(same_bits(set_samples(H::HALTON, seed, count, 4, set), expected))
            << "Halton mode";
        EXPECT_TRUE(same_bits(set_samples(H::HALTON, seed + 65536u * 3, count, 4, set), expected))
            << "Halton mode, seed + 3 * 65536";
      }
    }
  }
  H fallback;
  fallback.init(1234, 64, 64, 5);
  EXPECT_EQ(fallback.get_mode(), H::HAMMERSLEY);
  EXPECT_EQ(HierarchicalSampler2dAccess::indices(fallback), nullptr);
  EXPECT_TRUE(same_bits(all_samples(fallback), set_samples(H::HALTON, 1234, 64, 64, 5)))
      << "M = 4096";
}

// The sets of one seed hold each point of the M-point Hammersley set
//   u = radical_inverse_2(j + seed mod 65536), v = (j + radical_inverse_3(seed)) / M
// exactly once, for every j; the v offset and the starting position use the
// full 32-bit seed.
TEST(HierarchicalSampler2d, HammersleySetsPartitionTheHammersleySet) {
  LibraryScope library;
  unsigned int const shapes[][2] = {{4, 4}, {3, 5}, {64, 32}, {1, 2048}, {2048, 1}, {7, 1}};
  for (auto const& shape : shapes) {
    unsigned int const count = shape[0], set_count = shape[1], points = count * set_count;
    for (unsigned int seed : {0u, 12345u, 65536u + 7u, 4294967295u}) {
      double const v_offset = radical_inverse_3(seed);
      double const inv_points = 1.0 / static_cast<double>(points);
      std::vector<int> hits(points, 0);
      for (unsigned int set = 0; set < set_count; ++set) {
        for (GMathVec2<double> const& s : set_samples(H::HAMMERSLEY, seed, count, set_count, set)) {
          unsigned int const j = static_cast<unsigned int>(std::lround(s.y * points - v_offset));
          ASSERT_LT(j, points) << s.y;
          ASSERT_EQ(s.x, radical_inverse_2(j + (seed & 0xFFFFu))) << "M " << points << " j " << j;
          ASSERT_EQ(s.y, (static_cast<double>(j) + v_offset) * inv_points) << "j " << j;
          ++hits[j];
        }
      }
      for (unsigned int j = 0; j < points; ++j) {
        ASSERT_EQ(hits[j], 1) << "M " << points << " seed " << seed << " point " << j;
      }
    }
  }
  // A copy shares the permutation and serves the same set.
  H sampler;
  sampler.init(99, 8, 8, 3);
  H copy(H::RANDOM);
  copy = sampler;
  EXPECT_EQ(HierarchicalSampler2dAccess::indices(copy),
            HierarchicalSampler2dAccess::indices(sampler));
  EXPECT_TRUE(same_bits(all_samples(copy), all_samples(sampler))) << "copy";
}

TEST(HierarchicalSampler2d, SobolComponentsFollowTheirDirectionNumbers) {
  unsigned int const reversed[] = {0x80000000u, 0x40000000u, 0xC0000000u, 0x20000000u, 0xA0000000u};
  unsigned int const second[] = {0x80000000u, 0xC0000000u, 0x40000000u, 0xA0000000u, 0x20000000u};
  for (unsigned int n = 1; n <= 5; ++n) {
    EXPECT_EQ(reverse_bits(n), reversed[n - 1]) << "n " << n;
    EXPECT_EQ(sobol_2(n), second[n - 1]) << "n " << n;
  }
  unsigned int const directions[] = {0x80000000u, 0xC0000000u, 0xA0000000u, 0xF0000000u,
                                     0x88000000u, 0xCC000000u, 0xAA000000u, 0xFF000000u};
  for (unsigned int k = 0; k < 8; ++k)
    EXPECT_EQ(sobol_2(1u << k), directions[k]) << "bit " << k;
  // reverse_bits is the integer form of the base-2 radical inverse.
  for (unsigned int n = 0; n < 100000; ++n) {
    unsigned int const m = n * 2654435761u;
    ASSERT_EQ(reverse_bits(m) * 0x1p-32, radical_inverse_2(m)) << "n " << m;
  }
  // The sampler XORs element n + 1 with masks drawn from the full seed; the
  // element 0, reached by wrapping, is the masks themselves.
  for (unsigned int seed : {0u, 65536u, 77u}) {
    unsigned int const t = table_entry(seed);
    unsigned int const mask_u = table_entry(t), mask_v = table_entry(t + 1);
    H sampler(H::SOBOL);
    sampler.init(seed, 5, 1, 0);
    std::vector<GMathVec2<double>> const s = all_samples(sampler);
    unsigned int const first = (seed & 0xFFFFu) + 1;
    for (unsigned int i = 0; i < 5; ++i) {
      EXPECT_EQ(s[i].x, unit_from_u32(reverse_bits(first + i) ^ mask_u)) << "seed " << seed;
      EXPECT_EQ(s[i].y, unit_from_u32(sobol_2(first + i) ^ mask_v)) << "seed " << seed;
    }
    GMathVec2<double> zero;
    sampler.get_sample(0u - first, zero);
    EXPECT_EQ(zero.x, unit_from_u32(mask_u));
    EXPECT_EQ(zero.y, unit_from_u32(mask_v));
  }
}

TEST(HierarchicalSampler2d, SobolSetsContinueOneSequenceAndFormNets) {
  for (unsigned int seed : {0u, 31337u}) {
    for (unsigned int count : {1u, 6u, 64u}) {
      H whole(H::SOBOL);
      whole.init(seed, count, 1, 0);
      for (unsigned int set = 1; set < 4; ++set) {
        std::vector<GMathVec2<double>> const part = set_samples(H::SOBOL, seed, count, 4, set);
        for (unsigned int i = 0; i < count; ++i) {
          GMathVec2<double> expected;
          whole.get_sample(i + count * set, expected);
          ASSERT_TRUE(part[i].x == expected.x && part[i].y == expected.y)
              << "seed " << seed << " set " << set << " sample " << i;
        }
      }
    }
  }
  // Seed 65535 starts at element 65536, so a set of 2^m samples is an
  // aligned block of the sequence: every box of 2^-i by 2^(i-m) holds one
  // sample, the XOR scramble notwithstanding.
  for (unsigned int m = 0; m <= 10; ++m) {
    unsigned int const count = 1u << m;
    std::vector<GMathVec2<double>> const s = set_samples(H::SOBOL, 65535, count, 1, 0);
    for (unsigned int i = 0; i <= m; ++i) {
      unsigned int const cells_x = 1u << i, cells_y = count >> i;
      std::vector<int> hits(count, 0);
      for (GMathVec2<double> const& p : s) {
        // Exact 1.0 (an all-ones pattern) belongs to the last box.
        unsigned int const bx = std::min(static_cast<unsigned int>(p.x * cells_x), cells_x - 1);
        unsigned int const by = std::min(static_cast<unsigned int>(p.y * cells_y), cells_y - 1);
        ++hits[by * cells_x + bx];
      }
      for (unsigned int b = 0; b < count; ++b) {
        ASSERT_EQ(hits[b], 1) << "2^" << m << " samples, 2^" << i << " columns, box " << b;
      }
    }
  }
}

// Random mode: set c continues set 0 by count pairs, the seed's high bits do
// not matter, and any unknown mode is the random mode.
TEST(HierarchicalSampler2d, RandomModeReadsDisjointRunsOfTheTable) {
  for (unsigned int seed : {0u, 999u}) {
    H whole(H::RANDOM);
    whole.init(seed, 40, 1, 0);
    std::vector<GMathVec2<double>> const first = all_samples(whole);
    std::vector<GMathVec2<double>> const set2 = set_samples(H::RANDOM, seed, 10, 4, 2);
    for (unsigned int i = 0; i < 10; ++i) {
      ASSERT_TRUE(set2[i].x == first[20 + i].x && set2[i].y == first[20 + i].y) << i;
    }
    EXPECT_TRUE(same_bits(set_samples(H::RANDOM, seed + 65536u, 40, 1, 0), first))
        << "high seed bits";
    EXPECT_TRUE(same_bits(set_samples(static_cast<H::Mode>(7), seed, 10, 4, 2), set2)) << "mode 7";
    EXPECT_TRUE(same_bits(set_samples(static_cast<H::Mode>(0xFFFFFFFFu), seed, 10, 4, 2), set2))
        << "mode 2^32 - 1";
  }
}

// The array paths work four samples at a time; where the table (random mode:
// a seed whose run starts within 2048 entries of its end) and the 32-bit
// positions (count * set_index just below 2^32) wrap, they keep get_sample's
// bits.
TEST(HierarchicalSampler2d, ArrayPathsKeepTheOneSampleBitsWhereIndicesWrap) {
  LibraryScope library;
  unsigned int table_wrap = 0;
  while (table_entry(table_wrap) % GRandomFastMt::m_table_size >= 2048u)
    ++table_wrap;
  for (unsigned int mode = 0; mode < 4; ++mode) {
    for (unsigned int seed : {0u, 65535u, table_wrap}) {
      H sampler(static_cast<H::Mode>(mode));
      sampler.init(seed, 2048, 1, (1u << 21) - 1u);
      std::vector<GMathVec2<double>> const all = all_samples(sampler);
      for (unsigned int i = 0; i < all.size(); ++i) {
        GMathVec2<double> one;
        sampler.get_sample(i, one);
        ASSERT_TRUE(one.x == all[i].x && one.y == all[i].y) << mode << ", " << seed << ", " << i;
      }
    }
  }
}
