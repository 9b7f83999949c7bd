#include "platform/geometry/geometry_mesh.h"

#include <cmath>

#include "platform/geometry/geometry_fragment.h"

namespace {

// v / |v|, or the zero vector when |v| is 0 (a degenerate face).
GMathVec3<double> unit_or_zero(GMathVec3<double> const& v) {
  double const length = v.length();
  if (length > 0.0)
    return v / length;
  return GMathVec3<double>();
}

// Half the length of (b - a) x (c - a).
double triangle_area(GMathVec3<double> const& a, GMathVec3<double> const& b,
                     GMathVec3<double> const& c) {
  return 0.5 * cross(b - a, c - a).length();
}

}  // namespace

GeometryMesh::GeometryMesh() : m_group_count(1), m_sample_scalar(0.0) {}

GeometryMesh::~GeometryMesh() = default;

unsigned int GeometryMesh::add_vertex(GMathVec3<double> const& position) {
  m_positions.push_back(position);
  m_velocities.push_back(GMathVec3<double>());
  return static_cast<unsigned int>(m_positions.size() - 1);
}

void GeometryMesh::set_vertex_velocity(unsigned int const& vertex,
                                       GMathVec3<double> const& velocity) {
  m_velocities[vertex] = velocity;
}

unsigned int GeometryMesh::add_triangle(unsigned int const& a, unsigned int const& b,
                                        unsigned int const& c, unsigned int const& group) {
  return add_face(Face{{a, b, c, c}, 3, group});
}

unsigned int GeometryMesh::add_quad(unsigned int const& a, unsigned int const& b,
                                    unsigned int const& c, unsigned int const& d,
                                    unsigned int const& group) {
  return add_face(Face{{a, b, c, d}, 4, group});
}

unsigned int GeometryMesh::add_face(Face const& face) {
  m_faces.push_back(face);
  if (face.m_group >= m_group_count)
    m_group_count = face.m_group + 1;
  return static_cast<unsigned int>(m_faces.size() - 1);
}

void GeometryMesh::set_sample_scalar(double const& scalar) {
  m_sample_scalar = scalar;
}

GMathVec3<double> GeometryMesh::get_vertex(CtxEval const& context,
                                           unsigned int const& vertex) const {
  return m_positions[vertex] + m_velocities[vertex] * context.m_time;
}

unsigned int const& GeometryMesh::get_group_count() const {
  return m_group_count;
}

double GeometryMesh::get_sample_scalar() const {
  return m_sample_scalar;
}

unsigned int GeometryMesh::get_primitive_count() const {
  return static_cast<unsigned int>(m_faces.size());
}

unsigned int GeometryMesh::get_primitive_vertex_count(unsigned int const& primitive) const {
  return m_faces[primitive].m_vertex_count;
}

void GeometryMesh::get_primitive_bbox(CtxEval const& context, unsigned int const& primitive,
                                      GMathBbox3<double>& box) const {
  Face const& face = m_faces[primitive];
  box = GMathBbox3<double>();
  for (unsigned int i = 0; i < face.m_vertex_count; ++i)
    box.add(get_vertex(context, face.m_vertex[i]));
  // The offset along the unit normal moves a point by at most |s| per axis.
  double const pad = std::fabs(m_sample_scalar);
  box.m_min = box.m_min - GMathVec3<double>(pad, pad, pad);
  box.m_max = box.m_max + GMathVec3<double>(pad, pad, pad);
}

double GeometryMesh::get_primitive_area(CtxEval const& context, unsigned int const& primitive,
                                        GMathMatrix4x4<double> const& matrix) const {
  Face const& face = m_faces[primitive];
  GMathVec3<double> w[4];
  for (unsigned int i = 0; i < face.m_vertex_count; ++i) {
    w[i] = matrix.transform_point(get_vertex(context, face.m_vertex[i]));
  }
  double area = triangle_area(w[0], w[1], w[2]);
  if (face.m_vertex_count == 4)
    area = area + triangle_area(w[0], w[2], w[3]);
  return area;
}

unsigned int GeometryMesh::get_primitive_group(unsigned int const& primitive) const {
  return m_faces[primitive].m_group;
}

void GeometryMesh::evaluate_sample(CtxEval const& context, GeometryFragment& fragment) const {
  Face const& face = m_faces[fragment.m_primitive];
  double const u = fragment.m_uvw.x;
  double const v = fragment.m_uvw.y;
  GMathVec3<double> const p0 = get_vertex(context, face.m_vertex[0]);
  GMathVec3<double> const p1 = get_vertex(context, face.m_vertex[1]);
  GMathVec3<double> const p2 = get_vertex(context, face.m_vertex[2]);
  GMathVec3<double> point;
  GMathVec3<double> dpdu;
  GMathVec3<double> dpdv;
  if (face.m_vertex_count == 3) {
    dpdu = p1 - p0;
    dpdv = p2 - p0;
    point = p0 + dpdu * u + dpdv * v;
  } else {
    GMathVec3<double> const p3 = get_vertex(context, face.m_vertex[3]);
    double const iu = 1.0 - u;
    double const iv = 1.0 - v;
    point = p0 * (iu * iv) + p1 * (u * iv) + p2 * (u * v) + p3 * (iu * v);
    dpdu = (p1 - p0) * iv + (p2 - p3) * v;
    dpdv = (p3 - p0) * iu + (p2 - p1) * u;
  }
  if (fragment.m_sample_scalar != 0.0) {
    point = point + unit_or_zero(cross(dpdu, dpdv)) * fragment.m_sample_scalar;
  }
  GMathMatrix4x4<double> const& m = fragment.m_matrix;
  GMathVec3<double> const world_dpdu = m.transform_vector(dpdu);
  fragment.m_world_position = m.transform_point(point);
  fragment.m_world_normal = unit_or_zero(cross(world_dpdu, m.transform_vector(dpdv)));
  fragment.m_world_dpdu = world_dpdu;
}
