#pragma once

class Gallery;

// White against blue noise on a mesh: the same number of points scattered
// over a terrain patch (a GeometryMesh of quads) by
// Sampling::surface_random_noise_count and Sampling::surface_blue_noise_count,
// seen from above.
class SurfacePictures {
 public:
  // Writes the pictures into the gallery; false when a file cannot be
  // written.
  static bool write(Gallery& gallery);
};
