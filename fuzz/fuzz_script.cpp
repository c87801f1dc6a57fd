// Any text as a script: it is refused with its place, or it runs to an end.
#include <array>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/require.h"
#include "script/run.h"
#include "tools/vexosim/listing/terminal_surroundings.h"

namespace {

using fuzz::Require;

constexpr std::size_t kMostLines = 40;
constexpr std::uint64_t kMostMilliseconds = 5'000;  // of the board's time

// Lines that read or write files are parsed only.
bool NamesAFile(std::string_view line) {
  constexpr std::array<std::string_view, 3> kWords = {"source", "save", "picture"};
  for (const std::string_view word : kWords) {
    if (line.starts_with(word)) return true;
  }
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
  std::vector<script::Script> scripts;
  try {
    scripts = script::ParseScript(in, "s.vexo");
  } catch (const script::ScriptError& error) {
    Require(std::string_view(error.what()).starts_with("s.vexo"));
    return 0;
  }
  script::Script& script = scripts.back();
  std::erase_if(script.statements,
                [](const script::Statement& each) { return NamesAFile(each.text); });
  if (script.statements.size() > kMostLines) script.statements.resize(kMostLines);

  script::RunOptions options;
  options.limits.virtual_ms = kMostMilliseconds;
  std::ostringstream out;
  std::ostringstream err;
  vexosim::TerminalSurroundings around;
  const int status = script::RunScript(script, options, around, out, err);
  Require(status == script::kExitDone || status == script::kExitUnmet ||
          status == script::kExitWrong);
  // Who does not say what went wrong helps nobody.
  Require(status == script::kExitDone || !err.str().empty() || !out.str().empty());
  return 0;
}
