// The register accesses of the last bus cycles.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "sim/register_decoder.h"
#include "sim/trace.h"

namespace script {

// Remembers accesses with the number of the bus cycle that made each, counted from 1.
class AccessLog : public sim::TraceListener {
 public:
  static constexpr std::size_t kMost = 200'000;

  // Takes all the memory at once: a board that runs for days needs no more.
  AccessLog() { entries_.reserve(kMost); }

  // Of the cycles from first to last. Accesses of cycles before Known() are forgotten.
  std::vector<sim::RegisterAccess> Between(std::uint64_t first, std::uint64_t last) const;
  std::uint64_t Known() const { return known_; }

  // sim::TraceListener
  void OnEvent(const sim::Event& event, const sim::EventDetail* detail) override;

 private:
  struct Entry {
    std::uint64_t cycle;
    sim::RegisterAccess access;
  };
  std::vector<Entry> entries_;
  std::size_t oldest_ = 0;  // of them, where the next one goes when there is no more room
  std::uint64_t known_ = 1;
  sim::RegisterDecoder decoder_;
};

}  // namespace script
