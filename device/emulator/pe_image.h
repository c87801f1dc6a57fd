// The image: a PE32 file for Windows CE on ARM, read and checked.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace emulator {

// A file that is no image this loader would trust; the text says what is wrong with it.
struct BadImage : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct ImageSection {
  std::string name;
  std::uint32_t rva = 0;
  std::uint32_t bytes = 0;  // in memory
  bool writable = false;
  bool executable = false;
  bool shared = false;  // one memory for all processes that load the image
};

enum class ImageKind : std::uint8_t { Library, Program };  // DLL, EXE

// What a slot of an import address table is to be filled with.
struct ImageImport {
  std::string dll;             // in lower case
  std::string name;            // empty: by ordinal
  std::uint32_t ordinal = 0;   // when there is no name
  std::uint32_t slot_rva = 0;  // of the table's slot

  std::string InWords() const;  // "coredll.dll Sleep", "ceddk.dll #8"
};

class PeImage {
 public:
  // Throws BadImage.
  static PeImage Parse(const std::vector<std::uint8_t>& file, ImageKind kind = ImageKind::Library);
  static PeImage Load(const std::string& path, ImageKind kind = ImageKind::Library);

  std::uint16_t MachineNumber() const { return machine_number_; }  // 0x01C0 ARM, 0x01C2 Thumb
  bool Relocatable() const { return relocatable_; }

  std::uint32_t PreferredBase() const { return preferred_base_; }
  // In memory, a multiple of the page size.
  std::uint32_t Bytes() const { return static_cast<std::uint32_t>(memory_.size()); }
  std::uint32_t EntryRva() const { return entry_rva_; }
  // Of a program's threads, as its header asks for it; 0: the system's default.
  std::uint32_t StackBytes() const { return stack_bytes_; }
  const std::vector<ImageSection>& Sections() const { return sections_; }
  const std::vector<ImageImport>& Imports() const { return imports_; }
  const std::map<std::string, std::uint32_t>& Exports() const { return exports_; }  // name to RVA
  // Ordinal to RVA, of all exports.
  const std::map<std::uint32_t, std::uint32_t>& ExportOrdinals() const { return ordinals_; }
  const std::vector<std::uint32_t>& Relocations() const { return relocations_; }  // RVAs of words

  // The function table that the system unwinds by: its offset and its entries of two words, the
  // first the address of a function.
  std::uint32_t FunctionTableRva() const { return function_table_rva_; }
  std::uint32_t FunctionCount() const { return function_count_; }

  // The file's version, none when it has no version resource.
  const std::optional<std::array<std::uint16_t, 4>>& Version() const { return version_; }

  // The image as it stands in memory at `base`, imports unbound. `without` leaves one relocation
  // out, so that a test can tell whether it matters.
  std::vector<std::uint8_t> At(std::uint32_t base, std::optional<std::size_t> without = {}) const;

 private:
  std::uint16_t machine_number_ = 0;
  bool relocatable_ = true;
  std::uint32_t preferred_base_ = 0;
  std::uint32_t entry_rva_ = 0;
  std::uint32_t stack_bytes_ = 0;
  std::uint32_t function_table_rva_ = 0;
  std::uint32_t function_count_ = 0;
  std::vector<std::uint8_t> memory_;  // at the preferred base
  std::vector<ImageSection> sections_;
  std::vector<ImageImport> imports_;
  std::map<std::string, std::uint32_t> exports_;
  std::map<std::uint32_t, std::uint32_t> ordinals_;
  std::optional<std::array<std::uint16_t, 4>> version_;
  std::vector<std::uint32_t> relocations_;

  friend class PeReader;
};

}  // namespace emulator
