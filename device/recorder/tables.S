/* What the sample recorder asks of the system. It loads the library by name. */
#include "table_macros.inc"

LIBRARY COREDLL, "COREDLL.dll"
  /* Modules, threads, objects */
  IMPORT LoadLibraryW
  IMPORT FreeLibrary
  IMPORT GetProcAddressW
  IMPORT TerminateProcess
  IMPORT CreateThread
  IMPORT CreateEventW
  IMPORT EventModify
  IMPORT CreateMutexW
  IMPORT ReleaseMutex
  IMPORT WaitForSingleObject
  IMPORT CloseHandle
  IMPORT InitializeCriticalSection
  IMPORT EnterCriticalSection
  IMPORT LeaveCriticalSection
  IMPORT DeleteCriticalSection
  IMPORT GetLastError
  /* The window */
  IMPORT RegisterClassW
  IMPORT CreateWindowExW
  IMPORT DestroyWindow
  IMPORT ShowWindow
  IMPORT SetWindowTextW
  IMPORT DefWindowProcW
  IMPORT GetStockObject
  /* Messages and timers */
  IMPORT GetMessageW
  IMPORT PeekMessageW
  IMPORT TranslateMessage
  IMPORT DispatchMessageW
  IMPORT PostMessageW
  IMPORT PostThreadMessageW
  IMPORT PostQuitMessage
  IMPORT SetTimer
  IMPORT KillTimer
  /* C library, and the system's texts */
  IMPORT memset
  IMPORT wsprintfW
END_LIBRARY
