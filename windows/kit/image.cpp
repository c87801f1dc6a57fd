#include "image.h"

#include <stdexcept>
#include <string>
#include <string_view>

namespace kit {
namespace {

// ---- The loader's notification, which the headers do not declare --------------------------------

struct LoaderString {
  USHORT length;
  USHORT capacity;
  wchar_t* text;
};
struct LoaderNews {
  ULONG flags;
  const LoaderString* full_name;
  const LoaderString* base_name;
  void* base;
  ULONG bytes;
};
constexpr ULONG kLoaded = 1;
using LoaderCallback = void(CALLBACK*)(ULONG reason, const LoaderNews* news, void* context);
using RegisterCallback = LONG(NTAPI*)(ULONG flags, LoaderCallback callback, void* context,
                                      void** cookie);

void (*g_on_mapped)(HMODULE library) = nullptr;

void CALLBACK OnLoaderNews(ULONG reason, const LoaderNews* news, void*) {
  if (reason != kLoaded || _wcsicmp(news->base_name->text, kLibrary) != 0) return;
  g_on_mapped(static_cast<HMODULE>(news->base));
}

// ---- The image ----------------------------------------------------------------------------------

template <typename T>
T* At(HMODULE image, std::size_t offset) {
  return reinterpret_cast<T*>(reinterpret_cast<char*>(image) + offset);
}

const IMAGE_OPTIONAL_HEADER& Header(HMODULE image) {
  const auto* dos = At<const IMAGE_DOS_HEADER>(image, 0);
  return At<const IMAGE_NT_HEADERS>(image, static_cast<std::size_t>(dos->e_lfanew))->OptionalHeader;
}

void Write(IMAGE_THUNK_DATA& slot, const void* function) {
  DWORD protection = 0;
  VirtualProtect(&slot, sizeof(slot), PAGE_READWRITE, &protection);
  slot.u1.Function = reinterpret_cast<ULONG_PTR>(function);
  VirtualProtect(&slot, sizeof(slot), protection, &protection);
}

// Null for an import by number.
const char* NameOf(HMODULE image, const IMAGE_THUNK_DATA& import) {
  if (IMAGE_SNAP_BY_ORDINAL(import.u1.Ordinal)) return nullptr;
  const auto* by_name = At<const IMAGE_IMPORT_BY_NAME>(image, import.u1.AddressOfData);
  return reinterpret_cast<const char*>(by_name->Name);
}

const void* Resolve(HMODULE from, HMODULE image, const IMAGE_THUNK_DATA& import) {
  const char* name = NameOf(image, import);
  if (name == nullptr) name = MAKEINTRESOURCEA(IMAGE_ORDINAL(import.u1.Ordinal));
  return reinterpret_cast<const void*>(GetProcAddress(from, name));
}

const Import* FindImport(std::span<const Import> imports, const char* name) {
  if (name == nullptr) return nullptr;
  for (const Import& import : imports) {
    if (std::string_view(import.name) == name) return &import;
  }
  return nullptr;
}

enum class Others { Keep, Bind };

void Patch(HMODULE image, std::span<const Import> imports, Others others) {
  std::size_t replaced = 0;
  const IMAGE_DATA_DIRECTORY& directory = Header(image).DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
  const auto* from = At<const IMAGE_IMPORT_DESCRIPTOR>(image, directory.VirtualAddress);
  for (; from->Name != 0; ++from) {
    HMODULE module = nullptr;
    if (others == Others::Bind) module = LoadLibraryA(At<const char>(image, from->Name));
    const auto* name = At<const IMAGE_THUNK_DATA>(image, from->OriginalFirstThunk);
    auto* slot = At<IMAGE_THUNK_DATA>(image, from->FirstThunk);
    for (; name->u1.AddressOfData != 0; ++name, ++slot) {
      if (const Import* import = FindImport(imports, NameOf(image, *name))) {
        Write(*slot, import->function);
        ++replaced;
      } else if (module != nullptr) {
        Write(*slot, Resolve(module, image, *name));
      }
    }
  }
  if (replaced != imports.size()) {
    throw std::runtime_error("VexoCtrlSDK.dll is not the one of this kit: it asks for " +
                             std::to_string(replaced) + " of the " +
                             std::to_string(imports.size()) + " functions that are stood in for");
  }
}

}  // namespace

void ReplaceImports(HMODULE image, std::span<const Import> imports) {
  Patch(image, imports, Others::Keep);
}

HMODULE MapWithoutEntry(std::span<const Import> imports) {
  const HMODULE library = LoadLibraryExW(kLibrary, nullptr, DONT_RESOLVE_DLL_REFERENCES);
  if (library == nullptr) {
    throw std::runtime_error("VexoCtrlSDK.dll cannot be loaded: error " +
                             std::to_string(GetLastError()));
  }
  Patch(library, imports, Others::Bind);
  return library;
}

EntryFunction EntryOf(HMODULE image) {
  return reinterpret_cast<EntryFunction>(At<void>(image, Header(image).AddressOfEntryPoint));
}

bool IsInImage(HMODULE image, std::uintptr_t address) {
  return address - reinterpret_cast<std::uintptr_t>(image) < Header(image).SizeOfImage;
}

bool WatchLibrary(void (*on_mapped)(HMODULE library)) {
  g_on_mapped = on_mapped;
  const FARPROC function =
      GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "LdrRegisterDllNotification");
  void* cookie = nullptr;
  return function != nullptr && reinterpret_cast<RegisterCallback>(reinterpret_cast<void*>(
                                    function))(0, OnLoaderNews, nullptr, &cookie) == 0;
}

void* ExportOf(HMODULE image, const char* name) {
  const FARPROC function = GetProcAddress(image, name);
  if (function == nullptr) {
    throw std::runtime_error(std::string("VexoCtrlSDK.dll has no export ") + name);
  }
  return reinterpret_cast<void*>(function);
}

}  // namespace kit
