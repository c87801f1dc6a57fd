#include "display/record_path.h"

#include <array>

#include "chip/register_bus.h"
#include "chip/video_state.h"
#include "display/board_variant.h"
#include "display/live_scale.h"
#include "report/diagnostics.h"

namespace {

constexpr std::uint8_t kRecordModeSwitched = 0;
constexpr std::uint8_t kRecordModeQuad = 1;

struct RecordRow {
  std::uint8_t mode;     // kRecordMode
  std::uint8_t control;  // control bits of kRecordControl
  std::uint8_t enable;   // kRecordEnable
  std::uint8_t order;    // kRecordOrder
};

// By record mode.
constexpr std::array<RecordRow, 3> kRecordRows = {{
    {0x00, 0x20, 0xFF, 0x00},
    {0x40, 0x10, 0x00, 0xE4},
    {0x00, 0x00, 0x00, 0xE4},
}};

constexpr std::array<std::uint8_t, 4> kQueueSwitched = {0x00, 0x00, 0x00, 0x80};
constexpr std::uint8_t kQueueQuad = 0x80;
constexpr std::uint8_t kRecordPositionQuad = 0x20;

// Value of kRecordSwitching, 0 for a switching mode that is refused (and printed).
std::uint8_t SwitchingValue(std::uint8_t switching_mode) {
  if (switching_mode == 0) return 0x40;
  if (switching_mode == 4) return 0x70;
  VexoDbg_Print(u">> ERROR TW_SetRecordSetup SWITCHING MODE(%d)!!\r\n", switching_mode);
  return 0;
}

void WriteSwitchedQueues(std::uint8_t switching) {
  const BoardVariant* board = FindBoardVariant(g_video.max_channel);
  if (board == nullptr) return;
  for (std::uint8_t p = 0; p < board->chips; ++p) {
    const std::uint8_t chip = kChipByPosition[p];
    for (unsigned i = 0; i < kQueueSwitched.size(); ++i) {
      Write(chip, kRecordQueue.At(i), kQueueSwitched[i]);
    }
    Write(chip, kRecordSwitching, switching);
  }
}

void WriteQuadQueues() {
  // Quirk: all four chip codes on every board, whatever is fitted.
  for (const std::uint8_t chip : kChipByPosition) {
    Write(chip, kRecordQueue.At(0), kQueueQuad);
  }
  for (unsigned i = 0; i < kChannelsPerChip; ++i) {
    Write(kChipAll, kRecordPosition, i, kRecordPositionQuad);
  }
}

void ProgramRecordPath(std::uint8_t record_mode, std::uint8_t switching) {
  const RecordRow& row = kRecordRows[record_mode];
  Write(kChipAll, kRecordMode, row.mode);
  for (std::uint8_t n = 0; n < g_video.max_channel; ++n) TW_SetLiveScaleY(n, record_mode);

  if (record_mode == kRecordModeSwitched) WriteSwitchedQueues(switching);
  if (record_mode == kRecordModeQuad) WriteQuadQueues();

  for (unsigned i = 0; i < kChannelsPerChip; ++i) {
    Write(kChipAll, kRecordControl, i,
          static_cast<std::uint8_t>(kRecordControlOn | row.control | i));
  }
  Write(kChipAll, kRecordEnable, row.enable);
  Write(kChipAll, kRecordOrder, row.order);
  Write(kChipAll, kRecordOutput, kRecordOutputOn);
  for (std::uint8_t n = 0; n < g_video.max_channel; ++n) {
    Write(TW_GetChipSelect(n), kRecordChannel, ChannelPosition(n), 0x00);
  }
}

}  // namespace

void TW_SetRecordSetup(std::uint8_t record_mode, std::uint8_t switching_mode) {
  const std::uint8_t switching = SwitchingValue(switching_mode);
  if (switching == 0) return;
  if (record_mode >= kRecordRows.size()) {
    VexoDbg_Print(u">> ERROR TW_SetRecordSetup RECORD MODE(%d)!!\r\n", record_mode);
    return;
  }
  ProgramRecordPath(record_mode, switching);
}

void TW_SetRecordSetupDefault(std::uint8_t switching_mode) {
  TW_SetRecordSetup(kRecordModeQuad, switching_mode);
}
