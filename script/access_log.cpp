#include "script/access_log.h"

#include <algorithm>

#include "sim/world.h"

namespace script {

std::vector<sim::RegisterAccess> AccessLog::Between(std::uint64_t first, std::uint64_t last) const {
  std::vector<sim::RegisterAccess> accesses;
  const auto add = [&](auto begin, auto end) {
    auto entry =
        std::partition_point(begin, end, [=](const Entry& each) { return each.cycle < first; });
    for (; entry != end && entry->cycle <= last; ++entry) accesses.push_back(entry->access);
  };
  const auto oldest = entries_.begin() + static_cast<std::ptrdiff_t>(oldest_);
  add(oldest, entries_.end());
  add(entries_.begin(), oldest);
  return accesses;
}

void AccessLog::OnEvent(const sim::Event& event, const sim::EventDetail* /*detail*/) {
  const auto access = decoder_.Take(event);
  if (!access) return;
  const Entry entry{sim::TheWorld().trace.Cycles(), *access};
  if (entries_.size() < kMost) return entries_.push_back(entry);
  known_ = entries_[oldest_].cycle + 1;
  entries_[oldest_] = entry;
  oldest_ = (oldest_ + 1) % kMost;
}

}  // namespace script
