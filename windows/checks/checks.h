// What is checked besides the scripts: the library in real time and in more than one process,
// beside the kit as any program is.
#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "windows_api.h"

namespace checks {

struct Check {
  const char* sentence;
  void (*run)();  // throws what is wrong
};

std::span<const Check> LockChecks();
std::span<const Check> ProcessChecks();
std::span<const Check> WorkerChecks();
std::span<const Check> LoadChecks();
std::span<const Check> AccessChecks();

// What this program does as another process; gives its exit status, 0 when all is as it should be.
int PlayRole(const std::string& role);
// The part of a lock check that needs a refused library.
int MotionSetterKeepsLock();
// An access that the kit must refuse; comes back only when it does not.
int ForbiddenAccess(const std::string& which);

inline void Require(bool met, const std::string& text) {
  if (!met) throw std::runtime_error(text);
}

template <typename A, typename B>
void RequireEqual(const A& found, const B& wanted, const std::string& what) {
  if (found == wanted) return;
  throw std::runtime_error(what + " is " + std::to_string(found) + " instead of " +
                           std::to_string(wanted));
}

inline void RequireText(const std::string& texts, const std::string& wanted) {
  Require(texts.find(wanted) != std::string::npos, "the texts lack \"" + wanted + "\":\n" + texts);
}

// Waits until the condition holds, 30 s at most.
template <typename Condition>
void RequireSoon(const Condition& condition, const std::string& what) {
  constexpr ULONGLONG kLimitMs = 30'000;
  for (const ULONGLONG end = GetTickCount64() + kLimitMs; GetTickCount64() < end; Sleep(1)) {
    if (condition()) return;
  }
  Require(condition(), "never: " + what);
}

// Another process of this program. Ended with the object if it still runs.
class Child {
 public:
  // With the words, and the file of its texts, as its command line.
  explicit Child(const std::wstring& words);
  ~Child();
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  void Kill();
  std::uint32_t Wait();  // its exit status
  std::string Texts() const;

 private:
  std::wstring texts_;  // the file
  HANDLE process_ = nullptr;
};

// What a process's standard error has got so far, where library and kit write.
std::string ReadTexts(const std::wstring& file);
// This process's own.
std::string OwnTexts();
void SetOwnTexts(const std::wstring& file);

// A named event, by which processes wait for each other.
class Signal {
 public:
  explicit Signal(const wchar_t* name) : event_(CreateEventW(nullptr, TRUE, FALSE, name)) {}
  ~Signal() { CloseHandle(event_); }
  Signal(const Signal&) = delete;
  Signal& operator=(const Signal&) = delete;
  void Set() { SetEvent(event_); }
  void Await() {
    Require(WaitForSingleObject(event_, 60'000) == WAIT_OBJECT_0, "the other process is silent");
  }

 private:
  HANDLE event_;
};

}  // namespace checks
