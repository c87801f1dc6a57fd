// The library's image in memory: its import table, and where it is entered.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "windows_api.h"

namespace kit {

inline constexpr const wchar_t* kLibrary = L"VexoCtrlSDK.dll";

// A function that the library gets instead of the one it asks for.
struct Import {
  const char* name;
  void* function;
};

template <typename Function>
Import Replace(const char* name, Function* function) {
  return {name, reinterpret_cast<void*>(function)};
}

// Throws std::runtime_error when the image does not ask for one of them.
void ReplaceImports(HMODULE image, std::span<const Import> imports);

// Maps the library without running its entry, and binds its imports. Throws std::runtime_error.
HMODULE MapWithoutEntry(std::span<const Import> imports);

// Where the image says that it is entered.
using EntryFunction = BOOL(WINAPI*)(HINSTANCE module, DWORD reason, void* reserved);
EntryFunction EntryOf(HMODULE image);

// Whether an address is in the image.
bool IsInImage(HMODULE image, std::uintptr_t address);

// Has each mapping of the library told from now on, before its entry runs. False when the loader
// tells nobody.
bool WatchLibrary(void (*on_mapped)(HMODULE library));

// An export by its name. Throws std::runtime_error.
void* ExportOf(HMODULE image, const char* name);

}  // namespace kit
