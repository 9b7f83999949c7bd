#include "platform/geometry/geometry_object.h"

// Out of line so that the table of virtual operations and the type
// information live in the platform library once.
GeometryObject::~GeometryObject() = default;
