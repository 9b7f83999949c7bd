#pragma once

#include <cstdint>

// One entry of the area table of the surface scattering: a primitive of the
// object and its world-space area. Internal to the library.
struct PrimitiveArea {
  // Index of the primitive within the object.
  std::uint32_t m_primitive;
  // Number of vertices of the primitive; 3 marks a triangle.
  std::uint32_t m_vertex_count;
  // Area in world space, as the object measures it under the world matrix.
  double m_area;
};

static_assert(sizeof(PrimitiveArea) == 16, "PrimitiveArea is two indices and a double");
