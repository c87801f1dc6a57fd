#include "setup/stored_settings.h"

#include <cstring>

#include "chip/video_state.h"
#include "platform/platform.h"
#include "report/diagnostics.h"

namespace {

constexpr std::uint32_t kBlock = 1;
constexpr std::uint32_t kRecordBytes = 6;
constexpr std::uint32_t kMagicBytes = 4;
constexpr std::uint32_t kStandardOffset = 4;
constexpr std::uint32_t kChannelsOffset = 5;
constexpr std::uint8_t kMagic[kMagicBytes] = {'M', 'D', 'V', 'R'};

bool ReadNvram(std::uint32_t offset, std::uint8_t* buffer, std::uint32_t length) {
  PlatNvramRequest request = {offset, length, buffer, 0};
  if (Plat_NvramRead(kBlock, &request) == 0) return true;
  VexoDbg_Print(u" ERROR READ NVRAM DATA!!!\r\n\r\n");
  return false;
}

}  // namespace

StoredSettings ReadStoredSettings(const StoredSettings& detected) {
  std::uint8_t record[kRecordBytes] = {};
  // Quirk: an unreadable record overrides the detected standard with "no video".
  if (!ReadNvram(0, record, kRecordBytes)) return {kStandardNone, 0};
  if (std::memcmp(record, kMagic, kMagicBytes) != 0) {
    // Quirk: says "write" for what was read, and has no number to show.
    VexoDbg_Print(u"[TW2835] ERROR WRITE DATA NVRAM DRIVER 0x%08X\r\n\r\n", 0u);
    return detected;
  }
  return {record[kStandardOffset], record[kChannelsOffset]};
}

void TW_StoreVideoStandard(std::uint8_t standard) {
  std::uint8_t buffer[1] = {};
  if (!ReadNvram(kStandardOffset, buffer, 1)) return;
  buffer[0] = standard;
  PlatNvramRequest request = {kStandardOffset, 1, buffer, 0};
  if (Plat_NvramWrite(kBlock, &request) != 0) {
    VexoDbg_Print(u" ERROR WRITE NVRAM DATA!!!\r\n\r\n");
  }
}
