// What an image for the device asks of the system, read from its file.
#pragma once

#include <cstdint>

namespace check {

struct ImageFacts {
  std::uint32_t machine;
  std::uint32_t base;
};

class ImportReader {
 public:
  ImportReader(const std::uint8_t* file, unsigned bytes) : file_(file), bytes_(bytes) {}

  // False when it is no image.
  bool ReadFacts(ImageFacts& facts) const;

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

  const std::uint8_t* const file_;
  const unsigned bytes_;
  unsigned library_ = 0;  // whose imports are read
  unsigned import_ = 0;
};

}  // namespace check
