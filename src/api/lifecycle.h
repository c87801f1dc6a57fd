// What happens when the library is attached to and detached from a process.
#pragma once

#include <cstdint>

#include "platform/platform.h"

inline constexpr std::uint32_t kEntryDetach = 0;
inline constexpr std::uint32_t kEntryAttach = 1;
inline constexpr std::uint32_t kEntryLowMemory = 6;

// Takes the platform resources. The library stays uninitialized in a second process.
void VexoSDK_Attach();

// Gives the platform resources back. Does not stop the worker thread.
void VexoSDK_Detach();

// Reads the version of a file into g_version_text, empty when its version block cannot be read.
// Returns 1 when the file has version information, else 0.
std::int32_t VexoSDK_ReadVersion(const char16_t* path);
