#include "sim/picture/png.h"

// The whole of the library stands here, and nothing of it anywhere else.
#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STBI_WRITE_NO_STDIO
#include <stb/stb_image_write.h>

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
  static_assert(sizeof(Rgb) == 3, "pixels are packed bytes");
  files::OutputFile file(path);
  const auto write = [](void* stream, void* data, int bytes) {
    static_cast<std::ostream*>(stream)->write(static_cast<const char*>(data), bytes);
  };
  if (stbi_write_png_to_func(write, &file.Stream(), image.width, image.height, sizeof(Rgb),
                             image.pixels.data(), 0) == 0) {
    throw files::FileError("cannot write " + files::Printable(path) + ": out of memory");
  }
  file.Commit();
}

}  // namespace sim
