#include "device/ceimage/import_library.h"

#include <utility>
#include <vector>

#include "device/ceimage/archive.h"
#include "device/ceimage/coff_object.h"
#include "device/ceimage/image_sections.h"

namespace ceimage {
namespace {

// The linker puts the sections of this name into the import directory, in the order of what follows
// the $, and of the members that it takes.
constexpr const char* kDirectory = ".idata$2";
constexpr const char* kDirectoryEnd = ".idata$3";
constexpr const char* kLookups = ".idata$4";
constexpr const char* kAddresses = ".idata$5";
constexpr const char* kFileName = ".idata$6";

constexpr std::uint32_t kData = kSectionData | kSectionReadable | kSectionWritable;
constexpr std::uint32_t kAtHalf = 0x00200000;
constexpr std::uint32_t kAtWord = 0x00300000;

// The symbols by which the members pull each other in. Tools know the first two by these
// beginnings, the last by its first character.
struct Names {
  std::string descriptor;
  std::string directory_end = "__NULL_IMPORT_DESCRIPTOR";
  std::string tables_end;
};

Bytes Descriptor(const std::string& file, const Names& names, std::uint16_t machine) {
  Bytes file_name;
  AppendText(file_name, file, file.size() + 1);
  Align(file_name, 2);
  return EncodeObject(machine,
                      {{kDirectory, kData | kAtWord, Bytes(20), {{12, 2}, {0, 3}, {16, 4}}},
                       {kFileName, kData | kAtHalf, std::move(file_name), {}}},
                      {{names.descriptor, 1, Storage::kExternal},
                       {kDirectory, 1, Storage::kSection},
                       {kFileName, 2, Storage::kStatic},
                       {kLookups, 0, Storage::kSection},
                       {kAddresses, 0, Storage::kSection},
                       {names.directory_end, 0, Storage::kExternal},
                       {names.tables_end, 0, Storage::kExternal}});
}

Bytes DirectoryEnd(const Names& names, std::uint16_t machine) {
  return EncodeObject(machine, {{kDirectoryEnd, kData | kAtWord, Bytes(20), {}}},
                      {{names.directory_end, 1, Storage::kExternal}});
}

Bytes TablesEnd(const Names& names, std::uint16_t machine) {
  return EncodeObject(
      machine,
      {{kAddresses, kData | kAtWord, Bytes(4), {}}, {kLookups, kData | kAtWord, Bytes(4), {}}},
      {{names.tables_end, 1, Storage::kExternal}});
}

// `hint` is where the loader looks first among the names.
Bytes ShortImport(const std::string& name, const std::string& file, std::uint32_t hint,
                  std::uint16_t machine) {
  // Code, found by a name that is the symbol's own: on this processor C names have no underscore
  // before them.
  constexpr std::uint32_t kCodeByName = 1u << 2;
  Bytes texts;
  AppendText(texts, name, name.size() + 1);
  AppendText(texts, file, file.size() + 1);
  Bytes bytes;
  Append16(bytes, 0);
  Append16(bytes, 0xFFFF);  // no object
  Append16(bytes, 0);
  Append16(bytes, machine);
  Append32(bytes, 0);
  Append32(bytes, static_cast<std::uint32_t>(texts.size()));
  Append16(bytes, hint);
  Append16(bytes, kCodeByName);
  Append(bytes, texts);
  return bytes;
}

}  // namespace

Bytes MakeImportLibrary(const Exports& exports, std::uint16_t machine) {
  const std::string stem = exports.file.substr(0, exports.file.rfind('.'));
  const Names names = {.descriptor = "__IMPORT_DESCRIPTOR_" + stem,
                       .tables_end = '\x7F' + stem + "_NULL_THUNK_DATA"};
  std::vector<ArchiveMember> members = {
      {exports.file, {names.descriptor}, Descriptor(exports.file, names, machine)},
      {exports.file, {names.directory_end}, DirectoryEnd(names, machine)},
      {exports.file, {names.tables_end}, TablesEnd(names, machine)}};
  for (std::uint32_t i = 0; i < exports.names.size(); ++i) {
    const std::string& name = exports.names[i];
    members.push_back(
        {exports.file, {"__imp_" + name, name}, ShortImport(name, exports.file, i, machine)});
  }
  return EncodeArchive(members);
}

std::string MakeDefinition(const Exports& exports) {
  std::string text = "LIBRARY " + exports.file + "\nEXPORTS\n";
  for (const std::string& name : exports.names) text += "  " + name + '\n';
  return text;
}

}  // namespace ceimage
