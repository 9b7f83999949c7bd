#include "examples/demo/frustum_pictures.h"

#include <cmath>
#include <string>
#include <vector>

#include "examples/demo/gallery.h"
#include "examples/demo/pattern_pictures.h"
#include "examples/demo/scene.h"
#include "examples/demo/svg_canvas.h"
#include "examples/demo/view3d.h"
#include "sampling/ray_generators.h"
#include "sampling/samplers.h"

namespace {

constexpr int k_size = 480;
constexpr double k_shape_extent = 1.1;
constexpr double k_cone_extent = 1.45;

// The pictures look straight down at the plane z = `height`, showing the
// square of half side `extent` about (0, 0).
View3d top_view(double height, double extent) {
  return View3d(GMathVec3<double>(0.0, 0.0, height), extent, 90.0, 90.0);
}

// Draws the part of the line a x + b y + c = 0 of the plane z = `height`
// that lies in the square of half side h about (0, 0).
void draw_trace(View3d const& view, SvgCanvas& canvas, double a, double b, double c, double height,
                double h, std::string const& color) {
  std::vector<GMathVec3<double>> ends;
  if (b != 0.0) {
    for (double x : {-h, h}) {
      double const y = -(a * x + c) / b;
      if (y >= -h && y <= h)
        ends.push_back(GMathVec3<double>(x, y, height));
    }
  }
  if (a != 0.0) {
    for (double y : {-h, h}) {
      double const x = -(b * y + c) / a;
      if (x > -h && x < h)
        ends.push_back(GMathVec3<double>(x, y, height));
    }
  }
  if (ends.size() >= 2)
    view.line(canvas, ends[0], ends[1], color, 1.5);
}

// The sample boxes of the pictures' packets: two opposite quarters of the
// square, or for the line two quarters of the u range.
struct Packet {
  GMathVec2<double> corner0, corner1;
};

// Samples of a Hammersley set inside the packet's box.
std::vector<GMathVec2<double>> packet_samples(std::vector<GMathVec2<double>> const& all,
                                              Packet const& packet) {
  std::vector<GMathVec2<double>> inside;
  for (GMathVec2<double> const& s : all) {
    if (s.x >= packet.corner0.x && s.x <= packet.corner1.x && s.y >= packet.corner0.y &&
        s.y <= packet.corner1.y)
      inside.push_back(s);
  }
  return inside;
}

// Targets on the shape's plane z = 0 (grey for every sample, the packet's
// colour for its own), and the traces of the packet's frustum planes there.
void draw_shape_packets(SampleRayGenerator const& generator, GMathVec3<double> const& origin,
                        std::vector<Packet> const& packets, SvgCanvas& canvas) {
  View3d const view = top_view(0.0, k_shape_extent);
  std::vector<GMathVec2<double>> const all = PatternPictures::hammersley(256);
  std::vector<GMathRay> rays(all.size());
  std::vector<double> distances(all.size());
  unsigned int n = generator.get_rays(all.data(), static_cast<unsigned int>(all.size()),
                                      rays.data(), distances.data());
  for (unsigned int i = 0; i < n; ++i)
    view.dot(canvas, rays[i].m_origin + rays[i].m_direction * distances[i], 2.0, "#bbb");
  for (std::size_t p = 0; p < packets.size(); ++p) {
    std::string const& color = SvgCanvas::palette(static_cast<unsigned int>(p));
    std::vector<GMathVec2<double>> const inside = packet_samples(all, packets[p]);
    n = generator.get_rays(inside.data(), static_cast<unsigned int>(inside.size()), rays.data(),
                           distances.data());
    for (unsigned int i = 0; i < n; ++i) {
      GMathVec3<double> const target = rays[i].m_origin + rays[i].m_direction * distances[i];
      view.line(canvas, origin, target, "#e8e8e8", 0.6);
      view.dot(canvas, target, 2.5, color);
    }
    GMathFrustum frustum;
    generator.get_frustum(packets[p].corner0, packets[p].corner1, frustum);
    for (unsigned int k = 0; k < frustum.m_plane_count; ++k) {
      GMathVec3<double> const& normal = frustum.m_plane_normal[k];
      draw_trace(view, canvas, normal.x, normal.y, frustum.m_plane_distance[k], 0.0, k_shape_extent,
                 color);
    }
  }
  view.dot(canvas, origin, 5.0, "#000");
}

bool write_shapes(Gallery& gallery) {
  GMathVec3<double> const origin(0.15, 0.25, 1.5);
  GMathMatrix4x4<double> const frame =
      View3d::frame(1.6, 1.2, 1.0, 0.0, 25.0, GMathVec3<double>(0.0, 0.0, 0.0));

  PlaneRayGenerator plane;
  plane.init(origin, frame, 0.0, 0.0);
  SvgCanvas plane_canvas(k_size, "PlaneRayGenerator, frusta of two packets, top view");
  View3d const view = top_view(0.0, k_shape_extent);
  view.rectangle(plane_canvas, frame, "#999", "none", 1.0);
  draw_shape_packets(plane, origin,
                     {{GMathVec2<double>(0.0, 0.0), GMathVec2<double>(0.5, 0.5)},
                      {GMathVec2<double>(0.5, 0.5), GMathVec2<double>(0.75, 1.0)}},
                     plane_canvas);
  if (!gallery.save(plane_canvas, "frustum_plane.svg",
                    "Plane generator seen from above (origin: black dot, 1.5 above): the four "
                    "planes of each packet's frustum cut the rectangle in lines that enclose the "
                    "packet's targets."))
    return false;

  LineRayGenerator line;
  line.init(origin, frame, 0.0);
  SvgCanvas line_canvas(k_size, "LineRayGenerator frusta of two packets, top view");
  view.line(line_canvas, frame.transform_point(GMathVec3<double>(-0.5, 0.0, 0.0)),
            frame.transform_point(GMathVec3<double>(0.5, 0.0, 0.0)), "#999", 1.0);
  draw_shape_packets(line, origin,
                     {{GMathVec2<double>(0.0, 0.0), GMathVec2<double>(0.25, 1.0)},
                      {GMathVec2<double>(0.5, 0.0), GMathVec2<double>(0.875, 1.0)}},
                     line_canvas);
  return gallery.save(line_canvas, "frustum_line.svg",
                      "Line generator from above: each packet (a range of u) gets two planes "
                      "across the segment and two along a thin strip about it.");
}

// Cone of 90 degrees about +z seen along its axis at z = 1, four packets
// (the quarters of the sample square).
bool write_cosine(Gallery& gallery) {
  CosineWeightedHemisphereRayGenerator generator;
  GMathVec3<double> const origin(0.0, 0.0, 0.0);
  generator.init(GMathRay(origin, GMathVec3<double>(0.0, 0.0, 1.0)), 90.0, 1.0, 1.0);
  View3d const view = top_view(1.0, k_cone_extent);
  SvgCanvas canvas(k_size, "Cosine generator, 90 degrees, frusta of four packets");
  canvas.circle(0.5, 0.5, 0.5 / k_cone_extent, "#999", 1.0);  // the cone's rim, tan 45 = 1
  std::vector<GMathVec2<double>> const all = PatternPictures::hammersley(256);
  std::vector<GMathRay> rays(all.size());
  for (unsigned int p = 0; p < 4; ++p) {
    std::string const& color = SvgCanvas::palette(p);
    Packet const packet{GMathVec2<double>(0.5 * (p & 1), 0.5 * (p >> 1)),
                        GMathVec2<double>(0.5 * (p & 1) + 0.5, 0.5 * (p >> 1) + 0.5)};
    std::vector<GMathVec2<double>> const inside = packet_samples(all, packet);
    unsigned int const n = generator.get_rays(
        inside.data(), static_cast<unsigned int>(inside.size()), rays.data(), nullptr);
    for (unsigned int i = 0; i < n; ++i) {
      GMathVec3<double> const& d = rays[i].m_direction;
      view.dot(canvas, d / d.z, 2.5, color);
    }
    GMathFrustum frustum;
    generator.get_frustum(packet.corner0, packet.corner1, frustum);
    for (unsigned int k = 0; k < frustum.m_plane_count; ++k) {
      GMathVec3<double> const& normal = frustum.m_plane_normal[k];
      draw_trace(view, canvas, normal.x, normal.y, normal.z, 1.0, k_cone_extent, color);
      // Corner direction: where plane k - 1 meets plane k, on the inner side
      // of the other two.
      GMathVec3<double> corner =
          cross(frustum.m_plane_normal[(k + 3) % 4], frustum.m_plane_normal[k]);
      if (corner.z < 0.0)
        corner = -corner;
      if (corner.z > 1e-9 && std::fabs(corner.x) < k_cone_extent * corner.z &&
          std::fabs(corner.y) < k_cone_extent * corner.z)
        view.dot(canvas, corner / corner.z, 5.0, "#000");
    }
  }
  view.dot(canvas, GMathVec3<double>(0.0, 0.0, 1.0), 3.0, "#000");
  return gallery.save(canvas, "frustum_cosine.svg",
                      "Cosine cone of 90 degrees seen along its axis (direction d at d.xy / d.z): "
                      "each quarter of the sample square is a packet whose four planes (lines) "
                      "and corner directions (black) hold its rays.");
}

}  // namespace

bool FrustumPictures::write(Gallery& gallery) {
  return write_shapes(gallery) && write_cosine(gallery);
}
