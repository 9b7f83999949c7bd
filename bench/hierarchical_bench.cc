// Hierarchical and Halton samplers against plain references written from
// their formulas, and the one-time cost of the shared permutations.
//
// Each library benchmark sits beside a reference that computes the same
// points with straightforward loops (checked bit for bit before timing) and
// beside the store bound, a loop writing the same bytes; items per second
// of the three give the ratios.

#include <benchmark/benchmark.h>

#include <cmath>
#include <utility>
#include <vector>

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

bool same_points(std::vector<GMathVec2<double>> const& a, std::vector<GMathVec2<double>> const& b) {
  for (size_t i = 0; i < a.size(); ++i) {
    if (a[i].x != b[i].x || a[i].y != b[i].y)
      return false;
  }
  return true;
}

char const* const k_mode_names[] = {"random", "hammersley", "halton", "sobol"};
unsigned int const k_seed = 4711;

struct LibraryStarted {
  LibraryStarted() { Sampling::init(); }
  ~LibraryStarted() { Sampling::destroy(); }
};

// ---- Shared permutations ----------------------------------------------------

// All 2048 permutations built through Hammersley-mode inits, on a fresh
// table each iteration.
void BM_PermutationBuildAll(benchmark::State& state) {
  HierarchicalSampler2d sampler;
  for (auto _ : state) {
    Sampling::init();
    for (unsigned int m = 1; m <= 2048; ++m)
      sampler.init(0, m, 1, 0);
    Sampling::destroy();
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * 2048);
}
BENCHMARK(BM_PermutationBuildAll)->Unit(benchmark::kMillisecond);

void BM_PermutationBuildAllReference(benchmark::State& state) {
  for (auto _ : state) {
    for (unsigned int m = 1; m <= 2048; ++m)
      benchmark::DoNotOptimize(ref_permutation(m).data());
  }
  state.SetItemsProcessed(state.iterations() * 2048);
}
BENCHMARK(BM_PermutationBuildAllReference)->Unit(benchmark::kMillisecond);

// ---- get_all_samples per mode ----------------------------------------------

void hierarchical_args(benchmark::internal::Benchmark* b) {
  for (int mode = 0; mode < 4; ++mode) {
    for (int n : {256, 4096})
      b->Args({mode, n});
  }
}

// Times get_all_samples of `sampler`, after checking its points bit for bit
// against `expected`.
void time_all_samples(benchmark::State& state, Sampler2d& sampler,
                      std::vector<GMathVec2<double>> const& expected) {
  std::vector<GMathVec2<double>> samples(expected.size());
  sampler.get_all_samples(samples.data());
  if (!same_points(samples, expected))
    state.SkipWithError("differs from the reference");
  for (auto _ : state) {
    sampler.get_all_samples(samples.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * expected.size());
}

void BM_HierarchicalAllSamples(benchmark::State& state) {
  LibraryStarted library;
  auto const mode = static_cast<HierarchicalSampler2d::Mode>(state.range(0));
  unsigned int const n = static_cast<unsigned int>(state.range(1));
  HierarchicalSampler2d sampler(mode);
  sampler.init(k_seed, n, 1, 0);
  std::vector<GMathVec2<double>> expected(n);
  ref_points(mode, k_seed, n, n <= 2048 ? ref_permutation(n) : std::vector<unsigned int>(),
             expected.data());
  time_all_samples(state, sampler, expected);
  state.SetLabel(mode == HierarchicalSampler2d::HAMMERSLEY && n > 2048 ? "hammersley->halton"
                                                                       : k_mode_names[mode]);
}
BENCHMARK(BM_HierarchicalAllSamples)->Apply(hierarchical_args);

void BM_HierarchicalAllSamplesReference(benchmark::State& state) {
  auto const mode = static_cast<HierarchicalSampler2d::Mode>(state.range(0));
  unsigned int const n = static_cast<unsigned int>(state.range(1));
  std::vector<unsigned int> const permutation =
      n <= 2048 ? ref_permutation(n) : std::vector<unsigned int>();
  std::vector<GMathVec2<double>> samples(n);
  for (auto _ : state) {
    ref_points(mode, k_seed, n, permutation, samples.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * n);
  state.SetLabel(k_mode_names[mode]);
}
BENCHMARK(BM_HierarchicalAllSamplesReference)->Apply(hierarchical_args);

// Writing the same bytes: the floor for any sampler of n points.
void BM_HierarchicalStoreBound(benchmark::State& state) {
  unsigned int const n = static_cast<unsigned int>(state.range(0));
  std::vector<GMathVec2<double>> samples(n);
  for (auto _ : state) {
    for (unsigned int i = 0; i < n; ++i)
      samples[i] = GMathVec2<double>(i * 0x1p-12, 0.5);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_HierarchicalStoreBound)->Arg(256)->Arg(4096);

// ---- Halton with a base chosen at run time ----------------------------------

unsigned int const k_halton_count = 4096;

void ref_halton(unsigned int const& base, GMathVec2<double>* out) {
  for (unsigned int i = 0; i < k_halton_count; ++i) {
    out[i] = GMathVec2<double>(ref_radical_inverse_2(i + k_seed),
                               ref_radical_inverse(i + k_seed, base, 1.0 / base));
  }
}

void BM_HaltonAllSamples(benchmark::State& state) {
  unsigned int const base = static_cast<unsigned int>(state.range(0));
  HaltonSampler2d sampler;
  sampler.init(k_seed, k_halton_count, 1, base);
  std::vector<GMathVec2<double>> expected(k_halton_count);
  ref_halton(base, expected.data());
  time_all_samples(state, sampler, expected);
}
BENCHMARK(BM_HaltonAllSamples)->Arg(3)->Arg(7)->Arg(31);

void BM_HaltonAllSamplesReference(benchmark::State& state) {
  unsigned int const base = static_cast<unsigned int>(state.range(0));
  std::vector<GMathVec2<double>> samples(k_halton_count);
  for (auto _ : state) {
    ref_halton(base, samples.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * k_halton_count);
}
BENCHMARK(BM_HaltonAllSamplesReference)->Arg(3)->Arg(7)->Arg(31);

}  // namespace
