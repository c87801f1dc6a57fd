#include "sim/board/chip.h"

namespace sim {
namespace {

using PageBytes = std::array<std::array<std::uint8_t, kRegistersPerPage>, kPageCount>;

// Bits that the chip answers for itself: writes do not reach them.
constexpr PageBytes MakeOwnBits() {
  PageBytes own{};
  const auto own_bits = [&own](RegisterAddress at, std::uint8_t bits) {
    own[at.page][at.number] = bits;
  };
  own_bits(kChipId, 0xFF);
  for (unsigned p = 0; p < kChannelsPerChip; ++p) own_bits(kInputStatus.At(p), kInputIsNtsc);
  own_bits(kSettleStatus, kSettleBits);
  own_bits(kEventStatus, 0xFF);
  own_bits(kLossStatus, 0xFF);
  own_bits(kMotionStatus, 0xFF);
  own_bits(kStatusFlags, kStatusFlagBits);
  own_bits(kFillControl, kFillBusy);
  return own;
}

constexpr PageBytes kOwnBits = MakeOwnBits();

// Position of the channel whose register this is; -1 for another register.
constexpr int PositionIn(const ChannelRegister<1>& of, std::uint8_t page, std::uint8_t reg) {
  return Covers(of, {page, reg}) ? (reg - of.first) / of.stride : -1;
}

constexpr bool Is(const ChipRegister<1>& of, std::uint8_t page, std::uint8_t reg) {
  return Covers(of, {page, reg});
}

}  // namespace

Chip::Chip() {
  for (unsigned p = 0; p < kChannelsPerChip; ++p) {
    const auto power_on = [this](RegisterAddress at, std::uint8_t value) {
      stored_[at.page][at.number] = value;
    };
    power_on(kInputHue.At(p), kNeutralColors.hue);
    power_on(kInputSaturation.At(p), kNeutralColors.saturation);
    power_on(kInputContrast.At(p), kNeutralColors.contrast);
    power_on(kInputBrightness.At(p), kNeutralColors.brightness);
  }
}

InputColors Chip::Colors(unsigned position) const {
  const auto stored = [&](const ChannelRegister<1>& of) {
    const RegisterAddress at = of.At(position);
    return stored_[at.page][at.number];
  };
  return {stored(kInputHue), stored(kInputSaturation), stored(kInputContrast),
          stored(kInputBrightness)};
}

void Chip::Poke(std::uint8_t page, std::uint8_t reg, std::uint8_t value, std::uint32_t now_ms) {
  if (!Fitted()) return;
  std::uint8_t& stored = stored_.at(page)[reg];
  if ((value & ~stored & kAttributeFreeze) != 0) {
    if (const int p = PositionIn(kChannelAttribute, page, reg); p >= 0) {
      Frozen& frozen = frozen_[static_cast<unsigned>(p)];
      frozen.at_ms = now_ms;
      for (unsigned i = 0; i < kChannelsPerChip; ++i) {
        frozen.has_picture[i] = inputs[i].HasPicture();
        frozen.pal[i] = inputs[i].pal;
        frozen.colors[i] = Colors(i);
      }
    }
  }
  stored = static_cast<std::uint8_t>(value & ~kOwnBits[page][reg]);
}

std::uint8_t Chip::Peek(std::uint8_t page, std::uint8_t reg, bool sync) const {
  if (!Fitted()) return Is(kChipId, page, reg) ? id_ : 0xFF;
  const std::uint8_t stored = stored_.at(page)[reg];
  if (kOwnBits[page][reg] == 0) return stored;
  return stored | OwnValue(page, reg, sync);
}

std::uint8_t Chip::OwnValue(std::uint8_t page, std::uint8_t reg, bool sync) const {
  if (Is(kChipId, page, reg)) return id_;
  if (const int p = PositionIn(kInputStatus, page, reg); p >= 0) {
    return inputs[static_cast<unsigned>(p)].pal ? 0 : kInputIsNtsc.bits;
  }
  if (Is(kFillControl, page, reg)) return fill_left_ != 0 ? kFillBusy.bits : 0;
  if (Is(kSettleStatus, page, reg)) return settle_left_ != 0 ? kSettleBits.bits : 0;
  if (Is(kStatusFlags, page, reg)) return sync ? kStatusSync.bits : 0;
  unsigned bits = 0;
  for (unsigned i = 0; i < kChannelsPerChip; ++i) {
    const ChannelInput& input = inputs[i];
    if (Is(kMotionStatus, page, reg)) bits |= static_cast<unsigned>(input.motion) << i;
    if (Is(kLossStatus, page, reg)) {
      bits |= static_cast<unsigned>(input.lost) << i;
      bits |= static_cast<unsigned>(input.weak) << (i + kChannelsPerChip);
    }
  }
  return static_cast<std::uint8_t>(bits);
}

void Chip::Write(std::uint8_t page, std::uint8_t reg, std::uint8_t value, int settle_reads,
                 std::uint32_t now_ms) {
  if (!Fitted()) return;
  Poke(page, reg, value, now_ms);
  const bool hold = (value & kDisplayHold) != 0 && Covers(kChannelDisplay, {page, reg});
  if (hold) settle_left_ = settle_reads;
  // The busy bit, written, starts a fill.
  const bool fill = (value & kFillBusy) != 0 && Is(kFillControl, page, reg);
  if (fill && fill_left_ == 0) {
    fill_left_ = fill_reads_;
    bitmap_.Fill(ReadFillOrder(stored_[kPage2]));
  }
}

std::uint8_t Chip::Read(std::uint8_t page, std::uint8_t reg, bool sync) {
  const std::uint8_t value = Peek(page, reg, sync);
  if (settle_left_ > 0 && Is(kSettleStatus, page, reg)) --settle_left_;
  if (fill_left_ > 0 && Is(kFillControl, page, reg)) --fill_left_;
  return value;
}

bool Chip::CountsDown(std::uint8_t page, std::uint8_t reg) const {
  return (settle_left_ > 0 && Is(kSettleStatus, page, reg)) ||
         (fill_left_ > 0 && Is(kFillControl, page, reg));
}

void Chip::LimitSettle(int reads) {
  if (reads >= 0 && (settle_left_ < 0 || settle_left_ > reads)) settle_left_ = reads;
}

}  // namespace sim
