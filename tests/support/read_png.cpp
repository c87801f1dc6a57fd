#include "tests/support/read_png.h"

#include <png.h>

#include <stdexcept>

namespace test {

sim::Image ReadPng(const std::string& path) {
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_file(&png, path.c_str()) == 0) {
    throw std::runtime_error(path + ": " + png.message);
  }
  png.format = PNG_FORMAT_RGB;
  sim::Image image =
      sim::FilledImage(static_cast<int>(png.width), static_cast<int>(png.height), {});
  if (png_image_finish_read(&png, nullptr, image.pixels.data(), 0, nullptr) == 0) {
    throw std::runtime_error(path + ": " + png.message);
  }
  return image;
}

}  // namespace test
