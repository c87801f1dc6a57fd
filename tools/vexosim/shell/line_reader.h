// Where the shell's lines come from.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "tools/vexosim/shell/line_history.h"

namespace vexosim {

inline constexpr const char* kPrompt = "vexosim> ";

class LineReader {
 public:
  virtual ~LineReader() = default;
  // The next line, none at the end of input. A line that is given up with Ctrl-C is empty.
  virtual std::optional<std::string> Next() = 0;
};

// Standard input and output are a terminal.
bool OnTerminal();

// Editing, history and completion on the terminal. `history` outlives the reader.
std::unique_ptr<LineReader> MakeTerminalReader(const LineHistory& history);

// Line after line, with the prompt and the line printed as a terminal would show them. Its Next
// throws files::FileError for a line without an end.
std::unique_ptr<LineReader> MakePlainReader(std::istream& in, std::ostream& out);

}  // namespace vexosim
