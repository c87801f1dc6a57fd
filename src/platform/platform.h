// The thin layer over the operating system: everything the library asks of the world outside.
//
// One folder per implementation: ce/ calls the system, sim/platform/ of the project forwards to the
// simulated board. Which one is compiled is decided by the build; nothing above this file knows.
//
// Texts are UTF-16 and zero-terminated. Times are milliseconds. Operations that can fail say how;
// Plat_LastError() then gives the system's reason.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>

// Kernel object, thread, driver or module. The system has two bad values, and the library treats
// them differently: 0, and the invalid handle that a failed driver open yields.
using PlatHandle = std::uintptr_t;
inline constexpr PlatHandle kPlatNoHandle = 0;
inline constexpr PlatHandle kPlatInvalidHandle = ~PlatHandle{0};

// A window of the host.
using PlatWindow = std::uintptr_t;

// ---- Kernel objects and threads -------------------------------------------------------------

inline constexpr std::uint32_t kPlatForever = 0xFFFFFFFFu;      // no time limit
inline constexpr std::uint32_t kPlatWaitSignalled = 0x0u;       // also: mutex is now ours
inline constexpr std::uint32_t kPlatWaitAbandoned = 0x80u;      // mutex is ours, its owner ended
inline constexpr std::uint32_t kPlatWaitTimeout = 0x102u;       // time limit passed
inline constexpr std::uint32_t kPlatWaitFailed = 0xFFFFFFFFu;   // no such object
inline constexpr std::uint32_t kPlatErrorAlreadyExists = 183u;  // last error of a create
inline constexpr std::uint32_t kPlatStillActive = 259u;         // exit code of a running thread

using PlatThreadProc = std::uint32_t (*)(void* argument);

// Creates or opens the named mutex, not owned. The caller closes the handle. 0 on failure.
PlatHandle Plat_CreateMutex(const char16_t* name);

// Creates an event; a null name gives an unnamed one. The caller closes the handle. 0 on failure.
// The last error becomes 0, or kPlatErrorAlreadyExists when a named event was opened instead.
PlatHandle Plat_CreateEvent(const char16_t* name, bool manual_reset, bool signalled);

// Waits for a mutex or an event, timeout_ms at most. Returns one of kPlatWait....
std::uint32_t Plat_Wait(PlatHandle object, std::uint32_t timeout_ms);

// Gives back one acquisition of a mutex. False when the caller does not own it.
bool Plat_ReleaseMutex(PlatHandle mutex);

// Closes a mutex, event, thread or module handle. False when there is no such handle.
bool Plat_CloseHandle(PlatHandle handle);

// Starts a thread at proc(argument), default security, stack and priority; *thread_id gets its
// identifier. The caller closes the handle. 0 on failure.
PlatHandle Plat_CreateThread(PlatThreadProc proc, void* argument, std::uint32_t* thread_id);

// *exit_code gets the thread's exit code, kPlatStillActive while it runs. False on failure.
bool Plat_GetExitCodeThread(PlatHandle thread, std::uint32_t* exit_code);

// Ends a thread wherever it is. False on failure.
bool Plat_TerminateThread(PlatHandle thread, std::uint32_t exit_code);

// Sets how long the thread may run before others of its priority get their turn.
bool Plat_SetThreadQuantum(PlatHandle thread, std::uint32_t quantum_ms);

std::uint32_t Plat_CurrentThreadId();
void Plat_Sleep(std::uint32_t duration_ms);

// Milliseconds since the system started, wrapping at 2^32.
std::uint32_t Plat_TickCount();

// Why the calling thread's last failing call failed.
std::uint32_t Plat_LastError();

// Turns off the entry calls for threads that begin and end.
void Plat_DisableThreadCalls(PlatHandle module);

// ---- Window messages --------------------------------------------------------------------------

bool Plat_IsWindow(PlatWindow window);

// Sends a message and waits until it is handled, timeout_ms at most; the answer is dropped.
// What wparam points to need live no longer than the call. False on failure and on time-out.
bool Plat_SendMessage(PlatWindow window, std::uint32_t message, std::uintptr_t wparam,
                      std::intptr_t lparam, std::uint32_t timeout_ms);

// Queues a message. What wparam points to must outlive its handling. False on failure.
bool Plat_PostMessage(PlatWindow window, std::uint32_t message, std::uintptr_t wparam,
                      std::intptr_t lparam);

// ---- Bus windows ------------------------------------------------------------------------------

// Address of a mapped bus window; null when it is not mapped.
using PlatBusWindow = volatile std::uint8_t*;

// Maps a physical address range. The caller unmaps it. Null on failure.
PlatBusWindow Plat_MapBusWindow(std::uint32_t physical, std::uint32_t length_bytes, bool cached);
void Plat_UnmapBusWindow(PlatBusWindow window, std::uint32_t length_bytes);

// Plat_StoreByte and Plat_LoadByte, one 8-bit access each: inline on the device, so that a
// register access costs its bus cycles and nothing else.
#include "plat_bus.h"

// ---- NVRAM ------------------------------------------------------------------------------------

// The request block of the NVRAM library, laid out as that library reads it.
struct PlatNvramRequest {
  std::uint32_t offset;    // bytes from the start of the block
  std::uint32_t length;    // bytes
  std::uint8_t* buffer;    // the caller's
  std::uint32_t reserved;  // 0
};

// All four return 0 on success.
std::uint32_t Plat_NvramInit();
std::uint32_t Plat_NvramRead(std::uint32_t block, PlatNvramRequest* request);
std::uint32_t Plat_NvramWrite(std::uint32_t block, PlatNvramRequest* request);
std::uint32_t Plat_NvramDeinit();

// ---- Stream drivers -----------------------------------------------------------------------------

inline constexpr std::uint32_t kPlatReadWrite = 0xC0000000u;  // access: read and write
inline constexpr std::uint32_t kPlatNoSharing = 0u;
inline constexpr std::uint32_t kPlatOpenExisting = 3u;

// Opens a stream driver, for example "CAM1:". The caller closes it with Plat_CloseDriver.
// kPlatInvalidHandle on failure (some drivers give 0).
PlatHandle Plat_OpenDriver(const char16_t* name, std::uint32_t access, std::uint32_t share,
                           std::uint32_t disposition);

// Sends a control request with an input record (null and 0 for none) and no output.
bool Plat_ControlDriver(PlatHandle driver, std::uint32_t code, const void* input,
                        std::uint32_t input_bytes);
bool Plat_CloseDriver(PlatHandle driver);

// ---- Version resources --------------------------------------------------------------------------

struct PlatFileVersion {
  std::uint32_t most_significant;   // first and second part, 16 bits each
  std::uint32_t least_significant;  // third and fourth part
};

// Size in bytes of a file's version information, 0 when it has none.
std::uint32_t Plat_VersionInfoSize(const char16_t* path);

// Reads the version information into the caller's buffer. False on failure.
bool Plat_ReadVersionInfo(const char16_t* path, std::uint32_t size_bytes, void* buffer);

// Finds the root block in information read before. False when it has none.
bool Plat_QueryVersionRoot(const void* buffer, PlatFileVersion* version);

// Memory for version information, the library's only allocation. Null on failure.
void* Plat_Allocate(std::uint32_t size_bytes);
void Plat_Free(void* memory);

// ---- Texts --------------------------------------------------------------------------------------

// Writes to the debug output, in one write.
void Plat_DebugOutput(const char16_t* text);

// Writes to the kernel debug output, in one write.
void Plat_KernelDebugOutput(const char16_t* text);

// Text of a system error code in the system's language, 0 for module or a module from
// Plat_LoadDataModule as its source. Null when there is none; Plat_FreeSystemText frees it.
char16_t* Plat_SystemText(std::uint32_t error_code, PlatHandle module);
void Plat_FreeSystemText(char16_t* text);

// Loads a module for its data alone; 0 on failure.
PlatHandle Plat_LoadDataModule(const char16_t* name);
void Plat_FreeModule(PlatHandle module);

// Wide printf (%s takes UTF-16) into a buffer of capacity units, terminator included; what does
// not fit is cut. Returns the length without the terminator.
std::size_t Plat_FormatV(char16_t* buffer, std::size_t capacity, const char16_t* format,
                         std::va_list arguments);

// Converts a text of the ANSI code page; what does not fit into capacity units is cut.
void Plat_WidenAnsi(const char* text, char16_t* buffer, std::size_t capacity);

// ---- Shared data --------------------------------------------------------------------------------

// One word in a data section that all processes share. Nothing reads or writes it; other programs
// of the device know that it is there.
extern std::uint32_t g_shared_word;

// ---- What the platform calls --------------------------------------------------------------------

// The library's entry point, under the system's loader lock. Returns 1 for every reason.
extern "C" int VexoSDK_DllEntry(PlatHandle module, std::uint32_t reason, void* reserved);
