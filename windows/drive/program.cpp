#include "program.h"

#include <algorithm>
#include <array>
#include <exception>
#include <iostream>

#include "require.h"

namespace drive {
namespace {

constexpr const wchar_t* kWindowClass = L"VexoRecorder";

struct Wanted {
  DWORD process_id;
  HWND window;
};

BOOL CALLBACK LookAt(HWND window, LPARAM parameter) {
  auto& wanted = *reinterpret_cast<Wanted*>(parameter);
  std::array<wchar_t, 64> name{};
  DWORD process_id = 0;
  GetWindowThreadProcessId(window, &process_id);
  GetClassNameW(window, name.data(), static_cast<int>(name.size()));
  if (process_id != wanted.process_id || std::wstring(name.data()) != kWindowClass) return TRUE;
  wanted.window = window;
  return FALSE;
}

HWND WindowOf(DWORD process_id) {
  Wanted wanted = {process_id, nullptr};
  EnumWindows(LookAt, reinterpret_cast<LPARAM>(&wanted));
  return wanted.window;
}

unsigned g_programs = 0;

HANDLE OpenForOther(const std::wstring& file) {
  SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
  return CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS,
                     FILE_ATTRIBUTE_NORMAL, nullptr);
}

}  // namespace

// A file of its own: the system may keep that of a program that has ended for a while.
Program::Program(const std::wstring& folder)
    : texts_(folder + L"\\texts" + std::to_wstring(++g_programs) + L".txt") {
  std::wstring line = L"\"" + folder + L"\\recorder.exe\"";
  STARTUPINFOW start = {};
  start.cb = sizeof(start);
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdError = OpenForOther(texts_);
  Require(start.hStdError != INVALID_HANDLE_VALUE,
          "no file for its texts: error " + std::to_string(GetLastError()));
  PROCESS_INFORMATION made = {};
  const bool started = CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                      folder.c_str(), &start, &made) != FALSE;
  CloseHandle(start.hStdError);
  Require(started, "recorder.exe cannot be started: error " + std::to_string(GetLastError()));
  CloseHandle(made.hThread);
  process_ = made.hProcess;
  process_id_ = made.dwProcessId;
  RequireSoon(
      [&] {
        window_ = WindowOf(process_id_);
        return window_ != nullptr;
      },
      "the recorder's window", [&] { return Texts(); });
}

Program::~Program() {
  if (std::uncaught_exceptions() != 0) TellState();
  TerminateProcess(process_, 99);
  WaitForSingleObject(process_, 60'000);
  CloseHandle(process_);
}

// For whoever looks for what went wrong.
void Program::TellState() const {
  constexpr std::size_t kMost = 2000;
  DWORD status = 0;
  GetExitCodeProcess(process_, &status);
  const std::string texts = Texts();
  std::cout << "  the recorder "
            << (status == STILL_ACTIVE ? "runs" : "has ended with " + std::to_string(status))
            << "; its last texts:\n"
            << texts.substr(texts.size() - std::min(texts.size(), kMost)) << std::endl;
}

void Program::Press(WPARAM key) const {
  Require(PostMessageW(window_, WM_KEYDOWN, key, 0) != FALSE, "a key is not taken");
}

std::string Program::Title() const {
  std::array<wchar_t, 256> text{};
  SendMessageTimeoutW(window_, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()),
                      SMTO_NORMAL, 5000, nullptr);
  std::string title;
  for (const wchar_t unit : text) {
    if (unit == L'\0') break;
    title += static_cast<char>(unit);
  }
  return title;
}

void Program::AwaitTitle(const std::string& begin) const {
  RequireSoon([&] { return Title().starts_with(begin); }, "the title \"" + begin + "...\"",
              [&] { return Title(); });
}

void Program::AwaitInTitle(const std::string& part) const {
  RequireSoon([&] { return Title().find(part) != std::string::npos; },
              "\"" + part + "\" in the title", [&] { return Title(); });
}

DWORD Program::AwaitEnd() const {
  RequireSoon([&] { return WaitForSingleObject(process_, 0) == WAIT_OBJECT_0; }, "the end",
              [&] { return Title(); });
  DWORD status = 0;
  GetExitCodeProcess(process_, &status);
  return status;
}

std::uint16_t Program::Port() const {
  const std::string begin = "VexoDesk: control port ";
  std::size_t found = std::string::npos;
  RequireSoon(
      [&] {
        const std::string texts = Texts();
        found = texts.find(begin);
        return found != std::string::npos && texts.find('\n', found) != std::string::npos;
      },
      "the kit tells its control port", [&] { return Texts(); });
  return static_cast<std::uint16_t>(std::stoul(Texts().substr(found + begin.size())));
}

std::string Program::Texts() const {
  HANDLE const file = CreateFileW(texts_.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                  nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  std::string texts;
  std::array<char, 4096> part;
  DWORD bytes = 0;
  while (ReadFile(file, part.data(), static_cast<DWORD>(part.size()), &bytes, nullptr) &&
         bytes != 0) {
    texts.append(part.data(), bytes);
  }
  CloseHandle(file);
  return texts;
}

}  // namespace drive
