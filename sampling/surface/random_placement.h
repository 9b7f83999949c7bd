#pragma once

#include "platform/core/core_array.h"
#include "platform/geometry/geometry_primitive_sample_descriptor.h"
#include "sampling/surface/primitive_area.h"

// White-noise placement over a sorted area table (internal).
//
// Walks the table from the largest primitive down and gives each entry
// area x density points, carrying the fractional parts from entry to entry
// so the running total rounds half down (a carried 0.5 adds nothing); the
// last entry is capped so that at most `count` points are placed. Each point
// takes two draws of a generator seeded with 1, u from the first and v from
// the second, folded into the triangle on three-vertex primitives.
// Descriptors come grouped by entry in table order, then in drawing order.
//
// The array ends with exactly the points placed: `count` whenever the areas
// are positive, fewer when the table is empty or every area is 0 (an
// infinite density yields no point, see truncate_to_u32), in which case the
// array is trimmed so every descriptor names a real primitive.
void place_random_samples(unsigned int const& count, double const& density,
                          CoreArray<PrimitiveArea> const& table,
                          CoreArray<GeometryPrimitiveSampleDescriptor>& descriptors);
