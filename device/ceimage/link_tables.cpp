#include "device/ceimage/link_tables.h"

#include <algorithm>
#include <set>
#include <string>

namespace ceimage {
namespace {

constexpr std::size_t kMostName = 255;
constexpr std::uint32_t kMostExports = 0x10000;  // an ordinal has 16 bits
constexpr std::size_t kMostDllName = 31;         // with its end, what the system has room for

std::uint32_t WordAt(const Image& image, std::uint32_t offset) {
  return Get32(ImageBytes(image, offset, 4), 0);
}

bool Within(const Directory& directory, std::uint32_t offset, std::uint32_t size) {
  return offset >= directory.offset && offset - directory.offset <= directory.size &&
         size <= directory.size - (offset - directory.offset);
}

// The name of `what`.
std::string NameAt(const Image& image, std::uint32_t offset, const std::string& what,
                   std::size_t most = kMostName) {
  std::string name = ImageText(image, offset);
  if (name.empty()) throw Refusal(what + " has no name.");
  if (!std::all_of(name.begin(), name.end(), [](char c) { return c > ' ' && c <= '~'; })) {
    throw Refusal(what + " has a name that is no ASCII text: " + name + ".");
  }
  if (name.size() > most) {
    throw Refusal(what + " has a name of more than " + std::to_string(most) +
                  " characters: " + name + ".");
  }
  return name;
}

}  // namespace

Exports ReadExports(const Image& image, const Directory& exports) {
  const ByteView table = ImageBytes(image, exports.offset, 40);
  const std::uint32_t functions = Get32(table, 20);
  const std::uint32_t count = Get32(table, 24);
  const std::uint32_t addresses = Get32(table, 28);
  const std::uint32_t names = Get32(table, 32);
  const std::uint32_t ordinals = Get32(table, 36);
  // The system reads the whole table of addresses, also of functions without a name.
  if (functions > kMostExports)
    throw Refusal("The library exports " + std::to_string(functions) + " functions.");
  ImageBytes(image, addresses, functions * 4);
  if (count > kMostExports)
    throw Refusal("The library exports " + std::to_string(count) + " names.");
  if (count == 0) throw Refusal("The library exports no names.");
  Exports result = {NameAt(image, Get32(table, 12), "The library", kMostDllName), {}};
  std::string before;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::string name =
        NameAt(image, WordAt(image, names + i * 4), "Export " + std::to_string(i));
    // The system looks an export up by halving: an unsorted table would hide some of them.
    if (name <= before) throw Refusal("Export " + name + " is not in the order of the names.");
    before = name;
    result.names.push_back(name);
    const std::uint32_t number = Get16(ImageBytes(image, ordinals + i * 2, 2), 0);
    if (number >= functions) throw Refusal("Export " + name + " has no function.");
    const std::uint32_t function = WordAt(image, addresses + number * 4);
    // The system takes what lies in the table itself for the name of another library's function.
    if (Within(exports, function, 1) || !IsCode(image, function) || function % 4 != 0) {
      throw Refusal("Export " + name + " at offset " + Hex(function) + " is no code.");
    }
    ImageBytes(image, function, 4);
  }
  return result;
}

void CheckImports(const Image& image, const Directory& imports, const Directory& addresses) {
  constexpr std::uint32_t kDescriptor = 20;
  constexpr std::uint32_t kByOrdinal = 0x80000000;
  std::set<std::uint32_t> slots;
  for (std::uint32_t at = imports.offset;; at += kDescriptor) {
    if (!Within(imports, at, kDescriptor)) throw Refusal("The import directory has no end.");
    const ByteView descriptor = ImageBytes(image, at, kDescriptor);
    const std::uint32_t name = Get32(descriptor, 12);
    const std::uint32_t first_slot = Get32(descriptor, 16);
    if (name == 0 && first_slot == 0) return;
    const std::string dll = NameAt(image, name, "An imported library", kMostDllName);
    const std::uint32_t lookups = Get32(descriptor, 0) == 0 ? first_slot : Get32(descriptor, 0);
    for (std::uint32_t i = 0;; ++i) {
      const std::uint32_t entry = WordAt(image, lookups + i * 4);
      const std::uint32_t slot = first_slot + i * 4;
      if (!Within(addresses, slot, 4) || slot % 4 != 0 || !slots.insert(slot).second) {
        throw Refusal("Import " + std::to_string(i) + " of " + dll +
                      " has no place of its own at " + Hex(slot) + ".");
      }
      if (WordAt(image, slot) != entry) {
        throw Refusal("Import " + std::to_string(i) + " of " + dll + " differs in the two tables.");
      }
      if (entry == 0) break;
      if ((entry & kByOrdinal) == 0) {
        NameAt(image, entry + 2, "Import " + std::to_string(i) + " of " + dll);
      } else if ((entry & ~kByOrdinal) > 0xFFFF) {
        throw Refusal("Import " + std::to_string(i) + " of " + dll + " has no 16-bit ordinal.");
      }
    }
  }
}

}  // namespace ceimage
