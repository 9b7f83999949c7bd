#pragma once

// Internal machinery shared by the white-noise and blue-noise surface
// scatterings: the area table, the conversions of random draws into
// parametric coordinates, and the evaluation of descriptors into world
// space. None of it is exported.

#include <cstdint>

#include "platform/core/core_array.h"
#include "platform/geometry/ctx_eval.h"
#include "platform/geometry/geometry_fragment.h"
#include "platform/geometry/geometry_object.h"
#include "platform/geometry/geometry_primitive_sample_descriptor.h"
#include "platform/math/gmath_matrix4x4.h"
#include "platform/math/gmath_vec3.h"
#include "platform/random/grandom_mt.h"
#include "sampling/patterns/radical_inverse.h"
#include "sampling/surface/primitive_area.h"

// Group selector value that selects every primitive of the object.
constexpr unsigned int k_all_groups = 0xFFFFFFFFu;

// Every scattering call draws from its own generator seeded with this, so
// the same request always yields the same points.
constexpr unsigned int k_surface_seed = 1u;

// One draw of the generator as a coordinate in [0, 1], both ends reachable.
inline double draw_unit(GRandomMt const& rng) {
  return unit_from_u32(rng.genrand_int32());
}

// Keeps a pair drawn on the unit square inside the triangle u + v <= 1 by
// reflecting the upper half onto the lower one (uniform stays uniform). Only
// triangles (3 vertices) are folded, and a pair with u + v exactly 1 stays.
inline void fold_to_triangle(std::uint32_t const& vertex_count, double& u, double& v) {
  if (vertex_count == 3 && u + v > 1.0) {
    u = 1.0 - u;
    v = 1.0 - v;
  }
}

// x truncated toward zero to a 64-bit integer, reduced to its low 32 bits.
// A NaN, or a value beyond the 64-bit range, gives 0: that is what an
// infinite density (zero total area) turns into, and it places nothing.
inline std::uint32_t truncate_to_u32(double const& x) {
  if (x >= 0.0 && x < 18446744073709551616.0) {
    return static_cast<std::uint32_t>(static_cast<std::uint64_t>(x));
  }
  if (x < 0.0 && x >= -9223372036854775808.0) {
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(x));
  }
  return 0u;
}

// Fills `table` with the object's primitives of group `group` (every
// primitive for k_all_groups), in increasing index order, each with its
// vertex count and its area under `matrix`, then sorts it by decreasing area
// (sort_by_area). `total` receives the sum of the areas, added in primitive
// order. Each selected primitive's area and vertex count are asked once;
// with a group selected, every primitive's group is asked twice (once to
// size the table, once to fill it).
void build_area_table(CtxEval const& context, GeometryObject const& object,
                      GMathMatrix4x4<double> const& matrix, unsigned int const& group,
                      CoreArray<PrimitiveArea>& table, double& total);

// Sorts the table in place by decreasing m_area, leaving equal areas in the
// order sort_by_area_quicksort leaves them (the placements depend on it).
// When the table comes in increasing primitive order, as build_area_table
// makes it, and holds no NaN, it is first sorted by area with std::sort;
// if no two areas are equal that order is the only decreasing one, hence
// the quicksort's. Otherwise the primitive order is restored and the
// quicksort runs. No allocation either way.
void sort_by_area(CoreArray<PrimitiveArea>& table);

// The reference order: a non-recursive quicksort, largest area first, that
// takes the first entry of each range as its pivot and sorts the shorter
// side first (at most 256 pending ranges, enough for any size). Equal
// areas end in the order this exact procedure leaves them; it is not
// stable and not ordered by primitive. Quadratic on long runs of
// increasing or decreasing areas, which sort_by_area avoids.
void sort_by_area_quicksort(CoreArray<PrimitiveArea>& table);

// Sets up a record for evaluating primitives of `object` under `matrix`:
// both object references, the object's sample scalar, the matrix.
void prepare_sample_record(GeometryObject const& object, GMathMatrix4x4<double> const& matrix,
                           GeometryFragment& record);

// Evaluates every descriptor, in order, into its world position and the two
// world vectors that the fragment holds after it (GeometryFragment:
// m_world_normal, then m_world_dpdu). The three arrays are resized to the
// descriptor count, their old contents discarded.
void compute_world_samples(CtxEval const& context, GeometryObject const& object,
                           GMathMatrix4x4<double> const& matrix,
                           CoreArray<GeometryPrimitiveSampleDescriptor> const& descriptors,
                           CoreArray<GMathVec3<double>>& positions,
                           CoreArray<GMathVec3<double>>& surface_vectors_a,
                           CoreArray<GMathVec3<double>>& surface_vectors_b);
