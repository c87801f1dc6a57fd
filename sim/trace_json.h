// The trace as JSON lines.
#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <ostream>

#include "sim/trace.h"

namespace sim {

// One event; members in the order of docs/trace-format.md. detail: null for a bus cycle.
nlohmann::ordered_json EventToJson(const sim::Event& event, const sim::EventDetail* detail);
inline nlohmann::ordered_json EventToJson(const sim::Trace& trace, const sim::Event& event) {
  return EventToJson(event, trace.DetailOf(event));
}

// Writes events as they happen, one object a line, or those of a trace as it grows.
class TraceWriter : public TraceListener {
 public:
  explicit TraceWriter(std::ostream& out) : out_(out) {}
  void OnEvent(const sim::Event& event, const sim::EventDetail* detail) override;
  // The events since the last call.
  void Write(const sim::Trace& trace);

 private:
  std::ostream& out_;
  std::size_t written_ = 0;
};

}  // namespace sim
