#include "python/src/arrays.h"

#include <cmath>
#include <cstdint>
#include <vector>

namespace sampling_python {

std::string shape_text(py::array const& a) {
  std::string text = "(";
  for (py::ssize_t i = 0; i < a.ndim(); ++i)
    text += (i ? ", " : "") + std::to_string(a.shape(i));
  return text + (a.ndim() == 1 ? ",)" : ")");
}

void fail(std::string const& message) {
  throw py::value_error(message);
}

Doubles to_doubles(py::handle value, char const* name, std::initializer_list<py::ssize_t> shape,
                   bool finite) {
  py::array a = py::array::ensure(value);
  if (!a)
    fail(std::string(name) + ": expected an array of numbers");
  char const kind = a.dtype().kind();
  if (kind != 'f' && kind != 'i' && kind != 'u')
    fail(std::string(name) + ": expected real numbers, got dtype " +
         std::string(py::str(a.dtype())));
  bool fits = a.ndim() == static_cast<py::ssize_t>(shape.size());
  std::string wanted = "(";
  py::ssize_t axis = 0;
  for (py::ssize_t n : shape) {
    wanted += (axis ? ", " : "") + (n < 0 ? std::string("N") : std::to_string(n));
    if (fits && n >= 0 && a.shape(axis) != n)
      fits = false;
    ++axis;
  }
  wanted += shape.size() == 1 ? ",)" : ")";
  if (!fits)
    fail(std::string(name) + ": expected shape " + wanted + ", got " + shape_text(a));
  Doubles doubles = Doubles::ensure(a);
  for (py::ssize_t i = 0; finite && i < doubles.size(); ++i)
    if (!std::isfinite(doubles.data()[i]))
      fail(std::string(name) + ": value " + std::to_string(i) + " (flat index) is not finite");
  return doubles;
}

Doubles to_samples(py::handle value, char const* name) {
  Doubles samples = to_doubles(value, name, {-1, 2}, false);
  if (static_cast<std::uint64_t>(samples.shape(0)) > 0xFFFFFFFFu)
    fail(std::string(name) + ": more than 2^32 - 1 samples");
  check_unit_square(samples, name);
  return samples;
}

void check_unit_square(Doubles const& samples, char const* name) {
  double const* p = samples.data();
  std::size_t const n = static_cast<std::size_t>(samples.size());
  for (std::size_t i = 0; i < n; ++i) {
    if (!(p[i] >= 0.0 && p[i] <= 1.0))
      fail(std::string(name) + ": sample " + std::to_string(i / 2) + " has " + (i % 2 ? "v" : "u") +
           " = " + std::string(py::repr(py::float_(p[i]))) + ", outside [0, 1]");
  }
}

// (N, 3) unit directions (|d.d - 1| <= 1e-6, as the library requires of
// them) or, for the disk, (N, 3) points of the unit disk (z not read).
Doubles to_directions(py::handle value, bool disk) {
  Doubles const directions = to_doubles(value, disk ? "points" : "directions", {-1, 3}, false);
  GMathVec3<double> const* d = as_records<GMathVec3<double>>(directions);
  for (py::ssize_t i = 0; i < directions.shape(0); ++i) {
    double const z = disk ? 0.0 : d[i].z;
    double const l = d[i].x * d[i].x + d[i].y * d[i].y + z * z;
    if (disk ? !(l <= 1.0 + 1e-6) : !(std::fabs(l - 1.0) <= 1e-6))
      fail((disk ? "points: point " : "directions: direction ") + std::to_string(i) +
           (disk ? " lies outside the unit disk" : " is not of unit length (|d.d - 1| > 1e-6)"));
  }
  return directions;
}

GMathVec3<double> to_vec3(py::handle value, char const* name) {
  Doubles a = to_doubles(value, name, {3});
  return GMathVec3<double>(a.at(0), a.at(1), a.at(2));
}

GMathMatrix4x4<double> to_matrix4(py::handle value, char const* name) {
  py::array a = py::array::ensure(value);
  bool const three_rows = a && a.ndim() == 2 && a.shape(0) == 3;
  Doubles m = to_doubles(value, name, {three_rows ? 3 : 4, 4});
  GMathMatrix4x4<double> matrix;
  for (py::ssize_t i = 0; i < m.size(); ++i)
    matrix.m[i] = m.data()[i];
  return matrix;
}

unsigned int to_u32(py::handle value, char const* name) {
  // Python and NumPy integers; not bools, not floats.
  if (py::isinstance<py::bool_>(value) || !PyIndex_Check(value.ptr()))
    fail(std::string(name) + ": expected an integer");
  py::int_ const i = py::reinterpret_steal<py::int_>(PyNumber_Index(value.ptr()));
  if (i < py::int_(0) || i > py::int_(0xFFFFFFFFu))
    fail(std::string(name) + ": " + std::string(py::repr(i)) + " is outside [0, 2^32 - 1]");
  return i.cast<unsigned int>();
}

unsigned int checked_product(unsigned int a, unsigned int b, char const* what) {
  std::uint64_t const p = static_cast<std::uint64_t>(a) * b;
  if (p > 0xFFFFFFFFu)
    fail(std::string(what) + " = " + std::to_string(p) + " does not fit 32 bits");
  return static_cast<unsigned int>(p);
}

void check_range(double value, double lo, double hi, char const* name) {
  if (!(value >= lo && value <= hi))
    fail(std::string(name) + " = " + std::string(py::repr(py::float_(value))) + " is outside [" +
         std::string(py::repr(py::float_(lo))) + ", " + std::string(py::repr(py::float_(hi))) +
         "]");
}

py::array_t<double> new_doubles(std::initializer_list<py::ssize_t> shape) {
  return py::array_t<double>(std::vector<py::ssize_t>(shape));
}

}  // namespace sampling_python
