#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "platform/geometry/geometry_intersection.h"
#include "platform/geometry/geometry_mesh.h"

namespace {

GMathVec3<double> v3(double x, double y, double z) {
  return GMathVec3<double>(x, y, z);
}

double dot(GMathVec3<double> const& a, GMathVec3<double> const& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

// Evaluates (primitive, u, v) through the fragment path the sampling uses.
GeometryIntersection evaluate(GeometryMesh const& mesh, GMathMatrix4x4<double> const& matrix,
                              unsigned int primitive, double u, double v, double time = 0.0) {
  GeometryIntersection record;
  record.m_object = &mesh;
  record.m_root_object = &mesh;
  record.m_sample_scalar = mesh.get_sample_scalar();
  record.m_matrix = matrix;
  record.m_primitive = primitive;
  record.m_uvw = v3(u, v, 0.0);
  record.compute_world_sample(CtxEval(time));
  return record;
}

// A unit right triangle (group 2) and a non-planar quad (group 0).
GeometryMesh make_mesh() {
  GeometryMesh mesh;
  unsigned int const a = mesh.add_vertex(v3(0, 0, 0));
  unsigned int const b = mesh.add_vertex(v3(1, 0, 0));
  unsigned int const c = mesh.add_vertex(v3(0, 1, 0));
  mesh.add_triangle(a, b, c, 2);
  unsigned int const d = mesh.add_vertex(v3(3, 0, 0));
  unsigned int const e = mesh.add_vertex(v3(5, 0, 1));
  unsigned int const f = mesh.add_vertex(v3(5, 2, 0));
  unsigned int const g = mesh.add_vertex(v3(3, 2, 0));
  mesh.add_quad(d, e, f, g, 0);
  return mesh;
}

}  // namespace

TEST(GeometryMesh, PrimitivesGroupsAndAreas) {
  GeometryMesh empty;
  EXPECT_EQ(empty.get_group_count(), 1u);
  EXPECT_EQ(empty.get_primitive_count(), 0u);

  GeometryMesh const mesh = make_mesh();
  EXPECT_EQ(mesh.get_primitive_count(), 2u);
  EXPECT_EQ(mesh.get_group_count(), 3u);
  EXPECT_EQ(mesh.get_primitive_group(0), 2u);
  EXPECT_EQ(mesh.get_primitive_group(1), 0u);
  EXPECT_EQ(mesh.get_primitive_vertex_count(0), 3u);
  EXPECT_EQ(mesh.get_primitive_vertex_count(1), 4u);

  CtxEval const ctx;
  GMathMatrix4x4<double> const scale = GMathMatrix4x4<double>::scale(2.0, 3.0, 1.0);
  EXPECT_EQ(mesh.get_primitive_area(ctx, 0, GMathMatrix4x4<double>()), 0.5);
  EXPECT_EQ(mesh.get_primitive_area(ctx, 0, scale), 3.0);
  // A translation leaves areas alone; the non-planar quad measures as its
  // two triangles split along its first diagonal.
  double const quad = mesh.get_primitive_area(ctx, 1, GMathMatrix4x4<double>());
  EXPECT_EQ(mesh.get_primitive_area(ctx, 1, GMathMatrix4x4<double>::translation(7, -2, 4)), quad);
  double const t1 = 0.5 * cross(v3(2, 0, 1), v3(2, 2, 0)).length();
  double const t2 = 0.5 * cross(v3(2, 2, 0), v3(0, 2, 0)).length();
  EXPECT_EQ(quad, t1 + t2);
}

TEST(GeometryMesh, EvaluationMapsCornersAndKeepsAFrame) {
  GeometryMesh const mesh = make_mesh();
  GMathMatrix4x4<double> matrix = GMathMatrix4x4<double>::translation(1.0, 2.0, 3.0) *
                                  GMathMatrix4x4<double>::scale(2.0, 2.0, 2.0);
  // Triangle corners: (0,0) -> p0, (1,0) -> p1, (0,1) -> p2.
  EXPECT_EQ(evaluate(mesh, matrix, 0, 0, 0).m_world_position, v3(1, 2, 3));
  EXPECT_EQ(evaluate(mesh, matrix, 0, 1, 0).m_world_position, v3(3, 2, 3));
  EXPECT_EQ(evaluate(mesh, matrix, 0, 0, 1).m_world_position, v3(1, 4, 3));
  // Quad corners in boundary order.
  EXPECT_EQ(evaluate(mesh, matrix, 1, 0, 0).m_world_position, v3(7, 2, 3));
  EXPECT_EQ(evaluate(mesh, matrix, 1, 1, 0).m_world_position, v3(11, 2, 5));
  EXPECT_EQ(evaluate(mesh, matrix, 1, 1, 1).m_world_position, v3(11, 6, 3));
  EXPECT_EQ(evaluate(mesh, matrix, 1, 0, 1).m_world_position, v3(7, 6, 3));

  GeometryIntersection const tri = evaluate(mesh, matrix, 0, 0.25, 0.5);
  EXPECT_EQ(tri.m_world_normal, v3(0, 0, 1));
  EXPECT_EQ(tri.m_world_dpdu, v3(2, 0, 0));
  // The quad's normal is a unit vector orthogonal to its tangents, on the
  // side of dP/du x dP/dv, at random parameters.
  std::mt19937 rng(3);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  for (int i = 0; i < 200; ++i) {
    double const u = unit(rng), v = unit(rng);
    GeometryIntersection const q = evaluate(mesh, matrix, 1, u, v);
    GMathVec3<double> const next = evaluate(mesh, matrix, 1, u, v + 1e-6).m_world_position;
    GMathVec3<double> const dpdv = (next - q.m_world_position) * 1e6;
    EXPECT_TRUE(std::fabs(q.m_world_normal.length() - 1.0) <= 1e-12) << u << " " << v;
    EXPECT_TRUE(std::fabs(dot(q.m_world_normal, q.m_world_dpdu)) <= 1e-12) << u << " " << v;
    EXPECT_TRUE(std::fabs(dot(q.m_world_normal, dpdv)) <= 1e-5) << u << " " << v;
    EXPECT_GT(dot(cross(q.m_world_dpdu, dpdv), q.m_world_normal), 0.0) << u << " " << v;
  }
}

TEST(GeometryMesh, DegenerateFacesHaveAZeroNormal) {
  GeometryMesh line;
  line.add_triangle(line.add_vertex(v3(0, 0, 0)), line.add_vertex(v3(1, 1, 0)),
                    line.add_vertex(v3(2, 2, 0)), 0);
  line.set_sample_scalar(0.5);
  GeometryIntersection const point = evaluate(line, GMathMatrix4x4<double>(), 0, 0.25, 0.5);
  EXPECT_EQ(point.m_world_normal, v3(0, 0, 0));
  EXPECT_EQ(point.m_world_position, v3(1.25, 1.25, 0));
}

TEST(GeometryMesh, MotionAndOffsetStayInsideThePrimitiveBoxes) {
  GeometryMesh mesh = make_mesh();
  mesh.set_vertex_velocity(4, v3(0, 0, -2));
  mesh.set_sample_scalar(0.125);
  EXPECT_EQ(mesh.get_sample_scalar(), 0.125);
  // At time 0.5 the quad's second corner has moved to z = 0, making the quad
  // planar; the offset lifts points by 0.125 along +z.
  GeometryIntersection const moved = evaluate(mesh, GMathMatrix4x4<double>(), 1, 1, 0, 0.5);
  EXPECT_EQ(moved.m_world_position, v3(5, 0, 0.125));
  EXPECT_EQ(mesh.get_primitive_area(CtxEval(0.5), 1, GMathMatrix4x4<double>()), 4.0);

  std::mt19937 rng(8);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  for (int i = 0; i < 500; ++i) {
    double const time = unit(rng);
    unsigned int const primitive = i & 1;
    double u = unit(rng), v = unit(rng);
    if (primitive == 0 && u + v > 1.0) {
      u = 1.0 - u;
      v = 1.0 - v;
    }
    GMathBbox3<double> box;
    mesh.get_primitive_bbox(CtxEval(time), primitive, box);
    GMathVec3<double> const p =
        evaluate(mesh, GMathMatrix4x4<double>(), primitive, u, v, time).m_world_position;
    EXPECT_TRUE(box.contains(p)) << primitive << " " << u << " " << v << " t " << time;
  }
}
