// VexoLine.exe: the smallest program beside the kit. Loads the library, gives it a window, sends
// its arguments to the board as lines, and prints their answers.
#include <windows.h>

#include <array>
#include <cstdio>
#include <string>

#include "VexoDesk.h"

namespace {

template <typename Function>
Function Find(const wchar_t* module, const char* name) {
  const FARPROC function = GetProcAddress(GetModuleHandleW(module), name);
  return reinterpret_cast<Function>(reinterpret_cast<void*>(function));
}

}  // namespace

int main(int count, char** words) {
  if (LoadLibraryW(L"VexoCtrlSDK.dll") == nullptr) {
    std::fprintf(stderr, "VexoLine: VexoCtrlSDK.dll cannot be loaded: error %lu\n", GetLastError());
    return 2;
  }
  const auto initialize =
      Find<decltype(&VEXOAPI_Initialize)>(L"VexoCtrlSDK.dll", "VEXOAPI_Initialize");
  const auto line = Find<decltype(&VexoDesk_Line)>(L"CEDDK.dll", "VexoDesk_Line");
  const int attached = initialize(
      CreateWindowExW(0, L"STATIC", L"host", 0, 0, 0, 8, 8, nullptr, nullptr, nullptr, nullptr));
  if (attached != VEXO_OK) std::printf("the library is not initialized: %d\n", attached);
  int result = VEXODESK_OK;
  for (int i = 1; i < count && result == VEXODESK_OK; ++i) {
    static std::array<char, 0x10000> answer;
    result = line(words[i], answer.data(), answer.size());
    std::puts(answer.data());
  }
  return -result;
}
