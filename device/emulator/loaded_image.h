// An image in the memory of a process: a copy of its own, but for the sections that are shared.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "device/emulator/memory.h"
#include "device/emulator/pe_image.h"

namespace emulator {

struct MappedSection {
  Extent extent;
  bool executable = false;
};

// Gives the memory of a shared section, by its place among the sections; none: the image's own.
using SharedPages = std::function<std::shared_ptr<GuestPages>(std::size_t section)>;

class LoadedImage {
 public:
  // Throws BadImage for a base where it cannot be. `name` stands in messages.
  LoadedImage(PeImage file, std::uint32_t base, std::string name,
              const SharedPages& shared = nullptr);

  const PeImage& File() const { return file_; }
  const std::string& Name() const { return name_; }
  std::uint32_t Base() const { return base_; }
  bool Holds(std::uint32_t address) const {
    return address >= base_ && address - base_ < file_.Bytes();
  }
  const std::vector<MappedSection>& Sections() const { return sections_; }

  // The content as in the file, relocated, imports unbound. `without` leaves a relocation out.
  void Fill(std::optional<std::size_t> without = {});
  // The address of the section that holds it, null when none does.
  std::uint8_t* At(std::uint32_t rva, std::uint32_t bytes) const;
  std::uint32_t Word(std::uint32_t rva) const;
  void SetWord(std::uint32_t rva, std::uint32_t value);
  // What is wrong with the function table: the system finds a function by halving, so the entries
  // must be in order and all of them ARM code. None when all is well.
  std::optional<std::string> FunctionTableFault() const;

 private:
  PeImage file_;
  std::uint32_t base_;
  std::string name_;
  GuestPages pages_;
  std::vector<std::shared_ptr<GuestPages>> shared_;  // by section, null: in pages_
  std::vector<MappedSection> sections_;
};

}  // namespace emulator
