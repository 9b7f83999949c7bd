#include "platform/geometry/geometry_fragment.h"

#include "platform/geometry/geometry_object.h"

GeometryFragment::GeometryFragment()
    : m_object(nullptr), m_root_object(nullptr), m_sample_scalar(0.0), m_primitive(0) {}

void GeometryFragment::compute_world_sample(CtxEval const& context) {
  m_object->evaluate_sample(context, *this);
}
