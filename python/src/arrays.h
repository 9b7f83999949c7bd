#pragma once

// NumPy in and out for the bindings: input arrays converted to C-ordered
// float64 after their shape and dtype are checked, range checks that raise
// ValueError, and output arrays viewed as the library's vector records.
//
// Every caller contract the library asserts in checked builds is checked
// here first, in every build: a Python caller gets a ValueError naming the
// argument, never an abort and never a result computed from an input the
// library does not define.

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <cstddef>
#include <string>
#include <type_traits>

#include "platform/math/gmath_matrix4x4.h"
#include "platform/math/gmath_vec2.h"
#include "platform/math/gmath_vec3.h"

namespace sampling_python {

namespace py = pybind11;

using Doubles = py::array_t<double, py::array::c_style | py::array::forcecast>;

// The library's vectors are packed doubles, so an (N, 2) or (N, 3) float64
// array is an array of them.
static_assert(sizeof(GMathVec2<double>) == 2 * sizeof(double) &&
                  std::is_standard_layout<GMathVec2<double>>::value,
              "GMathVec2<double> viewed as two doubles");
static_assert(sizeof(GMathVec3<double>) == 3 * sizeof(double) &&
                  std::is_standard_layout<GMathVec3<double>>::value,
              "GMathVec3<double> viewed as three doubles");

// "(3, 2)" for error messages.
std::string shape_text(py::array const& a);

// `value` as a C-ordered float64 array of the given shape; -1 in `shape`
// accepts any length on that axis. Integer and floating dtypes convert
// (exactly, for float32 and integers below 2^53); anything else, another
// shape or, unless `finite` is false (for callers that check a range
// instead), a NaN or an infinity raises ValueError naming `name`.
Doubles to_doubles(py::handle value, char const* name, std::initializer_list<py::ssize_t> shape,
                   bool finite = true);

// An (N, 2) array of samples in the unit square [0,1]^2 (NaN is outside).
Doubles to_samples(py::handle value, char const* name = "samples");
// Raises ValueError unless every value of the pairs lies in [0, 1].
void check_unit_square(Doubles const& samples, char const* name);

// (N, 3) unit directions (|d.d - 1| <= 1e-6, as the library requires of
// them) or, with `disk`, (N, 3) points of the unit disk (z not read).
Doubles to_directions(py::handle value, bool disk = false);

// A length-3 vector.
GMathVec3<double> to_vec3(py::handle value, char const* name);
// A 4x4 or 3x4 row-major matrix (a 3x4 one gets the row 0 0 0 1).
GMathMatrix4x4<double> to_matrix4(py::handle value, char const* name);

// A Python integer in [0, 2^32 - 1] (ValueError otherwise).
unsigned int to_u32(py::handle value, char const* name);
// a * b when it fits 32 bits (ValueError otherwise): the pattern sizes that
// the library would wrap.
unsigned int checked_product(unsigned int a, unsigned int b, char const* what);
// Raises ValueError unless lo <= value <= hi (NaN fails).
void check_range(double value, double lo, double hi, char const* name);
// Raises ValueError with `message`.
[[noreturn]] void fail(std::string const& message);

// A new C-ordered float64 array of the given shape.
py::array_t<double> new_doubles(std::initializer_list<py::ssize_t> shape);

template <typename T>
T* as_records(py::array_t<double>& a) {
  return reinterpret_cast<T*>(a.mutable_data());
}
template <typename T>
T const* as_records(Doubles const& a) {
  return reinterpret_cast<T const*>(a.data());
}

// f(in[i], out[i]) over the records of `in` into a new (N, columns) array
// ((N,) for one column), with the interpreter released.
template <typename In, typename Out, typename F>
py::array_t<double> map_records(Doubles const& in, py::ssize_t columns, F const& f) {
  py::ssize_t const n = in.shape(0);
  py::array_t<double> out = columns == 1 ? new_doubles({n}) : new_doubles({n, columns});
  In const* a = as_records<In>(in);
  Out* b = as_records<Out>(out);
  py::gil_scoped_release release;
  for (py::ssize_t i = 0; i < n; ++i)
    f(a[i], b[i]);
  return out;
}

}  // namespace sampling_python
