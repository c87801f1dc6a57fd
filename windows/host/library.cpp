#include "library.h"

#include <stdexcept>

#include "sim/world.h"

namespace host {
namespace {

constexpr const wchar_t* kLibrary = L"VexoCtrlSDK.dll";

#ifdef _WIN64
constexpr const char* kSetMotionInfo = "?VEXOAPI_SetMotionInfo@@YAHEEPEAE@Z";
#else
constexpr const char* kSetMotionInfo = "?VEXOAPI_SetMotionInfo@@YAHEEPAE@Z";
#endif

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
using UnregisterCallback = LONG(NTAPI*)(void* cookie);

// ---- The image ----------------------------------------------------------------------------------

template <typename T>
T* At(HMODULE image, std::size_t offset) {
  return reinterpret_cast<T*>(reinterpret_cast<char*>(image) + offset);
}

const IMAGE_NT_HEADERS& Headers(HMODULE image) {
  const auto* dos = At<const IMAGE_DOS_HEADER>(image, 0);
  return *At<const IMAGE_NT_HEADERS>(image, static_cast<std::size_t>(dos->e_lfanew));
}

void Write(IMAGE_THUNK_DATA& slot, const void* function) {
  DWORD protection = 0;
  VirtualProtect(&slot, sizeof(slot), PAGE_READWRITE, &protection);
  slot.u1.Function = reinterpret_cast<ULONG_PTR>(function);
  VirtualProtect(&slot, sizeof(slot), protection, &protection);
}

const void* Resolve(HMODULE from, const IMAGE_THUNK_DATA& name, HMODULE image) {
  if (IMAGE_SNAP_BY_ORDINAL(name.u1.Ordinal)) {
    return reinterpret_cast<const void*>(
        GetProcAddress(from, MAKEINTRESOURCEA(IMAGE_ORDINAL(name.u1.Ordinal))));
  }
  const auto* by_name = At<const IMAGE_IMPORT_BY_NAME>(image, name.u1.AddressOfData);
  return reinterpret_cast<const void*>(
      GetProcAddress(from, reinterpret_cast<const char*>(by_name->Name)));
}

const Import* FindImport(std::span<const Import> imports, HMODULE image,
                         const IMAGE_THUNK_DATA& name) {
  if (IMAGE_SNAP_BY_ORDINAL(name.u1.Ordinal)) return nullptr;
  const auto* by_name = At<const IMAGE_IMPORT_BY_NAME>(image, name.u1.AddressOfData);
  for (const Import& import : imports) {
    if (std::string_view(import.name) == reinterpret_cast<const char*>(by_name->Name)) {
      return &import;
    }
  }
  return nullptr;
}

enum class Others { Keep, Bind };

// Gives how many imports were replaced.
std::size_t Patch(HMODULE image, std::span<const Import> imports, Others others) {
  std::size_t replaced = 0;
  const IMAGE_DATA_DIRECTORY& directory =
      Headers(image).OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
  const auto* from = At<const IMAGE_IMPORT_DESCRIPTOR>(image, directory.VirtualAddress);
  for (; from->Name != 0; ++from) {
    HMODULE module = nullptr;
    if (others == Others::Bind) module = LoadLibraryA(At<const char>(image, from->Name));
    const auto* name = At<const IMAGE_THUNK_DATA>(image, from->OriginalFirstThunk);
    auto* slot = At<IMAGE_THUNK_DATA>(image, from->FirstThunk);
    for (; name->u1.AddressOfData != 0; ++name, ++slot) {
      if (const Import* import = FindImport(imports, image, *name)) {
        Write(*slot, import->function);
        ++replaced;
      } else if (module != nullptr) {
        Write(*slot, Resolve(module, *name, image));
      }
    }
  }
  return replaced;
}

struct Request {
  std::span<const Import> imports;
  std::size_t replaced = 0;
};

void CALLBACK OnLoaderNews(ULONG reason, const LoaderNews* news, void* context) {
  if (reason != kLoaded || _wcsicmp(news->base_name->text, kLibrary) != 0) return;
  auto& request = *static_cast<Request*>(context);
  request.replaced = Patch(static_cast<HMODULE>(news->base), request.imports, Others::Keep);
}

template <typename Function>
Function Symbol(HMODULE module, const char* name) {
  const FARPROC function = GetProcAddress(module, name);
  if (function == nullptr) throw std::runtime_error(std::string("there is no export ") + name);
  return reinterpret_cast<Function>(reinterpret_cast<void*>(function));
}

template <typename Function>
void Bind(Function& function, HMODULE library, const char* name) {
  function = Symbol<Function>(library, name);
}

[[noreturn]] void FailToLoad() {
  throw std::runtime_error("VexoCtrlSDK.dll cannot be loaded: error " +
                           std::to_string(GetLastError()));
}

}  // namespace

harness::ExportTable BindExports(HMODULE library) {
  harness::ExportTable exports = {};
  Bind(exports.initialize, library, "VEXOAPI_Initialize");
  Bind(exports.uninitialize, library, "VEXOAPI_Uninitialize");
  Bind(exports.get_version, library, "VEXOAPI_GetVersion");
  Bind(exports.set_enable_debug, library, "VEXOAPI_SetEnableDebug");
  Bind(exports.set_enable_output_msg, library, "VEXOAPI_SetEnableOutputMsg");
  Bind(exports.command_proc, library, "VEXOAPI_CommandProc");
  Bind(exports.set_motion_info, library, kSetMotionInfo);
  Bind(exports.text_command_proc, library, "VEXOAPI_TextCommandProc");
  return exports;
}

EntryFunction EntryOf(HMODULE library) {
  const DWORD offset = Headers(library).OptionalHeader.AddressOfEntryPoint;
  return reinterpret_cast<EntryFunction>(At<void>(library, offset));
}

std::size_t ImageBytes(HMODULE library) { return Headers(library).OptionalHeader.SizeOfImage; }

HMODULE LoadWithImports(std::span<const Import> imports) {
  const HMODULE system = GetModuleHandleW(L"ntdll.dll");
  Request request{imports};
  void* cookie = nullptr;
  if (Symbol<RegisterCallback>(system, "LdrRegisterDllNotification")(0, OnLoaderNews, &request,
                                                                     &cookie) != 0) {
    throw std::runtime_error("the loader tells nobody what it loads");
  }
  const HMODULE library = LoadLibraryW(kLibrary);
  const DWORD error = GetLastError();
  Symbol<UnregisterCallback>(system, "LdrUnregisterDllNotification")(cookie);
  SetLastError(error);
  if (library == nullptr) FailToLoad();
  if (request.replaced != imports.size()) {
    throw std::runtime_error(std::to_string(request.replaced) + " of " +
                             std::to_string(imports.size()) + " imports replaced");
  }
  return library;
}

HMODULE MapWithoutEntry(std::span<const Import> imports) {
  const HMODULE library = LoadLibraryExW(kLibrary, nullptr, DONT_RESOLVE_DLL_REFERENCES);
  if (library == nullptr) FailToLoad();
  if (Patch(library, imports, Others::Bind) != imports.size()) {
    throw std::runtime_error("an import to be replaced is not there");
  }
  return library;
}

std::string Utf8(const wchar_t* text) {
  return sim::ToUtf8(reinterpret_cast<const char16_t*>(text));
}

}  // namespace host
