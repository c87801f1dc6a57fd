// Byte access to the bus windows on the device: one volatile access, nothing else.
// Included by platform.h, which declares PlatBusWindow.
#pragma once

inline void Plat_StoreByte(PlatBusWindow window, std::uint8_t value) { *window = value; }
inline std::uint8_t Plat_LoadByte(PlatBusWindow window) { return *window; }
