#include "sim/trace.h"

#include <algorithm>
#include <array>
#include <utility>

namespace sim {

void Trace::Add(std::uint32_t t, By by, EventDetail detail) {
  if (!enabled_) return;
  const auto place = static_cast<std::uint32_t>(details_.size());
  details_.push_back(std::move(detail));
  events_.push_back({t, by, Event::Kind::Other, BusWindow::Select, 0, place});
}

void Trace::Clear() {
  cycles_ = 0;
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
  struct Bus {
    std::uint8_t select = kSelectIdle;
    std::uint8_t address = 0;
  };
  std::array<Bus, 2> buses;  // the host's and the worker's view
  std::vector<RegisterAccess> accesses;
  const std::vector<Event>& events = trace.Events();
  // From the first event on, because an access may have begun before `from`.
  for (std::size_t i = 0; i < events.size(); ++i) {
    const Event& event = events[i];
    if (event.kind == Event::Kind::Other) continue;
    Bus& bus = buses[static_cast<std::size_t>(event.by)];
    const bool load = event.kind == Event::Kind::Load;
    if (event.window == BusWindow::Data) {
      if (i >= from) {
        accesses.push_back({load, bus.select, bus.address, event.value, event.by, event.t});
      }
      ++bus.address;
    } else if (!load) {
      (event.window == BusWindow::Select ? bus.select : bus.address) = event.value;
    }
  }
  return accesses;
}

}  // namespace sim
