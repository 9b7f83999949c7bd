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
  // Descend without branching while the whole block [lo, hi] lies in one
  // child (the cell coordinates of lo and hi share their leading bits).
  std::int32_t start = 0;
  unsigned int level = 0;
  std::int32_t origin[3] = {0, 0, 0};
  while (level < m_depth) {
    unsigned int const bit = m_depth - 1 - level;
    if (((lo[0] ^ hi[0]) | (lo[1] ^ hi[1]) | (lo[2] ^ hi[2])) >> bit != 0)
      break;
    int const octant =
        ((lo[0] >> bit) & 1) | (((lo[1] >> bit) & 1) << 1) | (((lo[2] >> bit) & 1) << 2);
    start = m_nodes[start].m_child[octant];
    if (start == 0)
      return false;
    for (int a = 0; a < 3; ++a)
      origin[a] |= lo[a] & (std::int32_t(1) << bit);
    ++level;
  }
  // Then depth first over the children whose cell block meets [lo, hi].
  struct Pending {
    std::int32_t m_node;
    unsigned int m_level;
    std::int32_t m_origin[3];  // first cell of the node's block
  };
  Pending stack[7 * k_max_depth + 1];
  int top = 0;
  stack[top++] = Pending{start, level, {origin[0], origin[1], origin[2]}};
  while (top > 0) {
    Pending const entry = stack[--top];
    Node const& node = m_nodes[entry.m_node];
    if (entry.m_level == m_depth) {
      if (hits_list(node.m_child[0], point, radius))
        return true;
      continue;
    }
    std::int32_t const half = std::int32_t(1) << (m_depth - 1 - entry.m_level);
    // Bit 0: the lower half along the axis meets the range; bit 1: the upper.
    int halves[3];
    for (int a = 0; a < 3; ++a) {
      std::int32_t const middle = entry.m_origin[a] + half;
      halves[a] = (lo[a] < middle ? 1 : 0) | (hi[a] >= middle ? 2 : 0);
    }
    for (int octant = 0; octant < 8; ++octant) {
      std::int32_t const child = node.m_child[octant];
      if (child == 0 || !(halves[0] >> (octant & 1) & 1) || !(halves[1] >> (octant >> 1 & 1) & 1) ||
          !(halves[2] >> (octant >> 2 & 1) & 1))
        continue;
      Pending next{
          child, entry.m_level + 1, {entry.m_origin[0], entry.m_origin[1], entry.m_origin[2]}};
      for (int a = 0; a < 3; ++a)
        next.m_origin[a] += ((octant >> a) & 1) ? half : 0;
      stack[top++] = next;
    }
  }
  return false;
}
