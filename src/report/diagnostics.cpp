#include "report/diagnostics.h"

#include <cstdarg>

#include "platform/platform.h"

DebugSettings g_debug;

namespace {

// The text ids of the system are looked up here when it has none of its own.
constexpr const char16_t* kMessageModule = u"netmsg.dll";

void CopyText(char16_t* to, std::size_t capacity, const char16_t* from) {
  std::size_t length = 0;
  for (; length + 1 < capacity && from[length] != u'\0'; ++length) to[length] = from[length];
  to[length] = u'\0';
}

void WriteMessage(const char16_t* format, std::va_list arguments) {
  char16_t text[kDebugTextUnits];
  Plat_FormatV(text, kDebugTextUnits, format, arguments);
  Plat_DebugOutput(text);
}

// Viewers of the debug output tell modules apart by the prefix, a write of its own.
void WritePrefix(const char16_t* name) {
  char16_t text[kDebugTextUnits];
  VexoDbg_Format(text, kDebugTextUnits, u"[%s]: ", name);
  Plat_DebugOutput(text);
}

}  // namespace

void VexoDbg_Print(const char16_t* format, ...) {
  if (g_debug.output_message == 0) return;
  WritePrefix(g_debug.print_name);
  std::va_list arguments;
  va_start(arguments, format);
  WriteMessage(format, arguments);
  va_end(arguments);
}

void VexoDbg_PrintLevel(std::int32_t level, const char16_t* format, ...) {
  if (g_debug.debug_output == 0 || level < g_debug.level_threshold) return;
  WritePrefix(g_debug.level_name);
  std::va_list arguments;
  va_start(arguments, format);
  WriteMessage(format, arguments);
  va_end(arguments);
}

void VexoDbg_PrintRaw(const char16_t* format, ...) {
  if (g_debug.output_message == 0) return;
  std::va_list arguments;
  va_start(arguments, format);
  WriteMessage(format, arguments);
  va_end(arguments);
}

void VexoDbg_PrintLastError(std::uint32_t error_code) {
  if (g_debug.output_message == 0) return;
  char16_t text[kDebugTextUnits];
  if (VexoDbg_GetErrorText(error_code, text) == 0) return;
  VexoDbg_Print(u"************           Error Msg : %s \n", text);
}

std::uint32_t VexoDbg_GetErrorText(std::uint32_t error_code, char16_t* buffer) {
  char16_t* text = Plat_SystemText(error_code, kPlatNoHandle);
  if (text == nullptr) {
    // Quirk: the module is handed over but the system is not told to search it, so this asks the
    // same question again. Network errors have always gone without a text.
    const PlatHandle module = Plat_LoadDataModule(kMessageModule);
    text = Plat_SystemText(error_code, module);
    if (module != kPlatNoHandle) Plat_FreeModule(module);
  }
  if (text == nullptr) return 0;

  std::uint32_t length = 0;
  while (length + 1 < kDebugTextUnits && text[length] != u'\0') ++length;
  if (buffer != nullptr) CopyText(buffer, kDebugTextUnits, text);
  Plat_FreeSystemText(text);
  return length;
}

void VexoDbg_SetPrintName(const char16_t* name) {
  CopyText(g_debug.print_name, kModuleNameUnits, name);
}

void VexoDbg_SetLevelName(const char16_t* name) {
  CopyText(g_debug.level_name, kModuleNameUnits, name);
}

void VexoDbg_SetDebugOutput(std::uint32_t enable) { g_debug.debug_output = enable; }
void VexoDbg_SetOutputMessage(std::uint32_t enable) { g_debug.output_message = enable; }
void VexoDbg_SetLevelThreshold(std::int32_t level) { g_debug.level_threshold = level; }

void VexoDbg_Format(char16_t* buffer, std::size_t capacity, const char16_t* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Plat_FormatV(buffer, capacity, format, arguments);
  va_end(arguments);
}
