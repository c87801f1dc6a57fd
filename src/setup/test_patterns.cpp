#include "setup/test_patterns.h"

#include "chip/register_bus.h"
#include "chip/video_state.h"
#include "display/live_split_direct.h"
#include "display/split_layout.h"
#include "setup/init_table_data.h"

namespace {

constexpr std::uint8_t kFillStart = 0xC0;
constexpr unsigned kLinesPerUnit = 10;

constexpr std::uint8_t kScreenWidth = 45;   // units of four columns
constexpr std::uint8_t kScreenHeight = 31;  // units of ten lines

constexpr unsigned kOverlayEntries = 16;
constexpr unsigned kOverlayEntryBytes = 5;

// The low byte goes into the register, whatever is above it.
void WriteFill(std::uint8_t chip, RegisterAddress at, unsigned value) {
  Write(chip, at, static_cast<std::uint8_t>(value & 0xFFu));
}

void FillColumns(std::uint8_t chip, unsigned left, unsigned right) {
  WriteFill(chip, kFillLeft, left);
  WriteFill(chip, kFillRight, right);
  WriteFill(chip, kFillControl, kFillStart);
  // Quirk: without a limit; the engine ends within a few bus cycles.
  while ((Read(chip, kFillControl) & kFillBusy) != 0) {
  }
}

void WriteColorBar(const char16_t* announcement, std::uint8_t value) {
  Plat_KernelDebugOutput(announcement);
  // Quirk: the whole register, though the sync flag lives in it.
  Write(kChipAll, kStatusFlags, value);
}

}  // namespace

void TW_ColorBarOn() { WriteColorBar(u"==>> TW2835 COLOR BAR ON\r\n", kColorBar); }
void TW_ColorBarOff() { WriteColorBar(u"==>> TW2835 COLOR BAR OFF\r\n", 0x00); }

void TW_FillRect(std::uint8_t chip, std::uint8_t x, std::uint8_t y, std::uint8_t w,
                 std::uint8_t h) {
  for (unsigned i = 0; i < kFillData.length; ++i) WriteFill(chip, kFillData.At(i), 0xFF);

  const unsigned top = kLinesPerUnit * y;
  const unsigned bottom = y + h == 0 ? 0 : kLinesPerUnit * (y + unsigned{h}) - 1;
  WriteFill(chip, kFillTop, top);
  WriteFill(chip, kFillBottom, bottom);
  WriteFill(chip, kFillHigh, (((top >> 6) & 0xFC) + (bottom >> 8)) | kFillHighAlways);

  // Sixteen columns at a time, then what is left.
  const unsigned left = 4u * x;
  const unsigned middle = left + 16u * (w >> 2);
  const unsigned rest = (4u * w) & 0x0F;
  if (middle != left) FillColumns(chip, left, middle);
  if (rest != 0) FillColumns(chip, middle, middle + rest - 1);
}

void TW_FillFullRect() { TW_FillRect(kChipMaster, 0, 0, kScreenWidth, kScreenHeight); }

void TW_BlueScreenInit() {
  TW_SetLiveSplitDirect(kSplitFull, 0, 0);
  for (unsigned i = 0; i < kChannelsPerChip; ++i) {
    Write(kChipAll, kChannelAttribute, i, kAttributeBlank);
  }
  TW_FillFullRect();
  for (unsigned k = 0; k < kOverlayEntries; ++k) {
    Write(kChipMaster, kOverlayBlock.At(kOverlayEntryBytes * k), 0x00);
  }
}

// Quirk: neither the overlay entries nor the layout of before come back; the next layout brings
// them.
void TW_BlueScreenClear() {
  TW_FillFullRect();
  const DisplayTable& table = g_video.max_channel == 4 ? kDisplay4Ch : kDisplayLarger;
  for (unsigned i = 0; i < kChannelsPerChip; ++i) {
    const unsigned place = kChannelAttribute.At(i).number - kDisplayBlock.first;
    Write(kChipAll, kChannelAttribute, i, table[place]);
  }
}
