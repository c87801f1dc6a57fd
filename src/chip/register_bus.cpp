#include "chip/register_bus.h"

#include "report/diagnostics.h"

BusWindows g_bus;

namespace {

constexpr bool IsChipSelect(std::uint8_t chip) {
  return chip == kChipMaster || chip == kChipSlave1 || chip == kChipSlave2 || chip == kChipSlave3 ||
         chip == kChipAll;
}

// The select byte has two bits a chip: the page of a selected chip, 11 for one that is not. The
// page in all four fields, with ones in the fields of the other chips, is the byte for any code.
constexpr std::uint8_t SelectByte(std::uint8_t chip, unsigned page) {
  return static_cast<std::uint8_t>((page * 0x55u) | (~chip & 0xFFu));
}

// Quirk: with an invalid chip select code nothing is selected and nothing released, but the
// address and data cycles go out all the same.
inline void SelectPage(std::uint8_t chip, unsigned page) {
  if (IsChipSelect(chip)) Plat_StoreByte(g_bus.select, SelectByte(chip, page));
}

// Selects, lets `cycles` address the chip and move its data, and releases. The window addresses are
// copied first: after each byte store they would have to be fetched anew.
template <typename Cycles>
inline void Access(std::uint8_t chip, std::uint8_t page, const Cycles& cycles) {
  const BusWindows bus = g_bus;
  const bool selects = IsChipSelect(chip);
  if (selects) Plat_StoreByte(bus.select, SelectByte(chip, page));
  cycles(bus);
  if (selects) Plat_StoreByte(bus.select, kSelectIdle);
}

}  // namespace

void TW_SelectPage0(std::uint8_t chip) { SelectPage(chip, kPage0); }
void TW_SelectPage1(std::uint8_t chip) { SelectPage(chip, kPage1); }
void TW_SelectPage2(std::uint8_t chip) { SelectPage(chip, kPage2); }

void TW_ReleaseChip(std::uint8_t chip) {
  if (IsChipSelect(chip)) Plat_StoreByte(g_bus.select, kSelectIdle);
}

std::uint8_t TW_ReadRegister(std::uint8_t chip, std::uint8_t page, std::uint8_t reg) {
  if (page >= kPageCount) {
    VexoDbg_Print(u">> TW_ReadRegister INVALID PAGE (%d)!\r\n", page);
    return 0;
  }
  std::uint8_t value = 0;
  Access(chip, page, [&](const BusWindows& bus) {
    Plat_StoreByte(bus.address, reg);
    value = Plat_LoadByte(bus.data);
  });
  return value;
}

void TW_WriteRegister(std::uint8_t chip, std::uint8_t page, std::uint8_t reg, std::uint8_t value) {
  if (page >= kPageCount) {
    VexoDbg_Print(u">> TW_WriteRegister INVALID PAGE (%d)!\r\n", page);
    return;
  }
  Access(chip, page, [=](const BusWindows& bus) {
    Plat_StoreByte(bus.address, reg);
    Plat_StoreByte(bus.data, value);
  });
}

void TW_WriteReg_Table(std::uint8_t chip, std::uint8_t page, std::uint8_t first_reg,
                       const std::uint8_t* data, std::uint8_t count) {
  if (page >= kPageCount) {
    VexoDbg_Print(u">> TW_WriteReg_Table INVALID PAGE (%d)!\r\n", page);
    return;
  }
  Access(chip, page, [=](const BusWindows& bus) {
    Plat_StoreByte(bus.address, first_reg);
    for (std::uint8_t i = 0; i < count; ++i) Plat_StoreByte(bus.data, data[i]);
  });
}
