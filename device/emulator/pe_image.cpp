#include "device/emulator/pe_image.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "files/input.h"
#include "files/printable.h"
#include "sim/text.h"
#include "sim/world.h"

namespace emulator {
namespace {

constexpr std::uint32_t kPage = 0x1000;
constexpr std::uint32_t kSectionHeader = 40;
constexpr std::uint32_t kMostBytes = 0x01000000;  // far more than the library can ever need

constexpr std::uint16_t kMachineArm = 0x01C0;
constexpr std::uint16_t kMachineThumb = 0x01C2;
constexpr std::uint16_t kMagicPe32 = 0x010B;
constexpr std::uint16_t kSubsystemCe = 9;
constexpr std::uint16_t kRelocationsStripped = 0x0001;
constexpr std::uint16_t kDll = 0x2000;

// The system's tables have 16-bit ordinals; the rest is far more than the library can ever need.
constexpr std::uint32_t kMostExports = 0x10000;
constexpr std::size_t kMostImports = 0x1000;
constexpr std::size_t kMostName = 255;
constexpr std::size_t kMostDllName = 31;  // with its end, what the system has room for

constexpr std::uint32_t kShared = 0x10000000;
constexpr std::uint32_t kExecutable = 0x20000000;
constexpr std::uint32_t kReadable = 0x40000000;
constexpr std::uint32_t kWritable = 0x80000000;

constexpr std::size_t kExportDirectory = 0;
constexpr std::size_t kImportDirectory = 1;
constexpr std::size_t kResourceDirectory = 2;
constexpr std::size_t kFunctionDirectory = 3;
constexpr std::size_t kRelocationDirectory = 5;

constexpr unsigned kPadding = 0;  // types of relocations
constexpr unsigned kHighLow = 3;

std::string Address(std::uint32_t value) { return sim::Hex(value, 8); }

[[noreturn]] void Refuse(const std::string& what) { throw BadImage(what); }

// Little-endian numbers and texts, never from outside.
class Data {
 public:
  Data(const std::vector<std::uint8_t>& bytes, const char* name) : bytes_(bytes), name_(name) {}

  std::uint16_t Half(std::uint32_t at) const { return static_cast<std::uint16_t>(Number(at, 2)); }
  std::uint32_t Word(std::uint32_t at) const { return Number(at, 4); }
  // The name of `what`: 1 to `most` printable characters.
  std::string Name(std::uint32_t at, const std::string& what, std::size_t most = kMostName) const {
    const auto begin = bytes_.begin() + static_cast<std::ptrdiff_t>(Check(at, 1));
    const auto room = std::min(most + 1, bytes_.size() - at);
    const auto last = begin + static_cast<std::ptrdiff_t>(room);
    const auto end = std::find(begin, last, std::uint8_t{0});
    if (end == begin) Refuse(what + " without a name at " + Address(at));
    if (end == last) {
      Refuse(room > most ? what + " with a name of more than " + std::to_string(most) +
                               " characters at " + Address(at)
                         : "a text without an end at " + Address(at));
    }
    if (!std::all_of(begin, end, [](std::uint8_t c) { return c > ' ' && c <= '~'; })) {
      Refuse(what + " whose name is no ASCII text at " + Address(at));
    }
    return {begin, end};
  }
  std::size_t Check(std::uint32_t at, std::uint32_t count) const {
    if (at > bytes_.size() || count > bytes_.size() - at) {
      Refuse("the " + std::string(name_) + " ends before " + Address(at + count));
    }
    return at;
  }

 private:
  std::uint32_t Number(std::uint32_t at, std::uint32_t count) const {
    Check(at, count);
    std::uint32_t value = 0;
    for (std::uint32_t i = count; i-- > 0;) value = value << 8 | bytes_[at + i];
    return value;
  }

  const std::vector<std::uint8_t>& bytes_;
  const char* name_;
};

struct Directory {
  std::uint32_t rva = 0;
  std::uint32_t bytes = 0;
};

}  // namespace

std::string ImageImport::InWords() const {
  return dll + (name.empty() ? " #" + std::to_string(ordinal) : ' ' + name);
}

class PeReader {
 public:
  PeReader(const std::vector<std::uint8_t>& file, ImageKind kind)
      : bytes_(file), kind_(kind), file_(file, "file"), memory_(image_.memory_, "image") {}

  PeImage Read() {
    ReadHeaders();
    ReadSections();
    ReadExports(Find(kExportDirectory));
    ReadImports(Find(kImportDirectory));
    ReadRelocations(Find(kRelocationDirectory));
    ReadFunctions(Find(kFunctionDirectory));
    ReadVersion(Find(kResourceDirectory));
    return std::move(image_);
  }

 private:
  void ReadHeaders() {
    constexpr std::uint16_t kMz = 0x5A4D;
    constexpr std::uint32_t kPe = 0x00004550;
    if (file_.Half(0) != kMz) Refuse("no MZ at the start");
    const std::uint32_t pe = file_.Word(0x3C);
    if (pe > bytes_.size() || file_.Word(pe) != kPe) Refuse("no PE header");
    const std::uint32_t coff = pe + 4;
    const std::uint16_t machine = file_.Half(coff);
    if (machine != kMachineArm && machine != kMachineThumb) {
      Refuse("machine " + sim::Hex(machine, 4) + ", not ARM");
    }
    section_count_ = file_.Half(coff + 2);
    const std::uint16_t optional_bytes = file_.Half(coff + 16);
    const std::uint16_t characteristics = file_.Half(coff + 18);
    image_.machine_number_ = machine;
    image_.relocatable_ = (characteristics & kRelocationsStripped) == 0;
    const bool dll = (characteristics & kDll) != 0;
    if (kind_ == ImageKind::Program) {
      if (dll) Refuse("a DLL, and no program");
    } else {
      if (!dll) Refuse("no DLL");
      if (!image_.relocatable_) Refuse("the relocations are stripped");
    }

    optional_ = coff + 20;
    if (optional_bytes < 96 || file_.Half(optional_) != kMagicPe32) Refuse("not PE32");
    image_.entry_rva_ = file_.Word(optional_ + 16);
    image_.preferred_base_ = file_.Word(optional_ + 28);
    const std::uint32_t section_alignment = file_.Word(optional_ + 32);
    if (section_alignment == 0 || section_alignment % kPage != 0) {
      Refuse("section alignment " + sim::Hex(section_alignment, 4) + ", not whole pages");
    }
    file_alignment_ = file_.Word(optional_ + 36);
    if (file_alignment_ < 0x200 || !std::has_single_bit(file_alignment_)) {
      Refuse("file alignment " + sim::Hex(file_alignment_, 4));
    }
    if (image_.preferred_base_ % 0x10000 != 0) Refuse("a base not on 64 KB");
    const std::uint32_t image_bytes = file_.Word(optional_ + 56);
    if (image_bytes == 0 || image_bytes > kMostBytes || image_bytes % kPage != 0) {
      Refuse("image size " + Address(image_bytes));
    }
    image_.memory_.resize(image_bytes);
    if (file_.Half(optional_ + 68) != kSubsystemCe) Refuse("subsystem is not Windows CE");
    image_.stack_bytes_ = file_.Word(optional_ + 72);
    if (file_.Word(optional_ + 76) > image_.stack_bytes_) Refuse("more stack at once than at all");
    directories_ = file_.Word(optional_ + 92);
    if (directories_ > 16 || optional_bytes < 96 + 8 * directories_) Refuse("too many directories");
    first_section_ = optional_ + optional_bytes;
    header_bytes_ = file_.Word(optional_ + 60);
    if (header_bytes_ > kPage || header_bytes_ < first_section_ + section_count_ * kSectionHeader ||
        header_bytes_ % file_alignment_ != 0) {
      Refuse("headers of " + std::to_string(header_bytes_) + " bytes");
    }
  }

  void ReadSections() {
    std::uint32_t end = kPage;  // the headers' page
    for (std::uint32_t i = 0; i < section_count_; ++i) {
      const std::uint32_t at = first_section_ + i * kSectionHeader;
      file_.Check(at, kSectionHeader);
      ImageSection section;
      section.name.assign(bytes_.begin() + at, bytes_.begin() + at + 8);
      section.name.resize(section.name.find_last_not_of('\0') + 1);
      section.bytes = file_.Word(at + 8);
      section.rva = file_.Word(at + 12);
      const std::uint32_t raw_bytes = file_.Word(at + 16);
      const std::uint32_t raw = file_.Word(at + 20);
      const std::uint32_t flags = file_.Word(at + 36);
      section.writable = (flags & kWritable) != 0;
      section.executable = (flags & kExecutable) != 0;
      section.shared = (flags & kShared) != 0;
      if ((flags & kReadable) == 0) Refuse("section " + section.name + " cannot be read");
      if (section.writable && section.executable) {
        Refuse("section " + section.name + " is writable and executable");
      }
      if (section.rva % kPage != 0 || section.rva < end || section.bytes == 0 ||
          section.rva > image_.Bytes() || section.bytes > image_.Bytes() - section.rva) {
        Refuse("section " + section.name + " does not lie behind the last one in the image");
      }
      end = section.rva + section.bytes;
      // What is in the file is padded, and no farther than to whole pages.
      if (raw_bytes > (section.bytes + kPage - 1) / kPage * kPage) {
        Refuse("section " + section.name + " has more in the file than in memory");
      }
      const std::uint32_t copied = std::min(raw_bytes, section.bytes);
      if (raw_bytes != 0 && (raw % file_alignment_ != 0 || raw < header_bytes_)) {
        Refuse("section " + section.name + " is not where a file may have it");
      }
      file_.Check(raw, raw_bytes);
      if (copied != 0) std::memcpy(&image_.memory_[section.rva], &bytes_[raw], copied);
      image_.sections_.push_back(section);
    }
    const ImageSection* entry = SectionAt(image_.entry_rva_, 4);
    if (entry == nullptr || !entry->executable || image_.entry_rva_ % 4 != 0) {
      Refuse("the entry point is in no code");
    }
  }

  const ImageSection* SectionAt(std::uint32_t rva, std::uint32_t count) const {
    for (const ImageSection& section : image_.sections_) {
      if (rva >= section.rva && rva - section.rva < section.bytes &&
          count <= section.bytes - (rva - section.rva)) {
        return &section;
      }
    }
    return nullptr;
  }

  Directory Find(std::size_t index) const {
    if (index >= directories_) return {};
    const auto at = optional_ + 96 + 8 * static_cast<std::uint32_t>(index);
    const Directory found{file_.Word(at), file_.Word(at + 4)};
    if (found.bytes != 0 && SectionAt(found.rva, found.bytes) == nullptr) {
      Refuse("directory " + std::to_string(index) + " lies in no section");
    }
    return found;
  }

  void ReadExports(Directory directory) {
    if (directory.bytes == 0) return;
    const std::uint32_t functions = memory_.Word(directory.rva + 20);
    const std::uint32_t names = memory_.Word(directory.rva + 24);
    const std::uint32_t addresses = memory_.Word(directory.rva + 28);
    const std::uint32_t name_table = memory_.Word(directory.rva + 32);
    const std::uint32_t ordinals = memory_.Word(directory.rva + 36);
    memory_.Check(name_table, 0);
    const std::uint32_t first_ordinal = memory_.Word(directory.rva + 16);
    if (functions > kMostExports) Refuse(std::to_string(functions) + " exported functions");
    for (std::uint32_t i = 0; i < functions; ++i) {
      const std::uint32_t rva = memory_.Word(addresses + 4 * i);
      if (rva != 0) image_.ordinals_[first_ordinal + i] = rva;
    }
    if (names > kMostExports) Refuse(std::to_string(names) + " exported names");
    std::string last;
    for (std::uint32_t i = 0; i < names; ++i) {
      const std::string name = memory_.Name(memory_.Word(name_table + 4 * i), "an export");
      // The system looks for a name by halving.
      if (i != 0 && name <= last) Refuse("exported names out of order at " + name);
      last = name;
      const std::uint32_t index = memory_.Half(ordinals + 2 * i);
      if (index >= functions) Refuse("export " + name + " has no function");
      const std::uint32_t rva = memory_.Word(addresses + 4 * index);
      if (rva >= directory.rva && rva - directory.rva < directory.bytes) {
        Refuse("export " + name + " is forwarded");
      }
      const ImageSection* section = SectionAt(rva, 4);
      if (section == nullptr || !section->executable) Refuse("export " + name + " is no code");
      image_.exports_[name] = rva;
    }
  }

  void ReadImports(Directory directory) {
    constexpr std::uint32_t kDescriptor = 20;
    constexpr std::uint32_t kByOrdinal = 0x80000000;
    if (directory.bytes == 0) return;
    for (std::uint32_t at = directory.rva;; at += kDescriptor) {
      memory_.Check(at, kDescriptor);
      const std::uint32_t dll_name = memory_.Word(at + 12);
      const std::uint32_t slots = memory_.Word(at + 16);
      if (dll_name == 0 && slots == 0) break;
      std::uint32_t lookup = memory_.Word(at);
      if (lookup == 0) lookup = slots;
      const std::string dll =
          sim::ToLower(memory_.Name(dll_name, "an imported library", kMostDllName));
      for (std::uint32_t i = 0; memory_.Word(lookup + 4 * i) != 0; ++i) {
        const std::uint32_t entry = memory_.Word(lookup + 4 * i);
        ImageImport import;
        import.dll = dll;
        import.slot_rva = slots + 4 * i;
        if ((entry & kByOrdinal) != 0) {
          import.ordinal = entry & 0xFFFF;
        } else {
          import.name = memory_.Name(entry + 2, "an import of " + dll);
        }
        if (import.slot_rva % 4 != 0 || SectionAt(import.slot_rva, 4) == nullptr) {
          Refuse("the slot of " + import.InWords() + " lies in no section");
        }
        if (image_.imports_.size() == kMostImports) Refuse("too many imports");
        image_.imports_.push_back(std::move(import));
      }
    }
  }

  void ReadRelocations(Directory directory) {
    constexpr std::uint32_t kBlockHeader = 8;
    std::uint32_t at = directory.rva;
    const std::uint32_t end = directory.rva + directory.bytes;
    while (at < end) {
      const std::uint32_t page = memory_.Word(at);
      const std::uint32_t bytes = memory_.Word(at + 4);
      if (bytes < kBlockHeader || bytes % 4 != 0 || bytes > end - at || page % kPage != 0) {
        Refuse("a relocation block of " + std::to_string(bytes) + " bytes at " + Address(at));
      }
      for (std::uint32_t i = kBlockHeader; i < bytes; i += 2) {
        const std::uint16_t entry = memory_.Half(at + i);
        if (entry >> 12 == kPadding) continue;
        if (entry >> 12 != kHighLow) {
          Refuse("a relocation of type " + std::to_string(entry >> 12) + " at " + Address(at + i));
        }
        const std::uint32_t rva = page + (entry & 0xFFFu);
        if (rva % 4 != 0 || SectionAt(rva, 4) == nullptr) {
          Refuse("a relocation of no word at " + Address(rva));
        }
        const std::uint32_t target = memory_.Word(rva) - image_.preferred_base_;
        // One behind the last byte is the end of a table, and still an address of ours.
        if (target > image_.Bytes())
          Refuse("a relocation of what is no address at " + Address(rva));
        image_.relocations_.push_back(rva);
      }
      at += bytes;
    }
    std::vector<std::uint32_t> sorted = image_.relocations_;
    std::sort(sorted.begin(), sorted.end());
    const auto twice = std::adjacent_find(sorted.begin(), sorted.end());
    if (twice != sorted.end()) Refuse("two relocations at " + sim::Hex(*twice));
  }

  void ReadFunctions(Directory directory) {
    constexpr std::uint32_t kEntryBytes = 8;
    if (directory.rva % 4 != 0 || directory.bytes % kEntryBytes != 0) {
      Refuse("a function table of " + std::to_string(directory.bytes) + " bytes");
    }
    image_.function_table_rva_ = directory.rva;
    image_.function_count_ = directory.bytes / kEntryBytes;
  }

  // Type, name and language lead to the resource; of each the first that fits.
  void ReadVersion(Directory directory) {
    constexpr std::uint32_t kVersionType = 16;
    constexpr std::uint32_t kFixedInfo = 0x28;
    constexpr std::uint32_t kSignature = 0xFEEF04BD;
    constexpr std::uint32_t kSubdirectory = 0x80000000;
    std::uint32_t at = directory.rva;
    for (unsigned level = 0; level < 3 && directory.bytes != 0; ++level) {
      const std::uint32_t entries = memory_.Half(at + 12) + std::uint32_t{memory_.Half(at + 14)};
      std::uint32_t found = 0;
      for (std::uint32_t i = entries; i-- > 0;) {
        const std::uint32_t entry = at + 16 + 8 * i;
        if (level != 0 || memory_.Word(entry) == kVersionType) found = memory_.Word(entry + 4);
      }
      if (found == 0) return;
      if (((found & kSubdirectory) != 0) != (level < 2)) Refuse("resources of a wrong depth");
      at = directory.rva + (found & ~kSubdirectory);
    }
    if (directory.bytes == 0 || memory_.Word(at + 4) < kFixedInfo + 16) return;
    const std::uint32_t info = memory_.Word(at) + kFixedInfo;
    if (memory_.Word(info) != kSignature) return;
    image_.version_ = {memory_.Half(info + 10), memory_.Half(info + 8), memory_.Half(info + 14),
                       memory_.Half(info + 12)};
  }

  const std::vector<std::uint8_t>& bytes_;
  ImageKind kind_;
  PeImage image_;
  Data file_;
  Data memory_;
  std::uint32_t optional_ = 0;
  std::uint32_t file_alignment_ = 0;
  std::uint32_t header_bytes_ = 0;
  std::uint32_t first_section_ = 0;
  std::uint32_t section_count_ = 0;
  std::uint32_t directories_ = 0;
};

PeImage PeImage::Parse(const std::vector<std::uint8_t>& file, ImageKind kind) {
  return PeReader(file, kind).Read();
}

PeImage PeImage::Load(const std::string& path, ImageKind kind) {
  try {
    return Parse(files::ReadBytes(path, 2 * kMostBytes), kind);
  } catch (const files::FileError& error) {
    Refuse(error.what());
  } catch (const BadImage& error) {
    Refuse(files::Printable(path) + ": " + files::Printable(error.what()));
  }
}

std::vector<std::uint8_t> PeImage::At(std::uint32_t base,
                                      std::optional<std::size_t> without) const {
  std::vector<std::uint8_t> memory = memory_;
  const std::uint32_t delta = base - preferred_base_;
  for (std::size_t i = 0; i < relocations_.size(); ++i) {
    if (without == i) continue;
    std::uint32_t word = 0;
    std::memcpy(&word, &memory[relocations_[i]], sizeof(word));
    word += delta;
    std::memcpy(&memory[relocations_[i]], &word, sizeof(word));
  }
  return memory;
}

}  // namespace emulator
