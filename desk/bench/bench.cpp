#include "desk/bench/bench.h"

#include <algorithm>
#include <deque>
#include <list>
#include <optional>
#include <span>
#include <sstream>
#include <utility>

#include "desk/bench/bench_surroundings.h"
#include "desk/bench/held_sink.h"
#include "desk/bench/line_queue.h"
#include "desk/bench/pace.h"
#include "desk/console/margin.h"
#include "script/parse.h"
#include "sim/world.h"

namespace desk {
namespace {

using script::Statement;

constexpr Clock::Time kBetweenMoments{40};
constexpr Clock::Time kLongestNap{100};  // until somebody is looked for who watches, or ends it
constexpr std::uint64_t kLongestWait{60'000};  // that stands as one line in the session
constexpr std::size_t kMostSaid = 1 << 18;     // of what a line, which may take hours, brings

constexpr const char* kTurnedBack = "time was turned back, and the wait is over";

// What a line lets pass, none when it is no such line.
std::optional<std::uint32_t> TimeOf(const std::string& line) {
  const std::vector<std::string> words = script::SplitWords(line);
  if (words.front() != "run" && words.front() != "wait") return std::nullopt;
  return script::Arguments(std::span(words).subspan(1)).Number("");
}

// Throws std::runtime_error for a line that is none.
std::optional<Statement> Read(const std::string& line) {
  constexpr std::string_view kNoneOfALine{"\n\0", 2};
  if (line.find_first_of(kNoneOfALine) != std::string::npos) {
    throw std::runtime_error("expected one line, found a line feed or a byte 00 in it");
  }
  return script::ParseLine(line, true);
}

bool IsIdleLine(const sim::EventDetail* detail) {
  const auto* const line = detail == nullptr ? nullptr : std::get_if<sim::LineEvent>(detail);
  return line != nullptr && line->text.starts_with("wait ");
}

}  // namespace

struct Bench::Impl final : script::LineSource,
                           script::SessionObserver,
                           script::TraceSink,
                           sim::TraceListener {
  explicit Impl(const BenchOptions& of);
  ~Impl() override { World().kernel.SetPacer(nullptr); }
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  // A line that waits for the board's time.
  struct Waiter {
    SentLine line;
    std::uint64_t until;
    std::string said;
  };

  // ---- Lines, in whichever thread has the turn --------------------------------------------------
  std::optional<Statement> Next() override;
  std::optional<Statement> NextStanding();
  std::optional<Statement> NextRunning();
  std::optional<Statement> Take();
  // The line that ran last is over, or stopped.
  void Finish();
  std::string Said();
  void AnswerWaiters(Answer::Result result, const std::string& last, bool all);

  // ---- Time -------------------------------------------------------------------------------------
  std::uint64_t OnPace(std::uint64_t due);
  void Nap(Clock::Time until, bool lines_too);
  // At this time of the board, which is no later than the next thing that happens.
  void ShowMoment(std::uint64_t time);
  bool Ended();

  // ---- What happens to the session --------------------------------------------------------------
  void OnPrinted(const std::string& line) override;
  void OnKept(const std::string& line) override;
  void OnStopped(const std::string& what) override;
  void OnContinued() override;
  void OnTurnedBack() override;
  void Tell(const BenchWatch::Tell& tell, const std::string& text = {}) const;

  // ---- Each new world ---------------------------------------------------------------------------
  void Begin(sim::Trace& trace) override;
  void End(sim::Trace& trace) override { trace.RemoveListener(*this); }
  bool CanBeginAgain() const override { return true; }
  void OnEvent(const sim::Event& event, const sim::EventDetail* detail) override;

  script::InterpreterOptions SessionOptions();
  static sim::World& World() { return sim::TheWorld(); }
  static std::uint64_t Now() { return World().kernel.NowUnwrapped(); }

  const BenchOptions options;
  MachineClock machine_clock;
  Clock& clock;
  Pace pace;
  LineQueue queue;
  BenchWatch watch;
  std::deque<HeldSink> sinks;
  BenchSurroundings around;
  std::ostringstream out;
  std::optional<script::Interpreter> session;
  std::string what_there_is;

  std::optional<SentLine> current;  // waits for what it does, or says, until the next is asked for
  std::list<Waiter> waiters;
  bool idle = false;       // what runs can be ended early for others
  bool caught_up = false;  // with the clock, before a line that has come
  unsigned failures = 0;   // before what runs
  unsigned unmet = 0;
  std::string stopped;  // by what
  std::string broken;   // why time cannot pass
  Clock::Time next_moment{};
};

// ---- Life ---------------------------------------------------------------------------------------

Bench::Impl::Impl(const BenchOptions& of)
    : options(of),
      clock(of.clock != nullptr ? *of.clock : machine_clock),
      pace(clock),
      around([this] { return queue.Ended() && !idle; }, of.library_stack) {
  session.emplace(SessionOptions(), around, out, out);
  what_there_is = script::BringUp(*session, options.board);
  Said();
}

script::InterpreterOptions Bench::Impl::SessionOptions() {
  script::InterpreterOptions run = options.run;
  run.interactive = true;
  run.observer = this;
  for (script::TraceSink*& sink : run.sinks) sink = &sinks.emplace_back(*sink);
  run.sinks.push_back(this);
  return run;
}

void Bench::Impl::Begin(sim::Trace& trace) {
  trace.AddListener(*this);
  World().kernel.SetPacer([this](std::uint64_t due) { return OnPace(due); });
}

void Bench::Impl::OnEvent(const sim::Event& event, const sim::EventDetail* detail) {
  if (watch.events == nullptr || session->Replaying() || IsIdleLine(detail)) return;
  watch.events->OnEvent(event, detail);
}

// ---- Lines --------------------------------------------------------------------------------------

std::string Bench::Impl::Said() {
  std::string said = WithoutMargin(out.str());
  out.str({});
  if (said.size() > kMostSaid) said = said.substr(0, kMostSaid) + "\n(there is more)\n";
  return said;
}

void Bench::Impl::Finish() {
  const std::string said = Said();
  const bool failed = session->Failures() != failures;
  if (current) {
    const bool is_unmet = session->UnmetChecks() != unmet;
    using Result = Answer::Result;
    current->SetAnswer({failed     ? Result::Refused
                        : is_unmet ? Result::Unmet
                                   : Result::Done,
                        AnswerText(said)});
    current.reset();
  } else if (failed) {
    broken = AnswerText(said);
  }
  if (idle) {
    for (Waiter& waiter : waiters) waiter.said += said;
  }
  if (session->Stopped()) {
    AnswerWaiters(Answer::Result::Done, idle ? "" : "stopped: " + stopped, true);
  } else {
    AnswerWaiters(Answer::Result::Done, {}, false);
    idle = false;
  }
  failures = session->Failures();
  unmet = session->UnmetChecks();
}

// Those whose time has come, or all.
void Bench::Impl::AnswerWaiters(Answer::Result result, const std::string& last, bool all) {
  for (auto waiter = waiters.begin(); waiter != waiters.end();) {
    if (!all && waiter->until > Now()) {
      ++waiter;
      continue;
    }
    waiter->line.SetAnswer({result, AnswerText(waiter->said + last)});
    waiter = waiters.erase(waiter);
  }
}

std::optional<Statement> Bench::Impl::Next() {
  Finish();
  while (!Ended()) {
    const bool stands = session->Stopped() || !broken.empty();
    if (std::optional<Statement> next = stands ? NextStanding() : NextRunning()) return next;
  }
  return std::nullopt;
}

// No time passes.
std::optional<Statement> Bench::Impl::NextStanding() {
  if (!queue.Empty()) return Take();
  ShowMoment(Now());
  Nap(clock.Now() + kLongestNap, true);
  return std::nullopt;
}

std::optional<Statement> Bench::Impl::NextRunning() {
  // What the clock has had before a line comes is the board's first.
  if (!queue.Empty() && (caught_up || pace.Now(Now()) <= Now())) {
    caught_up = false;
    return Take();
  }
  caught_up = true;
  idle = true;
  std::uint64_t ms = kLongestWait;
  for (const Waiter& waiter : waiters) ms = std::min(ms, waiter.until - Now());
  return script::ParseLine("wait " + std::to_string(ms), true);
}

std::optional<Statement> Bench::Impl::Take() {
  SentLine line = *queue.Take();
  std::optional<Statement> statement;
  try {
    statement = Read(line.Line());
  } catch (const std::runtime_error& error) {
    line.SetAnswer({Answer::Result::Refused, AnswerText(error.what())});
    return std::nullopt;
  }
  if (!statement) {
    line.SetAnswer({});
    return std::nullopt;
  }
  broken.clear();
  const std::optional<std::uint32_t> ms = TimeOf(statement->text);
  if (ms && *ms != 0 && !session->Stopped()) {
    idle = true;
    waiters.push_back({std::move(line), Now() + *ms, {}});
  } else {
    current = std::move(line);
  }
  return statement;
}

// ---- Time ---------------------------------------------------------------------------------------

std::uint64_t Bench::Impl::OnPace(std::uint64_t due) {
  if (session->Replaying()) return due;
  const std::uint64_t now = Now();
  for (;;) {
    if (Ended()) return idle ? now + 1 : due;
    const std::uint64_t there = pace.Now(due);
    ShowMoment(std::clamp(there, now, due));
    if (there >= due) return due;
    const bool asked = idle && (current || !queue.Empty());
    if (asked && there > now) return there;
    Nap(pace.When(asked ? now + 1 : due), idle && !asked);
  }
}

void Bench::Impl::Nap(Clock::Time until, bool lines_too) {
  const Clock::Time now = clock.Now();
  const bool watched = watch.wants_moment && watch.wants_moment();
  queue.Wait(clock, std::min(until, watched ? std::max(next_moment, now) : now + kLongestNap),
             lines_too);
}

bool Bench::Impl::Ended() {
  if (options.ended && options.ended()) queue.End();
  return queue.Ended();
}

void Bench::Impl::ShowMoment(std::uint64_t time) {
  if (!watch.show || clock.Now() < next_moment || !watch.wants_moment()) return;
  next_moment = clock.Now() + kBetweenMoments;
  const bool stands = session->Stopped() || !broken.empty();
  sim::Board board = World().board;
  board.SetTime(
      static_cast<std::uint32_t>(time));  // its own is that of the last thing that was due
  watch.show({std::move(board), time, World().trace.Cycles(), stands ? 0 : pace.Lag(time),
              session->Stopped() ? stopped : broken});
}

// ---- What happens to the session ----------------------------------------------------------------

// What comes while time passes is theirs in one piece; this is what others' lines bring.
void Bench::Impl::OnPrinted(const std::string& line) {
  if (idle) return;
  for (Waiter& waiter : waiters) {
    if (waiter.said.size() < kMostSaid) waiter.said.append(line).append("\n");
  }
}

void Bench::Impl::OnKept(const std::string& line) {
  for (HeldSink& sink : sinks) sink.OnKept(line);
}

void Bench::Impl::OnStopped(const std::string& what) {
  stopped = what;
  Tell(watch.stopped, what);
}

void Bench::Impl::OnContinued() {
  pace.Anchor(Now());
  Tell(watch.continued);
}

void Bench::Impl::OnTurnedBack() {
  if (idle) {
    for (Waiter& waiter : waiters) waiter.said += WithoutMargin(out.str());
  }
  AnswerWaiters(Answer::Result::Refused, kTurnedBack, true);
  pace.Anchor(Now());
  Tell(watch.rewound);
}

void Bench::Impl::Tell(const BenchWatch::Tell& tell, const std::string& text) const {
  if (tell) tell(World().kernel.Now(), World().trace.Cycles(), text);
}

// ---- Bench --------------------------------------------------------------------------------------

Bench::Bench(const BenchOptions& options) : impl_(std::make_unique<Impl>(options)) {}
Bench::~Bench() = default;

const std::string& Bench::WhatThereIs() const { return impl_->what_there_is; }

void Bench::Watch(const BenchWatch& watch) { impl_->watch = watch; }

std::string Bench::Serve() {
  Impl& bench = *impl_;
  bench.pace.Anchor(Impl::Now());
  const bool told_to = bench.session->Run(bench) || bench.session->Failures() == bench.failures;
  // The reason is what it said last.
  std::string why = told_to ? "" : AnswerText(WithoutMargin(bench.out.str()));
  why.erase(0, why.rfind('\n') + 1);
  bench.Finish();
  bench.AnswerWaiters(Answer::Result::Refused, LineQueue::kEnded, true);
  bench.queue.End();
  for (HeldSink& sink : bench.sinks) sink.Release();
  bench.watch = {};
  return why;
}

Answer Bench::Run(const std::string& line) { return impl_->queue.Run(line); }

void Bench::End() { impl_->queue.End(); }

}  // namespace desk
