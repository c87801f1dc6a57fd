// The waveform of a run as it happens.
#pragma once

#include <functional>
#include <optional>
#include <ostream>
#include <utility>

#include "script/trace_sink.h"
#include "tools/vexosim/traces/vcd_writer.h"

namespace vexosim {

class VcdSink : public script::TraceSink {
 public:
  // restart: empties what `out` has got so far; none where that cannot be.
  VcdSink(std::ostream& out, std::uint32_t cycle_ns, std::function<void()> restart = nullptr)
      : out_(out), cycle_ns_(cycle_ns), restart_(std::move(restart)) {}

  void Begin(sim::Trace& trace) override {
    if (writer_) restart_();
    writer_.emplace(out_, cycle_ns_);
    trace.AddListener(*writer_);
  }
  void End(sim::Trace& trace) override {
    trace.RemoveListener(*writer_);
    writer_->Finish();
  }
  bool CanBeginAgain() const override { return restart_ != nullptr; }
  bool Begun() const { return writer_.has_value(); }
  void Finish() {
    if (writer_) writer_->Finish();
  }

 private:
  std::ostream& out_;
  std::uint32_t cycle_ns_;
  std::function<void()> restart_;
  std::optional<VcdWriter> writer_;
};

}  // namespace vexosim
