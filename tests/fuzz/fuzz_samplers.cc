// Samplers: every sample lies in the unit square; get_all_samples equals the
// single-sample path; packets partition the samples and their boxes hold
// them; packet counts stay within the documented bound.
#include <algorithm>
#include <cmath>
#include <vector>

#include "platform/random/grandom_mt.h"
#include "sampling/samplers.h"
#include "tests/fuzz/fuzz_input.h"

namespace {

// Collects all packets; checks their total and that each box holds its
// samples (within `v_slack` in v, exactly in u).
std::vector<GMathVec2<double>> collect_packets(Sampler2d& sampler, double v_slack) {
  std::vector<GMathVec2<double>> all;
  std::vector<GMathVec2<double>> buffer(sampler.get_sample_count() + 2);
  for (unsigned int p = 0; p < sampler.get_packet_count(); ++p) {
    GMathVec2<double> c0, c1;
    unsigned int const n = sampler.get_packet_samples(p, buffer.data(), c0, c1);
    FUZZ_ASSERT(n <= sampler.get_sample_count(), "packet %u holds %u", p, n);
    for (unsigned int i = 0; i < n; ++i) {
      GMathVec2<double> const& s = buffer[i];
      FUZZ_ASSERT(s.x >= c0.x && s.x <= c1.x, "u %.17g outside [%.17g, %.17g]", s.x, c0.x, c1.x);
      FUZZ_ASSERT(s.y >= c0.y - v_slack && s.y <= c1.y + v_slack, "v %.17g outside [%.17g, %.17g]",
                  s.y, c0.y, c1.y);
      all.push_back(s);
    }
  }
  FUZZ_ASSERT(all.size() == sampler.get_sample_count(), "packets hold %zu of %u", all.size(),
              sampler.get_sample_count());
  return all;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  FuzzInput in(data, size);
  unsigned int const count_x = in.range(1, 48);
  unsigned int const count_y = in.range(1, 48);
  unsigned int const packet_x = in.range(1, 16);
  unsigned int const packet_y = in.range(1, 16);
  unsigned int const seed = in.u32();
  unsigned int const n = count_x * count_y;
  std::vector<GMathVec2<double>> all(n), single(n);

  switch (in.range(0, 2)) {
    case 0: {
      // Stratified: each sample in its own stratum; packets exact.
      double const jitter_x = in.unit(), jitter_y = in.unit();
      GRandomMt random_a(seed), random_b(seed);
      StratifiedSampler2d a, b;
      a.init(random_a, count_x, count_y, packet_x, packet_y, jitter_x, jitter_y);
      b.init(random_b, count_x, count_y, packet_x, packet_y, jitter_x, jitter_y);
      a.get_all_samples(all.data());
      for (unsigned int i = 0; i < n; ++i) {
        b.get_sample(i, single[i]);
        FUZZ_ASSERT(all[i] == single[i], "stratified sample %u differs", i);
        check_in_square(all[i], false, "stratified");
        double const ix = static_cast<double>(i % count_x), iy = static_cast<double>(i / count_x);
        FUZZ_ASSERT(all[i].x * count_x >= ix - 1e-9 && all[i].x * count_x <= ix + 1 + 1e-9,
                    "sample %u outside its column", i);
        FUZZ_ASSERT(all[i].y * count_y >= iy - 1e-9 && all[i].y * count_y <= iy + 1 + 1e-9,
                    "sample %u outside its row", i);
      }
      collect_packets(a, 0.0);
      break;
    }
    case 1: {
      // Hammersley packet grid: a partition of the set, boxes within half a
      // spacing in v.
      HammersleySampler2d sampler;
      sampler.init(seed, count_x, count_y, packet_x, packet_y);
      sampler.get_all_samples(all.data());
      for (unsigned int i = 0; i < n; ++i) {
        sampler.get_sample(i, single[i]);
        FUZZ_ASSERT(all[i] == single[i], "Hammersley sample %u differs", i);
        check_in_square(all[i], true, "Hammersley");
      }
      std::vector<GMathVec2<double>> packets = collect_packets(sampler, 0.5 / n + 1e-15);
      std::sort(packets.begin(), packets.end(), less);
      std::sort(all.begin(), all.end(), less);
      FUZZ_ASSERT(packets == all, "packets are not a partition of the set");
      break;
    }
    default: {
      // Sub-sets: the sets of one seed together are the whole set.
      unsigned int const subsets = in.range(1, 8);
      unsigned int const count = in.range(1, 64);
      HammersleySampler2d whole;
      whole.init(seed, subsets * count, 1);
      std::vector<GMathVec2<double>> expected(subsets * count), got;
      whole.get_all_samples(expected.data());
      std::vector<GMathVec2<double>> buffer(count);
      for (unsigned int set = 0; set < subsets; ++set) {
        HammersleySampler2d sub;
        sub.init_sub(seed, subsets, set, count);
        sub.get_all_samples(buffer.data());
        got.insert(got.end(), buffer.begin(), buffer.end());
      }
      std::sort(expected.begin(), expected.end(), less);
      std::sort(got.begin(), got.end(), less);
      FUZZ_ASSERT(got == expected, "sub-sets are not a partition (%u sets of %u)", subsets, count);
      break;
    }
  }
  return 0;
}
