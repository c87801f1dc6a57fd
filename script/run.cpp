#include "script/run.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "harness/host.h"
#include "script/action_log.h"
#include "script/parse.h"
#include "script/report_words.h"
#include "sim/text.h"
#include "sim/trace_json.h"
#include "sim/world.h"

namespace script {
namespace {

// One run of a script.
class Run {
 public:
  Run(const Script& script, const RunOptions& options, Surroundings& around, std::ostream& out,
      std::ostream& err)
      : script_(script),
        options_(options),
        around_(around),
        out_(out),
        err_(err),
        session_(out, around) {
    if (options.trace != nullptr) trace_.emplace(*options.trace);
  }

  int All() {
    const std::vector<Statement>& statements = script_.statements;
    if (!options_.quiet && !script_.variant.empty()) out_ << "variant " << script_.variant << '\n';
    harness::Restart();
    sim::TheWorld().kernel.SetSeed(options_.seed);
    bool goes_on = true;
    for (std::size_t i = 0; i < statements.size() && goes_on; ++i) {
      if (options_.quiet) {
        around_.ShowProgress(script_.name + ": line " + std::to_string(statements[i].line) +
                             " of " + std::to_string(statements.back().line));
      }
      goes_on = One(statements[i]);
      if (trace_) trace_->Write(sim::TheWorld().trace);
    }
    around_.ClearProgress();
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
          sim::TheWorld().Record(sim::LineEvent{statement.text});
          [[fallthrough]];
        case LineGroup::Output:
          Echo(statement);
          statement.step(session_);
          break;
      }
      return true;
    } catch (const sim::Deadlock& deadlock) {
      Complain(statement, deadlock.what());
      status_ = kExitUnmet;
    } catch (const harness::ImageFault& fault) {
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
    around_.ClearProgress();
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
    around_.ClearProgress();
    const std::string time = std::to_string(sim::TheWorld().kernel.Now());
    out_ << std::string(time.size() < 8 ? 8 - time.size() : 0, ' ') << time << " ms  "
         << statement.text << '\n';
  }

  void Complain(const Statement& statement, const std::string& what) {
    around_.ClearProgress();
    out_.flush();
    err_ << script_.name << ':' << statement.line << ": " << statement.text << ": " << what
         << std::endl;
  }

  void Finish() {
    const sim::World& world = sim::TheWorld();
    if (options_.registers) around_.ShowRegisters(out_, {true, 0}, std::nullopt);
    if (options_.picture) {
      try {
        around_.SavePicture(*options_.picture);
      } catch (const std::exception& error) {
        err_ << error.what() << std::endl;
        status_ = kExitWrong;
      }
    }
    if (checks_ != 0) {
      if (!script_.variant.empty()) out_ << script_.variant << ": ";
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

  void PrintMachine(const harness::ImageRun& machine) {
    if (!options_.quiet) {
      out_ << "image: " << machine.Instructions() << " instructions, " << machine.DeepestStack()
           << " bytes of stack\n";
    }
    // One in a thread comes out when the host pauses next, which may be never.
    if (machine.FirstFault() && status_ == kExitDone) {
      err_ << script_.name << ": " << *machine.FirstFault() << std::endl;
      status_ = kExitUnmet;
    }
  }

  const Script& script_;
  const RunOptions& options_;
  Surroundings& around_;
  std::ostream& out_;
  std::ostream& err_;
  Session session_;
  std::optional<sim::TraceWriter> trace_;
  unsigned checks_ = 0;
  unsigned unmet_ = 0;
  int status_ = kExitDone;
};

// Of a script's variants those that are to run. Throws ScriptError.
std::vector<Script> ChosenVariants(std::vector<Script> scripts, const std::string& name,
                                   const RunOptions& options) {
  std::vector<std::string_view> names;
  names.reserve(scripts.size());
  for (const Script& script : scripts) names.push_back(script.variant);
  if (options.variant) {
    std::erase_if(scripts,
                  [&](const Script& script) { return script.variant != *options.variant; });
    if (!scripts.empty() && !options.variant->empty()) return scripts;
    throw ScriptError(name + ": expected " +
                      (names.front().empty() ? "no variant, it has none" : sim::OneOf(names)) +
                      ", found '" + *options.variant + "'");
  }
  if (scripts.size() > 1 && (options.trace != nullptr || options.picture)) {
    throw ScriptError(name + ": a trace or a picture is of one variant: choose " +
                      sim::OneOf(names) + " (--variant)");
  }
  return scripts;
}

}  // namespace

int RunScript(const Script& script, const RunOptions& options, Surroundings& around,
              std::ostream& out, std::ostream& err) {
  return Run(script, options, around, out, err).All();
}

int RunScript(std::istream& in, const std::string& name, const RunOptions& options,
              Surroundings& around, std::ostream& out, std::ostream& err) {
  try {
    int status = kExitDone;
    for (const Script& script : ChosenVariants(ParseScript(in, name), name, options)) {
      status = std::max(status, RunScript(script, options, around, out, err));
    }
    return status;
  } catch (const ScriptError& error) {
    err << error.what() << std::endl;
    return kExitWrong;
  }
}

}  // namespace script
