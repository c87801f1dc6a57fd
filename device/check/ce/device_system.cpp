#include "device/check/ce/device_system.h"

namespace check {
namespace {

constexpr CeDword kNoSuchModule = 126;
constexpr std::uint32_t kMicrosecondsPerSecond = 1'000'000;

struct Division {
  std::uint64_t quotient;
  std::uint32_t remainder;
};

// Bit by bit: the compiler's own division of 64 bits is no code that the system can unwind through.
Division Divide(std::uint64_t dividend, std::uint32_t divisor) {
  std::uint64_t rest = 0;
  std::uint64_t quotient = 0;
  for (int bit = 63; bit >= 0; --bit) {
    rest = rest << 1 | (dividend >> bit & 1);
    quotient <<= 1;
    if (rest >= divisor) {
      rest -= divisor;
      quotient |= 1;
    }
  }
  return {quotient, static_cast<std::uint32_t>(rest)};
}

}  // namespace

DeviceSystem::DeviceSystem() : begin_(GetTickCount()) {
  std::uint64_t count = 0;
  const bool works = QueryPerformanceFrequency(&per_second_) != 0 && per_second_ != 0 &&
                     (per_second_ >> 32) == 0 && QueryPerformanceCounter(&count) != 0;
  if (!works) per_second_ = 0;
  first_count_ = count;
}

// ---- Log and time -------------------------------------------------------------------------------

bool DeviceSystem::OpenLog(const wchar_t* path) {
  log_ =
      CreateFileW(path, kCeWrite, kCeShareRead, nullptr, kCeCreateAlways, kCeOrdinaryFile, nullptr);
  return reinterpret_cast<std::uintptr_t>(log_) != kCeNoFile;
}

void DeviceSystem::CloseLog() { CloseHandle(log_); }

void DeviceSystem::WriteLog(const char* line, unsigned bytes) {
  CeDword written = 0;
  if (WriteFile(log_, line, bytes, &written, nullptr) == 0 || written != bytes) {
    OutputDebugStringW(L"VexoCheck: the log cannot be written\r\n");
  }
  FlushFileBuffers(log_);
}

std::uint32_t DeviceSystem::Milliseconds() {
  return static_cast<std::uint32_t>(GetTickCount() - begin_);
}

std::uint64_t DeviceSystem::Microseconds() {
  if (per_second_ == 0) return std::uint64_t{Milliseconds()} * 1000;
  std::uint64_t count = 0;
  QueryPerformanceCounter(&count);
  count -= first_count_;
  // In two parts, since their product would have more than 64 bits.
  const auto per_second = static_cast<std::uint32_t>(per_second_);
  const Division seconds = Divide(count, per_second);
  const std::uint64_t part = std::uint64_t{seconds.remainder} * kMicrosecondsPerSecond;
  return seconds.quotient * kMicrosecondsPerSecond + Divide(part, per_second).quotient;
}

// ---- The library --------------------------------------------------------------------------------

std::uint32_t DeviceSystem::Load() {
  library_ = LoadLibraryW(name_.Get());
  if (library_ == nullptr) {
    const CeDword error = GetLastError();
    return static_cast<std::uint32_t>(error != 0 ? error : kNoSuchModule);
  }
  for (unsigned i = 0; i < kExportCount; ++i) exports_[i] = GetProcAddressW(library_, kExports[i]);
  return 0;
}

// The next one who loads it finds the stored settings as they were.
void DeviceSystem::Unload() {
  FreeLibrary(library_);
  library_ = nullptr;
  settings.Restore();
}

bool DeviceSystem::Has(Export which) {
  return library_ != nullptr && exports_[static_cast<unsigned>(which)] != nullptr;
}

int DeviceSystem::Initialize(bool valid_window) {
  constexpr std::uintptr_t kNoWindow = 0xBAD0;
  HWND__* const window = valid_window ? window_ : reinterpret_cast<HWND__*>(kNoWindow);
  return Call<VexoInitializeFunction>(Export::Initialize)(reinterpret_cast<VexoWindow>(window));
}

void DeviceSystem::Uninitialize() { Call<VexoUninitializeFunction>(Export::Uninitialize)(); }

void DeviceSystem::SetDebug(std::uint32_t enable) {
  Call<VexoSetEnableDebugFunction>(Export::Debug)(enable);
}

void DeviceSystem::SetOutput(std::uint32_t enable) {
  Call<VexoSetEnableOutputMsgFunction>(Export::Output)(enable);
}

int DeviceSystem::GetVersion(Char16* buffer) {
  return Call<VexoGetVersionFunction>(Export::Version)(reinterpret_cast<VexoChar16*>(buffer));
}

int DeviceSystem::Command(std::uint32_t code, void* record) {
  return Call<VexoCommandProcFunction>(Export::Command)(code, record);
}

int DeviceSystem::SetMotion(std::uint8_t channel, std::uint8_t level, std::uint8_t* mask) {
  return Call<VexoSetMotionInfoFunction>(Export::Motion)(channel, level, mask);
}

int DeviceSystem::Text(const char* line) {
  return Call<VexoTextCommandProcFunction>(Export::Text)(line);
}

// ---- The window ---------------------------------------------------------------------------------

void DeviceSystem::CloseWindow() {
  if (window_ != nullptr) DestroyWindow(window_);
}

void DeviceSystem::Wait(std::uint32_t ms) {
  const CeDword begin = GetTickCount();
  for (;;) {
    CeMessage message;
    while (PeekMessageW(&message, nullptr, 0, 0, kCeTakeMessage) != 0) DispatchMessageW(&message);
    if (GetTickCount() - begin >= ms) return;
    Sleep(1);
  }
}

}  // namespace check
