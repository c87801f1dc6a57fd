// The volatile accesses of a register access, and nothing else, for comparison.
#pragma once

#include <cstdint>

void WriteByHand(std::uint8_t select, std::uint8_t reg, std::uint8_t value);
std::uint8_t ReadByHand(std::uint8_t select, std::uint8_t reg);
void WriteTableByHand(std::uint8_t select, std::uint8_t first_reg, const std::uint8_t* data,
                      std::uint8_t count);
