#include "bench/bench_support.h"

#include <time.h>

#include <cstring>
#include <random>
#include <string>

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
