// Bus windows, NVRAM, stream drivers.
#include "ce_api.h"
#include "platform/platform.h"

PlatBusWindow Plat_MapBusWindow(std::uint32_t physical, std::uint32_t length_bytes, bool cached) {
  return static_cast<PlatBusWindow>(MmMapIoSpace(physical, 0, length_bytes, cached ? 1 : 0));
}

void Plat_UnmapBusWindow(PlatBusWindow window, std::uint32_t length_bytes) {
  MmUnmapIoSpace(const_cast<std::uint8_t*>(window), length_bytes);
}

std::uint32_t Plat_NvramInit() { return RTCNVRAM_Init(); }
std::uint32_t Plat_NvramDeinit() { return RTCNVRAM_DeInit(); }

std::uint32_t Plat_NvramRead(std::uint32_t block, PlatNvramRequest* request) {
  return RTCNVRAM_Read(block, request);
}

std::uint32_t Plat_NvramWrite(std::uint32_t block, PlatNvramRequest* request) {
  return RTCNVRAM_Write(block, request);
}

PlatHandle Plat_OpenDriver(const char16_t* name, std::uint32_t access, std::uint32_t share,
                           std::uint32_t disposition) {
  return reinterpret_cast<PlatHandle>(CreateFileW(reinterpret_cast<const wchar_t*>(name), access,
                                                  share, nullptr, disposition, 0, nullptr));
}

bool Plat_ControlDriver(PlatHandle driver, std::uint32_t code, const void* input,
                        std::uint32_t input_bytes) {
  CeDword returned = 0;
  // Drivers only read the input record.
  return DeviceIoControl(reinterpret_cast<void*>(driver), code, const_cast<void*>(input),
                         input_bytes, nullptr, 0, &returned, nullptr) != 0;
}

bool Plat_CloseDriver(PlatHandle driver) {
  return CloseHandle(reinterpret_cast<void*>(driver)) != 0;
}
