#include "tests/device/ceimage/elf_builder.h"

#include <algorithm>
#include <map>
#include <stdexcept>

namespace ceimage {
namespace {

constexpr std::uint32_t kHeaderBytes = 52;
constexpr std::uint32_t kTypeContent = 1;
constexpr std::uint32_t kTypeSymbols = 2;
constexpr std::uint32_t kTypeTexts = 3;
constexpr std::uint32_t kTypeZeros = 8;

// Texts one after the other, each found by where it begins.
class Texts {
 public:
  std::uint32_t Add(const std::string& text) {
    const auto at = static_cast<std::uint32_t>(bytes_.size());
    AppendText(bytes_, text, text.size() + 1);
    return at;
  }
  const Bytes& bytes() const { return bytes_; }

 private:
  Bytes bytes_ = {0};
};

class SectionTable {
 public:
  std::uint32_t Add(const std::string& name, std::uint32_t type, std::uint32_t flags,
                    std::uint32_t address, const Bytes& content, std::uint32_t size,
                    std::uint32_t link = 0, std::uint32_t info = 0) {
    for (const std::uint32_t word :
         {names_.Add(name), type, flags, address,
          kHeaderBytes + static_cast<std::uint32_t>(contents_.size()), size, link, info, 4u, 0u}) {
      Append32(headers_, word);
    }
    Append(contents_, content);
    Align(contents_, 4);
    return count_++;
  }
  std::uint32_t AddNames() {
    Texts names = names_;
    names.Add(".shstrtab");
    return Add(".shstrtab", kTypeTexts, 0, 0, names.bytes(),
               static_cast<std::uint32_t>(names.bytes().size()));
  }
  std::uint32_t count() const { return count_; }
  const Bytes& headers() const { return headers_; }
  const Bytes& contents() const { return contents_; }

 private:
  Texts names_;
  Bytes headers_ = Bytes(40);  // the first section stands for none
  Bytes contents_;
  std::uint32_t count_ = 1;
};

std::uint32_t Size(const Bytes& bytes) { return static_cast<std::uint32_t>(bytes.size()); }

template <typename List>
auto& Find(List& list, const std::string& name) {
  const auto found =
      std::find_if(list.begin(), list.end(), [&](const auto& item) { return item.name == name; });
  if (found == list.end()) throw std::logic_error("no " + name);
  return *found;
}

}  // namespace

Bytes Words(const std::vector<std::uint32_t>& words) {
  Bytes bytes;
  for (const std::uint32_t word : words) Append32(bytes, word);
  return bytes;
}

ElfBuilder::Section& ElfBuilder::Get(const std::string& name) { return Find(sections, name); }
ElfBuilder::Symbol& ElfBuilder::GetSymbol(const std::string& name) { return Find(symbols, name); }

Bytes ElfBuilder::Build() const {
  SectionTable table;
  std::map<std::string, std::uint32_t> numbers;
  for (const Section& section : sections) {
    const std::uint32_t usual = section.content.empty() ? kTypeZeros : kTypeContent;
    numbers[section.name] = table.Add(
        section.name, section.type == 0 ? usual : section.type, section.flags, section.address,
        section.content, section.content.empty() ? section.zeros : Size(section.content));
  }
  Texts names;
  Bytes symbol_bytes(16);
  for (const Symbol& symbol : symbols) {
    Append32(symbol_bytes, names.Add(symbol.name));
    Append32(symbol_bytes, symbol.value);
    Append32(symbol_bytes, symbol.size);
    Append16(symbol_bytes, symbol.type);
    Append16(symbol_bytes, symbol.defined ? 1 : 0);
  }
  const std::uint32_t texts =
      table.Add(".strtab", kTypeTexts, 0, 0, names.bytes(), Size(names.bytes()));
  const std::uint32_t symbol_table =
      table.Add(".symtab", kTypeSymbols, 0, 0, symbol_bytes, Size(symbol_bytes), texts);
  std::map<std::string, Bytes> per_section;
  for (const Relocation& relocation : relocations) {
    Append32(per_section[relocation.section], relocation.address);
    Append32(per_section[relocation.section], 1u << 8 | relocation.type);
  }
  for (const auto& [name, bytes] : per_section) {
    table.Add(".rel" + name, relocation_type, 0, 0, bytes, Size(bytes), symbol_table,
              numbers.at(name));
  }
  const std::uint32_t section_names = table.AddNames();

  Bytes file = Words({0x464C457F, 0x00010101, 0, 0});
  Append16(file, kind);
  Append16(file, machine);
  for (const std::uint32_t word :
       {1u, entry, 0u, kHeaderBytes + Size(table.contents()), 0x05000200u}) {
    Append32(file, word);
  }
  for (const std::uint32_t half : {kHeaderBytes, 32u, 0u, 40u, table.count(), section_names}) {
    Append16(file, half);
  }
  Append(file, table.contents());
  Append(file, table.headers());
  return file;
}

ElfBuilder SmallLibrary() {
  constexpr std::uint32_t kText = kTestBase + 0x1000;
  constexpr std::uint32_t kTables = kText + 0x20;
  constexpr std::uint32_t kIat = kTestBase + 0x2000;
  constexpr std::uint32_t kData = kIat + 8;
  constexpr std::uint32_t kShared = kTestBase + 0x3000;

  // Offsets from the image's start.
  constexpr std::uint32_t kDirectory = 0x1020;  // imports: 40 bytes, then look-ups, then exports
  constexpr std::uint32_t kLookups = kDirectory + 40;
  constexpr std::uint32_t kExports = kLookups + 8;
  constexpr std::uint32_t kAddresses = kExports + 40;
  constexpr std::uint32_t kNames = kAddresses + 8;
  constexpr std::uint32_t kTexts = kNames + 12;
  Bytes tables = Words({kLookups, 0,          0,          kTexts,     0x2000,     0,
                        0,        0,          0,          0,          0x80000008, 0,  //
                        0,        0,          0,          kTexts,     1,          2,
                        2,        kAddresses, kNames,     kNames + 8,  //
                        0x1000,   0x1000,     kTexts + 4, kTexts + 8, 0x00010000});
  AppendText(tables, "dll", 4);
  AppendText(tables, "one", 4);
  AppendText(tables, "two", 4);

  ElfBuilder elf;
  elf.entry = kText;
  elf.sections = {
      // push {lr}; sub sp, sp, #4; bl +0; bx lr; the address of .data
      {".text", kFlagsCode, kText,
       Words({0xE52DE004, 0xE24DD004, 0xEBFFFFFE, 0xE12FFF1E, kData, 0, 0, 0}), 0, 0},
      {".tables", kFlagsRead, kTables, tables, 0, 0},
      {".iat", kFlagsData, kIat, Words({0x80000008, 0}), 0, 0},
      {".data", kFlagsData, kData, Words({kText, 7}), 0, 0},
      {".bss", kFlagsData, kData + 8, {}, 0x40, 0},
      {".shared", kFlagsData, kShared, Words({1}), 0, 0},
      {".comment", 0, 0, Words({0}), 0, 0},
  };
  elf.symbols = {
      {"image_base", kTestBase},
      {"import_directory", kTables},
      {"import_directory_end", kTables + 40},
      {"import_addresses", kIat},
      {"import_addresses_end", kIat + 8},
      {"export_directory", kTestBase + kExports},
      {"export_directory_end", kTables + static_cast<std::uint32_t>(tables.size())},
      {"$a", kText},
      {"$d", kText + 16},
      {"function", kText, 20, 2},
  };
  elf.relocations = {{".text", kText + 8, 28},    {".text", kText + 12, 40},
                     {".text", kText + 16, 2},    {".tables", kTables, 2},
                     {".data", kData, 2},         {".comment", 0, 2},
                     {".tables", kTables + 12, 2}};
  return elf;
}

Bytes ResourceFile(const std::vector<TestResource>& resources) {
  Bytes file = Words({0, 32, 0xFFFF, 0xFFFF, 0, 0, 0, 0});
  for (const TestResource& resource : resources) {
    Append32(file, 5);
    Append32(file, 32);
    Append16(file, 0xFFFF);
    Append16(file, resource.type);
    Append16(file, resource.name == 0 ? 'N' : 0xFFFF);
    Append16(file, resource.name);
    Append32(file, 0);
    Append16(file, 0);
    Append16(file, resource.language);
    Append32(file, 0);
    Append32(file, 0);
    for (int i = 0; i < 5; ++i) file.push_back(static_cast<std::uint8_t>(resource.type + i));
    Align(file, 4);
  }
  return file;
}

}  // namespace ceimage
