#pragma once

#include <string>
#include <vector>

#include "platform/math/gmath_vec3.h"

// A triangle mesh scene for the ambient-occlusion render, y up: one vertex
// array with a unit shading normal per vertex and one index array, three
// indices per triangle. Embree traces the positions; the renderer
// interpolates the normals, so shading and geometric normals differ on curved
// surfaces, as in any production mesh.
class Scene {
 public:
  // The built-in scene: spheres, a torus and a stack of boxes on a ground
  // plane, about 100K triangles, and a camera that frames it.
  static Scene built_in();

  void add_sphere(GMathVec3<double> const& centre, double radius, unsigned int rings,
                  unsigned int segments);
  // Torus about the y axis through `centre`.
  void add_torus(GMathVec3<double> const& centre, double major_radius, double minor_radius,
                 unsigned int rings, unsigned int segments);
  // Axis-aligned box, each face a `cells` x `cells` grid with its flat normal.
  void add_box(GMathVec3<double> const& low, GMathVec3<double> const& high, unsigned int cells);
  // Square ground plane at height y, facing up, centred on (x, z).
  void add_ground(double x, double y, double z, double half_size);

  // Replaces the normals by area-weighted averages of the face normals
  // around each vertex (for meshes read from files).
  void compute_vertex_normals();
  // Puts the camera in front of and above the bounding box of the triangles.
  void frame_camera();

  unsigned int vertex_count() const { return static_cast<unsigned int>(m_positions.size() / 3); }
  unsigned int triangle_count() const { return static_cast<unsigned int>(m_indices.size() / 3); }
  void bounds(GMathVec3<double>& low, GMathVec3<double>& high) const;

  std::vector<float> m_positions;  // x, y, z per vertex
  std::vector<float> m_normals;    // unit x, y, z per vertex
  std::vector<unsigned int> m_indices;
  GMathVec3<double> m_eye;
  GMathVec3<double> m_target;
  double m_vertical_fov_degrees = 40.0;

 private:
  // Adds a grid of (rows + 1) x (columns + 1) vertices with two triangles
  // per cell; point(s, t) and normal(s, t) give position and unit normal at
  // s, t in [0, 1].
  template <typename Point, typename Normal>
  void add_grid(unsigned int rows, unsigned int columns, Point const& point, Normal const& normal);
};

// Shared vector helpers of the demo.
inline double dot(GMathVec3<double> const& a, GMathVec3<double> const& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline GMathVec3<double> normalized(GMathVec3<double> const& v) {
  return v / v.length();
}
