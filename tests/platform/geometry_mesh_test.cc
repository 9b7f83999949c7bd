#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "platform/geometry/geometry_intersection.h"
#include "platform/geometry/geometry_mesh.h"
#include "tests/support/placement.h"

namespace {

using V = GMathVec3<double>;
using M = GMathMatrix4x4<double>;

double dot(V const& a, V const& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

// Evaluates (primitive, u, v) through the fragment path the sampling uses.
GeometryIntersection evaluate(GeometryMesh const& mesh, M const& matrix, unsigned int primitive,
                              double u, double v, double time = 0.0) {
  GeometryIntersection record;
  record.m_object = record.m_root_object = &mesh;
  record.m_sample_scalar = mesh.get_sample_scalar();
  record.m_matrix = matrix;
  record.m_primitive = primitive;
  record.m_uvw = V(u, v, 0.0);
  record.compute_world_sample(CtxEval(time));
  return record;
}

// A unit right triangle off the origin (group 2) and a non-planar quad
// (group 0).
GeometryMesh make_mesh() {
  GeometryMesh mesh;
  for (V const& p :
       {V(0, 0, 1), V(1, 0, 1), V(0, 1, 1), V(3, 0, 0), V(5, 0, 1), V(5, 2, 0), V(3, 2, 0)})
    mesh.add_vertex(p);
  mesh.add_triangle(0, 1, 2, 2);
  mesh.add_quad(3, 4, 5, 6, 0);
  return mesh;
}

}  // namespace

TEST(GeometryMesh, PrimitivesGroupsAndAreas) {
  EXPECT_EQ(GeometryMesh().get_group_count(), 1u);
  GeometryMesh const mesh = make_mesh();
  EXPECT_TRUE(mesh.get_primitive_count() == 2 && mesh.get_group_count() == 3 &&
              mesh.get_primitive_group(0) == 2 && mesh.get_primitive_group(1) == 0 &&
              mesh.get_primitive_vertex_count(0) == 3 && mesh.get_primitive_vertex_count(1) == 4);
  CtxEval const ctx;
  EXPECT_EQ(mesh.get_primitive_area(ctx, 0, M()), 0.5);
  EXPECT_EQ(mesh.get_primitive_area(ctx, 0, scaled_and_moved(2.0, 3.0, 1.0, 0.0, 0.0, 0.0)), 3.0);
  // A translation leaves areas alone; the non-planar quad measures as its
  // two triangles split along its first diagonal.
  double const quad = mesh.get_primitive_area(ctx, 1, M());
  EXPECT_EQ(mesh.get_primitive_area(ctx, 1, scaled_and_moved(1, 1, 1, 7, -2, 4)), quad);
  EXPECT_EQ(quad, 0.5 * cross(V(2, 0, 1), V(2, 2, 0)).length() +
                      0.5 * cross(V(2, 2, 0), V(0, 2, 0)).length());
}

TEST(GeometryMesh, EvaluationMapsCornersAndKeepsAFrame) {
  GeometryMesh const mesh = make_mesh();
  M const matrix = scaled_and_moved(2.0, 2.0, 2.0, 1.0, 2.0, 3.0);
  // Triangle corners (0,0), (1,0), (0,1), then the quad's in boundary order.
  double const corners[][6] = {{0, 0, 0, 1, 2, 5}, {0, 1, 0, 3, 2, 5},  {0, 0, 1, 1, 4, 5},
                               {1, 0, 0, 7, 2, 3}, {1, 1, 0, 11, 2, 5}, {1, 1, 1, 11, 6, 3},
                               {1, 0, 1, 7, 6, 3}};
  for (auto const& c : corners)
    EXPECT_EQ(evaluate(mesh, matrix, c[0], c[1], c[2]).m_world_position, V(c[3], c[4], c[5]));
  GeometryIntersection const tri = evaluate(mesh, matrix, 0, 0.25, 0.5);
  EXPECT_TRUE(tri.m_world_normal == V(0, 0, 1) && tri.m_world_dpdu == V(2, 0, 0));
  // The quad's dP/du is the change of its (bilinear) position along u; its
  // normal is a unit vector orthogonal to its tangents, on the side of
  // dP/du x dP/dv, at random parameters.
  std::mt19937 rng(3);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  for (int i = 0; i < 200; ++i) {
    double const u = unit(rng), v = unit(rng);
    GeometryIntersection const q = evaluate(mesh, matrix, 1, u, v);
    V const dpdu =
        (evaluate(mesh, matrix, 1, u + 1e-6, v).m_world_position - q.m_world_position) * 1e6;
    V const dpdv =
        (evaluate(mesh, matrix, 1, u, v + 1e-6).m_world_position - q.m_world_position) * 1e6;
    EXPECT_TRUE((q.m_world_dpdu - dpdu).length() <= 1e-6 &&
                std::fabs(q.m_world_normal.length() - 1.0) <= 1e-12 &&
                std::fabs(dot(q.m_world_normal, q.m_world_dpdu)) <= 1e-12 &&
                std::fabs(dot(q.m_world_normal, dpdv)) <= 1e-5 &&
                dot(cross(q.m_world_dpdu, dpdv), q.m_world_normal) > 0.0)
        << u << " " << v;
  }
  // A degenerate face has a zero normal.
  GeometryMesh line;
  line.add_triangle(line.add_vertex(V(0, 0, 0)), line.add_vertex(V(1, 1, 0)),
                    line.add_vertex(V(2, 2, 0)), 0);
  GeometryIntersection const point = evaluate(line, M(), 0, 0.25, 0.5);
  EXPECT_TRUE(point.m_world_normal == V(0, 0, 0) && point.m_world_position == V(1.25, 1.25, 0));
}

TEST(GeometryMesh, MotionAndOffsetStayInsideThePrimitiveBoxes) {
  GeometryMesh mesh = make_mesh();
  mesh.set_vertex_velocity(4, V(0, 0, -2));
  mesh.set_sample_scalar(0.125);
  // At time 0.5 the quad's second corner has moved to z = 0, making the quad
  // planar; the offset lifts points by 0.125 along +z.
  EXPECT_EQ(evaluate(mesh, M(), 1, 1, 0, 0.5).m_world_position, V(5, 0, 0.125));
  EXPECT_EQ(mesh.get_primitive_area(CtxEval(0.5), 1, M()), 4.0);
  std::mt19937 rng(8);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  for (int i = 0; i < 500; ++i) {
    double const time = unit(rng);
    unsigned int const primitive = i & 1;
    double u = unit(rng), v = unit(rng);
    if (primitive == 0 && u + v > 1.0)
      u = 1.0 - u, v = 1.0 - v;
    GMathBbox3<double> box;
    mesh.get_primitive_bbox(CtxEval(time), primitive, box);
    EXPECT_TRUE(box.contains(evaluate(mesh, M(), primitive, u, v, time).m_world_position))
        << primitive << " " << u << " " << v << " t " << time;
  }
}
