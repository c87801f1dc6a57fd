// Lines run one after the other, from scripts or from whoever types, with what a session has
// besides: switches, stops, and time that can be turned back.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "files/output.h"
#include "script/access_log.h"
#include "script/action_printer.h"
#include "script/parse.h"
#include "script/run_watch.h"
#include "script/session.h"
#include "script/session_observer.h"
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
  std::uint32_t cycle_ns = 0;  // how much of the board's time a bus cycle takes
  Limits limits;
  std::vector<TraceSink*> sinks;
  // Makes the sink that a waveform is written with; none: the program draws none.
  std::function<std::unique_ptr<TraceSink>(std::ostream&)> waveform;
  SessionObserver* observer = nullptr;  // null: nobody is told
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
  unsigned Failures() const { return failures_; }  // lines that could not be done
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
  bool Replaying() const { return replaying_; }  // lines run again, unseen
  void Continue();
  void StepCycle();
  void StepCall();
  void ShowWhere();

  void Undo();
  void Mark(const std::string& name);
  void Back(const std::string& name);
  void Source(const std::string& path);
  void Save(const std::string& path);
  // Writes the trace of the session so far, or its waveform, by running it again.
  void SaveTrace(const std::string& path);
  void SaveWaveform(const std::string& path);
  [[noreturn]] void Quit();
  // The lines that ran, as Save writes them.
  std::vector<std::string> Lines() const;
  // The action that runs has let this much time pass, which is less than it says if it is `early`.
  void TimePassed(std::string_view word, std::uint32_t ms, bool early);

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
  // Time that an action let pass.
  struct Passed {
    std::string word;  // of its line
    std::uint32_t ms = 0;
    bool early = false;  // less than its line said
  };
  // A file that is written while the session runs again.
  struct Rerun {
    std::unique_ptr<files::OutputFile> file;
    std::unique_ptr<TraceSink> sink;
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
  void Keep(std::size_t place);
  void Check(const Statement& statement);
  void PrintAction(const Statement& statement, std::size_t first_event);
  void OnStop(const std::string& what);
  void TurnBack(std::size_t lines);
  void SetReplaying(bool replaying);
  void CanTurnBack() const;
  [[noreturn]] void RunAgain(Rerun rerun);
  void EndReplay();
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
  SessionObserver nobody_;
  SessionObserver& observer_ = options_.observer != nullptr ? *options_.observer : nobody_;
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
  std::optional<Passed> passed_;              // by the action that runs
  // By the log's last line, when it ended early: what goes on with it becomes one with it.
  std::optional<Passed> open_;
  std::optional<Rerun> rerun_;
  std::vector<std::string> stopped_;  // what stopped it, the innermost last
  bool resume_ = false;
  std::size_t warned_ = 0;  // reports that have been shown

  int status_ = 0;
  unsigned checks_ = 0;
  unsigned unmet_ = 0;
  unsigned failures_ = 0;
};

}  // namespace script
