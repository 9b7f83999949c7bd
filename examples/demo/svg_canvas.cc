#include "examples/demo/svg_canvas.h"

#include <cstdio>
#include <fstream>

namespace {
constexpr int k_caption = 28;

std::string number(double x) {
  return SvgCanvas::format("%.2f", x);
}
std::string escaped(std::string const& text) {
  std::string out;
  for (char const c : text) {
    if (c == '&') {
      out += "&amp;";
    } else if (c == '<') {
      out += "&lt;";
    } else if (c == '>') {
      out += "&gt;";
    } else {
      out += c;
    }
  }
  return out;
}
}  // namespace

SvgCanvas::SvgCanvas(int size, std::string const& title, int panels)
    : m_size(size), m_panels(panels), m_title(title) {}

double SvgCanvas::px(double u) const {
  return k_margin + u * m_size;
}
double SvgCanvas::py(double v) const {
  return k_margin + (1.0 - v) * m_size;
}

void SvgCanvas::dot(double u, double v, double r, std::string const& color) {
  m_shapes.push_back("<circle cx=\"" + number(px(u)) + "\" cy=\"" + number(py(v)) + "\" r=\"" +
                     number(r) + "\" fill=\"" + color + "\"/>");
}

void SvgCanvas::box(double u0, double v0, double u1, double v1, std::string const& color,
                    double width) {
  m_shapes.push_back("<rect x=\"" + number(px(u0)) + "\" y=\"" + number(py(v1)) + "\" width=\"" +
                     number((u1 - u0) * m_size) + "\" height=\"" + number((v1 - v0) * m_size) +
                     "\" fill=\"none\" stroke=\"" + color + "\" stroke-width=\"" + number(width) +
                     "\"/>");
}

void SvgCanvas::line(double u0, double v0, double u1, double v1, std::string const& color,
                     double width, std::string const& dash) {
  m_shapes.push_back("<line x1=\"" + number(px(u0)) + "\" y1=\"" + number(py(v0)) + "\" x2=\"" +
                     number(px(u1)) + "\" y2=\"" + number(py(v1)) + "\" stroke=\"" + color +
                     "\" stroke-width=\"" + number(width) + "\"" +
                     (dash.empty() ? "" : " stroke-dasharray=\"" + dash + "\"") + "/>");
}

void SvgCanvas::marker(double u, double v, unsigned int shape, double r, std::string const& color,
                       bool hollow) {
  std::string const paint = "\" fill=\"" + (hollow ? std::string("white") : color) +
                            "\" stroke=\"" + color + "\" stroke-width=\"1.2\"/>";
  double const x = px(u), y = py(v);
  switch (shape % 3) {
    case 0:
      m_shapes.push_back("<circle cx=\"" + number(x) + "\" cy=\"" + number(y) + "\" r=\"" +
                         number(r) + paint);
      break;
    case 1:
      m_shapes.push_back("<rect x=\"" + number(x - r) + "\" y=\"" + number(y - r) + "\" width=\"" +
                         number(2.0 * r) + "\" height=\"" + number(2.0 * r) + paint);
      break;
    default:
      // Point up, the same area as the circle's bounding box roughly.
      m_shapes.push_back("<polygon points=\"" + number(x) + "," + number(y - 1.3 * r) + " " +
                         number(x - 1.15 * r) + "," + number(y + 0.7 * r) + " " +
                         number(x + 1.15 * r) + "," + number(y + 0.7 * r) + paint);
      break;
  }
}

void SvgCanvas::circle(double u, double v, double r, std::string const& color, double width) {
  m_shapes.push_back("<circle cx=\"" + number(px(u)) + "\" cy=\"" + number(py(v)) + "\" r=\"" +
                     number(r * m_size) + "\" fill=\"none\" stroke=\"" + color +
                     "\" stroke-width=\"" + number(width) + "\"/>");
}

void SvgCanvas::polygon(std::vector<double> const& uv, std::string const& stroke,
                        std::string const& fill, double width) {
  std::string points;
  for (std::size_t i = 0; i + 1 < uv.size(); i += 2)
    points += (i ? " " : "") + number(px(uv[i])) + "," + number(py(uv[i + 1]));
  m_shapes.push_back("<polygon points=\"" + points + "\" fill=\"" + fill + "\" stroke=\"" + stroke +
                     "\" stroke-width=\"" + number(width) + "\"/>");
}

void SvgCanvas::text(double u, double v, std::string const& text, double size,
                     std::string const& color, std::string const& anchor, bool upright) {
  std::string const x = number(px(u)), y = number(py(v));
  m_shapes.push_back("<text x=\"" + x + "\" y=\"" + y +
                     (upright ? "\" transform=\"rotate(-90 " + x + " " + y + ")" : std::string()) +
                     "\" font-family=\"sans-serif\" font-size=\"" + number(size) + "\" fill=\"" +
                     color + "\" text-anchor=\"" + anchor + "\">" + escaped(text) + "</text>");
}

std::string SvgCanvas::format(char const* pattern, double value) {
  char buffer[64];
  std::snprintf(buffer, sizeof(buffer), pattern, value);
  return buffer;
}

std::string const& SvgCanvas::palette(unsigned int i) {
  static std::string const colors[] = {"#1f77b4", "#ff7f0e", "#2ca02c", "#d62728", "#9467bd",
                                       "#8c564b", "#e377c2", "#17becf", "#7f7f7f", "#bcbd22"};
  return colors[i % 10];
}

bool SvgCanvas::save(std::string const& path) const {
  std::ofstream out(path);
  if (!out)
    return false;
  int const w = width() + 2 * k_margin;
  int const h = m_size + 2 * k_margin + k_caption;
  out << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << w << "\" height=\"" << h
      << "\" viewBox=\"0 0 " << w << ' ' << h << "\">\n"
      << "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n"
      << "<rect x=\"" << k_margin << "\" y=\"" << k_margin << "\" width=\"" << width()
      << "\" height=\"" << m_size << "\" fill=\"none\" stroke=\"#999\"/>\n";
  for (std::string const& shape : m_shapes)
    out << shape << '\n';
  out << "<text x=\"" << k_margin << "\" y=\"" << (m_size + 2 * k_margin + k_caption / 2 + 4)
      << "\" font-family=\"sans-serif\" font-size=\"14\">" << escaped(m_title)
      << "</text>\n</svg>\n";
  out.close();
  return static_cast<bool>(out);
}
