// What is wrong, thrown.
#pragma once

#include <windows.h>

#include <stdexcept>
#include <string>

namespace drive {

// The board's control port is gone.
struct ConnectionLost : std::runtime_error {
  using std::runtime_error::runtime_error;
};

inline void Require(bool met, const std::string& text) {
  if (!met) throw std::runtime_error(text);
}

// Waits until the condition holds, 60 s at most; `found` says in words what holds instead.
template <typename Condition, typename Found>
void RequireSoon(const Condition& condition, const std::string& what, const Found& found) {
  constexpr ULONGLONG kLimitMs = 60'000;
  for (const ULONGLONG end = GetTickCount64() + kLimitMs; GetTickCount64() < end; Sleep(2)) {
    if (condition()) return;
  }
  Require(condition(), "never: " + what + "; instead: " + found());
}

}  // namespace drive
