// Failures that the platform can be told to produce.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace sim {

// Failures that the platform can be told to produce.
enum class Fault : std::uint8_t {
  Mutex,        // the mutex cannot be created
  EventExists,  // the named event is there already: another process has the library
  MapSelect,    // a bus window cannot be mapped
  MapAddress,
  MapData,
  Thread,     // the thread cannot be created
  Send,       // SendMessageTimeout fails
  Post,       // PostMessage fails
  Allocate,   // no memory for version information
  Terminate,  // a thread that is terminated goes on
};
inline constexpr std::size_t kFaultCount = 10;

class Faults {
 public:
  void Set(Fault fault, bool on) { on_[Index(fault)] = on; }
  // Asked where the failure would happen; counts when it is on.
  bool Fires(Fault fault) {
    if (on_[Index(fault)]) ++hits_[Index(fault)];
    return on_[Index(fault)];
  }
  unsigned Hits(Fault fault) const { return hits_[Index(fault)]; }

 private:
  static std::size_t Index(Fault fault) { return static_cast<std::size_t>(fault); }
  std::array<bool, kFaultCount> on_{};
  std::array<unsigned, kFaultCount> hits_{};
};

}  // namespace sim
