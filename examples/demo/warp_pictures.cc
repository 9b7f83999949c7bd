#include "examples/demo/warp_pictures.h"

#include <string>
#include <vector>

#include "examples/demo/gallery.h"
#include "examples/demo/pattern_pictures.h"
#include "examples/demo/svg_canvas.h"
#include "platform/core/core_array.h"
#include "sampling/samplers.h"
#include "sampling/sampling.h"

namespace {

constexpr int k_size = 480;

// Maps [-1, 1] onto the unit square of a canvas.
double to_canvas(double x) {
  return 0.5 + 0.5 * x;
}

// A warp of the unit square to a point or direction.
typedef void (*Warp)(double const& u, double const& v, GMathVec3<double>& p);

void cosine_concentric(double const& u, double const& v, GMathVec3<double>& p) {
  Sampling::hemisphere_cosine_concentric(u, v, p, 1.0);
}
void cosine_concentric_cone(double const& u, double const& v, GMathVec3<double>& p) {
  Sampling::hemisphere_cosine_concentric(u, v, p, 0.5);
}
void cosine(double const& u, double const& v, GMathVec3<double>& p) {
  Sampling::hemisphere_cosine(u, v, p, 1.0);
}
void uniform(double const& u, double const& v, GMathVec3<double>& p) {
  Sampling::hemisphere_uniform(u, v, p, 1.0);
}
void uniform_concentric(double const& u, double const& v, GMathVec3<double>& p) {
  Sampling::hemisphere_uniform_concentric(u, v, p, 1.0);
}

struct WarpPicture {
  char const* file;
  char const* title;
  char const* caption;
  Warp warp;
  bool side_view;  // spheres: (x, z) with the front half (y >= 0) dark
};

}  // namespace

bool WarpPictures::write(Gallery& gallery) {
  std::vector<GMathVec2<double>> const inputs = PatternPictures::hammersley(1024);

  WarpPicture const pictures[] = {
      {"warp_disk_concentric.svg", "Sampling::disk_concentric",
       "disk_concentric: the concentric map, uniform over the disk's area.",
       &Sampling::disk_concentric, false},
      {"warp_hemisphere_cosine_concentric.svg", "Sampling::hemisphere_cosine_concentric (top view)",
       "hemisphere_cosine_concentric seen from above: cosine-weighted, so uniform over the "
       "projected disk.",
       cosine_concentric, false},
      {"warp_hemisphere_cosine_cone.svg",
       "hemisphere_cosine_concentric, radius_scale 0.5 (top view)",
       "The same warp with radius_scale 0.5: a cone whose half-angle has sine 0.5.",
       cosine_concentric_cone, false},
      {"warp_hemisphere_cosine.svg", "Sampling::hemisphere_cosine (top view)",
       "hemisphere_cosine seen from above: projected radius linear in u, so points crowd at the "
       "pole.",
       cosine, false},
      {"warp_hemisphere_uniform.svg", "Sampling::hemisphere_uniform (top view)",
       "hemisphere_uniform seen from above: polar angle linear in u, so points crowd at "
       "the pole.",
       uniform, false},
      {"warp_hemisphere_uniform_concentric.svg",
       "Sampling::hemisphere_uniform_concentric (top view)",
       "hemisphere_uniform_concentric seen from above: polar angle proportional to the "
       "concentric radius, so no cluster at the pole; points crowd towards the rim.",
       uniform_concentric, false},
      {"warp_sphere_uniform.svg", "Sampling::sphere_uniform (side view x, z)",
       "sphere_uniform seen from the side (x, z): uniform per solid angle; front half dark, back "
       "grey.",
       &Sampling::sphere_uniform, true},
      {"warp_sphere_cosine.svg", "Sampling::sphere_cosine (side view x, z)",
       "sphere_cosine seen from the side: polar angle linear in u, so points crowd at the poles.",
       &Sampling::sphere_cosine, true},
  };
  for (WarpPicture const& picture : pictures) {
    SvgCanvas canvas(k_size, picture.title);
    canvas.circle(0.5, 0.5, 0.5, "#999", 1.0);
    for (GMathVec2<double> const& s : inputs) {
      GMathVec3<double> p;
      picture.warp(s.x, s.y, p);
      if (picture.side_view) {
        canvas.dot(to_canvas(p.x), to_canvas(p.z), 2.0,
                   p.y >= 0.0 ? SvgCanvas::palette(4) : "#ccc");
      } else {
        canvas.dot(to_canvas(p.x), to_canvas(p.y), 2.0, SvgCanvas::palette(0));
      }
    }
    if (!gallery.save(canvas, picture.file, picture.caption))
      return false;
  }

  // The fixed point sets, points joined in their order so the rings and
  // rows show.
  CoreArray<GMathVec2<double>> points;
  Sampling::disk_uniform(points, 16);
  SvgCanvas disk(k_size, "Sampling::disk_uniform, N = 16 (256 points)");
  disk.circle(0.5, 0.5, 0.5, "#999", 1.0);
  for (std::size_t i = 0; i < points.count(); ++i) {
    if (i > 0)
      disk.line(to_canvas(points[i - 1].x), to_canvas(points[i - 1].y), to_canvas(points[i].x),
                to_canvas(points[i].y), "#ddd", 1.0);
    disk.dot(to_canvas(points[i].x), to_canvas(points[i].y), 3.0, SvgCanvas::palette(2));
  }
  if (!gallery.save(disk, "points_disk_uniform.svg",
                    "disk_uniform N = 16: 256 points on concentric rings (grey: their order), "
                    "the outer ring first."))
    return false;

  Sampling::grid_uniform(points, 16, GMathVec2<double>(0.05, 0.05), GMathVec2<double>(0.95, 0.95));
  SvgCanvas grid(k_size, "Sampling::grid_uniform, N = 16 from (0.05, 0.05) to (0.95, 0.95)");
  for (std::size_t i = 0; i < points.count(); ++i) {
    if (i > 0)
      grid.line(points[i - 1].x, points[i - 1].y, points[i].x, points[i].y, "#ddd", 1.0);
    grid.dot(points[i].x, points[i].y, 3.0, SvgCanvas::palette(3));
  }
  return gallery.save(grid, "points_grid_uniform.svg",
                      "grid_uniform N = 16: a 16x16 grid row by row, x fastest (grey: their "
                      "order).");
}
