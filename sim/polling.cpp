#include "sim/polling.h"

#include <algorithm>

namespace sim {

std::vector<Polling::Read> Polling::Last() const {
  std::vector<Read> reads;
  const std::uint64_t first = reads_ < last_.size() ? 0 : reads_ - last_.size();
  for (std::uint64_t i = first; i < reads_; ++i) {
    const Read& read = last_[i % last_.size()];
    if (std::find(reads.begin(), reads.end(), read) == reads.end()) reads.push_back(read);
  }
  return reads;
}

}  // namespace sim
