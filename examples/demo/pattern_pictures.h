#pragma once

class Gallery;

// The sample patterns, one picture each, with their packet boxes: the
// stratified and Hammersley packet grids, Hammersley sub-sets, Halton, and
// the hierarchical sets of one seed in each of the four modes, coloured by
// set.
class PatternPictures {
 public:
  // Writes the pictures into the gallery; false when a file cannot be
  // written.
  static bool write(Gallery& gallery);
};
