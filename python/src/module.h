#pragma once

#include <pybind11/pybind11.h>

// The parts of the extension module, one per family of the library.
namespace sampling_python {

void bind_samplers(pybind11::module_& m);
void bind_warps(pybind11::module_& m);
void bind_rays(pybind11::module_& m);
void bind_surface(pybind11::module_& m);

}  // namespace sampling_python
