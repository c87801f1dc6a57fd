// Diagnostic texts on the platform's debug output, and the switches that gate them.
//
// Formats are wide printf formats (%s takes UTF-16). A message is cut at 1023 units. The print
// operations use the stack alone and may be called from any thread.
#pragma once

#include <cstddef>
#include <cstdint>

inline constexpr std::size_t kDebugTextUnits = 1024;  // terminator included
inline constexpr std::size_t kModuleNameUnits = 32;   // terminator included

struct DebugSettings {
  std::uint32_t debug_output = 1;    // non-zero: levelled prints are written
  std::uint32_t output_message = 1;  // non-zero: plain, raw and error prints are written
  std::int32_t level_threshold = 2;  // levelled prints below it are not written
  char16_t print_name[kModuleNameUnits] = {};
  char16_t level_name[kModuleNameUnits] = {};
};
extern DebugSettings g_debug;

// Plain print: the prefix "[name]: " and the message, as two writes.
void VexoDbg_Print(const char16_t* format, ...);
// Levelled print: likewise, with its own name.
void VexoDbg_PrintLevel(std::int32_t level, const char16_t* format, ...);
// The message alone.
void VexoDbg_PrintRaw(const char16_t* format, ...);
// The system's text of an error code, as a plain print; nothing when it has none.
void VexoDbg_PrintLastError(std::uint32_t error_code);

// Copies the system's text of an error code into buffer (at least kDebugTextUnits; may be null).
// Returns its length in units, 0 when there is none.
std::uint32_t VexoDbg_GetErrorText(std::uint32_t error_code, char16_t* buffer);

// Names of at most kModuleNameUnits - 1 units; longer ones are cut.
void VexoDbg_SetPrintName(const char16_t* name);
void VexoDbg_SetLevelName(const char16_t* name);
void VexoDbg_SetDebugOutput(std::uint32_t enable);
void VexoDbg_SetOutputMessage(std::uint32_t enable);
void VexoDbg_SetLevelThreshold(std::int32_t level);

// Formats into a buffer of capacity units, terminator included; what does not fit is cut.
void VexoDbg_Format(char16_t* buffer, std::size_t capacity, const char16_t* format, ...);
