#include "setup/init_tables.h"

#include "chip/register_bus.h"
#include "chip/video_state.h"
#include "setup/init_table_data.h"

namespace {

// Bits 7:6 of several registers carry the channel's position.
constexpr std::uint8_t AtPosition(unsigned position, std::uint8_t low_bits) {
  return static_cast<std::uint8_t>((position << 6) | low_bits);
}

struct RegisterValue {
  RegisterAddress at;
  std::uint8_t value;
};

// What a chip gets on page 1 beside the broadcast tables.
struct Page1Chip {
  std::uint8_t chip;               // chip select of windows, output and system control
  const WindowsTable* windows[2];  // N, P
  const OutputTable* output[2];    // N, P
  std::uint8_t system[2];          // kSystemControl: N, P
  std::uint8_t cascade_chip;       // chip select of cascade control
  std::uint8_t cascade;            // kCascadeControl
};

constexpr Page1Chip kPage1Chips4Ch[] = {
    {kChipAll,
     {&kWindows4ChN, &kWindows4ChP},
     {&kOutputMasterN, &kOutputMasterP},
     {0x00, 0x80},
     kChipMaster,
     0x8A},
};
constexpr Page1Chip kPage1Chips8Ch[] = {
    {kChipMaster,
     {&kWindows8ChN, &kWindows8ChP},
     {&kOutputMasterN, &kOutputMasterP},
     {0x08, 0x88},
     kChipMaster,
     0x8A},
    {kChipSlave1,
     {&kWindows8ChN, &kWindows8ChP},
     {&kOutputSlaveN, &kOutputSlaveP},
     {0x39, 0xB9},
     kChipSlave1,
     0x8A},
};
constexpr Page1Chip kPage1Chips16Ch[] = {
    {kChipMaster,
     {&kWindowsRow0N, &kWindowsRow0P},
     {&kOutputMasterN, &kOutputMasterP},
     {0x08, 0x88},
     kChipMaster,
     0xC9},
    {kChipSlave1,
     {&kWindowsRow1N, &kWindowsRow1P},
     {&kOutputSlaveN, &kOutputSlaveP},
     {0x09, 0x89},
     kChipSlave1,
     0xA9},
    {kChipSlave2,
     {&kWindowsRow2N, &kWindowsRow2P},
     {&kOutputSlaveN, &kOutputSlaveP},
     {0x0A, 0x8A},
     kChipSlave2,
     0x89},
    {kChipSlave3,
     {&kWindowsRow3N, &kWindowsRow3P},
     {&kOutputSlaveN, &kOutputSlaveP},
     {0x3B, 0xBB},
     kChipSlave3,
     0x89},
};

struct Page1Board {
  const DisplayTable* display;
  const RecordTable* record;
  const Page1Chip* chips;
  std::uint8_t chip_count;
};

constexpr Page1Board kPage1Board4Ch = {&kDisplay4Ch, &kRecord4Ch, kPage1Chips4Ch, 1};
constexpr Page1Board kPage1Board8Ch = {&kDisplayLarger, &kRecordLarger, kPage1Chips8Ch, 2};
constexpr Page1Board kPage1Board16Ch = {&kDisplayLarger, &kRecordLarger, kPage1Chips16Ch, 4};

// Null for boards without tables of their own (12 channels).
const Page1Board* FindPage1Board() {
  switch (g_video.max_channel) {
    case 4:
      return &kPage1Board4Ch;
    case 8:
      return &kPage1Board8Ch;
    case 16:
      return &kPage1Board16Ch;
    default:
      return nullptr;
  }
}

void InitPage1Board(const Page1Board& board) {
  const unsigned standard = IsNtsc() ? 0u : 1u;
  WriteTable(kChipAll, kDisplayBlock, *board.display);
  WriteTable(kChipAll, kRecordBlock, *board.record);
  for (unsigned i = 0; i < board.chip_count; ++i) {
    WriteTable(board.chips[i].chip, kWindowBlock, *board.chips[i].windows[standard]);
  }
  for (unsigned i = 0; i < board.chip_count; ++i) {
    WriteTable(board.chips[i].chip, kOutputBlock, *board.chips[i].output[standard]);
  }
  for (unsigned i = 0; i < board.chip_count; ++i) {
    Write(board.chips[i].chip, kSystemControl, board.chips[i].system[standard]);
  }
  for (unsigned i = 0; i < board.chip_count; ++i) {
    Write(board.chips[i].cascade_chip, kCascadeControl, board.chips[i].cascade);
  }
}

// A register of all four input positions, all chips.
template <const ChannelRegister<1>& kOf>
void WriteInputs(std::uint8_t value) {
  for (unsigned c = 0; c < kChannelsPerChip; ++c) Write(g_video.broadcast_select, kOf, c, value);
}

}  // namespace

void TW_InitPage0Tables() {
  const bool ntsc = IsNtsc();
  const std::uint8_t all = g_video.broadcast_select;
  for (unsigned c = 0; c < kChannelsPerChip; ++c) {
    WriteTable(all, kInputBlock, c, ntsc ? kInputN : kInputP);
    Write(all, kInputPath, c, AtPosition(c, 0x06));
    WriteTable(all, kScalerBlock, c, ntsc ? kScalerN : kScalerP);
    Write(all, kScalerControl, c, AtPosition(c, 0x00));
    Write(all, kRecordLayout, c, AtPosition(c, 0x31));
  }
  WriteTable(all, kDecoderBlock, kDecoderInit);
  WriteTable(all, kAudioBlock, ntsc && g_video.max_channel != 4 ? kAudioLargerN : kAudio);
  WriteTable(all, kVideoBlock, kVideoInit);

  // Quirk: written ahead of the final delay below, for P alone.
  if (!ntsc) WriteInputs<kInputDelay>(0x28);
  Write(all, kDecoderOutput, 0x30);
  WriteInputs<kInputDelay>(ntsc ? 0x20 : 0x32);
  WriteInputs<kInputActive>(0xD0);
  WriteInputs<kInputFieldOffset>(0x09);
}

void TW_InitPage1Tables() {
  const bool ntsc = IsNtsc();
  if (const Page1Board* board = FindPage1Board()) InitPage1Board(*board);

  const RegisterValue common[] = {
      {kOutputStart, 0x0D},
      {kOutputDelay, 0x20},
      {kEncoderBlock.At(0), 0xE1},
      {kEncoderBlock.At(1), 0x00},
      {kEncoderBlock.At(2), 0x92},
      {kEncoderBlock.At(3), ntsc ? std::uint8_t{0x0F} : std::uint8_t{0x16}},
      {kEncoderBlock.At(4), 0xEB},
      {kEncoderBlock.At(5), 0x10},
      {kEncoderBlock.At(6), 0x20},
      {kEncoderBlock.At(7), 0x00},
      {kEncoderBlock.At(8), 0xB2},
      {kEncoderBlock.At(9), ntsc ? std::uint8_t{0x0F} : std::uint8_t{0x14}},
      {kEncoderBlock.At(10), 0x80},
  };
  for (const RegisterValue& each : common) Write(kChipAll, each.at, each.value);

  for (unsigned c = 0; c < kChannelsPerChip; ++c) {
    const std::uint8_t crop[] = {0x00, 0x68, 0x02, ntsc ? std::uint8_t{0x78} : std::uint8_t{0x90},
                                 0x04};
    for (unsigned i = 0; i < sizeof crop; ++i) Write(kChipAll, kRecordCrop.At(c, i), crop[i]);
  }
  Write(kChipAll, kVideoBlock.At(0), 0x08);
}

void TW_InitPage2Tables() {
  const MotionTable& motion = g_video.max_channel == 4 ? kMotion4Ch : kMotionLarger;
  WriteTable(kChipAll, kOverlayBlock, kOverlayInit);
  WriteTable(kChipAll, kBoxBlock, kBoxInit);
  for (unsigned c = 0; c < kChannelsPerChip; ++c) WriteTable(kChipAll, kMotionBlock, c, motion);
  Write(kChipAll, kOverlayBlock.At(0), 0x00);
}
