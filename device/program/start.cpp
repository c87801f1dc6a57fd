// Where the system begins a program.
#include "device/program/program_api.h"

extern "C" {

int WinMain(HINSTANCE__* instance, HINSTANCE__* previous, const wchar_t* command_line, int show);

[[noreturn]] void WinMainCRTStartup(HINSTANCE__* instance, HINSTANCE__* previous,
                                    const wchar_t* command_line, int show) {
  const auto code = static_cast<CeDword>(WinMain(instance, previous, command_line, show));
  for (;;) TerminateProcess(reinterpret_cast<void*>(kCeThisProcess), code);
}

}  // extern "C"
