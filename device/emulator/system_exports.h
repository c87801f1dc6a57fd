// What the system's own libraries export, as far as that is documented.
//
// Much of it is not played here. A program that asks for what is documented is told so; whatever
// else it asks for, the system does not have.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace emulator {

struct SystemLibrary {
  std::string_view file;           // in lower case
  std::string_view documentation;  // where the names come from, those that are played too
  std::string_view not_played;     // names with blanks between them

  bool ExportsUnplayed(const std::string& name) const;
};
std::span<const SystemLibrary> SystemLibraries();

// By the file's name in whatever case; null: it is none of the system's.
const SystemLibrary* FindSystemLibrary(const std::string& file);

}  // namespace emulator
