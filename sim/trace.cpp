#include "sim/trace.h"

#include <algorithm>
#include <utility>

#include "sim/register_decoder.h"

namespace sim {

void Trace::AddListener(TraceListener& listener, Hears hears) {
  listeners_.push_back(&listener);
  if (hears == Hears::Everything) cycle_listeners_.push_back(&listener);
}

void Trace::RemoveListener(TraceListener& listener) {
  std::erase(listeners_, &listener);
  std::erase(cycle_listeners_, &listener);
}

void Trace::RemoveListeners() {
  listeners_.clear();
  cycle_listeners_.clear();
}

void Trace::KeepCycle(const Event& event) {
  if (events_.size() < capacity_) events_.push_back(event);
  for (TraceListener* listener : cycle_listeners_) listener->OnEvent(event, nullptr);
}

void Trace::Keep(std::uint32_t t, By by, EventDetail detail) {
  const Event event{
      t, by, Event::Kind::Other, BusWindow::Select, 0, static_cast<std::uint32_t>(details_.size())};
  const EventDetail* kept = &detail;
  if (events_.size() < capacity_) {
    events_.push_back(event);
    kept = &details_.emplace_back(std::move(detail));
  }
  for (TraceListener* listener : listeners_) listener->OnEvent(event, kept);
}

void Trace::Clear() {
  cycles_ = 0;
  ForgetEvents();
}

void Trace::ForgetEvents() {
  events_.clear();
  details_.clear();
}

namespace {

// Select bytes have a field of two bits for each chip: its page, or 3 when it is not selected.
constexpr std::uint8_t kPageOfEveryChip = 0x55;  // times a page: that page in all four fields
constexpr std::uint8_t kFieldIdle = 3;

}  // namespace

std::uint8_t RegisterAccess::Chip() const {
  for (std::uint8_t page = 0; page < kPageCount; ++page) {
    if (select == page * kPageOfEveryChip) return kChipAll;
  }
  for (const std::uint8_t chip : kChipByPosition) {
    const bool others_idle = (select | chip) == kSelectIdle;
    const bool selected = (select & chip) != chip;
    if (others_idle && selected) return chip;
  }
  return 0;
}

std::uint8_t RegisterAccess::Page() const {
  if (Chip() == 0) return 0xFF;
  std::uint8_t page = kFieldIdle;
  for (unsigned position = 0; position < kChipsMax; ++position) {
    const auto field = static_cast<std::uint8_t>(select >> (2 * position) & 3);
    page = std::min(page, field);
  }
  return page;
}

std::vector<RegisterAccess> DecodeAccesses(const Trace& trace, std::size_t from) {
  RegisterDecoder decoder;
  std::vector<RegisterAccess> accesses;
  const std::vector<Event>& events = trace.Events();
  // From the first event on, because an access may have begun before `from`.
  for (std::size_t i = 0; i < events.size(); ++i) {
    const auto access = decoder.Take(events[i]);
    if (access && i >= from) accesses.push_back(*access);
  }
  return accesses;
}

}  // namespace sim
