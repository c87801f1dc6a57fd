#include "script/outcome/text_action.h"

#include <algorithm>
#include <array>

namespace script {

TextAction::TextAction(const TypedLine& line, const sim::World& world, std::size_t first_event,
                       const LibraryFacts& facts)
    : line_(line), world_(world), first_event_(first_event), facts_(facts) {
  for (const sim::RegisterAccess& access : sim::DecodeAccesses(world.trace, first_event)) {
    if (access.by != sim::By::Host) continue;
    cycles_ = true;
    if (!access.read) writes_.push_back(access);
  }
}

std::string TextAction::Named(std::size_t i) const {
  return std::string(line_.numbers[i].name) + ' ' + std::to_string(Number(i));
}

std::size_t TextAction::PlaceOf(std::string_view name) const {
  const auto found = std::find_if(line_.numbers.begin(), line_.numbers.end(),
                                  [&](const TypedNumber& number) { return number.name == name; });
  return static_cast<std::size_t>(found - line_.numbers.begin());
}

unsigned TextAction::WritesTo(const Register& reg) const {
  return static_cast<unsigned>(
      std::count_if(writes_.begin(), writes_.end(), [&](const sim::RegisterAccess& write) {
        return write.Chip() != kChipAll && Covers(reg, {write.Page(), write.reg});
      }));
}

bool TextAction::Acted() const {
  return cycles_ || Last<sim::OpenEvent>() != nullptr || Last<sim::IoctlEvent>() != nullptr ||
         Last<sim::CloseEvent>() != nullptr || Last<sim::NvramEvent>() != nullptr ||
         Last<sim::MessageEvent>() != nullptr;
}

std::string_view ChipName(unsigned position) {
  static constexpr std::array<std::string_view, kChipsMax> kNames = {"master", "slave1", "slave2",
                                                                     "slave3"};
  return kNames.at(position);
}

std::string NotOfTheBoard(const TextAction& action, std::size_t place) {
  return action.Named(place) + " is none of the board's " + std::to_string(action.Channels());
}

}  // namespace script
