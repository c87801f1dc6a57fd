// A host's life with everything in it, in which a platform call is told to fail.
//
// It goes through the exports as the harness has them, so it is the linked library's or an image's.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "sim/world.h"

namespace test {

struct Failure {
  sim::Fault fault = {};
  sim::Faults::Plan plan;
};
std::ostream& operator<<(std::ostream& out, const Failure& failure);

// What a session left, and what the next one in the same process was like.
struct SessionEnd {
  std::array<std::uint64_t, sim::kFaults.size()> calls{};  // that could fail, by fault
  unsigned hits = 0;                                       // calls that did
  bool waited_for_ever = false;  // polled what nothing would change, and was ended there

  // When the library was first detached.
  unsigned lock_depth = 0;
  unsigned keeping_calls = 0;  // that return with the lock, as the header says
  unsigned failed_releases = 0;

  // When it was last detached.
  unsigned handles = 0;
  unsigned modules = 0;
  unsigned threads = 0;
  unsigned long allocations = 0;
  std::size_t drivers = 0;
  unsigned windows = 0;  // bus windows that are mapped
  bool marked = false;   // the mark of the one instance is still there

  struct Next {
    std::vector<int> results;
    bool video_told = false;
    std::vector<std::uint8_t> registers;  // by chip, page and number
  };
  Next next;
};

// On a fresh board of eight channels and a freshly loaded library. What the image or the kernel
// throws comes out.
SessionEnd RunSession(const std::optional<Failure>& failure);

// The numbers of calls to fail: all of them up to `most`, else so many of them, the first and the
// last included.
std::vector<std::uint64_t> Numbers(std::uint64_t calls, unsigned most);

// What must hold after a session, beside one without a failure.
void ExpectGoodEnd(const SessionEnd& end, const SessionEnd& undisturbed, const Failure& failure);

}  // namespace test
