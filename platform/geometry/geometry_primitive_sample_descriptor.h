#pragma once

#include <cstdint>

// One point on the surface of a geometry object, named by its primitive and
// its parametric coordinates on that primitive. The surface scattering writes
// these; GeometryFragment::compute_world_sample turns one into a world point.
struct GeometryPrimitiveSampleDescriptor {
  // Index of the primitive within its object.
  std::uint32_t m_primitive;
  // Parametric coordinates in [0, 1]; on a triangle m_u + m_v <= 1.
  float m_u;
  float m_v;
};

static_assert(sizeof(GeometryPrimitiveSampleDescriptor) == 12,
              "GeometryPrimitiveSampleDescriptor is one index and two floats");
