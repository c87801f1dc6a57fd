// Script lines about the session itself: switches, files of lines, time turned back, help.
#include <algorithm>
#include <array>

#include "files/output.h"
#include "script/help/completion.h"
#include "script/help/help.h"
#include "script/interpreter.h"
#include "script/line.h"
#include "script/register_diff.h"

namespace script {
namespace {

constexpr std::string_view kIndent = "      ";

template <bool Interpreter::Switches::*kSwitch>
Step ParseSwitch(Arguments& arguments) {
  const bool on = arguments.OnOff();
  return [=](Session& session) { session.Runner().switches.*kSwitch = on; };
}

Step ParseMark(Arguments& arguments) {
  const Arguments before = arguments;
  const std::string name = arguments.Text("a name");
  if (std::find(kMoments.begin(), kMoments.end(), name) != kMoments.end()) {
    before.Expected("a name of your own");
  }
  return [=](Session& session) { session.Runner().Mark(name); };
}

Step ParseBack(Arguments& arguments) {
  const std::string name = arguments.Text("the name of a mark");
  return [=](Session& session) { session.Runner().Back(name); };
}

Step ParseUndo(Arguments&) {
  return [](Session& session) { session.Runner().Undo(); };
}

Step ParseSource(Arguments& arguments) {
  const std::string path = arguments.Text("a file name");
  return [=](Session& session) { session.Runner().Source(path); };
}

Step ParseSave(Arguments& arguments) {
  const std::string path = arguments.Text("a file name");
  return [=](Session& session) { session.Runner().Save(path); };
}

Step ParseSaveTrace(Arguments& arguments) {
  const std::string path = arguments.Text("a file name");
  return [=](Session& session) { session.Runner().SaveTrace(path); };
}

Step ParseSaveWaveform(Arguments& arguments) {
  constexpr std::string_view kWhat = "a file name that ends in .vcd";
  if (!files::HasEnding(std::string(arguments.Peek()), ".vcd")) arguments.Expected(kWhat);
  const std::string path = arguments.Text(kWhat);
  return [=](Session& session) { session.Runner().SaveWaveform(path); };
}

Step ParseHistory(Arguments&) {
  return [](Session& session) {
    constexpr std::size_t kColumns = 5;
    std::size_t count = 0;
    for (const std::string& line : session.Runner().Lines()) {
      const std::string number = std::to_string(++count);
      session.Out() << std::string(kColumns - std::min(kColumns, number.size()), ' ') << number
                    << "  " << line << '\n';
    }
  };
}

Step ParseHelp(Arguments& arguments) {
  std::vector<std::string> words;
  while (!arguments.AtEnd()) words.push_back(arguments.Text("a word"));
  return [=](Session& session) { session.Out() << Help(words); };
}

Step ParseComplete(Arguments& arguments) {
  const std::string typed = arguments.Text("what is typed of a line");
  return [=](Session& session) {
    for (const std::string& line : CompletedLines(typed)) {
      session.Out() << kIndent << line << '\n';
    }
    for (const std::string& hint : Complete(typed).hints) {
      session.Out() << kIndent << "# " << hint << '\n';
    }
  };
}

Step ParseQuit(Arguments&) {
  return [](Session& session) { session.Runner().Quit(); };
}

constexpr LineGroup kSwitch = LineGroup::Switch;
constexpr LineGroup kTool = LineGroup::Tool;

constexpr std::array kSessionLines = {
    LineKind{kSwitch, "writes", "on|off", "shows the register writes of each action by name (off)",
             ParseSwitch<&Interpreter::Switches::writes>},
    LineKind{kSwitch, "quiet", "on|off",
             "folds the texts and messages of an action that come again (off)",
             ParseSwitch<&Interpreter::Switches::quiet>},
    // What the board sees depends on it, so a trace has it.
    LineKind{LineGroup::Board, "pump", "on|off",
             "the host handles posted messages after each action (off; on in the shell)",
             ParseSwitch<&Interpreter::Switches::pump>},
    LineKind{kTool, "undo", "",
             "takes the last line back that changed the board or called the library", ParseUndo},
    LineKind{kSwitch, "mark", "NAME", "gives this moment a name", ParseMark},
    LineKind{kTool, "back", "NAME", "goes back to it: board, library and time are as they were",
             ParseBack},
    LineKind{kTool, "source", "FILE", "runs the lines of a file", ParseSource},
    LineKind{kTool, "save", "FILE", "writes the session so far as a script", ParseSave},
    LineKind{kTool, "save trace", "FILE", "writes its trace, by running it again unseen",
             ParseSaveTrace},
    LineKind{kTool, "save waveform", "FILE.vcd", "writes its waveform, in the same way",
             ParseSaveWaveform},
    LineKind{kTool, "history", "", "lists the session so far", ParseHistory},
    LineKind{kTool, "help", "[WORD...]", "explains a line; help script lists all", ParseHelp},
    LineKind{kTool, "?", "[WORD...]", "help", ParseHelp},
    LineKind{kTool, "complete", "\"TEXT\"",
             "says which lines this beginning of one can become, and # what is expected next",
             ParseComplete},
    LineKind{kTool, "quit", "", "ends the session", ParseQuit},
    LineKind{kTool, "exit", "", "ends the session", ParseQuit},
};

}  // namespace

std::span<const LineKind> SessionLines() { return kSessionLines; }

}  // namespace script
