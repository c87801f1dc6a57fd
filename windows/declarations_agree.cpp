// Compiles only where the library's own declarations of the system's calls are the system's: each
// function is declared twice here, and a difference in a type is an error. A convention that is
// missing in one is not, but then the 32-bit linker finds no function of that name.
#include <windows.h>
// A macro for one of two names here, a name of its own on the device.
#undef SendMessageTimeout

#include <cstddef>
#include <cwchar>
#include <type_traits>

#include "ce_api.h"
#include "platform/platform.h"

static_assert(std::is_same_v<CeDword, DWORD>);
static_assert(std::is_same_v<CeLong, LPARAM>);
static_assert(std::is_same_v<CeLong, LRESULT>);
static_assert(std::is_same_v<CeUnsigned, WPARAM>);
static_assert(std::is_same_v<CeDwordPtr, DWORD_PTR>);
static_assert(std::is_same_v<CeThreadProc, LPTHREAD_START_ROUTINE>);

// The device's name for it is the same function.
static_assert(std::is_same_v<decltype(SendMessageTimeout), decltype(SendMessageTimeoutW)>);

static_assert(kCeAllocateText == FORMAT_MESSAGE_ALLOCATE_BUFFER &&
              kCeTextFromSystem == FORMAT_MESSAGE_FROM_SYSTEM &&
              kCeLoadWithoutReferences == DONT_RESOLVE_DLL_REFERENCES &&
              kCeSendNormal == SMTO_NORMAL && kCeAnsiCodePage == CP_ACP &&
              kCeFixedMemory == LMEM_FIXED);

// These go to the system, or come from it, as they are.
static_assert(kPlatForever == INFINITE && kPlatWaitSignalled == WAIT_OBJECT_0 &&
              kPlatWaitAbandoned == WAIT_ABANDONED && kPlatWaitTimeout == WAIT_TIMEOUT &&
              kPlatWaitFailed == WAIT_FAILED && kPlatErrorAlreadyExists == ERROR_ALREADY_EXISTS &&
              kPlatStillActive == STILL_ACTIVE);
static_assert(kPlatReadWrite == (GENERIC_READ | GENERIC_WRITE) &&
              kPlatOpenExisting == OPEN_EXISTING);

static_assert(offsetof(CeFixedFileInfo, file_version_ms) ==
                  offsetof(VS_FIXEDFILEINFO, dwFileVersionMS) &&
              offsetof(CeFixedFileInfo, file_version_ls) ==
                  offsetof(VS_FIXEDFILEINFO, dwFileVersionLS));
