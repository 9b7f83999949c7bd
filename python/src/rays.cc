// sampling.rays: the seven ray generators as Python classes. get_rays maps
// an (N, 2) sample array to a Rays record of arrays; get_frusta maps a
// (P, 2, 2) array of packet boxes (as Sampler2d.packet_boxes returns them)
// to a Frusta record.
//
// Each Python generator is the library's record plus what the bindings need
// to check a call before the library sees it: whether init has run and, for
// the shape generators, the placement that decides whether a ray origin lies
// on the shape.

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "python/src/arrays.h"
#include "python/src/module.h"
#include "sampling/ray_generators.h"
#include "sampling/rays/ray_math.h"
#include "sampling/warps/concentric_map.h"

namespace sampling_python {
namespace {

using Vec3 = GMathVec3<double>;

// What get_rays returns: the n produced rays, in sample order.
struct Rays {
  py::object origins, directions, weights, differentials, has_differentials, times, types, aux;
  py::ssize_t count;
};

// What get_frusta returns: one frustum per box.
struct Frusta {
  py::object points, normals, distances, plane_count;
};

template <typename G>
struct Generator : G {
  using G::G;
  bool ready = false;
};

// The shape generators: placement kept beside the record.
template <typename G>
struct Shape : Generator<G> {
  using Generator<G>::Generator;
  GMathMatrix4x4<double> placement;
  Vec3 origin;
  Vec3 clip_normal;
  double radius = 1.0;
  bool discard = false;
};
using Line = Shape<LineRayGenerator>;
using Plane = Shape<PlaneRayGenerator>;
using Disk = Shape<DiskRayGenerator>;

// The shape's local point of a sample, as the generator computes it.
Vec3 local_point(Line const&, GMathVec2<double> const& s) {
  return Vec3(s.x - 0.5, 0.0, 0.0);
}
Vec3 local_point(Plane const&, GMathVec2<double> const& s) {
  return Vec3(s.x - 0.5, s.y - 0.5, 0.0);
}
Vec3 local_point(Disk const& g, GMathVec2<double> const& s) {
  double r, phi;
  concentric_map(s.x, s.y, r, phi);
  return Vec3(std::cos(phi) * r * g.radius, std::sin(phi) * r * g.radius, 0.0 * g.radius);
}

template <typename G>
void check_ready(Generator<G> const& g) {
  if (!g.ready)
    fail("the generator needs init before its first ray");
}

// Every sample's ray is built (in discard mode: every sample that passes the
// clip plane) only when its target is not the ray origin.
template <typename S>
void check_off_shape(S const& g, GMathVec2<double> const* samples, py::ssize_t n) {
  for (py::ssize_t i = 0; i < n; ++i) {
    Vec3 const t = g.placement.transform_point(local_point(g, samples[i])) - g.origin;
    if (g.discard && !(dot(t, g.clip_normal) > 0.0))
      continue;
    if (t.length() == 0.0)
      fail("sample " + std::to_string(i) + ": the ray origin lies on the shape");
  }
}

template <typename G>
void check_samples(Generator<G> const& g, GMathVec2<double> const*, py::ssize_t) {
  check_ready(g);
}
void check_samples(CosineWeightedHemisphereRayGenerator const&, GMathVec2<double> const*,
                   py::ssize_t) {}
void check_samples(Line const& g, GMathVec2<double> const* s, py::ssize_t n) {
  check_ready(g);
  check_off_shape(g, s, n);
}
void check_samples(Plane const& g, GMathVec2<double> const* s, py::ssize_t n) {
  check_ready(g);
  check_off_shape(g, s, n);
}
void check_samples(Disk const& g, GMathVec2<double> const* s, py::ssize_t n) {
  check_ready(g);
  check_off_shape(g, s, n);
}

// Both entries work on a copy of the record taken under the interpreter's
// lock, so that another Python thread may run init on the generator while
// the rays of the copy are computed without the lock.
template <typename G>
Rays get_rays(G const& generator, py::handle samples_value, bool with_weights) {
  G const g = generator;
  Doubles const samples = to_samples(samples_value);
  py::ssize_t const count = samples.shape(0);
  GMathVec2<double> const* in = as_records<GMathVec2<double>>(samples);
  check_samples(g, in, count);
  std::vector<GMathRay> rays(count);
  py::array_t<double> weights = new_doubles({with_weights ? count : 0});
  unsigned int n;
  {
    py::gil_scoped_release release;
    n = g.get_rays(in, static_cast<unsigned int>(count), rays.data(),
                   with_weights ? weights.mutable_data() : nullptr);
  }
  Rays r;
  r.count = n;
  py::array_t<double> origins = new_doubles({n, 3});
  py::array_t<double> directions = new_doubles({n, 3});
  py::array_t<double> differentials = new_doubles({n, 4, 3});
  py::array_t<bool> has(n);
  py::array_t<double> times(n);
  py::array_t<std::uint32_t> types(n);
  py::array_t<double> aux = new_doubles({n, 2});
  bool any = false;
  for (unsigned int i = 0; i < n; ++i) {
    GMathRay const& ray = rays[i];
    as_records<Vec3>(origins)[i] = ray.m_origin;
    as_records<Vec3>(directions)[i] = ray.m_direction;
    std::memcpy(differentials.mutable_data() + 12 * i, &ray.m_differential,
                sizeof(GMathRayDifferential));
    has.mutable_data()[i] = ray.m_has_differentials;
    any = any || ray.m_has_differentials;
    times.mutable_data()[i] = ray.m_time;
    types.mutable_data()[i] = ray.m_type;
    aux.mutable_data()[2 * i] = ray.m_aux[0];
    aux.mutable_data()[2 * i + 1] = ray.m_aux[1];
  }
  if (with_weights)
    weights.resize({py::ssize_t(n)});
  r.origins = origins;
  r.directions = directions;
  r.weights = with_weights ? py::object(weights) : py::none();
  r.differentials = any ? py::object(differentials) : py::none();
  r.has_differentials = has;
  r.times = times;
  r.types = types;
  r.aux = aux;
  return r;
}

template <typename G>
Frusta get_frusta(G const& generator, py::handle boxes_value) {
  G const g = generator;
  Doubles const boxes = to_doubles(boxes_value, "boxes", {-1, 2, 2}, false);
  check_unit_square(boxes, "boxes");
  py::ssize_t const count = boxes.shape(0);
  GMathVec2<double> const* corners = as_records<GMathVec2<double>>(boxes);
  for (py::ssize_t p = 0; p < count; ++p)
    if (corners[2 * p].x > corners[2 * p + 1].x || corners[2 * p].y > corners[2 * p + 1].y)
      fail("boxes: box " + std::to_string(p) + " has corner0 above corner1");
  check_samples(g, corners, 0);
  std::vector<GMathFrustum> frusta(count);
  {
    py::gil_scoped_release release;
    for (py::ssize_t p = 0; p < count; ++p)
      g.get_frustum(corners[2 * p], corners[2 * p + 1], frusta[p]);
  }
  py::array_t<double> points = new_doubles({count, 4, 3});
  py::array_t<double> normals = new_doubles({count, 4, 3});
  py::array_t<double> distances = new_doubles({count, 4});
  py::array_t<std::uint32_t> plane_count(count);
  for (py::ssize_t p = 0; p < count; ++p) {
    std::memcpy(points.mutable_data() + 12 * p, frusta[p].m_plane_point, 12 * sizeof(double));
    std::memcpy(normals.mutable_data() + 12 * p, frusta[p].m_plane_normal, 12 * sizeof(double));
    std::memcpy(distances.mutable_data() + 4 * p, frusta[p].m_plane_distance, 4 * sizeof(double));
    plane_count.mutable_data()[p] = frusta[p].m_plane_count;
  }
  return Frusta{points, normals, distances, plane_count};
}

GMathRay::Type to_type(py::handle value) {
  unsigned int const type = to_u32(value, "type");
  if (type > GMathRay::k_type_probe)
    fail("type: " + std::to_string(type) + " is not a ray type (0 to 5)");
  return static_cast<GMathRay::Type>(type);
}

double finite(double value, char const* name) {
  if (!std::isfinite(value))
    fail(std::string(name) + " must be finite");
  return value;
}

// The incoming ray of the lobe generators; `differentials` is None or
// (4, 3): rx origin, rx direction, ry origin, ry direction.
GMathRay incoming_ray(py::handle origin, py::handle direction, py::handle differentials,
                      double time, py::handle type) {
  GMathRay ray(to_vec3(origin, "origin"), to_vec3(direction, "direction"), to_type(type), time);
  if (!differentials.is_none()) {
    Doubles const d = to_doubles(differentials, "differentials", {4, 3});
    GMathRayDifferential rd;
    std::memcpy(static_cast<void*>(&rd), d.data(), sizeof(rd));
    ray.set_differentials(rd);
  }
  return ray;
}

// The arguments the two anisotropic generators share.
struct LobeArguments {
  GMathRay ray;
  Vec3 position, geometric_normal;
  GMathMatrix3x3<double> shading;
  GeometryDifferential differential;
  GMathVec2<float> anisotropy;
};

LobeArguments lobe_arguments(py::handle origin, py::handle direction, py::handle differentials,
                             double time, py::handle type, py::handle position, py::handle shading,
                             py::handle geometric_normal, py::handle dpdx, py::handle dpdy,
                             float nu, float nv, py::handle anisotropy) {
  LobeArguments a;
  a.ray = incoming_ray(origin, direction, differentials, time, type);
  Vec3 const& d = a.ray.m_direction;
  if (!(std::fabs(dot(d, d) - 1.0) <= 1e-3))
    fail("direction must be a unit vector (|d.d - 1| <= 1e-3)");
  Doubles const s = to_doubles(shading, "shading", {3, 3});
  a.shading = GMathMatrix3x3<double>(s.at(0, 0), s.at(0, 1), s.at(0, 2), s.at(1, 0), s.at(1, 1),
                                     s.at(1, 2), s.at(2, 0), s.at(2, 1), s.at(2, 2));
  Doubles const t = to_doubles(anisotropy, "anisotropy", {2});
  a.anisotropy = GMathVec2<float>(static_cast<float>(t.at(0)), static_cast<float>(t.at(1)));
  a.differential = GeometryDifferential(to_vec3(dpdx, "dpdx"), to_vec3(dpdy, "dpdy"));
  a.position = to_vec3(position, "position");
  a.geometric_normal = to_vec3(geometric_normal, "geometric_normal");
  if (!(nu >= 0.0f && nv >= 0.0f))
    fail("the lobe exponents nu and nv must be at least 0");
  return a;
}

// Densities (N,) per unit solid angle with which get_ray returns the unit
// directions, before clipping.
template <typename G>
py::array_t<double> pdf(G const& generator, py::handle directions) {
  G const g = generator;
  check_samples(g, nullptr, 0);
  return map_records<Vec3, double>(to_directions(directions), 1,
                                   [&](Vec3 const& d, double& p) { p = g.pdf(d); });
}

template <typename G, typename C>
void def_common(C& c) {
  c.def("pdf", &pdf<G>, py::arg("directions"),
        "Density per unit solid angle of each (N, 3) unit direction as get_rays returns "
        "it, before clipping; (N,).");
  c.def("get_rays", &get_rays<G>, py::arg("samples"), py::kw_only(), py::arg("weights") = true,
        "Rays of the (N, 2) samples in [0,1]^2, packed in sample order without rejected "
        "samples.");
  c.def("get_frusta", &get_frusta<G>, py::arg("boxes"),
        "Frusta of the (P, 2, 2) sample boxes [corner0, corner1].");
}

template <typename G>
void set_clip_normal(G& g, Vec3 const& n, bool discard) {
  g.clip_normal = n;
  g.discard = discard;
  if (discard)
    g.discard_clipped_samples(n);
  else
    g.disable_clipping();
}

template <typename G>
py::class_<G> bind_shape(py::module_& m, char const* name, char const* doc) {
  py::class_<G> c(m, name, doc);
  c.def(py::init([](py::handle type, double time) { return new G(to_type(type), time); }),
        py::kw_only(), py::arg("type") = 5, py::arg("time") = 0.0)
      .def(
          "discard_clipped_samples",
          [](G& g, py::handle normal) { set_clip_normal(g, to_vec3(normal, "normal"), true); },
          py::arg("normal"), "Keep a sample only when (target - ray origin) . normal > 0.")
      .def(
          "disable_clipping", [](G& g) { set_clip_normal(g, g.clip_normal, false); },
          "Every sample gives a ray.")
      .def(
          "set_ray_time", [](G& g, double t) { g.set_ray_time(t); }, py::arg("time"))
      .def(
          "set_ray_type", [](G& g, py::handle t) { g.set_ray_type(to_type(t)); }, py::arg("type"));
  def_common<G>(c);
  return c;
}

template <typename G>
void place(G& g, py::handle ray_origin, py::handle frame) {
  g.origin = to_vec3(ray_origin, "ray_origin");
  g.placement = to_matrix4(frame, "frame");
  g.ready = true;
}

}  // namespace

void bind_rays(py::module_& m) {
  py::class_<Rays>(m, "Rays", "Rays from get_rays: arrays over the n produced rays.")
      .def_readonly("origins", &Rays::origins, "(n, 3)")
      .def_readonly("directions", &Rays::directions, "(n, 3)")
      .def_readonly("weights", &Rays::weights, "(n,), or None when not asked for")
      .def_readonly("differentials", &Rays::differentials,
                    "(n, 4, 3): rx origin, rx direction, ry origin, ry direction; None when no "
                    "ray has differentials")
      .def_readonly("has_differentials", &Rays::has_differentials, "(n,) bool")
      .def_readonly("times", &Rays::times, "(n,)")
      .def_readonly("types", &Rays::types, "(n,) uint32")
      .def_readonly("aux", &Rays::aux, "(n, 2): footprint radius and growth per unit distance")
      .def("__len__", [](Rays const& r) { return r.count; });
  py::class_<Frusta>(m, "Frusta", "Frusta from get_frusta, one per box.")
      .def_readonly("points", &Frusta::points, "(P, 4, 3) a point of each plane")
      .def_readonly("normals", &Frusta::normals, "(P, 4, 3) plane normals")
      .def_readonly("distances", &Frusta::distances, "(P, 4) plane offsets")
      .def_readonly("plane_count", &Frusta::plane_count, "(P,) 4, or 0 for no frustum");

  using Cosine = CosineWeightedHemisphereRayGenerator;
  py::class_<Cosine> cosine(m, "CosineWeightedHemisphereRayGenerator",
                            "Cosine-weighted rays in a cone of full opening `angle` degrees "
                            "about an incoming ray's direction.");
  cosine.def(py::init<>())
      .def(
          "init",
          [](Cosine& g, py::handle direction, py::handle origin, double angle,
             double spread_reduction_x, double spread_reduction_y, py::handle differentials,
             double time, py::handle type) -> Cosine& {
            GMathRay const ray = incoming_ray(origin, direction, differentials, time, type);
            Vec3 const& d = ray.m_direction;
            if (!(std::fabs(dot(d, d) - 1.0) <= 1e-6))
              fail("direction must be a unit vector (|d.d - 1| <= 1e-6)");
            g.init(ray, finite(angle, "angle"), finite(spread_reduction_x, "spread_reduction_x"),
                   finite(spread_reduction_y, "spread_reduction_y"));
            return g;
          },
          py::return_value_policy::reference, py::kw_only(), py::arg("direction"),
          py::arg("origin") = py::make_tuple(0.0, 0.0, 0.0), py::arg("angle") = 180.0,
          py::arg("spread_reduction_x") = 0.0, py::arg("spread_reduction_y") = 0.0,
          py::arg("differentials") = py::none(), py::arg("time") = 0.0, py::arg("type") = 2,
          "Sets up the cone about the incoming ray. Returns the generator.")
      .def("disable_clipping", &Cosine::disable_clipping)
      .def(
          "discard_clipped_samples",
          [](Cosine& g, py::handle n) { g.discard_clipped_samples(to_vec3(n, "normal")); },
          py::arg("normal"))
      .def(
          "project_clipped_samples",
          [](Cosine& g, py::handle n) { g.project_clipped_samples(to_vec3(n, "normal")); },
          py::arg("normal"))
      .def_property_readonly("angle_cos", &Cosine::get_angle_cos)
      .def_property_readonly("angle_sin", &Cosine::get_angle_sin);
  def_common<Cosine>(cosine);

  using Reflection = Generator<AnisotropicReflectionRayGenerator>;
  using Refraction = Generator<AnisotropicRefractionRayGenerator>;
  py::class_<Reflection> reflection(m, "AnisotropicReflectionRayGenerator",
                                    "Glossy reflection rays from an anisotropic Phong lobe of "
                                    "microfacet normals about the shading normal (third column "
                                    "of `shading`).");
  reflection.def(py::init<>())
      .def(
          "init",
          [](Reflection& g, py::handle direction, py::handle position, py::handle shading,
             py::handle geometric_normal, float nu, float nv, py::handle origin,
             py::handle differentials, double time, py::handle type, py::handle dpdx,
             py::handle dpdy, py::handle anisotropy, float srx, float sry) -> Reflection& {
            LobeArguments const a =
                lobe_arguments(origin, direction, differentials, time, type, position, shading,
                               geometric_normal, dpdx, dpdy, nu, nv, anisotropy);
            g.init(a.ray, a.position, a.shading, a.geometric_normal, a.differential, nu, nv,
                   a.anisotropy, srx, sry);
            g.ready = true;
            return g;
          },
          py::return_value_policy::reference, py::kw_only(), py::arg("direction"),
          py::arg("position"), py::arg("shading"), py::arg("geometric_normal"), py::arg("nu"),
          py::arg("nv"), py::arg("origin") = py::make_tuple(0.0, 0.0, 0.0),
          py::arg("differentials") = py::none(), py::arg("time") = 0.0, py::arg("type") = 0,
          py::arg("dpdx") = py::make_tuple(0.0, 0.0, 0.0),
          py::arg("dpdy") = py::make_tuple(0.0, 0.0, 0.0),
          py::arg("anisotropy") = py::make_tuple(1.0, 0.0), py::arg("spread_reduction_x") = 0.0f,
          py::arg("spread_reduction_y") = 0.0f, "Returns the generator.");
  def_common<Reflection>(reflection);
  py::class_<Refraction> refraction(m, "AnisotropicRefractionRayGenerator",
                                    "Glossy transmission rays: the reflection generator's lobe, "
                                    "the incoming direction refracted with the index ratio eta.");
  refraction.def(py::init<>())
      .def(
          "init",
          [](Refraction& g, py::handle direction, py::handle position, py::handle shading,
             py::handle geometric_normal, float nu, float nv, float eta, py::handle origin,
             py::handle differentials, double time, py::handle type, py::handle dpdx,
             py::handle dpdy, py::handle anisotropy, float srx, float sry) -> Refraction& {
            LobeArguments const a =
                lobe_arguments(origin, direction, differentials, time, type, position, shading,
                               geometric_normal, dpdx, dpdy, nu, nv, anisotropy);
            g.init(a.ray, a.position, a.shading, a.geometric_normal, a.differential, nu, nv,
                   a.anisotropy, eta, srx, sry);
            g.ready = true;
            return g;
          },
          py::return_value_policy::reference, py::kw_only(), py::arg("direction"),
          py::arg("position"), py::arg("shading"), py::arg("geometric_normal"), py::arg("nu"),
          py::arg("nv"), py::arg("eta"), py::arg("origin") = py::make_tuple(0.0, 0.0, 0.0),
          py::arg("differentials") = py::none(), py::arg("time") = 0.0, py::arg("type") = 0,
          py::arg("dpdx") = py::make_tuple(0.0, 0.0, 0.0),
          py::arg("dpdy") = py::make_tuple(0.0, 0.0, 0.0),
          py::arg("anisotropy") = py::make_tuple(1.0, 0.0), py::arg("spread_reduction_x") = 0.0f,
          py::arg("spread_reduction_y") = 0.0f, "Returns the generator.");
  def_common<Refraction>(refraction);

  using Sphere = Generator<UniformSphereRayGenerator>;
  py::class_<Sphere> sphere(m, "UniformSphereRayGenerator",
                            "Rays from a centre in directions uniform over the sphere.");
  sphere
      .def(py::init([](py::handle type, double time) { return new Sphere(to_type(type), time); }),
           py::kw_only(), py::arg("type") = 5, py::arg("time") = 0.0)
      .def(
          "init",
          [](Sphere& g, py::handle centre, double srx, double sry) -> Sphere& {
            g.init(to_vec3(centre, "centre"), finite(srx, "spread_reduction_x"),
                   finite(sry, "spread_reduction_y"));
            g.ready = true;
            return g;
          },
          py::return_value_policy::reference, py::kw_only(),
          py::arg("centre") = py::make_tuple(0.0, 0.0, 0.0), py::arg("spread_reduction_x") = 0.0,
          py::arg("spread_reduction_y") = 0.0, "Returns the generator.");
  def_common<Sphere>(sphere);

  bind_shape<Line>(m, "LineRayGenerator",
                   "Rays from a point towards points of the segment (-0.5, 0, 0)-(0.5, 0, 0) "
                   "placed by `frame`; weight = distance.")
      .def(
          "init",
          [](Line& g, py::handle ray_origin, py::handle frame, double sr) -> Line& {
            place(g, ray_origin, frame);
            g.init(g.origin, g.placement, sr);
            return g;
          },
          py::return_value_policy::reference, py::kw_only(), py::arg("ray_origin"),
          py::arg("frame"), py::arg("spread_reduction") = 1.0, "Returns the generator.")
      .def(
          "pdf_length",
          [](Line const& g) {
            check_ready(g);
            return g.pdf_length();
          },
          "Density of the targets per unit world length of the segment.");
  bind_shape<Plane>(m, "PlaneRayGenerator",
                    "Rays from a point towards points of the rectangle [-0.5, 0.5]^2 (z = 0) "
                    "placed by `frame`; weight = distance.")
      .def(
          "init",
          [](Plane& g, py::handle ray_origin, py::handle frame, double srx, double sry) -> Plane& {
            place(g, ray_origin, frame);
            g.init(g.origin, g.placement, srx, sry);
            return g;
          },
          py::return_value_policy::reference, py::kw_only(), py::arg("ray_origin"),
          py::arg("frame"), py::arg("spread_reduction_x") = 1.0,
          py::arg("spread_reduction_y") = 1.0, "Returns the generator.")
      .def(
          "pdf_area",
          [](Plane const& g) {
            check_ready(g);
            return g.pdf_area();
          },
          "Density of the targets per unit world area of the rectangle.");
  bind_shape<Disk>(m, "DiskRayGenerator",
                   "Rays from a point towards points of the disk of `radius` (z = 0) placed by "
                   "`frame`; weight = distance.")
      .def(
          "init",
          [](Disk& g, py::handle ray_origin, py::handle frame, double radius, double srx,
             double sry) -> Disk& {
            place(g, ray_origin, frame);
            g.radius = finite(radius, "radius");
            g.init(g.origin, g.placement, g.radius, srx, sry);
            return g;
          },
          py::return_value_policy::reference, py::kw_only(), py::arg("ray_origin"),
          py::arg("frame"), py::arg("radius") = 1.0, py::arg("spread_reduction_x") = 1.0,
          py::arg("spread_reduction_y") = 1.0, "Returns the generator.")
      .def(
          "pdf_area",
          [](Disk const& g) {
            check_ready(g);
            return g.pdf_area();
          },
          "Density of the targets per unit world area of the disk.");
}

}  // namespace sampling_python
