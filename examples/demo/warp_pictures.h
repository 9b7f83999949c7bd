#pragma once

class Gallery;

// Every warp of Sampling applied to one Hammersley set of 1024 points
// (disk, hemispheres seen from above, spheres seen from the side), and the
// two fixed point sets (disk_uniform, grid_uniform).
class WarpPictures {
 public:
  // Writes the pictures into the gallery; false when a file cannot be
  // written.
  static bool write(Gallery& gallery);
};
