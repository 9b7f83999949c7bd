// sampling.surface: the platform's polygon mesh built from NumPy arrays, and
// the white- and blue-noise scattering over it.

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "platform/core/core_array.h"
#include "platform/geometry/geometry_mesh.h"
#include "python/src/arrays.h"
#include "python/src/module.h"
#include "sampling/sampling.h"

namespace sampling_python {
namespace {

// Blue noise keeps one point tree per group up to the largest group index,
// so group indices stay small.
unsigned int const k_group_limit = 65536;

using Ints = py::array_t<std::int64_t, py::array::c_style | py::array::forcecast>;

// An (N, columns) integer array with values in [0, limit).
Ints to_indices(py::handle value, char const* name, py::ssize_t columns, std::int64_t limit) {
  py::array a = py::array::ensure(value);
  if (!a || (a.dtype().kind() != 'i' && a.dtype().kind() != 'u'))
    fail(std::string(name) + ": expected an array of integers");
  bool const flat = columns == 0;
  if (flat ? a.ndim() != 1 : a.ndim() != 2 || a.shape(1) != columns)
    fail(std::string(name) + ": expected shape " +
         (flat ? std::string("(N,)") : "(N, " + std::to_string(columns) + ")") + ", got " +
         shape_text(a));
  if (a.dtype().kind() == 'u' && a.itemsize() == 8) {
    auto const u = a.cast<py::array_t<std::uint64_t, py::array::c_style>>();
    for (py::ssize_t i = 0; i < u.size(); ++i)
      if (u.data()[i] >= static_cast<std::uint64_t>(limit))
        fail(std::string(name) + ": values must lie in [0, " + std::to_string(limit) + ")");
  }
  Ints const ints = Ints::ensure(a);
  for (py::ssize_t i = 0; i < ints.size(); ++i)
    if (ints.data()[i] < 0 || ints.data()[i] >= limit)
      fail(std::string(name) + ": values must lie in [0, " + std::to_string(limit) + ")");
  return ints;
}

void add_faces(GeometryMesh& mesh, py::handle faces, py::handle groups, py::ssize_t corners,
               char const* name, char const* groups_name) {
  if (faces.is_none()) {
    if (!groups.is_none())
      fail(std::string(groups_name) + " given without " + name);
    return;
  }
  Ints const f = to_indices(faces, name, corners, mesh.get_vertex_count());
  py::ssize_t const n = f.shape(0);
  Ints g;
  if (!groups.is_none()) {
    g = to_indices(groups, groups_name, 0, k_group_limit);
    if (g.shape(0) != n)
      fail(std::string(groups_name) + ": expected one group per face (" + std::to_string(n) + ")");
  }
  for (py::ssize_t i = 0; i < n; ++i) {
    std::int64_t const* v = f.data() + corners * i;
    unsigned int const group = groups.is_none() ? 0u : static_cast<unsigned int>(g.data()[i]);
    if (corners == 3)
      mesh.add_triangle(v[0], v[1], v[2], group);
    else
      mesh.add_quad(v[0], v[1], v[2], v[3], group);
  }
}

GeometryMesh* make_mesh(py::handle vertices, py::handle triangles, py::handle quads,
                        py::handle triangle_groups, py::handle quad_groups, py::handle velocities,
                        double sample_scalar) {
  Doubles const p = to_doubles(vertices, "vertices", {-1, 3});
  if (static_cast<std::uint64_t>(p.shape(0)) >= 0xFFFFFFFFu)
    fail("vertices: too many");
  if (!std::isfinite(sample_scalar))
    fail("sample_scalar must be finite");
  auto mesh = std::make_unique<GeometryMesh>();
  GMathVec3<double> const* v = as_records<GMathVec3<double>>(p);
  for (py::ssize_t i = 0; i < p.shape(0); ++i)
    mesh->add_vertex(v[i]);
  if (!velocities.is_none()) {
    Doubles const w = to_doubles(velocities, "velocities", {p.shape(0), 3});
    for (py::ssize_t i = 0; i < p.shape(0); ++i)
      mesh->set_vertex_velocity(static_cast<unsigned int>(i), as_records<GMathVec3<double>>(w)[i]);
  }
  add_faces(*mesh, triangles, triangle_groups, 3, "triangles", "triangle_groups");
  add_faces(*mesh, quads, quad_groups, 4, "quads", "quad_groups");
  mesh->set_sample_scalar(sample_scalar);
  return mesh.release();
}

// What the scattering entries return.
struct SurfacePoints {
  py::object primitives, uv, positions, normals, tangents, spacing;
};

enum class Noise { random, blue };

SurfacePoints scatter(Noise noise, GeometryMesh const& mesh, py::handle count_value,
                      py::handle density_value, py::handle matrix_value, py::handle group_value,
                      double time, bool evaluate) {
  if (count_value.is_none() == density_value.is_none())
    fail("give either count or density");
  if (!std::isfinite(time))
    fail("time must be finite");
  GMathMatrix4x4<double> const matrix =
      matrix_value.is_none() ? GMathMatrix4x4<double>() : to_matrix4(matrix_value, "matrix");
  unsigned int const group = group_value.is_none() ? 0xFFFFFFFFu : to_u32(group_value, "group");
  if (!group_value.is_none() && group >= k_group_limit)
    fail("group: must lie in [0, " + std::to_string(k_group_limit) + ")");
  CtxEval const context(time);
  unsigned int count = 0;
  double density = 0.0;
  if (!count_value.is_none()) {
    count = to_u32(count_value, "count");
  } else {
    density = py::cast<double>(density_value);
    if (!(density >= 0.0 && std::isfinite(density)))
      fail("density must be finite and at least 0");
    // The library truncates total area x density to a 32-bit count.
    double area = 0.0;
    for (unsigned int i = 0; i < mesh.get_primitive_count(); ++i)
      area += mesh.get_primitive_area(context, i, matrix);
    if (!(area * density < 2147483648.0))
      fail("density: total area x density must stay below 2^31 points");
  }
  CoreArray<GeometryPrimitiveSampleDescriptor> descriptors;
  CoreArray<GMathVec3<double>> positions, normals, tangents;
  double spacing = std::numeric_limits<double>::quiet_NaN();
  {
    py::gil_scoped_release release;
    bool const by_count = !count_value.is_none();
    if (noise == Noise::random && by_count && evaluate)
      Sampling::surface_random_noise_count(context, mesh, matrix, count, descriptors, positions,
                                           normals, tangents, spacing, group);
    else if (noise == Noise::random && by_count)
      Sampling::surface_random_noise_count(context, mesh, matrix, count, descriptors, spacing,
                                           group);
    else if (noise == Noise::random && evaluate)
      Sampling::surface_random_noise_density(context, mesh, matrix, density, descriptors, positions,
                                             normals, tangents, spacing, group);
    else if (noise == Noise::random)
      Sampling::surface_random_noise_density(context, mesh, matrix, density, descriptors, spacing,
                                             group);
    else if (by_count && evaluate)
      Sampling::surface_blue_noise_count(context, mesh, matrix, count, descriptors, positions,
                                         normals, tangents, spacing, group);
    else if (by_count)
      Sampling::surface_blue_noise_count(context, mesh, matrix, count, descriptors, spacing, group);
    else if (evaluate)
      Sampling::surface_blue_noise_density(context, mesh, matrix, density, descriptors, positions,
                                           normals, tangents, spacing, group);
    else
      Sampling::surface_blue_noise_density(context, mesh, matrix, density, descriptors, spacing,
                                           group);
  }
  py::ssize_t const n = static_cast<py::ssize_t>(descriptors.count());
  py::array_t<std::uint32_t> primitives(n);
  py::array_t<float> uv(std::vector<py::ssize_t>{n, 2});
  for (py::ssize_t i = 0; i < n; ++i) {
    primitives.mutable_data()[i] = descriptors[i].m_primitive;
    uv.mutable_data()[2 * i] = descriptors[i].m_u;
    uv.mutable_data()[2 * i + 1] = descriptors[i].m_v;
  }
  auto vectors = [&](CoreArray<GMathVec3<double>> const& a) -> py::object {
    if (!evaluate)
      return py::none();
    py::array_t<double> out = new_doubles({n, 3});
    for (py::ssize_t i = 0; i < n; ++i)
      as_records<GMathVec3<double>>(out)[i] = a[i];
    return std::move(out);
  };
  return SurfacePoints{
      primitives,         uv,
      vectors(positions), vectors(normals),
      vectors(tangents),  std::isnan(spacing) ? py::object(py::none()) : py::float_(spacing)};
}

void def_scatter(py::module_& m, char const* name, Noise noise, char const* doc) {
  m.def(
      name,
      [noise](GeometryMesh const& mesh, py::handle count, py::handle density, py::handle matrix,
              py::handle group, double time, bool evaluate) {
        return scatter(noise, mesh, count, density, matrix, group, time, evaluate);
      },
      doc, py::arg("mesh"), py::kw_only(), py::arg("count") = py::none(),
      py::arg("density") = py::none(), py::arg("matrix") = py::none(),
      py::arg("group") = py::none(), py::arg("time") = 0.0, py::arg("evaluate") = true);
}

}  // namespace

void bind_surface(py::module_& m) {
  py::class_<GeometryMesh>(m, "Mesh",
                           "A mesh of triangles and quads, each face in one group. Primitives "
                           "are numbered triangles first, then quads.")
      .def(py::init(&make_mesh), py::arg("vertices"), py::kw_only(),
           py::arg("triangles") = py::none(), py::arg("quads") = py::none(),
           py::arg("triangle_groups") = py::none(), py::arg("quad_groups") = py::none(),
           py::arg("velocities") = py::none(), py::arg("sample_scalar") = 0.0)
      .def_property_readonly("primitive_count", &GeometryMesh::get_primitive_count)
      .def_property_readonly("group_count", &GeometryMesh::get_group_count)
      .def_property_readonly("vertex_count", &GeometryMesh::get_vertex_count);
  py::class_<SurfacePoints>(m, "SurfacePoints", "Points scattered over a mesh.")
      .def_readonly("primitives", &SurfacePoints::primitives, "(n,) uint32 primitive indices")
      .def_readonly("uv", &SurfacePoints::uv, "(n, 2) float32 parametric coordinates")
      .def_readonly("positions", &SurfacePoints::positions, "(n, 3) world points, or None")
      .def_readonly("normals", &SurfacePoints::normals, "(n, 3) unit geometric normals, or None")
      .def_readonly("tangents", &SurfacePoints::tangents, "(n, 3) dP/du, or None")
      .def_readonly("spacing", &SurfacePoints::spacing,
                    "1 / sqrt(density), or None when nothing was placed")
      .def("__len__", [](SurfacePoints const& s) { return py::len(s.primitives); });
  def_scatter(m, "random_noise", Noise::random,
              "White noise: `count` points, or `density` per unit world area, spread by area.");
  def_scatter(m, "blue_noise", Noise::blue,
              "Blue noise by dart throwing: up to `count` points (or `density` per unit area) "
              "no two of one group closer than the spacing.");
}

}  // namespace sampling_python
