// The sampling demo: renders an ambient-occlusion image with Embree from the
// library's samples, runs a convergence study of the samplers, draws the
// sample patterns and warps, and writes an index page over all of it.
//
//   sampling_demo [--out DIR] [--obj FILE] [--spp N] [--size WxH]

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include "examples/demo/ao_renderer.h"
#include "examples/demo/convergence.h"
#include "examples/demo/frustum_pictures.h"
#include "examples/demo/gallery.h"
#include "examples/demo/mis_study.h"
#include "examples/demo/obj_loader.h"
#include "examples/demo/pattern_pictures.h"
#include "examples/demo/png_writer.h"
#include "examples/demo/ray_fan_pictures.h"
#include "examples/demo/scene.h"
#include "examples/demo/surface_pictures.h"
#include "examples/demo/warp_pictures.h"
#include "sampling/sampling.h"

namespace {

constexpr unsigned int k_max_size = 4096;

typedef std::chrono::steady_clock Clock;

double seconds_since(Clock::time_point const& start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}
constexpr unsigned int k_max_spp = 1024;

struct Options {
  std::string out_dir = "out/demo";
  std::string obj;
  unsigned int width = 640;
  unsigned int height = 480;
  unsigned int spp = 16;
};

// Prints the problem with a pointer to --help (exit status 2), or the help
// itself (exit status 0).
int usage(char const* program, std::string const& problem) {
  if (!problem.empty()) {
    std::fprintf(stderr, "%s: %s (see --help)\n", program, problem.c_str());
    return 2;
  }
  std::printf(
      "usage: %s [--out DIR] [--obj FILE] [--spp N] [--size WxH]\n"
      "  --out DIR    output folder (default out/demo), created if missing\n"
      "  --obj FILE   render this Wavefront OBJ mesh (on a ground plane) instead of\n"
      "               the built-in scene\n"
      "  --spp N      camera samples per pixel, 1 to %u (default 16)\n"
      "  --size WxH   image size in pixels, each side 1 to %u (default 640x480)\n",
      program, k_max_spp, k_max_size);
  return 0;
}

// A whole decimal number in [low, high], digits only (no sign, no spaces).
bool parse_count(std::string const& text, unsigned int low, unsigned int high,
                 unsigned int& value) {
  if (text.empty() || text.size() > 9)
    return false;
  for (char const c : text) {
    if (c < '0' || c > '9')
      return false;
  }
  unsigned long const v = std::strtoul(text.c_str(), nullptr, 10);
  if (v < low || v > high)
    return false;
  value = static_cast<unsigned int>(v);
  return true;
}

// Returns an empty string, or what is wrong with the command line.
std::string parse_options(int argc, char** argv, Options& options, bool& help) {
  help = false;
  for (int i = 1; i < argc; ++i) {
    std::string const arg = argv[i];
    if (arg == "--help" || arg == "-h") {
      help = true;
      return "";
    }
    bool const takes_value = arg == "--out" || arg == "--obj" || arg == "--spp" || arg == "--size";
    if (!takes_value)
      return "unknown option '" + arg + "'";
    if (i + 1 >= argc || argv[i + 1][0] == '\0')
      return arg + " needs a value";
    std::string const value = argv[++i];
    if (arg == "--out") {
      options.out_dir = value;
    } else if (arg == "--obj") {
      options.obj = value;
    } else if (arg == "--spp") {
      if (!parse_count(value, 1, k_max_spp, options.spp)) {
        return "--spp needs a whole number from 1 to " + std::to_string(k_max_spp) + ", not '" +
               value + "'";
      }
    } else {
      std::size_t const x = value.find('x');
      if (x == std::string::npos ||
          !parse_count(value.substr(0, x), 1, k_max_size, options.width) ||
          !parse_count(value.substr(x + 1), 1, k_max_size, options.height)) {
        return "--size needs WxH with whole numbers from 1 to " + std::to_string(k_max_size) +
               ", such as 640x480, not '" + value + "'";
      }
    }
  }
  return "";
}

// mkdir -p.
bool make_folder(std::string const& path) {
  std::string partial;
  for (std::size_t i = 0; i <= path.size(); ++i) {
    if (i == path.size() || path[i] == '/') {
      if (!partial.empty() && mkdir(partial.c_str(), 0755) != 0 && errno != EEXIST)
        return false;
    }
    if (i < path.size())
      partial += path[i];
  }
  struct stat info;
  return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

// Makes the output folder and checks, before anything is rendered, that every
// output can be written into it: the folder is writable and no entry in it
// that a run writes (*.png, *.svg, *.csv, *.html) is a folder. A failing run
// then writes nothing.
bool prepare_output_folder(std::string const& path, std::string& error) {
  struct stat info;
  if (stat(path.c_str(), &info) == 0 && !S_ISDIR(info.st_mode)) {
    error = "'" + path + "' is not a folder";
    return false;
  }
  if (!make_folder(path)) {
    error = "cannot create folder '" + path + "': " + std::strerror(errno);
    return false;
  }
  if (access(path.c_str(), W_OK | X_OK) != 0) {
    error = "cannot write into folder '" + path + "': " + std::strerror(errno);
    return false;
  }
  DIR* folder = opendir(path.c_str());
  if (!folder) {
    error = "cannot read folder '" + path + "': " + std::strerror(errno);
    return false;
  }
  std::string blocked;
  for (dirent* entry = readdir(folder); entry; entry = readdir(folder)) {
    std::string const name = entry->d_name;
    std::size_t const dot = name.rfind('.');
    std::string const suffix = dot == std::string::npos ? "" : name.substr(dot);
    if (suffix != ".png" && suffix != ".svg" && suffix != ".csv" && suffix != ".html")
      continue;
    if (stat((path + "/" + name).c_str(), &info) == 0 && S_ISDIR(info.st_mode))
      blocked += (blocked.empty() ? "" : ", ") + name;
  }
  closedir(folder);
  if (!blocked.empty()) {
    error = "cannot write the output into '" + path + "': these are folders: " + blocked;
    return false;
  }
  return true;
}

// The scene to render and the occlusion distance that suits its size.
bool make_scene(Options const& options, Scene& scene, double& max_distance, std::string& error) {
  if (options.obj.empty()) {
    scene = Scene::built_in();
    max_distance = 1.5;
    return true;
  }
  if (!load_obj(options.obj, scene, error))
    return false;
  scene.frame_camera();
  GMathVec3<double> low, high;
  scene.bounds(low, high);
  double const diagonal = (high - low).length();
  GMathVec3<double> const centre = (low + high) * 0.5;
  scene.add_ground(centre.x, low.y, centre.z, 1.5 * diagonal);
  max_distance = 0.25 * diagonal;
  return true;
}

std::string thousands(unsigned long long n) {
  std::string digits = std::to_string(n), out;
  for (std::size_t i = 0; i < digits.size(); ++i) {
    if (i > 0 && (digits.size() - i) % 3 == 0)
      out += ',';
    out += digits[i];
  }
  return out;
}

bool render_ao(Options const& options, Scene const& scene, double max_distance, Gallery& gallery,
               std::string& error) {
  AoRenderer::Settings settings;
  settings.width = options.width;
  settings.height = options.height;
  settings.samples_per_pixel = options.spp;
  settings.max_distance = max_distance;
  settings.threads = std::min(std::max(std::thread::hardware_concurrency(), 1u), 64u);
  // The settings first, before the seconds of building and rendering.
  std::printf(
      "ambient occlusion: %ux%u pixels, %u samples per pixel, %u occlusion samples per hit, "
      "%s triangles, %u threads\n",
      settings.width, settings.height, settings.samples_per_pixel, settings.occlusion_count,
      thousands(scene.triangle_count()).c_str(), settings.threads);
  std::fflush(stdout);
  Clock::time_point const start = Clock::now();
  AoRenderer renderer;
  if (!renderer.build(scene, error))
    return false;
  double const build_seconds = seconds_since(start);
  std::vector<std::uint8_t> image;
  AoRenderer::Stats stats;
  renderer.render(settings, image, stats);
  if (!write_png_grey(options.out_dir + "/ao.png", settings.width, settings.height, image, error))
    return false;

  std::uint64_t const rays = stats.camera_rays + stats.occlusion_rays;
  std::printf(
      "  rays: %s camera + %s occlusion = %s (%s occlusion samples clipped below the "
      "surface)\n",
      thousands(stats.camera_rays).c_str(), thousands(stats.occlusion_rays).c_str(),
      thousands(rays).c_str(), thousands(stats.occlusion_samples - stats.occlusion_rays).c_str());
  std::printf("  generated (samples + rays): %8.1f Mrays/s per thread (%.2f s of thread time)\n",
              rays / stats.generate_seconds * 1e-6, stats.generate_seconds);
  std::printf("  traced (Embree):            %8.1f Mrays/s per thread (%.2f s of thread time)\n",
              rays / stats.trace_seconds * 1e-6, stats.trace_seconds);
  std::printf("  wall time %.2f s (and %.2f s building Embree's scene); wrote %s/ao.png\n",
              stats.wall_seconds, build_seconds, options.out_dir.c_str());
  gallery.add("ao.png", "Ambient occlusion traced by Embree: " + std::to_string(settings.width) +
                            "x" + std::to_string(settings.height) + ", " +
                            std::to_string(settings.samples_per_pixel) +
                            " camera samples per pixel and " +
                            std::to_string(settings.occlusion_count) +
                            " occlusion samples per hit from hierarchical sets, occlusion rays "
                            "from the cosine generator, discarded below the true surface.");
  return true;
}

bool run_convergence(Options const& options, Gallery& gallery, std::string& error) {
  Clock::time_point start = Clock::now();
  ConvergenceStudy study;
  study.run();
  std::string const csv = options.out_dir + "/convergence.csv";
  if (!study.write_csv(csv)) {
    error = "cannot write '" + csv + "': " + std::strerror(errno);
    return false;
  }
  if (!study.write_plots(gallery)) {
    error = "cannot write '" + gallery.failed_path() + "': " + std::strerror(errno);
    return false;
  }
  study.print_slopes(stdout);
  std::printf("  wrote %s and one plot per integrand (%.2f s)\n", csv.c_str(),
              seconds_since(start));

  // About a second: say what runs before it starts.
  start = Clock::now();
  MisStudy::print_heading(stdout);
  std::fflush(stdout);
  MisStudy mis;
  mis.run();
  std::string const mis_csv = options.out_dir + "/mis.csv";
  if (!mis.write_csv(mis_csv)) {
    error = "cannot write '" + mis_csv + "': " + std::strerror(errno);
    return false;
  }
  if (!mis.write_plot(gallery)) {
    error = "cannot write '" + gallery.failed_path() + "': " + std::strerror(errno);
    return false;
  }
  mis.print_table(stdout);
  std::printf("  wrote %s and mis_direct_lighting.svg (%.2f s)\n", mis_csv.c_str(),
              seconds_since(start));
  return true;
}

// Everything after the command line; returns the exit status.
int run_demo(Options const& options, char const* program) {
  // Read the input before writing anything, so a bad file leaves no output.
  Scene scene;
  double max_distance = 1.0;
  std::string error;
  if (!make_scene(options, scene, max_distance, error)) {
    std::fprintf(stderr, "%s: %s\n", program, error.c_str());
    return 1;
  }
  if (!prepare_output_folder(options.out_dir, error)) {
    std::fprintf(stderr, "%s: %s\n", program, error.c_str());
    return 1;
  }

  Gallery gallery(options.out_dir);
  Clock::time_point const start = Clock::now();
  if (!render_ao(options, scene, max_distance, gallery, error) ||
      !run_convergence(options, gallery, error)) {
    std::fprintf(stderr, "%s: %s\n", program, error.c_str());
    return 1;
  }
  if (!PatternPictures::write(gallery) || !WarpPictures::write(gallery) ||
      !RayFanPictures::write(gallery) || !SurfacePictures::write(gallery) ||
      !FrustumPictures::write(gallery) || !gallery.write_index()) {
    std::string const failed =
        gallery.failed_path().empty() ? options.out_dir + "/index.html" : gallery.failed_path();
    std::fprintf(stderr, "%s: cannot write '%s': %s\n", program, failed.c_str(),
                 std::strerror(errno));
    return 1;
  }
  std::printf("sampling demo: wrote %zu pictures to %s/ in %.1f s\n", gallery.entries().size(),
              options.out_dir.c_str(), seconds_since(start));
  for (Gallery::Entry const& e : gallery.entries()) {
    std::printf("  %-36s %s\n", e.file.c_str(), e.caption.c_str());
  }
  std::printf("  %-36s the page that shows them all\n", "index.html");
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  bool help = false;
  std::string const problem = parse_options(argc, argv, options, help);
  if (help || !problem.empty())
    return usage(argv[0], problem);

  // The library's shared state (the hierarchical sampler's permutation
  // table) lives from here to the end: the render threads only read it.
  Sampling::init();
  int const status = run_demo(options, argv[0]);
  Sampling::destroy();
  return status;
}
