#include "sim/picture/png.h"

#include <png.h>

#include <stdexcept>
#include <vector>

#include "files/output.h"
#include "files/printable.h"

namespace sim {

void CheckPngName(const std::string& path) {
  if (files::HasEnding(path, ".png")) return;
  throw files::FileError("expected the name of a picture that ends in .png, found '" +
                         files::Printable(path) + "'");
}

void WritePng(const Image& image, const std::string& path) {
  CheckPngName(path);
  static_assert(sizeof(Rgb) == 3, "libpng reads pixels as packed bytes");
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  png.width = static_cast<png_uint_32>(image.width);
  png.height = static_cast<png_uint_32>(image.height);
  png.format = PNG_FORMAT_RGB;
  std::vector<char> bytes(PNG_IMAGE_PNG_SIZE_MAX(png));
  png_alloc_size_t size = bytes.size();
  if (png_image_write_to_memory(&png, bytes.data(), &size, 0, image.pixels.data(), 0, nullptr) ==
      0) {
    throw std::runtime_error(path + ": " + png.message);
  }
  files::OutputFile file(path);
  file.Stream().write(bytes.data(), static_cast<std::streamsize>(size));
  file.Commit();
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
