#include "platform/octree/octree.h"

#include <algorithm>
#include <cmath>

namespace {

// The collision predicate of the class comment.
bool collides(GMathVec3<double> const& p, double const& r, GMathVec3<double> const& q,
              double const& s) {
  double const dx = p.x - q.x;
  double const dy = p.y - q.y;
  double const dz = p.z - q.z;
  double const reach = r + s;
  return dx * dx + dy * dy + dz * dz < reach * reach;
}

// Relative widening of a query's reach: the cell mapping rounds, and a
// stored point that collides must never sit in a cell the query skips.
constexpr double k_slack = 1e-9;

}  // namespace

Octree::Octree() {
  create(GMathBbox3<double>(), 0);
}

Octree::~Octree() = default;

void Octree::create(GMathBbox3<double> const& box, unsigned int const& depth) {
  m_box = box;
  m_depth = std::min(depth, k_max_depth);
  m_cells = std::int32_t(1) << m_depth;
  // Cubic cells: the cube on the box's minimum corner with the box's
  // largest extent as side. Short axes then use only the cells they reach,
  // and a query's cell block has the same shape along every axis.
  double side = 0.0;
  double magnitude = 0.0;
  if (!box.is_empty()) {
    for (int a = 0; a < 3; ++a) {
      side = std::max(side, box.m_max[a] - box.m_min[a]);
      magnitude = std::max(magnitude, std::max(std::fabs(box.m_min[a]), std::fabs(box.m_max[a])));
    }
  }
  m_cell_scale = side > 0.0 ? static_cast<double>(m_cells) / side : 0.0;
  m_slack = magnitude * k_slack;
  m_max_radius = 0.0;
  m_nodes.clear();
  m_points.clear();
  m_outside = -1;
  m_inside = 0;
  Node root;
  std::fill(root.m_child, root.m_child + 8, 0);
  if (m_depth == 0)
    root.m_child[0] = -1;
  m_nodes.push_back(root);
}

bool Octree::cell_of(GMathVec3<double> const& p, std::int32_t cell[3]) const {
  if (!m_box.contains(p))
    return false;
  for (int a = 0; a < 3; ++a) {
    std::int32_t const c = static_cast<std::int32_t>((p[a] - m_box.m_min[a]) * m_cell_scale);
    cell[a] = std::min(c, m_cells - 1);
  }
  return true;
}

void Octree::add(GMathVec3<double> const& point, double const& radius) {
  std::int32_t const index = static_cast<std::int32_t>(m_points.size());
  m_max_radius = std::max(m_max_radius, radius);
  std::int32_t cell[3];
  if (!cell_of(point, cell)) {
    m_points.push_back(Point{point, radius, m_outside});
    m_outside = index;
    return;
  }
  std::int32_t node = 0;
  for (unsigned int level = 0; level < m_depth; ++level) {
    unsigned int const bit = m_depth - 1 - level;
    int const octant =
        ((cell[0] >> bit) & 1) | (((cell[1] >> bit) & 1) << 1) | (((cell[2] >> bit) & 1) << 2);
    std::int32_t child = m_nodes[node].m_child[octant];
    if (child == 0) {
      Node fresh;
      std::fill(fresh.m_child, fresh.m_child + 8, 0);
      if (level + 1 == m_depth)
        fresh.m_child[0] = -1;
      child = static_cast<std::int32_t>(m_nodes.size());
      m_nodes.push_back(fresh);
      m_nodes[node].m_child[octant] = child;
    }
    node = child;
  }
  m_points.push_back(Point{point, radius, m_nodes[node].m_child[0]});
  m_nodes[node].m_child[0] = index;
  ++m_inside;
}

bool Octree::hits_list(std::int32_t first, GMathVec3<double> const& p, double const& r) const {
  for (std::int32_t i = first; i >= 0; i = m_points[i].m_next) {
    if (collides(p, r, m_points[i].m_position, m_points[i].m_radius))
      return true;
  }
  return false;
}

// Cells [lo, hi] along `axis` that hold every box point within `reach` of
// `centre`; hi < lo when there is none. The mapping from coordinate to cell
// is monotone, so bounding the coordinates bounds the cells.
void Octree::cell_range(double const& centre, double const& reach, int const& axis,
                        std::int32_t& lo, std::int32_t& hi) const {
  double const low = (centre - reach - m_box.m_min[axis]) * m_cell_scale;
  double const high = (centre + reach - m_box.m_min[axis]) * m_cell_scale;
  double const last = static_cast<double>(m_cells - 1);
  if (high < 0.0) {
    lo = 0;
    hi = -1;
    return;
  }
  // NaN (an infinite reach on a flat axis) opens the whole range.
  lo = low >= 0.0 ? static_cast<std::int32_t>(std::min(low, last)) : 0;
  hi = high <= last ? static_cast<std::int32_t>(high) : m_cells - 1;
}

bool Octree::overlap(GMathVec3<double> const& point, double const& radius) const {
  if (hits_list(m_outside, point, radius))
    return true;
  if (m_inside == 0)
    return false;
  double const reach = (radius + m_max_radius) * (1.0 + k_slack) + m_slack;
  std::int32_t lo[3];
  std::int32_t hi[3];
  for (int a = 0; a < 3; ++a) {
    cell_range(point[a], reach, a, lo[a], hi[a]);
    if (hi[a] < lo[a])
      return false;
  }
  // Depth-first walk over the nodes whose cell block meets [lo, hi].
  struct Pending {
    std::int32_t m_node;
    unsigned int m_level;
    std::int32_t m_origin[3];  // first cell of the node's block
  };
  Pending stack[7 * k_max_depth + 1];
  int top = 0;
  stack[top++] = Pending{0, 0, {0, 0, 0}};
  while (top > 0) {
    Pending const entry = stack[--top];
    Node const& node = m_nodes[entry.m_node];
    if (entry.m_level == m_depth) {
      if (hits_list(node.m_child[0], point, radius))
        return true;
      continue;
    }
    std::int32_t const half = std::int32_t(1) << (m_depth - 1 - entry.m_level);
    for (int octant = 0; octant < 8; ++octant) {
      std::int32_t const child = node.m_child[octant];
      if (child == 0)
        continue;
      Pending next{child, entry.m_level + 1, {0, 0, 0}};
      bool meets = true;
      for (int a = 0; a < 3; ++a) {
        next.m_origin[a] = entry.m_origin[a] + (((octant >> a) & 1) ? half : 0);
        meets = meets && next.m_origin[a] <= hi[a] && next.m_origin[a] + half - 1 >= lo[a];
      }
      if (meets)
        stack[top++] = next;
    }
  }
  return false;
}
