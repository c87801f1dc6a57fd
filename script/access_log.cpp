#include "script/access_log.h"

#include <algorithm>

#include "sim/world.h"

namespace script {

std::vector<sim::RegisterAccess> AccessLog::Between(std::uint64_t first, std::uint64_t last) const {
  const auto begin = std::partition_point(entries_.begin(), entries_.end(),
                                          [=](const Entry& entry) { return entry.cycle < first; });
  std::vector<sim::RegisterAccess> accesses;
  for (auto entry = begin; entry != entries_.end() && entry->cycle <= last; ++entry) {
    accesses.push_back(entry->access);
  }
  return accesses;
}

void AccessLog::OnEvent(const sim::Event& event, const sim::EventDetail* /*detail*/) {
  const auto access = decoder_.Take(event);
  if (!access) return;
  entries_.push_back({sim::TheWorld().trace.Cycles(), *access});
  if (entries_.size() <= kMost) return;
  known_ = entries_.front().cycle + 1;
  entries_.pop_front();
}

}  // namespace script
