#include "tools/vexosim/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <iostream>

namespace vexosim {
namespace {

volatile std::sig_atomic_t g_interrupted = 0;

void NoteInterrupt(int) { g_interrupted = 1; }

}  // namespace

PictureStyle StandardOutputStyle(ColourChoice choice) {
  constexpr int kMostColumns = 120;
  const bool terminal = isatty(STDOUT_FILENO) != 0;
  PictureStyle style;
  style.colour = choice == ColourChoice::Always || (choice == ColourChoice::Auto && terminal);
  winsize size{};
  if (terminal && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0) {
    style.columns = std::min(static_cast<int>(size.ws_col), kMostColumns);
  }
  return style;
}

bool Progress::OnTerminal() { return isatty(STDERR_FILENO) != 0; }

void Progress::Update(const std::string& text) {
  if (!enabled_ || Clock::now() < next_) return;
  std::cerr << "\r\033[K" << text << std::flush;
  shown_ = true;
  next_ = Clock::now() + std::chrono::milliseconds(200);
}

void Progress::Clear() {
  if (shown_) std::cerr << "\r\033[K" << std::flush;
  shown_ = false;
}

InterruptWatch::InterruptWatch() {
  ForgetInterrupt();
  std::signal(SIGINT, NoteInterrupt);
}

InterruptWatch::~InterruptWatch() {
  std::signal(SIGINT, SIG_DFL);
  ForgetInterrupt();
}

bool Interrupted() { return g_interrupted != 0; }
void ForgetInterrupt() { g_interrupted = 0; }

}  // namespace vexosim
