/* Hosts written in C and in older C++ include the public header too. */
#include "VexoCtrlSDK.h"

/* Uses what a host uses, so that a word of one language cannot hide behind an #ifdef. */
int HeaderCompiles(VexoWindow window);

int HeaderCompiles(VexoWindow window) {
  VexoInitRecord init;
  VexoChar16 version[20];
  int result = VEXOAPI_Initialize(window);
  if (result == VEXO_OK) result = VEXOAPI_CommandProc(VEXO_CMD_INIT, &init);
  if (result == VEXO_OK) result = VEXOAPI_TextCommandProc("");
  if (result == VEXO_OK) result = VEXOAPI_GetVersion(version);
  VEXOAPI_SetEnableDebug(1);
  VEXOAPI_SetEnableOutputMsg(1);
  VEXOAPI_Uninitialize();
  return result;
}
