// The register accesses of the last bus cycles.
#pragma once

#include <cstdint>
#include <deque>
#include <vector>

#include "sim/register_decoder.h"
#include "sim/trace.h"

namespace script {

// Remembers accesses with the number of the bus cycle that made each, counted from 1.
class AccessLog : public sim::TraceListener {
 public:
  static constexpr std::size_t kMost = 200'000;

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
  std::deque<Entry> entries_;
  std::uint64_t known_ = 1;
  sim::RegisterDecoder decoder_;
};

}  // namespace script
