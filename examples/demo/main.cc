// The sampling demo: draws the library's sample patterns and warps into an
// output folder and lists what it wrote.
//
//   sampling_demo [--out DIR]

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "examples/demo/gallery.h"

namespace {

int usage(char const* program, char const* problem) {
  if (problem) std::fprintf(stderr, "%s: %s\n", program, problem);
  std::fprintf(problem ? stderr : stdout,
               "usage: %s [--out DIR]\n"
               "  --out DIR   output folder (default out/demo), created if missing\n",
               program);
  return problem ? 2 : 0;
}

// mkdir -p.
bool make_folder(std::string const& path) {
  std::string partial;
  for (std::size_t i = 0; i <= path.size(); ++i) {
    if (i == path.size() || path[i] == '/') {
      if (!partial.empty() && mkdir(partial.c_str(), 0755) != 0 && errno != EEXIST) return false;
    }
    if (i < path.size()) partial += path[i];
  }
  struct stat info;
  return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

}  // namespace

int main(int argc, char** argv) {
  std::string out_dir = "out/demo";
  for (int i = 1; i < argc; ++i) {
    std::string const arg = argv[i];
    if (arg == "--help" || arg == "-h") return usage(argv[0], nullptr);
    if (arg == "--out") {
      if (i + 1 >= argc || argv[i + 1][0] == '\0') return usage(argv[0], "--out needs a folder");
      out_dir = argv[++i];
      continue;
    }
    std::string const problem = "unknown option '" + arg + "'";
    return usage(argv[0], problem.c_str());
  }
  if (!make_folder(out_dir)) {
    std::fprintf(stderr, "%s: cannot create folder '%s': %s\n", argv[0], out_dir.c_str(),
                 std::strerror(errno));
    return 1;
  }

  Gallery gallery(out_dir);
  if (!gallery.write_patterns() || !gallery.write_warps() || !gallery.write_index()) {
    std::string const failed =
        gallery.failed_path().empty() ? out_dir + "/index.html" : gallery.failed_path();
    std::fprintf(stderr, "%s: cannot write '%s': %s\n", argv[0], failed.c_str(),
                 std::strerror(errno));
    return 1;
  }
  std::printf("sampling demo: wrote %zu pictures to %s/\n", gallery.entries().size(),
              out_dir.c_str());
  for (Gallery::Entry const& e : gallery.entries()) {
    std::printf("  %-36s %s\n", e.file.c_str(), e.caption.c_str());
  }
  std::printf("  %-36s the page that shows them all\n", "index.html");
  return 0;
}
