#include "device/check/ce/paths.h"

#include "device/program/program_api.h"

namespace check {
namespace {

constexpr const wchar_t* kLibrary = L"VexoCtrlSDK.DLL";
// The system finds a library by its name in these, and in its program's folder.
constexpr const wchar_t* kSystemFolders[] = {L"\\Windows\\", L"\\"};
constexpr const wchar_t* kOtherFolders[] = {L"\\DLL\\", L"\\NAND FLASH\\MDVR\\"};

void* Open(const wchar_t* path) {
  return CreateFileW(path, kCeRead, kCeShareRead, nullptr, kCeOpenExisting, kCeOrdinaryFile,
                     nullptr);
}

bool IsThere(const wchar_t* path) {
  void* const file = Open(path);
  if (reinterpret_cast<std::uintptr_t>(file) == kCeNoFile) return false;
  CloseHandle(file);
  return true;
}

}  // namespace

Path& Path::Add(const wchar_t* text) {
  unsigned at = 0;
  while (units_[at] != 0) ++at;
  while (*text != 0 && at < kUnits - 1) units_[at++] = *text++;
  units_[at] = 0;
  return *this;
}

Path& Path::Folder() {
  unsigned end = 0;
  for (unsigned at = 0; units_[at] != 0; ++at) {
    if (units_[at] == L'\\') end = at + 1;
  }
  units_[end] = 0;
  return *this;
}

Path ProgramPath() {
  Path path;
  GetModuleFileNameW(nullptr, path.Room(), Path::kUnits);
  return path;
}

Path BesideProgram(const wchar_t* name) { return ProgramPath().Folder().Add(name); }

LibraryPlace FindLibrary() {
  Path path = BesideProgram(kLibrary);
  if (IsThere(path.Get())) return {path, Path(kLibrary)};
  for (const wchar_t* folder : kSystemFolders) {
    path = Path(folder).Add(kLibrary);
    if (IsThere(path.Get())) return {path, Path(kLibrary)};
  }
  for (const wchar_t* folder : kOtherFolders) {
    path = Path(folder).Add(kLibrary);
    if (IsThere(path.Get())) return {path, path};
  }
  return {Path(), Path(kLibrary)};
}

FileContent ReadWhole(const wchar_t* path, unsigned most) {
  constexpr CeDword kErrorTooLong = 223;
  FileContent content;
  void* const file = Open(path);
  if (reinterpret_cast<std::uintptr_t>(file) == kCeNoFile) {
    content.error = GetLastError();
    return content;
  }
  const CeDword bytes = GetFileSize(file, nullptr);
  CeDword read = 0;
  if (bytes > most) {
    content.error = kErrorTooLong;
  } else if (void* const memory = LocalAlloc(kCeFixedMemory, bytes + 1); memory == nullptr) {
    content.error = GetLastError();
  } else if (ReadFile(file, memory, bytes, &read, nullptr) == 0 || read != bytes) {
    content.error = GetLastError();
    LocalFree(memory);
  } else {
    content.text = static_cast<char*>(memory);
    content.bytes = static_cast<unsigned>(bytes);
  }
  CloseHandle(file);
  return content;
}

}  // namespace check
