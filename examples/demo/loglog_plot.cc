#include "examples/demo/loglog_plot.h"

#include <algorithm>
#include <cmath>

#include "examples/demo/gallery.h"
#include "examples/demo/svg_canvas.h"

namespace {

// The plot area inside the canvas's unit square, leaving room for the tick
// labels below and left and for the legend on the right.
constexpr double k_left = 0.11, k_right = 0.66, k_bottom = 0.09, k_top = 0.97;
constexpr int k_size = 480;
// Guides stay this factor (a quarter of a decade) above every point.
double const k_guide_margin = std::pow(10.0, 0.25);
// The guides' span: the last 2^4 of the x range.
constexpr double k_guide_span = 16.0;
// Width of one character of the 10-pixel guide labels, in canvas units.
constexpr double k_label_char = 6.0 / k_size;

char const* const k_dashes[3] = {"", "7 4", "2 3"};

}  // namespace

LogLogPlot::LogLogPlot(std::string const& title, std::string const& x_label,
                       std::string const& y_label)
    : m_title(title), m_x_label(x_label), m_y_label(y_label) {}

void LogLogPlot::add_series(std::string const& name, std::vector<double> const& x,
                            std::vector<double> const& y, std::string const& note) {
  Series series{name, note, {}, {}};
  for (std::size_t k = 0; k < x.size() && k < y.size(); ++k) {
    if (x[k] > 0.0 && y[k] > 0.0) {
      series.x.push_back(x[k]);
      series.y.push_back(y[k]);
    }
  }
  m_series.push_back(series);
}

void LogLogPlot::add_guide(double slope, std::string const& label) {
  m_guides.push_back(Guide{slope, label});
}

double LogLogPlot::guide_start(double x_start) const {
  double y_start = 0.0;
  for (Guide const& g : m_guides) {
    for (Series const& s : m_series) {
      for (std::size_t k = 0; k < s.x.size(); ++k) {
        if (s.x[k] >= x_start)
          y_start =
              std::max(y_start, k_guide_margin * s.y[k] * std::pow(x_start / s.x[k], g.slope));
      }
    }
  }
  return y_start;
}

bool LogLogPlot::save(Gallery& gallery, std::string const& file, std::string const& caption) const {
  double x_min = 1e300, x_max = 0.0, lo = 1e300, hi = 0.0;
  for (Series const& s : m_series) {
    for (std::size_t k = 0; k < s.x.size(); ++k) {
      x_min = std::min(x_min, s.x[k]), x_max = std::max(x_max, s.x[k]);
      lo = std::min(lo, s.y[k]), hi = std::max(hi, s.y[k]);
    }
  }
  if (!(hi > 0.0) || !(x_max > x_min))
    return true;

  // The guides' common start: at x_start, high enough that each guide
  // passes k_guide_margin above every point to its right; the y range grows
  // to hold it.
  double const x_start = std::max(x_min, x_max / k_guide_span);
  double const y_start = guide_start(x_start);
  double const y0 = std::floor(std::log10(lo));
  double const y1 = std::max(y0 + 1.0, std::ceil(std::log10(std::max(hi, y_start))));
  double const lx0 = std::log10(x_min), lx1 = std::log10(x_max);
  auto px = [&](double x) {
    return k_left + (std::log10(x) - lx0) / (lx1 - lx0) * (k_right - k_left);
  };
  auto py = [&](double y) {
    return k_bottom + (std::log10(y) - y0) / (y1 - y0) * (k_top - k_bottom);
  };

  SvgCanvas canvas(k_size, m_title);
  canvas.box(k_left, k_bottom, k_right, k_top, "#999", 1.0);
  for (double x = x_min; x <= x_max * 1.0000001; x *= 4.0) {
    canvas.line(px(x), k_bottom, px(x), k_top, "#eee", 1.0);
    canvas.text(px(x), k_bottom - 0.04, SvgCanvas::format("%.0f", x), 11, "#333", "middle");
  }
  for (double d = y0; d <= y1; d += 1.0) {
    double const v = py(std::pow(10.0, d));
    canvas.line(k_left, v, k_right, v, "#eee", 1.0);
    canvas.text(k_left - 0.01, v - 0.01, SvgCanvas::format("1e%.0f", d), 11, "#333", "end");
  }
  canvas.text(0.5 * (k_left + k_right), 0.005, m_x_label, 12, "#333", "middle");
  canvas.text(0.025, 0.5 * (k_bottom + k_top), m_y_label, 12, "#333", "middle", true);

  // Guides, thin and dashed grey under the data; each label right-aligned
  // at the guide's lower end, its baseline just above the line where the
  // text begins (the line falls to the right, so the text stays above it).
  for (Guide const& g : m_guides) {
    double const y_end = y_start * std::pow(x_max / x_start, g.slope);
    double const u0 = px(x_start), v0 = py(y_start), u1 = px(x_max), v1 = py(y_end);
    canvas.line(u0, v0, u1, v1, "#999", 1.0, "4 3");
    double const text_end = u1 - 0.01;
    double const text_start = text_end - k_label_char * g.label.size();
    double const v_at_start = v0 + (v1 - v0) * (text_start - u0) / (u1 - u0);
    canvas.text(text_end, v_at_start + 0.012, g.label, 10, "#777", "end");
  }

  for (std::size_t s = 0; s < m_series.size(); ++s) {
    Series const& series = m_series[s];
    std::string const& color = SvgCanvas::palette(static_cast<unsigned int>(s));
    std::string const dash = k_dashes[(s / 3) % 3];
    unsigned int const shape = static_cast<unsigned int>(s % 3);
    bool const hollow = !dash.empty();
    for (std::size_t k = 1; k < series.x.size(); ++k) {
      canvas.line(px(series.x[k - 1]), py(series.y[k - 1]), px(series.x[k]), py(series.y[k]), color,
                  2.0, dash);
    }
    for (std::size_t k = 0; k < series.x.size(); ++k)
      canvas.marker(px(series.x[k]), py(series.y[k]), shape, 3.0, color, hollow);
    // The legend, right of the plot, in the order of the series.
    double const legend_v = k_top - 0.02 - 0.05 * s;
    canvas.line(k_right + 0.02, legend_v, k_right + 0.08, legend_v, color, 2.0, dash);
    canvas.marker(k_right + 0.05, legend_v, shape, 3.0, color, hollow);
    canvas.text(k_right + 0.09, legend_v - 0.01, series.name, 11, "#333", "start");
    if (!series.note.empty())
      canvas.text(k_right + 0.09, legend_v - 0.032, series.note, 10, "#777", "start");
  }
  return gallery.save(canvas, file, caption);
}
