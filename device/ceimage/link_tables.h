// The tables that the system links the image by: its exports and its imports.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "device/ceimage/image_sections.h"

namespace ceimage {

// A part of the image that its header names.
struct Directory {
  std::uint32_t offset = 0;
  std::uint32_t size = 0;
};

// What others find in the image.
struct Exports {
  std::string file;  // as the image calls itself
  std::vector<std::string> names;
};

// Refuse what the system's loader would not take, or would take for something else.
Exports ReadExports(const Image& image, const Directory& exports);
// The addresses that it fills in are all in `addresses`.
void CheckImports(const Image& image, const Directory& imports, const Directory& addresses);

}  // namespace ceimage
