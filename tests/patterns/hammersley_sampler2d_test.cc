#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "platform/random/grandom_mt.h"
#include "sampling/patterns/hammersley_sampler2d.h"
#include "sampling/patterns/radical_inverse.h"

namespace {

std::uint64_t bits_of(double const& d) {
  std::uint64_t b;
  std::memcpy(&b, &d, 8);
  return b;
}

// 32-bit bit reversal times 2^-32.
double mirrored(unsigned n) {
  unsigned r = 0;
  for (int i = 0; i < 32; ++i, n >>= 1)
    r = (r << 1) | (n & 1u);
  return r * 0x1p-32;
}

std::vector<GMathVec2<double>> all_samples(HammersleySampler2d& s) {
  std::vector<GMathVec2<double>> out(s.get_sample_count());
  s.get_all_samples(out.data());
  return out;
}

// Index of each point of a set, keyed by its v (strictly increasing in k).
std::map<double, unsigned> index_by_v(std::vector<GMathVec2<double>> const& points) {
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

TEST(HammersleySampler2d, RadicalInversesAndTheirConstants) {
  GRandomMt mt(1);
  for (unsigned i = 0; i < 20000; ++i) {
    unsigned const n = i < 4096 ? i : mt.genrand_int32();
    ASSERT_EQ(radical_inverse_2(n), mirrored(n)) << n;
  }
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
  HammersleySampler2d s;
  s.init(0, 4, 4);
  GMathVec2<double> p;
  s.get_sample(1, p);
  EXPECT_EQ(p, GMathVec2<double>(0.5, 0.0625));
  s.get_sample(2, p);
  EXPECT_EQ(p, GMathVec2<double>(0.25, 0.125));
  s.get_sample(3, p);
  EXPECT_EQ(p, GMathVec2<double>(0.75, 0.1875));

  GMathVec2<double> out[16], c0, c1;
  s.init(0, 4, 4, 2, 2);
  ASSERT_EQ(s.get_packet_count(), 4u);
  ASSERT_EQ(s.get_packet_samples(0, out, c0, c1), 4u);
  EXPECT_EQ(out[0], GMathVec2<double>(0.0, 0.0));
  EXPECT_EQ(out[1], GMathVec2<double>(0.25, 0.125));
  EXPECT_EQ(out[2], GMathVec2<double>(0.125, 0.25));
  EXPECT_EQ(out[3], GMathVec2<double>(0.375, 0.375));
  EXPECT_EQ(c0, GMathVec2<double>(0.0, 0.0));
  EXPECT_EQ(c1, GMathVec2<double>(0.5, 0.5));
  ASSERT_EQ(s.get_packet_samples(1, out, c0, c1), 4u);
  EXPECT_EQ(out[0].y, 1 / 16.0);
  EXPECT_EQ(out[3].y, 7 / 16.0);
  EXPECT_EQ(c0, GMathVec2<double>(0.5, 0.0));
  EXPECT_EQ(c1, GMathVec2<double>(1.0, 0.5));
  ASSERT_EQ(s.get_packet_samples(3, out, c0, c1), 4u);
  EXPECT_EQ(out[0].y, 9 / 16.0);
  EXPECT_EQ(out[3].y, 15 / 16.0);
  EXPECT_EQ(c0, GMathVec2<double>(0.5, 0.5));
  EXPECT_EQ(c1, GMathVec2<double>(1.0, 1.0));

  s.init(0, 10, 1, 2, 1);
  EXPECT_EQ(s.get_packet_count_x(), 4u);
  // Five points in two packet columns: the first packet holds three.
  s.init(0, 5, 1, 2, 1);
  ASSERT_EQ(s.get_packet_count(), 2u);
  ASSERT_EQ(s.get_packet_samples(0, out, c0, c1), 3u);
  EXPECT_EQ(out[2].y, 4 * (1.0 / 5));
  ASSERT_EQ(s.get_packet_samples(1, out, c0, c1), 2u);
  EXPECT_EQ(out[1].y, 3 * (1.0 / 5));
}

TEST(HammersleySampler2d, SeedsKeepTheirLow16BitsAndSetSeedMovesOnlyU) {
  HammersleySampler2d a, b;
  for (unsigned seed : {5u, 123u, 65535u}) {
    a.init(seed, 7, 3, 2, 2);
    b.init(seed + 65536u * 3, 7, 3, 2, 2);
    auto const pa = all_samples(a), pb = all_samples(b);
    EXPECT_EQ(std::memcmp(pa.data(), pb.data(), pa.size() * sizeof pa[0]), 0) << seed;
  }
  a.init(9, 16, 1);
  auto const before = all_samples(a);
  a.set_seed(70000);  // stores 4464
  auto const after = all_samples(a);
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
  auto const pa = all_samples(a), pb = all_samples(b);
  EXPECT_EQ(std::memcmp(pa.data(), pb.data(), pa.size() * sizeof pa[0]), 0);
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
  std::vector<GMathVec2<double>> packet;
  for (unsigned nx : {1u, 2u, 3u, 5u, 6u, 7u, 9u, 10u, 13u, 16u, 33u}) {
    for (unsigned ny : {1u, 2u, 3u, 5u, 8u, 17u}) {
      for (auto const& ps : {std::make_pair(1u, 1u), std::make_pair(2u, 2u), std::make_pair(3u, 2u),
                             std::make_pair(4u, 1u), std::make_pair(2u, 5u)}) {
        for (unsigned seed : {0u, 12345u}) {
          s.init(seed, nx, ny, ps.first, ps.second);
          unsigned const n = nx * ny, px = s.get_packet_count_x(), py = s.get_packet_count_y();
          std::string const where = std::to_string(nx) + "x" + std::to_string(ny) + " in " +
                                    std::to_string(ps.first) + "x" + std::to_string(ps.second) +
                                    " seed " + std::to_string(seed);
          EXPECT_TRUE(smallest_fitting_power(px, nx, ps.first)) << where << " Px " << px;
          EXPECT_TRUE(smallest_fitting_power(py, ny, ps.second)) << where << " Py " << py;
          ASSERT_EQ(s.get_packet_count(), px * py) << where;
          auto const all = all_samples(s);
          for (unsigned k = 0; k < n; ++k) {
            GMathVec2<double> q;
            s.get_sample(k, q);
            ASSERT_EQ(std::memcmp(&q, &all[k], sizeof q), 0) << where << " index " << k;
          }
          auto const index = index_by_v(all);
          ASSERT_EQ(index.size(), n) << where;
          unsigned const largest = static_cast<unsigned>(std::ceil((double(n) / py + 1) / px));
          packet.assign(largest, GMathVec2<double>());
          std::vector<int> hits(n, 0);
          for (unsigned p = 0; p < px * py; ++p) {
            GMathVec2<double> c0, c1;
            unsigned const got = s.get_packet_samples(p, packet.data(), c0, c1);
            ASSERT_LE(got, largest) << where;
            EXPECT_EQ(c1.x - c0.x, 1.0 / px) << where;
            EXPECT_EQ(c0.y, (p / px) * (1.0 / py)) << where;
            EXPECT_EQ(c1.y, c0.y + 1.0 / py) << where;
            double const half = 0.5 / n;
            unsigned previous = 0;
            for (unsigned j = 0; j < got; ++j) {
              auto const it = index.find(packet[j].y);
              ASSERT_NE(it, index.end()) << where << " packet " << p;
              EXPECT_EQ(std::memcmp(&packet[j], &all[it->second], sizeof packet[j]), 0) << where;
              ++hits[it->second];
              // Every Px-th index of the band, in increasing order.
              unsigned const band_start =
                  static_cast<unsigned>(std::floor((p / px) * double(n) / py + 0.5));
              EXPECT_EQ(it->second, j == 0 ? band_start + p % px : previous + px) << where;
              previous = it->second;
              EXPECT_TRUE(packet[j].x >= c0.x && packet[j].x < c1.x)
                  << where << " packet " << p << " u " << packet[j].x;
              EXPECT_TRUE(packet[j].y >= c0.y - half - 1e-15 && packet[j].y <= c1.y + half + 1e-15)
                  << where << " packet " << p << " v " << packet[j].y;
            }
          }
          for (unsigned k = 0; k < n; ++k)
            ASSERT_EQ(hits[k], 1) << where << " index " << k;
        }
      }
    }
  }
}

TEST(HammersleySampler2d, SinglePacketModeAndCopies) {
  HammersleySampler2d s;
  s.init(77, 5, 3);
  auto const all = all_samples(s);
  for (unsigned p : {0u, 1u, 1000u}) {
    std::vector<GMathVec2<double>> out(15);
    GMathVec2<double> c0(-1.0, -1.0), c1;
    ASSERT_EQ(s.get_packet_samples(p, out.data(), c0, c1), 15u);
    EXPECT_EQ(std::memcmp(out.data(), all.data(), 15 * sizeof out[0]), 0);
    EXPECT_EQ(c0, GMathVec2<double>(0.0, 0.0));
    EXPECT_EQ(c1, GMathVec2<double>(1.0, 1.0));
  }
  // A copy is the same pattern, and stays so when its source is re-initialised.
  HammersleySampler2d copy;
  copy = s;
  s.init(1, 2, 2, 1, 1);
  auto const copied = all_samples(copy);
  ASSERT_EQ(copied.size(), all.size());
  EXPECT_EQ(std::memcmp(copied.data(), all.data(), all.size() * sizeof all[0]), 0);
}

TEST(HammersleySampler2d, SubSetWorkedExamples) {
  struct Case {
    unsigned subsets, count;
    std::vector<std::vector<unsigned>> sets;
  };
  Case const cases[] = {
      {3, 4, {{0, 3, 6, 9}, {1, 4, 7, 10}, {2, 5, 8, 11}}},
      {2, 8, {{0, 1, 8, 9, 4, 5, 12, 13}, {2, 3, 10, 11, 6, 7, 14, 15}}},
      {4, 4, {{0, 1, 8, 9}, {4, 5, 12, 13}, {2, 3, 10, 11}, {6, 7, 14, 15}}},
      {2, 5, {{0, 1, 6, 7, 4}, {5, 8, 9, 2, 3}}},
  };
  HammersleySampler2d whole, sub;
  for (Case const& c : cases) {
    whole.init(0, c.subsets * c.count, 1);
    auto const points = all_samples(whole);
    for (unsigned b = 0; b < c.subsets; ++b) {
      sub.init_sub(0, c.subsets, b, c.count);
      auto const got = all_samples(sub);
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
      for (unsigned seed : {0u, 777u}) {
        whole.init(seed, subsets * count, 1);
        auto const points = all_samples(whole);
        auto const index = index_by_v(points);
        std::vector<int> hits(points.size(), 0);
        for (unsigned b = 0; b < subsets; ++b) {
          sub.init_sub(seed, subsets, b, count);
          ASSERT_EQ(sub.get_sample_count(), count);
          ASSERT_EQ(sub.get_packet_count(), 1u);
          auto const got = all_samples(sub);
          std::vector<GMathVec2<double>> packet(count);
          GMathVec2<double> c0, c1;
          ASSERT_EQ(sub.get_packet_samples(b + 3, packet.data(), c0, c1), count);
          EXPECT_EQ(c0, GMathVec2<double>(0.0, 0.0));
          EXPECT_EQ(c1, GMathVec2<double>(1.0, 1.0));
          for (unsigned i = 0; i < count; ++i) {
            GMathVec2<double> q;
            sub.get_sample(i, q);
            ASSERT_EQ(std::memcmp(&q, &got[i], sizeof q), 0);
            ASSERT_EQ(std::memcmp(&packet[i], &got[i], sizeof q), 0);
            auto const it = index.find(got[i].y);
            ASSERT_NE(it, index.end()) << subsets << " sets of " << count << ", set " << b;
            ASSERT_EQ(got[i], points[it->second]);
            ++hits[it->second];
          }
        }
        for (unsigned k = 0; k < points.size(); ++k) {
          ASSERT_EQ(hits[k], 1) << subsets << " sets of " << count << " seed " << seed << " point "
                                << k;
        }
      }
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
