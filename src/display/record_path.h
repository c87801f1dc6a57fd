// The record path: what the board's encoder captures beside the display.
#pragma once

#include <cstdint>

// Programs the record path of all chips: record mode 0, 1 or 2, switching mode 0 or 4. Others are
// printed and refused, the switching mode first, with nothing written.
void TW_SetRecordSetup(std::uint8_t record_mode, std::uint8_t switching_mode);

// The setup of chip initialization: record mode 1. The switching mode is checked and not used.
void TW_SetRecordSetupDefault(std::uint8_t switching_mode);
