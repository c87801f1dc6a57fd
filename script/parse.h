// Scripts read: text to statements, for each variant.
#pragma once

#include <cstddef>
#include <istream>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "script/line.h"

namespace script {

// In bytes. Far more than any script needs; a file with a longer one is none.
inline constexpr std::size_t kLongestLine = std::size_t{64} << 10;

struct Statement {
  unsigned line = 0;  // from 1
  std::string text;   // as it stands, without blanks around it; a text command with its header
  LineGroup group = LineGroup::Board;
  Step step;
  bool goes_on = false;    // LineKind::goes_on
  bool completed = false;  // the header of a text command was left out
};

// What a line does; `line` is left 0, none for a line without words. Throws Malformed, for an
// expectation also when no action stands before it.
std::optional<Statement> ParseLine(const std::string& text, bool after_action);

// A wrong line, with "file:line: " and what was expected.
struct ScriptError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// A script as one of its variants reads.
struct Script {
  std::string variant;                // empty when it has none
  std::string name;                   // in messages: "live.vexo (pal)"
  std::vector<Statement> statements;  // the lines that do something
};

// Every variant, or the one script that has none. Throws ScriptError for the first wrong line.
std::vector<Script> ParseScript(std::istream& in, const std::string& name);

}  // namespace script
