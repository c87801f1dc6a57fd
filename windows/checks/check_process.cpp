// More than one process with the library.
#include <array>
#include <iostream>

#include "VexoCtrlSDK.h"
#include "checks.h"
#include "host.h"

namespace checks {
namespace {

constexpr const char* kRefused = "[VexoCtrlSDK]: >> Error Load DLL, Already Register !! \r\n";

void Initialized(bool wanted) {
  Window window;
  Library library;
  const bool refused = OwnTexts().find(kRefused) != std::string::npos;
  RequireEqual(refused, !wanted, "the refusal");
  RequireEqual(library.initialize(window.Handle()), wanted ? VEXO_OK : VEXO_ERROR_UNINITIALIZED,
               "VEXOAPI_Initialize");
  VexoChar16 text[20] = {'?'};
  RequireEqual(library.get_version(text) != 0, wanted, "a version");
  RequireEqual(text[0] == '?', !wanted, "an untouched version text");
  RequireEqual(library.text_command_proc("vexo rr ") == VEXO_ERROR_UNINITIALIZED, !wanted,
               "the refusal of VEXOAPI_TextCommandProc");
  VexoInitRecord record = {};
  RequireEqual(library.command_proc(VEXO_CMD_INIT, &record),
               wanted ? VEXO_OK : VEXO_ERROR_NOT_READY, "VEXOAPI_CommandProc");
  if (wanted) library.command_proc(VEXO_CMD_STOP_MONITOR, nullptr);
  library.set_enable_output_msg(0);
  const std::size_t before = OwnTexts().size();
  library.set_enable_debug(0);
  library.uninitialize();
  RequireEqual(OwnTexts().size(), before, "the length of all texts");
}

void SecondProcess() {
  Signal loaded(L"VexoTestLoaded");
  Signal end(L"VexoTestEnd");
  Child first(L"role stay-loaded");
  loaded.Await();
  Child second(L"role refused");
  RequireEqual(second.Wait(), 0u, "the second process's exit status");
  end.Set();
  RequireEqual(first.Wait(), 0u, "the first process's exit status");
  Child third(L"role fresh");
  RequireEqual(third.Wait(), 0u, "the third process's exit status");
}

std::string Version() {
  const Library library;
  VexoChar16 text[20] = {};
  const int length = library.get_version(text);
  std::string version;
  for (int i = 0; text[i] != 0; ++i) version += static_cast<char>(text[i]);
  RequireEqual(length, static_cast<int>(version.size()), "the version's length");
  return version;
}

// From the first of the library's files that there is.
void OwnVersion() {
  RequireText(Version(), "1. 0. 1. 6");
  Board("file \\DLL\\VexoCtrlSDK.DLL 1.2.3.4");
  RequireText(Version(), "1. 2. 3. 4");
  Board("file \\DLL\\VexoCtrlSDK.DLL absent");
  RequireText(Version(), "1. 0. 1. 6");
  Board("file \"\\\\NAND FLASH\\\\MDVR\\\\VexoCtrlSDK.DLL\" absent");
  RequireEqual(Version().size(), 0u, "the length of no version");
}

int StayLoaded() {
  Signal loaded(L"VexoTestLoaded");
  Signal end(L"VexoTestEnd");
  Library library;
  loaded.Set();
  end.Await();
  return 0;
}

int KeepLock() {
  Signal ready(L"VexoTestLockKept");
  Window window;
  Library library;
  library.initialize(window.Handle());
  library.command_proc(kUnknownCommand, nullptr);
  ready.Set();
  Sleep(60'000);  // it is killed before
  return 1;
}

int AfterKilled() {
  Window window;
  Library library;
  library.initialize(window.Handle());
  RequireEqual(library.command_proc(VEXO_CMD_STOP_MONITOR, nullptr), VEXO_OK, "the result");
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

int PlayRole(const std::string& role) {
  try {
    if (role == "stay-loaded") return StayLoaded();
    if (role == "keep-lock") return KeepLock();
    if (role == "after-killed") return AfterKilled();
    if (role == "fresh") return Fresh();
    if (role == "motion-setter") return MotionSetterKeepsLock();
    if (role == "refused") {
      Initialized(false);
      return 0;
    }
  } catch (const std::exception& error) {
    std::cout << "in another process (" << role << "): " << error.what() << std::endl;
    return 1;
  }
  return ForbiddenAccess(role);
}

}  // namespace checks
