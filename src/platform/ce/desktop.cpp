// What Windows on the desktop lacks, or has under another name. Not part of the device's build.
#include "ce_api.h"

extern "C" int CE_CALL CeSetThreadQuantum(void* /*thread*/, CeDword /*quantum_ms*/) { return 1; }

// The kernel's debug output is a text of 8-bit characters, and apart from the other one.
extern "C" void NKDbgPrintfW(const wchar_t* format, ...) {
  constexpr std::size_t kUnits = 256;
  wchar_t wide[kUnits];
  std::va_list arguments;
  va_start(arguments, format);
  const int length = _vsnwprintf(wide, kUnits - 1, format, arguments);
  va_end(arguments);
  const std::size_t end = length < 0 ? kUnits - 1 : static_cast<std::size_t>(length);
  char text[kUnits];
  for (std::size_t i = 0; i < end; ++i) text[i] = static_cast<char>(wide[i]);
  text[end] = '\0';
  OutputDebugStringA(text);
}

extern "C" CeLong CE_CALL SendMessageTimeout(HWND__* window, unsigned message, CeUnsigned wparam,
                                             CeLong lparam, unsigned flags, unsigned timeout_ms,
                                             CeDwordPtr* answer) {
  return SendMessageTimeoutW(window, message, wparam, lparam, flags, timeout_ms, answer);
}

#ifdef CE_OTHER_CALL

namespace {
struct ThreadStart {
  std::uint32_t (*proc)(void* argument);
  void* argument;
};

CeDword CE_CALL RunThread(void* memory) {
  const ThreadStart start = *static_cast<ThreadStart*>(memory);
  LocalFree(memory);
  return start.proc(start.argument);
}
}  // namespace

// A thread procedure is called otherwise than the library's functions are.
void* StartThread(std::uint32_t (*proc)(void* argument), void* argument, CeDword* thread_id) {
  auto* start = static_cast<ThreadStart*>(LocalAlloc(kCeFixedMemory, sizeof(ThreadStart)));
  if (start == nullptr) return nullptr;
  *start = {proc, argument};
  void* thread = CreateThread(nullptr, 0, RunThread, start, 0, thread_id);
  if (thread == nullptr) LocalFree(start);
  return thread;
}

#endif
