#include "sampling/patterns/hierarchical_sampler2d.h"

#include <algorithm>
#include <cstdint>
#include <new>

#include "platform/random/grandom_fast_mt.h"
#include "sampling/checks.h"
#include "sampling/patterns/permutation_builder.h"
#include "sampling/patterns/radical_inverse.h"
#include "sampling/patterns/sobol_components.h"
#include "sampling/patterns/u32_lanes.h"
#include "sampling/warps/shuffle_index.h"

namespace {

// Point counts up to which the Hammersley mode has a permutation.
constexpr unsigned int k_permutation_limit = 2048;

}  // namespace

CoreAtomic64* HierarchicalSampler2d::m_table = nullptr;
unsigned int const HierarchicalSampler2d::m_table_size = k_permutation_limit;

namespace {

// Entry j of the platform random table, j taken modulo its size.
inline unsigned int table_entry(unsigned int const& j) {
  return GRandomFastMt::m_table[j % GRandomFastMt::m_table_size];
}

inline unsigned int* indices_at(std::uint64_t const& address) {
  return reinterpret_cast<unsigned int*>(static_cast<std::uintptr_t>(address));
}

#if defined(SAMPLING_U32_LANES)
// The Hammersley mode's u, radical_inverse_2(j + seed), by look-up: with j
// below the permutation limit and the seed below 2^16, j + seed has at most
// 17 bits, and its radical inverse is that of its low byte plus that of the
// rest in place (the bits reversed into the top of 32, as fractions). The
// two land on disjoint binary digits, so the sum is exact and gives
// radical_inverse_2's double; no 32-bit reversal per point.
constexpr unsigned int k_largest_sum = (k_permutation_limit - 1u) + 0xFFFFu;

struct ByteRadicalInverses {
  double low[256];                         // radical_inverse_2(b)
  double high[(k_largest_sum >> 8) + 1u];  // radical_inverse_2(h << 8)
};

constexpr ByteRadicalInverses make_byte_radical_inverses() {
  ByteRadicalInverses t{};
  for (unsigned int b = 0; b < 256u; ++b)
    t.low[b] = radical_inverse_2(b);
  for (unsigned int h = 0; h <= (k_largest_sum >> 8); ++h)
    t.high[h] = radical_inverse_2(h << 8);
  return t;
}

constexpr ByteRadicalInverses k_byte_radical_inverses = make_byte_radical_inverses();

inline __m128d hammersley_u(unsigned int const& sum) {
  return _mm_add_sd(_mm_load_sd(&k_byte_radical_inverses.low[sum & 255u]),
                    _mm_load_sd(&k_byte_radical_inverses.high[sum >> 8]));
}
#endif

}  // namespace

// ---- Shared permutation table ---------------------------------------------

void HierarchicalSampler2d::init() {
  if (m_table != nullptr)
    return;
  // Value-initialised: every slot starts empty. A failed allocation leaves
  // no table, which get_indices treats as such.
  m_table = new (std::nothrow) CoreAtomic64[m_table_size];
}

void HierarchicalSampler2d::destroy() {
  if (m_table == nullptr)
    return;
  for (unsigned int slot = 0; slot < m_table_size; ++slot)
    delete[] indices_at(m_table[slot].get());
  delete[] m_table;
  m_table = nullptr;
}

unsigned int* HierarchicalSampler2d::get_indices(unsigned int const& count) {
  SAMPLING_CHECK(m_table != nullptr,
                 "HierarchicalSampler2d::init: Hammersley mode before Sampling::init");
  if (count == 0 || count > m_table_size || m_table == nullptr)
    return nullptr;
  CoreAtomic64& slot = m_table[count - 1];
  // Acquire: a published address comes with the contents written before it.
  std::uint64_t const found = slot.get();
  if (found != 0)
    return indices_at(found);

  unsigned int* const indices = new (std::nothrow) unsigned int[count];
  if (indices == nullptr)
    return nullptr;
  for (unsigned int k = 0; k < count; ++k)
    indices[k] = k;
  build_indices(indices, count);
  // Full barrier: the contents are ordered before the address. The first
  // thread to swap wins; a later one drops its own (identical) array.
  std::uint64_t const address = reinterpret_cast<std::uintptr_t>(indices);
  std::uint64_t const published = slot.compare_and_swap(0, address);
  if (published == 0)
    return indices;
  delete[] indices;
  return indices_at(published);
}

// ---- Sampler ----------------------------------------------------------------

void HierarchicalSampler2d::init(unsigned int const& seed, unsigned int const& count,
                                 unsigned int const& set_count, unsigned int const& set_index) {
  m_set_count = set_count;
  m_set_index = set_index;
  m_point_count = count * set_count;
  m_seed = seed & 0xFFFFu;
  m_scale = k_one_third;
  Sampler2d::init(count, 1);
  unsigned int const set_start = count * set_index;
  switch (m_mode) {
    case HAMMERSLEY:
      m_indices = get_indices(m_point_count);
      if (m_indices != nullptr) {
        // The v offset and the starting position use all 32 bits of the seed.
        m_v_offset = radical_inverse_3(seed);
        m_offset = set_start + shuffled_index(seed, m_point_count);
        m_scale = 1.0 / static_cast<double>(m_point_count);
        set_callbacks<HierarchicalSampler2d, &HammersleyCallbacks::get_sample,
                      &get_all_samples_hammersley_callback,
                      &get_packet_samples_hammersley_callback>();
        return;
      }
      // No permutation for this size: the Halton pattern of the same set.
      [[fallthrough]];
    case HALTON:
      m_seed = m_seed + set_start;
      set_callbacks<HierarchicalSampler2d, &HaltonCallbacks::get_sample,
                    &HaltonCallbacks::get_all_samples, &HaltonCallbacks::get_packet_samples>();
      return;
    case SOBOL: {
      unsigned int const t = table_entry(seed);
      m_scramble_u = table_entry(t);
      m_scramble_v = table_entry(t + 1);
      m_seed = m_seed + set_start;
      set_callbacks<HierarchicalSampler2d, &SobolCallbacks::get_sample,
                    &get_all_samples_sobol_callback, &get_packet_samples_sobol_callback>();
      return;
    }
    default:
      m_offset = set_start;
      set_callbacks<HierarchicalSampler2d, &RandomCallbacks::get_sample,
                    &get_all_samples_random_callback, &get_packet_samples_random_callback>();
      return;
  }
}

void HierarchicalSampler2d::get_random_sample(unsigned int const& index, double& u,
                                              double& v) const {
  unsigned int const k = table_entry(m_seed) + 2u * (m_offset + index);
  u = unit_from_u32(table_entry(k));
  v = unit_from_u32(table_entry(k + 1));
}

void HierarchicalSampler2d::get_hammersley_sample(unsigned int const& index, double& u,
                                                  double& v) const {
  unsigned int const j = m_indices[(m_offset + index) % m_point_count];
  u = radical_inverse_2(j + m_seed);
  v = (static_cast<double>(j) + m_v_offset) * m_scale;
}

void HierarchicalSampler2d::get_halton_sample(unsigned int const& index, double& u,
                                              double& v) const {
  unsigned int const n = index + m_seed;
  get_halton_sample_u(n, u);
  get_halton_sample_v(n, v);
}

void HierarchicalSampler2d::get_sobol_sample(unsigned int const& index, double& u,
                                             double& v) const {
  unsigned int const n = index + m_seed;
  get_sobol_sample_u(n, u);
  get_sobol_sample_v(n, v);
}

void HierarchicalSampler2d::get_halton_sample_u(unsigned int const& n, double& u) const {
  u = radical_inverse_2(n);
}

void HierarchicalSampler2d::get_halton_sample_v(unsigned int const& n, double& v) const {
  v = radical_inverse_b(n, 3, m_scale);
}

void HierarchicalSampler2d::get_sobol_sample_u(unsigned int const& n, double& u) const {
  u = unit_from_u32(reverse_bits(n + 1) ^ m_scramble_u);
}

void HierarchicalSampler2d::get_sobol_sample_v(unsigned int const& n, double& v) const {
  v = unit_from_u32(sobol_2_by_bytes(n + 1) ^ m_scramble_v);
}

// ---- Callbacks: each mode stores the shared single-packet walk of its point
// function (SinglePacketCallbacks) directly where that walk serves; below are
// the whole-pattern paths that have loops of their own.

void HierarchicalSampler2d::get_all_samples_random_callback(HierarchicalSampler2d& sampler,
                                                            GMathVec2<double>* samples) {
  HierarchicalSampler2d const local = sampler;
  unsigned int const n = local.m_sample_count;
  unsigned int i = 0;
#if defined(SAMPLING_U32_LANES)
  // Samples i and i + 1 are the four consecutive table entries from
  // first + 2 i on (modulo the table size): one load unless they wrap.
  PairWriter const lanes(0.0, 0.0, k_unit_from_u32_scale, k_unit_from_u32_scale);
  unsigned int const first = table_entry(local.m_seed) + 2u * local.m_offset;
  unsigned int const last_load = GRandomFastMt::m_table_size - 4u;
  for (; n - i >= 2; i += 2) {
    unsigned int const j = (first + 2u * i) % GRandomFastMt::m_table_size;
    if (j <= last_load) {
      lanes.write2(_mm_loadu_si128(reinterpret_cast<__m128i const*>(GRandomFastMt::m_table + j)),
                   samples + i);
    } else {  // the pair at the table's end
      local.get_random_sample(i, samples[i].x, samples[i].y);
      local.get_random_sample(i + 1, samples[i + 1].x, samples[i + 1].y);
    }
  }
#endif
  for (; i < n; ++i)
    local.get_random_sample(i, samples[i].x, samples[i].y);
}
unsigned int HierarchicalSampler2d::get_packet_samples_random_callback(
    HierarchicalSampler2d& sampler, unsigned int const&, GMathVec2<double>* samples,
    GMathVec2<double>& corner0, GMathVec2<double>& corner1) {
  get_all_samples_random_callback(sampler, samples);
  return whole_square_packet(corner0, corner1, sampler.m_sample_count);
}

// The positions (offset + i) % m run through the permutation in segments of
// consecutive entries, each ending at the permutation's end (the position
// steps to 0) or where offset + i wraps past 2^32 (the position restarts at
// 0 too): within a segment four indices are one load, their v in lanes and
// their u by look-up (hammersley_u).
void HierarchicalSampler2d::get_all_samples_hammersley_callback(HierarchicalSampler2d& sampler,
                                                                GMathVec2<double>* samples) {
#if defined(SAMPLING_U32_LANES)
  unsigned int const n = sampler.m_sample_count;
  unsigned int const m = sampler.m_point_count;
  unsigned int const* const indices = sampler.m_indices;
  unsigned int const seed = sampler.m_seed;
  double const v_offset = sampler.m_v_offset;
  double const scale = sampler.m_scale;
  __m128d const add = _mm_set1_pd(v_offset);
  __m128d const times = _mm_set1_pd(scale);
  unsigned int at = sampler.m_offset;
  unsigned int position = at % m;
  unsigned int i = 0;
  while (i < n) {
    unsigned int length = std::min(m - position, n - i);
    unsigned int const to_wrap = 0u - at;  // 0: 2^32 samples away
    if (to_wrap != 0u && to_wrap < length)
      length = to_wrap;
    unsigned int const* j = indices + position;
    unsigned int const* const stop = j + length;
    GMathVec2<double>* out = samples + i;
    for (; stop - j >= 4; j += 4, out += 4) {
      // v of four points in lanes (j below 2^31 converts exactly as a
      // signed integer), u of each by look-up.
      __m128i const four = _mm_loadu_si128(reinterpret_cast<__m128i const*>(j));
      __m128d const v01 = _mm_mul_pd(_mm_add_pd(_mm_cvtepi32_pd(four), add), times);
      __m128d const v23 =
          _mm_mul_pd(_mm_add_pd(_mm_cvtepi32_pd(_mm_shuffle_epi32(four, 0xEE)), add), times);
      _mm_storeu_pd(&out[0].x, _mm_unpacklo_pd(hammersley_u(j[0] + seed), v01));
      _mm_storeu_pd(&out[1].x, _mm_shuffle_pd(hammersley_u(j[1] + seed), v01, 2));
      _mm_storeu_pd(&out[2].x, _mm_unpacklo_pd(hammersley_u(j[2] + seed), v23));
      _mm_storeu_pd(&out[3].x, _mm_shuffle_pd(hammersley_u(j[3] + seed), v23, 2));
    }
    for (; j != stop; ++j, ++out) {
      out->x = _mm_cvtsd_f64(hammersley_u(*j + seed));
      out->y = (static_cast<double>(*j) + v_offset) * scale;
    }
    i += length;
    at += length;
    position += length;
    if (position == m || at == 0u)
      position = 0;
  }
#else
  HammersleyCallbacks::get_all_samples(sampler, samples);
#endif
}
unsigned int HierarchicalSampler2d::get_packet_samples_hammersley_callback(
    HierarchicalSampler2d& sampler, unsigned int const&, GMathVec2<double>* samples,
    GMathVec2<double>& corner0, GMathVec2<double>& corner1) {
  get_all_samples_hammersley_callback(sampler, samples);
  return whole_square_packet(corner0, corner1, sampler.m_sample_count);
}

// Runs of up to 16 samples whose indices n + 1 share all but their low four
// bits (SobolRunTops): per run the scrambled components of the run's base,
// their low 28 bits as doubles and a row of top nibbles for each; per sample
// an exact sum of the low part and the top and the product by the scale, as
// unit_from_u32 forms it. Indices wrap past 2^32 only between runs.
void HierarchicalSampler2d::get_all_samples_sobol_callback(HierarchicalSampler2d& sampler,
                                                           GMathVec2<double>* samples) {
  unsigned int const n = sampler.m_sample_count;
  unsigned int const seed = sampler.m_seed;
  unsigned int const scramble_u = sampler.m_scramble_u;
  unsigned int const scramble_v = sampler.m_scramble_v;
  unsigned int i = 0;
  while (i < n) {
    unsigned int const first = i + seed + 1u;
    unsigned int const base = first & ~15u;
    unsigned int const begin = first & 15u;
    unsigned int const end = n - i < 16u - begin ? begin + (n - i) : 16u;
    unsigned int const u = reverse_bits(base) ^ scramble_u;
    unsigned int const v = sobol_2_by_bytes(base) ^ scramble_v;
    double const low_u = static_cast<double>(u & 0x0FFFFFFFu);
    double const low_v = static_cast<double>(v & 0x0FFFFFFFu);
    double const* const top_u = k_sobol_run_tops.u[u >> 28];
    double const* const top_v = k_sobol_run_tops.v[v >> 28];
    GMathVec2<double>* const out = samples + i - begin;
    for_each_in_run(begin, end, [&](unsigned int const& j) {
      out[j].x = (low_u + top_u[j]) * k_unit_from_u32_scale;
      out[j].y = (low_v + top_v[j]) * k_unit_from_u32_scale;
    });
    i += end - begin;
  }
}
unsigned int HierarchicalSampler2d::get_packet_samples_sobol_callback(
    HierarchicalSampler2d& sampler, unsigned int const&, GMathVec2<double>* samples,
    GMathVec2<double>& corner0, GMathVec2<double>& corner1) {
  get_all_samples_sobol_callback(sampler, samples);
  return whole_square_packet(corner0, corner1, sampler.m_sample_count);
}
