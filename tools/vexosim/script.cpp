#include "tools/vexosim/script.h"

#include <stdexcept>

#include "sim/screen.h"
#include "tools/vexosim/action_log.h"
#include "tools/vexosim/host.h"
#include "tools/vexosim/register_listing.h"
#include "tools/vexosim/trace_json.h"
#include "tools/vexosim/warnings.h"

namespace vexosim {
namespace {

constexpr std::string_view kBlanks = " \t\r";

std::string Trim(const std::string& text) {
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

// One run of a script.
class Run {
 public:
  Run(const std::string& name, const RunOptions& options, std::ostream& out, std::ostream& err)
      : name_(name),
        options_(options),
        out_(out),
        err_(err),
        progress_(options.show_progress),
        session_(out, options.style, progress_) {
    if (options.trace != nullptr) trace_.emplace(*options.trace);
  }

  int Statements(const std::vector<Statement>& statements) {
    Restart();
    sim::TheWorld().kernel.SetSeed(options_.seed);
    bool goes_on = true;
    for (std::size_t i = 0; i < statements.size() && goes_on; ++i) {
      if (options_.quiet) {
        progress_.Update(name_ + ": line " + std::to_string(statements[i].line) + " of " +
                         std::to_string(statements.back().line));
      }
      goes_on = One(statements[i]);
      if (trace_) trace_->Write(sim::TheWorld().trace);
    }
    progress_.Clear();
    Finish();
    return status_;
  }

 private:
  // False when nothing more can run.
  bool One(const Statement& statement) {
    try {
      switch (statement.group) {
        case LineGroup::Action:
          Act(statement);
          break;
        case LineGroup::Check:
          Check(statement);
          break;
        case LineGroup::Board:
        case LineGroup::Output:
          Echo(statement);
          statement.step(session_);
          break;
      }
      return true;
    } catch (const sim::Deadlock& deadlock) {
      Complain(statement, deadlock.what());
      status_ = kExitUnmet;
    } catch (const ImageFault& fault) {
      Complain(statement, fault.what());
      status_ = kExitUnmet;
    } catch (const std::exception& error) {
      Complain(statement, error.what());
      status_ = kExitWrong;
    }
    return false;
  }

  void Act(const Statement& statement) {
    Echo(statement);
    session_.BeginAction(statement.text);
    try {
      statement.step(session_);
    } catch (...) {
      PrintAction();
      throw;
    }
    PrintAction();
  }

  void PrintAction() {
    progress_.Clear();
    if (options_.quiet) return;
    PrintEvents(out_, session_.World(), session_.FirstEvent(), session_.FirstReceived());
    if (session_.returned) out_ << "      = " << *session_.returned << '\n';
  }

  void Check(const Statement& statement) {
    ++checks_;
    try {
      statement.step(session_);
    } catch (const Unmet& unmet) {
      ++unmet_;
      status_ = kExitUnmet;
      Complain(statement, unmet.found);
    }
  }

  void Echo(const Statement& statement) {
    if (options_.quiet) return;
    progress_.Clear();
    const std::string time = std::to_string(sim::TheWorld().kernel.Now());
    out_ << std::string(time.size() < 8 ? 8 - time.size() : 0, ' ') << time << " ms  "
         << statement.text << '\n';
  }

  void Complain(const Statement& statement, const std::string& what) {
    progress_.Clear();
    out_.flush();
    err_ << name_ << ':' << statement.line << ": " << statement.text << ": " << what << std::endl;
  }

  void Finish() {
    const sim::World& world = sim::TheWorld();
    if (options_.registers) {
      for (unsigned position = 0; position < kChipsMax; ++position) {
        out_ << ListRegisters(world.board, position, std::nullopt, world.at_attach,
                              options_.style.colour);
      }
    }
    if (options_.picture) {
      try {
        sim::WritePng(sim::ComposeScreen(world.board), *options_.picture);
      } catch (const std::exception& error) {
        err_ << error.what() << std::endl;
        status_ = kExitWrong;
      }
    }
    if (checks_ != 0) {
      out_ << (unmet_ == 0 ? std::to_string(checks_)
                           : std::to_string(unmet_) + " of " + std::to_string(checks_))
           << (checks_ == 1 ? " expectation" : " expectations")
           << (unmet_ == 0 ? " met" : " not met") << '\n';
    }
    if (options_.machine != nullptr) PrintMachine(*options_.machine);
    out_.flush();
    for (const std::string& warning : WarningsInWords(world.reports.All())) {
      err_ << "warning: " << warning << '\n';
    }
  }

  void PrintMachine(const ImageRun& machine) {
    if (!options_.quiet) {
      out_ << "image: " << machine.Instructions() << " instructions, " << machine.DeepestStack()
           << " bytes of stack\n";
    }
    // One in a thread comes out when the host pauses next, which may be never.
    if (machine.FirstFault() && status_ == kExitDone) {
      err_ << name_ << ": " << *machine.FirstFault() << std::endl;
      status_ = kExitUnmet;
    }
  }

  const std::string& name_;
  const RunOptions& options_;
  std::ostream& out_;
  std::ostream& err_;
  Progress progress_;
  Session session_;
  std::optional<TraceWriter> trace_;
  unsigned checks_ = 0;
  unsigned unmet_ = 0;
  int status_ = kExitDone;
};

}  // namespace

std::optional<Statement> ParseLine(const std::string& text, bool after_action) {
  const std::vector<std::string> words = SplitWords(text);
  if (words.empty()) return std::nullopt;
  const LineKind& kind = FindLine(words);
  if (kind.group == LineGroup::Check && !after_action) {
    throw Malformed("expected an action before the first expectation, found '" + words.front() +
                    "'");
  }
  Arguments arguments{std::span(words).subspan(WordCount(kind))};
  try {
    Step step = kind.parse(arguments);
    arguments.End();
    return Statement{0, Trim(text), kind.group, std::move(step)};
  } catch (const Malformed& error) {
    throw Malformed(std::string(error.what()) + " (" + UsagesOf(words.front()) + ')');
  }
}

std::vector<Statement> ParseScript(std::istream& in, const std::string& name) {
  std::vector<Statement> statements;
  bool after_action = false;
  std::string text;
  for (unsigned line = 1; std::getline(in, text); ++line) {
    try {
      std::optional<Statement> statement = ParseLine(text, after_action);
      if (!statement) continue;
      statement->line = line;
      after_action = after_action || statement->group == LineGroup::Action;
      statements.push_back(std::move(*statement));
    } catch (const Malformed& error) {
      throw ScriptError(name + ':' + std::to_string(line) + ": " + error.what());
    }
  }
  return statements;
}

int RunScript(std::istream& in, const std::string& name, const RunOptions& options,
              std::ostream& out, std::ostream& err) {
  try {
    const std::vector<Statement> statements = ParseScript(in, name);
    return Run(name, options, out, err).Statements(statements);
  } catch (const ScriptError& error) {
    err << error.what() << std::endl;
    return kExitWrong;
  }
}

}  // namespace vexosim
