#pragma once

#include "platform/geometry/ctx_eval.h"
#include "platform/math/gmath_bbox3.h"
#include "platform/math/gmath_matrix4x4.h"
#include "platform/platform_export.h"

class GeometryFragment;

// A geometry object as the sampling code sees it: a list of primitives
// (polygons addressed by index, each in one primitive group) that can be
// measured, bounded and evaluated at parametric coordinates.
//
// The operations are virtual and their declaration order is their slot order
// in the table of virtual operations, which callers compiled against this
// header depend on: the seven queries first, in the order below, then the
// evaluation, then the destructor. New operations go after the destructor.
//
// Every query is const and must be safe to call from several threads at
// once. Primitive indices passed in are below get_primitive_count(); the
// object does not check them.
class PLATFORM_API GeometryObject {
 public:
  // Number of primitive groups, at least 1; every primitive's group index
  // is below it.
  virtual unsigned int const& get_group_count() const = 0;

  // A per-object value that GeometryFragment carries into evaluation. Its
  // meaning belongs to the concrete object (GeometryMesh: an offset along
  // the surface normal).
  virtual double get_sample_scalar() const = 0;

  // Number of primitives.
  virtual unsigned int get_primitive_count() const = 0;

  // Number of vertices of a primitive; 3 marks a triangle, whose parametric
  // coordinates satisfy u + v <= 1.
  virtual unsigned int get_primitive_vertex_count(unsigned int const& primitive) const = 0;

  // Writes an axis-aligned box, in object space, that holds every point the
  // primitive evaluates to in the given context.
  virtual void get_primitive_bbox(CtxEval const& context, unsigned int const& primitive,
                                  GMathBbox3<double>& box) const = 0;

  // Area of the primitive after the object-to-world matrix, >= 0.
  virtual double get_primitive_area(CtxEval const& context, unsigned int const& primitive,
                                    GMathMatrix4x4<double> const& matrix) const = 0;

  // Group index of a primitive, below get_group_count().
  virtual unsigned int get_primitive_group(unsigned int const& primitive) const = 0;

  // Fills the world-space part of a fragment from its primitive, its
  // parametric coordinates, its matrix and its sample scalar (see
  // GeometryFragment for the fields read and written).
  virtual void evaluate_sample(CtxEval const& context, GeometryFragment& fragment) const = 0;

  virtual ~GeometryObject();

 protected:
  GeometryObject() = default;
  GeometryObject(GeometryObject const&) = default;
  GeometryObject& operator=(GeometryObject const&) = default;
};
