// The library loaded by name, and its import table.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "harness/export_table.h"
#include "windows_api.h"

namespace host {

// A function that the library gets instead of the one it asks for.
struct Import {
  const char* name;
  void* function;
};

template <typename Function>
Import Replace(const char* name, Function* function) {
  return {name, reinterpret_cast<void*>(function)};
}

// The exports by their names. Throws std::runtime_error for one that is missing; `dll_entry` and
// `reset` are left null.
harness::ExportTable BindExports(HMODULE library);

// Where the image says that it is entered.
using EntryFunction = BOOL(WINAPI*)(HINSTANCE module, DWORD reason, void* reserved);
EntryFunction EntryOf(HMODULE library);

// How much memory it takes, from its base.
std::size_t ImageBytes(HMODULE library);

// Loads the library; its imports are replaced before its entry runs, so that what it does at
// process attach is seen too. Throws std::runtime_error.
HMODULE LoadWithImports(std::span<const Import> imports);

// Maps the library without running its entry, and binds its imports.
HMODULE MapWithoutEntry(std::span<const Import> imports);

std::string Utf8(const wchar_t* text);

}  // namespace host
