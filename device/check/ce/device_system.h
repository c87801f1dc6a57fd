// The device under the check program: its log, its clock, its window, and the library on it.
#pragma once

#include "VexoCtrlSDK.h"
#include "device/check/ce/paths.h"
#include "device/check/ce/stored_settings.h"
#include "device/check/system.h"
#include "device/program/program_api.h"

namespace check {

// The library's exports, in the order of System::Export.
inline constexpr const wchar_t* kExports[] = {L"VEXOAPI_Initialize",
                                              L"VEXOAPI_Uninitialize",
                                              L"VEXOAPI_GetVersion",
                                              L"VEXOAPI_SetEnableDebug",
                                              L"VEXOAPI_SetEnableOutputMsg",
                                              L"VEXOAPI_CommandProc",
                                              L"?VEXOAPI_SetMotionInfo@@YAHEEPAE@Z",
                                              L"VEXOAPI_TextCommandProc"};
inline constexpr unsigned kExportCount = sizeof kExports / sizeof *kExports;

class DeviceSystem final : public System {
 public:
  DeviceSystem();

  // Creates the log; false when that cannot be.
  bool OpenLog(const wchar_t* path);
  void CloseLog();
  std::uint32_t ClockPerSecond() const { return static_cast<std::uint32_t>(per_second_); }
  // Makes the program's window: the handle, 0 with the system's error.
  std::uint32_t MakeWindow(HINSTANCE__* instance);
  void CloseWindow();
  void UseLibrary(const Path& name) { name_ = name; }
  StoredSettings settings{*this};

  // System
  void WriteLog(const char* line, unsigned bytes) override;
  std::uint32_t Milliseconds() override;
  std::uint64_t Microseconds() override;
  std::uint32_t Load() override;
  void Unload() override;
  bool Has(Export which) override;
  int Initialize(bool valid_window) override;
  void Uninitialize() override;
  void SetDebug(std::uint32_t enable) override;
  void SetOutput(std::uint32_t enable) override;
  int GetVersion(Char16* buffer) override;
  int Command(std::uint32_t code, void* record) override;
  int SetMotion(std::uint8_t channel, std::uint8_t level, std::uint8_t* mask) override;
  int Text(const char* line) override;
  void Wait(std::uint32_t ms) override;

 private:
  template <typename Function>
  Function Call(Export which) const {
    return reinterpret_cast<Function>(exports_[static_cast<unsigned>(which)]);
  }

  void* log_ = nullptr;
  CeDword begin_;
  std::uint64_t per_second_ = 0;  // 0: there is no such clock
  std::uint64_t first_count_ = 0;
  HWND__* window_ = nullptr;
  Path name_;
  HINSTANCE__* library_ = nullptr;
  void* exports_[kExportCount] = {};
};

}  // namespace check
