// More than one process with the library.
#include <array>
#include <filesystem>
#include <iostream>

#include "VexoCtrlSDK.h"
#include "checks.h"
#include "real_time.h"

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kRefused = "[VexoCtrlSDK]: >> Error Load DLL, Already Register !! \r\n";

// While one lives, the library's file is also where the device has it. Paths of the library have no
// drive: the current folder is on the system's.
class FileOfTheDevice {
 public:
  FileOfTheDevice() : before_(fs::current_path()) {
    wchar_t name[MAX_PATH];
    GetModuleFileNameW(nullptr, name, MAX_PATH);
    const fs::path library = fs::path(name).parent_path() / L"VexoCtrlSDK.dll";
    GetSystemDirectoryW(name, MAX_PATH);
    root_ = fs::path(name).root_path();
    fs::current_path(root_);
    const fs::path folder = root_ / L"NAND FLASH" / L"MDVR";
    fs::create_directories(folder);
    fs::copy_file(library, folder / L"VexoCtrlSDK.DLL", fs::copy_options::overwrite_existing);
  }
  ~FileOfTheDevice() {
    std::error_code ignored;
    fs::remove_all(root_ / L"NAND FLASH", ignored);
    fs::current_path(before_, ignored);
  }
  FileOfTheDevice(const FileOfTheDevice&) = delete;
  FileOfTheDevice& operator=(const FileOfTheDevice&) = delete;

 private:
  fs::path before_;
  fs::path root_;
};

void Initialized(bool wanted) {
  RealTimeWindow window;
  RealTimeLibrary library;
  const bool refused = RealTimeTexts().find(kRefused) != std::string::npos;
  RequireEqual(refused, !wanted, "the refusal");
  RequireEqual(library.exports.initialize(window.Handle()),
               wanted ? VEXO_OK : VEXO_ERROR_UNINITIALIZED, "VEXOAPI_Initialize");
  VexoChar16 text[20] = {u'?'};
  RequireEqual(library.exports.get_version(text) != 0, wanted, "a version");
  RequireEqual(text[0] == u'?', !wanted, "an untouched version text");
  RequireEqual(library.exports.text_command_proc("vexo rr ") == VEXO_ERROR_UNINITIALIZED, !wanted,
               "the refusal of VEXOAPI_TextCommandProc");
  std::array<std::uint8_t, 64> record{};
  RequireEqual(library.exports.command_proc(VEXO_CMD_INIT, record.data()),
               wanted ? VEXO_OK : VEXO_ERROR_NOT_READY, "VEXOAPI_CommandProc");
  if (wanted) library.exports.command_proc(VEXO_CMD_STOP_MONITOR, nullptr);
  library.exports.set_enable_output_msg(0);
  const std::size_t before = RealTimeTexts().size();
  library.exports.set_enable_debug(0);
  library.exports.uninitialize();
  RequireEqual(RealTimeTexts().size(), before, "the length of all texts");
}

void SecondProcess() {
  const FileOfTheDevice file;
  Signal loaded(L"VexoTestLoaded");
  Signal end(L"VexoTestEnd");
  Child first(L"stay-loaded");
  loaded.Await();
  Child second(L"refused");
  RequireEqual(second.Wait(), 0u, "the second process's exit status");
  end.Set();
  RequireEqual(first.Wait(), 0u, "the first process's exit status");
  Child third(L"fresh");
  RequireEqual(third.Wait(), 0u, "the third process's exit status");
}

// The version is read from the library's own file where the device has it.
void OwnVersion() {
  const FileOfTheDevice file;
  RealTimeLibrary library;
  VexoChar16 text[20] = {};
  const int length = library.exports.get_version(text);
  const std::string version = Utf8(reinterpret_cast<const wchar_t*>(text));
  Require(version == "1. 0. 1. 6", "the version is \"" + version + "\"");
  RequireEqual(length, 10, "its length");
}

int StayLoaded() {
  Signal loaded(L"VexoTestLoaded");
  Signal end(L"VexoTestEnd");
  RealTimeLibrary library;
  loaded.Set();
  end.Await();
  return 0;
}

int KeepLock() {
  Signal ready(L"VexoTestLockKept");
  RealTimeWindow window;
  RealTimeLibrary library;
  library.exports.initialize(window.Handle());
  library.exports.command_proc(0xF012, nullptr);
  ready.Set();
  Sleep(60'000);  // it is killed before
  return 1;
}

int AfterKilled() {
  RealTimeWindow window;
  RealTimeLibrary library;
  library.exports.initialize(window.Handle());
  RequireEqual(library.exports.command_proc(VEXO_CMD_STOP_MONITOR, nullptr), VEXO_OK, "the result");
  RequireEqual(RealTimeLockWaits().front(), static_cast<std::uint32_t>(WAIT_ABANDONED),
               "the first wait's result");
  return 0;
}

int Fresh() {
  const HANDLE mark = CreateEventW(nullptr, TRUE, FALSE, L"VEXOSDK");
  const bool left = GetLastError() == ERROR_ALREADY_EXISTS;
  CloseHandle(mark);
  Require(!left, "the mark of the ended processes is still there");
  Initialized(true);
  return 0;
}

constexpr std::array kChecks = {
    Check{"a second process stays uninitialized and a third starts fresh", SecondProcess},
    Check{"the library reads the version from its own file", OwnVersion},
};

}  // namespace

std::span<const Check> ProcessChecks() { return kChecks; }

int RunChild(const std::vector<std::string>& arguments) {
  const std::string what = arguments.empty() ? "" : arguments.front();
  try {
    if (what == "stay-loaded") return StayLoaded();
    if (what == "keep-lock") return KeepLock();
    if (what == "after-killed") return AfterKilled();
    if (what == "fresh") return Fresh();
    if (what == "motion-setter") return MotionSetterKeepsLock();
    if (what == "refused") {
      Initialized(false);
      return 0;
    }
  } catch (const std::exception& error) {
    std::cout << "in another process (" << what << "): " << error.what() << std::endl;
    return 1;
  }
  return ForbiddenAccess(what);
}

}  // namespace host
