// One TW2835: three pages of 256 registers, an address that advances, and the bits it owns.
#pragma once

#include <array>
#include <cstdint>

#include "chip/registers.h"
#include "sim/board/fill_engine.h"

namespace sim {

// The signal of one channel as the camera side sets it.
struct ChannelInput {
  bool pal = false;     // clears the standard bit; kept while the camera is off
  bool lost = false;    // low-nibble loss bit
  bool weak = false;    // high-nibble loss bit
  bool motion = false;  // motion bit

  bool HasPicture() const { return !lost && !weak; }
};

// The picture controls of an input, as its registers have them.
struct InputColors {
  std::uint8_t hue = 0x80;
  std::uint8_t saturation = 0x80;
  std::uint8_t contrast = 0x80;
  std::uint8_t brightness = 0x80;
  bool operator==(const InputColors&) const = default;
};
// The camera's picture as it is. It is what initialization writes, and what the registers hold when
// the power comes on.
inline constexpr InputColors kNeutralColors{};

// What a frozen position keeps of the moment when its freeze bit was set.
struct Frozen {
  std::uint32_t at_ms = 0;
  std::array<bool, kChannelsPerChip> has_picture{};  // by input of the chip
  std::array<bool, kChannelsPerChip> pal{};
  std::array<InputColors, kChannelsPerChip> colors{};
};

class Chip {
 public:
  Chip();

  // The back side: what cameras and tests do. No bus cycle.
  std::array<ChannelInput, kChannelsPerChip> inputs;
  void SetId(std::uint8_t id) { id_ = id; }
  bool Fitted() const { return (id_ & kChipIdFamily) == kChipIdTw2835; }
  // Sets a stored byte as the chip itself would; the chip's own bits stay its own. An empty
  // position keeps nothing.
  void Poke(std::uint8_t page, std::uint8_t reg, std::uint8_t value, std::uint32_t now_ms = 0);
  // What a read would give, without its side effects. sync: the board's sync bit.
  std::uint8_t Peek(std::uint8_t page, std::uint8_t reg, bool sync) const;

  // The bus side; page is 0 to 2. settle_reads: how many reads of the settle status a hold makes
  // busy, -1: all.
  void Write(std::uint8_t page, std::uint8_t reg, std::uint8_t value, int settle_reads,
             std::uint32_t now_ms);
  std::uint8_t Read(std::uint8_t page, std::uint8_t reg, bool sync);
  // A read of this register is one of those that the chip still answers busy, and not without end.
  bool CountsDown(std::uint8_t page, std::uint8_t reg) const;

  // A hold in progress settles after this many more reads at most.
  void LimitSettle(int reads);

  // How many reads of the fill control each later fill makes busy. It is drawn at once; while the
  // engine is busy a further start is lost.
  void SetFillReads(unsigned reads) { fill_reads_ = reads; }
  const Bitmap& DrawnBitmap() const { return bitmap_; }

  // The register address that the next data byte goes to.
  std::uint8_t address = 0;

  // When the channel's freeze bit was last set; meaningful while it is set.
  std::uint32_t FrozenAt(std::uint8_t position) const { return frozen_[position].at_ms; }
  const Frozen& FrozenState(std::uint8_t position) const { return frozen_[position]; }
  // The picture controls of the input at a position.
  InputColors Colors(unsigned position) const;

 private:
  std::uint8_t OwnValue(std::uint8_t page, std::uint8_t reg, bool sync) const;

  std::array<std::array<std::uint8_t, kRegistersPerPage>, kPageCount> stored_{};
  std::array<Frozen, kChannelsPerChip> frozen_{};
  std::uint8_t id_ = 0;
  int settle_left_ = 0;  // reads of the settle status still to answer busy, -1: without end
  unsigned fill_reads_ = 0;
  unsigned fill_left_ = 0;  // reads of the fill control still to answer busy
  Bitmap bitmap_;
};

}  // namespace sim
