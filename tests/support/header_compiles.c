// Hosts written in C include the public header too.
#include "VexoCtrlSDK.h"

// Uses what a C host uses, so that a C++ word in the header cannot hide behind an #ifdef.
int HeaderCompilesAsC(VexoWindow window);

int HeaderCompilesAsC(VexoWindow window) {
  VexoInitRecord init = {0};
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
