#include "examples/demo/view3d.h"

#include <cmath>
#include <vector>

#include "examples/demo/scene.h"

namespace {
constexpr double k_degree = 3.14159265358979323846 / 180.0;

// The product a b of two placement matrices, all four rows.
GMathMatrix4x4<double> operator*(GMathMatrix4x4<double> const& a, GMathMatrix4x4<double> const& b) {
  GMathMatrix4x4<double> r;
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) {
      double s = 0.0;
      for (int k = 0; k < 4; ++k)
        s += a(i, k) * b(k, j);
      r(i, j) = s;
    }
  }
  return r;
}
}  // namespace

View3d::View3d(GMathVec3<double> const& centre, double half_extent, double azimuth_degrees,
               double elevation_degrees, unsigned int panel)
    : m_centre(centre), m_scale(0.5 / half_extent), m_panel(panel) {
  double const a = azimuth_degrees * k_degree, e = elevation_degrees * k_degree;
  // Looking along (cos e cos a, cos e sin a, -sin e): right is horizontal,
  // up completes the frame.
  m_right = GMathVec3<double>(std::sin(a), -std::cos(a), 0.0);
  GMathVec3<double> const forward(std::cos(e) * std::cos(a), std::cos(e) * std::sin(a),
                                  -std::sin(e));
  m_up = cross(m_right, forward);
}

void View3d::project(GMathVec3<double> const& p, double& u, double& v) const {
  GMathVec3<double> const d = p - m_centre;
  u = m_panel + 0.5 + ::dot(d, m_right) * m_scale;
  v = 0.5 + ::dot(d, m_up) * m_scale;
}

void View3d::dot(SvgCanvas& canvas, GMathVec3<double> const& p, double r,
                 std::string const& color) const {
  double u, v;
  project(p, u, v);
  canvas.dot(u, v, r, color);
}

void View3d::line(SvgCanvas& canvas, GMathVec3<double> const& a, GMathVec3<double> const& b,
                  std::string const& color, double width, std::string const& dash) const {
  double u0, v0, u1, v1;
  project(a, u0, v0);
  project(b, u1, v1);
  canvas.line(u0, v0, u1, v1, color, width, dash);
}

void View3d::arrow(SvgCanvas& canvas, GMathVec3<double> const& a, GMathVec3<double> const& b,
                   std::string const& color, double width) const {
  double u0, v0, u1, v1;
  project(a, u0, v0);
  project(b, u1, v1);
  canvas.line(u0, v0, u1, v1, color, width);
  double const du = u1 - u0, dv = v1 - v0, length = std::sqrt(du * du + dv * dv);
  if (!(length > 0.0))
    return;
  double const head = 0.025, tu = du / length * head, tv = dv / length * head;
  canvas.line(u1, v1, u1 - tu - 0.5 * tv, v1 - tv + 0.5 * tu, color, width);
  canvas.line(u1, v1, u1 - tu + 0.5 * tv, v1 - tv - 0.5 * tu, color, width);
}

void View3d::polygon(SvgCanvas& canvas, GMathVec3<double> const* points, unsigned int count,
                     std::string const& stroke, std::string const& fill, double width) const {
  std::vector<double> uv(2 * count);
  for (unsigned int i = 0; i < count; ++i)
    project(points[i], uv[2 * i], uv[2 * i + 1]);
  canvas.polygon(uv, stroke, fill, width);
}

void View3d::rectangle(SvgCanvas& canvas, GMathMatrix4x4<double> const& frame,
                       std::string const& stroke, std::string const& fill, double width) const {
  GMathVec3<double> corners[4];
  for (int k = 0; k < 4; ++k) {
    corners[k] = frame.transform_point(
        GMathVec3<double>(k == 1 || k == 2 ? 0.5 : -0.5, k >= 2 ? 0.5 : -0.5, 0.0));
  }
  polygon(canvas, corners, 4, stroke, fill, width);
}

GMathMatrix4x4<double> View3d::frame(double sx, double sy, double sz, double tilt, double turn,
                                     GMathVec3<double> const& position) {
  double const ct = std::cos(tilt * k_degree), st = std::sin(tilt * k_degree);
  double const cz = std::cos(turn * k_degree), sz_ = std::sin(turn * k_degree);
  GMathMatrix4x4<double> about_x, about_z;
  about_x(1, 1) = ct;
  about_x(1, 2) = -st;
  about_x(2, 1) = st;
  about_x(2, 2) = ct;
  about_z(0, 0) = cz;
  about_z(0, 1) = -sz_;
  about_z(1, 0) = sz_;
  about_z(1, 1) = cz;
  GMathMatrix4x4<double> moved, scaled;
  moved(0, 3) = position.x;
  moved(1, 3) = position.y;
  moved(2, 3) = position.z;
  scaled(0, 0) = sx;
  scaled(1, 1) = sy;
  scaled(2, 2) = sz;
  return moved * about_z * about_x * scaled;
}
