#include "examples/demo/pattern_pictures.h"

#include <string>
#include <vector>

#include "examples/demo/gallery.h"
#include "examples/demo/svg_canvas.h"
#include "platform/random/grandom_mt.h"
#include "sampling/samplers.h"

namespace {

constexpr int k_size = 480;

// Draws every packet of `sampler`: its box and its samples in one colour.
void draw_packets(Sampler2d& sampler, SvgCanvas& canvas) {
  std::vector<GMathVec2<double>> buffer(sampler.get_sample_count() + 1);
  for (unsigned int p = 0; p < sampler.get_packet_count(); ++p) {
    GMathVec2<double> c0, c1;
    unsigned int const n = sampler.get_packet_samples(p, buffer.data(), c0, c1);
    canvas.box(c0.x, c0.y, c1.x, c1.y, SvgCanvas::palette(p), 1.5);
    for (unsigned int i = 0; i < n; ++i)
      canvas.dot(buffer[i].x, buffer[i].y, 3.0, SvgCanvas::palette(p));
  }
}

// The four sets of 64 of one hierarchical pattern of 256 points, set c in
// colour c, and the single packet box every set reports.
bool write_hierarchical(Gallery& gallery, HierarchicalSampler2d::Mode mode, char const* name,
                        std::string const& what) {
  constexpr unsigned int sets = 4, count = 64;
  SvgCanvas canvas(k_size, std::string("HierarchicalSampler2d ") + name + ", 4 sets of 64");
  HierarchicalSampler2d sampler(mode);
  std::vector<GMathVec2<double>> samples(count);
  for (unsigned int set = 0; set < sets; ++set) {
    sampler.init(7, count, sets, set);
    GMathVec2<double> c0, c1;
    unsigned int const n = sampler.get_packet_samples(0, samples.data(), c0, c1);
    canvas.box(c0.x, c0.y, c1.x, c1.y, "#555", 1.5);
    for (unsigned int i = 0; i < n; ++i)
      canvas.dot(samples[i].x, samples[i].y, 3.5, SvgCanvas::palette(set));
  }
  return gallery.save(canvas, std::string("pattern_hierarchical_") + name + ".svg",
                      std::string("Hierarchical ") + name +
                          " mode, seed 7: one pattern of 256 in 4 sets " +
                          "(colours), each one packet (box): " + what);
}

}  // namespace

std::vector<GMathVec2<double>> PatternPictures::hammersley(unsigned int count) {
  HammersleySampler2d sampler;
  sampler.init(0, count, 1);
  std::vector<GMathVec2<double>> samples(count);
  sampler.get_all_samples(samples.data());
  return samples;
}

bool PatternPictures::write(Gallery& gallery) {
  GRandomMt random(1);
  StratifiedSampler2d stratified;
  stratified.init(random, 8, 8, 4, 4, 1.0, 1.0);
  SvgCanvas strat_canvas(k_size, "StratifiedSampler2d 8x8, jitter 1, packets of 4x4 strata");
  // The strata, so that one sample per cell can be seen.
  for (int i = 1; i < 8; ++i) {
    strat_canvas.line(i / 8.0, 0.0, i / 8.0, 1.0, "#ddd", 1.0);
    strat_canvas.line(0.0, i / 8.0, 1.0, i / 8.0, "#ddd", 1.0);
  }
  draw_packets(stratified, strat_canvas);
  if (!gallery.save(strat_canvas, "pattern_stratified.svg",
                    "Stratified 8x8 with jitter 1: one sample per stratum (grey grid), 4 packets "
                    "of 4x4 strata (boxes)."))
    return false;

  HammersleySampler2d hammersley;
  hammersley.init(0, 16, 16, 4, 4);
  SvgCanvas ham_canvas(k_size, "HammersleySampler2d 16x16, packet grid for 4x4");
  draw_packets(hammersley, ham_canvas);
  if (!gallery.save(ham_canvas, "pattern_hammersley_packets.svg",
                    "Hammersley 256 points, 4x4 packet grid (boxes): u tight in its column, v in "
                    "its band."))
    return false;

  SvgCanvas sub_canvas(k_size, "HammersleySampler2d::init_sub, 4 sets of 64");
  for (unsigned int set = 0; set < 4; ++set) {
    HammersleySampler2d sub;
    sub.init_sub(0, 4, set, 64);
    std::vector<GMathVec2<double>> samples(64);
    sub.get_all_samples(samples.data());
    for (GMathVec2<double> const& s : samples)
      sub_canvas.dot(s.x, s.y, 3.5, SvgCanvas::palette(set));
  }
  if (!gallery.save(sub_canvas, "pattern_hammersley_subsets.svg",
                    "Four disjoint Hammersley sub-sets of 64 (even split, one colour each) that "
                    "together make the 256-point set; one set alone covers only part of u."))
    return false;

  HaltonSampler2d halton;
  halton.init(0, 16, 16, 3);
  SvgCanvas halton_canvas(k_size, "HaltonSampler2d, 256 points, bases 2 and 3");
  draw_packets(halton, halton_canvas);
  if (!gallery.save(halton_canvas, "pattern_halton.svg",
                    "Halton bases 2 and 3, the first 256 points: one packet, the whole square."))
    return false;

  return write_hierarchical(gallery, HierarchicalSampler2d::RANDOM, "random",
                            "independent points, sets are runs of the random table.") &&
         write_hierarchical(gallery, HierarchicalSampler2d::HAMMERSLEY, "hammersley",
                            "the Hammersley set walked in far jumps, so each set is spread.") &&
         write_hierarchical(gallery, HierarchicalSampler2d::HALTON, "halton",
                            "consecutive Halton runs, each set well spread.") &&
         write_hierarchical(gallery, HierarchicalSampler2d::SOBOL, "sobol",
                            "consecutive scrambled Sobol runs, each set well spread.");
}
