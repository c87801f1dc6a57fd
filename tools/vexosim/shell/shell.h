// The console: lines of the script language, one at a time.
#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>

#include "script/bring_up.h"
#include "script/interpreter.h"
#include "tools/vexosim/listing/terminal_surroundings.h"
#include "tools/vexosim/shell/line_history.h"
#include "tools/vexosim/shell/line_reader.h"

namespace vexosim {

struct ShellOptions : script::BringUpOptions {
  std::optional<std::string> script;  // runs first
  PictureStyle style;
  script::InterpreterOptions run;  // always interactive
};

// Works on a fresh library and a fresh board.
class Shell {
 public:
  // Brings the board up and says what is there. `history` outlives the shell.
  Shell(const ShellOptions& options, LineHistory& history, std::ostream& out);

  // Runs the reader's lines to their end. False when the session is over before.
  bool Run(LineReader& reader);
  // Runs a line. False when it ends the session.
  bool Execute(const std::string& typed);

  // What a script of the same lines would have: one of script::kExit....
  int Status() const { return interpreter_.Status(); }

 private:
  LineHistory& history_;
  std::ostream& out_;
  TerminalSurroundings around_;
  script::Interpreter interpreter_;
  bool acted_ = false;  // expectations have something to be about
};

// Runs the reader's lines until its end or a quit. Returns what Status says.
int RunShell(const ShellOptions& options, LineHistory& history, LineReader& reader,
             std::ostream& out);

}  // namespace vexosim
