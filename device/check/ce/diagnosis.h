// What can be told of the library before it is asked for anything: its file, its imports, what the
// loader says, its exports, a second load and a second process.
#pragma once

#include "device/check/ce/device_system.h"
#include "device/check/ce/paths.h"

namespace check {

// Tells the log of the library's file, and of each of its imports that is not there.
void TellFile(DeviceSystem& system, const LibraryPlace& place);
// Tells the log of each driver of the library's that cannot be opened.
void TellDrivers(DeviceSystem& system);
// Loads it and frees it again; false when the loader refuses it.
bool TellLoading(DeviceSystem& system, const LibraryPlace& place);
// What a second process finds that loads the library while this one has it. After it the system may
// not let anybody initialize the library again until the device is restarted: the mark that keeps
// the second one out stays, where a process that ends does not take its handles with it.
void TellSecondProcess(DeviceSystem& system, const LibraryPlace& place);
// What a second process finds: the sum that is its exit code.
CeDword RunAsSecond();
// The word that this program's second process is told by.
inline constexpr const wchar_t* kSecond = L"second";

}  // namespace check
