// Byte access to the bus windows on the PC: a call into the simulated bus.
// Included by platform.h, which declares PlatBusWindow.
#pragma once

void Plat_StoreByte(PlatBusWindow window, std::uint8_t value);
std::uint8_t Plat_LoadByte(PlatBusWindow window);
