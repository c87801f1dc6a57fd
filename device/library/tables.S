/* What the library asks of the system by name or number, and what a host finds in it by name. */
#include "table_macros.inc"

LIBRARY COREDLL, "COREDLL.dll"
  /* Kernel objects, threads, time */
  IMPORT CreateMutexW
  IMPORT CreateEventW
  IMPORT WaitForSingleObject
  IMPORT ReleaseMutex
  IMPORT CloseHandle
  IMPORT CreateThread
  IMPORT GetExitCodeThread
  IMPORT TerminateThread
  IMPORT CeSetThreadQuantum
  IMPORT Sleep
  IMPORT GetTickCount
  IMPORT GetLastError
  IMPORT SetLastError
  IMPORT DisableThreadLibraryCalls
  /* Memory */
  IMPORT LocalAlloc
  IMPORT LocalFree
  /* Drivers, modules, version resources */
  IMPORT CreateFileW
  IMPORT DeviceIoControl
  IMPORT LoadLibraryExW
  IMPORT FreeLibrary
  IMPORT GetFileVersionInfoSizeW
  IMPORT GetFileVersionInfoW
  IMPORT VerQueryValueW
  /* Texts */
  IMPORT OutputDebugStringW
  IMPORT NKDbgPrintfW
  IMPORT FormatMessageW
  IMPORT GetSystemDefaultLangID, Import_GetSystemDefaultLangID
  IMPORT MultiByteToWideChar
  /* Window messages */
  IMPORT IsWindow
  IMPORT PostMessageW
  IMPORT SendMessageTimeout
  /* C library */
  IMPORT _vsnwprintf
  IMPORT atoi
  IMPORT strcmp
  IMPORT strlen
  IMPORT strncmp
  IMPORT strstr
END_LIBRARY

LIBRARY CEDDK, "CEDDK.dll"
  IMPORT_ORDINAL MmMapIoSpace, 8
  IMPORT_ORDINAL MmUnmapIoSpace, 9
END_LIBRARY

LIBRARY ExtRtcNVramCtl, "ExtRtcNVramCtl.dll"
  IMPORT RTCNVRAM_Init
  IMPORT RTCNVRAM_Read
  IMPORT RTCNVRAM_Write
  IMPORT RTCNVRAM_DeInit
END_LIBRARY

EXPORTS "VexoCtrlSDK.DLL"
  /* The name that the host's own compiler gives it: int (unsigned char, unsigned char, unsigned char*) */
  EXPORT "?VEXOAPI_SetMotionInfo@@YAHEEPAE@Z", Export_SetMotionInfo
  EXPORT VEXOAPI_CommandProc, VEXOAPI_CommandProc
  EXPORT VEXOAPI_GetVersion, VEXOAPI_GetVersion
  EXPORT VEXOAPI_Initialize, VEXOAPI_Initialize
  EXPORT VEXOAPI_SetEnableDebug, VEXOAPI_SetEnableDebug
  EXPORT VEXOAPI_SetEnableOutputMsg, VEXOAPI_SetEnableOutputMsg
  EXPORT VEXOAPI_TextCommandProc, VEXOAPI_TextCommandProc
  EXPORT VEXOAPI_Uninitialize, VEXOAPI_Uninitialize
