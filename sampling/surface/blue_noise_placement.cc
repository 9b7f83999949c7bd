#include "sampling/surface/blue_noise_placement.h"

#include <cmath>
#include <vector>

#include "platform/geometry/geometry_intersection.h"
#include "platform/octree/octree.h"
#include "sampling/checks.h"
#include "sampling/surface/area_table.h"

namespace {

// Depth of every placement tree: 64 cells per axis of its group's box.
constexpr unsigned int k_tree_depth = 6;

// Throws per candidate on the largest primitive; smaller primitives get
// proportionally fewer. A candidate that misses them all ends its entry.
constexpr unsigned int k_max_throws = 128;

// An empty box: growing it by any point gives that point.
constexpr double k_empty_bound = 1e308;

GMathBbox3<double> empty_box() {
  return GMathBbox3<double>(GMathVec3<double>(k_empty_bound, k_empty_bound, k_empty_bound),
                            GMathVec3<double>(-k_empty_bound, -k_empty_bound, -k_empty_bound));
}

void grow(GMathBbox3<double>& box, GMathVec3<double> const& minimum,
          GMathVec3<double> const& maximum) {
  for (int a = 0; a < 3; ++a) {
    if (minimum[a] < box.m_min[a])
      box.m_min[a] = minimum[a];
    if (maximum[a] > box.m_max[a])
      box.m_max[a] = maximum[a];
  }
}

// Candidates for one entry: the expected count rounded down, at least one,
// plus one more with probability equal to the fraction (one draw, only when
// there is a fraction above the rounded count).
unsigned int candidate_count(double const& expected, GRandomMt const& rng) {
  unsigned int n = expected >= 1.0 ? truncate_to_u32(expected) : 1u;
  if (expected > static_cast<double>(n)) {
    double const r = draw_unit(rng);
    if (!(r > expected - static_cast<double>(n)))
      n = n + 1;
  }
  return n;
}

// Per-call state of the dart throwing.
struct DartThrower {
  CtxEval const& m_context;
  GeometryObject const& m_object;
  bool m_one_group;
  double m_dart_radius;
  GRandomMt m_rng;
  GeometryIntersection m_record;
  std::vector<Octree> m_trees;

  // Throws up to `budget` darts on `primitive`; on acceptance stores the
  // point in its tree and writes the descriptor. Returns the rejections.
  unsigned int throw_candidate(std::uint32_t const& primitive, unsigned int const& budget,
                               GeometryPrimitiveSampleDescriptor& out, bool& accepted) {
    GeometryFragment& fragment = m_record;
    unsigned int rejected = 0;
    accepted = false;
    while (rejected < budget) {
      fragment.m_primitive = primitive;
      double const a = draw_unit(m_rng);
      double const b = draw_unit(m_rng);
      double u = b;
      double v = a;
      fold_to_triangle(m_object.get_primitive_vertex_count(primitive), u, v);
      fragment.m_uvw = GMathVec3<double>(u, v, 0.0);
      fragment.compute_world_sample(m_context);
      GMathVec3<double> const point = fragment.m_world_position;
      unsigned int const tree = m_one_group ? 0u : m_object.get_primitive_group(primitive);
      SAMPLING_CHECK(tree < m_trees.size(),
                     "GeometryObject::get_primitive_group: group index above the group count");
      if (!m_trees[tree].overlap(point, m_dart_radius)) {
        m_trees[tree].add(point, m_dart_radius);
        out = GeometryPrimitiveSampleDescriptor{primitive, static_cast<float>(u),
                                                static_cast<float>(v)};
        accepted = true;
        return rejected;
      }
      ++rejected;
    }
    return rejected;
  }
};

}  // namespace

void transform_bbox(GMathBbox3<double> const& box, GMathMatrix4x4<double> const& matrix,
                    GMathBbox3<double>& result) {
  result = empty_box();
  double const* m = matrix.m;
  for (int corner = 0; corner < 8; ++corner) {
    double const x = (corner & 1) ? box.m_max.x : box.m_min.x;
    double const y = (corner & 2) ? box.m_max.y : box.m_min.y;
    double const z = (corner & 4) ? box.m_max.z : box.m_min.z;
    GMathVec3<double> const p(m[0] * x + m[1] * y + m[2] * z + m[3],
                              m[4] * x + m[5] * y + m[6] * z + m[7],
                              m[8] * x + m[9] * y + m[10] * z + m[11]);
    grow(result, p, p);
  }
}

void place_blue_noise_samples(CtxEval const& context, GeometryObject const& object,
                              GMathMatrix4x4<double> const& matrix, unsigned int const& group,
                              unsigned int const& count, double const& density,
                              double const& dart_radius, CoreArray<PrimitiveArea> const& table,
                              CoreArray<GeometryPrimitiveSampleDescriptor>& descriptors) {
  unsigned int tree_count = object.get_group_count();
  SAMPLING_CHECK(tree_count >= 1, "GeometryObject::get_group_count: no group");
  if (group < tree_count)
    tree_count = 1;
  bool const one_group = group != k_all_groups;

  // One world box per tree, enclosing its primitives and widened by the
  // dart radius, so every candidate lands inside its tree.
  std::vector<GMathBbox3<double>> boxes(tree_count, empty_box());
  double largest = 0.0;
  for (PrimitiveArea const& entry : table) {
    unsigned int const index = one_group ? 0u : object.get_primitive_group(entry.m_primitive);
    SAMPLING_CHECK(index < tree_count,
                   "GeometryObject::get_primitive_group: group index above the group count");
    GMathBbox3<double> local;
    GMathBbox3<double> world;
    object.get_primitive_bbox(context, entry.m_primitive, local);
    transform_bbox(local, matrix, world);
    grow(boxes[index], world.m_min, world.m_max);
    if (entry.m_area > largest)
      largest = entry.m_area;
  }
  double const inverse_largest = 1.0 / largest;
  GMathVec3<double> const pad(dart_radius, dart_radius, dart_radius);
  for (GMathBbox3<double>& box : boxes) {
    box.m_min = box.m_min - pad;
    box.m_max = box.m_max + pad;
  }

  descriptors.resize(count);
  DartThrower thrower{context,
                      object,
                      one_group,
                      dart_radius,
                      GRandomMt(),
                      GeometryIntersection(),
                      std::vector<Octree>(tree_count)};
  thrower.m_rng.seed(k_surface_seed);
  for (unsigned int g = 0; g < tree_count; ++g)
    thrower.m_trees[g].create(boxes[g], k_tree_depth);
  prepare_sample_record(object, matrix, thrower.m_record);

  unsigned int placed = 0;
  for (PrimitiveArea const& entry : table) {
    if (placed == count)
      break;
    unsigned int n = candidate_count(entry.m_area * density, thrower.m_rng);
    if (placed + n >= count)
      n = count - placed;
    unsigned int const budget = truncate_to_u32(
        std::ceil(inverse_largest * entry.m_area * static_cast<double>(k_max_throws)));
    if (budget == 0)
      continue;
    for (unsigned int i = 0; i < n; ++i) {
      bool accepted = false;
      unsigned int const rejected =
          thrower.throw_candidate(entry.m_primitive, budget, descriptors[placed], accepted);
      if (accepted)
        ++placed;
      if (rejected == k_max_throws)
        break;
    }
  }
  descriptors.resize_keep(placed);
}
