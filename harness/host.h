// The host's side of the library: each export called with its call and return in the trace.
//
// Scripts, the demo, the tests and a program's own calls go through these, so that their traces are
// alike.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "VexoCtrlSDK.h"
#include "platform/platform.h"
#include "sim/trace.h"

namespace harness {

// A trace has records of commands padded to this.
inline constexpr std::size_t kCommandRecordBytes = 64;

// The DLL entry: 1 attach, 0 detach, 6 low memory. The first attach of a world makes the default
// NVRAM record for the fitted chips; each remembers the registers as it finds them.
int Entry(std::uint32_t reason);
int Initialize(PlatWindow window);
void Uninitialize();
// The version text, none for a null buffer; *length gets the result.
std::optional<std::string> GetVersion(bool null_buffer, int* length);
void SetEnableDebug(std::uint32_t enable);
void SetEnableOutputMsg(std::uint32_t enable);
// record: zero-filled to 64 bytes for the call and returned as the call left it; null: no record.
int CommandProc(std::uint32_t code, sim::Bytes* record);
int SetMotionInfo(std::uint8_t channel, std::uint8_t level, sim::Bytes* mask24);
int TextCommandProc(const char* line);
inline int TextCommandProc(const std::string& line) { return TextCommandProc(line.c_str()); }

// The same with the pointers of whoever calls, which the library gets as they are.
int GetVersion(VexoChar16* buffer);
// Of the record so many bytes are the trace's to read; 0: none.
int CommandProc(std::uint32_t code, void* record, std::size_t record_bytes);
int SetMotionInfo(std::uint8_t channel, std::uint8_t level, std::uint8_t* mask24);

// Puts all library state back to what it is at load, and the simulated PC with it.
void Restart();

}  // namespace harness
