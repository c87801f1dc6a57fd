// Lines run one after the other, from scripts or from whoever types, with what a session has
// besides: switches, stops, and time that can be turned back.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "script/access_log.h"
#include "script/action_printer.h"
#include "script/parse.h"
#include "script/run_watch.h"
#include "script/session.h"
#include "script/stop_points.h"
#include "script/trace_sink.h"

namespace script {

// Where lines come from.
class LineSource {
 public:
  virtual ~LineSource() = default;
  // The next line that does something; none at the end. Throws Malformed for a line that is none;
  // the next call goes on behind it.
  virtual std::optional<Statement> Next() = 0;
  // In front of what is said about one of its lines: "live.vexo:12: ", or nothing.
  virtual std::string Place(const Statement& /*statement*/) const { return {}; }
};

// The lines of a script.
class ScriptSource : public LineSource {
 public:
  explicit ScriptSource(const Script& script) : script_(script) {}
  std::optional<Statement> Next() override;
  std::string Place(const Statement& statement) const override;

 private:
  const Script& script_;
  std::size_t next_ = 0;
};

struct InterpreterOptions {
  bool interactive = false;  // somebody types: no echo, and what goes wrong does not end the run
  bool quiet = false;        // only unmet expectations, and what the script prints
  bool stacks = true;        // shows the library's call stack at stops
  std::uint64_t seed = 0;
  Limits limits;
  std::vector<TraceSink*> sinks;
};

class Interpreter {
 public:
  // Puts library and board back to their start.
  Interpreter(const InterpreterOptions& options, Surroundings& around, std::ostream& out,
              std::ostream& err);
  ~Interpreter();
  Interpreter(const Interpreter&) = delete;
  Interpreter& operator=(const Interpreter&) = delete;

  // Runs the source's lines to their end. False when the session is over: a line ended it, or the
  // run cannot go on.
  bool Run(LineSource& source);
  // Runs a line unseen: what brings a session to its beginning.
  void Prepare(const Statement& statement);
  // What has run so far cannot be undone.
  void KeepWhatRan() { kept_ = log_.size(); }

  int Status() const { return status_; }
  unsigned Checks() const { return checks_; }
  unsigned UnmetChecks() const { return unmet_; }
  Session& State() { return *session_; }

  // ---- What lines of the session do ---------------------------------------------------------
  // Each throws std::runtime_error with what is in its way.

  struct Switches {
    bool writes = false;  // shows register writes by name
    bool quiet = false;   // folds what repeats
    bool pump = false;    // the host handles its messages after each action
  };
  Switches switches;
  StopPoints& Stops() { return *stops_; }

  bool Interactive() const { return options_.interactive; }
  bool Stopped() const { return !stopped_.empty(); }
  void Continue();
  void StepCycle();
  void StepCall();
  void ShowWhere();

  void Undo();
  void Mark(const std::string& name);
  void Back(const std::string& name);
  void Source(const std::string& path);
  void Save(const std::string& path);
  [[noreturn]] void Quit();
  // The lines that ran, as Save writes them.
  std::vector<std::string> Lines() const;
  // The action that runs took this long only, and is kept as one that does.
  void Shorten(const std::string& text);

 private:
  struct Rewind {
    std::size_t lines;  // how many of the log stay
  };
  struct Over {};  // the session ends

  // A line that ran.
  struct Logged {
    Statement statement;
    bool unmet = false;
  };
  struct OpenSource {
    LineSource* source;
    std::unique_ptr<LineSource> owned;  // of a `source` line
  };
  enum class Failure {
    Wrong,   // the line did nothing, or not what it should
    Broken,  // the library was left in the middle of a call
    Final,   // the run must end
  };

  void Start();
  void End();
  std::optional<Statement> Next();
  void Execute(const Statement& statement);
  void Act(const Statement& statement);
  void Check(const Statement& statement);
  void PrintAction();
  void OnStop(const std::string& what);
  void TurnBack(std::size_t lines);
  void SetReplaying(bool replaying);
  void CanTurnBack() const;
  void Fail(const Statement& statement, std::size_t place, const std::string& what,
            Failure failure);
  void Echo(const Statement& statement);
  void Complain(const Statement& statement, const std::string& what);
  void Note(const std::string& text);
  void PrintWarnings();
  std::string PlaceOf(const Statement& statement) const;

  const InterpreterOptions options_;
  Surroundings& around_;
  std::ostream& out_;
  std::ostream& err_;
  RunWatch watch_;
  std::optional<Session> session_;
  std::optional<AccessLog> accesses_;
  std::optional<ActionPrinter> printer_;
  std::optional<StopPoints> stops_;

  std::vector<OpenSource> sources_;  // the innermost last
  std::deque<Logged> replayed_;      // lines that run again, unseen, before any others
  bool replaying_ = false;
  bool replayed_unmet_ = false;  // of the line that runs again
  std::vector<Logged> log_;
  std::size_t kept_ = 0;                      // lines of the log that cannot be undone
  std::map<std::string, std::size_t> marks_;  // lines of the log before it
  std::string acting_;                        // the action that runs
  std::vector<std::string> stopped_;          // what stopped it, the innermost last
  bool resume_ = false;
  std::size_t warned_ = 0;  // reports that have been shown

  int status_ = 0;
  unsigned checks_ = 0;
  unsigned unmet_ = 0;
};

}  // namespace script
