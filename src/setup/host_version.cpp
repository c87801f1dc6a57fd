#include "setup/host_version.h"

#include "platform/platform.h"
#include "report/diagnostics.h"

namespace {

constexpr const char16_t* kHostPath = u"\\Windows\\Main.exe";
constexpr const char16_t* kHostFallbackPath = u"\\NAND Flash\\MDVR\\Main.exe";

constexpr std::uint16_t kVersionUnknown = 255;
constexpr std::size_t kTextUnits = 64;

constexpr std::int32_t kLevelVersion = 2;
constexpr std::int32_t kLevelAllocation = 3;

void PrintVersionError(const char16_t* text) {
  VexoDbg_PrintLevel(kLevelVersion, u"ERROR|| %s\r\n", text);
}

// Reads the version into text; false, with the reason as text, when it cannot.
bool ReadVersion(const char16_t* path, std::uint32_t size, PlatFileVersion* version,
                 char16_t (&text)[kTextUnits]) {
  void* info = Plat_Allocate(size);
  if (info == nullptr) VexoDbg_PrintLevel(kLevelAllocation, u"ERROR|| new lpVersionInfo\r\n");
  const bool loaded = info != nullptr && Plat_ReadVersionInfo(path, size, info);
  const bool found = loaded && Plat_QueryVersionRoot(info, version);
  Plat_Free(info);
  if (found) {
    VexoDbg_Format(text, kTextUnits, u"Ver %d. %d. %d. %d", version->most_significant >> 16,
                   version->most_significant & 0xFFFFu, version->least_significant >> 16,
                   version->least_significant & 0xFFFFu);
    return true;
  }
  VexoDbg_Format(text, kTextUnits, loaded ? u"Ver Unknown 1 " : u"Ver Unknown 2 ");
  PrintVersionError(text);
  return false;
}

}  // namespace

std::uint16_t TW_GetHostAppVersion() {
  const char16_t* path = kHostPath;
  std::uint32_t size = Plat_VersionInfoSize(path);
  if (size == 0) {
    path = kHostFallbackPath;
    size = Plat_VersionInfoSize(path);
  }

  char16_t text[kTextUnits] = u"Ver Unknown 3";
  PlatFileVersion version = {};
  bool known = false;
  if (size == 0) {
    PrintVersionError(text);
  } else {
    known = ReadVersion(path, size, &version, text);
  }
  VexoDbg_PrintLevel(kLevelVersion, u"APP Ver : %s\r\n", text);
  return known ? static_cast<std::uint16_t>(version.most_significant & 0xFFFFu) : kVersionUnknown;
}
