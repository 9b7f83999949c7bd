#pragma once

#include <string>
#include <vector>

// A minimal SVG document: a square drawing area of `size` pixels that maps
// the unit square [0,1]^2 (v pointing up, as in the sample plots of papers),
// plus a caption strip. Shapes are appended as text; save() writes the file.
// A canvas of several panels puts that many squares side by side: u runs
// over [0, panels), panel k being [k, k + 1] x [0, 1].
class SvgCanvas {
 public:
  // White space around the drawing area, in pixels.
  static constexpr int k_margin = 10;

  SvgCanvas(int size, std::string const& title, int panels = 1);

  // Point (u, v) of the unit square as a dot of radius r pixels.
  void dot(double u, double v, double r, std::string const& color);
  // Axis-aligned box from (u0, v0) to (u1, v1), outlined.
  void box(double u0, double v0, double u1, double v1, std::string const& color, double width);
  // Line from (u0, v0) to (u1, v1); `dash` is an SVG dash pattern in pixels
  // ("6 3": 6 drawn, 3 left out), empty for a solid line.
  void line(double u0, double v0, double u1, double v1, std::string const& color, double width,
            std::string const& dash = "");
  // Marker of radius r pixels at (u, v): shape 0 a circle, 1 a square, 2 a
  // triangle (other numbers repeat these); hollow ones are white inside.
  void marker(double u, double v, unsigned int shape, double r, std::string const& color,
              bool hollow);
  // Circle of centre (u, v) and radius r, in unit-square units, outlined.
  void circle(double u, double v, double r, std::string const& color, double width);

  // Closed polygon through the points (u0, v0, u1, v1, ...), outlined and
  // filled ("none" for no fill).
  void polygon(std::vector<double> const& uv, std::string const& stroke, std::string const& fill,
               double width);

  // Text with its anchor point at (u, v); anchor is "start", "middle" or
  // "end". The text is escaped for XML. `upright` turns it a quarter turn
  // counter-clockwise about its anchor, to be read from below (an axis
  // label along a vertical axis).
  void text(double u, double v, std::string const& text, double size, std::string const& color,
            std::string const& anchor, bool upright = false);

  // `value` written by the printf pattern (one double conversion, such as
  // "%.2f"), for labels and captions.
  static std::string format(char const* pattern, double value);

  // The width of the whole drawing area, in pixels.
  int width() const { return m_size * m_panels; }

  // Colour number i of the demo's palette (ten distinct colours, repeating).
  static std::string const& palette(unsigned int i);

  // Writes the document; returns false (with errno set) when the file cannot
  // be written.
  bool save(std::string const& path) const;

 private:
  double px(double u) const;
  double py(double v) const;

  int m_size;
  int m_panels;
  std::string m_title;
  std::vector<std::string> m_shapes;
};
