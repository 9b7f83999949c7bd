#include "examples/demo/surface_pictures.h"

#include <cmath>
#include <string>

#include "examples/demo/gallery.h"
#include "examples/demo/svg_canvas.h"
#include "platform/core/core_array.h"
#include "platform/geometry/ctx_eval.h"
#include "platform/geometry/geometry_mesh.h"
#include "platform/geometry/geometry_primitive_sample_descriptor.h"
#include "sampling/sampling.h"

namespace {

constexpr int k_size = 480;
constexpr unsigned int k_cells = 12;
constexpr unsigned int k_points = 700;

// A gently rolling patch over [0,1]^2: k_cells x k_cells quads, heights of
// a few hundredths, so from above it looks like the square it covers.
void build_terrain(GeometryMesh& mesh) {
  for (unsigned int j = 0; j <= k_cells; ++j) {
    for (unsigned int i = 0; i <= k_cells; ++i) {
      double const x = static_cast<double>(i) / k_cells, y = static_cast<double>(j) / k_cells;
      mesh.add_vertex(GMathVec3<double>(x, y, 0.05 * std::sin(6.0 * x) * std::cos(5.0 * y)));
    }
  }
  for (unsigned int j = 0; j < k_cells; ++j) {
    for (unsigned int i = 0; i < k_cells; ++i) {
      unsigned int const a = j * (k_cells + 1) + i;
      mesh.add_quad(a, a + 1, a + k_cells + 2, a + k_cells + 1, 0);
    }
  }
}

// The patch's grid lines and the points (x, y) over them.
void draw_points(SvgCanvas& canvas, CoreArray<GMathVec3<double>> const& positions,
                 std::string const& color) {
  for (unsigned int k = 0; k <= k_cells; ++k) {
    double const t = static_cast<double>(k) / k_cells;
    canvas.line(t, 0.0, t, 1.0, "#e4e4e4", 1.0);
    canvas.line(0.0, t, 1.0, t, "#e4e4e4", 1.0);
  }
  for (std::size_t i = 0; i < positions.count(); ++i)
    canvas.dot(positions[i].x, positions[i].y, 2.5, color);
}

}  // namespace

bool SurfacePictures::write(Gallery& gallery) {
  GeometryMesh mesh;
  build_terrain(mesh);
  CtxEval const context;
  GMathMatrix4x4<double> const identity;
  CoreArray<GeometryPrimitiveSampleDescriptor> descriptors;
  CoreArray<GMathVec3<double>> positions, normals, tangents;
  double spacing = 0.0;

  // Blue noise first: it may place fewer than requested, and white noise
  // then gets exactly as many points, so the two pictures compare like with
  // like.
  Sampling::surface_blue_noise_count(context, mesh, identity, k_points, descriptors, positions,
                                     normals, tangents, spacing, 0xFFFFFFFFu);
  unsigned int const placed = static_cast<unsigned int>(positions.count());
  SvgCanvas blue(k_size, "surface_blue_noise_count, " + std::to_string(placed) + " of " +
                             std::to_string(k_points) + " points");
  draw_points(blue, positions, SvgCanvas::palette(0));
  if (!gallery.save(blue, "surface_blue_noise.svg",
                    "Blue noise on a 12x12-quad terrain patch seen from above: " +
                        std::to_string(placed) + " of " + std::to_string(k_points) +
                        " darts kept, none closer than the spacing: no clumps, no holes."))
    return false;

  Sampling::surface_random_noise_count(context, mesh, identity, placed, descriptors, positions,
                                       normals, tangents, spacing, 0xFFFFFFFFu);
  SvgCanvas white(k_size,
                  "surface_random_noise_count, " + std::to_string(positions.count()) + " points");
  draw_points(white, positions, SvgCanvas::palette(3));
  return gallery.save(white, "surface_white_noise.svg",
                      "White noise on the same patch, as many points (" +
                          std::to_string(positions.count()) +
                          "), uniform per unit area: clumps and holes.");
}
