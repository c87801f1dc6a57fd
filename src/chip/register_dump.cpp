#include "chip/register_dump.h"

#include <array>

#include "chip/register_bus.h"
#include "report/diagnostics.h"

namespace {

constexpr std::array<const char16_t*, kChipsMax> kChipNames = {u"MASTER", u"SLAVE1", u"SLAVE2",
                                                               u"SLAVE3"};

constexpr unsigned kRegistersPerLine = 16;
constexpr unsigned kRegistersPerGroup = 4;

constexpr const char16_t* kOpeningRule =
    u"=================================================================\r\n ";
constexpr const char16_t* kClosingRule =
    u"\r\n=================================================================\r\n ";

}  // namespace

std::int32_t TW_DumpRegisters(std::uint8_t chip_position, std::uint8_t page) {
  const char16_t* name = kChipNames[chip_position];
  VexoDbg_Print(u"==>> READ %s PAGE%d \r\n", name, page);
  for (unsigned reg = 0; reg < kRegistersPerPage; ++reg) {
    if (reg == 0) {
      VexoDbg_PrintRaw(kOpeningRule);
      VexoDbg_PrintRaw(u"==>> %s PAGE%d\r\n==>> [%02X] ", name, page, reg);
    } else if (reg % kRegistersPerLine == 0) {
      VexoDbg_PrintRaw(u"\r\n==>> [%02X] ", reg);
    }
    if (reg % kRegistersPerGroup == 0) VexoDbg_PrintRaw(u"  ");
    VexoDbg_PrintRaw(u"%02X ", TW_ReadRegister(kChipByPosition[chip_position], page,
                                               static_cast<std::uint8_t>(reg)));
  }
  VexoDbg_PrintRaw(kClosingRule);
  return 0;
}
