#pragma once

#include <string>

#include "examples/demo/scene.h"

// Reads the triangles of a Wavefront OBJ file into `scene` (appended to what
// it holds; polygons are fanned into triangles; the file's normals are
// replaced by area-weighted vertex normals). Returns false with a message in
// `error`, and leaves the scene unchanged, when the file cannot be read, does
// not parse, indexes a vertex it does not have, holds a coordinate that is
// not a finite number, or has no triangle with an extent.
bool load_obj(std::string const& path, Scene& scene, std::string& error);
