#include "checks.h"

#include <iostream>

#include "board_service.h"

namespace host {

int RunChecks(const std::string& word) {
  unsigned done = 0;
  unsigned failed = 0;
  for (const auto& checks :
       {AccessChecks(), LockChecks(), ProcessChecks(), WorkerChecks(), LoadChecks()}) {
    for (const Check& check : checks) {
      if (std::string(check.sentence).find(word) == std::string::npos) continue;
      ++done;
      try {
        check.run();
        std::cout << "ok: " << check.sentence << std::endl;
      } catch (const std::exception& error) {
        ++failed;
        std::cout << "FAILED: " << check.sentence << ": " << error.what() << std::endl;
      }
    }
  }
  std::cout << done - failed << " of " << done << " checks passed; " << g_accesses
            << " bus accesses, " << g_wide_accesses << " wider than a byte" << std::endl;
  return done == 0 || failed != 0 || g_wide_accesses != 0 ? 1 : 0;
}

Child::Child(const std::wstring& arguments) {
  wchar_t program[MAX_PATH];
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  std::wstring line = L"\"" + std::wstring(program) + L"\" child " + arguments;
  STARTUPINFOW start = {};
  start.cb = sizeof(start);
  PROCESS_INFORMATION made = {};
  // On a busy machine Wine has been seen to refuse one: it is told, and asked again.
  for (int tries = 3; !CreateProcessW(program, line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                      nullptr, &start, &made);) {
    const std::string refusal =
        "another process cannot be started: error " + std::to_string(GetLastError());
    if (--tries == 0) throw std::runtime_error(refusal);
    std::cout << "  " << refusal << std::endl;
  }
  CloseHandle(made.hThread);
  process_ = made.hProcess;
}

Child::~Child() {
  Kill();
  CloseHandle(process_);
}

void Child::Kill() {
  TerminateProcess(process_, 99);
  WaitForSingleObject(process_, 60'000);
}

std::uint32_t Child::Wait() {
  Require(WaitForSingleObject(process_, 60'000) == WAIT_OBJECT_0, "another process does not end");
  DWORD status = 0;
  GetExitCodeProcess(process_, &status);
  return static_cast<std::uint32_t>(status);
}

}  // namespace host
