// The binary commands: one table, one lock.

#include <cstddef>
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

void Lock() { Plat_Wait(g_library.g_cs4_lock, kPlatForever); }
void Unlock() { Plat_ReleaseMutex(g_library.g_cs4_lock); }

// ---- Operations, each on its record -----------------------------------------------------------

// A record is the caller's, at any address, and no longer than what the public header says is read.
// So it is a pointer, never a reference, which would promise all of it to the compiler.

// Only its first two fields are read, and its state written.
std::int32_t Initialize(std::uint8_t* record) {
  constexpr std::size_t kState = offsetof(VexoInitRecord, chip_count);
  static_assert(sizeof(VexoInitRecord) - kState == sizeof(VideoState));

  VexoProc_CameraControl(0);
  std::uint16_t arguments[2];
  std::memcpy(arguments, record, sizeof arguments);
  if (TW_InitializeSetup(arguments[0], arguments[1]) <= 0) {
    std::memset(record + kState, 0, sizeof(VideoState));
    VexoProc_CameraControl(1);
    return VEXO_ERROR_FAILED;
  }
  std::memcpy(record + kState, &g_video.report, sizeof(VideoState));
  VexoSDK_StartWorker();
  VexoProc_CameraControl(1);
  return VEXO_OK;
}

std::int32_t StopMonitor() {
  VexoSDK_StopWorker();
  return VEXO_OK;
}

std::int32_t ReadReg(VexoRegRecord* record) {
  record->value = VexoProc_ReadRegister(record->chip_select, record->page, record->reg);
  return VEXO_OK;
}

std::int32_t WriteReg(const VexoRegRecord* record) {
  VexoProc_WriteRegister(record->chip_select, record->page, record->reg, record->value);
  return VEXO_OK;
}

std::int32_t LiveSplit(const VexoSplitRecord* record) {
  return TW_SetLiveSplitMode(record->mode, record->channels);
}

std::int32_t PlaySplit(const VexoSplitRecord* record) {
  return TW_SetPlaySplitMode(record->mode, record->option, record->channels);
}

std::int32_t LiveMode(const VexoLiveModeRecord* record) {
  g_display.g_view_mode = 0;
  return TW_SetLiveModeInfo(record);
}

std::int32_t PlayMode(const VexoPlayModeRecord* record) {
  g_display.g_view_mode = 1;
  return TW_SetPlaybackModeInfo(record);
}

std::int32_t BlankMask(VexoMaskRecord record) { return TW_SetChannelBlankMask(record.mask); }

std::int32_t Bit0Mask(VexoMaskRecord record) { return TW_SetChannelBit0Mask(record.mask); }

std::int32_t MotionSetup(const VexoMotionSetupRecord* record) {
  TW_HideMotionCells();
  const std::uint8_t channels[] = {record->channel};  // mode 0 has one window
  TW_SetLiveSplitMode(VEXO_SPLIT_FULL, channels);
  VexoDbg_Print(u"==>> VEXO MOTDET CELL TYPE %d \r\n", record->cell_type);
  TW_SetMotionTiming(record->timing_low, record->timing_high);
  TW_ShowMotionCells(record->cell_type, VEXO_SPLIT_FULL, record->channel);
  return VEXO_OK;
}

std::int32_t MotionClear() {
  TW_HideMotionCells();
  return VEXO_OK;
}

std::int32_t MotionReg(const VexoMotionRegRecord* record) {
  TW_SetMotionBoxAttr(record->channel, record->high, record->low);
  return VEXO_OK;
}

// index: 4 * page + chip position.
std::int32_t Dump(unsigned index) {
  return TW_DumpRegisters(static_cast<std::uint8_t>(index % kChipsMax),
                          static_cast<std::uint8_t>(index / kChipsMax));
}

// ---- The table ----------------------------------------------------------------------------------

// What a command needs beside its record, and how it goes about the lock.
constexpr std::uint8_t kNothing = 0x0;
constexpr std::uint8_t kRecord = 0x1;   // needs a record: what the operation takes says so
constexpr std::uint8_t kChips = 0x2;    // needs initialized chips
constexpr std::uint8_t kOutside = 0x4;  // Quirk: runs after the lock is released
constexpr std::uint8_t kKeeps = 0x8;    // Quirk: keeps the lock unless it succeeds

struct Command {
  std::uint16_t code;  // the first of `count`
  std::uint8_t count;
  std::uint8_t needs;
  std::int32_t (*run)(void* record, unsigned index);  // index: of its code, from 0
};

// What an operation takes: its record where it lies; a copy of it, when it has fields that an odd
// address has no room for; the index; or nothing.
template <class T>
struct Argument {
  static constexpr std::uint8_t kNeeds = kRecord;
  static T From(const void* record, unsigned) {
    T copy;
    std::memcpy(&copy, record, sizeof copy);
    return copy;
  }
};

template <class T>
struct Argument<T*> {
  static_assert(alignof(T) == 1, "take a copy of this record");
  static constexpr std::uint8_t kNeeds = kRecord;
  static T* From(void* record, unsigned) { return static_cast<T*>(record); }
};

template <>
struct Argument<unsigned> {
  static constexpr std::uint8_t kNeeds = kNothing;
  static unsigned From(const void*, unsigned index) { return index; }
};

template <auto kOperation>
struct Operation;

template <class... T, std::int32_t (*kOperation)(T...)>
struct Operation<kOperation> {
  static constexpr std::uint8_t kNeeds = (kNothing | ... | Argument<T>::kNeeds);
  static std::int32_t Run([[maybe_unused]] void* record, [[maybe_unused]] unsigned index) {
    return kOperation(Argument<T>::From(record, index)...);
  }
};

template <auto kOperation>
constexpr Command Row(std::uint16_t code, std::uint8_t needs, std::uint8_t count = 1) {
  using As = Operation<kOperation>;
  return {code, count, static_cast<std::uint8_t>(As::kNeeds | needs), As::Run};
}

constexpr std::uint8_t kDumps = VEXO_CMD_DUMP_SLAVE3_P2 - VEXO_CMD_DUMP_MASTER_P0 + 1;

constexpr Command kCommands[] = {
    Row<Initialize>(VEXO_CMD_INIT, kKeeps),
    Row<StopMonitor>(VEXO_CMD_STOP_MONITOR, kNothing),
    Row<ReadReg>(VEXO_CMD_READ_REG, kNothing),
    Row<WriteReg>(VEXO_CMD_WRITE_REG, kNothing),
    Row<LiveSplit>(VEXO_CMD_LIVE_SPLIT, kChips),
    Row<PlaySplit>(VEXO_CMD_PLAY_SPLIT, kChips),
    Row<TW_SetMotionMask>(VEXO_CMD_MOTION_MASK, kChips),
    Row<TW_SetChannelMaskInfo>(VEXO_CMD_CHANNEL_MASKS, kChips),
    Row<LiveMode>(VEXO_CMD_LIVE_MODE, kChips),
    Row<PlayMode>(VEXO_CMD_PLAY_MODE, kChips),
    Row<BlankMask>(VEXO_CMD_BLANK_MASK, kChips | kOutside),
    Row<Bit0Mask>(VEXO_CMD_BIT0_MASK, kChips),
    Row<TW_RestoreChannelBlankMask>(VEXO_CMD_RESTORE_BLANK, kChips),
    Row<MotionSetup>(VEXO_CMD_MOTION_SETUP, kChips),
    Row<MotionClear>(VEXO_CMD_MOTION_CLEAR, kChips),
    Row<TW_PreviewMotionMask>(VEXO_CMD_MOTION_MASK_PREVIEW, kChips),
    Row<MotionReg>(VEXO_CMD_MOTION_REG, kChips),
    Row<Dump>(VEXO_CMD_DUMP_MASTER_P0, kChips, kDumps),
};

constexpr bool EachCodeHasOneRow() {
  unsigned next = 0;
  for (const Command& command : kCommands) {
    if (command.code < next) return false;
    next = command.code + command.count;
  }
  return true;
}
static_assert(EachCodeHasOneRow(), "rows go by their codes");
static_assert(kDumps == kPageCount * kChipsMax);

std::int32_t Run(const Command& command, void* record, unsigned index) {
  std::int32_t result = VEXO_OK;
  if ((command.needs & kRecord) != 0 && record == nullptr) {
    result = VEXO_ERROR_PARAMETER;
  } else if ((command.needs & kChips) != 0 && g_video.g_chip_ready == 0) {
    result = VEXO_ERROR_NOT_READY;
  } else if ((command.needs & kOutside) != 0) {
    Unlock();
    return command.run(record, index);
  } else {
    result = command.run(record, index);
  }
  if (result == VEXO_OK || (command.needs & kKeeps) == 0) Unlock();
  return result;
}

}  // namespace

int VEXOAPI_CommandProc(std::uint32_t code, void* parameter) {
  if (g_library.g_initialized == 0 || g_library.g_host_wnd == 0) return VEXO_ERROR_NOT_READY;
  Lock();
  for (const Command& command : kCommands) {
    const unsigned index = (code & 0xFFFFu) - command.code;
    if (index < command.count) return Run(command, parameter, index);
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
