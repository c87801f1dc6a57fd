// A script made from a trace: run again, it gives the trace again.
#pragma once

#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>

#include "sim/trace.h"

namespace vexosim {

// An event that no line of a script can do.
struct NotReplayable : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Writes a line for each call, and each line that the trace has. Throws NotReplayable.
class ReplayWriter : public sim::TraceListener {
 public:
  explicit ReplayWriter(std::ostream& out) : out_(out) {}
  void OnEvent(const sim::Event& event, const sim::EventDetail* detail) override;
  // What is still held back. Throws NotReplayable when there was nothing to replay.
  void Finish();

 private:
  void OnCall(const sim::CallEvent& call);
  void OnReturn(const sim::ReturnEvent& result);
  void Line(const std::string& text);
  // Whether the version had a buffer, its return tells.
  void FlushVersion(bool null_buffer);

  std::ostream& out_;
  std::optional<sim::CallEvent> call_;  // in progress
  bool empty_ = true;
};

}  // namespace vexosim
