// The text entry. No family of text commands is in the library yet, so no line has a header that
// it knows.

#include "VexoCtrlSDK.h"
#include "api/diagnostics.h"
#include "api/library_state.h"

int VEXOAPI_TextCommandProc(const char* /*line*/) {
  if (g_library.g_initialized == 0) return VEXO_ERROR_UNINITIALIZED;
  VexoDbg_Print(u">> Command Not Found Header!\r\n");
  return VEXO_ERROR_NO_HEADER;
}
