#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Writes an 8-bit grey image of width x height pixels, rows from the top, as
// PNG. Returns false with a message in `error` when the file cannot be
// written.
bool write_png_grey(std::string const& path, unsigned int width, unsigned int height,
                    std::vector<std::uint8_t> const& pixels, std::string& error);
