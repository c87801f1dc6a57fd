// The console: text commands, script lines and a few commands of its own, a line at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>

#include "script/line.h"
#include "script/outcome/library_facts.h"
#include "script/session.h"
#include "tools/vexosim/listing/terminal_surroundings.h"
#include "tools/vexosim/shell/line_history.h"
#include "tools/vexosim/shell/line_reader.h"

namespace vexosim {

struct ShellOptions {
  unsigned chips = 4;
  bool pal = false;   // cameras and stored standard
  bool bare = false;  // the library is not attached
  std::uint64_t seed = 0;
  PictureStyle style;
};

// Works on a fresh library and a fresh board.
class Shell {
 public:
  // Brings the board up and says what is there. Both outlive the shell.
  Shell(const ShellOptions& options, LineHistory& history, std::ostream& out);

  // Runs a line and prints what it did. False when the user is done.
  bool Execute(const std::string& typed);

 private:
  void BringUp();
  void ShellCommandLine(const std::string& line);
  void TextLine(const std::string& line);
  void ShortTextLine(const std::string& line, std::string_view keyword);
  void ScriptLine(const std::string& line);
  void Act(const std::string& name, const script::Step& step);
  void Check(const script::Step& step);
  void Unknown(std::string_view word);
  void SwitchWrites(const std::string& word);
  void ShowHistory();
  void PrintWarnings();

  // Keeps a board that never settles from holding a line for ever.
  struct SettleGuard;
  void Guard();

  const ShellOptions options_;
  LineHistory& history_;
  std::ostream& out_;
  TerminalSurroundings around_;
  script::Session session_;
  script::LibraryFacts facts_;
  bool writes_ = false;
  bool acted_ = false;
  std::size_t warned_ = 0;              // reports that have been shown
  std::shared_ptr<SettleGuard> guard_;  // none while holds settle
};

// Runs the reader's lines until its end or a quit. Returns kExitDone.
int RunShell(const ShellOptions& options, LineHistory& history, LineReader& reader,
             std::ostream& out);

}  // namespace vexosim
