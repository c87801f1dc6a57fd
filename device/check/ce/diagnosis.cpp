#include "device/check/ce/diagnosis.h"

#include "device/check/ce/shared_word.h"
#include "device/check/image_reader.h"
#include "device/check/log_line.h"

namespace check {
namespace {

constexpr CeDword kMostSecondMs = 20'000;

static_assert(sizeof(wchar_t) == sizeof(Char16), "the system's texts");
const Char16* Units(const wchar_t* text) { return reinterpret_cast<const Char16*>(text); }

// A name of an image, which is ASCII, as the system's calls take it.
Path Widened(const char* name) {
  Path wide;
  unsigned at = 0;
  for (; name[at] != 0 && at < Path::kUnits - 1; ++at) {
    wide.Room()[at] = static_cast<unsigned char>(name[at]);
  }
  return wide;
}

std::uint32_t Number(const void* handle) {
  return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(handle));
}

std::uint32_t LastError() { return static_cast<std::uint32_t>(GetLastError()); }

// Imports stand library by library: each is loaded once.
class ImportCheck {
 public:
  explicit ImportCheck(DeviceSystem& system) : system_(system) {}
  ImportCheck(const ImportCheck&) = delete;
  ImportCheck& operator=(const ImportCheck&) = delete;
  ~ImportCheck() { Free(); }

  void Look(const char* library, const char* name, std::uint32_t number) {
    if (library != library_) Load(library);
    ++looked_;
    // The system takes a number in the place of a name.
    const Path wide = name != nullptr ? Widened(name) : Path();
    const auto* const which =
        name != nullptr ? wide.Get()
                        : reinterpret_cast<const wchar_t*>(static_cast<std::uintptr_t>(number));
    if (module_ != nullptr && GetProcAddressW(module_, which) != nullptr) return;
    ++missing_;
    if (module_ == nullptr) return;  // told already
    const Words words = name != nullptr ? Words().Add(name) : Words().Add("#").Add(number);
    LogLine(system_, 0, "missing").Text(library).Text(words.Get()).Write();
  }

  void Tell() { LogLine(system_, 0, "imports").Number(looked_).Number(missing_).Write(); }

 private:
  void Load(const char* library) {
    Free();
    library_ = library;
    module_ = LoadLibraryW(Widened(library).Get());
    if (module_ == nullptr) {
      LogLine(system_, 0, "absent").Text(library).Number(LastError()).Write();
    }
  }
  void Free() {
    if (module_ != nullptr) FreeLibrary(module_);
    module_ = nullptr;
  }

  DeviceSystem& system_;
  const char* library_ = nullptr;
  HINSTANCE__* module_ = nullptr;
  std::uint32_t looked_ = 0;
  std::uint32_t missing_ = 0;
};

void TellVersion(DeviceSystem& system, const wchar_t* path) {
  CeDword zero = 0;
  const CeDword bytes = GetFileVersionInfoSizeW(path, &zero);
  void* const buffer = bytes == 0 ? nullptr : LocalAlloc(kCeFixedMemory, bytes);
  void* value = nullptr;
  unsigned length = 0;
  Words version;
  if (buffer != nullptr && GetFileVersionInfoW(path, 0, bytes, buffer) != 0 &&
      VerQueryValueW(buffer, L"\\", &value, &length) != 0 && length >= sizeof(CeFixedFileInfo)) {
    const auto* const info = static_cast<const CeFixedFileInfo*>(value);
    version.Add(static_cast<std::uint32_t>(info->file_version_ms >> 16))
        .Add(".")
        .Add(static_cast<std::uint32_t>(info->file_version_ms & 0xFFFF))
        .Add(".")
        .Add(static_cast<std::uint32_t>(info->file_version_ls >> 16))
        .Add(".")
        .Add(static_cast<std::uint32_t>(info->file_version_ls & 0xFFFF));
  }
  LogLine(system, 0, "version").Text(version.Get()).Write();
  if (buffer != nullptr) LocalFree(buffer);
}

void TellProcess(DeviceSystem& system) {
  const Path program = ProgramPath();
  CeProcess process = {};
  if (CreateProcessW(program.Get(), kSecond, nullptr, nullptr, 0, 0, nullptr, nullptr, nullptr,
                     &process) == 0) {
    LogLine(system, 0, "process").Text("refused").Number(LastError()).Write();
    return;
  }
  CeDword code = 0;
  if (WaitForSingleObject(process.process, kMostSecondMs) == kCeStillRunning) {
    LogLine(system, 0, "process").Text("hung").Number(kMostSecondMs).Write();
    TerminateProcess(process.process, 0);
  } else {
    GetExitCodeProcess(process.process, &code);
    LogLine(system, 0, "process").Text("ended").Number(static_cast<std::uint32_t>(code)).Write();
  }
  CloseHandle(process.thread);
  CloseHandle(process.process);
}

}  // namespace

void TellFile(DeviceSystem& system, const LibraryPlace& place) {
  if (*place.file.Get() == 0) {
    constexpr std::uint32_t kNotFound = 2;
    LogLine(system, 0, "absent").Text(Units(place.name.Get())).Number(kNotFound).Write();
    return;
  }
  const FileContent content = ReadWhole(place.file.Get(), kMostImage);
  if (content.text == nullptr) {
    LogLine(system, 0, "absent")
        .Text(Units(place.file.Get()))
        .Number(static_cast<std::uint32_t>(content.error))
        .Write();
    return;
  }
  ImageReader reader(reinterpret_cast<const std::uint8_t*>(content.text), content.bytes);
  ImageFacts facts = {};
  reader.ReadFacts(facts);
  LogLine(system, 0, "file")
      .Text(Units(place.file.Get()))
      .Number(content.bytes)
      .Hex(facts.machine)
      .Hex(facts.base)
      .Write();
  ImportCheck imports(system);
  const char* library = nullptr;
  const char* name = nullptr;
  std::uint32_t number = 0;
  while (reader.Next(library, name, number)) imports.Look(library, name, number);
  imports.Tell();
  LocalFree(content.text);
}

void TellDrivers(DeviceSystem& system) {
  static constexpr const wchar_t* kDrivers[] = {L"CAM1:", L"VBE1:"};
  for (const wchar_t* name : kDrivers) {
    void* const driver =
        CreateFileW(name, kCeRead | kCeWrite, 0, nullptr, kCeOpenExisting, 0, nullptr);
    if (driver != nullptr && reinterpret_cast<std::uintptr_t>(driver) != kCeNoFile) {
      CloseHandle(driver);
      continue;
    }
    LogLine(system, 0, "absent").Text(Units(name)).Number(LastError()).Write();
  }
}

bool TellLoading(DeviceSystem& system, const LibraryPlace& place) {
  LogLine(system, 0, "loading").Text(Units(place.name.Get())).Write();
  HINSTANCE__* const module = LoadLibraryW(place.name.Get());
  if (module == nullptr) {
    LogLine(system, 0, "refused").Number(LastError()).Write();
    return false;
  }
  LogLine(system, 0, "loaded").Hex(Number(module)).Write();
  Path path;
  GetModuleFileNameW(module, path.Room(), Path::kUnits);
  LogLine(system, 0, "path").Text(Units(path.Get())).Write();
  TellVersion(system, path.Get());
  for (const wchar_t* name : kExports) {
    const void* const address = GetProcAddressW(module, name);
    LogLine(system, 0, "export").Text(Units(name)).Hex(Number(address)).Write();
  }
  HINSTANCE__* const again = LoadLibraryW(place.name.Get());
  LogLine(system, 0, "again").Hex(Number(again)).Write();
  if (again != nullptr) FreeLibrary(again);
  FreeLibrary(module);
  return true;
}

void TellSecondProcess(DeviceSystem& system, const LibraryPlace& place) {
  HINSTANCE__* const module = LoadLibraryW(place.name.Get());
  if (module == nullptr) return;
  {
    const SharedMark mark(module);
    TellProcess(system);
  }
  FreeLibrary(module);
}

CeDword RunAsSecond() {
  constexpr CeDword kLoaded = 1;
  constexpr CeDword kAllExports = 2;
  constexpr CeDword kUninitialized = 4;
  constexpr CeDword kNoVersion = 8;
  constexpr CeDword kSharesMemory = 16;
  HINSTANCE__* const module = LoadLibraryW(FindLibrary().name.Get());
  if (module == nullptr) return 0;
  CeDword found = kLoaded | kAllExports;
  for (const wchar_t* name : kExports) {
    if (GetProcAddressW(module, name) == nullptr) found &= ~kAllExports;
  }
  const auto initialize =
      reinterpret_cast<VexoInitializeFunction>(GetProcAddressW(module, L"VEXOAPI_Initialize"));
  if (initialize != nullptr && initialize(nullptr) == VEXO_ERROR_UNINITIALIZED) {
    found |= kUninitialized;
  }
  const auto version =
      reinterpret_cast<VexoGetVersionFunction>(GetProcAddressW(module, L"VEXOAPI_GetVersion"));
  VexoChar16 text[64] = {};
  if (version != nullptr && version(text) == 0) found |= kNoVersion;
  if (SeesSharedMark(module)) found |= kSharesMemory;
  FreeLibrary(module);
  return found;
}

}  // namespace check
