#pragma once

#include "examples/demo/svg_canvas.h"
#include "platform/math/gmath_matrix4x4.h"
#include "platform/math/gmath_vec3.h"

// Orthographic view of 3D drawings onto an SvgCanvas: the world point
// `centre` lands in the middle of the canvas and `half_extent` world units
// reach its edges. The view looks along the direction of azimuth `azimuth`
// and elevation `elevation` (degrees; elevation 90 looks straight down -z,
// with +x to the right and +y up; elevation 0 and azimuth 90 looks along +y,
// a side view with +x to the right and +z up). On a canvas of several panels
// the view fills panel `panel` (0 the leftmost).
class View3d {
 public:
  View3d(GMathVec3<double> const& centre, double half_extent, double azimuth_degrees,
         double elevation_degrees, unsigned int panel = 0);

  // Canvas coordinates (the panel's unit square) of a world point.
  void project(GMathVec3<double> const& p, double& u, double& v) const;

  void dot(SvgCanvas& canvas, GMathVec3<double> const& p, double r, std::string const& color) const;
  // Line from a to b; `dash` as SvgCanvas::line takes it.
  void line(SvgCanvas& canvas, GMathVec3<double> const& a, GMathVec3<double> const& b,
            std::string const& color, double width, std::string const& dash = "") const;
  // Arrow from a to b: the segment and a small head at b.
  void arrow(SvgCanvas& canvas, GMathVec3<double> const& a, GMathVec3<double> const& b,
             std::string const& color, double width) const;
  // Closed polygon through the points, outlined and filled.
  void polygon(SvgCanvas& canvas, GMathVec3<double> const* points, unsigned int count,
               std::string const& stroke, std::string const& fill, double width) const;

  // The frame's image of the square [-0.5, 0.5]^2 of the plane z = 0 (the
  // plane generator's rectangle), outlined and filled.
  void rectangle(SvgCanvas& canvas, GMathMatrix4x4<double> const& frame, std::string const& stroke,
                 std::string const& fill, double width) const;

  // The frame that places a shape: scale by (sx, sy, sz), turn by `tilt`
  // degrees about x, then by `turn` degrees about z, then move to `position`.
  static GMathMatrix4x4<double> frame(double sx, double sy, double sz, double tilt, double turn,
                                      GMathVec3<double> const& position);

 private:
  GMathVec3<double> m_centre;
  GMathVec3<double> m_right;
  GMathVec3<double> m_up;
  double m_scale;
  double m_panel;
};
