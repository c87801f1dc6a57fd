// Register access over the three one-byte bus windows.
//
// Every access is select, address, data (one byte or several), release, and nothing else. The
// operations take no lock: an access must not be interleaved with another one, which is the
// caller's business.
#pragma once

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

// A register that repeats with a stride, for one position.
constexpr std::uint8_t RegisterAt(std::uint8_t base, std::uint8_t stride, unsigned position) {
  return static_cast<std::uint8_t>(base + stride * position);
}

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

// Writes count bytes to consecutive registers with one address cycle: the chip advances its
// register address after each data byte. data is read only. Refusals as for TW_ReadRegister.
void TW_WriteReg_Table(std::uint8_t chip, std::uint8_t page, std::uint8_t first_reg,
                       const std::uint8_t* data, std::uint8_t count);
