#include "sim/picture/png.h"

#include <png.h>

#include <stdexcept>

namespace sim {

void WritePng(const Image& image, const std::string& path) {
  static_assert(sizeof(Rgb) == 3, "libpng reads pixels as packed bytes");
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  png.width = static_cast<png_uint_32>(image.width);
  png.height = static_cast<png_uint_32>(image.height);
  png.format = PNG_FORMAT_RGB;
  if (png_image_write_to_file(&png, path.c_str(), 0, image.pixels.data(), 0, nullptr) == 0) {
    throw std::runtime_error(path + ": " + png.message);
  }
}

Image ReadPng(const std::string& path) {
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_file(&png, path.c_str()) == 0) {
    throw std::runtime_error(path + ": " + png.message);
  }
  png.format = PNG_FORMAT_RGB;
  Image image = FilledImage(static_cast<int>(png.width), static_cast<int>(png.height), {});
  if (png_image_finish_read(&png, nullptr, image.pixels.data(), 0, nullptr) == 0) {
    throw std::runtime_error(path + ": " + png.message);
  }
  return image;
}

}  // namespace sim
