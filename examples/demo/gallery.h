#pragma once

#include <string>
#include <vector>

class SvgCanvas;

// The demo's pictures: the list of (file, caption) of everything written
// into the output folder, and the index page over it. The picture families
// (PatternPictures, WarpPictures, RayFanPictures, SurfacePictures,
// FrustumPictures, the convergence plots) save their SVGs through save();
// the render lists its PNG with add().
class Gallery {
 public:
  explicit Gallery(std::string const& out_dir);

  // Writes `canvas` as out_dir/file and lists it; false (with errno set)
  // when the file cannot be written.
  bool save(SvgCanvas const& canvas, std::string const& file, std::string const& caption);
  // Lists a picture written by someone else into out_dir.
  void add(std::string const& file, std::string const& caption);
  // Writes index.html listing every picture written so far.
  bool write_index() const;

  struct Entry {
    std::string file;
    std::string caption;
    // Width the index page shows a drawing at, in pixels (its own); 0 for
    // a raster image, shown at its own size up to the page's width.
    int width;
  };
  std::vector<Entry> const& entries() const { return m_entries; }
  // Path of the last file that failed to be written.
  std::string const& failed_path() const { return m_failed; }

 private:
  std::string m_out_dir;
  std::vector<Entry> m_entries;
  std::string m_failed;
};
