// What the host checks besides the scripts, in real time and with more than one process.
#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "windows_api.h"

namespace host {

struct Check {
  const char* sentence;
  void (*run)();  // throws what is wrong
};

std::span<const Check> LockChecks();
std::span<const Check> ProcessChecks();
std::span<const Check> WorkerChecks();
std::span<const Check> LoadChecks();
std::span<const Check> AccessChecks();

// Runs those whose sentence contains the word (all without one). Gives the exit status.
int RunChecks(const std::string& word);

// What this program does as another process; gives its exit status, 0 when all is as it should be.
int RunChild(const std::vector<std::string>& arguments);
// The part of a lock check that needs a refused library.
int MotionSetterKeepsLock();
// An access that the stand-in must refuse; comes back only when it does not.
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

// Waits until the condition holds, 20 s at most.
template <typename Condition>
void RequireSoon(const Condition& condition, const std::string& what) {
  for (int i = 0; i < 20'000 && !condition(); ++i) Sleep(1);
  Require(condition(), "never: " + what);
}

// Another process of this program. Ended with the object if it still runs.
class Child {
 public:
  explicit Child(const std::wstring& arguments);
  ~Child();
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  void Kill();
  std::uint32_t Wait();  // its exit status

 private:
  HANDLE process_ = nullptr;
};

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

}  // namespace host
