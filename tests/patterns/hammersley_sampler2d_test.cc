#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <vector>

#include "platform/random/grandom_mt.h"
#include "sampling/patterns/hammersley_sampler2d.h"
#include "sampling/patterns/radical_inverse.h"
#include "tests/patterns/pattern_support.h"

namespace {

std::uint64_t bits_of(double const& d) {
  std::uint64_t b;
  std::memcpy(&b, &d, 8);
  return b;
}

// All points of the sampler, after checking that get_sample gives each of them
// bit for bit.
Points checked_samples(HammersleySampler2d& s) {
  Points all(s.get_sample_count()), one(all.size());
  s.get_all_samples(all.data());
  for (unsigned k = 0; k < one.size(); ++k)
    s.get_sample(k, one[k]);
  EXPECT_TRUE(same_bits(all, one));
  return all;
}

// Index of each point of a set, keyed by its v (strictly increasing in k).
std::map<double, unsigned> index_by_v(Points const& points) {
  std::map<double, unsigned> m;
  for (unsigned k = 0; k < points.size(); ++k)
    m[points[k].y] = k;
  return m;
}

// P is the smallest power of two with (count >> log2 P) <= size.
bool smallest_fitting_power(unsigned p, unsigned count, unsigned size) {
  unsigned k = 0;
  while ((1u << k) < p)
    ++k;
  return (1u << k) == p && (count >> k) <= size && (k == 0 || (count >> (k - 1)) > size);
}

}  // namespace

// Base 2 against its digit loop is the radical inverse test's.
TEST(HammersleySampler2d, RadicalInversesAndTheirConstants) {
  EXPECT_EQ(radical_inverse_2(4294967295u), 1.0 - 0x1p-32);
  // Base 3: the weight is the double 1/3, shrunk by multiplying with it.
  EXPECT_EQ(bits_of(radical_inverse_3(1)), 0x3FD5555555555555u);
  EXPECT_EQ(bits_of(radical_inverse_3(2)), 0x3FE5555555555555u);
  EXPECT_EQ(bits_of(radical_inverse_3(3)), 0x3FBC71C71C71C71Cu);  // 1/9
  EXPECT_EQ(bits_of(radical_inverse_3(4)), 0x3FDC71C71C71C71Cu);  // 1/3 + 1/9
  // The sampler's v offset is that value: with N = 1, v(0) is the offset.
  HammersleySampler2d s;
  s.init(3, 1, 1);
  double v;
  s.get_sample_v(0, v);
  EXPECT_EQ(bits_of(v), 0x3FBC71C71C71C71Cu);
}

TEST(HammersleySampler2d, WorkedExamplesWithSeedZero) {
  using V = GMathVec2<double>;
  HammersleySampler2d s;
  s.init(0, 4, 4);
  Points const all = checked_samples(s);
  EXPECT_EQ(all[1], V(0.5, 0.0625));
  EXPECT_EQ(all[2], V(0.25, 0.125));
  EXPECT_EQ(all[3], V(0.75, 0.1875));
  // 4x4 in packets of 2x2: packet p holds every other index of its band.
  s.init(0, 4, 4, 2, 2);
  ASSERT_EQ(s.get_packet_count(), 4u);
  V out[16], c0, c1;
  ASSERT_EQ(s.get_packet_samples(0, out, c0, c1), 4u);
  EXPECT_TRUE(out[0] == V(0, 0) && out[1] == V(0.25, 0.125) && out[2] == V(0.125, 0.25) &&
              out[3] == V(0.375, 0.375));
  EXPECT_TRUE(c0 == V(0, 0) && c1 == V(0.5, 0.5));
  // The other packets and the packet counts are the partition test's.
  // Five points in two packet columns: 0, 2, 4 and 1, 3.
  s.init(0, 5, 1, 2, 1);
  ASSERT_EQ(s.get_packet_count(), 2u);
  EXPECT_EQ(s.get_packet_samples(0, out, c0, c1), 3u);
  EXPECT_EQ(out[2].y, 4 * (1.0 / 5));
  EXPECT_EQ(s.get_packet_samples(1, out, c0, c1), 2u);
  EXPECT_EQ(out[1].y, 3 * (1.0 / 5));
}

TEST(HammersleySampler2d, SeedsKeepTheirLow16BitsAndSetSeedMovesOnlyU) {
  HammersleySampler2d a, b;
  for (unsigned seed : {5u, 123u, 65535u}) {
    a.init(seed, 7, 3, 2, 2);
    b.init(seed + 65536u * 3, 7, 3, 2, 2);
    EXPECT_TRUE(same_bits(checked_samples(a), checked_samples(b))) << seed;
  }
  a.init(9, 16, 1);
  auto const before = checked_samples(a);
  a.set_seed(70000);  // stores 4464
  auto const after = checked_samples(a);
  for (unsigned k = 0; k < 16; ++k) {
    EXPECT_EQ(after[k].x, radical_inverse_2(k + 4464)) << k;
    EXPECT_NE(after[k].x, before[k].x) << k;
    EXPECT_EQ(after[k].y, before[k].y) << k;
  }
  // From a generator: one output, its low 16 bits.
  GRandomMt mt(42), ref(42);
  a.init(mt, 6, 6, 2, 3);
  b.init(ref.genrand_int32() & 0xFFFFu, 6, 6, 2, 3);
  EXPECT_EQ(mt.genrand_int32(), ref.genrand_int32());
  EXPECT_TRUE(same_bits(checked_samples(a), checked_samples(b)));
}

TEST(HammersleySampler2d, PowerOfTwoSetsStratifyEveryElementaryInterval) {
  HammersleySampler2d s;
  for (unsigned m = 0; m <= 10; ++m) {
    unsigned const n = 1u << m;
    for (unsigned seed : {0u, 1u, 4321u}) {
      s.init(seed, n, 1);
      auto const p = checked_samples(s);
      for (unsigned i = 0; i <= m; ++i) {
        // Boxes of 2^-i by 2^-(m-i): scaling by powers of two is exact.
        std::vector<int> hits(n, 0);
        for (auto const& q : p) {
          ASSERT_TRUE(q.x >= 0.0 && q.x < 1.0 && q.y >= 0.0 && q.y < 1.0);
          unsigned const bx = static_cast<unsigned>(q.x * (1u << i));
          unsigned const by = static_cast<unsigned>(q.y * (1u << (m - i)));
          ++hits[by * (1u << i) + bx];
        }
        for (unsigned c = 0; c < n; ++c) {
          ASSERT_EQ(hits[c], 1) << "m " << m << " i " << i << " seed " << seed << " box " << c;
        }
      }
    }
  }
}

TEST(HammersleySampler2d, PacketGridPartitionsTheSetAndBoxesHoldTheirSamples) {
  HammersleySampler2d s;
  for (unsigned nx : {1u, 2u, 3u, 5u, 6u, 7u, 9u, 10u, 13u, 16u, 33u}) {
    for (unsigned ny : {1u, 2u, 3u, 5u, 8u, 17u}) {
      for (unsigned sx : {1u, 2u, 3u, 4u}) {
        for (unsigned sy : {1u, 2u, 5u}) {
          unsigned const seed = nx * 7919u + sy;
          SCOPED_TRACE(testing::Message() << nx << "x" << ny << " in packets of " << sx << "x" << sy
                                          << ", seed " << seed);
          s.init(seed, nx, ny, sx, sy);
          unsigned const n = nx * ny, px = s.get_packet_count_x(), py = s.get_packet_count_y();
          EXPECT_TRUE(smallest_fitting_power(px, nx, sx)) << px;
          EXPECT_TRUE(smallest_fitting_power(py, ny, sy)) << py;
          ASSERT_EQ(s.get_packet_count(), px * py);
          Points const all = checked_samples(s);
          auto const index = index_by_v(all);
          ASSERT_EQ(index.size(), n);
          // The bound on the largest packet that sizes the caller's array.
          Points packet(static_cast<unsigned>(std::ceil((double(n) / py + 1) / px)));
          std::vector<int> hits(n, 0);
          for (unsigned p = 0; p < px * py; ++p) {
            GMathVec2<double> c0, c1;
            unsigned const got = s.get_packet_samples(p, packet.data(), c0, c1);
            ASSERT_LE(got, packet.size());
            EXPECT_EQ(c1.x - c0.x, 1.0 / px);
            EXPECT_EQ(c0.y, (p / px) * (1.0 / py));
            EXPECT_EQ(c1.y, c0.y + 1.0 / py);
            // Every Px-th index of the band, from px places after its start.
            unsigned k =
                static_cast<unsigned>(std::floor((p / px) * double(n) / py + 0.5)) + p % px;
            for (unsigned j = 0; j < got; ++j, k += px) {
              auto const it = index.find(packet[j].y);
              ASSERT_TRUE(it != index.end() && it->second == k)
                  << "packet " << p << " sample " << j;
              EXPECT_EQ(std::memcmp(&packet[j], &all[k], sizeof packet[j]), 0);
              ++hits[k];
              // u strictly inside its column; v within half a spacing of its band.
              EXPECT_TRUE(packet[j].x >= c0.x && packet[j].x < c1.x) << p << " u " << packet[j].x;
              EXPECT_TRUE(packet[j].y >= c0.y - 0.5 / n - 1e-15 &&
                          packet[j].y <= c1.y + 0.5 / n + 1e-15)
                  << p << " v " << packet[j].y;
            }
          }
          EXPECT_EQ(std::count(hits.begin(), hits.end(), 1), static_cast<long>(n));
        }
      }
    }
  }
}

TEST(HammersleySampler2d, SinglePacketModeAndCopies) {
  HammersleySampler2d s;
  s.init(77, 5, 3);
  Points const all = checked_samples(s);
  for (unsigned p : {0u, 1u, 1000u}) {
    Points out(15);
    GMathVec2<double> c0(-1.0, -1.0), c1;
    ASSERT_EQ(s.get_packet_samples(p, out.data(), c0, c1), 15u);
    EXPECT_TRUE(same_bits(out, all));
    EXPECT_EQ(c0, GMathVec2<double>(0.0, 0.0));
    EXPECT_EQ(c1, GMathVec2<double>(1.0, 1.0));
  }
  // A copy is the same pattern, and stays so when its source is re-initialised.
  HammersleySampler2d copy;
  copy = s;
  s.init(1, 2, 2, 1, 1);
  EXPECT_TRUE(same_bits(checked_samples(copy), all));
}

// One odd and two even splits; every split against the formula is the
// fast-path test's.
TEST(HammersleySampler2d, SubSetWorkedExamples) {
  struct Case {
    unsigned subsets, count;
    std::vector<std::vector<unsigned>> sets;
  };
  Case const cases[] = {
      {3, 4, {{0, 3, 6, 9}, {1, 4, 7, 10}, {2, 5, 8, 11}}},
      {4, 4, {{0, 1, 8, 9}, {4, 5, 12, 13}, {2, 3, 10, 11}, {6, 7, 14, 15}}},
      {2, 5, {{0, 1, 6, 7, 4}, {5, 8, 9, 2, 3}}},
  };
  HammersleySampler2d whole, sub;
  for (Case const& c : cases) {
    whole.init(0, c.subsets * c.count, 1);
    auto const points = checked_samples(whole);
    for (unsigned b = 0; b < c.subsets; ++b) {
      sub.init_sub(0, c.subsets, b, c.count);
      auto const got = checked_samples(sub);
      for (unsigned i = 0; i < c.count; ++i) {
        EXPECT_EQ(got[i], points[c.sets[b][i]]) << c.subsets << " sets, set " << b << " i " << i;
      }
    }
  }
  sub.init_sub(0, 3, 1, 4);
  GMathVec2<double> p;
  sub.get_sample(0, p);
  EXPECT_EQ(p.x, 0.5);
  EXPECT_DOUBLE_EQ(p.y, 1.0 / 12);
}

TEST(HammersleySampler2d, SubSetsPartitionTheWholeSet) {
  HammersleySampler2d whole, sub;
  for (unsigned subsets = 1; subsets <= 8; ++subsets) {
    for (unsigned count : {1u, 2u, 3u, 5u, 8u, 13u, 16u}) {
      unsigned const seed = subsets * 1000u + count;
      SCOPED_TRACE(testing::Message() << subsets << " sets of " << count << ", seed " << seed);
      whole.init(seed, subsets * count, 1);
      Points const points = checked_samples(whole);
      auto const index = index_by_v(points);
      std::vector<int> hits(points.size(), 0);
      for (unsigned b = 0; b < subsets; ++b) {
        sub.init_sub(seed, subsets, b, count);
        ASSERT_EQ(sub.get_sample_count(), count);
        ASSERT_EQ(sub.get_packet_count(), 1u);
        Points const got = checked_samples(sub);
        Points packet(count);
        GMathVec2<double> c0, c1;
        ASSERT_EQ(sub.get_packet_samples(b + 3, packet.data(), c0, c1), count);
        EXPECT_TRUE(same_bits(packet, got));
        EXPECT_TRUE(c0 == GMathVec2<double>(0.0, 0.0) && c1 == GMathVec2<double>(1.0, 1.0));
        for (auto const& q : got) {
          auto const it = index.find(q.y);
          ASSERT_TRUE(it != index.end() && q == points[it->second]) << "set " << b;
          ++hits[it->second];
        }
      }
      EXPECT_EQ(std::count(hits.begin(), hits.end(), 1), static_cast<long>(points.size()));
    }
  }
}

#ifdef SAMPLING_CHECKS
TEST(HammersleySampler2dDeathTest, InitSubRejectsASubsetIndexOutOfRange) {
  HammersleySampler2d s;
  EXPECT_DEATH(s.init_sub(0, 3, 3, 4),
               "HammersleySampler2d::init_sub: subset_index must be below subset_count");
  EXPECT_DEATH(s.init_sub(0, 2, 7, 4),
               "HammersleySampler2d::init_sub: subset_index must be below subset_count");
}
#endif
