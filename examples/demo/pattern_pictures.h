#pragma once

#include <vector>

#include "platform/math/gmath_vec2.h"

class Gallery;

// The sample patterns, one picture each, with their packet boxes: the
// stratified and Hammersley packet grids, Hammersley sub-sets, Halton, and
// the hierarchical sets of one seed in each of the four modes, coloured by
// set.
class PatternPictures {
 public:
  // The first `count` points of the Hammersley set of `count` points with
  // seed 0 (one packet): the input of the warp, ray fan and frustum
  // pictures.
  static std::vector<GMathVec2<double>> hammersley(unsigned int count);

  // Writes the pictures into the gallery; false when a file cannot be
  // written.
  static bool write(Gallery& gallery);
};
