/* What the check program asks of the system. The library under check is loaded by name, and so is
 * all that only some devices have: the program starts where they are missing. */
#include "table_macros.inc"

LIBRARY COREDLL, "COREDLL.dll"
  /* Modules and processes */
  IMPORT LoadLibraryW
  IMPORT FreeLibrary
  IMPORT GetProcAddressW
  IMPORT GetModuleFileNameW
  IMPORT CreateProcessW
  IMPORT GetExitCodeProcess
  IMPORT TerminateProcess
  IMPORT WaitForSingleObject
  IMPORT GetLastError
  /* Files and memory */
  IMPORT CreateFileW
  IMPORT ReadFile
  IMPORT WriteFile
  IMPORT FlushFileBuffers
  IMPORT GetFileSize
  IMPORT CloseHandle
  IMPORT LocalAlloc
  IMPORT LocalFree
  /* The window */
  IMPORT RegisterClassW
  IMPORT CreateWindowExW
  IMPORT DestroyWindow
  IMPORT DefWindowProcW
  IMPORT PeekMessageW
  IMPORT DispatchMessageW
  /* Time */
  IMPORT GetTickCount
  IMPORT QueryPerformanceCounter
  IMPORT QueryPerformanceFrequency
  IMPORT Sleep
  /* Texts and version resources */
  IMPORT OutputDebugStringW
  IMPORT GetFileVersionInfoSizeW
  IMPORT GetFileVersionInfoW
  IMPORT VerQueryValueW
END_LIBRARY
