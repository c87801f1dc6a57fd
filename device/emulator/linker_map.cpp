#include "device/emulator/linker_map.h"

#include <cxxabi.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <sstream>

#include "files/input.h"
#include "sim/text.h"

namespace emulator {
namespace {

// ".text._Z6SetPipi" as kind and name.
LinkedSection Named(const std::string& section) {
  constexpr std::array<std::string_view, 5> kKinds = {"text", "rodata", "data", "bss", "shared"};
  for (const std::string_view kind : kKinds) {
    const std::string head = '.' + std::string(kind) + '.';
    if (section.starts_with(head)) return {std::string(kind), section.substr(head.size())};
  }
  return {section.substr(1), ""};
}

// "0x10001000", none for what is no number of 32 bits.
std::optional<std::uint32_t> HexNumber(std::string_view text) {
  if (!text.starts_with("0x")) return std::nullopt;
  std::uint32_t value = 0;
  const auto [end, error] = std::from_chars(text.begin() + 2, text.end(), value, 16);
  if (error != std::errc{} || end != text.end()) return std::nullopt;
  return value;
}

// Where the compiler's mark of a function's texts begins in a name: ".str2.2" for wide ones.
std::size_t TextMark(const std::string& name) {
  const std::size_t at = name.rfind(".str");
  return at == std::string::npos || at + 5 >= name.size() || name[at + 5] != '.' ? name.size() : at;
}

// A text of the image, in quotes; what is no printable character is left out.
std::string Quoted(const std::vector<std::uint8_t>& memory, std::size_t at, unsigned unit) {
  std::string text;
  for (; at + unit <= memory.size(); at += unit) {
    const unsigned value = memory[at] | (unit == 1 ? 0u : memory[at + 1] * 0x100u);
    if (value == 0) break;
    if (value >= ' ' && value <= '~') text.push_back(static_cast<char>(value));
  }
  return '"' + text + '"';
}

}  // namespace

std::string LinkedSection::InWords() const {
  if (name.empty()) return kind;
  const std::string decorated = name.substr(0, TextMark(name));
  int status = 0;
  const std::unique_ptr<char, void (*)(void*)> plain(
      abi::__cxa_demangle(decorated.c_str(), nullptr, nullptr, &status), std::free);
  return status == 0 ? plain.get() : decorated;
}

unsigned LinkedSection::TextUnit() const {
  const std::size_t mark = TextMark(name);
  if (kind != "rodata" || mark == name.size()) return 0;
  return name[mark + 4] == '2' ? 2 : 1;
}

// Behind the heading a section is a line " NAME ADDRESS BYTES FILE", or two when its name is long:
// " NAME" and the rest.
LinkerMap::LinkerMap(std::istream& map) {
  bool in_map = false;
  std::string waiting;
  for (std::string line; std::getline(map, line);) {
    in_map = in_map || line == "Linker script and memory map";
    if (!in_map || line.size() < 2 || line[0] != ' ') continue;
    std::istringstream words(line);
    std::string name = waiting;
    waiting.clear();
    if (line[1] == '.') words >> name;
    std::string address;
    std::string bytes;
    if (!(words >> address)) {
      waiting = name;
      continue;
    }
    if (name.empty() || !(words >> bytes)) continue;
    const auto begin = HexNumber(address);
    const auto size = HexNumber(bytes);
    if (!begin || !size) continue;
    LinkedSection section = Named(name);
    section.address = *begin;
    section.bytes = *size;
    if (section.bytes != 0) sections_.push_back(std::move(section));
  }
}

std::optional<LinkerMap> LinkerMap::Beside(const std::string& image) {
  constexpr std::uint64_t kMost = std::uint64_t{64} << 20;
  try {
    std::istringstream map(
        files::ReadText(std::filesystem::path(image).replace_extension(".map").string(), kMost));
    return LinkerMap(map);
  } catch (const files::FileError&) {
    return std::nullopt;  // names are a help, no more
  }
}

const LinkedSection* LinkerMap::At(std::uint32_t address) const {
  const auto found = std::find_if(sections_.begin(), sections_.end(), [=](const auto& section) {
    return address >= section.address && address - section.address < section.bytes;
  });
  return found == sections_.end() ? nullptr : &*found;
}

const LinkedSection* LinkerMap::Find(const std::string& name) const {
  const auto found = std::find_if(sections_.begin(), sections_.end(), [&](const auto& section) {
    const bool whole = section.kind == "text" || section.kind == "data" || section.kind == "bss";
    return whole && section.name == name;
  });
  return found == sections_.end() ? nullptr : &*found;
}

const LinkedSection* LinkerMap::FindPlain(const std::string& name) const {
  const auto found = std::find_if(sections_.begin(), sections_.end(), [&](const auto& section) {
    if (section.kind != "text") return false;
    const std::string words = section.InWords();
    return words.substr(0, words.find('(')) == name;
  });
  return found == sections_.end() ? nullptr : &*found;
}

std::string NameOfRelocation(const LinkerMap& map, const PeImage& image, std::size_t relocation) {
  const std::uint32_t rva = image.Relocations()[relocation];
  const std::vector<std::uint8_t> memory = image.At(image.PreferredBase());
  std::uint32_t value = 0;
  std::memcpy(&value, &memory.at(rva), sizeof(value));
  const LinkedSection* const holder = map.At(image.PreferredBase() + rva);
  const LinkedSection* const target = map.At(value);
  std::string name = holder == nullptr ? sim::Hex(rva, 4) : holder->InWords();
  name += " -> ";
  if (target == nullptr) return name + sim::Hex(value, 8);
  const unsigned unit = target->TextUnit();
  if (unit != 0) return name + Quoted(memory, value - image.PreferredBase(), unit);
  return name + target->InWords();
}

}  // namespace emulator
