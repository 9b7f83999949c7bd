// Halton and hierarchical samplers: samples stay in their square, the
// single-sample, all-samples and packet paths agree, one packet with the unit
// box, the sets of one pattern together make up the whole pattern, and the
// Hammersley mode serves the Halton pattern outside 1 <= M <= 2048. Each run
// brackets the samplers with Sampling::init and Sampling::destroy.
#include <algorithm>
#include <vector>

#include "sampling/samplers.h"
#include "sampling/sampling.h"
#include "tests/fuzz/fuzz_input.h"

namespace {

// All samples of `sampler` by the three paths, which must agree; checks the
// square (half-open when `below_one`) and the single packet.
std::vector<GMathVec2<double>> all_samples(Sampler2d& sampler, bool below_one, char const* name) {
  unsigned int const n = sampler.get_sample_count();
  std::vector<GMathVec2<double>> all(n), packet(n + 1);
  sampler.get_all_samples(all.data());
  FUZZ_ASSERT(sampler.get_packet_count() == 1, "%s: %u packets", name, sampler.get_packet_count());
  GMathVec2<double> c0(-1.0, -1.0), c1(-1.0, -1.0);
  unsigned int const written = sampler.get_packet_samples(0, packet.data(), c0, c1);
  FUZZ_ASSERT(written == n, "%s: packet holds %u of %u", name, written, n);
  FUZZ_ASSERT(c0.x == 0.0 && c0.y == 0.0 && c1.x == 1.0 && c1.y == 1.0, "%s: packet box", name);
  for (unsigned int i = 0; i < n; ++i) {
    GMathVec2<double> single;
    sampler.get_sample(i, single);
    FUZZ_ASSERT(single == all[i] && packet[i] == all[i], "%s: paths differ at sample %u", name, i);
    check_in_square(all[i], below_one, name);
  }
  return all;
}

void fuzz_halton(FuzzInput& in) {
  unsigned int const seed = in.u32();
  unsigned int const count_x = in.range(1, 64);
  unsigned int const count_y = in.range(1, 64);
  unsigned int const base = in.range(2, 64);
  HaltonSampler2d sampler;
  sampler.init(seed, count_x, count_y, base);
  FUZZ_ASSERT(sampler.get_sample_count() == count_x * count_y, "Halton: N = %u",
              sampler.get_sample_count());
  std::vector<GMathVec2<double>> const all = all_samples(sampler, true, "Halton");
  // No coordinate depends on N: a one-row sampler gives the same first points.
  HaltonSampler2d prefix;
  prefix.init(seed, count_x, 1, base);
  for (unsigned int i = 0; i < count_x; ++i) {
    GMathVec2<double> s;
    prefix.get_sample(i, s);
    FUZZ_ASSERT(s == all[i], "Halton: sample %u depends on N", i);
  }
  if (base == 2)
    for (unsigned int i = 0; i < all.size(); ++i)
      FUZZ_ASSERT(all[i].x == all[i].y, "Halton base 2: sample %u off the diagonal", i);
}

void fuzz_hierarchical(FuzzInput& in) {
  unsigned int const mode = in.range(0, 4);  // 4: an unknown value, served as RANDOM
  unsigned int const seed = in.u32();
  unsigned int const count = in.range(1, 64);
  unsigned int const set_count = in.range(1, 64);
  unsigned int const point_count = count * set_count;
  bool const below_one =
      mode == HierarchicalSampler2d::HAMMERSLEY || mode == HierarchicalSampler2d::HALTON;
  char const* const names[] = {"random", "Hammersley", "Halton", "Sobol", "unknown"};

  // The sets together are the whole pattern of M points.
  HierarchicalSampler2d whole(static_cast<HierarchicalSampler2d::Mode>(mode));
  whole.init(seed, point_count, 1, 0);
  FUZZ_ASSERT(whole.get_mode() == mode, "%s: mode changed by init", names[mode]);
  std::vector<GMathVec2<double>> expected = all_samples(whole, below_one, names[mode]);
  std::vector<GMathVec2<double>> got;
  for (unsigned int set = 0; set < set_count; ++set) {
    HierarchicalSampler2d sampler(static_cast<HierarchicalSampler2d::Mode>(mode));
    sampler.init(seed, count, set_count, set);
    FUZZ_ASSERT(sampler.get_sample_count() == count, "%s: N = %u", names[mode],
                sampler.get_sample_count());
    std::vector<GMathVec2<double>> const samples = all_samples(sampler, below_one, names[mode]);
    got.insert(got.end(), samples.begin(), samples.end());
  }
  std::sort(expected.begin(), expected.end(), less);
  std::sort(got.begin(), got.end(), less);
  FUZZ_ASSERT(got == expected, "%s: %u sets of %u are not the pattern of %u", names[mode],
              set_count, count, point_count);
  if (mode == HierarchicalSampler2d::HAMMERSLEY) {
    // The Hammersley set has M distinct points.
    FUZZ_ASSERT(std::adjacent_find(got.begin(), got.end()) == got.end(),
                "Hammersley: a point repeats (M = %u)", point_count);
  }

  // Beyond 2048 points the Hammersley mode serves the Halton pattern.
  if (mode == HierarchicalSampler2d::HAMMERSLEY && point_count > 2048) {
    unsigned int const set = in.range(0, set_count - 1);
    HierarchicalSampler2d hammersley(HierarchicalSampler2d::HAMMERSLEY);
    HierarchicalSampler2d halton(HierarchicalSampler2d::HALTON);
    hammersley.init(seed, count, set_count, set);
    halton.init(seed, count, set_count, set);
    FUZZ_ASSERT(hammersley.get_mode() == HierarchicalSampler2d::HAMMERSLEY,
                "fallback changed the mode");
    for (unsigned int i = 0; i < count; ++i) {
      GMathVec2<double> a, b;
      hammersley.get_sample(i, a);
      halton.get_sample(i, b);
      FUZZ_ASSERT(a == b, "fallback: sample %u is not the Halton one (M = %u)", i, point_count);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  FuzzInput in(data, size);
  Sampling::init();
  if (in.flag()) {
    // A second cycle: the permutations are rebuilt with the same contents.
    Sampling::destroy();
    Sampling::init();
    Sampling::init();  // does nothing: the table exists
  }
  if (in.flag())
    fuzz_halton(in);
  else
    fuzz_hierarchical(in);
  // Freed every run, so LeakSanitizer sees any permutation left behind.
  Sampling::destroy();
  return 0;
}
