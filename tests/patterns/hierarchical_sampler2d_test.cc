#include "sampling/patterns/hierarchical_sampler2d.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "platform/random/grandom_fast_mt.h"
#include "sampling/patterns/halton_sampler2d.h"
#include "sampling/patterns/radical_inverse.h"
#include "sampling/patterns/sobol_components.h"
#include "sampling/sampling.h"
#include "tests/patterns/pattern_support.h"

namespace {

typedef HierarchicalSampler2d H;

Points set_samples(unsigned int mode, unsigned int seed, unsigned int count, unsigned int set_count,
                   unsigned int set_index) {
  H sampler(static_cast<H::Mode>(mode));
  sampler.init(seed, count, set_count, set_index);
  return all_samples(sampler);
}

unsigned int table_entry(unsigned int const& j) {
  return GRandomFastMt::m_table[j % GRandomFastMt::m_table_size];
}

}  // namespace

// Halton mode = the Halton sampler in base 3 started at s + N * c; only the
// seed's low 16 bits count. Hammersley mode serves the same points when no
// permutation exists for M (M above 2048, here one past it) and keeps
// reporting its mode.
TEST(HierarchicalSampler2d, HaltonModeIsTheHaltonSamplerOfTheSet) {
  LibraryScope library;
  for (unsigned int seed : {0u, 77u, 65535u}) {
    for (unsigned int count : {1u, 5u, 16u}) {
      for (unsigned int set : {0u, 1u, 3u}) {
        HaltonSampler2d halton;
        halton.init(seed + count * set, count, 1, 3);
        Points const expected = all_samples(halton);
        EXPECT_TRUE(same_bits(set_samples(H::HALTON, seed, count, 4, set), expected));
        EXPECT_TRUE(same_bits(set_samples(H::HALTON, seed + 65536u * 3, count, 4, set), expected));
      }
    }
  }
  H fallback;
  fallback.init(1234, 683, 3, 2);
  EXPECT_EQ(fallback.get_mode(), H::HAMMERSLEY);
  EXPECT_EQ(HierarchicalSampler2dAccess::indices(fallback), nullptr);
  EXPECT_TRUE(same_bits(all_samples(fallback), set_samples(H::HALTON, 1234, 683, 3, 2)));
}

// The sets of one seed hold each point of the M-point Hammersley set
//   u = radical_inverse_2(j + seed mod 65536), v = (j + radical_inverse_3(seed)) / M
// exactly once, for every j; the v offset and the starting position use the
// full 32-bit seed. set_mode waits for the next init; a copy shares the
// permutation and serves the same set.
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
      ASSERT_EQ(std::count(hits.begin(), hits.end(), 1), static_cast<long>(points)) << seed;
    }
  }
  H sampler;
  sampler.init(99, 8, 8, 3);
  Points const hammersley = all_samples(sampler);
  sampler.set_mode(H::SOBOL);
  EXPECT_TRUE(same_bits(all_samples(sampler), hammersley)) << "before the next init";
  sampler.set_mode(H::HAMMERSLEY);
  H copy(H::RANDOM);
  copy = sampler;
  EXPECT_EQ(HierarchicalSampler2dAccess::indices(copy),
            HierarchicalSampler2dAccess::indices(sampler));
  EXPECT_TRUE(same_bits(all_samples(copy), hammersley)) << "copy";
}

TEST(HierarchicalSampler2d, SobolComponentsFollowTheirDirectionNumbers) {
  unsigned int const directions[] = {0x80000000u, 0xC0000000u, 0xA0000000u, 0xF0000000u,
                                     0x88000000u, 0xCC000000u, 0xAA000000u, 0xFF000000u};
  for (unsigned int k = 0; k < 8; ++k)
    EXPECT_EQ(sobol_2(1u << k), directions[k]) << "bit " << k;
  EXPECT_EQ(sobol_2(3u), 0x40000000u);
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
    Points const s = all_samples(sampler);
    unsigned int const first = (seed & 0xFFFFu) + 1;
    for (unsigned int i = 0; i < 5; ++i)
      EXPECT_TRUE(s[i].x == unit_from_u32(reverse_bits(first + i) ^ mask_u) &&
                  s[i].y == unit_from_u32(sobol_2(first + i) ^ mask_v))
          << "seed " << seed;
    GMathVec2<double> zero;
    sampler.get_sample(0u - first, zero);
    EXPECT_EQ(zero, GMathVec2<double>(unit_from_u32(mask_u), unit_from_u32(mask_v)));
  }
}

TEST(HierarchicalSampler2d, SobolSetsContinueOneSequenceAndFormNets) {
  for (unsigned int seed : {0u, 31337u}) {
    for (unsigned int count : {1u, 6u, 64u}) {
      Points const whole = set_samples(H::SOBOL, seed, 4 * count, 1, 0);
      for (unsigned int set = 1; set < 4; ++set)
        ASSERT_TRUE(
            same_bits(set_samples(H::SOBOL, seed, count, 4, set),
                      Points(whole.begin() + count * set, whole.begin() + count * set + count)))
            << "seed " << seed << " set " << set;
    }
  }
  // Seed 65535 starts at element 65536, so a set of 2^m samples is an
  // aligned block of the sequence: every box of 2^-i by 2^(i-m) holds one
  // sample, the XOR scramble notwithstanding.
  for (unsigned int m = 0; m <= 10; ++m) {
    unsigned int const count = 1u << m;
    Points const s = set_samples(H::SOBOL, 65535, count, 1, 0);
    for (unsigned int i = 0; i <= m; ++i) {
      unsigned int const cells_x = 1u << i, cells_y = count >> i;
      std::vector<int> hits(count, 0);
      for (GMathVec2<double> const& p : s) {
        // Exact 1.0 (an all-ones pattern) belongs to the last box.
        unsigned int const bx = std::min(static_cast<unsigned int>(p.x * cells_x), cells_x - 1);
        unsigned int const by = std::min(static_cast<unsigned int>(p.y * cells_y), cells_y - 1);
        ++hits[by * cells_x + bx];
      }
      ASSERT_EQ(std::count(hits.begin(), hits.end(), 1), static_cast<long>(count)) << m << " " << i;
    }
  }
}

// Random mode: set c continues set 0 by count pairs, the seed's high bits do
// not matter, and any unknown mode is the random mode.
TEST(HierarchicalSampler2d, RandomModeReadsDisjointRunsOfTheTable) {
  for (unsigned int seed : {0u, 999u}) {
    Points const first = set_samples(H::RANDOM, seed, 40, 1, 0);
    Points const set2 = set_samples(H::RANDOM, seed, 10, 4, 2);
    EXPECT_TRUE(same_bits(set2, Points(first.begin() + 20, first.begin() + 30)));
    EXPECT_TRUE(same_bits(set_samples(H::RANDOM, seed + 65536u, 40, 1, 0), first));
    EXPECT_TRUE(same_bits(set_samples(7, seed, 10, 4, 2), set2)) << "mode 7";
    EXPECT_TRUE(same_bits(set_samples(0xFFFFFFFFu, seed, 10, 4, 2), set2)) << "mode 2^32 - 1";
  }
}

// The array paths work four samples at a time; where the table (random mode:
// a seed whose run starts within 2048 entries of its end) and the 32-bit
// positions (count * set_index just below 2^32) wrap, they keep get_sample's
// bits, and so does the single packet of the whole square. With 2048 points
// the wrap meets the permutation's end; with 1000 from 2^32 - 296 on, a
// Hammersley start below 296 meets the wrap in the permutation's middle.
TEST(HierarchicalSampler2d, ArrayPathsKeepTheOneSampleBitsWhereIndicesWrap) {
  LibraryScope library;
  unsigned int table_wrap = 0;
  while (table_entry(table_wrap) % GRandomFastMt::m_table_size >= 2048u)
    ++table_wrap;
  unsigned int middle_wrap = 0;
  while (Sampling::shuffle_index(middle_wrap, 1000) >= 296u)
    ++middle_wrap;
  for (unsigned int const count : {2048u, 1000u}) {
    unsigned int const set_index = count == 2048u ? (1u << 21) - 1u : 4294967u;
    for (unsigned int mode = 0; mode < 4; ++mode) {
      for (unsigned int seed : {0u, 65535u, table_wrap, middle_wrap}) {
        H sampler(static_cast<H::Mode>(mode));
        sampler.init(seed, count, 1, set_index);
        all_paths(sampler);
        ASSERT_FALSE(HasFailure()) << count << " points, mode " << mode << ", seed " << seed;
      }
    }
  }
}
