// What the terminal can show.
#pragma once

#include <chrono>
#include <string>

namespace vexosim {

// How pictures are drawn.
struct PictureStyle {
  bool colour = false;  // 24-bit colour escapes, else plain characters
  int columns = 80;
};

enum class ColourChoice { Auto, Always, Never };

// The style for standard output: colour where it is a terminal, unless told otherwise.
PictureStyle StandardOutputStyle(ColourChoice choice);

// A line on standard error that says how far a long operation is: only on a terminal, only after
// the first second.
class Progress {
 public:
  explicit Progress(bool enabled) : enabled_(enabled) {}
  ~Progress() { Clear(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Update(const std::string& text);
  // Wipes the line: before anything else is printed.
  void Clear();

  static bool OnTerminal();  // standard error is one

 private:
  using Clock = std::chrono::steady_clock;
  bool enabled_;
  bool shown_ = false;
  Clock::time_point next_ = Clock::now() + std::chrono::seconds(1);
};

// While one lives, Ctrl-C does not end the process: what takes long asks for it.
class InterruptWatch {
 public:
  InterruptWatch();
  ~InterruptWatch();
  InterruptWatch(const InterruptWatch&) = delete;
  InterruptWatch& operator=(const InterruptWatch&) = delete;
};

// Ctrl-C was pressed since it was last forgotten; false without a watch.
bool Interrupted();
void ForgetInterrupt();

}  // namespace vexosim
