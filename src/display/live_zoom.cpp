#include "display/live_zoom.h"

#include <algorithm>

#include "chip/register_bus.h"
#include "display/board_variant.h"
#include "display/display_state.h"
#include "report/diagnostics.h"

namespace {

constexpr std::uint8_t kZoomOff = 0x00;

constexpr std::uint8_t kZoomXMax = 0xB4;
constexpr std::uint8_t kZoomYMaxPal = 0x90;
constexpr std::uint8_t kZoomYMax = 0x78;

// Chip select code of the zoom chip, the last one of the board; 0 after a refusal.
std::uint8_t ZoomChip(const char16_t* refusal) {
  if (const BoardVariant* board = FindBoardVariant(g_video.max_channel)) {
    return kChipByPosition[board->chips - 1];
  }
  VexoDbg_Print(refusal);
  return 0;
}

// Sets or clears the zoom bit of all chips, as the master has the rest of the register.
void SetZoomBit(bool on) {
  const std::uint8_t mode = Read(kChipMaster, kDisplayMode);
  Write(kChipAll, kDisplayMode,
        static_cast<std::uint8_t>(on ? mode | kDisplayModeZoom : mode & ~kDisplayModeZoom));
}

}  // namespace

void TW_SetLiveZoomArea() {
  const std::uint8_t chip = ZoomChip(u">> TW_SetLiveZoomArea Invalid channel!!\r\n");
  if (chip != 0) Write(chip, kZoomControl, kZoomArea);
}

void TW_SetLiveZoomStart() {
  const std::uint8_t chip = ZoomChip(u">> TW_SetLiveZoomStart Invalid channel!!\r\n");
  if (chip == 0) return;
  SetZoomBit(true);
  Write(chip, kZoomControl, kZoomOn);
}

void TW_SetLiveZoomStop() {
  const std::uint8_t chip = ZoomChip(u">> TW_SetLiveZoomStop Invalid channel!!\r\n");
  if (chip == 0) return;
  SetZoomBit(false);
  Write(chip, kZoomControl, kZoomOff);
}

void TW_SetLiveZoomMove(std::uint8_t x, std::uint8_t y) {
  const std::uint8_t chip = ZoomChip(u">> TW_SetLiveZoomMove Invalid channel!!\r\n");
  if (chip == 0) return;
  const std::uint8_t y_max = g_video.video_standard == kStandardPal ? kZoomYMaxPal : kZoomYMax;
  Write(chip, kZoomX, std::min(x, kZoomXMax));
  Write(chip, kZoomY, std::min(y, y_max));
}
