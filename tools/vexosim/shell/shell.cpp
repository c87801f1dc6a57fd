#include "tools/vexosim/shell/shell.h"

#include <algorithm>
#include <span>

#include "VexoCtrlSDK.h"
#include "harness/host.h"
#include "script/action_log.h"
#include "script/grammar/pattern_walk.h"
#include "script/grammar/text_line.h"
#include "script/help/first_words.h"
#include "script/help/help.h"
#include "script/outcome/text_outcome.h"
#include "script/parse.h"
#include "script/report_words.h"
#include "script/run.h"
#include "sim/text.h"
#include "tools/vexosim/listing/register_writes.h"

namespace vexosim {
namespace {

constexpr std::string_view kIndent = "      ";
constexpr std::uint32_t kAttach = 1;            // reason code
constexpr std::uint32_t kBringUpMs = 300;       // until the worker has told the host what it sees
constexpr std::size_t kMostEvents = 1'000'000;  // of the trace; a session may be long

std::string Trimmed(const std::string& text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

void PrintNote(std::ostream& out, const std::string& note) {
  for (const std::string& line : sim::TextLines(note)) out << kIndent << line << '\n';
}

}  // namespace

// A host thread of its own looks at a line that waits on and on.
struct Shell::SettleGuard {
  static constexpr std::uint32_t kLookMs = 5'000;
  static constexpr std::uint32_t kLimitMs = 60'000;
  bool running = false;  // a line
  std::uint32_t since = 0;
  bool released = false;  // the guard made the board settle
  unsigned thread = 0;

  void Watch() {
    sim::Kernel& kernel = sim::TheWorld().kernel;
    while (running && !released) {
      kernel.Idle(kLookMs);
      if (!running || (kernel.Now() - since < kLimitMs && !Interrupted())) continue;
      sim::TheWorld().board.SetSettle(0);
      released = true;
    }
  }
};

Shell::Shell(const ShellOptions& options, LineHistory& history, std::ostream& out)
    : options_(options),
      history_(history),
      out_(out),
      around_(options.style, Progress::OnTerminal()),
      session_(out, around_) {
  harness::Restart();
  sim::World& world = session_.World();
  world.kernel.SetSeed(options.seed);
  world.board.FitChips(options.chips);
  if (options.pal) {
    for (unsigned channel = 0; channel < kChannelsMax; ++channel) {
      world.board.SetCamera(channel, sim::Camera::Pal);
    }
    const auto channels = static_cast<std::uint8_t>(options.chips * kChannelsPerChip);
    world.nvram.SetRecord("MDVR", VEXO_VIDEO_PAL, channels);
  }
  BringUp();
}

void Shell::BringUp() {
  const unsigned channels = options_.chips * kChannelsPerChip;
  out_ << "A board of " << channels << " channels with " << (options_.pal ? "PAL" : "NTSC")
       << " cameras, ";
  if (options_.bare) {
    out_ << "the library not attached: attach, window, command 0xF001.\n";
  } else {
    acted_ = true;
    session_.BeginAction("command 0xF001");
    harness::Entry(kAttach);
    harness::Initialize(session_.World().windows.Create());
    sim::Bytes record;
    session_.returned = harness::CommandProc(VEXO_CMD_INIT, &record);
    session_.World().kernel.Pump(kBringUpMs);
    script::Retell(session_.World().trace, session_.FirstEvent(), facts_);
    if (session_.returned == VEXO_OK) {
      out_ << "initialized; the worker runs.\n";
    } else {
      out_ << "initialization returned " << *session_.returned << ".\n";
    }
  }
  out_ << "Type a text command (vexo lsplit 6 0), a script line (camera 2 off), or help.\n";
  PrintWarnings();
}

bool Shell::Execute(const std::string& typed) {
  const std::string line = Trimmed(typed);
  if (line.empty() || line.front() == '#') return true;
  history_.Add(line);
  const std::string word(script::FirstWordOf(line));
  if (word == "quit" || word == "exit") return false;

  ForgetInterrupt();
  try {
    if (script::FindGrammar(word) != nullptr) {
      TextLine(line);
    } else if (script::FindShellCommand(word) != nullptr) {
      ShellCommandLine(line);
    } else if (script::IsScriptWord(word)) {
      ScriptLine(line);
    } else if (!script::GrammarsWith(word).empty()) {
      ShortTextLine(line, word);
    } else {
      Unknown(word);
    }
  } catch (const sim::Deadlock& deadlock) {
    PrintNote(out_, "the line would wait for ever: " + std::string(deadlock.what()));
  } catch (const std::exception& error) {
    PrintNote(out_, error.what());
  }
  around_.ClearProgress();
  PrintWarnings();
  out_.flush();
  return true;
}

// ---- Lines --------------------------------------------------------------------------------------

void Shell::TextLine(const std::string& line) {
  const std::string text = script::WithSeparator(line);
  Act("text \"" + text + '"',
      [&](script::Session& session) { session.returned = harness::TextCommandProc(text); });
  if (!session_.returned) return;
  if (const auto outcome = script::OutcomeOfText(text, static_cast<int>(*session_.returned),
                                                 session_.World(), session_.FirstEvent(), facts_)) {
    PrintNote(out_, *outcome);
  }
}

void Shell::ShortTextLine(const std::string& line, std::string_view keyword) {
  const std::vector<const TextGrammar*> grammars = script::GrammarsWith(keyword);
  if (grammars.size() > 1) {
    std::string text = "several families have " + std::string(keyword) + "; say which:";
    for (const TextGrammar* grammar : grammars) text += '\n' + (grammar->header + (' ' + line));
    return PrintNote(out_, text);
  }
  const std::string whole = grammars.front()->header + (' ' + line);
  PrintNote(out_, whole);
  TextLine(whole);
}

void Shell::ScriptLine(const std::string& line) {
  const std::optional<script::Statement> statement = script::ParseLine(line, acted_);
  if (!statement) return;
  switch (statement->group) {
    case script::LineGroup::Action:
      return Act(statement->text, statement->step);
    case script::LineGroup::Check:
      return Check(statement->step);
    case script::LineGroup::Board:
    case script::LineGroup::Output:
      statement->step(session_);
      break;
  }
  if (script::FirstWordOf(line) == "settle") guard_ = std::make_shared<SettleGuard>();
}

void Shell::Unknown(std::string_view word) {
  const std::string near = script::HelpSuggestion(word);
  PrintNote(out_, "unknown: '" + std::string(word) + '\'' +
                      (near.empty() ? "; help lists what there is" : near));
}

// ---- What lines do ----------------------------------------------------------------------------

void Shell::Act(const std::string& name, const script::Step& step) {
  sim::World& world = session_.World();
  if (world.trace.Mark() > kMostEvents) world.trace.Clear();
  session_.BeginAction(name);
  acted_ = true;
  const auto print = [&] {
    around_.ClearProgress();
    script::Retell(world.trace, session_.FirstEvent(), facts_);
    script::PrintEvents(out_, world, session_.FirstEvent(), session_.FirstReceived());
    if (writes_) PrintWrites(out_, world.trace, session_.FirstEvent());
    if (session_.returned) out_ << kIndent << "= " << *session_.returned << '\n';
  };
  Guard();
  try {
    step(session_);
    world.kernel.Pump(0);  // the host handles what was posted
  } catch (...) {
    if (guard_) guard_->running = false;
    print();
    throw;
  }
  print();
  if (!guard_) return;
  guard_->running = false;
  if (guard_->released) {
    PrintNote(out_, "the chips did not settle: after " +
                        std::to_string(SettleGuard::kLimitMs / 1000) +
                        " s of virtual time the shell let them (settle 0)");
    guard_.reset();
  }
}

void Shell::Guard() {
  if (!guard_) return;
  sim::Kernel& kernel = session_.World().kernel;
  guard_->running = true;
  guard_->since = kernel.Now();
  if (guard_->thread != 0 && !kernel.HostThreadDone(guard_->thread)) return;
  guard_->thread = kernel.StartHostThread([guard = guard_] { guard->Watch(); });
}

void Shell::Check(const script::Step& step) {
  try {
    step(session_);
    PrintNote(out_, "met");
  } catch (const script::Unmet& unmet) {
    PrintNote(out_, "not met: " + unmet.found);
  }
}

void Shell::PrintWarnings() {
  const std::vector<sim::Report>& reports = session_.World().reports.All();
  for (const std::string& warning : script::WarningsInWords(std::span(reports).subspan(warned_))) {
    PrintNote(out_, "warning: " + warning);
  }
  warned_ = reports.size();
}

// ---- The shell's own commands -----------------------------------------------------------------

void Shell::ShellCommandLine(const std::string& line) {
  const std::vector<std::string> words = script::SplitWords(line);
  const std::string& command = words.front();
  if (command == "history") return ShowHistory();
  if (command == "writes") return SwitchWrites(words.size() == 2 ? words[1] : "");
  if (words.size() == 1) {
    out_ << script::HelpOverview();
    return;
  }
  // A whole command line is explained by its keyword.
  const std::string& word =
      words.size() > 2 && script::FindGrammar(words[1]) != nullptr ? words[2] : words[1];
  const std::string text = script::HelpOnWord(word);
  if (text.empty()) return Unknown(word);
  out_ << text;
}

void Shell::SwitchWrites(const std::string& word) {
  if (word != "on" && word != "off") {
    return PrintNote(out_, std::string("expected writes on or writes off; they are ") +
                               (writes_ ? "on" : "off"));
  }
  writes_ = word == "on";
}

void Shell::ShowHistory() {
  constexpr std::size_t kColumns = 5;
  std::size_t number = 0;
  for (const std::string& line : history_.Lines()) {
    const std::string text = std::to_string(++number);
    out_ << std::string(kColumns - std::min(kColumns, text.size()), ' ') << text << "  " << line
         << '\n';
  }
}

int RunShell(const ShellOptions& options, LineHistory& history, LineReader& reader,
             std::ostream& out) {
  Shell shell(options, history, out);
  out.flush();
  for (;;) {
    const std::optional<std::string> line = reader.Next();
    if (!line || !shell.Execute(*line)) return script::kExitDone;
  }
}

}  // namespace vexosim
