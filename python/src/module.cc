// The extension module sampling._sampling. Importing it creates the shared
// permutation table of the hierarchical sampler (Sampling::init), so that
// every mode is usable at once; the table lives until the process ends.

#include "python/src/module.h"

#include "sampling/sampling.h"

PYBIND11_MODULE(_sampling, m) {
  m.doc() =
      "Sampling mathematics for renderers: sample patterns, warps, ray generators and "
      "surface scattering over NumPy arrays.";
  Sampling::init();
  sampling_python::bind_samplers(m);
  pybind11::module_ warps = m.def_submodule("warps", "Warps of unit-square samples.");
  sampling_python::bind_warps(warps);
  pybind11::module_ rays = m.def_submodule("rays", "Ray generators.");
  sampling_python::bind_rays(rays);
  pybind11::module_ surface = m.def_submodule("surface", "Points scattered over meshes.");
  sampling_python::bind_surface(surface);
}
