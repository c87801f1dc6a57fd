// The display register of a channel: whether and how it is shown.
#pragma once

#include <cstdint>

// Writes the bits (kDisplay...), together with the position that the register names, for a position
// on a chip (or on all).
void WriteChannelDisplay(std::uint8_t chip, std::uint8_t position, std::uint8_t bits);

// The same for all four positions on all chips.
void WriteChannelDisplayToAll(std::uint8_t bits);
