#include "sim/board/chip.h"

namespace sim {
namespace {

constexpr std::uint8_t kFillBusy = 0x80;  // of kFillControl

using PageBytes = std::array<std::array<std::uint8_t, kRegistersPerPage>, kPageCount>;

// Bits that the chip answers for itself: writes do not reach them.
constexpr PageBytes MakeOwnBits() {
  PageBytes own{};
  own[kPage0][kChipId] = 0xFF;
  for (unsigned p = 0; p < kChannelsPerChip; ++p) {
    own[kPage0][kInputStatus + kInputStride * p] = kInputIsNtsc;
  }
  own[kPage1][kSettleStatus] = kSettleBits;
  own[kPage1][kEventStatus] = 0xFF;
  own[kPage1][kLossStatus] = 0xFF;
  own[kPage1][kMotionStatus] = 0xFF;
  own[kPage1][kStatusFlags] = kStatusFlagBits;
  own[kPage2][kFillControl] = kFillBusy;
  return own;
}

constexpr PageBytes kOwnBits = MakeOwnBits();

// Position of the channel whose registers, `stride` apart from `base`, include reg; -1 for none.
constexpr int PositionOf(std::uint8_t reg, std::uint8_t base, std::uint8_t stride) {
  const int distance = reg - base;
  if (distance < 0 || distance % stride != 0 || distance / stride >= kChannelsPerChip) return -1;
  return distance / stride;
}

}  // namespace

void Chip::Poke(std::uint8_t page, std::uint8_t reg, std::uint8_t value, std::uint32_t now_ms) {
  if (!Fitted()) return;
  std::uint8_t& stored = stored_.at(page)[reg];
  if (page == kPage1 && (value & ~stored & kAttributeFreeze) != 0) {
    if (const int p = PositionOf(reg, kChannelAttribute, kDisplayStride); p >= 0) {
      Frozen& frozen = frozen_[static_cast<unsigned>(p)];
      frozen.at_ms = now_ms;
      for (unsigned i = 0; i < kChannelsPerChip; ++i) {
        frozen.has_picture[i] = inputs[i].HasPicture();
        frozen.pal[i] = inputs[i].pal;
      }
    }
  }
  stored = static_cast<std::uint8_t>(value & ~kOwnBits[page][reg]);
}

std::uint8_t Chip::Peek(std::uint8_t page, std::uint8_t reg, bool sync) const {
  if (!Fitted()) return page == kPage0 && reg == kChipId ? id_ : 0xFF;
  const std::uint8_t stored = stored_.at(page)[reg];
  if (kOwnBits[page][reg] == 0) return stored;
  return stored | OwnValue(page, reg, sync);
}

std::uint8_t Chip::OwnValue(std::uint8_t page, std::uint8_t reg, bool sync) const {
  if (page == kPage0) {
    if (reg == kChipId) return id_;
    const int p = PositionOf(reg, kInputStatus, kInputStride);
    return inputs[static_cast<unsigned>(p)].pal ? 0 : kInputIsNtsc;
  }
  if (page == kPage2) return fill_left_ != 0 ? kFillBusy : 0;
  switch (reg) {
    case kSettleStatus:
      return settle_left_ != 0 ? kSettleBits : 0;
    case kStatusFlags:
      return sync ? kStatusSync : 0;
    case kLossStatus:
    case kMotionStatus: {
      unsigned bits = 0;
      for (unsigned i = 0; i < kChannelsPerChip; ++i) {
        const ChannelInput& input = inputs[i];
        if (reg == kMotionStatus) {
          bits |= static_cast<unsigned>(input.motion) << i;
        } else {
          bits |= static_cast<unsigned>(input.lost) << i;
          bits |= static_cast<unsigned>(input.weak) << (i + kChannelsPerChip);
        }
      }
      return static_cast<std::uint8_t>(bits);
    }
    default:
      return 0;
  }
}

void Chip::Write(std::uint8_t page, std::uint8_t reg, std::uint8_t value, int settle_reads,
                 std::uint32_t now_ms) {
  if (!Fitted()) return;
  Poke(page, reg, value, now_ms);
  const bool hold = page == kPage1 && (value & kDisplayHold) != 0 &&
                    PositionOf(reg, kChannelDisplay, kDisplayStride) >= 0;
  if (hold) settle_left_ = settle_reads;
  // The busy bit, written, starts a fill.
  const bool fill = page == kPage2 && reg == kFillControl && (value & kFillBusy) != 0;
  if (fill && fill_left_ == 0) {
    fill_left_ = fill_reads_;
    bitmap_.Fill(ReadFillOrder(stored_[kPage2]));
  }
}

std::uint8_t Chip::Read(std::uint8_t page, std::uint8_t reg, bool sync) {
  const std::uint8_t value = Peek(page, reg, sync);
  if (page == kPage1 && reg == kSettleStatus && settle_left_ > 0) --settle_left_;
  if (page == kPage2 && reg == kFillControl && fill_left_ > 0) --fill_left_;
  return value;
}

void Chip::LimitSettle(int reads) {
  if (reads >= 0 && (settle_left_ < 0 || settle_left_ > reads)) settle_left_ = reads;
}

}  // namespace sim
