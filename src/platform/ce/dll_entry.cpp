// Where the system enters the library.
#include "ce_api.h"
#include "platform/platform.h"

extern "C" int CE_CALL VexoCtrlSdkEntry(void* module, CeDword reason, void* reserved) {
  return VexoSDK_DllEntry(reinterpret_cast<PlatHandle>(module), reason, reserved);
}
