#include "tools/vexosim/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>

namespace vexosim {

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

}  // namespace vexosim
