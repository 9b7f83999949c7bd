#pragma once

#include "platform/core/core_array.h"
#include "platform/geometry/ctx_eval.h"
#include "platform/geometry/geometry_object.h"
#include "platform/geometry/geometry_primitive_sample_descriptor.h"
#include "platform/math/gmath_bbox3.h"
#include "platform/math/gmath_matrix4x4.h"
#include "sampling/surface/primitive_area.h"

// Blue-noise placement by dart throwing over a sorted area table (internal).
//
// Each entry gets about area x density candidates (at least one; the
// fraction is settled by one draw), and each candidate up to
// ceil(area / largest area x 128) throws: a throw draws (v, u) in that
// order, folds it on triangles, evaluates it to world space and is accepted
// when Octree::overlap finds no accepted point of the same tree within the
// collision reach of `dart_radius`. With every group selected each group has
// its own tree, so groups never reject each other; with one group there is
// one tree. A candidate that uses up a budget of 128 throws abandons its
// entry. The generator is seeded with 1; descriptors come in acceptance
// order, grouped by entry, and the array is trimmed to the points accepted.
//
// The object must report at least one group, and with every group selected
// each primitive's group must be below that count.
void place_blue_noise_samples(CtxEval const& context, GeometryObject const& object,
                              GMathMatrix4x4<double> const& matrix, unsigned int const& group,
                              unsigned int const& count, double const& density,
                              double const& dart_radius, CoreArray<PrimitiveArea> const& table,
                              CoreArray<GeometryPrimitiveSampleDescriptor>& descriptors);

// World box of an object-space box: the bounds of its eight corners under
// the first three rows of `matrix` (x' = m0 x + m1 y + m2 z + m3, ...).
void transform_bbox(GMathBbox3<double> const& box, GMathMatrix4x4<double> const& matrix,
                    GMathBbox3<double>& result);
