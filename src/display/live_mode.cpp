#include "display/live_mode.h"

#include <array>

#include "chip/register_bus.h"
#include "display/channel_display.h"
#include "display/channel_masks.h"
#include "display/display_state.h"
#include "display/live_split.h"
#include "report/diagnostics.h"

namespace {

// Live pictures in the attribute register: the overlay bit goes, the live bit comes.
constexpr std::uint8_t kAttributeKept = 0xFF & ~(kAttributeOverlay | kAttributeLive);

constexpr std::uint8_t kDisplayModeKept = 0xFF & ~kDisplayModeZoom;

// Decoder block of live display, from register 0x40 of page 0.
using DecoderTable = std::array<std::uint8_t, 21>;
constexpr DecoderTable kDecoderLive = {
    // 0x40
    0x00, 0x33, 0x77, 0x45, 0xA0, 0xD0, 0x7F, 0x64, 0x80, 0x80, 0x80, 0x80, 0x30, 0x0F, 0x05, 0x00,
    // 0x50
    0x00, 0x80, 0x06, 0x00, 0x00};

// Chosen by board and standard, though all four hold the same bytes.
struct DecoderChoice {
  const DecoderTable* ntsc;
  const DecoderTable* other;
};
constexpr DecoderChoice kDecoder4Ch = {&kDecoderLive, &kDecoderLive};
constexpr DecoderChoice kDecoderLarger = {&kDecoderLive, &kDecoderLive};

// Each position shows its own channel.
void WriteLivePaths() {
  for (std::uint8_t i = 0; i < kChannelsPerChip; ++i) {
    Write(kChipAll, kChannelPath, i, i);
  }
}

void ClearOverlays() {
  for (unsigned i = 0; i < kChannelsPerChip; ++i) {
    Write(kChipAll, kChannelOverlay, i, 0x00);
  }
}

// What the live switch and the reset begin with.
void ProgramLivePath() {
  const DecoderChoice& choice = g_video.max_channel == 4 ? kDecoder4Ch : kDecoderLarger;
  const DecoderTable& table = IsNtsc() ? *choice.ntsc : *choice.other;
  WriteChannelDisplayToAll(kDisplayEnable);
  WriteLivePaths();
  WriteTable(kChipAll, kDecoderBlock, table);
  ClearOverlays();
}

// What they end with.
void SetLiveAttributes(std::uint8_t chips) {
  for (unsigned i = 0; i < kChannelsPerChip; ++i) {
    for (std::uint8_t p = 0; p < chips; ++p) {
      UpdateChannelAttribute(kChipByPosition[p], i, kAttributeKept, kAttributeLive);
    }
  }
}

std::int32_t SetLiveMode(const BoardVariant& board, const VexoLiveModeRecord* record) {
  if (record == nullptr) return VEXO_ERROR_PARAMETER;
  ProgramLivePath();
  const std::uint8_t mode = Read(kChipMaster, kDisplayMode);
  Write(kChipAll, kDisplayMode, static_cast<std::uint8_t>(mode & kDisplayModeKept));
  SetLiveAttributes(board.chips);
  return SetLiveSplit(board, record->mode, record->channels);
}

}  // namespace

std::int32_t TW_SetLiveModeInfo(const VexoLiveModeRecord* record) {
  if (record == nullptr) return VEXO_ERROR_PARAMETER;
  if (g_display.view == kViewLive) {
    // Quirk: redone all the same; this is how a host programs the display anew.
    VexoDbg_Print(u">> TW_SetLiveModeInfo ALREADY LIVE MODE\r\n");
  }
  g_display.view = kViewLive;
  ClearOverlays();
  Write(kChipAll, kDisplayMode, 0x00);
  Write(kChipAll, kZoomControl, 0x00);

  // Boards that have no variant skip these two.
  if (const BoardVariant* board = FindBoardVariant(g_video.max_channel)) {
    // Quirk: a split that the board lacks is not reported.
    SetLiveMode(*board, record);
    TW_SetChannelBlankMask(~g_display.live_mask);
  }
  ApplyRecordMask();
  return VEXO_OK;
}

std::int32_t TW_SetLiveModeInfo4Ch(const VexoLiveModeRecord* record) {
  return SetLiveMode(kBoard4Ch, record);
}

std::int32_t TW_SetLiveModeInfo8Ch(const VexoLiveModeRecord* record) {
  return SetLiveMode(kBoard8Ch, record);
}

std::int32_t TW_SetLiveModeInfo16Ch(const VexoLiveModeRecord* record) {
  return SetLiveMode(kBoard16Ch, record);
}

void TW_ResetLiveDisplay() {
  ProgramLivePath();
  if (Read(kChipMaster, kDisplayMode) != 0) {
    Write(kChipAll, kDisplayMode, 0x00);
  }
  SetLiveAttributes(TextPathChips());
}
