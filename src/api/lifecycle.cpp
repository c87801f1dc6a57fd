#include "api/lifecycle.h"

#include <array>

#include "chip/register_bus.h"
#include "report/diagnostics.h"
#include "report/library_state.h"

LibraryState g_library;

namespace {

constexpr const char16_t* kLockName = u"CS4_GlobalLock";
constexpr const char16_t* kInstanceName = u"VEXOSDK";

constexpr std::uint32_t kSelectWindow = 0x06600000;
constexpr std::uint32_t kAddressWindow = 0x06400000;
constexpr std::uint32_t kDataWindow = 0x06200000;
constexpr std::uint32_t kWindowBytes = 4;

constexpr std::int32_t kLevelMapping = 2;

constexpr std::array<const char16_t*, 3> kLibraryPaths = {u"\\DLL\\VexoCtrlSDK.DLL",
                                                          u"\\NAND FLASH\\MDVR\\VexoCtrlSDK.DLL",
                                                          u"\\Windows\\VexoCtrlSDK.DLL"};

constexpr char kBuildBanner[] = ">> build : " __DATE__ " " __TIME__ "\r\n";

void ClearVersionText() {
  for (char16_t& unit : g_library.g_version_text) unit = u'\0';
}

// Maps one bus window uncached; null on failure. Quirk: that is told and no more: register accesses
// then go to the null address, also when an earlier attach has left the chips ready.
PlatBusWindow MapWindow(std::uint32_t physical) {
  return Plat_MapBusWindow(physical, kWindowBytes, false);
}

void UnmapWindow(PlatBusWindow& window) {
  if (window == nullptr) return;
  Plat_UnmapBusWindow(window, kWindowBytes);
  window = nullptr;
}

void ProcessAttach(PlatHandle module) {
  Plat_DisableThreadCalls(module);
  VexoDbg_SetLevelThreshold(0);
  VexoDbg_SetPrintName(u"VexoCtrlSDK");
  VexoDbg_SetLevelName(u"VEXOSDK");
  VexoDbg_SetDebugOutput(1);
  VexoDbg_SetOutputMessage(1);

  char16_t banner[260];
  Plat_WidenAnsi(kBuildBanner, banner, 260);
  VexoDbg_Print(u"%s", banner);

  VexoSDK_Attach();
  g_library.g_module = module;
  for (const char16_t* path : kLibraryPaths) {
    if (VexoSDK_ReadVersion(path) != 0) break;
  }
  VexoDbg_Print(u">> VEXO SDK Version : %s\r\n", g_library.g_version_text);
}

}  // namespace

extern "C" int VexoSDK_DllEntry(PlatHandle module, std::uint32_t reason, void* /*reserved*/) {
  if (reason == kEntryAttach) {
    ProcessAttach(module);
  } else if (reason == kEntryDetach) {
    VexoSDK_Detach();
  } else if (reason == kEntryLowMemory) {
    VexoDbg_Print(u">> DLL_MEMORY_LOW\r\n");
  }
  return 1;
}

void VexoSDK_Attach() {
  g_library.g_module = kPlatNoHandle;
  g_library.g_initialized = 0;
  g_library.g_instance_event = kPlatNoHandle;
  g_library.g_host_wnd = 0;

  if (g_library.g_cs4_lock == kPlatNoHandle) {
    g_library.g_cs4_lock = Plat_CreateMutex(kLockName);
    if (g_library.g_cs4_lock == kPlatNoHandle) {
      // Quirk: the text says "RTC mutex"; hosts may look for it.
      Plat_KernelDebugOutput(u"<VexoCtrlSDK.DLL> Error : Failed to create RTC mutex.\r\n");
    }
  }

  // Only a mark: nothing signals or waits on it.
  g_library.g_instance_event = Plat_CreateEvent(kInstanceName, true, false);
  if (Plat_LastError() == kPlatErrorAlreadyExists) {
    VexoDbg_Print(u">> Error Load DLL, Already Register !! \r\n");
    // Quirk: not closed, so that the mark outlives its first owner.
    g_library.g_instance_event = kPlatNoHandle;
    return;
  }
  g_library.g_initialized = 1;

  g_bus.select = MapWindow(kSelectWindow);
  if (g_bus.select == nullptr) {
    VexoDbg_PrintLevel(kLevelMapping, u">> ERROR TW2835 BASE REGISTER!!!\r\n");
    return;
  }
  g_bus.address = MapWindow(kAddressWindow);
  if (g_bus.address == nullptr) {
    VexoDbg_PrintLevel(kLevelMapping, u">> ERROR TW2835 ACS BASE REGISTER!!!\r\n");
    return;
  }
  g_bus.data = MapWindow(kDataWindow);
  // Quirk: tests the address window again, so a board without the data window goes on in silence.
  if (g_bus.address == nullptr) {
    VexoDbg_PrintLevel(kLevelMapping, u">> ERROR TW2835 IO BASE REGISTER!!!\r\n");
    return;
  }
  Plat_NvramInit();
  ClearVersionText();
}

void VexoSDK_Detach() {
  g_library.g_module = kPlatNoHandle;
  g_library.g_initialized = 0;
  g_library.g_host_wnd = 0;
  if (g_library.g_instance_event != kPlatNoHandle) {
    Plat_CloseHandle(g_library.g_instance_event);
    g_library.g_instance_event = kPlatNoHandle;
  }
  UnmapWindow(g_bus.select);
  UnmapWindow(g_bus.address);
  UnmapWindow(g_bus.data);
  // Quirk: the stale value stays: an attach without a new load takes no new lock.
  if (g_library.g_cs4_lock != kPlatNoHandle) Plat_CloseHandle(g_library.g_cs4_lock);
  Plat_NvramDeinit();
  ClearVersionText();
}

std::int32_t VexoSDK_ReadVersion(const char16_t* path) {
  ClearVersionText();
  const std::uint32_t size = Plat_VersionInfoSize(path);
  if (size == 0) return 0;

  void* info = Plat_Allocate(size);
  PlatFileVersion version = {};
  if (info != nullptr && Plat_ReadVersionInfo(path, size, info) &&
      Plat_QueryVersionRoot(info, &version)) {
    VexoDbg_Format(g_library.g_version_text, kVersionTextUnits, u"%d. %d. %d. %d",
                   version.most_significant >> 16, version.most_significant & 0xFFFFu,
                   version.least_significant >> 16, version.least_significant & 0xFFFFu);
  }
  Plat_Free(info);
  return 1;
}
