// Failures that the platform can be told to produce.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

// Each with its word in scripts and what happens; it happens where Faults::Fires is asked for it.
#define SIM_FAULTS(FAULT)                                                         \
  FAULT(Mutex, "mutex", "the mutex cannot be created")                            \
  FAULT(EventExists, "event-exists", "the library is in another process already") \
  FAULT(MapSelect, "map-select", "the select window cannot be mapped")            \
  FAULT(MapAddress, "map-address", "the address window cannot be mapped")         \
  FAULT(MapData, "map-data", "the data window cannot be mapped")                  \
  FAULT(Thread, "thread", "the worker thread cannot be created")                  \
  FAULT(Send, "send", "no message can be sent: error 1400")                       \
  FAULT(Post, "post", "no message can be posted: error 1400")                     \
  FAULT(Allocate, "allocate", "there is no memory for version information")       \
  FAULT(Terminate, "terminate", "a thread that is terminated goes on")

namespace sim {

#define SIM_FAULT_NAME(name, word, help) name,
enum class Fault : std::uint8_t { SIM_FAULTS(SIM_FAULT_NAME) };
#undef SIM_FAULT_NAME

struct FaultWords {
  std::string_view word;
  std::string_view help;
};

// By fault.
#define SIM_FAULT_WORDS(name, word, help) FaultWords{word, help},
inline constexpr std::array kFaults = {SIM_FAULTS(SIM_FAULT_WORDS)};
#undef SIM_FAULT_WORDS

class Faults {
 public:
  void Set(Fault fault, bool on) { on_[Index(fault)] = on; }
  bool Has(Fault fault) const { return on_[Index(fault)]; }
  // Asked where the failure would happen; counts when it is on.
  bool Fires(Fault fault) {
    if (on_[Index(fault)]) ++hits_[Index(fault)];
    return on_[Index(fault)];
  }
  unsigned Hits(Fault fault) const { return hits_[Index(fault)]; }

 private:
  static std::size_t Index(Fault fault) { return static_cast<std::size_t>(fault); }
  std::array<bool, kFaults.size()> on_{};
  std::array<unsigned, kFaults.size()> hits_{};
};

}  // namespace sim
