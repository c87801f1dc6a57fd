// The version of the host application, by which the chips are adjusted.
#pragma once

#include <cstdint>

// Second part of the host's file version; 255 when it cannot be read. Prints what it found.
std::uint16_t TW_GetHostAppVersion();
