#include "desk/port/event_feed.h"

#include <algorithm>

#include "desk/port/json_lines.h"

namespace desk {

void EventFeed::Add(std::string_view rest) {
  const std::uint64_t number = end_ - 1;
  std::string line = EventLines::Line(number, rest);
  const std::lock_guard lock(mutex_);
  if (number != first_ + lines_.size()) {  // nobody watched for a while
    lines_.clear();
    bytes_ = 0;
    first_ = number;
  }
  bytes_ += line.size();
  lines_.push_back(std::move(line));
  for (; bytes_ > most_bytes_; ++first_) {
    bytes_ -= lines_.front().size();
    lines_.pop_front();
  }
}

std::uint64_t EventFeed::Watch() {
  // In this order: an event that is not kept any more is none of those to come.
  ++watchers_;
  return end_;
}

void EventFeed::Unwatch() {
  if (--watchers_ != 0) return;
  const std::lock_guard lock(mutex_);
  first_ += lines_.size();
  lines_.clear();
  bytes_ = 0;
}

void EventFeed::Take(std::uint64_t& next, std::uint64_t until, std::string& text,
                     std::size_t most) const {
  const std::lock_guard lock(mutex_);
  // Nothing is kept that is older than the first; an event that was counted may still be on its
  // way.
  const std::uint64_t end = std::min(until, first_ + lines_.size());
  if (next < std::min(first_, until)) {
    const std::uint64_t missed = std::min(first_, until) - next;
    text += MissedLine(missed);
    next += missed;
  }
  for (; next < end && text.size() < most; ++next) text += lines_[next - first_];
}

}  // namespace desk
