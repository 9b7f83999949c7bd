#include "examples/demo/gallery.h"

#include <fstream>

#include "examples/demo/svg_canvas.h"
#include "platform/random/grandom_mt.h"
#include "sampling/samplers.h"
#include "sampling/sampling.h"

namespace {

constexpr int k_size = 480;

std::string const& palette(unsigned int i) {
  static std::string const colors[] = {"#1f77b4", "#ff7f0e", "#2ca02c", "#d62728",
                                       "#9467bd", "#8c564b", "#e377c2", "#17becf"};
  return colors[i % 8];
}

// Draws every packet of `sampler`: its box and its samples in one colour.
void draw_packets(Sampler2d& sampler, SvgCanvas& canvas) {
  std::vector<GMathVec2<double>> buffer(sampler.get_sample_count() + 1);
  for (unsigned int p = 0; p < sampler.get_packet_count(); ++p) {
    GMathVec2<double> c0, c1;
    unsigned int const n = sampler.get_packet_samples(p, buffer.data(), c0, c1);
    canvas.box(c0.x, c0.y, c1.x, c1.y, palette(p), 1.5);
    for (unsigned int i = 0; i < n; ++i)
      canvas.dot(buffer[i].x, buffer[i].y, 3.0, palette(p));
  }
}

// 1024 points of a Hammersley set, the inputs of the warp pictures.
std::vector<GMathVec2<double>> warp_inputs() {
  HammersleySampler2d sampler;
  sampler.init(0, 32, 32);
  std::vector<GMathVec2<double>> samples(sampler.get_sample_count());
  sampler.get_all_samples(samples.data());
  return samples;
}

// Maps [-1, 1] onto the unit square of a canvas.
double to_canvas(double x) {
  return 0.5 + 0.5 * x;
}

}  // namespace

Gallery::Gallery(std::string const& out_dir) : m_out_dir(out_dir) {}

bool Gallery::save(SvgCanvas const& canvas, std::string const& file, std::string const& caption) {
  std::string const path = m_out_dir + "/" + file;
  if (!canvas.save(path)) {
    m_failed = path;
    return false;
  }
  add(file, caption);
  return true;
}

void Gallery::add(std::string const& file, std::string const& caption) {
  m_entries.push_back(Entry{file, caption});
}

bool Gallery::write_patterns() {
  GRandomMt random(1);
  StratifiedSampler2d stratified;
  stratified.init(random, 8, 8, 4, 4, 1.0, 1.0);
  SvgCanvas strat_canvas(k_size, "StratifiedSampler2d 8x8, jitter 1, packets of 4x4 strata");
  draw_packets(stratified, strat_canvas);
  if (!save(strat_canvas, "pattern_stratified.svg",
            "Stratified 8x8 with jitter 1: one sample per stratum, 4 packets of 4x4 strata."))
    return false;

  HammersleySampler2d hammersley;
  hammersley.init(0, 16, 16, 4, 4);
  SvgCanvas ham_canvas(k_size, "HammersleySampler2d 16x16, packet grid for 4x4");
  draw_packets(hammersley, ham_canvas);
  if (!save(ham_canvas, "pattern_hammersley_packets.svg",
            "Hammersley 256 points, 4x4 packet grid: u tight in its column, v in its band."))
    return false;

  SvgCanvas sub_canvas(k_size, "HammersleySampler2d::init_sub, 4 sets of 64");
  for (unsigned int set = 0; set < 4; ++set) {
    HammersleySampler2d sub;
    sub.init_sub(0, 4, set, 64);
    std::vector<GMathVec2<double>> samples(64);
    sub.get_all_samples(samples.data());
    for (auto const& s : samples)
      sub_canvas.dot(s.x, s.y, 3.0, palette(set));
  }
  return save(sub_canvas, "pattern_hammersley_subsets.svg",
              "Four disjoint Hammersley sub-sets of 64 that together make the 256-point set.");
}

bool Gallery::write_warps() {
  std::vector<GMathVec2<double>> const inputs = warp_inputs();

  SvgCanvas disk(k_size, "Sampling::disk_concentric");
  SvgCanvas cosine(k_size, "Sampling::hemisphere_cosine_concentric (top view)");
  SvgCanvas cone(k_size, "hemisphere_cosine_concentric, radius_scale 0.5 (top view)");
  SvgCanvas uniform(k_size, "Sampling::hemisphere_uniform (top view)");
  SvgCanvas sphere(k_size, "Sampling::sphere_uniform (front half dark)");
  for (SvgCanvas* c : {&disk, &cosine, &cone, &uniform})
    c->circle(0.5, 0.5, 0.5, "#999", 1.0);
  sphere.circle(0.5, 0.5, 0.5, "#999", 1.0);

  for (auto const& s : inputs) {
    GMathVec3<double> p;
    Sampling::disk_concentric(s.x, s.y, p);
    disk.dot(to_canvas(p.x), to_canvas(p.y), 2.0, palette(0));
    Sampling::hemisphere_cosine_concentric(s.x, s.y, p, 1.0);
    cosine.dot(to_canvas(p.x), to_canvas(p.y), 2.0, palette(1));
    Sampling::hemisphere_cosine_concentric(s.x, s.y, p, 0.5);
    cone.dot(to_canvas(p.x), to_canvas(p.y), 2.0, palette(2));
    Sampling::hemisphere_uniform(s.x, s.y, p, 1.0);
    uniform.dot(to_canvas(p.x), to_canvas(p.y), 2.0, palette(3));
    Sampling::sphere_uniform(s.x, s.y, p);
    sphere.dot(to_canvas(p.x), to_canvas(p.z), 2.0, p.y >= 0.0 ? palette(4) : "#ccc");
  }
  return save(disk, "warp_disk_concentric.svg", "Concentric map: uniform over the disk's area.") &&
         save(cosine, "warp_hemisphere_cosine.svg",
              "Cosine-weighted hemisphere seen from above: uniform over the projected disk.") &&
         save(cone, "warp_hemisphere_cosine_cone.svg",
              "The same warp with radius_scale 0.5: a cone whose half-angle has sine 0.5.") &&
         save(uniform, "warp_hemisphere_uniform.svg",
              "hemisphere_uniform: polar angle linear in u, so points crowd at the rim.") &&
         save(sphere, "warp_sphere_uniform.svg",
              "Uniform sphere, seen from the side (x, z): front half dark, back half grey.");
}

bool Gallery::write_index() const {
  std::string const path = m_out_dir + "/index.html";
  std::ofstream out(path);
  if (!out)
    return false;
  out << "<!doctype html>\n<html><head><meta charset=\"utf-8\"><title>sampling demo</title>"
         "<style>body{font-family:sans-serif} figure{display:inline-block;margin:8px;"
         "width:500px;vertical-align:top} "
         "figure.wide{width:auto;display:block}</style></head><body>\n<h1>sampling demo</h1>\n";
  for (Entry const& e : m_entries) {
    // Raster images (the render) at their own size, drawings at one size.
    bool const raster = e.file.size() > 4 && e.file.compare(e.file.size() - 4, 4, ".png") == 0;
    out << (raster ? "<figure class=\"wide\"><img src=\"" : "<figure><img src=\"") << e.file
        << (raster ? "\" style=\"max-width:100%\">" : "\" width=\"500\">") << "<figcaption>"
        << e.caption << "</figcaption></figure>\n";
  }
  out << "</body></html>\n";
  out.close();
  return static_cast<bool>(out);
}
