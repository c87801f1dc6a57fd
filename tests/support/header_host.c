/*
 * A host in the C and C++ of any year: it uses what a host uses, so that a word of one language
 * cannot hide behind an #ifdef. scripts/check_header.sh compiles it in each of them, and
 * windows/check_import_library.sh links it.
 */
#include "VexoCtrlSDK.h"

/* For a host that loads the library by hand. */
typedef struct Exports {
  VexoInitializeFunction initialize;
  VexoUninitializeFunction uninitialize;
  VexoGetVersionFunction get_version;
  VexoSetEnableDebugFunction set_enable_debug;
  VexoSetEnableOutputMsgFunction set_enable_output_msg;
  VexoCommandProcFunction command_proc;
  VexoTextCommandProcFunction text_command_proc;
  VexoSetMotionInfoFunction set_motion_info;
} Exports;

static const Exports kLinked = {VEXOAPI_Initialize,         VEXOAPI_Uninitialize,
                                VEXOAPI_GetVersion,         VEXOAPI_SetEnableDebug,
                                VEXOAPI_SetEnableOutputMsg, VEXOAPI_CommandProc,
                                VEXOAPI_TextCommandProc,    VEXOAPI_SetMotionInfo};

static const char* const kNames[] = {
    VEXO_EXPORT_INITIALIZE,        VEXO_EXPORT_UNINITIALIZE,          VEXO_EXPORT_GET_VERSION,
    VEXO_EXPORT_SET_ENABLE_DEBUG,  VEXO_EXPORT_SET_ENABLE_OUTPUT_MSG, VEXO_EXPORT_COMMAND_PROC,
    VEXO_EXPORT_TEXT_COMMAND_PROC, VEXO_EXPORT_SET_MOTION_INFO};

int main(void) {
  static VexoInitRecord init;
  static uint8_t mask[VEXO_MOTION_MASK_BYTES];
#ifdef _WIN32
  wchar_t version[20];
#else
  VexoChar16 version[20];
#endif
  VexoWindow window = &init;
  int result = VEXOAPI_Initialize(window);
  if (result == VEXO_OK) result = VEXOAPI_CommandProc(VEXO_CMD_INIT, &init);
  if (result == VEXO_OK) result = VEXOAPI_TextCommandProc(kNames[0]);
  if (result == VEXO_OK) result = VEXOAPI_GetVersion(version);
  if (result == VEXO_OK) result = VEXOAPI_SetMotionInfo(0, 1, mask);
  if (result == VEXO_OK) result = kLinked.set_motion_info(0, 1, mask);
  VEXOAPI_SetEnableDebug(1);
  VEXOAPI_SetEnableOutputMsg(1);
  VEXOAPI_Uninitialize();
  return result;
}
