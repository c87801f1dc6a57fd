// Samples of a bus to bus cycles.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tools/vexosim/traces/capture_columns.h"
#include "tools/vexosim/traces/events.h"

namespace vexosim {

// The names under which a program may give one bit of a bus: "data[3]", "data.3", "data_3",
// "data3".
std::vector<std::string> BitNames(const std::string& name, unsigned bit);

// "expected columns named ..., found none named write (--column write=NAME ...)".
std::string LinesMissing(const CaptureColumns& columns, std::size_t missing, std::string_view what);

// What is wrong with a sample.
struct BadSample : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The lines at one moment, each as it stands on the wire; -1 when it is unknown or floating. Those
// that the capture does not have are left out by `has_enables`.
struct BusSample {
  std::array<int, kBusLines> lines;
};

// A strobe makes a cycle when it ends, with the values of the last sample in which it was active:
// samples that repeat make no difference.
class CycleFinder {
 public:
  CycleFinder(const CaptureColumns& columns, bool has_enables);

  // One sample; what it ends is added to `cycles`. Throws BadSample.
  void Take(const BusSample& sample, std::uint32_t t_ms, std::deque<ReadEvent>& cycles);

 private:
  struct Strobe {
    bool load = false;
    sim::BusWindow window = sim::BusWindow::Data;
    bool operator==(const Strobe&) const = default;
  };

  bool Active(const BusSample& sample, BusLine line) const;
  std::optional<Strobe> StrobeOf(const BusSample& sample) const;
  void End(std::deque<ReadEvent>& cycles);
  void Add(bool load, sim::BusWindow window, std::uint8_t value, std::deque<ReadEvent>& cycles);
  std::uint8_t ValueOf(BusLine line) const;

  const CaptureColumns& columns_;
  bool has_enables_;
  std::optional<Strobe> strobe_;  // in progress
  BusSample last_{};              // of it
  std::uint32_t t_ms_ = 0;        // of it
  // Without enables: what the latches held when a strobe last ended, and whether the select changed
  // since.
  int select_ = -1;
  int address_ = -1;
  bool selected_anew_ = true;
};

}  // namespace vexosim
