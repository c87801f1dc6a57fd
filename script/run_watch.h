// Ends what would not end by itself.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <stdexcept>

#include "script/surroundings.h"
#include "sim/world.h"

namespace script {

struct Limits {
  std::optional<std::uint64_t> virtual_ms;        // of the board's time
  std::optional<std::chrono::milliseconds> real;  // of a run
};

// A line, or the run, was ended from outside; the text says why.
struct Ended : std::runtime_error {
  enum class Why { Interrupt, Limit, Poll };
  Ended(Why of_why, const std::string& text) : std::runtime_error(text), why(of_why) {}
  Why why;
};

// What a line of the host waits for without an end, from the reads that nothing answers otherwise.
std::string WaitInWords(const sim::World& world);

// Watches from its construction on. Throws Ended out of what the main host thread does when the
// user interrupts, a limit is reached, or a call polls what nothing changes.
class RunWatch {
 public:
  RunWatch(const Limits& limits, const Surroundings& around);

  // The present world's kernel asks from now on.
  void Attach();
  // Paused, it lets everything pass.
  void Pause(bool paused) { paused_ = paused; }

 private:
  using Clock = std::chrono::steady_clock;
  // Reads without a write between them, as no line of any use makes them.
  static constexpr std::uint64_t kMostReads = 20'000;
  static constexpr unsigned kAsksALook = 256;  // at the clock, which costs more than the rest

  void Check();
  void CheckReal() const;

  const Limits limits_;
  const Surroundings& around_;
  const Clock::time_point begin_ = Clock::now();
  unsigned asks_ = 0;
  bool paused_ = false;
};

}  // namespace script
