#include "examples/demo/gallery.h"

#include <fstream>

#include "examples/demo/svg_canvas.h"

Gallery::Gallery(std::string const& out_dir) : m_out_dir(out_dir) {}

bool Gallery::save(SvgCanvas const& canvas, std::string const& file, std::string const& caption) {
  std::string const path = m_out_dir + "/" + file;
  if (!canvas.save(path)) {
    m_failed = path;
    return false;
  }
  m_entries.push_back(Entry{file, caption, canvas.width() + SvgCanvas::k_margin * 2});
  return true;
}

void Gallery::add(std::string const& file, std::string const& caption) {
  m_entries.push_back(Entry{file, caption, 0});
}

bool Gallery::write_index() const {
  std::string const path = m_out_dir + "/index.html";
  std::ofstream out(path);
  if (!out)
    return false;
  out << "<!doctype html>\n<html><head><meta charset=\"utf-8\"><title>sampling demo</title>"
         "<style>body{font-family:sans-serif} figure{display:inline-block;margin:8px;"
         "vertical-align:top} "
         "figure.wide{width:auto;display:block}</style></head><body>\n<h1>sampling demo</h1>\n";
  for (Entry const& e : m_entries) {
    // Raster images (the render) at their own size, drawings at theirs.
    if (e.width == 0) {
      out << "<figure class=\"wide\"><img src=\"" << e.file << "\" style=\"max-width:100%\">";
    } else {
      out << "<figure style=\"width:" << e.width << "px\"><img src=\"" << e.file << "\" width=\""
          << e.width << "\">";
    }
    out << "<figcaption>" << e.caption << "</figcaption></figure>\n";
  }
  out << "</body></html>\n";
  out.close();
  return static_cast<bool>(out);
}
