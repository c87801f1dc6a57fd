// A compiled resource file (.res) as the resource tree of an image (.rsrc).
#pragma once

#include <cstdint>
#include <vector>

#include "device/ceimage/bytes.h"

namespace ceimage {

struct Resource {
  std::uint16_t type = 0;
  std::uint16_t name = 0;
  std::uint16_t language = 0;
  Bytes content;
};

// Refuses types and names that are texts: the library has none.
std::vector<Resource> ReadResources(ByteView file);

// The tree, for a section at this offset in the image.
Bytes EncodeResources(const std::vector<Resource>& resources, std::uint32_t section_offset);

}  // namespace ceimage
