// The trace as JSON lines.
#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <ostream>

#include "sim/trace.h"

namespace sim {

// One event; members in the order of docs/trace-format.md.
nlohmann::ordered_json EventToJson(const sim::Trace& trace, const sim::Event& event);

// Writes a trace as it grows.
class TraceWriter {
 public:
  explicit TraceWriter(std::ostream& out) : out_(out) {}
  // The events since the last call, one object a line.
  void Write(const sim::Trace& trace);

 private:
  std::ostream& out_;
  std::size_t written_ = 0;
};

}  // namespace sim
