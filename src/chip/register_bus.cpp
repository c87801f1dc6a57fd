#include "chip/register_bus.h"

#include "report/diagnostics.h"

BusWindows g_bus;

namespace {

// The select byte has two bits a chip: the page of a selected chip, 11 for one that is not. The
// page in all four fields, with ones in the fields of the other chips, is the byte for any code.
constexpr std::uint8_t SelectByte(unsigned chip, unsigned pages) {
  return static_cast<std::uint8_t>(pages | ~chip);
}

// A chip select code and its select bytes, by page.
struct ChipSelect {
  std::uint8_t code;
  std::uint8_t select[kPageCount];
};

// Where a code stands among the sixteen: one look tells whether a byte is one of the five.
constexpr unsigned PlaceOf(unsigned chip) { return (chip + (chip >> 3)) & 15u; }

using ChipSelects = std::array<ChipSelect, 16>;

constexpr ChipSelects MakeChipSelects() {
  ChipSelects selects{};
  selects[PlaceOf(0)].code = 1;  // else 0 would find itself where no code stands
  for (const unsigned chip : {kChipMaster, kChipSlave1, kChipSlave2, kChipSlave3, kChipAll}) {
    ChipSelect& own = selects[PlaceOf(chip)];
    own.code = static_cast<std::uint8_t>(chip);
    for (unsigned page = 0; page < kPageCount; ++page) {
      own.select[page] = SelectByte(chip, PageOfEveryChip(page));
    }
  }
  return selects;
}

constexpr ChipSelects kChipSelects = MakeChipSelects();

constexpr bool FindsTheFiveCodes() {
  for (unsigned chip = 0; chip <= 0xFF; ++chip) {
    const bool is_one = chip == kChipMaster || chip == kChipSlave1 || chip == kChipSlave2 ||
                        chip == kChipSlave3 || chip == kChipAll;
    if ((kChipSelects[PlaceOf(chip)].code == chip) != is_one) return false;
  }
  return true;
}
static_assert(FindsTheFiveCodes());

// Prints are rare: out of the way of the accesses, they cost those nothing.
[[gnu::noinline]] std::uint8_t RefuseRead(unsigned page) {
  VexoDbg_Print(u">> TW_ReadRegister INVALID PAGE (%d)!\r\n", page);
  return 0;
}
[[gnu::noinline]] void RefuseWrite(unsigned page) {
  VexoDbg_Print(u">> TW_WriteRegister INVALID PAGE (%d)!\r\n", page);
}
[[gnu::noinline]] void RefuseTable(unsigned page) {
  VexoDbg_Print(u">> TW_WriteReg_Table INVALID PAGE (%d)!\r\n", page);
}

void SelectPage(std::uint8_t chip, std::uint8_t page) {
  const ChipSelect& own = kChipSelects[PlaceOf(chip)];
  if (own.code == chip) Plat_StoreByte(g_bus.select, own.select[page]);
}

}  // namespace

// ---- Bus cycles ---------------------------------------------------------------------------------

std::uint8_t ReadCycles(std::uint8_t chip, std::uint8_t pages, std::uint8_t number) {
  Plat_StoreByte(g_bus.select, SelectByte(chip, pages));
  Plat_StoreByte(g_bus.address, number);
  const std::uint8_t value = Plat_LoadByte(g_bus.data);
  Plat_StoreByte(g_bus.select, kSelectIdle);
  return value;
}

void WriteCycles(std::uint8_t chip, std::uint8_t pages, std::uint8_t number, std::uint8_t value) {
  Plat_StoreByte(g_bus.select, SelectByte(chip, pages));
  Plat_StoreByte(g_bus.address, number);
  Plat_StoreByte(g_bus.data, value);
  Plat_StoreByte(g_bus.select, kSelectIdle);
}

void RunCycles(std::uint8_t chip, std::uint8_t pages, std::uint8_t number, const std::uint8_t* data,
               unsigned count) {
  Plat_StoreByte(g_bus.select, SelectByte(chip, pages));
  Plat_StoreByte(g_bus.address, number);
  // Kept: after a byte store it would be fetched anew.
  volatile std::uint8_t* const window = g_bus.data;
  for (const std::uint8_t* end = data + count; data != end; ++data) Plat_StoreByte(window, *data);
  Plat_StoreByte(g_bus.select, kSelectIdle);
}

// ---- Registers by number ------------------------------------------------------------------------

void TW_SelectPage0(std::uint8_t chip) { SelectPage(chip, kPage0); }
void TW_SelectPage1(std::uint8_t chip) { SelectPage(chip, kPage1); }
void TW_SelectPage2(std::uint8_t chip) { SelectPage(chip, kPage2); }

void TW_ReleaseChip(std::uint8_t chip) {
  if (kChipSelects[PlaceOf(chip)].code == chip) Plat_StoreByte(g_bus.select, kSelectIdle);
}

// Quirk: with an invalid chip select code nothing is selected and nothing released, but the
// address and data cycles go out all the same.

std::uint8_t TW_ReadRegister(std::uint8_t chip, std::uint8_t page, std::uint8_t reg) {
  if (page >= kPageCount) return RefuseRead(page);
  const ChipSelect& own = kChipSelects[PlaceOf(chip)];
  const bool selects = own.code == chip;
  if (selects) Plat_StoreByte(g_bus.select, own.select[page]);
  Plat_StoreByte(g_bus.address, reg);
  const std::uint8_t value = Plat_LoadByte(g_bus.data);
  if (selects) Plat_StoreByte(g_bus.select, kSelectIdle);
  return value;
}

void TW_WriteRegister(std::uint8_t chip, std::uint8_t page, std::uint8_t reg, std::uint8_t value) {
  if (page >= kPageCount) return RefuseWrite(page);
  const ChipSelect& own = kChipSelects[PlaceOf(chip)];
  if (own.code != chip) {
    Plat_StoreByte(g_bus.address, reg);
    Plat_StoreByte(g_bus.data, value);
    return;
  }
  Plat_StoreByte(g_bus.select, own.select[page]);
  Plat_StoreByte(g_bus.address, reg);
  Plat_StoreByte(g_bus.data, value);
  Plat_StoreByte(g_bus.select, kSelectIdle);
}

void TW_WriteReg_Table(std::uint8_t chip, std::uint8_t page, std::uint8_t first_reg,
                       const std::uint8_t* data, std::uint8_t count) {
  if (page >= kPageCount) return RefuseTable(page);
  const ChipSelect& own = kChipSelects[PlaceOf(chip)];
  const bool selects = own.code == chip;
  if (selects) Plat_StoreByte(g_bus.select, own.select[page]);
  Plat_StoreByte(g_bus.address, first_reg);
  for (unsigned i = 0; i < count; ++i) Plat_StoreByte(g_bus.data, data[i]);
  if (selects) Plat_StoreByte(g_bus.select, kSelectIdle);
}
