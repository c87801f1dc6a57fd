#include "desk/library/record_size.h"

#include <algorithm>
#include <array>

#include "VexoCtrlSDK.h"
#include "script/command_table.h"

namespace desk {
namespace {

constexpr std::array<std::uint8_t, 7> kWindows = {1, 4, 6, 8, 9, 13, 16};  // by split mode
static_assert(kWindows[VEXO_SPLIT_FULL] == 1 && kWindows[VEXO_SPLIT_16] == 16);

// List entries of a split; none for a mode that the board lacks.
unsigned Entries(std::uint8_t mode, unsigned channels) {
  std::uint8_t last = 0;
  switch (channels) {
    case 4:
      last = VEXO_SPLIT_4;
      break;
    case 8:
      last = VEXO_SPLIT_9;
      break;
    case 16:
      last = VEXO_SPLIT_16;
      break;
    default:
      return 0;
  }
  return mode <= last ? kWindows[mode] : 0;
}

// The full picture of playback is looked for among all channels when it is centred.
unsigned PlayEntries(std::uint8_t mode, bool centred, unsigned channels) {
  const unsigned entries = Entries(mode, channels);
  return entries != 0 && mode == VEXO_SPLIT_FULL && centred ? channels : entries;
}

std::size_t WholeRecord(std::uint32_t code) {
  const script::CommandKind* const command = script::FindCommand(code);
  std::size_t bytes = 0;
  if (command == nullptr) return bytes;
  for (const script::RecordField& field : command->fields) {
    bytes = std::max(bytes, field.offset + field.Bytes());
  }
  return bytes;
}

}  // namespace

std::size_t RecordBytes(std::uint32_t code, const void* record, unsigned channels) {
  if (record == nullptr) return 0;
  const auto* const bytes = static_cast<const std::uint8_t*>(record);
  switch (code & 0xFFFF) {
    case VEXO_CMD_LIVE_SPLIT: {
      constexpr std::size_t kMode = offsetof(VexoSplitRecord, mode);
      const unsigned entries = Entries(bytes[kMode], channels);
      return entries == 0 ? kMode + 1 : offsetof(VexoSplitRecord, channels) + entries;
    }
    case VEXO_CMD_PLAY_SPLIT: {
      const std::uint8_t mode = bytes[offsetof(VexoSplitRecord, mode)];
      const bool centred = bytes[offsetof(VexoSplitRecord, option)] == 0;
      const bool refused = mode == VEXO_SPLIT_6 || mode == VEXO_SPLIT_8 || mode == VEXO_SPLIT_13;
      return offsetof(VexoSplitRecord, channels) +
             (refused ? 0 : PlayEntries(mode, centred, channels));
    }
    case VEXO_CMD_LIVE_MODE:
      return offsetof(VexoLiveModeRecord, channels) +
             Entries(bytes[offsetof(VexoLiveModeRecord, mode)], channels);
    case VEXO_CMD_PLAY_MODE:
      return offsetof(VexoPlayModeRecord, channels) +
             PlayEntries(bytes[offsetof(VexoPlayModeRecord, mode)], true, channels);
    case VEXO_CMD_MOTION_MASK:
    case VEXO_CMD_MOTION_MASK_PREVIEW:
      return bytes[offsetof(VexoMotionMaskRecord, channel)] < channels ? WholeRecord(code) : 1;
    default:
      return WholeRecord(code);
  }
}

}  // namespace desk
