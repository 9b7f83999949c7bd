#include "bench/bench_support.h"

#include <time.h>

#include <cstddef>
#include <cstring>
#include <random>
#include <string>

#include "sampling/warps.h"

namespace bench {

double thread_ns() {
  timespec t;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) * 1e9 + static_cast<double>(t.tv_nsec);
}

double ns_per_call(std::function<void()> const& call, std::int64_t const& calls) {
  std::int64_t const n = calls > 0 ? calls : 1;
  double const start = thread_ns();
  for (std::int64_t i = 0; i < n; ++i) {
    call();
    benchmark::ClobberMemory();
  }
  return (thread_ns() - start) / static_cast<double>(n);
}

bool check_same_bytes(benchmark::State& state, void const* a, void const* b,
                      std::size_t const& bytes, char const* what) {
  if (std::memcmp(a, b, bytes) == 0)
    return true;
  std::string const message = std::string(what) + " differ";
  state.SkipWithError(message.c_str());
  return false;
}

bool check_same_rays(benchmark::State& state, GMathRay const* library, GMathRay const* reference,
                     std::size_t const& count) {
  // Bytes up to and including m_has_differentials, then from the
  // differentials to the end of m_type (offsets as GMathRay's own layout
  // checks state them).
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
  std::size_t const head = offsetof(GMathRay, m_has_differentials) + sizeof(bool);
  std::size_t const tail_start = offsetof(GMathRay, m_differential);
  std::size_t const tail_end = offsetof(GMathRay, m_type) + sizeof(GMathRay::Type);
#pragma GCC diagnostic pop
  for (std::size_t i = 0; i < count; ++i) {
    char const* a = reinterpret_cast<char const*>(library + i);
    char const* b = reinterpret_cast<char const*>(reference + i);
    if (std::memcmp(a, b, head) != 0 ||
        std::memcmp(a + tail_start, b + tail_start, tail_end - tail_start) != 0) {
      std::string const message = "library and reference rays differ at ray " + std::to_string(i);
      state.SkipWithError(message.c_str());
      return false;
    }
  }
  return true;
}

void run_generator(benchmark::State& state, SampleRayGenerator const& generator,
                   std::vector<GMathVec2<double>> const& samples, bool const& weighted,
                   RaysReference const& reference) {
  unsigned int const count = static_cast<unsigned int>(samples.size());
  std::vector<GMathRay> rays(count), check(count);
  std::vector<double> weights(count, -1.0), check_weights(count, -1.0);
  double* const w = weighted ? weights.data() : nullptr;
  double* const check_w = weighted ? check_weights.data() : nullptr;
  unsigned int const written = generator.get_rays(samples.data(), count, rays.data(), w);
  if (!reference) {
    // No reference: the output records are only copied for the store bound.
    check = rays;
    check_weights = weights;
  }
  unsigned int const expected =
      reference ? reference(samples.data(), count, check.data(), check_w) : written;
  if (written != expected) {
    state.SkipWithError("library and reference write different ray counts");
    return;
  }
  if (!check_same_rays(state, rays.data(), check.data(), written) ||
      !check_same_bytes(state, weights.data(), check_weights.data(), written * sizeof(double),
                        "library and reference weights"))
    return;
  GMathRay const prototype = check[0];
  run(
      state, count, [&] { generator.get_rays(samples.data(), count, rays.data(), w); },
      reference
          ? std::function<void()>([&] { reference(samples.data(), count, check.data(), check_w); })
          : std::function<void()>(),
      [&] {
        store_records(check.data(), written, prototype);
        if (weighted)
          store_records(check_weights.data(), written, 1.0);
      });
  state.counters["rays_kept"] = static_cast<double>(written) / count;
}

void report(benchmark::State& state, double const& items, double const& path_ns_per_call,
            std::function<void()> const& reference, std::function<void()> const& store) {
  std::int64_t const calls = state.iterations();
  state.SetItemsProcessed(static_cast<std::int64_t>(static_cast<double>(calls) * items));
  state.counters["ns_per_item"] = path_ns_per_call / items;
  if (reference) {
    double const reference_ns = ns_per_call(reference, calls);
    state.counters["reference_ns_per_item"] = reference_ns / items;
    state.counters["x_reference"] = path_ns_per_call / reference_ns;
  }
  double const store_ns = ns_per_call(store, calls);
  state.counters["store_ns_per_item"] = store_ns / items;
  state.counters["x_store_bound"] = path_ns_per_call / store_ns;
}

void report_sincos_floor(benchmark::State& state, std::vector<double> const& angles,
                         GMathRay const& prototype) {
  std::vector<GMathRay> rays(angles.size());
  double const floor_ns = ns_per_call(
      [&] {
        GMathRay ray = prototype;
        benchmark::DoNotOptimize(&ray);
        for (std::size_t i = 0; i < angles.size(); ++i) {
          // The pair goes straight into the stored record: a copy of a
          // record just written by the call would wait on store forwarding.
          double c, s;
          sampling::warps::detail::cos_sin(angles[i], c, s);
          rays[i] = ray;
          rays[i].m_direction.x = c;
          rays[i].m_direction.y = s;
        }
        benchmark::DoNotOptimize(rays.data());
        benchmark::ClobberMemory();
      },
      state.iterations());
  double const per_item = floor_ns / static_cast<double>(angles.size());
  state.counters["floor_ns_per_item"] = per_item;
  state.counters["x_floor"] = state.counters["ns_per_item"].value / per_item;
}

std::vector<GMathVec2<double>> unit_samples(std::size_t const& count, unsigned int const& seed) {
  std::mt19937_64 rng(seed);
  std::uniform_real_distribution<double> uniform(0.0, 1.0);
  std::vector<GMathVec2<double>> samples(count);
  for (GMathVec2<double>& s : samples) {
    s.x = uniform(rng);
    s.y = uniform(rng);
  }
  return samples;
}

}  // namespace bench
