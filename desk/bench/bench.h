// A board whose time passes as the clock's does, with the session of a console: lines of the script
// language come from any thread, and between them the host pumps its messages.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "desk/bench/clock.h"
#include "desk/console/console.h"
#include "desk/port/moment.h"
#include "script/bring_up.h"
#include "script/interpreter.h"
#include "sim/trace.h"

namespace desk {

// Who looks on: each may be missing. Called by one thread at a time, which is inside.
struct BenchWatch {
  std::function<bool()> wants_moment;  // cheap
  std::function<void(Moment)> show;    // at most every 40 ms
  // What happens, but not what happens again when time was turned back.
  sim::TraceListener* events = nullptr;
  using Tell = std::function<void(std::uint32_t t, std::uint64_t cycle, const std::string& text)>;
  Tell stopped;
  Tell continued;
  Tell rewound;
};

struct BenchOptions {
  script::BringUpOptions board;
  script::InterpreterOptions run;  // its sinks hear the session as it would be run again
  // The library's functions that the calling thread is in.
  std::function<std::vector<std::string>()> library_stack;
  // Asked now and then by Serve: whether it shall end.
  std::function<bool()> ended;
  Clock* clock = nullptr;  // null: the machine's
};

class Bench {
 public:
  // Brings a fresh board up, of which no time has passed then.
  explicit Bench(const BenchOptions& options);
  ~Bench();
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;

  // What there is, in a sentence.
  const std::string& WhatThereIs() const;
  void Watch(const BenchWatch& watch);  // before Serve

  // Lets time pass and runs what comes until a line or End() ends it: the thread that made this.
  // Gives why the session ended by itself, nothing when it was told to.
  std::string Serve();
  // Runs one line, when those that came before are done; any other thread. `run MS` is a wait of
  // whoever sends it: others run meanwhile. A line that stops is answered there, and those that let
  // it go on have what it says later.
  Answer Run(const std::string& line);
  // Any thread. All lines that wait are refused, and those that come.
  void End();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace desk
