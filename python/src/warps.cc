// sampling.warps: the warps of Sampling over arrays of samples, and the two
// point sets. Each call checks its whole input, then runs one C++ loop with
// the interpreter released.

#include <cmath>
#include <cstdint>
#include <string>
#include <type_traits>

#include "platform/core/core_array.h"
#include "python/src/arrays.h"
#include "python/src/module.h"
#include "sampling/sampling.h"
#include "sampling/warps.h"

namespace sampling_python {
namespace {

using Vec3 = GMathVec3<double>;
using Vec2 = GMathVec2<double>;

// Every direction warp in two shapes (direction only, and direction with its
// tangent and bitangent), its density and its inverse. Those without a
// radius scale ignore it.
#define SAMPLING_PYTHON_SCALED_WARP(Name, function)                                              \
  struct Name {                                                                                  \
    static void plain(double const& u, double const& v, Vec3& d, double const& s) {              \
      Sampling::function(u, v, d, s);                                                            \
    }                                                                                            \
    static void framed(double const& u, double const& v, Vec3& d, Vec3& t, Vec3& b,              \
                       double const& s) {                                                        \
      Sampling::function(u, v, d, t, b, s);                                                      \
    }                                                                                            \
    static double pdf(Vec3 const& d, double const& s) { return Sampling::function##_pdf(d, s); } \
    static void inverse(Vec3 const& d, double const& s, double& u, double& v) {                  \
      Sampling::function##_inverse(d, s, u, v);                                                  \
    }                                                                                            \
  };
#define SAMPLING_PYTHON_UNSCALED_WARP(Name, function)                                       \
  struct Name {                                                                             \
    static void plain(double const& u, double const& v, Vec3& d, double const&) {           \
      Sampling::function(u, v, d);                                                          \
    }                                                                                       \
    static void framed(double const& u, double const& v, Vec3& d, Vec3& t, Vec3& b,         \
                       double const&) {                                                     \
      Sampling::function(u, v, d, t, b);                                                    \
    }                                                                                       \
    static double pdf(Vec3 const& d, double const&) { return Sampling::function##_pdf(d); } \
    static void inverse(Vec3 const& d, double const&, double& u, double& v) {               \
      Sampling::function##_inverse(d, u, v);                                                \
    }                                                                                       \
  };
// The disk's density takes no point and its inverse is bound on its own.
struct DiskConcentric {
  static void plain(double const& u, double const& v, Vec3& d, double const&) {
    Sampling::disk_concentric(u, v, d);
  }
  static void framed(double const& u, double const& v, Vec3& d, Vec3& t, Vec3& b, double const&) {
    Sampling::disk_concentric(u, v, d, t, b);
  }
};
SAMPLING_PYTHON_SCALED_WARP(HemisphereUniform, hemisphere_uniform)
SAMPLING_PYTHON_SCALED_WARP(HemisphereUniformConcentric, hemisphere_uniform_concentric)
SAMPLING_PYTHON_SCALED_WARP(HemisphereCosine, hemisphere_cosine)
SAMPLING_PYTHON_SCALED_WARP(HemisphereCosineConcentric, hemisphere_cosine_concentric)
SAMPLING_PYTHON_UNSCALED_WARP(SphereUniform, sphere_uniform)
SAMPLING_PYTHON_UNSCALED_WARP(SphereCosine, sphere_cosine)
#undef SAMPLING_PYTHON_SCALED_WARP
#undef SAMPLING_PYTHON_UNSCALED_WARP

// (N, 3) directions, or the tuple (directions, tangents, bitangents).
template <typename W>
py::object warp(py::handle uv, double const& radius_scale, bool frame) {
  check_range(radius_scale, 0.0, 1.0, "radius_scale");
  Doubles const samples = to_samples(uv, "uv");
  if (!frame)
    return map_records<Vec2, Vec3>(
        samples, 3, [&](Vec2 const& s, Vec3& d) { W::plain(s.x, s.y, d, radius_scale); });
  py::ssize_t const n = samples.shape(0);
  Vec2 const* in = as_records<Vec2>(samples);
  py::array_t<double> d = new_doubles({n, 3});
  py::array_t<double> t = new_doubles({n, 3});
  py::array_t<double> b = new_doubles({n, 3});
  Vec3* dp = as_records<Vec3>(d);
  Vec3* tp = as_records<Vec3>(t);
  Vec3* bp = as_records<Vec3>(b);
  {
    py::gil_scoped_release release;
    for (py::ssize_t i = 0; i < n; ++i)
      W::framed(in[i].x, in[i].y, dp[i], tp[i], bp[i], radius_scale);
  }
  return py::make_tuple(d, t, b);
}

// Densities (N,) of the warp at unit directions.
template <typename W>
py::array_t<double> pdf(py::handle directions, double const& radius_scale) {
  check_range(radius_scale, 0.0, 1.0, "radius_scale");
  return map_records<Vec3, double>(to_directions(directions, false), 1,
                                   [&](Vec3 const& d, double& p) { p = W::pdf(d, radius_scale); });
}

// Samples (N, 2) whose warp gives the unit directions.
template <typename W>
py::array_t<double> inverse(py::handle directions, double const& radius_scale) {
  check_range(radius_scale, 0.0, 1.0, "radius_scale");
  return map_records<Vec3, Vec2>(to_directions(directions, false), 2, [&](Vec3 const& d, Vec2& uv) {
    W::inverse(d, radius_scale, uv.x, uv.y);
  });
}

py::array_t<double> disk_concentric_inverse(py::handle points) {
  return map_records<Vec3, Vec2>(to_directions(points, true), 2, [](Vec3 const& p, Vec2& uv) {
    Sampling::disk_concentric_inverse(p, uv.x, uv.y);
  });
}

// (N, 2) polar (radius in [0, 1], angle in [-pi, 2pi), pi to double
// precision: atan2's range, a full turn from 0 and the map's own) back to
// samples.
py::array_t<double> to_unit_disk_inverse(py::handle polar) {
  double const turn = sampling::warps::detail::k_full_turn;
  Doubles const in = to_doubles(polar, "polar", {-1, 2}, false);
  Vec2 const* p = as_records<Vec2>(in);
  for (py::ssize_t i = 0; i < in.shape(0); ++i)
    if (!(p[i].x >= 0.0 && p[i].x <= 1.0 && p[i].y >= -0.5 * turn && p[i].y < turn))
      fail("polar: pair " + std::to_string(i) + " is outside radius [0, 1], angle [-pi, 2pi)");
  return map_records<Vec2, Vec2>(
      in, 2, [](Vec2 const& p, Vec2& uv) { Sampling::to_unit_disk_inverse(p.x, p.y, uv.x, uv.y); });
}

py::array_t<double> to_unit_disk(py::handle uv) {
  return map_records<Vec2, Vec2>(to_samples(uv, "uv"), 2, [](Vec2 const& s, Vec2& polar) {
    Sampling::to_unit_disk(s.x, s.y, polar.x, polar.y);
  });
}

py::array_t<std::uint32_t> shuffle_index(py::handle index, py::handle count_value) {
  unsigned int const count = to_u32(count_value, "count");
  py::array a = py::array::ensure(index);
  if (!a || (a.dtype().kind() != 'i' && a.dtype().kind() != 'u') || a.ndim() != 1)
    fail("index: expected a one-dimensional array of integers");
  py::array_t<std::int64_t, py::array::c_style | py::array::forcecast> const wide =
      py::array_t<std::int64_t, py::array::c_style | py::array::forcecast>::ensure(a);
  if (a.dtype().kind() == 'u' && a.itemsize() == 8) {
    // uint64 beyond int64 would wrap in the conversion above.
    auto const u = a.cast<py::array_t<std::uint64_t>>();
    for (py::ssize_t i = 0; i < u.size(); ++i)
      if (u.data()[i] > 0xFFFFFFFFu)
        fail("index: values must lie in [0, 2^32 - 1]");
  }
  py::ssize_t const n = wide.size();
  for (py::ssize_t i = 0; i < n; ++i)
    if (wide.data()[i] < 0 || wide.data()[i] > 0xFFFFFFFF)
      fail("index: values must lie in [0, 2^32 - 1]");
  py::array_t<std::uint32_t> out(n);
  std::uint32_t* o = out.mutable_data();
  std::int64_t const* in = wide.data();
  py::gil_scoped_release release;
  for (py::ssize_t i = 0; i < n; ++i)
    o[i] = Sampling::shuffle_index(static_cast<unsigned int>(in[i]), count);
  return out;
}

py::array_t<double> to_array(CoreArray<GMathVec2<double>> const& points) {
  py::ssize_t const n = static_cast<py::ssize_t>(points.count());
  py::array_t<double> a = new_doubles({n, 2});
  GMathVec2<double>* out = as_records<GMathVec2<double>>(a);
  for (py::ssize_t i = 0; i < n; ++i)
    out[i] = points[i];
  return a;
}

py::array_t<double> disk_uniform(py::handle n_value) {
  unsigned int const n = to_u32(n_value, "n");
  checked_product(n, n, "n * n");
  CoreArray<GMathVec2<double>> points;
  {
    py::gil_scoped_release release;
    Sampling::disk_uniform(points, n);
  }
  return to_array(points);
}

py::array_t<double> grid_uniform(py::handle n_value, py::handle minimum, py::handle maximum) {
  unsigned int const n = to_u32(n_value, "n");
  checked_product(n, n, "n * n");
  Doubles const lo = to_doubles(minimum, "minimum", {2});
  Doubles const hi = to_doubles(maximum, "maximum", {2});
  GMathVec2<double> const a(lo.at(0), lo.at(1));
  GMathVec2<double> const b(hi.at(0), hi.at(1));
  CoreArray<GMathVec2<double>> points;
  {
    py::gil_scoped_release release;
    Sampling::grid_uniform(points, n, a, b);
  }
  return to_array(points);
}

template <typename W>
void def_warp(py::module_& m, char const* name, char const* doc, bool scaled) {
  if (scaled) {
    m.def(name, &warp<W>, doc, py::arg("uv"), py::arg("radius_scale") = 1.0,
          py::arg("frame") = false);
  } else {
    m.def(
        name, [](py::handle uv, bool frame) { return warp<W>(uv, 1.0, frame); }, doc, py::arg("uv"),
        py::arg("frame") = false);
  }
  if constexpr (!std::is_same<W, DiskConcentric>::value) {
    std::string const pdf_name = std::string(name) + "_pdf";
    std::string const inverse_name = std::string(name) + "_inverse";
    char const* pdf_doc = "Density per unit solid angle at (N, 3) unit directions, (N,).";
    char const* inverse_doc = "(N, 2) samples whose warp gives the (N, 3) unit directions.";
    if (scaled) {
      m.def(pdf_name.c_str(), &pdf<W>, pdf_doc, py::arg("directions"),
            py::arg("radius_scale") = 1.0);
      m.def(inverse_name.c_str(), &inverse<W>, inverse_doc, py::arg("directions"),
            py::arg("radius_scale") = 1.0);
    } else {
      m.def(
          pdf_name.c_str(), [](py::handle d) { return pdf<W>(d, 1.0); }, pdf_doc,
          py::arg("directions"));
      m.def(
          inverse_name.c_str(), [](py::handle d) { return inverse<W>(d, 1.0); }, inverse_doc,
          py::arg("directions"));
    }
  }
}

}  // namespace

void bind_warps(py::module_& m) {
  m.def("to_unit_disk", &to_unit_disk, py::arg("uv"),
        "Concentric square-to-disk map in polar form: (N, 2) samples in [0,1]^2 to (N, 2) "
        "(radius in [0, 1], angle in (-pi/4, 7pi/4]); uniform over the disk's area.");
  def_warp<DiskConcentric>(m, "disk_concentric",
                           "(N, 2) samples to (N, 3) points of the unit disk (z = 0), uniform per "
                           "unit area. frame=True returns (points, tangents, bitangents).",
                           false);
  def_warp<HemisphereUniform>(m, "hemisphere_uniform",
                              "(N, 2) samples to (N, 3) hemisphere directions about +z with polar "
                              "angle u pi/2 and azimuth 2 pi v (not uniform per solid angle).",
                              true);
  def_warp<HemisphereUniformConcentric>(
      m, "hemisphere_uniform_concentric",
      "As hemisphere_uniform with polar angle radius pi/2 and azimuth from the concentric map.",
      true);
  def_warp<HemisphereCosine>(
      m, "hemisphere_cosine",
      "(N, 2) samples to (N, 3) hemisphere directions lifted from the polar disk point "
      "(u radius_scale, 2 pi v).",
      true);
  def_warp<HemisphereCosineConcentric>(
      m, "hemisphere_cosine_concentric",
      "(N, 2) samples to (N, 3) cosine-weighted hemisphere directions, density cos(theta) / "
      "(pi radius_scale^2) per unit solid angle.",
      true);
  def_warp<SphereUniform>(m, "sphere_uniform",
                          "(N, 2) samples to (N, 3) unit directions uniform over the sphere, "
                          "density 1 / (4 pi); z = 1 - 2u, azimuth 2 pi v.",
                          false);
  def_warp<SphereCosine>(m, "sphere_cosine",
                         "(N, 2) samples to (N, 3) unit directions with polar angle u pi and "
                         "azimuth 2 pi v.",
                         false);
  m.def("to_unit_disk_inverse", &to_unit_disk_inverse, py::arg("polar"),
        "(N, 2) polar pairs (radius in [0, 1], angle in [-pi, 2pi)) back to (N, 2) samples.");
  m.def("disk_concentric_pdf", &Sampling::disk_concentric_pdf,
        "Density of disk_concentric per unit area of the disk: 1 / pi (the library's pi).");
  m.def("disk_concentric_inverse", &disk_concentric_inverse, py::arg("points"),
        "(N, 2) samples whose disk_concentric gives the (N, 3) points of the unit disk "
        "(z not read).");
  m.def("shuffle_index", &shuffle_index, py::arg("index"), py::arg("count"),
        "Positions of the (N,) indices in the recursive even/odd order of `count` items "
        "(uint32).");
  m.def("disk_uniform", &disk_uniform, py::arg("n"),
        "n * n points on concentric rings of the unit disk, (n*n, 2), outside ring first.");
  m.def("grid_uniform", &grid_uniform, py::arg("n"), py::arg("minimum") = py::make_tuple(0.0, 0.0),
        py::arg("maximum") = py::make_tuple(1.0, 1.0),
        "An n x n grid from `minimum` to `maximum`, (n*n, 2), row by row with x fastest.");
}

}  // namespace sampling_python
