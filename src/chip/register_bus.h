// Register access over the three one-byte bus windows.
//
// Every access is select, address, data (one byte or several), release, and nothing else. The
// operations take no lock: an access must not be interleaved with another one, which is the
// caller's business.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "chip/registers.h"
#include "platform/platform.h"

// The bus windows; null while not mapped.
struct BusWindows {
  PlatBusWindow select = nullptr;   // which chips, and the page of each
  PlatBusWindow address = nullptr;  // register number
  PlatBusWindow data = nullptr;     // register contents
};
extern BusWindows g_bus;

// Chip select code of the chip that carries a channel; 12 and above is slave 3.
constexpr std::uint8_t TW_GetChipSelect(std::uint8_t channel) {
  if (channel < 4) return kChipMaster;
  if (channel < 8) return kChipSlave1;
  if (channel < 12) return kChipSlave2;
  return kChipSlave3;
}

// Position (0-3) of a channel on its chip.
constexpr std::uint8_t ChannelPosition(std::uint8_t channel) { return channel % kChannelsPerChip; }

// First channel of the chip at a position (0-3).
constexpr std::uint8_t FirstChannelOf(std::uint8_t chip_position) {
  return static_cast<std::uint8_t>(kChannelsPerChip * chip_position);
}

// ---- Bus cycles ---------------------------------------------------------------------------------

// A page as the select byte has it: two bits for each of the four chips.
constexpr std::uint8_t PageOfEveryChip(unsigned page) {
  return static_cast<std::uint8_t>(page * 0x55);
}

// The accesses themselves, nothing checked. pages: as PageOfEveryChip gives it.
std::uint8_t ReadCycles(std::uint8_t chip, std::uint8_t pages, std::uint8_t number);
void WriteCycles(std::uint8_t chip, std::uint8_t pages, std::uint8_t number, std::uint8_t value);
void RunCycles(std::uint8_t chip, std::uint8_t pages, std::uint8_t number, const std::uint8_t* data,
               unsigned count);

// ---- Registers by name --------------------------------------------------------------------------

// Inline without exception: of the register nothing but its place is left then.

// The library's own accesses. chip is one of the five chip select codes, which is not checked; a
// read names one chip. Four bus cycles.
[[gnu::always_inline]] inline std::uint8_t Read(std::uint8_t chip, RegisterAddress at) {
  return ReadCycles(chip, PageOfEveryChip(at.page), at.number);
}
[[gnu::always_inline]] inline void Write(std::uint8_t chip, RegisterAddress at,
                                         std::uint8_t value) {
  WriteCycles(chip, PageOfEveryChip(at.page), at.number, value);
}

// Writes count bytes (up to 255) from a register on with one address cycle: the chip advances its
// register address after each data byte. Three bus cycles and one a byte.
[[gnu::always_inline]] inline void WriteRun(std::uint8_t chip, RegisterAddress first,
                                            const std::uint8_t* data, unsigned count) {
  RunCycles(chip, PageOfEveryChip(first.page), first.number, data, count);
}

// The same for the channel at a position (0-3) of the chip.
[[gnu::always_inline]] inline std::uint8_t Read(std::uint8_t chip, const ChannelRegister<1>& of,
                                                unsigned position) {
  return Read(chip, of.At(position));
}
[[gnu::always_inline]] inline void Write(std::uint8_t chip, const ChannelRegister<1>& of,
                                         unsigned position, std::uint8_t value) {
  Write(chip, of.At(position), value);
}

// Fills a run of registers, or as much of it as the table has.
template <unsigned kLength, std::size_t kCount>
[[gnu::always_inline]] inline void WriteTable(std::uint8_t chip, const ChipRegister<kLength>& of,
                                              const std::array<std::uint8_t, kCount>& table) {
  static_assert(kCount <= kLength, "the table is longer than the run");
  WriteRun(chip, of.At(0), table.data(), kCount);
}
template <unsigned kLength, std::size_t kCount>
[[gnu::always_inline]] inline void WriteTable(std::uint8_t chip, const ChannelRegister<kLength>& of,
                                              unsigned position,
                                              const std::array<std::uint8_t, kCount>& table) {
  static_assert(kCount <= kLength, "the table is longer than the run");
  WriteRun(chip, of.At(position, 0), table.data(), kCount);
}

// ---- Registers by number ------------------------------------------------------------------------

// For numbers that a host or a field engineer gives: nothing of them is taken on trust.

// Select a chip's page; any other code than the five chip select codes stores nothing.
void TW_SelectPage0(std::uint8_t chip);
void TW_SelectPage1(std::uint8_t chip);
void TW_SelectPage2(std::uint8_t chip);

// Puts the select byte back to idle; likewise only for a valid code.
void TW_ReleaseChip(std::uint8_t chip);

// Reads one register. A page above 2 is refused with a print, without a bus cycle, and gives 0.
// With an invalid chip select code the address and data cycles go out all the same.
std::uint8_t TW_ReadRegister(std::uint8_t chip, std::uint8_t page, std::uint8_t reg);

// Writes one register. Refusals as for TW_ReadRegister.
void TW_WriteRegister(std::uint8_t chip, std::uint8_t page, std::uint8_t reg, std::uint8_t value);

// Writes count bytes to consecutive registers, as WriteRun. data is read only. Refusals as for
// TW_ReadRegister.
void TW_WriteReg_Table(std::uint8_t chip, std::uint8_t page, std::uint8_t first_reg,
                       const std::uint8_t* data, std::uint8_t count);
