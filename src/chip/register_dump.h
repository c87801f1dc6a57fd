// Listings of whole register pages, for bring-up and field diagnosis.
#pragma once

#include <cstdint>

// Lists a page (0-2) of the chip at a position (0-3) on the debug output: 16 lines of 16 values.
// Reads all 256 registers also while the output is switched off and of a chip that is not fitted,
// which lists whatever the bus returns. Always 0.
std::int32_t TW_DumpRegisters(std::uint8_t chip_position, std::uint8_t page);
