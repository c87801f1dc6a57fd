#include "tests/model/command_model.h"

#include <algorithm>

namespace test {
namespace {

std::uint32_t Word(const CommandModel::Bytes& bytes, std::size_t at) {
  std::uint32_t word = 0;
  for (std::size_t i = 4; i-- > 0;) word = (word << 8) | bytes[at + i];
  return word;
}

// The channel list of a record, to its end.
Channels ListFrom(const CommandModel::Bytes& record, std::ptrdiff_t at) {
  return {record.begin() + at, record.end()};
}

}  // namespace

int CommandModel::Run(std::uint32_t code, const std::optional<Bytes>& record) {
  std::optional<Bytes> copy = record;
  std::vector<bool> free;
  return Run(code, copy, free);
}

int CommandModel::Run(std::uint32_t code, std::optional<Bytes>& record, std::vector<bool>& free) {
  display.accesses.clear();
  display.pauses.clear();
  display.printed.clear();
  free.assign(record ? record->size() : 0, false);
  if (!initialized || !bound) return VEXO_ERROR_NOT_READY;
  code &= 0xFFFF;
  if (code == VEXO_CMD_INIT) return Initialize(record, free);
  if (code >= VEXO_CMD_DUMP_MASTER_P0 && code <= VEXO_CMD_DUMP_SLAVE3_P2) {
    return ready ? VEXO_OK : VEXO_ERROR_NOT_READY;
  }
  if (code < VEXO_CMD_STOP_MONITOR || code >= kUnknownCommand) {
    ++lock_depth;
    return VEXO_ERROR_FAILED;
  }
  if (NeedsRecord(code) && !record) return VEXO_ERROR_PARAMETER;
  if (code >= VEXO_CMD_LIVE_SPLIT && !ready) return VEXO_ERROR_NOT_READY;
  return Operate(code, record, free);
}

int CommandModel::SetMotionInfo(std::uint8_t channel, std::uint8_t level,
                                const std::optional<Bytes>& mask) {
  if (!initialized) {
    ++lock_depth;
    return VEXO_ERROR_UNINITIALIZED;
  }
  if (ready && mask) Keep(channel, level, mask->data());
  return VEXO_OK;
}

bool CommandModel::NeedsRecord(std::uint32_t code) {
  return code != VEXO_CMD_STOP_MONITOR && code != VEXO_CMD_RESTORE_BLANK &&
         code != VEXO_CMD_MOTION_CLEAR;
}

std::optional<std::size_t> CommandModel::RecordBytes(std::uint32_t code) {
  switch (code & 0xFFFF) {
    case VEXO_CMD_INIT:
      return sizeof(VexoInitRecord);
    case VEXO_CMD_READ_REG:
    case VEXO_CMD_WRITE_REG:
      return sizeof(VexoRegRecord);
    case VEXO_CMD_LIVE_SPLIT:
    case VEXO_CMD_PLAY_SPLIT:
      return sizeof(VexoSplitRecord);
    case VEXO_CMD_MOTION_MASK:
    case VEXO_CMD_MOTION_MASK_PREVIEW:
      return sizeof(VexoMotionMaskRecord);
    case VEXO_CMD_CHANNEL_MASKS:
      return sizeof(VexoChannelMasksRecord);
    case VEXO_CMD_LIVE_MODE:
      return sizeof(VexoLiveModeRecord);
    case VEXO_CMD_PLAY_MODE:
      return sizeof(VexoPlayModeRecord);
    case VEXO_CMD_BLANK_MASK:
    case VEXO_CMD_BIT0_MASK:
      return sizeof(VexoMaskRecord);
    case VEXO_CMD_MOTION_SETUP:
      return sizeof(VexoMotionSetupRecord);
    case VEXO_CMD_MOTION_REG:
      return sizeof(VexoMotionRegRecord);
    default:
      return std::nullopt;
  }
}

int CommandModel::Initialize(std::optional<Bytes>& record, std::vector<bool>& free) {
  if (!record) {
    ++lock_depth;
    return VEXO_ERROR_PARAMETER;
  }
  display.chips = 0;
  for (const std::uint8_t id : chip_ids) display.chips += (id & 0xF8) == 0x28 ? 1 : 0;
  display.channels = 4 * display.chips;
  std::fill(record->begin() + 12, record->end(), std::uint8_t{0});
  if (display.chips == 0) {
    ++lock_depth;
    return VEXO_ERROR_FAILED;
  }
  (*record)[12] = static_cast<std::uint8_t>(display.chips);
  free[16] = true;  // the standard: what is stored, or seen
  std::copy(chip_ids.begin(), chip_ids.end(), record->begin() + 20);
  ready = true;
  display.view = kLive;
  if (HasLayouts(display.channels)) display.live_split = HighestMode(display.channels);
  motion_level.fill(1);
  for (CellMask& mask : motion_mask) mask.fill(0xFF);
  return VEXO_OK;
}

int CommandModel::Operate(std::uint32_t code, std::optional<Bytes>& record,
                          std::vector<bool>& free) {
  switch (code) {
    case VEXO_CMD_READ_REG:
      (*record)[3] = 0;
      free[3] = ready && (*record)[1] <= 2;
      return VEXO_OK;
    case VEXO_CMD_LIVE_SPLIT:
      return display.LiveSplitMode((*record)[4], ListFrom(*record, 6));
    case VEXO_CMD_PLAY_SPLIT: {
      const Channels list = ListFrom(*record, 6);
      return display.PlaySplit((*record)[4], (*record)[5], &list);
    }
    case VEXO_CMD_MOTION_MASK:
    case VEXO_CMD_MOTION_MASK_PREVIEW:
      return MotionMaskRecord(*record, code == VEXO_CMD_MOTION_MASK);
    case VEXO_CMD_CHANNEL_MASKS:
      return display.ChannelMasks({Word(*record, 0), Word(*record, 4), Word(*record, 8)});
    case VEXO_CMD_LIVE_MODE:
      display.view_word = 0;
      return display.LiveMode((*record)[4], ListFrom(*record, 5));
    case VEXO_CMD_PLAY_MODE:
      display.view_word = 1;
      return display.PlayMode((*record)[5], ListFrom(*record, 6));
    case VEXO_CMD_MOTION_SETUP:
      display.LiveSplitMode(VEXO_SPLIT_FULL, {(*record)[3]});
      return VEXO_OK;
    case VEXO_CMD_BLANK_MASK:
      return display.BlankMask(Word(*record, 0));
    case VEXO_CMD_BIT0_MASK:
      return display.Bit0Mask(Word(*record, 0));
    case VEXO_CMD_RESTORE_BLANK:
      return display.RestoreBlank();
    default:
      return VEXO_OK;
  }
}

int CommandModel::MotionMaskRecord(Bytes& record, bool keep) {
  if (record[0] >= display.channels) return VEXO_ERROR_PARAMETER;
  // All 16 bits of a row, end for end.
  for (std::size_t row = 2; row < record.size(); row += 2) {
    unsigned reversed = 0;
    for (unsigned bit = 0; bit < 16; ++bit) {
      const unsigned cell = (record[row + bit / 8] >> (bit % 8)) & 1u;
      reversed |= cell << (15 - bit);
    }
    record[row] = static_cast<std::uint8_t>(reversed & 0xFF);
    record[row + 1] = static_cast<std::uint8_t>(reversed >> 8);
  }
  if (keep) Keep(record[0], record[1], record.data() + 2);
  return VEXO_OK;
}

void CommandModel::Keep(std::uint8_t channel, std::uint8_t level, const std::uint8_t* mask) {
  if (channel >= VEXO_MAX_CHANNELS) return;
  motion_level[channel] = level;
  std::copy_n(mask, VEXO_MOTION_MASK_BYTES, motion_mask[channel].begin());
}

}  // namespace test
