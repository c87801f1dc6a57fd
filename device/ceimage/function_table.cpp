#include "device/ceimage/function_table.h"

#include <algorithm>
#include <map>

namespace ceimage {
namespace {

// Instructions that move the stack pointer down, whatever their condition, and the copy of it that
// some prologs begin with.
bool MakesRoom(std::uint32_t instruction) {
  constexpr std::uint32_t kCopySp = 0xE1A0C00D;  // mov ip, sp
  const std::uint32_t body = instruction & 0x0FFFFFFF;
  return instruction == kCopySp ||             //
         (body & 0x0FFF0000) == 0x092D0000 ||  // stmdb sp!, {...}
         (body & 0x0FFF0000) == 0x052D0000 ||  // str rn, [sp, #-n]!
         (body & 0x0FFFF000) == 0x024DD000 ||  // sub sp, sp, #n
         (body & 0x0FFFF010) == 0x004DD000;    // sub sp, sp, rn
}

// Which addresses are code: the assembler marks where code and data begin.
class CodeMap {
 public:
  explicit CodeMap(const ElfFile& elf) {
    for (const ElfSymbol& symbol : elf.symbols) {
      const std::string kind = symbol.name.substr(0, 2);
      if (kind == "$t") throw Refusal("There is Thumb code at " + Hex(symbol.value) + ".");
      if (kind == "$a" || kind == "$d") marks_[symbol.value] = kind == "$a";
    }
  }

  bool IsCode(std::uint32_t address) const {
    const auto next = marks_.upper_bound(address);
    return next != marks_.begin() && std::prev(next)->second;
  }

 private:
  std::map<std::uint32_t, bool> marks_;
};

// A few functions decide before they save anything; until then they need no entry either.
FunctionEntry EntryOf(const ElfSymbol& function, const Image& image, const CodeMap& map) {
  const std::uint32_t offset = function.value - image.base;
  if (!IsCode(image, offset)) throw Refusal("Function " + function.name + " lies in no code.");
  const ByteView code = ImageBytes(image, offset, function.size);
  const std::uint32_t count = function.size / 4;
  const auto makes_room = [&](std::uint32_t i) {
    return i < count && map.IsCode(function.value + i * 4) && MakesRoom(Get32(code, i * 4));
  };
  std::uint32_t first = 0;
  while (first < count && !makes_room(first)) ++first;
  std::uint32_t end = first;
  while (makes_room(end)) ++end;
  for (std::uint32_t i = end; i < count; ++i) {
    if (makes_room(i)) {
      throw Refusal("Function " + function.name + " moves the stack at instruction " +
                    std::to_string(i) + ", after its prolog.");
    }
  }
  return {offset + first * 4, count - first, end - first};
}

}  // namespace

std::vector<FunctionEntry> FindFunctions(const ElfFile& elf, const Image& image) {
  const CodeMap map(elf);
  // Names of the same function: the longest counts.
  std::map<std::uint32_t, ElfSymbol> functions;
  for (const ElfSymbol& symbol : elf.symbols) {
    if (symbol.type != kElfFunction) continue;
    if (symbol.value % 4 != 0) throw Refusal("Function " + symbol.name + " is Thumb code.");
    const auto [found, is_new] = functions.emplace(symbol.value, symbol);
    if (!is_new && found->second.size < symbol.size) found->second = symbol;
  }
  std::vector<FunctionEntry> entries;
  std::uint32_t end = 0;
  for (const auto& [address, function] : functions) {
    if (function.size == 0 || function.size % 4 != 0) {
      throw Refusal("Function " + function.name + " is of unknown length.");
    }
    if (address < end) throw Refusal("Function " + function.name + " overlaps the one before.");
    end = address + function.size;
    const FunctionEntry entry = EntryOf(function, image, map);
    if (entry.prolog != 0) entries.push_back(entry);
  }
  return entries;
}

Bytes EncodeFunctions(const std::vector<FunctionEntry>& functions, std::uint32_t base) {
  constexpr std::uint32_t kMostProlog = (1u << 8) - 1;
  constexpr std::uint32_t kMostInstructions = (1u << 22) - 1;
  constexpr std::uint32_t k32BitInstructions = 1u << 30;
  Bytes bytes;
  for (const FunctionEntry& function : functions) {
    if (function.prolog > kMostProlog || function.instructions > kMostInstructions) {
      throw Refusal("The function at offset " + Hex(function.offset) + " is too long.");
    }
    Append32(bytes, base + function.offset);
    Append32(bytes, function.prolog | function.instructions << 8 | k32BitInstructions);
  }
  return bytes;
}

}  // namespace ceimage
