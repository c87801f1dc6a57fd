// The simulated board: four chip positions on one bus behind three one-byte windows.
//
// No threads and no platform here: time is a number that the owner keeps.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>

#include "chip/registers.h"
#include "sim/board/bus_windows.h"
#include "sim/board/chip.h"
#include "sim/board/data_lines.h"
#include "sim/board/reports.h"

namespace sim {

enum class Camera { Ntsc, Pal, Off };

// What the identification register of an empty position gives: no chip's value.
inline constexpr std::uint8_t kEmptyId = 0x00;

class Board {
 public:
  explicit Board(Reports& reports);  // four chips, NTSC cameras

  // ---- The back side: no bus cycle --------------------------------------------------------
  // Positions are 0 to 3 and channels 0 to 15; std::out_of_range for any other.

  void FitChips(unsigned count);                   // positions 0..count-1 with 0x28, 4 at most
  void SetId(unsigned position, std::uint8_t id);  // page 0 register 0xFE
  bool Fitted(unsigned position) const { return chips_.at(position).Fitted(); }
  unsigned FittedCount() const;
  void SetCamera(unsigned channel, Camera camera);  // off keeps the standard bit
  void SetWeak(unsigned channel, bool weak);
  void SetMotion(unsigned channel, bool motion);
  void SetSettle(int reads);         // -1: never; a hold that already waits for longer is cut to it
  void SetFillBusy(unsigned reads);  // reads of each chip that a fill answers busy (0)
  void SetSyncPeriod(std::uint32_t period_ms);  // toggles every period, 0 at time 0
  void HoldSync(bool level);                    // until the next SetSyncPeriod
  void SetDataLines(const DataLines& lines) { data_lines_ = lines; }
  const DataLines& GetDataLines() const { return data_lines_; }
  void Poke(unsigned position, std::uint8_t page, std::uint8_t reg, std::uint8_t value);
  std::uint8_t Peek(unsigned position, std::uint8_t page, std::uint8_t reg) const;
  std::uint8_t Peek(unsigned position, RegisterAddress at) const;
  const ChannelInput& Input(unsigned channel) const;
  InputColors Colors(unsigned channel) const;  // of its input
  std::uint32_t FrozenAt(unsigned channel) const;
  const Frozen& FrozenState(unsigned channel) const;
  const Bitmap& BitmapOf(unsigned position) const;
  bool Sync() const;  // the sync bit now
  int SettleReads() const { return settle_reads_; }
  std::uint32_t SyncPeriod() const { return sync_period_ms_; }
  // The level that the sync bit is held at, none while it toggles.
  std::optional<bool> SyncHeld() const {
    return sync_held_ ? std::optional(sync_level_) : std::nullopt;
  }

  // Told when a read brings a chip nearer to the end of what it is busy with.
  std::function<void()> on_countdown;

  // Virtual time, milliseconds: set by the owner whenever it moves.
  void SetTime(std::uint32_t now_ms) { now_ms_ = now_ms; }
  std::uint32_t Time() const { return now_ms_; }

  // ---- The bus ----------------------------------------------------------------------------

  // One cycle. bytes is the width of the access: anything but 1 is reported, and then only the
  // low byte counts.
  void Store(BusWindow window, std::uint32_t value, unsigned bytes = 1);
  std::uint8_t Load(BusWindow window, unsigned bytes = 1);

 private:
  // Page that the chip at a position addresses; kPageCount when it is not selected.
  std::uint8_t SelectedPage(unsigned position) const {
    return static_cast<std::uint8_t>((select_ >> (2 * position)) & 3);
  }
  void StoreData(std::uint8_t value);
  std::uint8_t LoadData();
  void CheckNamed(unsigned position, std::uint8_t page, std::uint8_t reg, Report::Access access);
  void CheckWidth(Report::Access access, BusWindow window, unsigned bytes);

  std::array<Chip, kChipsMax> chips_;
  Reports& reports_;
  std::uint8_t select_ = kSelectIdle;
  int settle_reads_ = 0;
  DataLines data_lines_;
  std::uint32_t sync_period_ms_ = 20;
  bool sync_held_ = false;
  bool sync_level_ = false;
  std::uint32_t now_ms_ = 0;
};

}  // namespace sim
