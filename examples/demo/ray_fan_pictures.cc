#include "examples/demo/ray_fan_pictures.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "examples/demo/gallery.h"
#include "examples/demo/pattern_pictures.h"
#include "examples/demo/scene.h"
#include "examples/demo/svg_canvas.h"
#include "examples/demo/view3d.h"
#include "platform/geometry/geometry_differential.h"
#include "platform/math/gmath_matrix3x3.h"
#include "sampling/ray_generators.h"
#include "sampling/samplers.h"

namespace {

constexpr int k_size = 480;
constexpr double k_degree = 3.14159265358979323846 / 180.0;
std::string const k_ray_color = SvgCanvas::palette(0);
std::string const k_clipped_color = SvgCanvas::palette(3);
std::string const k_dropped_color = "#ccc";

// A square of side 2 about the origin in the plane z = 0, the surface of the
// lobe pictures.
void draw_surface(View3d const& view, SvgCanvas& canvas) {
  GMathVec3<double> const corners[4] = {
      GMathVec3<double>(-1.0, -1.0, 0.0), GMathVec3<double>(1.0, -1.0, 0.0),
      GMathVec3<double>(1.0, 1.0, 0.0), GMathVec3<double>(-1.0, 1.0, 0.0)};
  view.polygon(canvas, corners, 4, "#999", "#f0f0f0", 1.0);
}

// Cosine cone about +z, full opening `angle` degrees, side view. The clip
// normal is +z turned by `clip_tilt` degrees towards -x; mode 0 plain, 1
// discard, 2 project. Rays the plain mode gives but the clipping drops are
// light grey; projected rays red.
bool write_cosine(Gallery& gallery, double angle, double clip_tilt, int mode,
                  std::string const& file, std::string const& caption) {
  std::vector<GMathVec2<double>> const samples = PatternPictures::hammersley(96);
  unsigned int const count = static_cast<unsigned int>(samples.size());
  GMathVec3<double> const origin(0.0, 0.0, 0.0);
  double const k_length = 0.8;  // drawn length of a ray
  GMathVec3<double> const normal(-std::sin(clip_tilt * k_degree), 0.0,
                                 std::cos(clip_tilt * k_degree));
  CosineWeightedHemisphereRayGenerator generator;
  generator.init(GMathRay(origin, GMathVec3<double>(0.0, 0.0, 1.0)), angle, 1.0, 1.0);
  std::vector<GMathRay> plain(count), clipped(count);
  generator.get_rays(samples.data(), count, plain.data(), nullptr);
  char const* mode_name = "plain";
  if (mode == 1) {
    generator.discard_clipped_samples(normal);
    mode_name = "discard";
  } else if (mode == 2) {
    generator.project_clipped_samples(normal);
    mode_name = "project";
  }
  unsigned int const kept = generator.get_rays(samples.data(), count, clipped.data(), nullptr);

  View3d const view(GMathVec3<double>(0.0, 0.0, 0.35), 0.85, 90.0, 0.0);
  SvgCanvas canvas(k_size, "Cosine generator, " + std::to_string(static_cast<int>(angle)) +
                               " degrees, " + mode_name + " (side view x, z)");
  if (mode != 0) {
    GMathVec3<double> const along(normal.z, 0.0, -normal.x);
    // The plane's trace, kept inside the view below the origin.
    double const below = std::min(0.9, 0.45 / std::sin(clip_tilt * k_degree));
    view.line(canvas, along * -below, along * 0.9, "#999", 1.5);
    view.arrow(canvas, origin, normal * 0.6, "#555", 2.0);
    for (unsigned int i = 0; i < count; ++i) {
      if (dot(plain[i].m_direction, normal) <= 0.0)
        view.line(canvas, origin, plain[i].m_direction * k_length, k_dropped_color, 1.0);
    }
  }
  for (unsigned int i = 0; i < kept; ++i) {
    bool const projected = mode == 2 && dot(plain[i].m_direction, normal) < 0.0;
    view.line(canvas, origin, clipped[i].m_direction * k_length,
              projected ? k_clipped_color : k_ray_color, 1.0);
  }
  view.arrow(canvas, origin, GMathVec3<double>(0.0, 0.0, 1.1), "#000", 1.5);
  view.dot(canvas, origin, 4.0, "#000");
  return gallery.save(canvas, file,
                      caption + " (" + std::to_string(kept) + " of " + std::to_string(count) +
                          " samples give rays).");
}

// The lobe pictures: a top view (looking down -z: x right, y up) in the
// left panel and a side view (looking along +y: x right, z up) in the right.
constexpr int k_lobe_panel = 400;
constexpr double k_lobe_extent = 1.25;  // world units from the origin to a panel's edge
constexpr double k_lobe_length = 1.1;   // drawn length of a ray

std::string sample_text(GMathVec2<double> const& sample) {
  return SvgCanvas::format("(%g, ", sample.x) + SvgCanvas::format("%g)", sample.y);
}

// Glossy reflection or refraction at the origin of the plane z = 0, the
// incoming ray from the upper left in the x, z plane (30 degrees from the
// normal for reflection, 45 for refraction): the ray of every sample, and
// the direction a smooth surface would give (the mirror direction, or the
// refracted one by Snell's law about N), about which the lobe lies.
struct Lobe {
  std::vector<GMathVec2<double>> samples;
  std::vector<GMathRay> rays;  // one per sample, written where `kept`
  std::vector<bool> kept;
  GMathVec3<double> incoming;
  GMathVec3<double> smooth;  // the direction about which the lobe lies
};

Lobe make_lobe(bool refraction, float nu, float nv) {
  Lobe lobe;
  lobe.samples = PatternPictures::hammersley(160);
  std::size_t const count = lobe.samples.size();
  GMathVec3<double> const origin(0.0, 0.0, 0.0), up(0.0, 0.0, 1.0);
  lobe.incoming =
      normalized(GMathVec3<double>(refraction ? 1.0 : 0.5, 0.0, refraction ? -1.0 : -0.866));
  GMathRay const ray(origin - lobe.incoming * 1.2, lobe.incoming);
  GMathMatrix3x3<double> const shading;  // T = x, B = y, N = z
  GeometryDifferential const differential;
  float const eta = 1.0f / 1.5f;
  lobe.rays.resize(count);
  lobe.kept.resize(count);
  AnisotropicReflectionRayGenerator reflection;
  AnisotropicRefractionRayGenerator transmission;
  if (refraction) {
    transmission.init(ray, origin, shading, up, differential, nu, nv, GMathVec2<float>(1.0f, 0.0f),
                      eta, 0.0f, 0.0f);
  } else {
    reflection.init(ray, origin, shading, up, differential, nu, nv, GMathVec2<float>(1.0f, 0.0f),
                    0.0f, 0.0f);
  }
  SampleRayGenerator const& generator =
      refraction ? static_cast<SampleRayGenerator const&>(transmission) : reflection;
  for (std::size_t i = 0; i < count; ++i)
    lobe.kept[i] = generator.get_ray(lobe.samples[i], lobe.rays[i], nullptr);
  // The smooth surface's direction: I mirrored about N, or refracted.
  GMathVec3<double> const& in = lobe.incoming;
  if (refraction) {
    double const cos_i = -in.z, cos_t = std::sqrt(1.0 - eta * eta * (1.0 - cos_i * cos_i));
    lobe.smooth = in * static_cast<double>(eta) + up * (eta * cos_i - cos_t);
  } else {
    lobe.smooth = GMathVec3<double>(in.x, in.y, -in.z);
  }
  return lobe;
}

void draw_lobe_view(Lobe const& lobe, bool top, std::vector<bool> const& odd, SvgCanvas& canvas) {
  GMathVec3<double> const origin(0.0, 0.0, 0.0);
  View3d const view(origin, k_lobe_extent, 90.0, top ? 90.0 : 0.0, top ? 0 : 1);
  double const u0 = top ? 0.0 : 1.0;
  if (top) {
    draw_surface(view, canvas);
  } else {
    // The material below the surface, then the surface's edge.
    GMathVec3<double> const below[4] = {
        GMathVec3<double>(-1.2, 0.0, 0.0), GMathVec3<double>(1.2, 0.0, 0.0),
        GMathVec3<double>(1.2, 0.0, -1.2), GMathVec3<double>(-1.2, 0.0, -1.2)};
    view.polygon(canvas, below, 4, "none", "#f3f3f3", 0.0);
    view.line(canvas, GMathVec3<double>(-1.2, 0.0, 0.0), GMathVec3<double>(1.2, 0.0, 0.0), "#999",
              1.5);
    view.arrow(canvas, origin, GMathVec3<double>(0.0, 0.0, 0.5), "#555", 1.5);
  }
  for (int pass = 0; pass < 2; ++pass) {  // the odd rays over the others
    for (std::size_t i = 0; i < lobe.rays.size(); ++i) {
      if (!lobe.kept[i] || odd[i] != (pass == 1))
        continue;
      GMathVec3<double> const end = lobe.rays[i].m_direction * k_lobe_length;
      std::string const& color = odd[i] ? SvgCanvas::palette(3) : k_ray_color;
      // Thin in the top view, where the lines all meet at the origin.
      view.line(canvas, origin, end, color, odd[i] ? 1.5 : top ? 0.6 : 1.0);
      view.dot(canvas, end, odd[i] ? 3.0 : 2.0, odd[i] ? color : SvgCanvas::palette(1));
    }
  }
  GMathVec3<double> const smooth_end = lobe.smooth * (k_lobe_length + 0.1);
  // The incoming ray and the smooth direction over the rays.
  view.arrow(canvas, origin - lobe.incoming * 1.2, origin, "#000", 2.0);
  view.line(canvas, origin, smooth_end, "#000", 1.5, "6 4");
  view.dot(canvas, origin, 4.0, "#000");
  canvas.text(u0 + 0.02, 0.955,
              top ? "top view (x right, y up)" : "side view (x right, z up, y into the page)", 12,
              "#333", "start");
  if (!top)
    canvas.line(1.0, 0.0, 1.0, 1.0, "#999", 1.0);
}

bool write_lobe(Gallery& gallery, bool refraction, float nu, float nv, std::string const& file,
                std::string const& title, std::string const& caption) {
  Lobe const lobe = make_lobe(refraction, nu, nv);
  std::size_t const count = lobe.samples.size();
  // Red rays: for reflection those that leave below the surface; for
  // refraction those of samples with v = 0.
  std::vector<bool> odd(count, false);
  std::string odd_samples;
  unsigned int odd_count = 0, ray_count = 0;
  double odd_angle = 0.0;
  for (std::size_t i = 0; i < count; ++i) {
    if (!lobe.kept[i])
      continue;
    ++ray_count;
    odd[i] = refraction ? lobe.samples[i].y == 0.0 : !(lobe.rays[i].m_direction.z > 0.0);
    if (odd[i]) {
      odd_samples += (odd_count++ ? " and " : "") + sample_text(lobe.samples[i]);
      odd_angle = std::asin(-lobe.rays[i].m_direction.z) / k_degree;
    }
  }
  SvgCanvas canvas(k_lobe_panel, title, 2);
  draw_lobe_view(lobe, true, odd, canvas);
  draw_lobe_view(lobe, false, odd, canvas);

  std::string note;
  if (odd_count > 0 && !refraction) {
    note = " Red: the " + std::to_string(odd_count) + " of " + std::to_string(ray_count) +
           " rays that leave below the surface, of samples " + odd_samples +
           ". The generator rejects no sample: v = 0 (and, where an exponent is low, a small v) "
           "gives a microfacet normal in or near the surface plane; the incoming ray mirrored "
           "about it goes down, mirrored about the half-turned normal too, and the ray is "
           "kept (for (0, 0) it is the incoming direction with x turned back).";
  } else if (odd_count > 0) {
    note = " Red: the ray of sample " + odd_samples + ", " + SvgCanvas::format("%.0f", odd_angle) +
           " degrees below the surface, far from the lobe: v = 0 gives a microfacet normal lying "
           "in the surface, where the lobe's density is zero, and the generator refracts "
           "through that upright facet.";
  }
  return gallery.save(canvas, file, caption + note);
}

bool write_sphere(Gallery& gallery) {
  std::vector<GMathVec2<double>> const samples = PatternPictures::hammersley(256);
  unsigned int const count = static_cast<unsigned int>(samples.size());
  GMathVec3<double> const centre(0.0, 0.0, 0.0);
  UniformSphereRayGenerator generator;
  generator.init(centre, 0.0, 0.0);
  std::vector<GMathRay> rays(count);
  unsigned int const n = generator.get_rays(samples.data(), count, rays.data(), nullptr);
  View3d const view(centre, 1.2, 60.0, 20.0);
  SvgCanvas canvas(k_size, "UniformSphereRayGenerator, 256 rays");
  // Back half first (light), front half over it.
  GMathVec3<double> const towards_viewer(-std::cos(20.0 * k_degree) * std::cos(60.0 * k_degree),
                                         -std::cos(20.0 * k_degree) * std::sin(60.0 * k_degree),
                                         std::sin(20.0 * k_degree));
  for (int front = 0; front < 2; ++front) {
    for (unsigned int i = 0; i < n; ++i) {
      if ((dot(rays[i].m_direction, towards_viewer) >= 0.0) == (front == 1))
        view.line(canvas, centre, rays[i].m_direction, front ? k_ray_color : "#c8d8e8", 1.0);
    }
  }
  view.dot(canvas, centre, 4.0, "#000");
  return gallery.save(canvas, "rays_uniform_sphere.svg",
                      "UniformSphereRayGenerator: 256 rays from the centre, uniform over the "
                      "sphere (rays pointing away from the viewer light).");
}

// The three shape generators under one rotated frame, targets drawn at the
// end of each ray (ray length = its weight, the distance).
GMathVec3<double> const k_shape_origin(-1.0, -1.1, 1.1);
GMathMatrix4x4<double> shape_frame() {
  return View3d::frame(1.6, 1.0, 1.0, 35.0, 25.0, GMathVec3<double>(0.0, 0.0, 0.0));
}

void draw_shape_rays(View3d const& view, SvgCanvas& canvas, SampleRayGenerator const& generator,
                     std::vector<GMathVec2<double>> const& samples) {
  unsigned int const count = static_cast<unsigned int>(samples.size());
  std::vector<GMathRay> rays(count);
  std::vector<double> distances(count);
  unsigned int const n = generator.get_rays(samples.data(), count, rays.data(), distances.data());
  for (unsigned int i = 0; i < n; ++i) {
    GMathVec3<double> const target = rays[i].m_origin + rays[i].m_direction * distances[i];
    view.line(canvas, rays[i].m_origin, target, k_ray_color, 0.8);
    view.dot(canvas, target, 2.0, SvgCanvas::palette(1));
  }
  view.dot(canvas, k_shape_origin, 5.0, "#000");
}

bool write_shapes(Gallery& gallery) {
  GMathMatrix4x4<double> const frame = shape_frame();
  View3d const view(GMathVec3<double>(0.0, -0.2, 0.5), 1.5, 70.0, 25.0);

  LineRayGenerator line;
  line.init(k_shape_origin, frame, 0.0);
  SvgCanvas line_canvas(k_size, "LineRayGenerator, rotated and scaled frame");
  view.line(line_canvas, frame.transform_point(GMathVec3<double>(-0.5, 0.0, 0.0)),
            frame.transform_point(GMathVec3<double>(0.5, 0.0, 0.0)), "#555", 2.0);
  draw_shape_rays(view, line_canvas, line, PatternPictures::hammersley(24));
  if (!gallery.save(line_canvas, "rays_line.svg",
                    "LineRayGenerator: rays from the origin (black) to uniform points of a "
                    "rotated segment; each ray's weight is its length."))
    return false;

  PlaneRayGenerator plane;
  plane.init(k_shape_origin, frame, 0.0, 0.0);
  SvgCanvas plane_canvas(k_size, "PlaneRayGenerator, rotated and scaled frame");
  view.rectangle(plane_canvas, frame, "#555", "#f0f0f0", 1.5);
  draw_shape_rays(view, plane_canvas, plane, PatternPictures::hammersley(64));
  if (!gallery.save(plane_canvas, "rays_plane.svg",
                    "PlaneRayGenerator: rays from the origin to uniform points of a rotated "
                    "rectangle (1.6 x 1)."))
    return false;

  DiskRayGenerator disk;
  disk.init(k_shape_origin, frame, 0.5, 0.0, 0.0);
  SvgCanvas disk_canvas(k_size, "DiskRayGenerator, rotated and scaled frame");
  std::vector<GMathVec3<double>> rim(64);
  for (unsigned int k = 0; k < rim.size(); ++k) {
    double const a = 2.0 * 3.14159265358979323846 * k / rim.size();
    rim[k] = frame.transform_point(GMathVec3<double>(0.5 * std::cos(a), 0.5 * std::sin(a), 0.0));
  }
  view.polygon(disk_canvas, rim.data(), static_cast<unsigned int>(rim.size()), "#555", "#f0f0f0",
               1.5);
  draw_shape_rays(view, disk_canvas, disk, PatternPictures::hammersley(64));
  return gallery.save(disk_canvas, "rays_disk.svg",
                      "DiskRayGenerator: rays from the origin to uniform points of a disk of "
                      "radius 0.5 under the same frame (an ellipse: the frame stretches x).");
}

}  // namespace

bool RayFanPictures::write(Gallery& gallery) {
  return write_cosine(gallery, 60.0, 0.0, 0, "rays_cosine_60.svg",
                      "Cosine-weighted cone of 60 degrees about +z (arrow), plain mode") &&
         write_cosine(gallery, 120.0, 50.0, 1, "rays_cosine_120_discard.svg",
                      "Cone of 120 degrees, clip normal (grey arrow) tilted 50 degrees: discard "
                      "drops the rays below its plane (light grey)") &&
         write_cosine(gallery, 180.0, 35.0, 2, "rays_cosine_180_project.svg",
                      "Full hemisphere, clip normal tilted 35 degrees: project flattens the rays "
                      "below its plane onto it (red; light grey where they were)") &&
         write_lobe(gallery, false, 40.0f, 40.0f, "rays_reflection_isotropic.svg",
                    "Reflection generator, nu = nv = 40: top and side views",
                    "Glossy reflection, nu = nv = 40, from the top and from the side: a lobe "
                    "about the mirror direction (dashed), as wide across the plane of incidence "
                    "as along it (black arrow: the incoming ray; grey: the normal).") &&
         write_lobe(gallery, false, 4.0f, 1000.0f, "rays_reflection_anisotropic.svg",
                    "Reflection generator, nu = 4, nv = 1000: top and side views",
                    "Glossy reflection, nu = 4 along x and nv = 1000 along y: from the top the "
                    "lobe is a thin line along x, from the side a wide fan in the plane of "
                    "incidence about the mirror direction (dashed).") &&
         write_lobe(gallery, true, 100.0f, 100.0f, "rays_refraction.svg",
                    "Refraction generator, eta = 1/1.5, nu = nv = 100: top and side views",
                    "Glossy refraction into glass (eta = 1/1.5, nu = nv = 100): the rays bend "
                    "towards the normal below the surface, a round lobe about the smooth "
                    "surface's refracted direction (dashed).") &&
         write_sphere(gallery) && write_shapes(gallery);
}
