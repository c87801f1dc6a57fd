#include "display/channel_masks.h"

#include <cstring>

#include "VexoCtrlSDK.h"
#include "chip/register_bus.h"
#include "display/display_state.h"

namespace {

constexpr std::uint8_t kRecordChannelOn = 0x00;

constexpr std::uint8_t Without(std::uint8_t bits) { return static_cast<std::uint8_t>(~bits); }

// Sets `bit` of the attribute register of each channel in the mask, clears it for the others.
std::int32_t ApplyAttributeMask(std::uint32_t mask, std::uint8_t bit, ViewMasks& applied) {
  const BoardVariant* board = FindBoardVariant(g_video.max_channel);
  if (board == nullptr) return VEXO_ERROR_FAILED;
  for (std::uint8_t n = 0; n < board->channels; ++n) {
    UpdateChannelAttribute(TW_GetChipSelect(n), ChannelPosition(n), Without(bit),
                           HasChannel(mask, n) ? bit : std::uint8_t{0});
  }
  MaskOfView(applied) = mask;
  return VEXO_OK;
}

// The blank bit of every chip that the text path visits; `times` in a row.
void WriteBlankBits(bool blank, unsigned times) {
  const std::uint8_t chips = TextPathChips();
  for (unsigned i = 0; i < kChannelsPerChip; ++i) {
    for (std::uint8_t p = 0; p < chips; ++p) {
      const std::uint8_t old = Read(kChipByPosition[p], kChannelAttribute, i);
      const auto value =
          static_cast<std::uint8_t>(blank ? old | kAttributeBlank : old & Without(kAttributeBlank));
      for (unsigned k = 0; k < times; ++k) Write(kChipByPosition[p], kChannelAttribute, i, value);
    }
  }
}

// Sets `bit` of the attribute register of each channel in the mask, clears it for the others,
// position by position. The master is always visited, slave 1 unless the board has four channels.
void WriteMaskByChip(std::uint16_t mask, std::uint8_t bit) {
  const unsigned chips = g_video.max_channel == 4 ? 1 : g_video.max_channel == 16 ? 4 : 2;
  for (std::uint8_t i = 0; i < kChannelsPerChip; ++i) {
    for (std::uint8_t p = 0; p < chips; ++p) {
      UpdateChannelAttribute(kChipByPosition[p], i, Without(bit),
                             HasChannel(mask, FirstChannelOf(p) + i) ? bit : std::uint8_t{0});
    }
  }
}

}  // namespace

void UpdateChannelAttribute(std::uint8_t chip, unsigned i, std::uint8_t keep, std::uint8_t set) {
  const std::uint8_t old = Read(chip, kChannelAttribute, i);
  Write(chip, kChannelAttribute, i, static_cast<std::uint8_t>((old & keep) | set));
}

std::int32_t TW_SetChannelMaskInfo(const std::uint8_t* record) {
  if (record == nullptr) return VEXO_ERROR_PARAMETER;
  VexoChannelMasksRecord masks;
  std::memcpy(&masks, record, sizeof masks);
  g_display.live_mask = masks.live_display;
  g_display.record_mask = masks.record;
  g_display.play_mask = masks.play_display;
  if (g_display.view == kViewLive) {
    TW_SetChannelBlankMask(~g_display.live_mask);
  } else if (g_display.view == kViewPlayback) {
    TW_SetChannelBlankMask(~g_display.play_mask);
  }
  ApplyRecordMask();
  return VEXO_OK;
}

std::int32_t TW_SetChannelBlankMask(std::uint32_t mask) {
  return ApplyAttributeMask(mask, kAttributeBlank, g_display.blank_mask);
}

std::int32_t TW_SetChannelBit0Mask(std::uint32_t mask) {
  return ApplyAttributeMask(mask, kAttributeBit0, g_display.bit0_mask);
}

std::int32_t TW_RestoreChannelBlankMask() {
  return TW_SetChannelBlankMask(g_display.view == kViewLive ? ~g_display.live_mask
                                                            : ~g_display.play_mask);
}

void ApplyRecordMask() {
  for (std::uint8_t n = 0; n < g_video.max_channel; ++n) {
    Write(TW_GetChipSelect(n), kRecordChannel, ChannelPosition(n),
          HasChannel(g_display.record_mask, n) ? kRecordChannelOn : kRecordChannelOff.bits);
  }
}

std::uint8_t TextPathChips() {
  const BoardVariant* board = FindBoardVariant(g_video.max_channel);
  return board == nullptr ? std::uint8_t{1} : board->chips;
}

void TW_BlankAllChannels() {
  const BoardVariant* board = FindBoardVariant(g_video.max_channel);
  if (board != nullptr) g_display.blank_mask.playback = board->all_channels;
  // Quirk: each register is written twice.
  WriteBlankBits(true, 2);
}

void TW_UnblankChannelPair(std::uint16_t channel) {
  if (channel >= g_video.max_channel) return;
  // The mask keeps what it was given; its bits of channels that no board has count for nothing.
  const std::uint32_t pair = (3u << channel) & kBoard16Ch.all_channels;
  if ((g_display.blank_mask.playback & pair) == 0) return;
  // Quirk: the second of the pair may lie past the board's last channel. Its bit of the mask
  // counts, and it is written where its number maps to: channel 16 to the register of channel 12.
  for (unsigned k = 0; k < 2; ++k) {
    const auto c = static_cast<std::uint8_t>(channel + k);
    UpdateChannelAttribute(TW_GetChipSelect(c), ChannelPosition(c), Without(kAttributeBlank), 0);
  }
  g_display.blank_mask.playback &= ~pair;
}

void TW_UnblankAllChannels() {
  g_display.blank_mask.playback = 0;
  WriteBlankBits(false, 1);
}

void TW_SetBlankMaskByChip(std::uint16_t mask) { WriteMaskByChip(mask, kAttributeBlank); }

void TW_SetBit6MaskByChip(std::uint16_t mask) {
  g_display.bit6_mask = mask;
  WriteMaskByChip(mask, kAttributeFreeze);
}
