// From power-on to a running live display.
#pragma once

#include <cstdint>

// Finds the chips and counts them; sets chip count, channel count, present flags and identification
// bytes. Returns the chip count.
std::uint8_t TW_DetectChips();

// The present flags, one a byte, the master's lowest.
std::uint32_t TW_GetChipPresence();

// Results of an initialization that failed. Nothing gives the second one; hosts know it.
inline constexpr std::int32_t kInitNoChip = -1;
inline constexpr std::int32_t kInitDeviceProblem = -2;

// Brings the chips up and marks them ready. Both arguments are ignored. Returns the channel count
// (4, 8, 12 or 16), or kInitNoChip when no chip is found, with nothing written.
std::int32_t TW_InitializeSetup(std::uint16_t reserved1, std::uint16_t reserved2);

// Prints the result of TW_InitializeSetup and posts it to the host; after a success, sends the
// video detection record too.
void ReportInitialization(std::int32_t result);

// Initialization with the camera stream halted around it and the outcome told to the host by
// messages.
void VexoProc_Initialize(std::uint16_t argument1, std::uint16_t argument2);
