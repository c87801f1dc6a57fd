// A whole text command and what the library did with it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "script/outcome/library_facts.h"
#include "script/outcome/typed_line.h"
#include "sim/world.h"

namespace script {

class TextAction {
 public:
  TextAction(const TypedLine& line, const sim::World& world, std::size_t first_event,
             const LibraryFacts& facts);

  const TypedLine& Line() const { return line_; }
  const sim::World& World() const { return world_; }
  const LibraryFacts& Facts() const { return facts_; }
  unsigned Channels() const { return facts_.channels; }

  // The numbers, in the order of the pattern; those that operations take as bytes are 0 to 255.
  std::int64_t Number(std::size_t i) const { return line_.numbers[i].value; }
  unsigned Byte(std::size_t i) const { return static_cast<std::uint8_t>(Number(i)); }
  // "MODE 7".
  std::string Named(std::size_t i) const;
  // Place of a number, by its name in the pattern.
  std::size_t PlaceOf(std::string_view name) const;
  bool Has(std::string_view name) const { return PlaceOf(name) < line_.numbers.size(); }

  // ---- What was seen ----------------------------------------------------------------------------

  // The host's register writes, in order.
  const std::vector<sim::RegisterAccess>& Writes() const { return writes_; }
  unsigned WritesTo(const Register& reg) const;  // to chips one by one
  // The last event of a kind, null when there was none.
  template <typename T>
  const T* Last() const {
    const sim::Trace& trace = world_.trace;
    for (std::size_t i = trace.Mark(); i > first_event_; --i) {
      const sim::Event& event = trace.Events()[i - 1];
      if (event.by != sim::By::Host) continue;
      if (const T* found = trace.As<T>(event)) return found;
    }
    return nullptr;
  }
  // It reached a chip, a driver, the settings or the host window.
  bool Acted() const;

  void Say(std::string text) { said_.push_back(std::move(text)); }
  const std::vector<std::string>& Said() const { return said_; }

 private:
  const TypedLine& line_;
  const sim::World& world_;
  std::size_t first_event_;
  const LibraryFacts& facts_;
  std::vector<sim::RegisterAccess> writes_;
  bool cycles_ = false;
  std::vector<std::string> said_;
};

// "master", "slave1", ... of a chip's position.
std::string_view ChipName(unsigned position);
// The channel that the library writes for a number that it does not check: from 16 on the chip is
// the last one.
constexpr unsigned WrittenChannel(unsigned number) {
  return number < kChannelsMax ? number
                               : kChannelsMax - kChannelsPerChip + number % kChannelsPerChip;
}
// "CHANNEL 9 is none of the board's 8".
std::string NotOfTheBoard(const TextAction& action, std::size_t place);

// Say what became of a command, by family; the chips' command has reached them.
void SayOfChipCommand(TextAction& action);
void SayOfBackEndCommand(TextAction& action);

}  // namespace script
