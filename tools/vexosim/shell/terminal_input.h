// The bytes of the terminal, and what happens to it while somebody types.
#pragma once

#include <csignal>

namespace vexosim {

// While one lives, changes of the terminal's size and the process's going on after a stop wait to
// be told by Next().
class TerminalInput {
 public:
  enum class Kind { Byte, End, Interrupt, Resized, Resumed };
  struct Input {
    Kind kind = Kind::End;
    char byte = 0;
  };

  TerminalInput();
  ~TerminalInput();
  TerminalInput(const TerminalInput&) = delete;
  TerminalInput& operator=(const TerminalInput&) = delete;

  // Waits for the next of them. An interrupt is a SIGINT; End is a terminal that is gone, too.
  Input Next();

 private:
  struct sigaction resized_before_ {};
  struct sigaction resumed_before_ {};
};

}  // namespace vexosim
