// What the terminal can show, and Ctrl-C.
#pragma once

#include <chrono>
#include <string>

namespace vexosim {

// How pictures are drawn.
struct PictureStyle {
  bool colour = false;       // 24-bit colour escapes, else plain characters
  int columns = 80;          // at most
  bool on_terminal = false;  // within what standard output's terminal has when it is drawn
};

// What a picture may take, in characters.
struct PictureRoom {
  int columns = 80;
  int rows = 0;  // 0: as many as it needs
};
// One row is left to what is typed below the picture.
PictureRoom RoomFor(const PictureStyle& style);

enum class ColourChoice { Auto, Always, Never };

// The style for standard output. Colour is for a terminal that has it, unless the user says
// otherwise, here or for all programs (NO_COLOR in the environment).
PictureStyle StandardOutputStyle(ColourChoice choice);

// The terminal is known to do more than to print one character after the other.
bool TerminalMovesItsCursor();

// A line on standard error that says how far a long operation is: only on a terminal, only after
// the first second.
class Progress {
 public:
  explicit Progress(bool enabled) : enabled_(enabled) {}
  ~Progress() { Clear(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Shows as much of the text as one line holds.
  void Update(const std::string& text);
  // Wipes the line: before anything else is printed.
  void Clear();

  static bool OnTerminal();  // standard error is one that can take a line back

 private:
  using Clock = std::chrono::steady_clock;
  bool enabled_;
  bool shown_ = false;
  Clock::time_point next_ = Clock::now() + std::chrono::seconds(1);
};

// While one lives, Ctrl-C does not end the process: what takes long asks for it. If nothing asks,
// the third Ctrl-C, and not before `patience` after the first, ends the process with status 130.
// Whatever signal ends the process, the terminal is given back as it was.
class InterruptWatch {
 public:
  static constexpr int kStatus = 130;
  explicit InterruptWatch(std::chrono::milliseconds patience = std::chrono::seconds(1));
  ~InterruptWatch();
  InterruptWatch(const InterruptWatch&) = delete;
  InterruptWatch& operator=(const InterruptWatch&) = delete;
};

// Ctrl-C was pressed since it was last forgotten; false without a watch. Cheap enough for every
// round of a loop.
bool Interrupted();
void ForgetInterrupt();

}  // namespace vexosim
