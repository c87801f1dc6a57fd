// Where the system's calling convention is looser than our compiler's: arguments and results of
// fewer than 32 bits may have anything in the rest of their register.
#include "VexoCtrlSDK.h"
#include "ce_api.h"

extern "C" {

CeDword Import_GetSystemDefaultLangID();

unsigned short CE_CALL GetSystemDefaultLangID() {
  return static_cast<unsigned short>(Import_GetSystemDefaultLangID());
}

int Export_SetMotionInfo(CeDword channel, CeDword level, std::uint8_t* mask) {
  return VEXOAPI_SetMotionInfo(static_cast<std::uint8_t>(channel), static_cast<std::uint8_t>(level),
                               mask);
}

}  // extern "C"
