// What an image for the device asks of the system and offers to others, read from its file.
#pragma once

#include <cstdint>

namespace check {

struct ImageFacts {
  std::uint32_t machine;
  std::uint32_t base;
};

class ImageReader {
 public:
  ImageReader(const std::uint8_t* file, unsigned bytes) : file_(file), bytes_(bytes) {}

  // False when it is no image.
  bool ReadFacts(ImageFacts& facts) const;

  // Offset in memory of the first section that all processes share and may write; 0: none.
  std::uint32_t SharedOffset() const;
  // Offset in memory of what is exported by that name; 0: nothing.
  std::uint32_t ExportOffset(const char* name) const;

  // The next import: its library, and its name or, when that is null, its number. False at the end.
  bool Next(const char*& library, const char*& name, std::uint32_t& number);

 private:
  std::uint32_t Word(std::uint32_t position) const;
  std::uint32_t Half(std::uint32_t position) const;
  // Where an offset in memory lies in the file; 0: nowhere.
  std::uint32_t Position(std::uint32_t offset) const;
  // A text that ends in the file; null: none.
  const char* TextAt(std::uint32_t offset) const;
  std::uint32_t Header() const;
  // Of a section's header; 0 behind the last.
  std::uint32_t SectionHeader(std::uint32_t index) const;

  const std::uint8_t* const file_;
  const unsigned bytes_;
  unsigned library_ = 0;  // whose imports are read
  unsigned import_ = 0;
};

}  // namespace check
