#pragma once

// The timing and checking helpers every benchmark of the suite shares.
//
// Each hot path is timed three ways in the same run, on the same clock (the
// CPU time of the calling thread, which other loads on the machine do not
// advance) and for the same number of calls:
//   - the library path, in the benchmark's own loop;
//   - the plain reference, written straight from the formulas in bench/;
//   - the store bound, a plain loop writing the same bytes to an array of
//     the same size.
// Counters (read by bench/make_performance_doc.py):
//   ns_per_item     library time per item (sample, point, ray, ...)
//   x_reference     library time over reference time (below 1: faster)
//   x_store_bound   library time over store-bound time
//   reference_ns_per_item, store_ns_per_item   the two other timings
// Before timing, the library's output is compared with the reference's
// byte for byte; a difference stops the benchmark with an error.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "platform/math/gmath_ray.h"
#include "platform/math/gmath_vec2.h"
#include "platform/math/gmath_vec3.h"
#include "sampling/rays/sample_ray_generator.h"

namespace bench {

// CPU time of the calling thread, in nanoseconds.
double thread_ns();

// Nanoseconds per call of `call` over `calls` calls (at least one).
double ns_per_call(std::function<void()> const& call, std::int64_t const& calls);

// True when the first `bytes` bytes of a and b are equal; otherwise stops the
// benchmark with an error naming `what` and returns false.
bool check_same_bytes(benchmark::State& state, void const* a, void const* b,
                      std::size_t const& bytes, char const* what);

template <typename T>
bool check_same(benchmark::State& state, std::vector<T> const& library,
                std::vector<T> const& reference, char const* what = "library and reference") {
  if (library.size() != reference.size()) {
    state.SkipWithError("library and reference differ in length");
    return false;
  }
  return check_same_bytes(state, library.data(), reference.data(), library.size() * sizeof(T),
                          what);
}

// The store bound of `count` records like `prototype`: each written whole,
// in a plain loop, to out[0..count-1].
template <typename T>
void store_records(T* out, std::size_t const& count, T const& prototype) {
  T value = prototype;
  benchmark::DoNotOptimize(&value);
  for (std::size_t i = 0; i < count; ++i)
    out[i] = value;
  benchmark::DoNotOptimize(out);
  benchmark::ClobberMemory();
}

// Sets the counters above from the library path's time per call measured by
// `path_loop_ns` (over state.iterations() calls), `items` items per call,
// and times `reference` (may be empty: no reference) and `store` for the
// same number of calls.
void report(benchmark::State& state, double const& items, double const& path_ns_per_call,
            std::function<void()> const& reference, std::function<void()> const& store);

// Runs `path` in the benchmark loop, then report().
template <typename Path>
void run(benchmark::State& state, double const& items, Path&& path,
         std::function<void()> const& reference, std::function<void()> const& store) {
  double const start = thread_ns();
  for (auto _ : state) {
    path();
    benchmark::ClobberMemory();
  }
  double const elapsed = thread_ns() - start;
  double const calls = static_cast<double>(state.iterations() > 0 ? state.iterations() : 1);
  report(state, items, elapsed / calls, reference, store);
}

// The same for `count` rays, field by field (the padding bytes of GMathRay
// are not compared).
bool check_same_rays(benchmark::State& state, GMathRay const* library, GMathRay const* reference,
                     std::size_t const& count);

// A plain reference of a ray generator's get_rays: samples, count, rays and
// weights (null or count values) in, number of rays written out.
typedef std::function<unsigned int(GMathVec2<double> const*, unsigned int const&, GMathRay*,
                                   double*)>
    RaysReference;

// Times generator.get_rays over `samples` (weights when `weighted`) against
// `reference` (empty: none) and the store bound (a plain loop writing as many GMathRay
// records, and weights, as the generator writes), after checking rays,
// weights and counts against the reference.
// Items are samples. Counter rays_kept: rays written per sample.
void run_generator(benchmark::State& state, SampleRayGenerator const& generator,
                   std::vector<GMathVec2<double>> const& samples, bool const& weighted,
                   RaysReference const& reference);

// The floor of a ray path whose formulas call sincos once per sample: per
// sample the cosine and sine of angles[i] (glibc's pair, as the generators
// compute it) and a 240-byte copy of `prototype` stored with the pair in
// its direction, timed for the calls of the path just run. Sets the counters
// floor_ns_per_item and x_floor (the path's ns_per_item over it).
void report_sincos_floor(benchmark::State& state, std::vector<double> const& angles,
                         GMathRay const& prototype);

// ---- Plain formulas shared by the references -------------------------------
// Written out with the library's decimal angle constants, independently of
// the library's code.

double const k_plain_pi = 3.141592653589;
double const k_plain_two_pi = 6.283185307178;
double const k_plain_half_pi = 1.5707963267945;
double const k_plain_quarter_pi = 0.78539816339725;

// Concentric square-to-disk map in polar form, sector by sector.
inline void plain_concentric(double const& u, double const& v, double& r, double& phi) {
  double const a = u * 2.0 - 1.0, b = v * 2.0 - 1.0;
  if (a > -b) {
    if (a > b) {
      r = a;
      phi = (b / a) * k_plain_quarter_pi;
    } else {
      r = b;
      phi = (2.0 - a / b) * k_plain_quarter_pi;
    }
  } else if (a >= b) {
    r = -b;
    phi = -b > 0.0 ? (a / (-b) + 6.0) * k_plain_quarter_pi : 0.0;
  } else {
    r = -a;
    phi = -a > 0.0 ? (4.0 - b / (-a)) * k_plain_quarter_pi : 0.0;
  }
}

inline double plain_dot(GMathVec3<double> const& a, GMathVec3<double> const& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

// v / |v| when |v| > 1e-8, else the zero vector.
inline GMathVec3<double> plain_normalize(GMathVec3<double> const& v) {
  double const l = std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z);
  return l > 1e-8 ? v * (1.0 / l) : GMathVec3<double>(0.0, 0.0, 0.0);
}

// `count` uniform samples of [0,1)^2 from a fixed seed, the common input of
// the warps and the ray generators.
std::vector<GMathVec2<double>> unit_samples(std::size_t const& count, unsigned int const& seed);

}  // namespace bench
