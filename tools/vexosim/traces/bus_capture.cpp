#include "tools/vexosim/traces/bus_capture.h"

#include <algorithm>

namespace vexosim {
namespace {

constexpr std::size_t Index(BusLine line) { return static_cast<std::size_t>(line); }

constexpr BusLine LineOf(sim::BusWindow window) {
  return static_cast<BusLine>(static_cast<std::size_t>(window));
}

constexpr BusLine EnableOf(sim::BusWindow window) {
  return static_cast<BusLine>(Index(BusLine::EnableSelect) + static_cast<std::size_t>(window));
}

}  // namespace

std::string CaptureColumns::Set(const std::string& assignment) {
  const std::size_t equals = assignment.find('=');
  const std::string role = assignment.substr(0, equals);
  const auto* const found = std::find(kBusLineNames.begin(), kBusLineNames.end(), role);
  if (equals == std::string::npos || found == kBusLineNames.end()) {
    std::string names;
    for (const std::string_view name : kBusLineNames) {
      names += (names.empty() ? "" : name == kBusLineNames.back() ? " or " : ", ");
      names += name;
    }
    return "expected LINE=NAME with the line " + names + ", found '" + Shown(assignment) + "'";
  }
  const auto line = static_cast<std::size_t>(found - kBusLineNames.begin());
  Column column{assignment.substr(equals + 1), false};
  constexpr std::string_view kLow = ":low";
  if (column.name.ends_with(kLow)) {
    if (line < kWideBusLines) {
      return "expected a name without :low, which is for strobes and enables, found '" +
             Shown(assignment) + "'";
    }
    column.name.resize(column.name.size() - kLow.size());
    column.active_low = true;
  }
  if (column.name.empty()) return "expected a name behind '=', found '" + Shown(assignment) + "'";
  lines[line] = std::move(column);
  return {};
}

std::vector<std::string> BitNames(const std::string& name, unsigned bit) {
  const std::string digit = std::to_string(bit);
  return {name + '[' + digit + ']', name + '.' + digit, name + '_' + digit, name + digit};
}

std::string LinesMissing(const CaptureColumns& columns, std::size_t missing,
                         std::string_view what) {
  std::string all;
  for (std::size_t line = 0; line < kBusLinesNeeded; ++line) {
    all += (line == 0                     ? ""
            : line + 1 == kBusLinesNeeded ? " and "
                                          : ", ") +
           Shown(columns.NameOf(line));
  }
  const std::string name(kBusLineNames[missing]);
  return "expected " + std::string(what) + " named " + all + ", found none named " +
         Shown(columns.NameOf(missing)) + " (--column " + name + "=NAME says what it is called)";
}

CycleFinder::CycleFinder(const CaptureColumns& columns, bool has_enables)
    : columns_(columns), has_enables_(has_enables) {}

bool CycleFinder::Active(const BusSample& sample, BusLine line) const {
  const bool low = columns_.lines[Index(line)].active_low;
  return sample.lines[Index(line)] == (low ? 0 : 1);
}

std::optional<CycleFinder::Strobe> CycleFinder::StrobeOf(const BusSample& sample) const {
  const bool write = Active(sample, BusLine::Write);
  const bool load = Active(sample, BusLine::Read);
  if (!write && !load) return std::nullopt;
  std::optional<sim::BusWindow> window;
  if (!has_enables_) window = sim::BusWindow::Data;
  for (const auto each : {sim::BusWindow::Select, sim::BusWindow::Address, sim::BusWindow::Data}) {
    if (!has_enables_ || !Active(sample, EnableOf(each))) continue;
    if (window) throw BadSample("expected one window enabled during a strobe, found two");
    window = each;
  }
  if (!window) return std::nullopt;  // something else on the same bus
  if (write && load) throw BadSample("expected write or read, found both strobes at once");
  return Strobe{load, *window};
}

std::uint8_t CycleFinder::ValueOf(BusLine line) const {
  const int value = last_.lines[Index(line)];
  if (value < 0) {
    throw BadSample("expected a value of " + columns_.NameOf(Index(line)) +
                    " when the strobe ends, found one that is not driven");
  }
  return static_cast<std::uint8_t>(value);
}

void CycleFinder::Add(bool load, sim::BusWindow window, std::uint8_t value,
                      std::deque<ReadEvent>& cycles) {
  using Kind = sim::Event::Kind;
  cycles.push_back(
      {{.t = t_ms_, .kind = load ? Kind::Load : Kind::Store, .window = window, .value = value},
       std::nullopt});
}

void CycleFinder::End(std::deque<ReadEvent>& cycles) {
  if (!has_enables_) {
    // The strobes are those of the chips. An access begins with a select byte; when none was
    // written since the last one, the chip has gone on to its next register by itself.
    const std::uint8_t select = ValueOf(BusLine::Select);
    const std::uint8_t address = ValueOf(BusLine::Address);
    const bool anew = selected_anew_ || select != select_;
    if (anew) Add(false, sim::BusWindow::Select, select, cycles);
    if (anew || address != address_) {
      Add(false, sim::BusWindow::Address, address, cycles);
    }
    selected_anew_ = false;
    select_ = select;
    address_ = address;
  }
  Add(strobe_->load, strobe_->window, ValueOf(LineOf(strobe_->window)), cycles);
  strobe_.reset();
}

void CycleFinder::Take(const BusSample& sample, std::uint32_t t_ms, std::deque<ReadEvent>& cycles) {
  const std::optional<Strobe> strobe = StrobeOf(sample);
  if (strobe_ && strobe_ != strobe) End(cycles);
  if (strobe) {
    last_ = sample;
    if (!strobe_) t_ms_ = t_ms;
    strobe_ = strobe;
  }
  if (sample.lines[Index(BusLine::Select)] != select_ && !strobe) selected_anew_ = true;
}

}  // namespace vexosim
