#include "tools/vexosim/terminal.h"

#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <string_view>

namespace vexosim {
namespace {

winsize SizeOf(int terminal) {
  winsize size{};
  if (ioctl(terminal, TIOCGWINSZ, &size) != 0) return {};
  return size;
}

std::string_view Environment(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? std::string_view() : std::string_view(value);
}

// ---- What signal handlers use -------------------------------------------------------------------

constexpr int kMostUnanswered = 3;

volatile std::sig_atomic_t g_interrupted = 0;
volatile std::sig_atomic_t g_unanswered = 0;  // times that Ctrl-C was pressed and nothing asked
std::int64_t g_first_ms = 0;                  // when the first of them was
std::int64_t g_patience_ms = 0;
termios g_settings{};  // of the terminal before the program changed any
bool g_has_settings = false;

std::int64_t NowMs() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
}

void GiveTerminalBack() {
  // Not from the background: that would stop the process.
  if (g_has_settings && tcgetpgrp(STDIN_FILENO) == getpgrp()) {
    tcsetattr(STDIN_FILENO, TCSANOW, &g_settings);
  }
}

void NoteInterrupt(int) {
  g_interrupted = 1;
  if (g_unanswered == 0) g_first_ms = NowMs();
  if (g_unanswered < kMostUnanswered) g_unanswered = g_unanswered + 1;
  if (g_unanswered < kMostUnanswered || NowMs() - g_first_ms < g_patience_ms) return;
  GiveTerminalBack();
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, "\n", 1);
  _exit(InterruptWatch::kStatus);
}

// The handler is gone by now, so that the signal ends the process.
void EndBy(int signal) {
  GiveTerminalBack();
  raise(signal);
}

constexpr int kEnding[] = {SIGHUP, SIGTERM};

}  // namespace

// ---- Pictures -----------------------------------------------------------------------------------

bool TerminalMovesItsCursor() {
  const std::string_view type = Environment("TERM");
  return !type.empty() && type != "dumb";
}

PictureStyle StandardOutputStyle(ColourChoice choice) {
  constexpr int kMostColumns = 120;
  PictureStyle style;
  style.on_terminal = isatty(STDOUT_FILENO) != 0;
  if (style.on_terminal) style.columns = kMostColumns;
  const bool wanted =
      style.on_terminal && TerminalMovesItsCursor() && Environment("NO_COLOR").empty();
  style.colour = choice == ColourChoice::Always || (choice == ColourChoice::Auto && wanted);
  return style;
}

PictureRoom RoomFor(const PictureStyle& style) {
  constexpr int kUsualColumns = 80;
  PictureRoom room{style.columns, 0};
  if (!style.on_terminal) return room;
  const winsize size = SizeOf(STDOUT_FILENO);
  room.columns = std::min(room.columns, size.ws_col == 0 ? kUsualColumns : int{size.ws_col});
  if (size.ws_row != 0) room.rows = std::max(1, size.ws_row - 1);
  return room;
}

// ---- Progress -----------------------------------------------------------------------------------

bool Progress::OnTerminal() { return isatty(STDERR_FILENO) != 0 && TerminalMovesItsCursor(); }

void Progress::Update(const std::string& text) {
  if (!enabled_ || Clock::now() < next_) return;
  // In the last column some terminals would begin a new line.
  const winsize size = SizeOf(STDERR_FILENO);
  const std::size_t room = size.ws_col == 0 ? text.size() : std::size_t{size.ws_col} - 1;
  std::cerr << "\r\033[K" << std::string_view(text).substr(0, room) << std::flush;
  shown_ = true;
  next_ = Clock::now() + std::chrono::milliseconds(200);
}

void Progress::Clear() {
  if (shown_) std::cerr << "\r\033[K" << std::flush;
  shown_ = false;
}

// ---- Ctrl-C -------------------------------------------------------------------------------------

InterruptWatch::InterruptWatch(std::chrono::milliseconds patience) {
  ForgetInterrupt();
  g_patience_ms = patience.count();
  g_has_settings = tcgetattr(STDIN_FILENO, &g_settings) == 0;
  struct sigaction action {};
  action.sa_flags = SA_RESTART;
  action.sa_handler = NoteInterrupt;
  sigaction(SIGINT, &action, nullptr);
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  action.sa_handler = EndBy;
  for (const int signal : kEnding) {
    struct sigaction before {};
    sigaction(signal, &action, &before);
    // What was ignored on purpose (nohup) stays so.
    if (before.sa_handler == SIG_IGN) sigaction(signal, &before, nullptr);
  }
}

InterruptWatch::~InterruptWatch() {
  for (const int signal : kEnding) {
    struct sigaction now {};
    sigaction(signal, nullptr, &now);
    if (now.sa_handler == EndBy) std::signal(signal, SIG_DFL);
  }
  std::signal(SIGINT, SIG_DFL);
  ForgetInterrupt();
}

bool Interrupted() {
  if (g_interrupted == 0) return false;
  g_unanswered = 0;
  return true;
}

void ForgetInterrupt() {
  g_interrupted = 0;
  g_unanswered = 0;
}

}  // namespace vexosim
