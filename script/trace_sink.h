// Where a run's trace goes as it happens.
#pragma once

#include <functional>
#include <optional>
#include <ostream>

#include "sim/trace.h"
#include "sim/trace_json.h"

namespace script {

class TraceSink {
 public:
  virtual ~TraceSink() = default;
  // Listens to the trace from now on. Called again, with a new trace, when time is turned back:
  // what was heard before does not count any more.
  virtual void Begin(sim::Trace& trace) = 0;
  // Hears no more of it: what was heard is all.
  virtual void End(sim::Trace& trace) = 0;
  // Whether Begin can be called again.
  virtual bool CanBeginAgain() const = 0;
};

// Anything that listens, made anew for each beginning.
template <typename Listener>
class StreamSink : public TraceSink {
 public:
  // restart: empties what `out` has got so far; none where that cannot be.
  explicit StreamSink(std::ostream& out, std::function<void()> restart = nullptr)
      : out_(out), restart_(std::move(restart)) {}

  void Begin(sim::Trace& trace) override {
    if (listener_) restart_();
    listener_.emplace(out_);
    trace.AddListener(*listener_);
  }
  void End(sim::Trace& trace) override { trace.RemoveListener(*listener_); }
  bool CanBeginAgain() const override { return restart_ != nullptr; }
  bool Begun() const { return listener_.has_value(); }

 private:
  std::ostream& out_;
  std::function<void()> restart_;
  std::optional<Listener> listener_;
};

using JsonSink = StreamSink<sim::TraceWriter>;

}  // namespace script
