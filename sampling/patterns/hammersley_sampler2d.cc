#include "sampling/patterns/hammersley_sampler2d.h"

#include <algorithm>
#include <cstdint>

#include "sampling/checks.h"
#include "sampling/patterns/radical_inverse.h"
#include "sampling/patterns/single_packet_callbacks.h"
#include "sampling/patterns/u32_lanes.h"
#include "sampling/warps/shuffle_index.h"

namespace {

// Seeds keep their low 16 bits.
inline unsigned int reduce_seed(unsigned int const& seed) {
  return seed & 0xFFFFu;
}

// Smallest power of two 2^k with (count >> k) <= packet_size.
inline unsigned int packet_columns(unsigned int const& count, unsigned int const& packet_size) {
  unsigned int packets = 1;
  unsigned int t = count;
  while (t > packet_size) {
    packets *= 2;
    t >>= 1;
  }
  return packets;
}

// Band edge b of N points in Py = 2^rows bands, the nearest integer to
// b N / Py with halves going up: (long long)(b band_size + 0.5) with
// band_size = N / Py (exact, Py a power of two). While b N stays below 2^52
// each step of that is exact (b N and b N / Py are integers times powers of
// two within 53 bits, and so is the sum with 1/2), so the same integer is
// (b N + Py / 2) / Py in integers: no conversions or products on the path to
// the packet's first point. Larger products take the double formula itself.
inline unsigned int band_edge(unsigned int const& b, unsigned int const& n,
                              unsigned int const& rows, double const& band_size) {
  std::uint64_t const scaled = static_cast<std::uint64_t>(b) * n;
  if (scaled < (std::uint64_t{1} << 52))
    return static_cast<unsigned int>((scaled + ((std::uint64_t{1} << rows) >> 1)) >> rows);
  return static_cast<unsigned int>(
      static_cast<long long>(static_cast<double>(b) * band_size + 0.5));
}

}  // namespace

#if defined(SAMPLING_U32_LANES)
// Per power-of-two step 2^c, c = 0 .. 27: (radical_inverse_2(j) 2^-c, j 2^c)
// for j = 0 .. 15, the bits of j reversed into the top four of 32 as a
// fraction and shifted down by c, beside j shifted up by c. Every entry is
// a power-of-two multiple of a small integer, so these are the exact
// products a loop would form per call.
struct LowDigits {
  alignas(16) double pair[28][16][2];
};

constexpr LowDigits make_low_digits() {
  LowDigits t{};
  double down = 1.0 / 16.0;
  double up = 1.0;
  for (unsigned int c = 0; c < 28; ++c) {
    for (unsigned int j = 0; j < 16; ++j) {
      t.pair[c][j][0] = static_cast<double>(reverse_bits(j) >> 28) * down;
      t.pair[c][j][1] = static_cast<double>(j) * up;
    }
    down *= 0.5;
    up *= 2.0;
  }
  return t;
}

constexpr LowDigits k_low_digits = make_low_digits();
#endif

// The point formulas with the record's three inputs held in locals.
struct HammersleySampler2d::HammersleyPoints {
  explicit HammersleyPoints(HammersleySampler2d const& sampler)
      : seed(sampler.m_seed),
        v_offset(sampler.m_v_offset),
        inv_point_count(sampler.m_inv_point_count)
#if defined(SAMPLING_U32_LANES)
        ,
        lanes(0.0, v_offset, 0x1p-32, inv_point_count),
        seeds(_mm_set1_epi32(static_cast<int>(seed)))
#endif
  {
  }

  // Point k of the underlying set: u = radical_inverse_2(k + seed) and
  // v = (k + v_offset) / point count.
  void write(unsigned int const& k, GMathVec2<double>& sample) const {
    sample.x = radical_inverse_2(k + seed);
    sample.y = (static_cast<double>(k) + v_offset) * inv_point_count;
  }

  // Points k, k + step, ... (count of them) into samples[0 .. count-1], for
  // a power-of-two step (1 for whole sets, the packet columns for packets);
  // in runs of up to sixteen where the platform has lanes (the same bits).
  void write_run(unsigned int const& k, unsigned int const step, unsigned int const count,
                 GMathVec2<double>* samples) const {
    unsigned int i = 0;
#if defined(SAMPLING_U32_LANES)
    if (step < (1u << 28) && count != 0u) {
      // With step = 2^c the points whose k + seed agree but in bits c to
      // c + 3 form a run: j = those bits, and the digits of j scaled by
      // (2^-c, 2^c), exact products, give each point's offset from the run's
      // base (its k + seed with those bits clear). u is the base's radical
      // inverse plus that of j's bits, an exact sum (both multiples of
      // 2^-32, the sum below 1 with 32 significant bits) equal to
      // radical_inverse_2 of the index; v adds j step to the base's k,
      // exact too (a double, negative where the first run starts below 0):
      // the indices of whole sets and packets stay below the point count,
      // so k + i step never wraps past 2^32. Per point both sums are one
      // add (digits[j]), then the v offset (u + 0.0 is u) and the scale (u
      // times 1.0), as the lanes of PairWriter round them.
      unsigned int const shift = static_cast<unsigned int>(__builtin_ctz(step));
      double const(*const digits)[2] = k_low_digits.pair[shift];
      __m128d const add = _mm_set_pd(v_offset, 0.0);
      __m128d const scale = _mm_set_pd(inv_point_count, 1.0);
      unsigned int begin = ((k + seed) >> shift) & 15u;
      unsigned int base = (k + seed) - begin * step;
      unsigned int reversed = reverse_bits(base);
      double base_k = static_cast<double>(k) - digits[begin][1];
      double const run_length = static_cast<double>(step << 4);
      GMathVec2<double>* out = samples - begin;
      for (;;) {
        unsigned int const end = count - i < 16u - begin ? begin + (count - i) : 16u;
        __m128d const run = _mm_set_pd(base_k, static_cast<double>(reversed) * 0x1p-32);
        for_each_in_run(begin, end, [&](unsigned int const& j) {
          __m128d const point = _mm_add_pd(_mm_add_pd(run, _mm_load_pd(digits[j])), add);
          _mm_storeu_pd(&out[j].x, _mm_mul_pd(point, scale));
        });
        i += end - begin;
        if (i == count)
          return;
        // The next run's base adds 2^(c+4) (modulo 2^32): the bits it flips
        // run from c + 4 up to the first clear bit (or to bit 31), so their
        // mirror image is as contiguous and flips the reversed base alike.
        unsigned int const next = base + (step << 4);
        unsigned int const flipped = base ^ next;
        reversed ^= (flipped >> (shift + 4u)) << __builtin_clz(flipped);
        base = next;
        base_k += run_length;
        out += 16;
        begin = 0;
      }
    }
#endif
    for (; i < count; ++i)
      write(k + i * step, samples[i]);
  }

#if defined(SAMPLING_U32_LANES)
  // The points of the four indices in the lanes of k into samples[0 .. 3].
  void write4(__m128i const& k, GMathVec2<double>* samples) const {
    lanes.write4(reverse_bits_x4(_mm_add_epi32(k, seeds)), k, samples);
  }
#endif

  unsigned int const seed;
  double const v_offset;
  double const inv_point_count;
#if defined(SAMPLING_U32_LANES)
  PairWriter const lanes;
  __m128i const seeds;
#endif
};

void HammersleySampler2d::compute_v_offset() {
  m_v_offset = radical_inverse_3(m_seed);
}

void HammersleySampler2d::init(unsigned int const& seed, unsigned int const& count_x,
                               unsigned int const& count_y) {
  m_count_x = count_x;
  m_count_y = count_y;
  m_packet_count_x = 1;
  m_packet_count_y = 1;
  unsigned int const n = count_x * count_y;
  Sampler2d::init(n, 1);
  m_seed = reduce_seed(seed);
  compute_v_offset();
  m_inv_point_count = 1.0 / static_cast<double>(n);
  set_callbacks<HammersleySampler2d, &get_sample_callback, &get_all_samples_callback,
                &get_single_packet_samples_callback>();
}

void HammersleySampler2d::init(unsigned int const& seed, unsigned int const& count_x,
                               unsigned int const& count_y, unsigned int const& packet_size_x,
                               unsigned int const& packet_size_y) {
  m_count_x = count_x;
  m_count_y = count_y;
  m_packet_count_x = packet_columns(count_x, packet_size_x);
  m_packet_count_y = packet_columns(count_y, packet_size_y);
  unsigned int const n = count_x * count_y;
  Sampler2d::init(n, m_packet_count_x * m_packet_count_y);
  m_inv_packet_count_x = 1.0 / static_cast<double>(m_packet_count_x);
  m_inv_packet_count_y = 1.0 / static_cast<double>(m_packet_count_y);
  m_band_size = static_cast<double>(n) * m_inv_packet_count_y;
  m_inv_point_count = 1.0 / static_cast<double>(n);
  m_seed = reduce_seed(seed);
  compute_v_offset();
  set_callbacks<HammersleySampler2d, &get_sample_callback, &get_all_samples_callback,
                &get_packet_samples_callback>();
}

void HammersleySampler2d::init(GRandomMt& random, unsigned int const& count_x,
                               unsigned int const& count_y, unsigned int const& packet_size_x,
                               unsigned int const& packet_size_y) {
  unsigned int const seed = random.genrand_int32();
  init(seed, count_x, count_y, packet_size_x, packet_size_y);
}

void HammersleySampler2d::init_sub(unsigned int const& seed, unsigned int const& subset_count,
                                   unsigned int const& subset_index, unsigned int const& count) {
  SAMPLING_CHECK(subset_index < subset_count,
                 "HammersleySampler2d::init_sub: subset_index must be below subset_count");
  m_packet_count_x = 1;
  m_packet_count_y = 1;
  m_count_x = subset_count * count;
  m_count_y = 1;
  m_subset_index = subset_index;
  m_subset_count = subset_count;
  m_seed = reduce_seed(seed);
  compute_v_offset();
  m_inv_point_count = 1.0 / static_cast<double>(subset_count * count);
  Sampler2d::init(count, 1);
  set_callbacks<HammersleySampler2d, &get_sub_sample_callback, &get_all_sub_samples_callback,
                &get_sub_packet_samples_callback>();
}

void HammersleySampler2d::set_seed(unsigned int const& seed) {
  m_seed = reduce_seed(seed);
}

void HammersleySampler2d::get_sample_u(unsigned int const& index, double& u) const {
  u = radical_inverse_2(index + m_seed);
}

void HammersleySampler2d::get_sample_v(unsigned int const& index, double& v) const {
  v = (static_cast<double>(index) + m_v_offset) * m_inv_point_count;
}

unsigned int HammersleySampler2d::get_sub_index(unsigned int const& i) const {
  if (m_subset_count & 1u)
    return i * m_subset_count + m_subset_index;
  unsigned int const n = m_subset_index * m_sample_count + i;
  return (2u * shuffled_index(n >> 1, m_count_x >> 1)) | (n & 1u);
}

void HammersleySampler2d::get_sample_callback(HammersleySampler2d& sampler,
                                              unsigned int const& index,
                                              GMathVec2<double>& sample) {
  // With no points 1/N is infinite and a single point has no meaning.
  SAMPLING_CHECK(sampler.m_sample_count != 0, "HammersleySampler2d::get_sample: the set is empty");
  HammersleyPoints(sampler).write(index, sample);
}

void HammersleySampler2d::get_all_samples_callback(HammersleySampler2d& sampler,
                                                   GMathVec2<double>* samples) {
  // The record's fields are read once: the stores through `samples` could
  // alias them, which would otherwise force a reload per point.
  HammersleyPoints(sampler).write_run(0, 1, sampler.m_sample_count, samples);
}

unsigned int HammersleySampler2d::get_single_packet_samples_callback(HammersleySampler2d& sampler,
                                                                     unsigned int const&,
                                                                     GMathVec2<double>* samples,
                                                                     GMathVec2<double>& corner0,
                                                                     GMathVec2<double>& corner1) {
  get_all_samples_callback(sampler, samples);
  return whole_square_packet(corner0, corner1, sampler.m_sample_count);
}

unsigned int HammersleySampler2d::get_packet_samples_callback(HammersleySampler2d& sampler,
                                                              unsigned int const& packet,
                                                              GMathVec2<double>* samples,
                                                              GMathVec2<double>& corner0,
                                                              GMathVec2<double>& corner1) {
  // Px is a power of two: the column and band by mask and shift, not by a
  // division.
  unsigned int const columns = sampler.m_packet_count_x;
  unsigned int const column_bits = static_cast<unsigned int>(__builtin_ctz(columns));
  unsigned int const px = packet & (columns - 1u);
  unsigned int const py = packet >> column_bits;
  // Nearest band boundaries, halves going up; the integers wrap modulo 2^32.
  unsigned int const rows = static_cast<unsigned int>(__builtin_ctz(sampler.m_packet_count_y));
  unsigned int const n = sampler.m_sample_count;
  unsigned int const start = band_edge(py, n, rows, sampler.m_band_size) + px;
  unsigned int const end = band_edge(py + 1, n, rows, sampler.m_band_size);
  // The indices start, start + Px, ... below end.
  unsigned int const written = start < end ? ((end - start - 1u) >> column_bits) + 1u : 0u;
  HammersleyPoints(sampler).write_run(start, columns, written, samples);
  // All indices of the packet agree modulo Px (a power of two), so the low
  // log2(Px) bits of k + seed, which fix the leading digits of u, agree too.
  corner0.x = radical_inverse_2((sampler.m_seed + start) & (columns - 1));
  corner0.y = static_cast<double>(py) * sampler.m_inv_packet_count_y;
  corner1.x = sampler.m_inv_packet_count_x + corner0.x;
  corner1.y = sampler.m_inv_packet_count_y + corner0.y;
  return written;
}

void HammersleySampler2d::get_sub_sample_callback(HammersleySampler2d& sampler,
                                                  unsigned int const& index,
                                                  GMathVec2<double>& sample) {
  HammersleyPoints(sampler).write(sampler.get_sub_index(index), sample);
}

void HammersleySampler2d::get_all_sub_samples_callback(HammersleySampler2d& sampler,
                                                       GMathVec2<double>* samples) {
  HammersleyPoints const points(sampler);
  HammersleySampler2d const copy = sampler;
  unsigned int const n = copy.m_sample_count;
  unsigned int i = 0;
#if defined(SAMPLING_U32_LANES)
  for (; n - i >= 4; i += 4) {
    points.write4(_mm_set_epi32(static_cast<int>(copy.get_sub_index(i + 3)),
                                static_cast<int>(copy.get_sub_index(i + 2)),
                                static_cast<int>(copy.get_sub_index(i + 1)),
                                static_cast<int>(copy.get_sub_index(i))),
                  samples + i);
  }
#endif
  for (; i < n; ++i)
    points.write(copy.get_sub_index(i), samples[i]);
}

unsigned int HammersleySampler2d::get_sub_packet_samples_callback(HammersleySampler2d& sampler,
                                                                  unsigned int const&,
                                                                  GMathVec2<double>* samples,
                                                                  GMathVec2<double>& corner0,
                                                                  GMathVec2<double>& corner1) {
  get_all_sub_samples_callback(sampler, samples);
  return whole_square_packet(corner0, corner1, sampler.m_sample_count);
}
