#pragma once

#include <cstdint>
#include <vector>

#include "platform/math/gmath_bbox3.h"
#include "platform/math/gmath_vec3.h"
#include "platform/platform_export.h"

// A point octree for collision queries between spheres: each stored point
// carries a radius, and overlap() asks whether a new sphere touches any of
// them.
//
// Collision predicate: a query point p with radius r collides with a stored
// point q with radius s when |p - q|^2 < (r + s)^2, with |p - q|^2 computed
// as dx dx + dy dy + dz dz, left to right. The comparison is strict: spheres
// that only touch do not collide, and radius 0 against radius 0 never
// collides.
//
// Layout: create(box, depth) fixes a box and covers it with the cube of side
// its largest extent, cut into 2^depth cubic cells per axis (a flat box
// uses few cells across its thin axis). Nodes are made on demand, so
// memory follows the points, not the 8^depth cells. A point inside the
// closed box goes to the leaf cell holding it (points on the maximum faces
// to the last cell); a point outside the box goes to an overflow list that
// every query scans, so the tree accepts any point and stays exact, but it
// is fast only for points inside its box. A query visits the cells within
// r + (largest stored radius) of p, so its cost follows the number of
// points near p, not the number stored.
//
// The tree owns its storage; copying is disabled. add() must not overlap
// with other calls on the same tree; overlap() is const and may run on
// several threads at once.
class PLATFORM_API Octree {
 public:
  // Depths above this are reduced to it (65536 cells per axis).
  static constexpr unsigned int k_max_depth = 16;

  // An empty tree over an empty box: every point goes to the overflow list
  // until create() is called.
  Octree();
  ~Octree();
  Octree(Octree const&) = delete;
  Octree& operator=(Octree const&) = delete;

  // Drops every point and sets the box and the depth (0 keeps all points in
  // the root cell; values above k_max_depth are reduced to it). An empty or
  // flat box is allowed (a box of one point keeps everything in cell 0).
  void create(GMathBbox3<double> const& box, unsigned int const& depth);

  // Stores a point with its radius (>= 0).
  void add(GMathVec3<double> const& point, double const& radius);

  // True when the sphere (point, radius) collides with a stored point, as
  // the predicate above defines it.
  bool overlap(GMathVec3<double> const& point, double const& radius) const;

  // Number of stored points.
  unsigned int get_point_count() const { return static_cast<unsigned int>(m_points.size()); }

 private:
  struct Point {
    GMathVec3<double> m_position;
    double m_radius;
    std::int32_t m_next;  // next point of the same leaf or list, -1 ends
  };
  struct Node {
    // Children by octant (bit 0: x, bit 1: y, bit 2: z), 0 for none (the
    // root is node 0 and never a child); a leaf keeps its first point in
    // m_child[0] instead, -1 when empty.
    std::int32_t m_child[8];
  };

  bool cell_of(GMathVec3<double> const& p, std::int32_t cell[3]) const;
  void cell_range(double const& centre, double const& reach, int const& axis, std::int32_t& lo,
                  std::int32_t& hi) const;
  bool hits_list(std::int32_t first, GMathVec3<double> const& p, double const& r) const;

  GMathBbox3<double> m_box;
  unsigned int m_depth;
  std::int32_t m_cells;       // 2^depth
  double m_cell_scale;        // cells per unit length
  double m_slack;             // widening of the search reach against rounding
  double m_max_radius;        // largest radius stored
  std::vector<Node> m_nodes;  // m_nodes[0] is the root
  std::vector<Point> m_points;
  std::int32_t m_outside;  // first point outside the box, -1 for none
  std::uint32_t m_inside;  // number of points in the cells
};
