// What the binary commands promise a host, told a second time and as shortly as possible: what
// comes back, what becomes of the record, and what the library remembers. No registers.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "VexoCtrlSDK.h"

namespace test {

class CommandModel {
 public:
  using Bytes = std::vector<std::uint8_t>;
  using MotionMask = std::array<std::uint8_t, VEXO_MOTION_MASK_BYTES>;

  // ---- What the host and the board did ------------------------------------------------------

  bool initialized = true;
  bool bound = true;
  std::array<std::uint8_t, VEXO_MAX_CHIPS> chip_ids = {};  // as they read now

  // ---- What the library remembers -------------------------------------------------------------

  unsigned lock_depth = 0;  // acquisitions that the host thread was left with
  bool ready = false;
  unsigned channels = 0;
  std::uint8_t view = 1;  // 1 live, 2 playback
  std::uint32_t view_word = 0;
  std::uint32_t live_mask = 0xFFFFFFFF, record_mask = 0xFFFFFFFF, play_mask = 0xFFFFFFFF;
  std::array<MotionMask, VEXO_MAX_CHANNELS> motion_mask = {};
  std::array<std::uint8_t, VEXO_MAX_CHANNELS> motion_level = {};
  std::uint8_t live_split = 7, play_split = 7;  // none yet

  // A command; record becomes what it has to be afterwards, apart from bytes that the registers
  // decide: those are marked free.
  int Run(std::uint32_t code, std::optional<Bytes>& record, std::vector<bool>& free) {
    free.assign(record ? record->size() : 0, false);
    if (!initialized || !bound) return VEXO_ERROR_NOT_READY;
    code &= 0xFFFF;
    if (code == VEXO_CMD_INIT) return Initialize(record, free);
    if (code >= VEXO_CMD_DUMP_MASTER_P0 && code <= VEXO_CMD_DUMP_SLAVE3_P2) {
      return ready ? VEXO_OK : VEXO_ERROR_NOT_READY;
    }
    if (code < VEXO_CMD_STOP_MONITOR || code > VEXO_CMD_MOTION_REG) {
      ++lock_depth;
      return VEXO_ERROR_FAILED;
    }
    if (NeedsRecord(code) && !record) return VEXO_ERROR_PARAMETER;
    if (code >= VEXO_CMD_LIVE_SPLIT && !ready) return VEXO_ERROR_NOT_READY;
    return Operate(code, record, free);
  }

  int SetMotionInfo(std::uint8_t channel, std::uint8_t level, const std::optional<Bytes>& mask) {
    if (!initialized) {
      ++lock_depth;
      return VEXO_ERROR_UNINITIALIZED;
    }
    if (ready && mask) Keep(channel, level, mask->data());
    return VEXO_OK;
  }

  static bool NeedsRecord(std::uint32_t code) {
    return code != VEXO_CMD_STOP_MONITOR && code != VEXO_CMD_RESTORE_BLANK &&
           code != VEXO_CMD_MOTION_CLEAR;
  }

 private:
  bool HasLayouts() const { return channels == 4 || channels == 8 || channels == 16; }
  // The highest mode of a board is also the one that it starts with.
  std::uint8_t HighestMode() const {
    return channels == 4 ? VEXO_SPLIT_4 : channels == 8 ? VEXO_SPLIT_9 : VEXO_SPLIT_16;
  }
  bool Has(std::uint8_t mode) const { return HasLayouts() && mode <= HighestMode(); }

  int Initialize(std::optional<Bytes>& record, std::vector<bool>& free) {
    if (!record) {
      ++lock_depth;
      return VEXO_ERROR_PARAMETER;
    }
    unsigned chips = 0;
    for (const std::uint8_t id : chip_ids) chips += (id & 0xF8) == 0x28 ? 1 : 0;
    channels = 4 * chips;
    std::fill(record->begin() + 12, record->end(), std::uint8_t{0});
    if (chips == 0) {
      ++lock_depth;
      return VEXO_ERROR_FAILED;
    }
    (*record)[12] = static_cast<std::uint8_t>(chips);
    free[16] = true;  // the standard: what is stored, or seen
    std::copy(chip_ids.begin(), chip_ids.end(), record->begin() + 20);
    ready = true;
    view = 1;
    if (HasLayouts()) live_split = HighestMode();
    motion_level.fill(1);
    for (MotionMask& mask : motion_mask) mask.fill(0xFF);
    return VEXO_OK;
  }

  int Operate(std::uint32_t code, std::optional<Bytes>& record, std::vector<bool>& free) {
    const int masks = HasLayouts() ? VEXO_OK : VEXO_ERROR_FAILED;
    switch (code) {
      case VEXO_CMD_READ_REG:
        (*record)[3] = 0;
        free[3] = ready && (*record)[1] <= 2;
        return VEXO_OK;
      case VEXO_CMD_LIVE_SPLIT:
        return LiveSplit((*record)[4]);
      case VEXO_CMD_PLAY_SPLIT:
        return PlaySplit((*record)[4], (*record)[5]);
      case VEXO_CMD_MOTION_MASK:
      case VEXO_CMD_MOTION_MASK_PREVIEW:
        return MotionMaskRecord(*record, code == VEXO_CMD_MOTION_MASK);
      case VEXO_CMD_CHANNEL_MASKS:
        live_mask = Word(*record, 0);
        record_mask = Word(*record, 4);
        play_mask = Word(*record, 8);
        return VEXO_OK;
      case VEXO_CMD_LIVE_MODE:
        view_word = 0;
        view = 1;
        if (Has((*record)[4])) live_split = (*record)[4];
        return VEXO_OK;
      case VEXO_CMD_PLAY_MODE:
        view_word = 1;
        view = 2;
        LayOutPlayback((*record)[5], false);
        return HasLayouts() ? VEXO_OK : VEXO_ERROR_NOT_READY;
      case VEXO_CMD_MOTION_SETUP:
        if (view == 1 && HasLayouts()) live_split = VEXO_SPLIT_FULL;
        return VEXO_OK;
      case VEXO_CMD_BLANK_MASK:
      case VEXO_CMD_BIT0_MASK:
      case VEXO_CMD_RESTORE_BLANK:
        return masks;
      default:
        return VEXO_OK;
    }
  }

  int LiveSplit(std::uint8_t mode) {
    if (view != 1) return VEXO_ERROR_FAILED;
    if (mode > 6) return VEXO_ERROR_PARAMETER;
    if (!Has(mode)) return VEXO_ERROR_FAILED;
    live_split = mode;
    return VEXO_OK;
  }

  int PlaySplit(std::uint8_t mode, std::uint8_t option) {
    if (view != 2) return VEXO_ERROR_FAILED;
    const bool large_window = mode == VEXO_SPLIT_6 || mode == VEXO_SPLIT_8 || mode == VEXO_SPLIT_13;
    if (mode > 6 || large_window) return VEXO_ERROR_PARAMETER;
    if (!Has(mode)) return VEXO_ERROR_FAILED;
    LayOutPlayback(mode, option != 0);
    return VEXO_OK;
  }

  void LayOutPlayback(std::uint8_t mode, bool full_picture) {
    // A centred picture is one window of the 2 x 2.
    if (Has(mode)) play_split = mode == VEXO_SPLIT_FULL && !full_picture ? VEXO_SPLIT_4 : mode;
  }

  int MotionMaskRecord(Bytes& record, bool keep) {
    if (record[0] >= channels) return VEXO_ERROR_PARAMETER;
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

  void Keep(std::uint8_t channel, std::uint8_t level, const std::uint8_t* mask) {
    if (channel >= VEXO_MAX_CHANNELS) return;
    motion_level[channel] = level;
    std::copy_n(mask, VEXO_MOTION_MASK_BYTES, motion_mask[channel].begin());
  }

  static std::uint32_t Word(const Bytes& bytes, std::size_t at) {
    std::uint32_t word = 0;
    for (std::size_t i = 4; i-- > 0;) word = (word << 8) | bytes[at + i];
    return word;
  }
};

}  // namespace test
