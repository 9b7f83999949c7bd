#pragma once

#include <string>
#include <vector>

class SvgCanvas;

// The demo's pictures. Each write_* call draws one family into the output
// folder and records (file, caption) for the index page; other parts of the
// demo save their SVGs through save() or list files they wrote with add().
class Gallery {
 public:
  explicit Gallery(std::string const& out_dir);

  bool write_patterns();
  bool write_warps();
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
  };
  std::vector<Entry> const& entries() const { return m_entries; }
  // Path of the last file that failed to be written.
  std::string const& failed_path() const { return m_failed; }

 private:
  std::string m_out_dir;
  std::vector<Entry> m_entries;
  std::string m_failed;
};
