// Hierarchical and Halton samplers (get_all_samples and get_packet_samples)
// against plain references written from their formulas and the store bound
// of the same GMathVec2<double> array, and the build of the shared
// permutations against its plain reference.

#include <benchmark/benchmark.h>

#include <cmath>
#include <utility>
#include <vector>

#include "bench/bench_support.h"
#include "platform/random/grandom_fast_mt.h"
#include "sampling/samplers.h"
#include "sampling/sampling.h"

namespace {

// ---- Plain references -------------------------------------------------------

unsigned int t_entry(unsigned int const& j) {
  return GRandomFastMt::m_table[j % GRandomFastMt::m_table_size];
}

double ref_unit(unsigned int const& r) {
  return static_cast<double>(r) * 0x1.00000001p-32;
}

double ref_radical_inverse(unsigned int n, unsigned int const& base, double const& inv_base) {
  double result = 0.0, w = inv_base;
  while (n != 0) {
    if (n % base != 0)
      result = static_cast<double>(n % base) * w + result;
    w = w * inv_base;
    n = n / base;
  }
  return result;
}

double ref_radical_inverse_2(unsigned int n) {
  double result = 0.0, w = 0.5;
  for (; n != 0; n >>= 1, w = w * 0.5) {
    if (n & 1u)
      result = w + result;
  }
  return result;
}

unsigned int ref_reverse_bits(unsigned int n) {
  unsigned int r = 0;
  for (int b = 0; b < 32; ++b)
    r |= ((n >> b) & 1u) << (31 - b);
  return r;
}

unsigned int ref_sobol_2(unsigned int n) {
  unsigned int r = 0, d = 0x80000000u;
  for (; n != 0; n >>= 1, d ^= d >> 1) {
    if (n & 1u)
      r ^= d;
  }
  return r;
}

// The greedy walk over the seed-0 Hammersley set of m points.
std::vector<unsigned int> ref_permutation(unsigned int const& m) {
  std::vector<unsigned int> p(m);
  for (unsigned int k = 0; k < m; ++k)
    p[k] = k;
  double const inv = 1.0 / static_cast<double>(m);
  unsigned int const start = GRandomFastMt::m_table[0];
  std::swap(p[0], p[t_entry(start) % m]);
  double px = ref_radical_inverse_2(p[0]), py = p[0] * inv;
  unsigned int c = 1;
  for (unsigned int i = 1; i < m; ++i) {
    unsigned int const r = m - i;
    unsigned int const k = std::min(std::max(r / 4, 1u), 16u);
    double best = 1e308, bx = px, by = py;
    unsigned int chosen = i;
    for (unsigned int t = 0; t < k; ++t) {
      unsigned int const pos = i + t_entry(start + c++) % r;
      double const qx = ref_radical_inverse_2(p[pos]), qy = p[pos] * inv;
      double const e = std::fabs(((qx - px) * (qx - px) + (qy - py) * (qy - py)) - 0.8);
      if (e < best) {
        best = e;
        chosen = pos;
        bx = qx;
        by = qy;
      }
    }
    std::swap(p[i], p[chosen]);
    px = bx;
    py = by;
  }
  return p;
}

// Set 0 of one seed in each mode, from the formulas.
void ref_points(HierarchicalSampler2d::Mode const& mode, unsigned int const& seed,
                unsigned int const& n, std::vector<unsigned int> const& permutation,
                GMathVec2<double>* out) {
  unsigned int const low = seed & 0xFFFFu;
  unsigned int const t = t_entry(seed);
  unsigned int const mask_u = t_entry(t), mask_v = t_entry(t + 1);
  unsigned int const offset = Sampling::shuffle_index(seed, n);
  double const v_offset = ref_radical_inverse(seed, 3, 1.0 / 3.0), inv_n = 1.0 / n;
  for (unsigned int i = 0; i < n; ++i) {
    if (mode == HierarchicalSampler2d::RANDOM) {
      unsigned int const k = t_entry(low) + 2 * i;
      out[i] = GMathVec2<double>(ref_unit(t_entry(k)), ref_unit(t_entry(k + 1)));
    } else if (mode == HierarchicalSampler2d::HAMMERSLEY && !permutation.empty()) {
      unsigned int const j = permutation[(offset + i) % n];
      out[i] = GMathVec2<double>(ref_radical_inverse_2(j + low), (j + v_offset) * inv_n);
    } else if (mode == HierarchicalSampler2d::SOBOL) {
      out[i] = GMathVec2<double>(ref_unit(ref_reverse_bits(i + low + 1) ^ mask_u),
                                 ref_unit(ref_sobol_2(i + low + 1) ^ mask_v));
    } else {  // Halton, and Hammersley without a permutation
      out[i] = GMathVec2<double>(ref_radical_inverse_2(i + low),
                                 ref_radical_inverse(i + low, 3, 1.0 / 3.0));
    }
  }
}

char const* const k_mode_names[] = {"random", "hammersley", "halton", "sobol"};
unsigned int const k_seed = 4711;

struct LibraryStarted {
  LibraryStarted() { Sampling::init(); }
  ~LibraryStarted() { Sampling::destroy(); }
};

// ---- Shared permutations ----------------------------------------------------

// All 2048 permutations built through Hammersley-mode inits, on a fresh
// table each time, against the plain greedy walk; the store bound writes the
// 2048 * 2049 / 2 indices.
void BM_PermutationBuildAll(benchmark::State& state) {
  HierarchicalSampler2d sampler;
  unsigned int const m_max = 2048;
  // Check: every table entry equals the reference walk.
  Sampling::init();
  for (unsigned int m = 1; m <= m_max; m += 97) {
    sampler.init(0, m, 1, 0);
    std::vector<GMathVec2<double>> out(m), check(m);
    sampler.get_all_samples(out.data());
    ref_points(HierarchicalSampler2d::HAMMERSLEY, 0, m, ref_permutation(m), check.data());
    if (!bench::check_same(state, out, check, "permutation points")) {
      Sampling::destroy();
      return;
    }
  }
  Sampling::destroy();
  std::vector<unsigned int> indices(m_max * (m_max + 1) / 2);
  bench::run(
      state, m_max,
      [&] {
        Sampling::init();
        for (unsigned int m = 1; m <= m_max; ++m)
          sampler.init(0, m, 1, 0);
        Sampling::destroy();
      },
      [&] {
        for (unsigned int m = 1; m <= m_max; ++m)
          benchmark::DoNotOptimize(ref_permutation(m).data());
      },
      [&] { bench::store_records(indices.data(), indices.size(), 7u); });
}
BENCHMARK(BM_PermutationBuildAll)->Unit(benchmark::kMillisecond)->Iterations(3);

// ---- get_all_samples and get_packet_samples per mode ------------------------

void hierarchical_args(benchmark::internal::Benchmark* b) {
  b->ArgNames({"mode", "n", "packet"});
  for (int mode = 0; mode < 4; ++mode) {
    for (int n : {256, 4096}) {
      for (int packet : {0, 1})
        b->Args({mode, n, packet});
    }
  }
}

// Times `sampler`'s get_all_samples (or its one packet) against `reference`,
// after checking its points bit for bit against the reference's.
void time_sampler(benchmark::State& state, Sampler2d& sampler, bool const& packet,
                  std::function<void(GMathVec2<double>*)> const& reference) {
  unsigned int const n = sampler.get_sample_count();
  std::vector<GMathVec2<double>> samples(n), expected(n);
  GMathVec2<double> c0, c1;
  auto const library = [&] {
    if (packet)
      sampler.get_packet_samples(0, samples.data(), c0, c1);
    else
      sampler.get_all_samples(samples.data());
  };
  library();
  reference(expected.data());
  if (!bench::check_same(state, samples, expected))
    return;
  if (packet && !(c0.x == 0.0 && c0.y == 0.0 && c1.x == 1.0 && c1.y == 1.0)) {
    state.SkipWithError("packet box is not the unit square");
    return;
  }
  bench::run(
      state, n, library, [&] { reference(expected.data()); },
      [&] { bench::store_records(expected.data(), n, GMathVec2<double>(0.25, 0.5)); });
}

void BM_HierarchicalSamples(benchmark::State& state) {
  LibraryStarted library;
  auto const mode = static_cast<HierarchicalSampler2d::Mode>(state.range(0));
  unsigned int const n = static_cast<unsigned int>(state.range(1));
  HierarchicalSampler2d sampler(mode);
  sampler.init(k_seed, n, 1, 0);
  std::vector<unsigned int> const permutation =
      n <= 2048 ? ref_permutation(n) : std::vector<unsigned int>();
  time_sampler(state, sampler, state.range(2) != 0,
               [&](GMathVec2<double>* out) { ref_points(mode, k_seed, n, permutation, out); });
  state.SetLabel(mode == HierarchicalSampler2d::HAMMERSLEY && n > 2048 ? "hammersley->halton"
                                                                       : k_mode_names[mode]);
}
BENCHMARK(BM_HierarchicalSamples)->Apply(hierarchical_args);

// ---- Halton with a base chosen at run time ----------------------------------

unsigned int const k_halton_count = 4096;

void ref_halton(unsigned int const& base, GMathVec2<double>* out) {
  for (unsigned int i = 0; i < k_halton_count; ++i) {
    out[i] = GMathVec2<double>(ref_radical_inverse_2(i + k_seed),
                               ref_radical_inverse(i + k_seed, base, 1.0 / base));
  }
}

void BM_HaltonSamples(benchmark::State& state) {
  unsigned int const base = static_cast<unsigned int>(state.range(0));
  HaltonSampler2d sampler;
  sampler.init(k_seed, k_halton_count, 1, base);
  time_sampler(state, sampler, state.range(1) != 0,
               [&](GMathVec2<double>* out) { ref_halton(base, out); });
}
BENCHMARK(BM_HaltonSamples)->ArgNames({"base", "packet"})->ArgsProduct({{3, 7, 31}, {0, 1}});

}  // namespace
