#include "device/emulator/windows.h"

#include <algorithm>
#include <array>

#include "device/emulator/imports.h"
#include "device/emulator/program.h"
#include "sim/kernel/message_records.h"
#include "sim/world.h"

namespace emulator {
namespace {

constexpr std::uint32_t kKeyMessage = 0x0100;
constexpr std::uint32_t kTimerMessage = 0x0113;

// What the guest has as the wParam of a message that came: the number, or where its memory has the
// record.
std::uint32_t GuestWparam(const Cpu& thread, const sim::Kernel::Message& message) {
  if (sim::MessageRecordBytes(message.message) == 0 || message.wparam == 0) {
    return static_cast<std::uint32_t>(message.wparam);
  }
  const auto* const record = reinterpret_cast<const void*>(message.wparam);
  const std::uint32_t address = thread.Owner().GuestAddress(record);
  if (address == 0) thread.Fault("a message whose record lies in the memory of another process");
  return address;
}

GuestMessage ForGuest(const Cpu& thread, const sim::Kernel::Message& message) {
  return {static_cast<std::uint32_t>(message.window), message.message, GuestWparam(thread, message),
          static_cast<std::uint32_t>(message.lparam)};
}

}  // namespace

DeviceWindows::Window* DeviceWindows::Find(const Cpu& thread, std::uint32_t window) {
  const auto found = windows_.find(window);
  return found == windows_.end() || found->second.thread != &thread ? nullptr : &found->second;
}

std::uint32_t DeviceWindows::Create(Cpu& thread, std::uint32_t procedure,
                                    const std::string& title) {
  const PlatWindow created = sim::TheWorld().windows.Create();
  Kernel().OwnWindow(created);
  const auto window = static_cast<std::uint32_t>(created);
  windows_[window] = {.thread = &thread, .procedure = procedure, .title = title};
  return window;
}

bool DeviceWindows::Destroy(const Cpu& thread, std::uint32_t window) {
  if (Find(thread, window) == nullptr) return false;
  windows_.erase(window);
  sim::TheWorld().windows.Destroy(window);
  return true;
}

std::uint32_t DeviceWindows::Call(const Cpu& thread, const GuestMessage& message) {
  const Window* const window = Find(thread, message.window);
  if (window == nullptr) return 0;
  const std::array<std::uint32_t, 4> arguments = {message.window, message.message, message.wparam,
                                                  message.lparam};
  return window->thread->Call(window->procedure, arguments);
}

void DeviceWindows::Receive(const sim::Kernel::Message& message) {
  const auto found = windows_.find(static_cast<std::uint32_t>(message.window));
  if (found == windows_.end()) return;
  const Cpu& thread = *found->second.thread;
  Call(thread, ForGuest(thread, message));
}

void DeviceWindows::ThreadLeft(const Cpu& thread) {
  quits_.erase(&thread);
  std::vector<std::uint32_t> own;
  for (const auto& [window, content] : windows_) {
    if (content.thread == &thread) own.push_back(window);
  }
  for (const std::uint32_t window : own) Destroy(thread, window);
}

// ---- What a user sees ---------------------------------------------------------------------------

void DeviceWindows::TellTitle(const Window& window) const {
  if (window.shown == 0 || !on_title) return;
  on_title(*window.thread->Owner().AsProgram(), window.title);
}

bool DeviceWindows::SetTitle(std::uint32_t window, const std::string& title) {
  const auto found = windows_.find(window);
  if (found == windows_.end()) return false;
  if (found->second.title == title) return true;
  found->second.title = title;
  TellTitle(found->second);
  return true;
}

std::optional<bool> DeviceWindows::Show(std::uint32_t window, bool shown) {
  const auto found = windows_.find(window);
  if (found == windows_.end()) return std::nullopt;
  const bool before = found->second.shown != 0;
  if (before == shown) return before;
  found->second.shown = shown ? ++shows_ : 0;
  TellTitle(found->second);
  return before;
}

bool DeviceWindows::PressKey(std::uint32_t key) {
  const auto last = std::max_element(
      windows_.begin(), windows_.end(),
      [](const auto& a, const auto& b) { return a.second.shown < b.second.shown; });
  if (last == windows_.end() || last->second.shown == 0) return false;
  return Kernel().PostMessage(last->first, kKeyMessage, key, 0);
}

// ---- A thread's loop ----------------------------------------------------------------------------

// What was posted goes before the end, and a timer behind all.
std::optional<GuestMessage> DeviceWindows::Next(const Cpu& thread,
                                                const sim::Kernel::MessageChoice& choice) {
  if (const auto message = Kernel().TakeMessage(choice)) return ForGuest(thread, *message);
  const auto within = [&choice](std::uint32_t message) {
    return choice.first <= message && message <= choice.last;
  };
  const auto quit = quits_.find(&thread);
  if (quit != quits_.end() && within(kQuitMessage)) {
    const GuestMessage message = {0, kQuitMessage, quit->second, 0};
    if (choice.take) quits_.erase(quit);
    return message;
  }
  if (choice.take && within(kTimerMessage)) return DueTimer(thread);
  return std::nullopt;
}

std::optional<GuestMessage> DeviceWindows::DueTimer(const Cpu& thread) {
  const std::uint64_t now = Kernel().NowUnwrapped();
  for (auto& [window, content] : windows_) {
    if (content.thread != &thread) continue;
    for (Timer& timer : content.timers) {
      if (timer.due > now) continue;
      timer.due = now + timer.period;
      return GuestMessage{window, kTimerMessage, timer.id, 0};
    }
  }
  return std::nullopt;
}

std::uint32_t DeviceWindows::LongestWait(const Cpu& thread) const {
  const std::uint64_t now = Kernel().NowUnwrapped();
  std::uint64_t longest = kPlatForever;
  for (const auto& [window, content] : windows_) {
    if (content.thread != &thread) continue;
    for (const Timer& timer : content.timers) {
      longest = std::min(longest, timer.due > now ? timer.due - now : 0);
    }
  }
  return static_cast<std::uint32_t>(longest);
}

bool DeviceWindows::SetTimer(const Cpu& thread, std::uint32_t window, std::uint32_t timer,
                             std::uint32_t ms) {
  Window* const of = Find(thread, window);
  if (of == nullptr) return false;
  KillTimer(thread, window, timer);
  const std::uint32_t period = std::max(ms, 1u);
  of->timers.push_back({timer, period, Kernel().NowUnwrapped() + period});
  return true;
}

bool DeviceWindows::KillTimer(const Cpu& thread, std::uint32_t window, std::uint32_t timer) {
  Window* const of = Find(thread, window);
  return of != nullptr &&
         std::erase_if(of->timers, [timer](const Timer& one) { return one.id == timer; }) != 0;
}

}  // namespace emulator
