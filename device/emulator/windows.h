// The windows of programs: each is of the thread that made it, which runs its procedure.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "sim/kernel/kernel.h"

namespace emulator {

inline constexpr std::uint32_t kQuitMessage = 0x0012;

class Cpu;
class Program;

// A message as a program has it in its memory.
struct GuestMessage {
  std::uint32_t window = 0;
  std::uint32_t message = 0;
  std::uint32_t wparam = 0;
  std::uint32_t lparam = 0;
};

class DeviceWindows {
 public:
  // A new one of the calling thread, which runs on this processor.
  std::uint32_t Create(Cpu& thread, std::uint32_t procedure, const std::string& title);
  // The window without a word to its procedure. False when it is none of the thread's.
  bool Destroy(const Cpu& thread, std::uint32_t window);
  // Calls the window's procedure in its own thread, which is the calling one; 0 when it is none.
  std::uint32_t Call(const Cpu& thread, const GuestMessage& message);
  // What was sent to a window of the calling thread.
  void Receive(const sim::Kernel::Message& message);
  // All that is the thread's goes with it.
  void ThreadLeft(const Cpu& thread);

  bool SetTitle(std::uint32_t window, const std::string& title);
  // Whether it was shown before; none when there is no such window.
  std::optional<bool> Show(std::uint32_t window, bool shown);
  // Hears of the title of a window that is shown, and of each new one.
  std::function<void(const Program& program, const std::string& title)> on_title;
  // A key goes to the window that was shown last. False when none is shown.
  bool PressKey(std::uint32_t key);

  // ---- A thread's loop ------------------------------------------------------------------------

  // What the calling thread takes next; none when it has to wait, for so long at most.
  std::optional<GuestMessage> Next(const Cpu& thread, const sim::Kernel::MessageChoice& choice);
  std::uint32_t LongestWait(const Cpu& thread) const;
  void Quit(const Cpu& thread, std::uint32_t code) { quits_[&thread] = code; }
  // False when the window is none of the thread's.
  bool SetTimer(const Cpu& thread, std::uint32_t window, std::uint32_t timer, std::uint32_t ms);
  bool KillTimer(const Cpu& thread, std::uint32_t window, std::uint32_t timer);

 private:
  struct Timer {
    std::uint32_t id = 0;
    std::uint32_t period = 0;
    std::uint64_t due = 0;
  };
  struct Window {
    Cpu* thread = nullptr;
    std::uint32_t procedure = 0;
    std::string title;
    unsigned shown = 0;  // how many were shown when this one was; 0: it is not shown
    std::vector<Timer> timers = {};
  };
  Window* Find(const Cpu& thread, std::uint32_t window);
  void TellTitle(const Window& window) const;
  std::optional<GuestMessage> DueTimer(const Cpu& thread);

  std::map<std::uint32_t, Window> windows_;
  std::map<const Cpu*, std::uint32_t> quits_;  // codes of threads that were told to quit
  unsigned shows_ = 0;
};

}  // namespace emulator
