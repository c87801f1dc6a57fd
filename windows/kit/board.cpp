#include "board.h"

#include <atomic>
#include <chrono>
#include <stdexcept>

namespace kit {
namespace {

// What threads take that may be ended: nothing here is destroyed before the process is.
struct Section {
  CRITICAL_SECTION section;
  Section() { InitializeCriticalSection(&section); }
};

CRITICAL_SECTION& TheSection() {
  static Section& made = *new Section;
  return made.section;
}

std::atomic<Kind> g_kind = Kind::Real;
thread_local bool t_worker = false;
HANDLE g_texts = nullptr;  // none: nowhere

std::uint64_t Now() {
  using Clock = std::chrono::steady_clock;
  static const Clock::time_point begin = Clock::now();
  return static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count());
}

void Write(HANDLE to, std::string_view text) {
  DWORD written = 0;
  WriteFile(to, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

}  // namespace

void Say(const std::string& sentence) {
  const std::string line = "VexoDesk: " + sentence + "\r\n";
  Write(GetStdHandle(STD_ERROR_HANDLE), line);
  OutputDebugStringA(line.c_str());
}

void Refuse(const std::string& sentence) {
  Say(sentence);
  TerminateProcess(GetCurrentProcess(), kExitRefused);
  __builtin_unreachable();
}

Kind BoardKind() { return g_kind; }
void SetBoardKind(Kind kind) { g_kind = kind; }

void EnterBoard() {
  if (g_kind == Kind::Virtual) return;
  EnterCriticalSection(&TheSection());
  sim::TheWorld().kernel.SetClock(Now(), t_worker ? sim::By::Worker : sim::By::Host);
}

void LeaveBoard() {
  if (g_kind == Kind::Real) LeaveCriticalSection(&TheSection());
}

void BecomeWorker() { t_worker = true; }
bool IsWorker() { return t_worker; }

void SetTexts(const std::string& where) {
  g_texts = nullptr;
  if (where == "none") return;
  if (where == "console") {
    g_texts = GetStdHandle(STD_ERROR_HANDLE);
    return;
  }
  const std::u16string name = sim::ToUtf16(where);
  g_texts = CreateFileW(reinterpret_cast<const wchar_t*>(name.c_str()), GENERIC_WRITE,
                        FILE_SHARE_READ, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (g_texts != INVALID_HANDLE_VALUE) return;
  g_texts = nullptr;
  throw std::runtime_error("cannot write " + where + ": error " + std::to_string(GetLastError()));
}

void ShowText(std::string_view utf8) {
  if (g_texts != nullptr) Write(g_texts, utf8);
}

}  // namespace kit
