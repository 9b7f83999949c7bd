#pragma once

#include <string>
#include <vector>

// A minimal SVG document: a square drawing area of `size` pixels that maps
// the unit square [0,1]^2 (v pointing up, as in the sample plots of papers),
// plus a caption strip. Shapes are appended as text; save() writes the file.
class SvgCanvas {
 public:
  SvgCanvas(int size, std::string const& title);

  // Point (u, v) of the unit square as a dot of radius r pixels.
  void dot(double u, double v, double r, std::string const& color);
  // Axis-aligned box from (u0, v0) to (u1, v1), outlined.
  void box(double u0, double v0, double u1, double v1, std::string const& color, double width);
  // Line from (u0, v0) to (u1, v1).
  void line(double u0, double v0, double u1, double v1, std::string const& color, double width);
  // Circle of centre (u, v) and radius r, in unit-square units, outlined.
  void circle(double u, double v, double r, std::string const& color, double width);

  // Closed polygon through the points (u0, v0, u1, v1, ...), outlined and
  // filled ("none" for no fill).
  void polygon(std::vector<double> const& uv, std::string const& stroke, std::string const& fill,
               double width);

  // Text with its anchor point at (u, v); anchor is "start", "middle" or
  // "end". The text is escaped for XML.
  void text(double u, double v, std::string const& text, double size, std::string const& color,
            std::string const& anchor);

  // Colour number i of the demo's palette (ten distinct colours, repeating).
  static std::string const& palette(unsigned int i);

  // Writes the document; returns false (with errno set) when the file cannot
  // be written.
  bool save(std::string const& path) const;

 private:
  double px(double u) const;
  double py(double v) const;

  int m_size;
  std::string m_title;
  std::vector<std::string> m_shapes;
};
