#pragma once

class Gallery;

// Ray fans of every ray generator, drawn in 3D views: the origin, the rays
// as segments and the shape or surface they relate to. The cosine cone at
// three angles (plain, discard and project clipping), glossy reflection with
// isotropic and anisotropic exponents and glossy refraction (each from the
// top and from the side, the smooth surface's direction dashed), the uniform
// sphere, and the line, plane and disk generators under a rotated frame.
class RayFanPictures {
 public:
  // Writes the pictures into the gallery; false when a file cannot be
  // written.
  static bool write(Gallery& gallery);
};
