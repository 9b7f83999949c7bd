#include "examples/demo/png_writer.h"

#include <png.h>

#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstring>

namespace {

// libpng reports errors by longjmp; the message is kept for the caller.
void on_png_error(png_structp png, png_const_charp message) {
  std::string* error = static_cast<std::string*>(png_get_error_ptr(png));
  *error = message;
  png_longjmp(png, 1);
}

void on_png_warning(png_structp, png_const_charp) {}

}  // namespace

bool write_png_grey(std::string const& path, unsigned int width, unsigned int height,
                    std::vector<std::uint8_t> const& pixels, std::string& error) {
  if (pixels.size() != static_cast<std::size_t>(width) * height) {
    error = "image buffer does not match its size";
    return false;
  }
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (!file) {
    error = "cannot write '" + path + "': " + std::strerror(errno);
    return false;
  }
  std::string png_error;
  png_structp png =
      png_create_write_struct(PNG_LIBPNG_VER_STRING, &png_error, on_png_error, on_png_warning);
  png_infop info = png ? png_create_info_struct(png) : nullptr;
  if (!info) {
    png_destroy_write_struct(&png, nullptr);
    std::fclose(file);
    error = "libpng could not start";
    return false;
  }
  if (setjmp(png_jmpbuf(png))) {
    png_destroy_write_struct(&png, &info);
    std::fclose(file);
    error = "cannot write '" + path + "': " + png_error;
    return false;
  }
  png_init_io(png, file);
  png_set_IHDR(png, info, width, height, 8, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  for (unsigned int y = 0; y < height; ++y) {
    png_write_row(png, &pixels[static_cast<std::size_t>(y) * width]);
  }
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  if (std::fclose(file) != 0) {
    error = "cannot write '" + path + "': " + std::strerror(errno);
    return false;
  }
  return true;
}
