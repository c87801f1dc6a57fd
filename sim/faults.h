// Failures that the platform can be told to produce: always, in one call, or from one call on.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

// Each with its word in scripts and what happens; it happens where Faults::Fires is asked for it,
// once in each call that can fail so.
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
  FAULT(Terminate, "terminate", "a thread that is terminated goes on")            \
  FAULT(Event, "event", "no event can be created")                                \
  FAULT(Wait, "wait", "a wait ends at once, with an error")                       \
  FAULT(Release, "release", "a mutex is not given back")                          \
  FAULT(Close, "close", "a handle is not closed")                                 \
  FAULT(ExitCode, "exit-code", "the exit code of a thread cannot be asked")       \
  FAULT(Quantum, "quantum", "the quantum of a thread cannot be set")              \
  FAULT(NvramInit, "nvram-init", "the NVRAM library cannot be initialized")       \
  FAULT(NvramRead, "nvram-read", "the NVRAM cannot be read")                      \
  FAULT(NvramWrite, "nvram-write", "the NVRAM cannot be written")                 \
  FAULT(NvramDeinit, "nvram-deinit", "the NVRAM library cannot be shut down")     \
  FAULT(DriverOpen, "driver-open", "a driver cannot be opened: invalid handle")   \
  FAULT(DriverControl, "driver-control", "a driver refuses a request")            \
  FAULT(DriverClose, "driver-close", "a driver is not closed")                    \
  FAULT(VersionSize, "version-size", "a file has no version information")         \
  FAULT(VersionRead, "version-read", "version information cannot be read")        \
  FAULT(VersionQuery, "version-query", "version information has no root block")   \
  FAULT(Module, "module", "a module cannot be loaded for its data")               \
  FAULT(Text, "text", "the system has no text of an error")                       \
  FAULT(Store, "store", "a store on the bus reaches no chip")                     \
  FAULT(Load, "load", "a load on the bus reaches no chip and gives 0xFF")

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
  // Which of the calls to come fail, counted from 1.
  struct Plan {
    static constexpr std::uint64_t kNoEnd = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t first = 1;
    std::uint64_t last = kNoEnd;
    bool operator==(const Plan&) const = default;
  };
  static constexpr Plan Always() { return {}; }
  static constexpr Plan Nth(std::uint64_t call) { return {call, call}; }
  static constexpr Plan From(std::uint64_t call) { return {call, Plan::kNoEnd}; }

  // In place of the plan before; none: no call fails.
  void Set(Fault fault, std::optional<Plan> plan) {
    State& state = states_[Index(fault)];
    state.first = plan ? After(state.calls, plan->first) : kNever;
    state.last = plan ? After(state.calls, plan->last) : kNever;
  }
  void Set(Fault fault, bool on) { Set(fault, on ? std::optional(Always()) : std::nullopt); }

  // What of the plan is still to come; none when nothing is.
  std::optional<Plan> ToCome(Fault fault) const {
    const State& state = states_[Index(fault)];
    if (state.first == kNever || state.calls >= state.last) return std::nullopt;
    const std::uint64_t first = state.first > state.calls ? state.first - state.calls : 1;
    return Plan{first, state.last == kNever ? Plan::kNoEnd : state.last - state.calls};
  }

  // Asked where the failure would happen; counts the call, and the failure.
  bool Fires(Fault fault) {
    State& state = states_[Index(fault)];
    if (++state.calls < state.first || state.calls > state.last) return false;
    ++state.hits;
    return true;
  }
  // Calls that could fail so, and those that did.
  std::uint64_t Calls(Fault fault) const { return states_[Index(fault)].calls; }
  unsigned Hits(Fault fault) const { return states_[Index(fault)].hits; }

 private:
  static constexpr std::uint64_t kNever = Plan::kNoEnd;
  struct State {
    std::uint64_t calls = 0;
    std::uint64_t first = kNever;  // by number of the call
    std::uint64_t last = kNever;
    unsigned hits = 0;
  };

  static std::size_t Index(Fault fault) { return static_cast<std::size_t>(fault); }
  static std::uint64_t After(std::uint64_t calls, std::uint64_t number) {
    return number > kNever - calls ? kNever : calls + number;
  }
  std::array<State, kFaults.size()> states_{};
};

}  // namespace sim
