// A waveform of the bus, for viewers such as GTKWave and for those that read logic analysers.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <string_view>

#include "sim/register_decoder.h"
#include "sim/trace.h"

namespace vexosim {

inline constexpr std::uint32_t kDefaultCycleNs = 100;
inline constexpr std::uint32_t kLeastCycleNs = 2;
inline constexpr std::uint32_t kMostCycleNs = 1'000'000;

// Writes a value change dump as events happen, with the signals of docs/bus-captures.md.
//
// The time is the virtual one in nanoseconds. Bus cycles take none of it, so those of one
// millisecond stand one after the other, cycle_ns each; when they do not fit into it, the time
// lags behind until the board is idle, and never goes back.
class VcdWriter : public sim::TraceListener {
 public:
  explicit VcdWriter(std::ostream& out, std::uint32_t cycle_ns = kDefaultCycleNs);
  void OnEvent(const sim::Event& event, const sim::EventDetail* detail) override;
  // The time at which the last cycle is over.
  void Finish();

 private:
  void OnCycle(const sim::Event& event);
  void Advance(std::uint32_t t_ms);
  void Stamp(std::uint64_t time);
  void Byte(std::size_t line, std::uint8_t value);
  void Bit(std::string_view id, bool value);
  void Text(std::string_view id, const std::string& text);

  std::ostream& out_;
  std::uint32_t cycle_ns_;
  std::uint64_t now_ns_ = 0;
  std::uint64_t stamped_ns_ = 0;
  std::array<int, 3> bytes_ = {-1, -1, -1};                // of the windows; -1 before the first
  std::map<std::string, std::string, std::less<>> shown_;  // of the other signals
  sim::RegisterDecoder decoder_;
};

}  // namespace vexosim
