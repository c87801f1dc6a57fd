#include "script/stop_points.h"

#include <algorithm>

#include "script/register_words.h"
#include "sim/text.h"
#include "sim/world.h"

namespace script {
namespace {

bool Means(const ChipChoice& chips, std::uint8_t select) {
  if (chips.all) return true;
  return (select >> (2 * chips.position) & 3U) < kPageCount;
}

std::string CycleInWords(const sim::Event& event) {
  static constexpr std::array kWindows = {"select", "address", "data"};
  return (event.kind == sim::Event::Kind::Load ? "load of " : "store to ") +
         std::string(kWindows.at(static_cast<std::size_t>(event.window))) + ": " +
         sim::Hex(event.value);
}

}  // namespace

unsigned StopPoints::Add(StopPoint point) {
  points_.push_back({next_number_, std::move(point)});
  Listen();
  return next_number_++;
}

bool StopPoints::Remove(unsigned number) {
  return std::erase_if(points_, [number](const Numbered& p) { return p.number == number; }) != 0;
}

void StopPoints::Clear() {
  points_.clear();
  at_next_cycle_ = false;
  at_return_ = false;
}

std::vector<std::string> StopPoints::InWords() const {
  std::vector<std::string> lines;
  for (const Numbered& p : points_) {
    lines.push_back(std::to_string(p.number) + ": " + p.point.words);
  }
  return lines;
}

void StopPoints::StopAtNextCycle() {
  at_next_cycle_ = true;
  Listen();
}

void StopPoints::StopAtReturn() {
  at_return_ = true;
  Listen();
}

void StopPoints::Listen() {
  if (listening_) return;
  sim::TheWorld().trace.AddListener(*this);
  decoder_ = {};
  listening_ = true;
}

void StopPoints::Detach() {
  if (listening_) sim::TheWorld().trace.RemoveListener(*this);
  listening_ = false;
}

void StopPoints::Stop(const std::string& what) {
  at_next_cycle_ = false;
  at_return_ = false;
  stop_(what);
}

void StopPoints::OnEvent(const sim::Event& event, const sim::EventDetail* detail) {
  if (detail == nullptr) return OnCycle(event);
  if (at_return_ && std::holds_alternative<sim::ReturnEvent>(*detail)) {
    return Stop("end of " + std::get<sim::ReturnEvent>(*detail).fn);
  }
  for (const Numbered& p : points_) {
    if (p.point.kind == StopPoint::Kind::Text) {
      const auto* debug = std::get_if<sim::DebugEvent>(detail);
      if (debug == nullptr || debug->text.find(p.point.text) == std::string::npos) continue;
    } else if (p.point.kind == StopPoint::Kind::Message) {
      const auto* message = std::get_if<sim::MessageEvent>(detail);
      if (message == nullptr || message->message != p.point.number) continue;
    } else {
      continue;
    }
    return Stop("break " + std::to_string(p.number) + ": " + p.point.words);
  }
}

void StopPoints::OnCycle(const sim::Event& event) {
  const std::optional<sim::RegisterAccess> access = decoder_.Take(event);
  const std::uint64_t cycle = sim::TheWorld().trace.Cycles();
  for (const Numbered& p : points_) {
    const bool reads = p.point.kind == StopPoint::Kind::Read;
    const bool hit = p.point.kind == StopPoint::Kind::Cycle
                         ? p.point.cycle == cycle
                         : (reads || p.point.kind == StopPoint::Kind::Write) && access &&
                               access->read == reads && Means(p.point.chips, access->select) &&
                               access->Page() < kPageCount &&
                               p.point.registers[access->Page()][access->reg];
    if (!hit) continue;
    return Stop("break " + std::to_string(p.number) + ": " +
                (access ? AccessInWords(*access) : CycleInWords(event)));
  }
  if (at_next_cycle_) Stop(access ? AccessInWords(*access) : CycleInWords(event));
}

}  // namespace script
