#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>
#include <vector>

#include "sampling/patterns/hammersley_sampler2d.h"
#include "sampling/patterns/stratified_sampler2d.h"

// The sampler records are not standard-layout (the base has fields too), so
// offsetof does not apply; the offsets are measured on an instance instead.
// Callers embed these records and copy them by plain assignment, so their
// field order and size are part of the interface.

namespace {

template <typename R, typename F>
std::size_t offset(R const& record, F const& field) {
  return static_cast<std::size_t>(reinterpret_cast<char const*>(&field) -
                                  reinterpret_cast<char const*>(&record));
}

// The base fields, measured through a derived record that may read them.
struct Sampler2dProbe : Sampler2d {
  std::vector<std::size_t> offsets() const {
    return {offset(*this, m_get_sample_callback), offset(*this, m_get_all_samples_callback),
            offset(*this, m_get_packet_samples_callback), offset(*this, m_sample_count),
            offset(*this, m_packet_count)};
  }
};

template <typename S>
bool base_comes_first(S const& s) {
  return static_cast<void const*>(static_cast<Sampler2d const*>(&s)) ==
         static_cast<void const*>(&s);
}

}  // namespace

struct StratifiedSampler2dLayout {
  static std::vector<std::size_t> offsets(StratifiedSampler2d const& s) {
    return {
        offset(s, s.m_random),         offset(s, s.m_count_x),        offset(s, s.m_count_y),
        offset(s, s.m_packet_count_x), offset(s, s.m_packet_count_y), offset(s, s.m_packet_size_x),
        offset(s, s.m_packet_size_y),  offset(s, s.m_inv_count_x),    offset(s, s.m_inv_count_y),
        offset(s, s.m_jitter_x),       offset(s, s.m_jitter_y),       offset(s, s.m_offset_x),
        offset(s, s.m_offset_y)};
  }
};

struct HammersleySampler2dLayout {
  static std::vector<std::size_t> offsets(HammersleySampler2d const& s) {
    return {offset(s, s.m_count_x),
            offset(s, s.m_count_y),
            offset(s, s.m_packet_count_x),
            offset(s, s.m_packet_count_y),
            offset(s, s.m_seed),
            offset(s, s.m_subset_index),
            offset(s, s.m_subset_count),
            offset(s, s.m_inv_packet_count_x),
            offset(s, s.m_inv_packet_count_y),
            offset(s, s.m_band_size),
            offset(s, s.m_v_offset),
            offset(s, s.m_inv_point_count)};
  }
};

TEST(SamplerLayout, RecordsArePlainCopyableValues) {
  EXPECT_TRUE(std::is_trivially_copyable<StratifiedSampler2d>::value);
  EXPECT_TRUE(std::is_trivially_copyable<HammersleySampler2d>::value);
  EXPECT_TRUE(std::is_trivially_destructible<StratifiedSampler2d>::value);
  EXPECT_TRUE(std::is_trivially_destructible<HammersleySampler2d>::value);
  EXPECT_FALSE(std::is_polymorphic<Sampler2d>::value);
  EXPECT_EQ(sizeof(Sampler2d), 32u);
  EXPECT_EQ(sizeof(StratifiedSampler2d), 112u);
  EXPECT_EQ(sizeof(HammersleySampler2d), 104u);
}

TEST(SamplerLayout, FieldsFollowTheBaseInOrder) {
  // Three callbacks, then the two counts.
  EXPECT_EQ(Sampler2dProbe().offsets(), (std::vector<std::size_t>{0, 8, 16, 24, 28}));
  StratifiedSampler2d stratified;
  EXPECT_TRUE(base_comes_first(stratified));
  EXPECT_EQ(StratifiedSampler2dLayout::offsets(stratified),
            (std::vector<std::size_t>{32, 40, 44, 48, 52, 56, 60, 64, 72, 80, 88, 96, 104}));
  // Seven 32-bit fields, then four bytes of padding before the doubles.
  HammersleySampler2d hammersley;
  EXPECT_TRUE(base_comes_first(hammersley));
  EXPECT_EQ(HammersleySampler2dLayout::offsets(hammersley),
            (std::vector<std::size_t>{32, 36, 40, 44, 48, 52, 56, 64, 72, 80, 88, 96}));
}
