// Where the system's calling convention is looser than our compiler's: arguments and results of
// fewer than 32 bits may have anything in the rest of their register.
#include <cstdint>

#include "VexoCtrlSDK.h"

extern "C" {

int Export_SetMotionInfo(std::uint32_t channel, std::uint32_t level, std::uint8_t* mask) {
  return VEXOAPI_SetMotionInfo(static_cast<std::uint8_t>(channel), static_cast<std::uint8_t>(level),
                               mask);
}

}  // extern "C"
