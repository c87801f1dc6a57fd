#include "display/play_mode.h"

#include "chip/register_bus.h"
#include "display/channel_masks.h"
#include "display/display_state.h"
#include "display/play_layout.h"
#include "display/play_split.h"
#include "report/diagnostics.h"

namespace {

constexpr std::uint8_t kNoOption = 0;
constexpr std::uint32_t kSwitchMs = 50;

std::int32_t SetPlaybackMode(const BoardVariant& board, const VexoPlayModeRecord* record) {
  if (record == nullptr) return VEXO_ERROR_PARAMETER;
  for (std::uint8_t p = 0; p < board.chips; ++p) {
    WriteDecodedPaths(kChipByPosition[p], FirstChannelOf(p));
  }
  Write(kChipAll, kDisplaySource, kSourceDefault);
  const std::int32_t result = SetPlaySplit(board, record->mode, kNoOption, record->channels);
  // Quirk: 16 channels keep what the split wrote.
  if (board.channels != 16) TW_ResetPlayOverlay();
  if (result != VEXO_OK) return result;
  return TW_SetChannelBlankMask(board.all_channels);
}

}  // namespace

std::int32_t TW_SetPlaybackModeInfo(const VexoPlayModeRecord* record) {
  if (record == nullptr) return VEXO_ERROR_PARAMETER;
  if (g_display.view == kViewPlayback) {
    // Quirk: redone all the same.
    VexoDbg_Print(u">> TW_SetPlaybackModeInfo ALREADY PLAYBACK MODE\r\n");
  }
  g_display.view = kViewPlayback;
  Write(kChipAll, kZoomControl, 0x00);
  const BoardVariant* board = FindBoardVariant(g_video.max_channel);
  if (board == nullptr) return VEXO_ERROR_NOT_READY;
  // Quirk: a split that the board lacks is not reported.
  SetPlaybackMode(*board, record);
  Plat_Sleep(kSwitchMs);
  return VEXO_OK;
}

std::int32_t TW_SetPlaybackModeInfo4Ch(const VexoPlayModeRecord* record) {
  return SetPlaybackMode(kBoard4Ch, record);
}

std::int32_t TW_SetPlaybackModeInfo8Ch(const VexoPlayModeRecord* record) {
  return SetPlaybackMode(kBoard8Ch, record);
}

std::int32_t TW_SetPlaybackModeInfo16Ch(const VexoPlayModeRecord* record) {
  return SetPlaybackMode(kBoard16Ch, record);
}
