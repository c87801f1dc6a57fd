// Lines of the script language for a board that belongs to somebody else's program: what a control
// port, a page and the program itself send.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace desk {

struct Answer {
  enum class Result : std::uint8_t {
    Done,
    Unmet,    // an expectation; the text says what was found
    Refused,  // no such line, not one for a running program, or it could not be done
  };
  Result result = Result::Done;
  std::string text;  // UTF-8, lines with a line feed between them, none at the end
};

// How a thread gets at the board: between the two nobody else is in it, and time stands.
class BoardAccess {
 public:
  virtual ~BoardAccess() = default;
  virtual void Enter() = 0;
  virtual void Leave() = 0;
  // Called inside: the calling thread, as a host that pumps its messages if it has any, lets this
  // much of the board's time pass.
  virtual void LetTimePass(std::uint32_t ms) = 0;
};

// Listens to the world's trace and windows from its making to its end, and keeps the trace's events
// only while a line is in the library; the world must not be reset meanwhile.
//
// Expectations and differences are about all that has happened since the last line began that calls
// the library or lets time pass: what the program itself did since then is among it.
class Console {
 public:
  // Made and ended by a thread that is inside.
  explicit Console(BoardAccess& access);
  ~Console();
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  // Runs one line; any thread that is outside. While a line lets time pass or waits in the library,
  // others run.
  Answer Run(std::string_view line);

  // Lines that let time pass end soon, refused, and so are all later ones: the board is about to
  // close. Any thread, inside or outside.
  void EndLines();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace desk
