#include "device/emulator/system_exports.h"

#include <algorithm>
#include <sstream>
#include <string>

#include "sim/text.h"

namespace emulator {
namespace {

constexpr std::string_view kCore = R"(
ActivateDeviceEx BeginPaint BitBlt CallNextHookEx CallWindowProcW CeGetThreadPriority
CeGetThreadQuantum CeSetThreadPriority CharLowerW CharUpperW CloseMsgQueue CopyFileW
CreateCompatibleBitmap CreateCompatibleDC CreateDirectoryW CreateFileMappingW CreateFontIndirectW
CreateMsgQueue CreateSemaphoreW CreateSolidBrush DeactivateDevice DeleteDC DeleteFileW
DeleteObject DrawTextW EnableWindow EndPaint EscapeCommFunction ExitThread ExtTextOutW
FileTimeToSystemTime FillRect FindClose FindFirstFileW FindNextFileW FindResourceW FindWindowW
GetAsyncKeyState GetClientRect GetCommState GetCommTimeouts GetDC GetDiskFreeSpaceExW
GetFileAttributesW GetFileInformationByHandle GetFileTime GetFocus GetForegroundWindow GetKeyState
GetLocalTime GetModuleHandleW GetParent GetProcessHeap GetSystemInfo GetSystemMetrics
GetSystemTime GetTempPathW GetThreadPriority GetThreadTimes GetTimeZoneInformation GetVersionExW
GetWindowLongW GetWindowRect GetWindowTextW GetWindowThreadProcessId GlobalMemoryStatus HeapAlloc
HeapCreate HeapDestroy HeapFree HeapReAlloc InvalidateRect IsBadReadPtr IsBadWritePtr
IsWindowVisible KernelIoControl LoadBitmapW LoadCursorW LoadResource LoadStringW LocalReAlloc
LocalSize MapViewOfFile MessageBoxW MoveFileW MoveWindow MsgWaitForMultipleObjectsEx OpenProcess
PurgeComm RaiseException ReadMsgQueue Rectangle RegCloseKey RegCreateKeyExW RegDeleteKeyW
RegDeleteValueW RegEnumKeyExW RegEnumValueW RegOpenKeyExW RegQueryValueExW RegSetValueExW
RegisterWindowMessageW ReleaseDC ReleaseSemaphore RemoveDirectoryW ResumeThread SelectObject
SendMessageW SetBkColor SetBkMode SetCommMask SetCommState SetCommTimeouts SetEndOfFile
SetFileAttributesW SetFilePointer SetFileTime SetFocus SetForegroundWindow SetLocalTime
SetSystemTime SetTextColor SetThreadPriority SetWindowLongW SetWindowPos SetupComm SizeofResource
StretchBlt SuspendThread SystemParametersInfoW SystemTimeToFileTime TryEnterCriticalSection
UnmapViewOfFile UpdateWindow VirtualAlloc VirtualFree VirtualProtect VirtualQuery WaitCommEvent
WaitForMultipleObjects WideCharToMultiByte WriteMsgQueue atof atol calloc free keybd_event malloc
memchr mouse_event qsort rand realloc sprintf srand sscanf strcat strchr strcpy strncpy swprintf
wcscat wcschr wcscmp wcscpy wcslen wcsncmp wcsncpy wcsstr
)";

constexpr std::string_view kDriverKit = R"(
HalAllocateCommonBuffer HalFreeCommonBuffer HalGetBusDataByOffset HalSetBusDataByOffset
HalTranslateBusAddress MmMapIoSpace MmUnmapIoSpace READ_PORT_UCHAR READ_REGISTER_UCHAR
READ_REGISTER_ULONG READ_REGISTER_USHORT TransBusAddrToStatic TransBusAddrToVirtual
WRITE_PORT_UCHAR WRITE_REGISTER_UCHAR WRITE_REGISTER_ULONG WRITE_REGISTER_USHORT
)";

constexpr SystemLibrary kLibraries[] = {
    {"coredll.dll",
     "Windows CE 5.0, reference: every name whose page has \"Link Library: Coredll.lib\", and the "
     "C "
     "library's; EventModify by the headers of the system's SDKs, which make SetEvent of it",
     kCore},
    {"ceddk.dll",
     "Windows CE 5.0, reference: every name whose page has \"Link Library: CEDDK.lib\"; numbers "
     "are "
     "not documented, and those that are played are those by which the device's files import",
     kDriverKit},
    {"extrtcnvramctl.dll", "none: the board's own, known by what its users import", ""},
};

}  // namespace

bool SystemLibrary::ExportsUnplayed(const std::string& name) const {
  std::istringstream names{std::string(not_played)};
  for (std::string each; names >> each;) {
    if (each == name) return true;
  }
  return false;
}

std::span<const SystemLibrary> SystemLibraries() { return kLibraries; }

const SystemLibrary* FindSystemLibrary(const std::string& file) {
  const std::string name = sim::ToLower(file);
  const auto* const found = std::ranges::find(kLibraries, name, &SystemLibrary::file);
  return found == std::ranges::end(kLibraries) ? nullptr : found;
}

}  // namespace emulator
