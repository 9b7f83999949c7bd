#pragma once

#include <string>
#include <vector>

class Gallery;

// A log-log line plot of error against count, drawn on an SvgCanvas: the
// axes with a decade grid and tick labels, one curve per series, a legend
// right of the plot, and reference slopes. Series k gets colour k of the
// palette, a dash pattern (solid, dashed, dotted for series 0-2, 3-5, 6-8)
// and a marker shape (circle, square, triangle in turn), so curves that lie
// on each other still tell apart: a dotted curve drawn over a solid one
// leaves it visible between its dots. The convergence and MIS studies draw
// their plots with it.
class LogLogPlot {
 public:
  LogLogPlot(std::string const& title, std::string const& x_label, std::string const& y_label);

  // A curve through the points (x[k], y[k]) with both positive (other
  // points are left out), named in the legend, with `note` (may be empty)
  // in small print under the name.
  void add_series(std::string const& name, std::vector<double> const& x,
                  std::vector<double> const& y, std::string const& note);

  // A reference line of the given log-log slope (-0.5 for N^-1/2),
  // labelled at its lower end. All guides start at one point and run over
  // the last four octaves of the x range; the point is placed so that every
  // guide stays above every series there (the y range grows to hold it), so
  // neither the lines nor their labels cover data.
  void add_guide(double slope, std::string const& label);

  // Draws the plot and saves it through the gallery as `file` with
  // `caption`; false (errno set) when the file cannot be written, and when
  // no series has a point (nothing is written then).
  bool save(Gallery& gallery, std::string const& file, std::string const& caption) const;

 private:
  struct Series {
    std::string name;
    std::string note;
    std::vector<double> x;
    std::vector<double> y;
  };
  struct Guide {
    double slope;
    std::string label;
  };

  // The height at x_start from which every guide clears every point to
  // the right of x_start by the margin.
  double guide_start(double x_start) const;

  std::string m_title;
  std::string m_x_label;
  std::string m_y_label;
  std::vector<Series> m_series;
  std::vector<Guide> m_guides;
};
