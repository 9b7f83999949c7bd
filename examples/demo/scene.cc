#include "examples/demo/scene.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double k_pi = 3.14159265358979323846;

void push(std::vector<float>& array, GMathVec3<double> const& v) {
  array.push_back(static_cast<float>(v.x));
  array.push_back(static_cast<float>(v.y));
  array.push_back(static_cast<float>(v.z));
}

GMathVec3<double> read(std::vector<float> const& array, unsigned int i) {
  return GMathVec3<double>(array[3 * i], array[3 * i + 1], array[3 * i + 2]);
}

}  // namespace

template <typename Point, typename Normal>
void Scene::add_grid(unsigned int rows, unsigned int columns, Point const& point,
                     Normal const& normal) {
  unsigned int const first = vertex_count();
  for (unsigned int r = 0; r <= rows; ++r) {
    double const t = static_cast<double>(r) / rows;
    for (unsigned int c = 0; c <= columns; ++c) {
      double const s = static_cast<double>(c) / columns;
      push(m_positions, point(s, t));
      push(m_normals, normal(s, t));
    }
  }
  for (unsigned int r = 0; r < rows; ++r) {
    for (unsigned int c = 0; c < columns; ++c) {
      unsigned int const a = first + r * (columns + 1) + c;
      unsigned int const b = a + columns + 1;
      m_indices.insert(m_indices.end(), {a, a + 1, b + 1, a, b + 1, b});
    }
  }
}

void Scene::add_sphere(GMathVec3<double> const& centre, double radius, unsigned int rings,
                       unsigned int segments) {
  auto normal = [](double s, double t) {
    double const phi = 2.0 * k_pi * s;
    double const theta = k_pi * t;
    return GMathVec3<double>(std::sin(theta) * std::cos(phi), std::cos(theta),
                             std::sin(theta) * std::sin(phi));
  };
  add_grid(
      rings, segments, [&](double s, double t) { return centre + normal(s, t) * radius; }, normal);
}

void Scene::add_torus(GMathVec3<double> const& centre, double major_radius, double minor_radius,
                      unsigned int rings, unsigned int segments) {
  auto normal = [](double s, double t) {
    double const phi = 2.0 * k_pi * s;
    double const theta = 2.0 * k_pi * t;
    return GMathVec3<double>(std::cos(theta) * std::cos(phi), std::sin(theta),
                             std::cos(theta) * std::sin(phi));
  };
  add_grid(
      rings, segments,
      [&](double s, double t) {
        double const phi = 2.0 * k_pi * s;
        GMathVec3<double> const ring(std::cos(phi) * major_radius, 0.0,
                                     std::sin(phi) * major_radius);
        return centre + ring + normal(s, t) * minor_radius;
      },
      normal);
}

void Scene::add_box(GMathVec3<double> const& low, GMathVec3<double> const& high,
                    unsigned int cells) {
  // Each face: the axis it faces along, its sign, and the two axes it spans.
  for (int axis = 0; axis < 3; ++axis) {
    for (int side = 0; side < 2; ++side) {
      int const a = (axis + 1) % 3;
      int const b = (axis + 2) % 3;
      GMathVec3<double> n;
      n[axis] = side ? 1.0 : -1.0;
      add_grid(
          cells, cells,
          [&](double s, double t) {
            GMathVec3<double> p;
            p[axis] = side ? high[axis] : low[axis];
            p[a] = low[a] + s * (high[a] - low[a]);
            p[b] = low[b] + t * (high[b] - low[b]);
            return p;
          },
          [&](double, double) { return n; });
    }
  }
}

void Scene::add_ground(double x, double y, double z, double half_size) {
  add_grid(
      8, 8,
      [&](double s, double t) {
        return GMathVec3<double>(x + (2.0 * s - 1.0) * half_size, y,
                                 z + (2.0 * t - 1.0) * half_size);
      },
      [](double, double) { return GMathVec3<double>(0.0, 1.0, 0.0); });
}

Scene Scene::built_in() {
  Scene scene;
  scene.add_ground(0.0, 0.0, 0.0, 6.0);
  // A large sphere resting on the ground, a smaller one touching it, a torus
  // lying flat (a ring of creases with the ground), and a stack of boxes with
  // a sphere in its corner: contact points, creases and overhangs.
  scene.add_sphere(GMathVec3<double>(-1.3, 1.0, -0.2), 1.0, 96, 160);
  scene.add_sphere(GMathVec3<double>(-0.05, 0.45, 0.95), 0.45, 64, 128);
  scene.add_torus(GMathVec3<double>(1.55, 0.28, 0.7), 0.75, 0.28, 96, 192);
  scene.add_box(GMathVec3<double>(0.5, 0.0, -1.9), GMathVec3<double>(2.3, 0.9, -0.6), 24);
  scene.add_box(GMathVec3<double>(0.9, 0.9, -1.7), GMathVec3<double>(1.9, 1.6, -0.9), 24);
  scene.add_sphere(GMathVec3<double>(0.2, 0.3, -0.3), 0.3, 32, 64);
  scene.m_eye = GMathVec3<double>(0.4, 3.0, 6.2);
  scene.m_target = GMathVec3<double>(0.2, 0.45, -0.2);
  return scene;
}

void Scene::compute_vertex_normals() {
  m_normals.assign(m_positions.size(), 0.0f);
  std::vector<GMathVec3<double>> sums(vertex_count());
  for (unsigned int t = 0; t < triangle_count(); ++t) {
    unsigned int const* v = &m_indices[3 * t];
    GMathVec3<double> const p0 = read(m_positions, v[0]);
    // The cross product's length is twice the area: an area-weighted sum.
    GMathVec3<double> const n = cross(read(m_positions, v[1]) - p0, read(m_positions, v[2]) - p0);
    for (int k = 0; k < 3; ++k)
      sums[v[k]] = sums[v[k]] + n;
  }
  for (unsigned int i = 0; i < vertex_count(); ++i) {
    double const length = sums[i].length();
    GMathVec3<double> const n = length > 0.0 ? sums[i] / length : GMathVec3<double>(0, 1, 0);
    m_normals[3 * i] = static_cast<float>(n.x);
    m_normals[3 * i + 1] = static_cast<float>(n.y);
    m_normals[3 * i + 2] = static_cast<float>(n.z);
  }
}

void Scene::bounds(GMathVec3<double>& low, GMathVec3<double>& high) const {
  double const inf = std::numeric_limits<double>::infinity();
  low = GMathVec3<double>(inf, inf, inf);
  high = -low;
  for (unsigned int index : m_indices) {
    GMathVec3<double> const p = read(m_positions, index);
    for (int k = 0; k < 3; ++k) {
      low[k] = std::min(low[k], p[k]);
      high[k] = std::max(high[k], p[k]);
    }
  }
}

void Scene::frame_camera() {
  GMathVec3<double> low, high;
  bounds(low, high);
  GMathVec3<double> const centre = (low + high) * 0.5;
  double const radius = std::max((high - low).length() * 0.5, 1e-6);
  m_target = centre;
  // Far enough that the bounding sphere fits the vertical field of view.
  double const distance = radius / std::sin(0.5 * m_vertical_fov_degrees * k_pi / 180.0);
  m_eye = centre + normalized(GMathVec3<double>(0.15, 0.45, 1.0)) * distance;
}
