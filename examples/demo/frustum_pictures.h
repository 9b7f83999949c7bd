#pragma once

class Gallery;

// Packet frusta: for the plane and line generators a top view of the traces
// of each packet's four planes on the shape's plane around the packet's
// targets; for the cosine generator a view along the cone's axis (every
// direction d drawn at (d.x / d.z, d.y / d.z), where planes through the
// origin are lines) with each packet's planes, corner directions and rays.
class FrustumPictures {
 public:
  // Writes the pictures into the gallery; false when a file cannot be
  // written.
  static bool write(Gallery& gallery);
};
