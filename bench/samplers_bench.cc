// get_all_samples and get_packet_samples of the stratified and Hammersley
// samplers (plain, packet and sub-set modes) at N = 4096, each beside a plain
// loop written straight from the point formulas (same outputs, checked before
// timing) and the store bound of 4096 GMathVec2<double>.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <vector>

#include "bench/bench_support.h"
#include "platform/random/grandom_mt.h"
#include "sampling/samplers.h"
#include "sampling/sampling.h"

namespace {

using Vec2 = GMathVec2<double>;
unsigned const k_side = 64;
unsigned const k_count = k_side * k_side;
unsigned const k_packet_side = 8;
unsigned const k_seed = 1234;

// A packet-by-packet walk stores the samples and then both corners of every
// packet: the samples into `out`, the corners into `corners`.
struct PacketOutput {
  std::vector<Vec2> samples = std::vector<Vec2>(k_count);
  std::vector<Vec2> corners;
};

template <typename S>
void all_packets(S& sampler, PacketOutput& out) {
  unsigned const packets = sampler.get_packet_count();
  out.corners.resize(2 * packets);
  Vec2* at = out.samples.data();
  for (unsigned p = 0; p < packets; ++p)
    at += sampler.get_packet_samples(p, at, out.corners[2 * p], out.corners[2 * p + 1]);
}

// ---- Plain references -------------------------------------------------------

double ref_unit(unsigned const& r) {
  return r * 0x1.00000001p-32;
}

double ref_radical_inverse_2(unsigned n) {
  double u = 0.0, half = 0.5;
  for (; n != 0; n >>= 1, half *= 0.5) {
    if (n & 1u)
      u = half + u;
  }
  return u;
}

double ref_radical_inverse_3(unsigned n) {
  double offset = 0.0, w = 1.0 / 3.0;
  for (; n != 0; n /= 3) {
    if (n % 3)
      offset = (n % 3) * w + offset;
    w = w * (1.0 / 3.0);
  }
  return offset;
}

// Jittered stratum (ix, iy): two draws, x first.
void ref_stratum(GRandomMt& mt, unsigned const& ix, unsigned const& iy, Vec2& s) {
  double const offset = 0.5 - (1.0 * 0.5);
  s.x = ((ref_unit(mt.genrand_int32()) * 1.0 + ix) + offset) * (1.0 / k_side);
  s.y = ((ref_unit(mt.genrand_int32()) * 1.0 + iy) + offset) * (1.0 / k_side);
}

void ref_stratified_all(GRandomMt& mt, Vec2* out) {
  for (unsigned iy = 0; iy < k_side; ++iy) {
    for (unsigned ix = 0; ix < k_side; ++ix)
      ref_stratum(mt, ix, iy, out[iy * k_side + ix]);
  }
}

// Packets of 8 x 8 strata, rows of packets, strata row by row inside.
void ref_stratified_packets(GRandomMt& mt, PacketOutput& out) {
  unsigned const packets_x = k_side / k_packet_side;
  out.corners.resize(2 * packets_x * packets_x);
  Vec2* at = out.samples.data();
  for (unsigned p = 0; p < packets_x * packets_x; ++p) {
    unsigned const x0 = (p % packets_x) * k_packet_side, y0 = (p / packets_x) * k_packet_side;
    for (unsigned iy = y0; iy < y0 + k_packet_side; ++iy) {
      for (unsigned ix = x0; ix < x0 + k_packet_side; ++ix)
        ref_stratum(mt, ix, iy, *at++);
    }
    out.corners[2 * p] = Vec2(x0 * (1.0 / k_side), y0 * (1.0 / k_side));
    out.corners[2 * p + 1] =
        Vec2((x0 + k_packet_side) * (1.0 / k_side), (y0 + k_packet_side) * (1.0 / k_side));
  }
}

// Hammersley point k: the base-2 radical inverse of k + seed, and v evenly
// spaced shifted by the base-3 radical inverse of the seed.
Vec2 ref_hammersley_point(unsigned const& k, unsigned const& seed, unsigned const& n) {
  return Vec2(ref_radical_inverse_2(k + (seed & 0xFFFFu)),
              (k + ref_radical_inverse_3(seed & 0xFFFFu)) * (1.0 / n));
}

void ref_hammersley_all(unsigned const& seed, Vec2* out) {
  for (unsigned k = 0; k < k_count; ++k)
    out[k] = ref_hammersley_point(k, seed, k_count);
}

// Packets: Px = Py = 8 columns and bands (the smallest powers of two that
// bring 64 down to 8); packet (px, py) holds the indices of band py (rounded
// boundaries) congruent to px modulo Px.
void ref_hammersley_packets(unsigned const& seed, PacketOutput& out) {
  unsigned const columns = k_side / k_packet_side;
  double const band = k_count * (1.0 / columns);
  out.corners.resize(2 * columns * columns);
  Vec2* at = out.samples.data();
  for (unsigned p = 0; p < columns * columns; ++p) {
    unsigned const px = p % columns, py = p / columns;
    unsigned const start = static_cast<unsigned>(static_cast<long long>(py * band + 0.5)) + px;
    unsigned const end = static_cast<unsigned>(static_cast<long long>((py + 1) * band + 0.5));
    for (unsigned k = start; k < end; k += columns)
      *at++ = ref_hammersley_point(k, seed, k_count);
    double const u0 = ref_radical_inverse_2(((seed & 0xFFFFu) + start) % columns);
    out.corners[2 * p] = Vec2(u0, py * (1.0 / columns));
    out.corners[2 * p + 1] = Vec2((1.0 / columns) + u0, (1.0 / columns) + py * (1.0 / columns));
  }
}

// Sub-set `index` of `subsets` of the 4096-point set (odd count: every
// subsets-th point; even: the index shuffle over point pairs).
unsigned ref_shuffle(unsigned i, unsigned m) {
  unsigned result = 0;
  for (; i != 0; i >>= 1) {
    unsigned const down = m / 2, up = m - down;
    if (i & 1u) {
      result += up;
      m = down;
    } else {
      m = up;
    }
  }
  return result;
}

void ref_hammersley_sub(unsigned const& seed, unsigned const& subsets, unsigned const& index,
                        Vec2* out) {
  unsigned const count = k_count / subsets, total = count * subsets;
  for (unsigned i = 0; i < count; ++i) {
    unsigned k;
    if (subsets % 2 == 1) {
      k = i * subsets + index;
    } else {
      unsigned const n = index * count + i;
      k = 2 * ref_shuffle(n / 2, total / 2) + n % 2;
    }
    out[i] = ref_hammersley_point(k, seed, total);
  }
}

void store_vec2(std::vector<Vec2>& out) {
  bench::store_records(out.data(), out.size(), Vec2(0.25, 0.5));
}

// ---- Benchmarks ---------------------------------------------------------------

void BM_StratifiedAllSamples(benchmark::State& state) {
  GRandomMt mt(1), ref(1);
  StratifiedSampler2d s;
  s.init(mt, k_side, k_side, k_packet_side, k_packet_side, 1.0, 1.0);
  std::vector<Vec2> out(k_count), check(k_count);
  s.get_all_samples(out.data());
  ref_stratified_all(ref, check.data());
  if (!bench::check_same(state, out, check))
    return;
  bench::run(
      state, k_count, [&] { s.get_all_samples(out.data()); },
      [&] { ref_stratified_all(ref, check.data()); }, [&] { store_vec2(check); });
}
BENCHMARK(BM_StratifiedAllSamples);

void BM_StratifiedPacketSamples(benchmark::State& state) {
  GRandomMt mt(1), ref(1);
  StratifiedSampler2d s;
  s.init(mt, k_side, k_side, k_packet_side, k_packet_side, 1.0, 1.0);
  PacketOutput out, check;
  all_packets(s, out);
  ref_stratified_packets(ref, check);
  if (!bench::check_same(state, out.samples, check.samples) ||
      !bench::check_same(state, out.corners, check.corners, "packet boxes"))
    return;
  bench::run(
      state, k_count, [&] { all_packets(s, out); }, [&] { ref_stratified_packets(ref, check); },
      [&] { store_vec2(check.samples); });
}
BENCHMARK(BM_StratifiedPacketSamples);

void BM_HammersleyAllSamples(benchmark::State& state) {
  HammersleySampler2d s;
  s.init(k_seed, k_side, k_side);
  std::vector<Vec2> out(k_count), check(k_count);
  s.get_all_samples(out.data());
  ref_hammersley_all(k_seed, check.data());
  if (!bench::check_same(state, out, check))
    return;
  unsigned seed = k_seed;
  bench::run(
      state, k_count, [&] { s.get_all_samples(out.data()); },
      [&] {
        benchmark::DoNotOptimize(seed);
        ref_hammersley_all(seed, check.data());
      },
      [&] { store_vec2(check); });
}
BENCHMARK(BM_HammersleyAllSamples);

void BM_HammersleyPacketSamples(benchmark::State& state) {
  HammersleySampler2d s;
  s.init(k_seed, k_side, k_side, k_packet_side, k_packet_side);
  PacketOutput out, check;
  all_packets(s, out);
  ref_hammersley_packets(k_seed, check);
  if (!bench::check_same(state, out.samples, check.samples) ||
      !bench::check_same(state, out.corners, check.corners, "packet boxes"))
    return;
  unsigned seed = k_seed;
  bench::run(
      state, k_count, [&] { all_packets(s, out); },
      [&] {
        benchmark::DoNotOptimize(seed);
        ref_hammersley_packets(seed, check);
      },
      [&] { store_vec2(check.samples); });
}
BENCHMARK(BM_HammersleyPacketSamples);

// Sub-set 3 of 4 (even: the shuffle) and of 5 (odd: a stride); the packet
// path is the whole sub-set as one packet.
void BM_HammersleySubSamples(benchmark::State& state) {
  unsigned const subsets = static_cast<unsigned>(state.range(0));
  bool const packet = state.range(1) != 0;
  unsigned const count = k_count / subsets;
  HammersleySampler2d s;
  s.init_sub(k_seed, subsets, 3, count);
  std::vector<Vec2> out(count), check(count);
  Vec2 c0, c1;
  auto const library = [&] {
    if (packet)
      s.get_packet_samples(0, out.data(), c0, c1);
    else
      s.get_all_samples(out.data());
  };
  library();
  ref_hammersley_sub(k_seed, subsets, 3, check.data());
  if (!bench::check_same(state, out, check))
    return;
  unsigned seed = k_seed;
  bench::run(
      state, count, library,
      [&] {
        benchmark::DoNotOptimize(seed);
        ref_hammersley_sub(seed, subsets, 3, check.data());
      },
      [&] { store_vec2(check); });
}
BENCHMARK(BM_HammersleySubSamples)->ArgNames({"subsets", "packet"})->ArgsProduct({{4, 5}, {0, 1}});

}  // namespace
