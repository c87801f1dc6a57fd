// A simulated board and register accesses made of bare bus cycles, without the library.
#pragma once

#include <cstdint>
#include <initializer_list>

#include "sim/board/board.h"

namespace sim {

// Select byte by which the chips of a mask address one page.
constexpr std::uint8_t SelectByte(std::uint8_t chips, std::uint8_t page) {
  return static_cast<std::uint8_t>((0x55 * page & chips) | (~chips & 0xFF));
}
static_assert(SelectByte(kChipMaster, 1) == 0xFD);
static_assert(SelectByte(kChipSlave3, 2) == 0xBF);
static_assert(SelectByte(kChipAll, 0) == 0x00);

struct BoardOnBus {
  explicit BoardOnBus(unsigned chips = kChipsMax) { board.FitChips(chips); }

  void Write(std::uint8_t chips, std::uint8_t page, unsigned reg,
             std::initializer_list<unsigned> values) {
    board.Store(BusWindow::Select, SelectByte(chips, page));
    board.Store(BusWindow::Address, reg);
    for (const unsigned value : values) board.Store(BusWindow::Data, value);
    board.Store(BusWindow::Select, kSelectIdle);
  }
  void Write(std::uint8_t chips, std::uint8_t page, unsigned reg, unsigned value) {
    Write(chips, page, reg, {value});
  }
  std::uint8_t Read(std::uint8_t chips, std::uint8_t page, unsigned reg) {
    board.Store(BusWindow::Select, SelectByte(chips, page));
    board.Store(BusWindow::Address, reg);
    const std::uint8_t value = board.Load(BusWindow::Data);
    board.Store(BusWindow::Select, kSelectIdle);
    return value;
  }

  Reports reports;
  Board board{reports};
};

}  // namespace sim
