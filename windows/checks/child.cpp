#include <array>
#include <iostream>

#include "checks.h"

namespace checks {
namespace {

std::wstring g_own_texts;

// An empty file that the other process writes and this one reads.
std::wstring NewFile() {
  std::array<wchar_t, MAX_PATH> folder;
  std::array<wchar_t, MAX_PATH> file;
  GetTempPathW(MAX_PATH, folder.data());
  Require(GetTempFileNameW(folder.data(), L"vex", 0, file.data()) != 0, "no file for texts");
  return file.data();
}

HANDLE OpenShared(const std::wstring& file, DWORD access) {
  SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
  HANDLE const handle = CreateFileW(file.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    &inherited, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  Require(handle != INVALID_HANDLE_VALUE, "the file of the texts cannot be opened");
  return handle;
}

}  // namespace

std::string ReadTexts(const std::wstring& file) {
  HANDLE const handle = OpenShared(file, GENERIC_READ);
  std::string texts;
  std::array<char, 4096> part;
  DWORD bytes = 0;
  while (ReadFile(handle, part.data(), static_cast<DWORD>(part.size()), &bytes, nullptr) &&
         bytes != 0) {
    texts.append(part.data(), bytes);
  }
  CloseHandle(handle);
  return texts;
}

void SetOwnTexts(const std::wstring& file) { g_own_texts = file; }
std::string OwnTexts() { return ReadTexts(g_own_texts); }

Child::Child(const std::wstring& words) : texts_(NewFile()) {
  std::array<wchar_t, MAX_PATH> program;
  GetModuleFileNameW(nullptr, program.data(), MAX_PATH);
  std::wstring line =
      L"\"" + std::wstring(program.data()) + L"\" " + words + L" \"" + texts_ + L"\"";
  STARTUPINFOW start = {};
  start.cb = sizeof(start);
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
  start.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
  start.hStdError = OpenShared(texts_, GENERIC_WRITE);
  PROCESS_INFORMATION made = {};
  // On a busy machine Wine has been seen to refuse one: it is told, and asked again.
  for (int tries = 3; !CreateProcessW(program.data(), line.data(), nullptr, nullptr, TRUE, 0,
                                      nullptr, nullptr, &start, &made);) {
    const std::string refusal =
        "another process cannot be started: error " + std::to_string(GetLastError());
    if (--tries == 0) throw std::runtime_error(refusal);
    std::cout << "  " << refusal << std::endl;
  }
  CloseHandle(start.hStdError);
  CloseHandle(made.hThread);
  process_ = made.hProcess;
}

Child::~Child() {
  Kill();
  CloseHandle(process_);
  DeleteFileW(texts_.c_str());
}

void Child::Kill() {
  TerminateProcess(process_, 99);
  WaitForSingleObject(process_, 60'000);
}

std::uint32_t Child::Wait() {
  constexpr DWORD kLimitMs = 180'000;
  Require(WaitForSingleObject(process_, kLimitMs) == WAIT_OBJECT_0,
          "another process does not end; it said:\n" + Texts());
  DWORD status = 0;
  GetExitCodeProcess(process_, &status);
  return static_cast<std::uint32_t>(status);
}

std::string Child::Texts() const { return ReadTexts(texts_); }

}  // namespace checks
