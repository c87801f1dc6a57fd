// Single registers for the host.
#pragma once

#include <cstdint>

// Reads a register, prints it and sends it to the host; 0 while the chips are not ready.
std::uint8_t VexoProc_ReadRegister(std::uint8_t chip, std::uint8_t page, std::uint8_t reg);

// Writes a register and prints it; nothing while the chips are not ready.
void VexoProc_WriteRegister(std::uint8_t chip, std::uint8_t page, std::uint8_t reg,
                            std::uint8_t value);
