#pragma once

#include <string>
#include <vector>

// The demo's pictures. Each write_* call draws one family into the output
// folder and records (file, caption) for the index page.
class Gallery {
 public:
  explicit Gallery(std::string const& out_dir);

  bool write_patterns();
  bool write_warps();
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
  template <typename Canvas>
  bool save(Canvas const& canvas, std::string const& file, std::string const& caption);

  std::string m_out_dir;
  std::vector<Entry> m_entries;
  std::string m_failed;
};
