// The binary commands: one table, one lock.

#include <array>
#include <cstring>

#include "VexoCtrlSDK.h"
#include "api/worker.h"
#include "chip/register_commands.h"
#include "chip/register_dump.h"
#include "chip/video_state.h"
#include "display/channel_masks.h"
#include "display/display_state.h"
#include "display/live_mode.h"
#include "display/live_split.h"
#include "display/play_mode.h"
#include "display/play_split.h"
#include "motion/motion_cells.h"
#include "motion/motion_detect.h"
#include "report/diagnostics.h"
#include "report/library_state.h"
#include "setup/camera_driver.h"
#include "setup/initialization.h"

namespace {

using Record = std::uint8_t*;

void Lock() { Plat_Wait(g_library.g_cs4_lock, kPlatForever); }
void Unlock() { Plat_ReleaseMutex(g_library.g_cs4_lock); }

std::uint16_t ReadU16(const std::uint8_t* bytes) {
  return static_cast<std::uint16_t>(bytes[0] | (bytes[1] << 8));
}

std::uint32_t ReadU32(const std::uint8_t* bytes) {
  return ReadU16(bytes) | (static_cast<std::uint32_t>(ReadU16(bytes + 2)) << 16);
}

// ---- Operations, each on its record -----------------------------------------------------------

std::int32_t StopMonitor(Record) {
  VexoSDK_StopWorker();
  return VEXO_OK;
}

std::int32_t ReadReg(Record record) {
  record[3] = VexoProc_ReadRegister(record[0], record[1], record[2]);
  return VEXO_OK;
}

std::int32_t WriteReg(Record record) {
  VexoProc_WriteRegister(record[0], record[1], record[2], record[3]);
  return VEXO_OK;
}

std::int32_t LiveSplit(Record record) { return TW_SetLiveSplitMode(record[4], record + 6); }

std::int32_t PlaySplit(Record record) {
  return TW_SetPlaySplitMode(record[4], record[5], record + 6);
}

std::int32_t ChannelMasks(Record record) { return TW_SetChannelMaskInfo(record); }

std::int32_t LiveMode(Record record) {
  g_display.g_view_mode = 0;
  return TW_SetLiveModeInfo(record);
}

std::int32_t PlayMode(Record record) {
  g_display.g_view_mode = 1;
  return TW_SetPlaybackModeInfo(record);
}

std::int32_t BlankMask(Record record) { return TW_SetChannelBlankMask(ReadU32(record)); }

std::int32_t Bit0Mask(Record record) { return TW_SetChannelBit0Mask(ReadU32(record)); }

std::int32_t RestoreBlank(Record) { return TW_RestoreChannelBlankMask(); }

std::int32_t MotionSetup(Record record) {
  TW_HideMotionCells();
  const std::uint8_t channels[] = {record[3]};  // mode 0 has one window
  TW_SetLiveSplitMode(VEXO_SPLIT_FULL, channels);
  VexoDbg_Print(u"==>> VEXO MOTDET CELL TYPE %d \r\n", record[0]);
  TW_SetMotionTiming(record[1], record[2]);
  TW_ShowMotionCells(record[0], VEXO_SPLIT_FULL, record[3]);
  return VEXO_OK;
}

std::int32_t MotionClear(Record) {
  TW_HideMotionCells();
  return VEXO_OK;
}

std::int32_t MotionReg(Record record) {
  TW_SetMotionBoxAttr(record[0], record[1], record[2]);
  return VEXO_OK;
}

// ---- The table ----------------------------------------------------------------------------------

// What a command needs, and where it runs.
constexpr unsigned kNothing = 0x0;
constexpr unsigned kRecord = 0x1;   // needs a record
constexpr unsigned kChips = 0x2;    // needs initialized chips
constexpr unsigned kOutside = 0x4;  // Quirk: runs after the lock is released

struct Command {
  unsigned needs;
  std::int32_t (*run)(Record record);
};

constexpr std::uint16_t kFirstCommand = VEXO_CMD_STOP_MONITOR;

// From kFirstCommand on. VEXO_CMD_INIT has rules of its own, below.
constexpr std::array<Command, 16> kCommands = {{
    {kNothing, StopMonitor},                   // 0xF002
    {kRecord, ReadReg},                        // 0xF003
    {kRecord, WriteReg},                       // 0xF004
    {kRecord | kChips, LiveSplit},             // 0xF005
    {kRecord | kChips, PlaySplit},             // 0xF006
    {kRecord | kChips, TW_SetMotionMask},      // 0xF007
    {kRecord | kChips, ChannelMasks},          // 0xF008
    {kRecord | kChips, LiveMode},              // 0xF009
    {kRecord | kChips, PlayMode},              // 0xF00A
    {kRecord | kChips | kOutside, BlankMask},  // 0xF00B
    {kRecord | kChips, Bit0Mask},              // 0xF00C
    {kChips, RestoreBlank},                    // 0xF00D
    {kRecord | kChips, MotionSetup},           // 0xF00E
    {kChips, MotionClear},                     // 0xF00F
    {kRecord | kChips, TW_PreviewMotionMask},  // 0xF010
    {kRecord | kChips, MotionReg},             // 0xF011
}};

std::int32_t Run(const Command& command, Record record) {
  if ((command.needs & kRecord) != 0 && record == nullptr) {
    Unlock();
    return VEXO_ERROR_PARAMETER;
  }
  if ((command.needs & kChips) != 0 && g_video.g_chip_ready == 0) {
    Unlock();
    return VEXO_ERROR_NOT_READY;
  }
  if ((command.needs & kOutside) != 0) {
    Unlock();
    return command.run(record);
  }
  const std::int32_t result = command.run(record);
  Unlock();
  return result;
}

// Quirk: a missing record and a failed initialization return with the lock kept.
std::int32_t Initialize(Record record) {
  if (record == nullptr) return VEXO_ERROR_PARAMETER;
  constexpr std::size_t kResultOffset = 12;

  VexoProc_CameraControl(0);
  const std::int32_t channels = TW_InitializeSetup(ReadU16(record), ReadU16(record + 2));
  if (channels <= 0) {
    std::memset(record + kResultOffset, 0, sizeof(VideoState));
    VexoProc_CameraControl(1);
    return VEXO_ERROR_FAILED;
  }
  std::memcpy(record + kResultOffset, &g_video.report, sizeof(VideoState));
  VexoSDK_StartWorker();
  VexoProc_CameraControl(1);
  Unlock();
  return VEXO_OK;
}

// index: 4 * page + chip position.
std::int32_t Dump(unsigned index) {
  std::int32_t result = VEXO_ERROR_NOT_READY;
  if (g_video.g_chip_ready != 0) {
    result = TW_DumpRegisters(static_cast<std::uint8_t>(index % kChipsMax),
                              static_cast<std::uint8_t>(index / kChipsMax));
  }
  Unlock();
  return result;
}

}  // namespace

int VEXOAPI_CommandProc(std::uint32_t code, void* parameter) {
  if (g_library.g_initialized == 0 || g_library.g_host_wnd == 0) return VEXO_ERROR_NOT_READY;
  Lock();
  const auto command = static_cast<std::uint16_t>(code & 0xFFFFu);
  auto* record = static_cast<Record>(parameter);

  if (command >= VEXO_CMD_DUMP_MASTER_P0 && command <= VEXO_CMD_DUMP_SLAVE3_P2) {
    return Dump(command - VEXO_CMD_DUMP_MASTER_P0);
  }
  if (command == VEXO_CMD_INIT) return Initialize(record);
  if (command >= kFirstCommand && command <= VEXO_CMD_MOTION_REG) {
    return Run(kCommands[static_cast<std::size_t>(command - kFirstCommand)], record);
  }
  // Quirk: an unknown code keeps the lock.
  return VEXO_ERROR_FAILED;
}

int VEXOAPI_SetMotionInfo(std::uint8_t channel, std::uint8_t level, std::uint8_t* mask) {
  Lock();
  // Quirk: tested after the wait, and the lock is kept.
  if (g_library.g_initialized == 0) return VEXO_ERROR_UNINITIALIZED;
  if (g_video.g_chip_ready == 1 && mask != nullptr) StoreMotionInfo(channel, level, mask);
  Unlock();
  return VEXO_OK;
}
