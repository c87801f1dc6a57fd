// The system's calls that the library uses, declared here, so that no SDK is needed to build it.
//
// Windows CE has one calling convention; 32-bit Windows on the desktop asks for stdcall. Types are
// the system's own: where <windows.h> is in sight, the compiler finds every difference.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>

#if defined(_WIN32) && !defined(_WIN64)
#define CE_CALL __stdcall
#define CE_OTHER_CALL  // the system calls otherwise than the library does
#else
#define CE_CALL
#endif

#ifdef _WIN32
#define CE_IMPORT __declspec(dllimport)
#else
#define CE_IMPORT
#endif

// ---- Types --------------------------------------------------------------------------------------

using CeDword = unsigned long;
static_assert(sizeof(CeDword) == 4 && sizeof(wchar_t) == 2, "the system's sizes");

// As wide as a pointer; which integer types those are differs between 32 and 64 bits.
#ifdef _WIN64
using CeLong = long long;               // LPARAM, LRESULT
using CeUnsigned = unsigned long long;  // WPARAM
using CeDwordPtr = unsigned long long;  // also of sizes
#else
using CeLong = long;
using CeUnsigned = unsigned int;
using CeDwordPtr = unsigned long;
#endif

extern "C" {
struct HWND__;
struct HINSTANCE__;
struct _SECURITY_ATTRIBUTES;
struct _OVERLAPPED;
}

using CeThreadProc = CeDword(CE_CALL*)(void* argument);

// Start of the root block of a version resource.
struct CeFixedFileInfo {
  CeDword signature;
  CeDword structure_version;
  CeDword file_version_ms;
  CeDword file_version_ls;
};

// ---- Constants ----------------------------------------------------------------------------------

inline constexpr CeDword kCeAllocateText = 0x0100;      // FormatMessageW: the system allocates
inline constexpr CeDword kCeTextFromSystem = 0x1000;    // FormatMessageW: from the system's texts
inline constexpr CeDword kCeLoadWithoutReferences = 1;  // LoadLibraryExW: for its data alone
inline constexpr unsigned kCeSendNormal = 0;            // SendMessageTimeout
inline constexpr unsigned kCeAnsiCodePage = 0;          // MultiByteToWideChar
inline constexpr unsigned kCeFixedMemory = 0;           // LocalAlloc

// ---- Kernel -------------------------------------------------------------------------------------

extern "C" {

CE_IMPORT void* CE_CALL CreateMutexW(_SECURITY_ATTRIBUTES* security, int owned,
                                     const wchar_t* name);
CE_IMPORT void* CE_CALL CreateEventW(_SECURITY_ATTRIBUTES* security, int manual_reset,
                                     int signalled, const wchar_t* name);
CE_IMPORT CeDword CE_CALL WaitForSingleObject(void* object, CeDword timeout_ms);
CE_IMPORT int CE_CALL ReleaseMutex(void* mutex);
CE_IMPORT int CE_CALL CloseHandle(void* handle);
CE_IMPORT void* CE_CALL CreateThread(_SECURITY_ATTRIBUTES* security, CeDwordPtr stack_bytes,
                                     CeThreadProc proc, void* argument, CeDword flags,
                                     CeDword* thread_id);
CE_IMPORT int CE_CALL GetExitCodeThread(void* thread, CeDword* exit_code);
CE_IMPORT int CE_CALL TerminateThread(void* thread, CeDword exit_code);
CE_IMPORT CeDword CE_CALL GetCurrentThreadId();
CE_IMPORT void CE_CALL Sleep(CeDword duration_ms);
CE_IMPORT CeDword CE_CALL GetTickCount();
CE_IMPORT CeDword CE_CALL GetLastError();
CE_IMPORT void CE_CALL SetLastError(CeDword error);
CE_IMPORT int CE_CALL DisableThreadLibraryCalls(HINSTANCE__* module);
CE_IMPORT void* CE_CALL LocalAlloc(unsigned flags, CeDwordPtr bytes);
CE_IMPORT void* CE_CALL LocalFree(void* memory);

// ---- Drivers and modules ------------------------------------------------------------------------

CE_IMPORT void* CE_CALL CreateFileW(const wchar_t* name, CeDword access, CeDword share,
                                    _SECURITY_ATTRIBUTES* security, CeDword disposition,
                                    CeDword attributes, void* like);
CE_IMPORT int CE_CALL DeviceIoControl(void* driver, CeDword code, void* input, CeDword input_bytes,
                                      void* output, CeDword output_bytes, CeDword* returned_bytes,
                                      _OVERLAPPED* overlapped);
CE_IMPORT HINSTANCE__* CE_CALL LoadLibraryExW(const wchar_t* name, void* file, CeDword flags);
CE_IMPORT int CE_CALL FreeLibrary(HINSTANCE__* module);

// ---- Texts --------------------------------------------------------------------------------------

CE_IMPORT void CE_CALL OutputDebugStringW(const wchar_t* text);
CE_IMPORT CeDword CE_CALL FormatMessageW(CeDword flags, const void* source, CeDword code,
                                         CeDword language, wchar_t* buffer, CeDword units,
                                         std::va_list* arguments);
CE_IMPORT unsigned short CE_CALL GetSystemDefaultLangID();
CE_IMPORT int CE_CALL MultiByteToWideChar(unsigned code_page, CeDword flags, const char* text,
                                          int bytes, wchar_t* buffer, int units);
CE_IMPORT int _vsnwprintf(wchar_t* buffer, std::size_t units, const wchar_t* format,
                          std::va_list arguments);

// ---- Window messages --------------------------------------------------------------------------

CE_IMPORT int CE_CALL IsWindow(HWND__* window);
CE_IMPORT int CE_CALL PostMessageW(HWND__* window, unsigned message, CeUnsigned wparam,
                                   CeLong lparam);

}  // extern "C"

// What the desktop lacks, or has under another name: desktop.cpp has it there.
#ifdef _WIN32
#define CE_ONLY
#else
#define CE_ONLY CE_IMPORT
#endif

extern "C" {

CE_ONLY int CE_CALL CeSetThreadQuantum(void* thread, CeDword quantum_ms);
CE_ONLY void NKDbgPrintfW(const wchar_t* format, ...);
CE_ONLY CeLong CE_CALL SendMessageTimeout(HWND__* window, unsigned message, CeUnsigned wparam,
                                          CeLong lparam, unsigned flags, unsigned timeout_ms,
                                          CeDwordPtr* answer);

#ifdef _WIN32
// What it has in their places.
CE_IMPORT void CE_CALL OutputDebugStringA(const char* text);
CE_IMPORT CeLong CE_CALL SendMessageTimeoutW(HWND__* window, unsigned message, CeUnsigned wparam,
                                             CeLong lparam, unsigned flags, unsigned timeout_ms,
                                             CeDwordPtr* answer);
#endif

// ---- Libraries of their own -------------------------------------------------------------------

CE_IMPORT CeDword CE_CALL GetFileVersionInfoSizeW(const wchar_t* path, CeDword* zero);
CE_IMPORT int CE_CALL GetFileVersionInfoW(const wchar_t* path, CeDword handle, CeDword bytes,
                                          void* buffer);
CE_IMPORT int CE_CALL VerQueryValueW(const void* buffer, const wchar_t* block, void** value,
                                     unsigned* length);

// CEDDK.dll, ordinals 8 and 9. The address is 64 bits wide, passed as its two words.
CE_IMPORT void* CE_CALL MmMapIoSpace(CeDword address_low, CeDword address_high, CeDword bytes,
                                     CeDword cached);
CE_IMPORT void CE_CALL MmUnmapIoSpace(void* address, CeDword bytes);

// ExtRtcNVramCtl.dll. 0 is success.
CE_IMPORT CeDword RTCNVRAM_Init();
CE_IMPORT CeDword RTCNVRAM_Read(CeDword block, void* request);
CE_IMPORT CeDword RTCNVRAM_Write(CeDword block, void* request);
CE_IMPORT CeDword RTCNVRAM_DeInit();

}  // extern "C"

#ifdef CE_OTHER_CALL
// Creates a thread for a procedure that is called as the library's functions are; null on failure.
void* StartThread(std::uint32_t (*proc)(void* argument), void* argument, CeDword* thread_id);
#endif
