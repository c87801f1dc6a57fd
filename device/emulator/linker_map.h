// The map that the linker wrote beside the image: names of what lies where.
#pragma once

#include <cstdint>
#include <istream>
#include <optional>
#include <string>
#include <vector>

#include "device/emulator/pe_image.h"

namespace emulator {

// The compiler gives each function, variable and function's texts a section of its own.
struct LinkedSection {
  std::string kind;  // "text", "rodata", "data", "bss", "shared", or the whole name
  std::string name;  // as the compiler decorated it; empty when the section has only a kind
  std::uint32_t address = 0;
  std::uint32_t bytes = 0;

  // Of a function as in the source: "TW_Split(unsigned char)".
  std::string InWords() const;
  // Bytes of a character when it holds a function's texts, else 0.
  unsigned TextUnit() const;
};

class LinkerMap {
 public:
  explicit LinkerMap(std::istream& map);
  // The file of the image's name that ends in .map; none when it cannot be read.
  static std::optional<LinkerMap> Beside(const std::string& image);

  // What lies at an address of the image at the base it was linked for, null when nothing does.
  const LinkedSection* At(std::uint32_t address) const;
  // The function or the variable of a decorated name, null when there is none.
  const LinkedSection* Find(const std::string& name) const;
  // The function that the source calls so, whatever its arguments; null when there is none.
  const LinkedSection* FindPlain(const std::string& name) const;

 private:
  std::vector<LinkedSection> sections_;
};

// A relocation of the image, by what has the word and what the word points to, which stay the same
// when addresses move: VexoSDK_Attach() -> ">> NO DRIVER", SetPip(int) -> g_layout.
std::string NameOfRelocation(const LinkerMap& map, const PeImage& image, std::size_t relocation);

}  // namespace emulator
