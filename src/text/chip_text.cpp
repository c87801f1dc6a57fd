#include "text/chip_text.h"

#include <array>

#include "VexoCtrlSDK.h"
#include "chip/register_commands.h"
#include "chip/video_state.h"
#include "display/channel_masks.h"
#include "display/live_mode.h"
#include "display/live_pip.h"
#include "display/live_scale.h"
#include "display/live_split_direct.h"
#include "display/live_zoom.h"
#include "display/play_split_direct.h"
#include "display/record_path.h"
#include "display/window_tables.h"
#include "motion/motion_cells.h"
#include "motion/motion_detect.h"
#include "report/diagnostics.h"
#include "report/host_messages.h"
#include "setup/camera_driver.h"
#include "setup/initialization.h"
#include "setup/stored_settings.h"
#include "setup/test_patterns.h"
#include "text/color_settings.h"

namespace {

using Numbers = TextNumbers;

constexpr std::uint16_t kAllBlank = 0xFFFF;
constexpr std::uint8_t kFirstPage = 0;  // of the channels of a live split

// ---- System -------------------------------------------------------------------------------------

void Nothing(const Numbers&) {}  // Quirk: words that are accepted and ask for nothing

void Init(const Numbers& n) {
  constexpr std::uint16_t kNoNumber = 0xFFFF;
  constexpr std::uint16_t kSecondArgument = 2;
  VexoProc_Initialize(n.count == 0 ? kNoNumber : n.U16(0), kSecondArgument);
}

void StreamOn(const Numbers&) { VexoProc_CameraControl(1); }
void StreamOff(const Numbers&) { VexoProc_CameraControl(0); }

void ReadReg(const Numbers& n) { VexoProc_ReadRegister(n.U8(0), n.U8(1), n.U8(2)); }
void WriteReg(const Numbers& n) { VexoProc_WriteRegister(n.U8(0), n.U8(1), n.U8(2), n.U8(3)); }

void ReportVersion(const Numbers&) {
  VexoSDK_SendHostMessage(VEXO_MSG_CHIP_VERSION,
                          g_video.g_chip_ready == 0 ? 0 : TW_GetChipPresence(), 0);
  // Quirk: the format lacks its conversion mark, so the value does not show.
  VexoDbg_Print(u">> VEXO CHIP VER : 0x08X\r\n");
}

void StoreNtsc(const Numbers&) { TW_StoreVideoStandard(VEXO_VIDEO_NTSC); }
void StorePal(const Numbers&) { TW_StoreVideoStandard(VEXO_VIDEO_PAL); }
void StoreAuto(const Numbers&) {
  // Quirk: no standard. Initialization detects one, and then takes this byte in its place.
  constexpr std::uint8_t kAuto = 255;
  TW_StoreVideoStandard(kAuto);
}

// ---- Live display -------------------------------------------------------------------------------

void ScaleX(const Numbers& n) { TW_SetLiveScaleX(n.U8(0), n.U8(2), n.U8(1)); }
void ScaleY(const Numbers& n) { TW_SetLiveScaleY(n.U8(0), n.U8(1)); }
void Record(const Numbers& n) { TW_SetRecordSetup(n.U8(0), n.U8(1)); }

// No half-built layout is seen: everything is blank until it stands.
void LiveSplit(const Numbers& n) {
  TW_SetBlankMaskByChip(kAllBlank);
  TW_SetLiveSplitDirect(n.U8(0), n.U8(1), kFirstPage);
  TW_SetBlankMaskByChip(n.U16(2));
}

void DefaultLiveLayout(const Numbers&) { TW_BuildLiveLayout(); }
void LiveOffset(const Numbers& n) {
  VexoProc_SetLiveSplitOffset(n.U8(0), n.U8(1), n.S8(2), n.S8(3), n.S8(4), n.S8(5));
  VexoDbg_Print(u">> END VexoProc_SetLiveSplitOffset <<\r\n");
}

void StartPip(const Numbers& n) {
  TW_SetLivePip(n.U8(0), n.U8(1));
  TW_SetBlankMaskByChip(n.U16(2));
}
void StopPip(const Numbers&) { TW_StopLivePip(); }

void StartMultiPip(const Numbers& n) {
  TW_SetLiveMultiPip(n.U8(0), n.U8(1), n.U8(2), n.U8(3), n.U8(4), n.U8(5));
  TW_SetBlankMaskByChip(n.U16(6));
}
void MoveMultiPip(const Numbers& n) {
  TW_MoveLiveMultiPip(n.U8(0), n.U8(1), n.U8(2), n.U8(3), n.U8(4));
  TW_SetBlankMaskByChip(n.U16(5));
}
void StopMultiPip(const Numbers& n) {
  TW_StopLiveMultiPip();
  LiveSplit(n);
}

void StartZoom(const Numbers& n) {
  TW_SetLiveZoomArea();
  TW_SetLiveZoomStart();
  TW_SetBlankMaskByChip(n.U16(0));
}
void StopZoom(const Numbers& n) {
  TW_SetLiveZoomStop();
  TW_SetBlankMaskByChip(n.U16(0));
}
void MoveZoom(const Numbers& n) {
  TW_SetLiveZoomMove(n.U8(0), n.U8(1));
  TW_SetBlankMaskByChip(n.U16(2));
}

void Freeze(const Numbers& n) {
  TW_SetBit6MaskByChip(n.U16(0));
  TW_SetBlankMaskByChip(n.U16(1));
}
void Blank(const Numbers& n) { TW_SetBlankMaskByChip(n.U16(0)); }

void BackToLive(const Numbers&) { TW_ResetLiveDisplay(); }

// ---- Playback -----------------------------------------------------------------------------------

void PlaySetup(const Numbers& n) {
  VexoDbg_Print(u">>TW_SetPlaySetup (%d %d)\r\n", n.value[0], n.value[1]);
  TW_SetPlaySetup(n.U8(0), n.U8(1));
}

void PlaySplit(const Numbers& n) {
  TW_SetBlankMaskByChip(kAllBlank);
  TW_SetPlaySplitDirect(n.U8(0), n.U8(1));
  TW_SetBlankMaskByChip(n.U16(2));
}

void DefaultPlayLayout(const Numbers&) { TW_BuildPlayLayout(); }
void PlayOffset(const Numbers& n) {
  TW_SetPlaySplitOffset(n.U8(0), n.U8(1), n.S8(2), n.S8(3), n.S8(4), n.S8(5));
}

void PlayBankInit(const Numbers&) { TW_BlankAllChannels(); }
void PlayBankShow(const Numbers& n) { TW_UnblankChannelPair(n.U16(0)); }
void PlayBankClear(const Numbers&) { TW_UnblankAllChannels(); }

// ---- Motion -------------------------------------------------------------------------------------

void InitMotion(const Numbers&) { TW_InitMotionDetect(); }
void MotionLevel(const Numbers& n) { TW_SetMotionLevel(n.U8(0), n.U8(1)); }
void ShowCells(const Numbers& n) { TW_ShowMotionCells(n.U8(0), n.U8(1), n.U8(2)); }
void HideCells(const Numbers&) { TW_HideMotionCells(); }
void MaskAll(const Numbers& n) { TW_SetMotionMaskAll(n.U8(0), n.U8(1)); }
void ToggleCell(const Numbers& n) { TW_ToggleMotionCell(n.U8(0), n.U8(1), n.U8(2)); }
void CellDisplay(const Numbers& n) { TW_SetMotionCellDisplay(n.U8(0)); }

// ---- Test pictures and colours ----------------------------------------------------------------

void ColorBar(const Numbers& n) { n.U8(0) != 0 ? TW_ColorBarOn() : TW_ColorBarOff(); }
void BlueScreenOn(const Numbers&) { TW_BlueScreenInit(); }
void BlueScreenOff(const Numbers&) { TW_BlueScreenClear(); }

void AllColors(const Numbers& n) {
  ColorSettings colors;
  colors.hue = n.U8(1);
  colors.saturation = n.U8(2);
  colors.contrast = n.U8(3);
  colors.brightness = n.U8(4);
  SetColors(n.U8(0), colors);
}
void Hue(const Numbers& n) { SetColorHue(n.U8(0), n.U8(1)); }
void Saturation(const Numbers& n) { SetColorSaturation(n.U8(0), n.U8(1)); }
void Contrast(const Numbers& n) { SetColorContrast(n.U8(0), n.U8(1)); }
void Brightness(const Numbers& n) { SetColorBrightness(n.U8(0), n.U8(1)); }

// ---- The table ----------------------------------------------------------------------------------

enum class Chips : bool { kNeeded, kNotNeeded };

struct ChipCommand {
  const char* pattern;
  void (*run)(const Numbers& n);
  Chips chips = Chips::kNeeded;            // without them the command does nothing
  const char16_t* announcement = nullptr;  // printed before the arguments are read
};

constexpr std::array kChipCommands = {
    ChipCommand{"init [NUMBER]", Init, Chips::kNotNeeded},
    ChipCommand{"uninit", Nothing, Chips::kNotNeeded},
    ChipCommand{"stream on", StreamOn, Chips::kNotNeeded},
    ChipCommand{"stream off", StreamOff, Chips::kNotNeeded},
    ChipCommand{"xscale CHANNEL HORIZONTAL VERTICAL", ScaleX},
    ChipCommand{"yscale CHANNEL RECORD_MODE", ScaleY},
    ChipCommand{"lsplit MODE CHANNEL [BLANK_MASK]", LiveSplit},
    ChipCommand{"lsplit_pos MODE default", DefaultLiveLayout},
    ChipCommand{"lsplit_pos MODE WINDOW DX_START DY_START DX_END DY_END", LiveOffset},
    ChipCommand{"pip start MAIN INSET [BLANK_MASK]", StartPip},
    ChipCommand{"pip stop", StopPip},
    ChipCommand{"mpip start CHANNEL SIZE X_START X_END Y_START Y_END [BLANK_MASK]", StartMultiPip},
    ChipCommand{"mpip move CHANNEL X_START X_END Y_START Y_END [BLANK_MASK]", MoveMultiPip},
    ChipCommand{"mpip stop MODE CHANNEL [BLANK_MASK]", StopMultiPip},
    ChipCommand{"zoom start [BLANK_MASK]", StartZoom},
    ChipCommand{"zoom stop [BLANK_MASK]", StopZoom},
    ChipCommand{"zoom pos X Y [BLANK_MASK]", MoveZoom},
    ChipCommand{"frz FREEZE_MASK [BLANK_MASK]", Freeze},
    ChipCommand{"loss BLANK_MASK", Blank},
    ChipCommand{"rec RECORD_MODE SWITCHING", Record},
    ChipCommand{"play SETUP OPTION", PlaySetup},
    ChipCommand{"stop", BackToLive},
    ChipCommand{"psplit MODE CHANNEL [BLANK_MASK]", PlaySplit, Chips::kNeeded,
                u">> VEXO_TXT_PLAY_SPLIT !\r\n"},
    ChipCommand{"psplit_pos MODE default", DefaultPlayLayout},
    ChipCommand{"psplit_pos MODE WINDOW DX_START DY_START DX_END DY_END", PlayOffset},
    ChipCommand{"pbank init", PlayBankInit},
    ChipCommand{"pbank show CHANNEL", PlayBankShow},
    ChipCommand{"pbank clear", PlayBankClear},
    ChipCommand{"minit", InitMotion},
    ChipCommand{"mlevel CHANNEL LEVEL", MotionLevel},
    ChipCommand{"mcell show TYPE MODE CHANNEL", ShowCells},
    ChipCommand{"mcell clear", HideCells},
    ChipCommand{"mmask change all CHANNEL CLEAR", MaskAll},
    ChipCommand{"mmask change CHANNEL COLUMN ROW", ToggleCell},
    ChipCommand{"mshow REQUEST", CellDisplay},
    ChipCommand{"clrbar ON", ColorBar},
    ChipCommand{"bluescr init", BlueScreenOn},
    ChipCommand{"bluescr clear", BlueScreenOff},
    ChipCommand{"rver", ReportVersion, Chips::kNotNeeded},
    ChipCommand{"set_emif A B C D E F G H I J", Nothing, Chips::kNotNeeded},
    ChipCommand{"rr $CHIP $PAGE $REGISTER", ReadReg},
    ChipCommand{"wr $CHIP $PAGE $REGISTER $VALUE", WriteReg},
    ChipCommand{"change_vdo ntsc", StoreNtsc},
    ChipCommand{"change_vdo pal", StorePal},
    ChipCommand{"change_vdo auto", StoreAuto},
    ChipCommand{"color CHANNEL all HUE SATURATION CONTRAST BRIGHTNESS", AllColors},
    ChipCommand{"color CHANNEL hue VALUE", Hue},
    ChipCommand{"color CHANNEL sat VALUE", Saturation},
    ChipCommand{"color CHANNEL con VALUE", Contrast},
    ChipCommand{"color CHANNEL bri VALUE", Brightness},
};

const char* ChipPattern(std::uint8_t i) { return kChipCommands[i].pattern; }

}  // namespace

const TextGrammar kChipGrammar = {kChipHeader, static_cast<std::uint8_t>(kChipCommands.size()),
                                  ChipPattern};

std::int32_t VexoText_Parse(const char* line) {
  TextMatch match;
  TextResult result = ReadKeyword(kChipGrammar, line, match);
  if (result == TextResult::kWrongHeader) {
    VexoDbg_Print(u">> Parse VEXO TEXT Not Found Header!\r\n");
  }
  if (result != TextResult::kMatched) return 0;

  if (const char16_t* text = kChipCommands[match.row].announcement) VexoDbg_Print(text);
  result = ReadArguments(kChipGrammar, match);
  if (result == TextResult::kRejected) return 0;

  // Quirk: an unknown word behind a known keyword is accepted and does nothing.
  const ChipCommand& command = kChipCommands[match.row];
  const bool runs = command.chips == Chips::kNotNeeded || g_video.g_chip_ready != 0;
  if (result == TextResult::kMatched && runs) command.run(match.numbers);
  return match.tokens;
}
