// A trace printed in words.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "sim/register_decoder.h"
#include "sim/trace.h"

namespace vexosim {

struct TraceFilter {
  std::optional<std::size_t> chip;  // place in script::ChipWords(); what is written to all counts
  std::vector<RegisterAddress> registers;  // any of these
  std::optional<sim::By> by;
  std::uint32_t from_ms = 0;
  std::uint32_t to_ms = std::numeric_limits<std::uint32_t>::max();
  bool calls = false;  // calls and what they returned, nothing else

  // Registers are asked for: only their accesses are shown, and the calls that make them.
  bool Registers() const { return chip || !registers.empty(); }
  bool Has(const sim::RegisterAccess& access) const;
};

// Prints each event a line; accesses to neighbouring registers share one, and so do the pieces of
// a debug line.
class TracePrinter : public sim::TraceListener {
 public:
  // threads: whether the lines say who did it.
  TracePrinter(std::ostream& out, TraceFilter filter, bool threads)
      : out_(out), filter_(std::move(filter)), threads_(threads) {}

  void OnEvent(const sim::Event& event, const sim::EventDetail* detail) override;
  // What is still held back.
  void Finish() { Flush(); }

 private:
  bool Wanted(const sim::Event& event) const;
  void OnCycle(const sim::Event& event);
  void OnCall(const sim::Event& event, const sim::CallEvent& call);
  void OnReturn(const sim::Event& event, const sim::ReturnEvent& result);
  void OnDebug(const sim::Event& event, const sim::DebugEvent& debug);
  void Print(std::uint32_t t, sim::By by, const std::string& text);
  void PrintPendingCall();
  void Flush();

  std::ostream& out_;
  TraceFilter filter_;
  bool threads_;
  sim::RegisterDecoder decoder_;
  unsigned channels_ = kChannelsMax;      // as far as the trace has told
  std::vector<sim::RegisterAccess> run_;  // of neighbouring registers
  std::optional<sim::DebugEvent> line_;   // a debug line that may go on
  std::uint32_t line_t_ = 0;
  sim::By line_by_ = sim::By::Host;
  std::optional<sim::CallEvent> call_;  // in progress
  std::uint32_t call_t_ = 0;
  bool call_shown_ = false;
  std::uint64_t call_cycles_ = 0;
};

}  // namespace vexosim
