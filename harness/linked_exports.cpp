// The library that is linked in.
#include "harness/export_table.h"
#include "harness/reset_library.h"

namespace harness {

ExportTable LinkedExports() {
  return {VexoSDK_DllEntry,    VEXOAPI_Initialize,     VEXOAPI_Uninitialize,
          VEXOAPI_GetVersion,  VEXOAPI_SetEnableDebug, VEXOAPI_SetEnableOutputMsg,
          VEXOAPI_CommandProc, VEXOAPI_SetMotionInfo,  VEXOAPI_TextCommandProc,
          ResetLibraryState};
}

}  // namespace harness
