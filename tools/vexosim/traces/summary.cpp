#include "tools/vexosim/traces/summary.h"

#include <algorithm>
#include <iomanip>

#include "tools/vexosim/traces/event_words.h"

namespace vexosim {
namespace {

constexpr const char* kOutside = "(outside of calls)";
constexpr const char* kWorker = "(worker)";

}  // namespace

TraceSummary::Row& TraceSummary::RowOf(const std::string& name) {
  const auto [place, is_new] = places_.emplace(name, rows_.size());
  if (is_new) rows_.push_back({.name = name});
  return rows_[place->second];
}

void TraceSummary::OnEvent(const sim::Event& event, const sim::EventDetail* detail) {
  if (detail != nullptr) {
    if (const auto* call = std::get_if<sim::CallEvent>(detail)) {
      call_ = CallName(*call);
      ++RowOf(call_).calls;
    } else if (std::holds_alternative<sim::ReturnEvent>(*detail)) {
      call_.clear();
    }
    return;
  }
  Row& row = RowOf(event.by == sim::By::Worker ? kWorker : call_.empty() ? kOutside : call_);
  ++(event.kind == sim::Event::Kind::Store ? row.stores : row.loads);
  if (const auto access = decoder_.Take(event)) ++(access->read ? row.reads : row.writes);
}

void TraceSummary::Print(std::ostream& out) const {
  Row all{.name = "all"};
  std::size_t columns = 20;
  for (const Row& row : rows_) {
    columns = std::max(columns, row.name.size());
    all.calls += row.calls;
    all.stores += row.stores;
    all.loads += row.loads;
    all.reads += row.reads;
    all.writes += row.writes;
  }
  const auto print = [&](const std::string& name, const auto&... numbers) {
    out << name << std::string(columns - name.size(), ' ');
    ((out << ' ' << std::setw(9) << numbers), ...);
    out << '\n';
  };
  print("", "calls", "stores", "loads", "reads", "writes");
  for (const Row& row : rows_) {
    print(row.name, row.calls, row.stores, row.loads, row.reads, row.writes);
  }
  print(all.name, all.calls, all.stores, all.loads, all.reads, all.writes);
}

}  // namespace vexosim
