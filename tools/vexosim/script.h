// Scripts: parsing and running.
#pragma once

#include <cstdint>
#include <istream>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "tools/vexosim/image_run.h"
#include "tools/vexosim/script_line.h"
#include "tools/vexosim/terminal.h"

namespace vexosim {

inline constexpr int kExitDone = 0;
inline constexpr int kExitUnmet = 1;  // an expectation failed, nothing could go on, or a fault
inline constexpr int kExitWrong = 2;  // the script or the command line is wrong

struct Statement {
  unsigned line = 0;  // from 1
  std::string text;   // as it stands, without blanks around it
  LineGroup group = LineGroup::Board;
  Step step;
};

// What a line does; `line` is left 0, none for a line without words. Throws Malformed, for an
// expectation also when no action stands before it.
std::optional<Statement> ParseLine(const std::string& text, bool after_action);

// A wrong line, with "file:line: " and what was expected.
struct ScriptError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The lines that do something. Throws ScriptError for the first wrong one.
std::vector<Statement> ParseScript(std::istream& in, const std::string& name);

struct RunOptions {
  bool quiet = false;  // only failed expectations, the summary and what the script prints
  bool show_progress = false;
  PictureStyle style;
  std::uint64_t seed = 0;
  bool registers = false;              // print all register pages at the end
  std::optional<std::string> picture;  // write the screen at the end
  std::ostream* trace = nullptr;       // JSON lines
  // The machine that runs the library, none for the linked one. A fault of it fails the run.
  const ImageRun* machine = nullptr;
};

// Runs a script on a fresh library and a fresh board. `name` stands in messages. The whole script
// is read before its first line runs. Returns one of kExit....
int RunScript(std::istream& in, const std::string& name, const RunOptions& options,
              std::ostream& out, std::ostream& err);

}  // namespace vexosim
