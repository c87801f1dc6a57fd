// A trace of a session whose time passes by a clock: how long a `run` or `wait` was is known when
// it is over, and its line stands in front of what happened meanwhile.
#pragma once

#include <deque>
#include <optional>
#include <string>

#include "script/trace_sink.h"
#include "sim/trace.h"

namespace desk {

class HeldSink : public script::TraceSink, private sim::TraceListener {
 public:
  explicit HeldSink(script::TraceSink& sink) : sink_(sink) {}

  // The line that let time pass is kept as this.
  void OnKept(const std::string& line);

  // script::TraceSink
  void Begin(sim::Trace& trace) override;
  void End(sim::Trace& trace) override;
  bool CanBeginAgain() const override { return sink_.CanBeginAgain(); }

  // What is held goes out as it is.
  void Release();

 private:
  struct Held {
    sim::Event event;
    std::optional<sim::EventDetail> detail;
  };
  void OnEvent(const sim::Event& event, const sim::EventDetail* detail) override;
  void Pass(const sim::Event& event, const sim::EventDetail* detail);

  script::TraceSink& sink_;
  std::optional<sim::Trace> trace_;  // that the sink hears
  std::deque<Held> held_;            // from the line on
};

}  // namespace desk
