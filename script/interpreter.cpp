#include "script/interpreter.h"

#include <algorithm>
#include <fstream>
#include <span>
#include <stdexcept>

#include "files/input.h"
#include "files/output.h"
#include "files/printable.h"
#include "harness/host.h"
#include "harness/image_run.h"
#include "script/report_words.h"
#include "script/run.h"
#include "sim/text.h"

namespace script {
namespace {

constexpr std::string_view kIndent = "      ";
constexpr std::size_t kMostShown = 2000;        // of a line, which may have any length
constexpr std::size_t kMostEvents = 1'000'000;  // of one action that stay in memory

}  // namespace

// ---- Sources ------------------------------------------------------------------------------------

std::optional<Statement> ScriptSource::Next() {
  if (next_ == script_.statements.size()) return std::nullopt;
  return script_.statements[next_++];
}

std::string ScriptSource::Place(const Statement& statement) const {
  return script_.name + ':' + std::to_string(statement.line) + ": ";
}

// ---- Life ---------------------------------------------------------------------------------------

Interpreter::Interpreter(const InterpreterOptions& options, Surroundings& around, std::ostream& out,
                         std::ostream& err)
    : options_(options), around_(around), out_(out), err_(err), watch_(options.limits, around) {
  Start();
}

Interpreter::~Interpreter() {
  sim::TheWorld().kernel.SetWatch(nullptr);
  End();
  sim::TheWorld().trace.RemoveListeners();  // what the sinks have
}

void Interpreter::Start() {
  harness::Restart();
  sim::World& world = sim::TheWorld();
  world.trace.SetCapacity(kMostEvents);
  world.windows.keep_received = false;
  for (TraceSink* sink : options_.sinks) sink->Begin(world.trace);
  if (rerun_) rerun_->sink->Begin(world.trace);
  session_.emplace(out_, around_, this);
  world.trace.AddListener(accesses_.emplace());
  session_->accesses = &*accesses_;
  printer_.emplace(world, out_);
  printer_->silent = options_.quiet;
  printer_->before_output = [this](const std::string& line) {
    around_.ClearProgress();
    observer_.OnPrinted(line);
  };
  session_->on_received = [this](const sim::ReceivedMessage& message) {
    printer_->OnReceived(message);
  };
  stops_.emplace([this](const std::string& what) { OnStop(what); });
  switches = {};
  marks_.clear();
  log_.clear();
  warned_ = 0;
  acting_.clear();
  passed_.reset();
  open_.reset();
  stopped_.clear();
  if (options_.seed != 0) {
    world.kernel.SetSeed(options_.seed);
    world.Record(sim::LineEvent{"seed " + std::to_string(options_.seed)});
  }
  world.kernel.SetCycleTime(options_.cycle_ns);
  watch_.Attach();
}

void Interpreter::End() {
  sim::TheWorld().trace.RemoveListener(*accesses_);
  stops_.reset();
  printer_.reset();
  session_.reset();
}

// ---- Lines --------------------------------------------------------------------------------------

bool Interpreter::Run(LineSource& source) {
  sources_.push_back({&source, nullptr});
  bool over = false;
  for (bool again = true; again;) {
    again = false;
    try {
      while (std::optional<Statement> statement = Next()) Execute(*statement);
    } catch (const Rewind& rewind) {
      TurnBack(rewind.lines);
      again = true;
    } catch (const Over&) {
      over = true;
    }
  }
  sources_.clear();
  if (open_) observer_.OnKept(log_.back().statement.text);
  open_.reset();
  around_.ClearProgress();
  return !over;
}

void Interpreter::Prepare(const Statement& statement) {
  SetReplaying(true);
  Execute(statement);
  SetReplaying(false);
}

void Interpreter::SetReplaying(bool replaying) {
  replaying_ = replaying;
  printer_->silent = options_.quiet || replaying;
  watch_.Pause(replaying);
}

std::optional<Statement> Interpreter::Next() {
  if (replaying_ && !replayed_.empty()) {
    const Logged logged = std::move(replayed_.front());
    replayed_.pop_front();
    replayed_unmet_ = logged.unmet;
    return logged.statement;
  }
  if (replaying_) EndReplay();
  for (;;) {
    try {
      OpenSource& innermost = sources_.back();
      if (std::optional<Statement> statement = innermost.source->Next()) return statement;
    } catch (const Malformed& error) {
      status_ = std::max(status_, kExitWrong);
      Note(error.what());
      continue;
    }
    if (sources_.size() == 1) return std::nullopt;
    sources_.pop_back();
  }
}

void Interpreter::Execute(const Statement& statement) {
  if (Stopped() && statement.group == LineGroup::Action) {
    return Fail(statement, log_.size(), "stopped in '" + acting_ + "': continue or step first",
                Failure::Wrong);
  }
  const bool joins = open_ && statement.goes_on;
  const std::size_t place = log_.size() - (joins ? 1 : 0);
  if (statement.group != LineGroup::Tool && !joins) {
    if (open_) observer_.OnKept(log_.back().statement.text);
    open_.reset();
    log_.push_back({statement});
  }
  if (!replaying_) Echo(statement);
  try {
    switch (statement.group) {
      case LineGroup::Action:
        Act(statement);
        Keep(place);
        break;
      case LineGroup::Check:
        if (replaying_) {
          log_.back().unmet = replayed_unmet_;
        } else {
          Check(statement);
        }
        break;
      case LineGroup::Output:
        if (!replaying_) statement.step(*session_);
        break;
      case LineGroup::Board:
        session_->World().Record(sim::LineEvent{statement.text});
        statement.step(*session_);
        break;
      case LineGroup::Switch:
      case LineGroup::Tool:
        statement.step(*session_);
        break;
    }
  } catch (const Ended& ended) {
    Fail(statement, place, ended.what(),
         ended.why == Ended::Why::Limit ? Failure::Final : Failure::Broken);
  } catch (const sim::Deadlock& deadlock) {
    Fail(statement, place, deadlock.what(), Failure::Broken);
  } catch (const harness::ImageFault& fault) {
    Fail(statement, place, fault.what(), Failure::Broken);
  } catch (const std::exception& error) {
    Fail(statement, place, error.what(), Failure::Wrong);
  }
  if (options_.interactive && !replaying_) PrintWarnings();
}

void Interpreter::Act(const Statement& statement) {
  sim::World& world = session_->World();
  if (!statement.goes_on) {
    world.trace.ForgetEvents();
    world.windows.received.clear();
    session_->BeginAction(statement.text);
  }
  world.polling.Progress();
  const std::size_t first_event = world.trace.Mark();
  printer_->fold = switches.quiet;
  printer_->Begin();
  acting_ = statement.goes_on ? "wait" : statement.text;  // it may end sooner than it says
  try {
    statement.step(*session_);
    if (switches.pump) world.kernel.Pump(0);
  } catch (const std::exception&) {
    acting_.clear();
    PrintAction(statement, first_event);
    throw;
  }
  acting_.clear();
  PrintAction(statement, first_event);
}

void Interpreter::TimePassed(std::string_view word, std::uint32_t ms, bool early) {
  passed_ = {std::string(word), ms, early};
}

// The line at this place of the log is over. One that let less time pass than it said is kept as
// that, and as one with what went on with it.
void Interpreter::Keep(std::size_t place) {
  std::optional<Passed> passed = std::exchange(passed_, std::nullopt);
  Statement& kept = log_[place].statement;
  if (passed && open_) {
    passed->word = open_->word;
    passed->ms += open_->ms;
  }
  if (passed && (passed->early || open_)) {
    std::optional<Statement> exact =
        ParseLine(passed->word + ' ' + std::to_string(passed->ms), true);
    exact->line = kept.line;
    kept = std::move(*exact);
  }
  open_.reset();
  if (passed && passed->early && place + 1 == log_.size()) {
    open_ = std::move(passed);
  } else {
    observer_.OnKept(kept.text);
  }
}

void Interpreter::PrintAction(const Statement& statement, std::size_t first_event) {
  if (replaying_) return;
  around_.ClearProgress();
  printer_->End();
  if (options_.quiet) return;
  if (switches.writes) around_.ShowWrites(out_, first_event);
  if (statement.goes_on) return;
  for (const std::string& line : session_->ResultInWords()) Note(line);
}

void Interpreter::Check(const Statement& statement) {
  ++checks_;
  try {
    statement.step(*session_);
    if (options_.interactive) Note("met");
  } catch (const Unmet& unmet) {
    ++unmet_;
    log_.back().unmet = true;
    status_ = std::max(status_, kExitUnmet);
    if (options_.interactive) return Note("not met: " + unmet.found);
    Complain(statement, unmet.found);
  }
}

// What a line could not do. A script ends with it. Who types goes on: from before the line, where
// the library was left in the middle of it.
void Interpreter::Fail(const Statement& statement, std::size_t place, const std::string& what,
                       Failure failure) {
  status_ = std::max(status_, failure == Failure::Wrong ? kExitWrong : kExitUnmet);
  ++failures_;
  if (!options_.interactive) {
    Complain(statement, what);
    throw Over{};
  }
  Note(what);
  if (failure == Failure::Final) throw Over{};
  sources_.erase(sources_.begin() + 1, sources_.end());  // the rest of a file is not run
  if (failure == Failure::Wrong) {
    log_.resize(std::min(place, log_.size()));  // it is no part of the session
    return;
  }
  try {
    CanTurnBack();
  } catch (const std::runtime_error& error) {
    Note(error.what());
    throw Over{};
  }
  Note("the line is taken back: board, library and time are as before it");
  throw Rewind{place};
}

// ---- Stops --------------------------------------------------------------------------------------

void Interpreter::OnStop(const std::string& what) {
  stopped_.push_back(what);
  if (!replaying_) {
    if (!options_.quiet) printer_->End();
    ShowWhere();
    out_.flush();
    observer_.OnStopped(what);
  }
  resume_ = false;
  while (!resume_) {
    const std::optional<Statement> statement = Next();
    if (!statement) {
      Note("the lines end here: '" + acting_ + "' goes on without stops");
      stops_->Clear();
      break;
    }
    Execute(*statement);
  }
  resume_ = false;
  stopped_.pop_back();
  if (!replaying_ && !Stopped()) observer_.OnContinued();
}

void Interpreter::ShowWhere() {
  if (!Stopped()) throw std::runtime_error("nothing is stopped");
  const sim::World& world = session_->World();
  const bool host = world.kernel.Current() == sim::By::Host;
  Note("stopped: " + stopped_.back());
  Note("  in '" + acting_ + "', " + (host ? "the host's thread" : "the worker") + ", bus cycle " +
       std::to_string(world.trace.Cycles()) + ", " + std::to_string(world.kernel.Now()) + " ms");
  if (!options_.stacks) return;
  for (const std::string& frame : around_.LibraryStack()) Note("  " + frame);
}

void Interpreter::Continue() {
  if (!Stopped()) throw std::runtime_error("nothing is stopped");
  resume_ = true;
}

void Interpreter::StepCycle() {
  stops_->StopAtNextCycle();
  resume_ = Stopped();
}

void Interpreter::StepCall() {
  stops_->StopAtReturn();
  resume_ = Stopped();
}

// ---- Time turned back ---------------------------------------------------------------------------

void Interpreter::CanTurnBack() const {
  for (const TraceSink* sink : options_.sinks) {
    if (!sink->CanBeginAgain()) {
      throw std::runtime_error(
          "the trace goes where it cannot be written anew, so time cannot be turned back");
    }
  }
}

void Interpreter::Undo() {
  CanTurnBack();
  std::size_t place = log_.size();
  while (place > kept_) {
    const Statement& statement = log_[--place].statement;
    if (statement.group == LineGroup::Board ||
        (statement.group == LineGroup::Action && !statement.goes_on)) {
      Note("undone: " + statement.text);
      throw Rewind{place};
    }
  }
  throw std::runtime_error("there is no line to undo");
}

void Interpreter::Mark(const std::string& name) {
  marks_[name] = log_.size();
  session_->moments[name] = sim::TakeSnapshot(session_->World().board);
}

void Interpreter::Back(const std::string& name) {
  CanTurnBack();
  const auto found = marks_.find(name);
  if (found == marks_.end()) {
    std::string known;
    for (const auto& [each, place] : marks_) known += (known.empty() ? "" : ", ") + each;
    throw std::runtime_error("there is no mark '" + name + '\'' +
                             (known.empty() ? "" : "; there are: " + known));
  }
  throw Rewind{found->second};
}

void Interpreter::TurnBack(std::size_t lines) {
  replayed_.clear();
  for (std::size_t i = 0; i < std::min(lines, log_.size()); ++i) {
    replayed_.push_back(std::move(log_[i]));
  }
  // What was seen can still be compared with.
  auto moments = std::move(session_->moments);
  End();
  Start();
  session_->moments = std::move(moments);
  SetReplaying(true);
}

void Interpreter::RunAgain(Rerun rerun) {
  rerun_ = std::move(rerun);
  throw Rewind{log_.size()};
}

// All lines that stay have run again.
void Interpreter::EndReplay() {
  SetReplaying(false);
  warned_ = session_->World().reports.All().size();
  if (rerun_) {
    const Rerun rerun = *std::exchange(rerun_, std::nullopt);
    rerun.sink->End(session_->World().trace);
    try {
      rerun.file->Commit();
    } catch (const files::FileError& error) {
      status_ = std::max(status_, kExitWrong);
      ++failures_;
      Note(error.what());
    }
    return;
  }
  observer_.OnTurnedBack();
  if (!Stopped()) return;
  ShowWhere();
  observer_.OnStopped(stopped_.back());
}

// ---- Files --------------------------------------------------------------------------------------

namespace {

// A file that a line names.
class FileSource : public LineSource {
 public:
  explicit FileSource(Script script) : script_(std::move(script)), source_(script_) {}
  std::optional<Statement> Next() override { return source_.Next(); }
  std::string Place(const Statement& statement) const override { return source_.Place(statement); }

 private:
  const Script script_;
  ScriptSource source_;
};

}  // namespace

void Interpreter::Source(const std::string& path) {
  constexpr std::size_t kMostOpen = 32;
  if (sources_.size() > kMostOpen) throw std::runtime_error("files name each other without end");
  std::ifstream in = files::OpenInput(path);
  std::vector<Script> scripts = ParseScript(in, path);
  if (scripts.size() > 1) throw std::runtime_error(path + " has variants, so it cannot be sourced");
  auto source = std::make_unique<FileSource>(std::move(scripts.front()));
  LineSource* const lines = source.get();
  sources_.push_back({lines, std::move(source)});
}

std::vector<std::string> Interpreter::Lines() const {
  std::vector<std::string> lines;
  for (const Logged& logged : log_) {
    lines.push_back((logged.unmet ? "# not met: " : "") + logged.statement.text);
  }
  return lines;
}

void Interpreter::Save(const std::string& path) {
  files::OutputFile file(path);
  for (const std::string& line : Lines()) file.Stream() << line << '\n';
  file.Commit();
}

void Interpreter::SaveTrace(const std::string& path) {
  CanTurnBack();
  auto file = std::make_unique<files::OutputFile>(path);
  auto sink = std::make_unique<JsonSink>(file->Stream());
  RunAgain({std::move(file), std::move(sink)});
}

void Interpreter::SaveWaveform(const std::string& path) {
  if (!options_.waveform) throw std::runtime_error("this program draws no waveforms");
  CanTurnBack();
  auto file = std::make_unique<files::OutputFile>(path);
  auto sink = options_.waveform(file->Stream());
  RunAgain({std::move(file), std::move(sink)});
}

void Interpreter::Quit() { throw Over{}; }

// ---- What is said -------------------------------------------------------------------------------

std::string Interpreter::PlaceOf(const Statement& statement) const {
  return sources_.empty() ? "" : sources_.back().source->Place(statement);
}

void Interpreter::Echo(const Statement& statement) {
  const std::string text = files::Printable(statement.text, kMostShown);
  if (options_.interactive) {
    if (statement.completed) Note(text);
    return;
  }
  if (statement.group == LineGroup::Check) return;
  if (options_.quiet) {
    return around_.ShowProgress(PlaceOf(statement) + text);
  }
  around_.ClearProgress();
  const std::string time = std::to_string(session_->World().kernel.Now());
  out_ << std::string(time.size() < 8 ? 8 - time.size() : 0, ' ') << time << " ms  " << text
       << '\n';
}

void Interpreter::Complain(const Statement& statement, const std::string& what) {
  around_.ClearProgress();
  out_.flush();
  err_ << PlaceOf(statement) << files::Printable(statement.text, kMostShown) << ": "
       << files::PrintableLines(what, kMostShown) << std::endl;
}

void Interpreter::Note(const std::string& text) {
  if (replaying_) return;
  around_.ClearProgress();
  for (const std::string& line : sim::TextLines(text)) {
    out_ << kIndent << files::Printable(line, kMostShown) << '\n';
  }
}

void Interpreter::PrintWarnings() {
  const std::vector<sim::Report>& reports = session_->World().reports.All();
  for (const std::string& warning : WarningsInWords(std::span(reports).subspan(warned_))) {
    Note("warning: " + warning);
  }
  warned_ = reports.size();
}

}  // namespace script
