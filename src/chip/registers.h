// The TW2835 register map as far as this system touches it: pages, addresses, strides, bits.
//
// One description for the library, the simulated chip and the decoded listings. Registers that
// exist once per channel of a chip are a base plus a stride times the channel's position (0 to 3)
// on its chip.
#pragma once

#include <array>
#include <cstdint>

inline constexpr std::uint8_t kChipsMax = 4;
inline constexpr std::uint8_t kChannelsPerChip = 4;
inline constexpr std::uint8_t kChannelsMax = kChipsMax * kChannelsPerChip;
inline constexpr std::uint16_t kRegistersPerPage = 256;

// ---- Chip select ------------------------------------------------------------------------------

// A chip select code is the mask of the chip's own two bits in the select byte.
inline constexpr std::uint8_t kChipMaster = 0x03;
inline constexpr std::uint8_t kChipSlave1 = 0x0C;
inline constexpr std::uint8_t kChipSlave2 = 0x30;
inline constexpr std::uint8_t kChipSlave3 = 0xC0;
inline constexpr std::uint8_t kChipAll = 0xFF;     // broadcast, writes only
inline constexpr std::uint8_t kSelectIdle = 0xFF;  // select byte: no chip selected

// Chips by position.
inline constexpr std::array<std::uint8_t, kChipsMax> kChipByPosition = {kChipMaster, kChipSlave1,
                                                                        kChipSlave2, kChipSlave3};

inline constexpr std::uint8_t kPage0 = 0;  // inputs, scalers
inline constexpr std::uint8_t kPage1 = 1;  // display, record, output
inline constexpr std::uint8_t kPage2 = 2;  // fill engine, boxes, motion
inline constexpr std::uint8_t kPageCount = 3;

// ---- Page 0: inputs, stride 0x10 ----------------------------------------------------------------

inline constexpr std::uint8_t kInputStride = 0x10;
inline constexpr std::uint8_t kInputBlock = 0x00;   // 15 bytes
inline constexpr std::uint8_t kInputStatus = 0x01;  // bit 0: the chip's own
inline constexpr std::uint8_t kInputIsNtsc = 0x01;  // of kInputStatus: set NTSC, clear PAL
inline constexpr std::uint8_t kInputDelay = 0x02;
inline constexpr std::uint8_t kInputActive = 0x03;
inline constexpr std::uint8_t kInputFieldOffset = 0x04;
inline constexpr std::uint8_t kInputHue = 0x07;
inline constexpr std::uint8_t kInputSaturation = 0x08;
inline constexpr std::uint8_t kInputContrast = 0x09;
inline constexpr std::uint8_t kInputBrightness = 0x0A;
inline constexpr std::uint8_t kInputPath = 0x0C;  // bits 7:6: position

inline constexpr std::uint8_t kDecoderBlock = 0x40;  // 21 bytes
inline constexpr std::uint8_t kDecoderOutput = 0x4C;
inline constexpr std::uint8_t kAudioBlock = 0x60;  // 21 bytes

// ---- Page 0: scalers, stride 0x10 ---------------------------------------------------------------

inline constexpr std::uint8_t kScalerStride = 0x10;
inline constexpr std::uint8_t kScalerControl = 0x80;     // bits 7:6: position, 3:0: layout code
inline constexpr std::uint8_t kScalerVertical = 0x81;    // ratio, high byte, low byte
inline constexpr std::uint8_t kScalerHorizontal = 0x83;  // ratio, high byte, low byte
inline constexpr std::uint8_t kPlayWindowKind = 0x85;
inline constexpr std::uint8_t kPlayPattern = 0x86;     // 4 bytes
inline constexpr std::uint8_t kRecordLayout = 0x8A;    // bits 7:6: position, 5:4: layout
inline constexpr std::uint8_t kRecordCrop = 0x8B;      // 5 bytes
inline constexpr std::uint8_t kVideoBlock = 0xC0;      // 11 bytes
inline constexpr std::uint8_t kVideoFieldMode = 0xC5;  // PAL boards: by split mode
inline constexpr std::uint8_t kChipId = 0xFE;          // the chip's own

inline constexpr std::uint8_t kChipIdMask = 0xF8;
inline constexpr std::uint8_t kChipIdTw2835 = 0x28;

// ---- Page 1: display ----------------------------------------------------------------------------

inline constexpr std::uint8_t kSystemControl = 0x00;  // bit 7: PAL, low bits: place in the cascade
inline constexpr std::uint8_t kSystemPal = 0x80;
inline constexpr std::uint8_t kDisplayBlock = 0x01;  // 47 bytes
inline constexpr std::uint8_t kDisplaySource = 0x01;
inline constexpr std::uint8_t kSettleStatus = 0x04;  // low nibble: held channels not settled
inline constexpr std::uint8_t kSettleBits = 0x0F;
inline constexpr std::uint8_t kDisplayMode = 0x06;
inline constexpr std::uint8_t kDisplayModeZoom = 0x04;  // bit 2 of kDisplayMode
inline constexpr std::uint8_t kZoomControl = 0x0C;
inline constexpr std::uint8_t kZoomX = 0x0D;
inline constexpr std::uint8_t kZoomY = 0x0E;
inline constexpr std::uint8_t kCascadeAdjust = 0x0F;

// Channel display, stride 8.
inline constexpr std::uint8_t kDisplayStride = 8;
inline constexpr std::uint8_t kChannelDisplay = 0x10;
inline constexpr std::uint8_t kDisplayEnable = 0x80;
inline constexpr std::uint8_t kDisplayFront = 0x40;    // shown, above channels without it
inline constexpr std::uint8_t kDisplayHold = 0x10;     // held while the layout changes
inline constexpr std::uint8_t kDisplayDecoded = 0x04;  // shows the decoded picture of its path
inline constexpr std::uint8_t kDisplayPosition = 0x03;
inline constexpr std::uint8_t kChannelAttribute = 0x11;
inline constexpr std::uint8_t kAttributeFreeze = 0x40;
inline constexpr std::uint8_t kAttributeOverlay = 0x08;
inline constexpr std::uint8_t kAttributeBlank = 0x04;
inline constexpr std::uint8_t kAttributeLive = 0x02;
inline constexpr std::uint8_t kAttributeBit0 = 0x01;
inline constexpr std::uint8_t kChannelOverlay = 0x12;
inline constexpr std::uint8_t kChannelPath = 0x16;  // picture source of the channel
inline constexpr std::uint8_t kPathOpen = 0x80;     // of position 0: the chip's decoded input is on
inline constexpr std::uint8_t kPathDecoded = 0x10;
inline constexpr std::uint8_t kPathChannel = 0x0F;  // which decoded channel

inline constexpr std::uint8_t kWindowStride = 4;
inline constexpr std::uint8_t kWindow = 0x30;  // x start, x end, y start, y end

// ---- Page 1: record path ------------------------------------------------------------------------

inline constexpr std::uint8_t kRecordBlock = 0x50;  // 80 bytes
inline constexpr std::uint8_t kRecordMode = 0x51;
inline constexpr std::uint8_t kRecordSwitching = 0x56;
inline constexpr std::uint8_t kRecordQueue = 0x57;  // 4 bytes
inline constexpr std::uint8_t kRecordStride = 3;
inline constexpr std::uint8_t kRecordControl = 0x60;
inline constexpr std::uint8_t kRecordChannel = 0x61;
inline constexpr std::uint8_t kRecordPosition = 0x62;
inline constexpr std::uint8_t kRecordEnable = 0x6C;
inline constexpr std::uint8_t kRecordOrder = 0x6D;
inline constexpr std::uint8_t kRecordOutput = 0x86;

// ---- Page 1: status and output ----------------------------------------------------------------

inline constexpr std::uint8_t kEventStatus = 0x76;   // the chip's own
inline constexpr std::uint8_t kLossStatus = 0x78;    // the chip's own: two loss flags a channel
inline constexpr std::uint8_t kMotionStatus = 0x79;  // the chip's own: low nibble
inline constexpr std::uint8_t kCascadeControl = 0x7E;
inline constexpr std::uint8_t kEncoderBlock = 0x80;  // 11 bytes
inline constexpr std::uint8_t kOutputBlock = 0xA0;   // 16 bytes
inline constexpr std::uint8_t kStatusRef = 0xA4;
inline constexpr std::uint8_t kStatusRefEdge = 0x08;  // which edge of the sync bit counts
inline constexpr std::uint8_t kOutputStart = 0xA7;
inline constexpr std::uint8_t kOutputDelay = 0xA8;
inline constexpr std::uint8_t kStatusFlags = 0xAB;  // high nibble: the chip's own
inline constexpr std::uint8_t kStatusFlagBits = 0xF0;
inline constexpr std::uint8_t kStatusSync = 0x10;  // of kStatusFlags, master
inline constexpr std::uint8_t kColorBar = 0x08;    // of kStatusFlags, written
inline constexpr std::uint8_t kOutputMode = 0xAC;

// ---- Page 2: fill engine, boxes, motion -------------------------------------------------------

inline constexpr std::uint8_t kFillData = 0x00;  // 4 bytes
inline constexpr std::uint8_t kFillLeft = 0x05;
inline constexpr std::uint8_t kFillRight = 0x06;
inline constexpr std::uint8_t kFillTop = 0x07;
inline constexpr std::uint8_t kFillBottom = 0x08;
inline constexpr std::uint8_t kFillHigh = 0x09;
inline constexpr std::uint8_t kFillControl = 0x0A;   // bit 7: start; reads set while busy
inline constexpr std::uint8_t kOverlayBlock = 0x10;  // 80 bytes: sixteen entries of five
inline constexpr std::uint8_t kMotionTiming = 0x5B;  // 4 bytes
inline constexpr std::uint8_t kMotionTimingEnable = 0x5F;

// Motion cell boxes, stride 8.
inline constexpr std::uint8_t kBoxStride = 8;
inline constexpr std::uint8_t kBoxBlock = 0x60;  // 32 bytes: four boxes of eight
inline constexpr std::uint8_t kBoxControl = 0x60;
inline constexpr std::uint8_t kBoxAttribute = 0x61;
inline constexpr std::uint8_t kBoxX = 0x62;
inline constexpr std::uint8_t kBoxWidth = 0x63;  // of one cell
inline constexpr std::uint8_t kBoxY = 0x64;
inline constexpr std::uint8_t kBoxHeight = 0x65;  // of one cell
inline constexpr std::uint8_t kBoxColor = 0x67;

// Motion detection, stride 0x20.
inline constexpr std::uint8_t kMotionStride = 0x20;
inline constexpr std::uint8_t kMotionBlock = 0x80;  // 32 bytes a channel
inline constexpr std::uint8_t kMotionLevel = 0x83;  // 3 bytes
inline constexpr std::uint8_t kMotionMask = 0x86;   // 24 bytes
inline constexpr std::uint8_t kMotionMaskBytes = 24;

// ---- Names for listings -----------------------------------------------------------------------

// A named run of registers: `length` registers from `base`, repeated `count` times `stride` apart.
struct RegisterName {
  std::uint8_t page;
  std::uint8_t base;
  std::uint8_t length;
  std::uint8_t stride;
  std::uint8_t count;
  const char* name;
};

// In order of precedence: where runs overlap, the first that covers a register names it.
inline constexpr std::array kRegisterNames = {
    RegisterName{kPage0, kInputStatus, 1, kInputStride, 4, "input status"},
    RegisterName{kPage0, kInputDelay, 1, kInputStride, 4, "input delay"},
    RegisterName{kPage0, kInputActive, 1, kInputStride, 4, "input active width"},
    RegisterName{kPage0, kInputFieldOffset, 1, kInputStride, 4, "input field offset"},
    RegisterName{kPage0, kInputHue, 1, kInputStride, 4, "input hue"},
    RegisterName{kPage0, kInputSaturation, 1, kInputStride, 4, "input saturation"},
    RegisterName{kPage0, kInputContrast, 1, kInputStride, 4, "input contrast"},
    RegisterName{kPage0, kInputBrightness, 1, kInputStride, 4, "input brightness"},
    RegisterName{kPage0, kInputPath, 1, kInputStride, 4, "input path"},
    RegisterName{kPage0, kInputBlock, 15, kInputStride, 4, "input"},
    RegisterName{kPage0, kDecoderOutput, 1, 0, 1, "decoder output"},
    RegisterName{kPage0, kDecoderBlock, 21, 0, 1, "decoder"},
    RegisterName{kPage0, kAudioBlock, 21, 0, 1, "audio"},
    RegisterName{kPage0, kScalerControl, 1, kScalerStride, 4, "scaler control"},
    RegisterName{kPage0, kScalerVertical, 2, kScalerStride, 4, "scaler vertical ratio"},
    RegisterName{kPage0, kScalerHorizontal, 2, kScalerStride, 4, "scaler horizontal ratio"},
    RegisterName{kPage0, kPlayWindowKind, 1, kScalerStride, 4, "playback window kind"},
    RegisterName{kPage0, kPlayPattern, 4, kScalerStride, 4, "playback pattern"},
    RegisterName{kPage0, kRecordLayout, 1, kScalerStride, 4, "record layout"},
    RegisterName{kPage0, kRecordCrop, 5, kScalerStride, 4, "record crop"},
    RegisterName{kPage0, kVideoFieldMode, 1, 0, 1, "video field mode"},
    RegisterName{kPage0, kVideoBlock, 11, 0, 1, "video"},
    RegisterName{kPage0, kChipId, 1, 0, 1, "chip identification"},
    RegisterName{kPage1, kSystemControl, 1, 0, 1, "system control"},
    RegisterName{kPage1, kDisplaySource, 1, 0, 1, "display source"},
    RegisterName{kPage1, kSettleStatus, 1, 0, 1, "settle status"},
    RegisterName{kPage1, kDisplayMode, 1, 0, 1, "display mode"},
    RegisterName{kPage1, kZoomControl, 1, 0, 1, "zoom control"},
    RegisterName{kPage1, kZoomX, 1, 0, 1, "zoom x"},
    RegisterName{kPage1, kZoomY, 1, 0, 1, "zoom y"},
    RegisterName{kPage1, kCascadeAdjust, 1, 0, 1, "cascade adjust"},
    RegisterName{kPage1, kChannelDisplay, 1, kDisplayStride, 4, "channel display"},
    RegisterName{kPage1, kChannelAttribute, 1, kDisplayStride, 4, "channel attribute"},
    RegisterName{kPage1, kChannelOverlay, 1, kDisplayStride, 4, "channel overlay"},
    RegisterName{kPage1, kChannelPath, 1, kDisplayStride, 4, "channel path"},
    RegisterName{kPage1, kWindow, 4, kWindowStride, 4, "window"},
    RegisterName{kPage1, kDisplayBlock, 47, 0, 1, "display"},
    RegisterName{kPage1, kRecordMode, 1, 0, 1, "record mode"},
    RegisterName{kPage1, kRecordSwitching, 1, 0, 1, "record switching"},
    RegisterName{kPage1, kRecordQueue, 4, 0, 1, "record queue"},
    RegisterName{kPage1, kRecordControl, 1, kRecordStride, 4, "record control"},
    RegisterName{kPage1, kRecordChannel, 1, kRecordStride, 4, "record channel"},
    RegisterName{kPage1, kRecordPosition, 1, kRecordStride, 4, "record position"},
    RegisterName{kPage1, kRecordEnable, 1, 0, 1, "record enable"},
    RegisterName{kPage1, kRecordOrder, 1, 0, 1, "record order"},
    RegisterName{kPage1, kEventStatus, 1, 0, 1, "event status"},
    RegisterName{kPage1, kLossStatus, 1, 0, 1, "loss status"},
    RegisterName{kPage1, kMotionStatus, 1, 0, 1, "motion status"},
    RegisterName{kPage1, kCascadeControl, 1, 0, 1, "cascade control"},
    RegisterName{kPage1, kRecordOutput, 1, 0, 1, "record output"},
    RegisterName{kPage1, kEncoderBlock, 11, 0, 1, "encoder"},
    RegisterName{kPage1, kRecordBlock, 80, 0, 1, "record"},
    RegisterName{kPage1, kStatusRef, 1, 0, 1, "status reference"},
    RegisterName{kPage1, kOutputStart, 1, 0, 1, "output start"},
    RegisterName{kPage1, kOutputDelay, 1, 0, 1, "output delay"},
    RegisterName{kPage1, kStatusFlags, 1, 0, 1, "status flags"},
    RegisterName{kPage1, kOutputMode, 1, 0, 1, "output mode"},
    RegisterName{kPage1, kOutputBlock, 16, 0, 1, "output"},
    RegisterName{kPage2, kFillData, 4, 0, 1, "fill data"},
    RegisterName{kPage2, kFillLeft, 1, 0, 1, "fill left"},
    RegisterName{kPage2, kFillRight, 1, 0, 1, "fill right"},
    RegisterName{kPage2, kFillTop, 1, 0, 1, "fill top"},
    RegisterName{kPage2, kFillBottom, 1, 0, 1, "fill bottom"},
    RegisterName{kPage2, kFillHigh, 1, 0, 1, "fill high bits"},
    RegisterName{kPage2, kFillControl, 1, 0, 1, "fill control"},
    RegisterName{kPage2, kMotionTiming, 4, 0, 1, "motion timing"},
    RegisterName{kPage2, kMotionTimingEnable, 1, 0, 1, "motion timing enable"},
    RegisterName{kPage2, kOverlayBlock, 80, 0, 1, "overlay"},
    RegisterName{kPage2, kBoxControl, 1, kBoxStride, 4, "box control"},
    RegisterName{kPage2, kBoxAttribute, 1, kBoxStride, 4, "box attribute"},
    RegisterName{kPage2, kBoxX, 1, kBoxStride, 4, "box x"},
    RegisterName{kPage2, kBoxWidth, 1, kBoxStride, 4, "box cell width"},
    RegisterName{kPage2, kBoxY, 1, kBoxStride, 4, "box y"},
    RegisterName{kPage2, kBoxHeight, 1, kBoxStride, 4, "box cell height"},
    RegisterName{kPage2, kBoxColor, 1, kBoxStride, 4, "box colour"},
    RegisterName{kPage2, kBoxBlock, 32, 0, 1, "box"},
    RegisterName{kPage2, kMotionLevel, 3, kMotionStride, 4, "motion level"},
    RegisterName{kPage2, kMotionMask, 24, kMotionStride, 4, "motion mask"},
    RegisterName{kPage2, kMotionBlock, 32, kMotionStride, 4, "motion"},
};

// Name of a register, null when this system has no name for it.
constexpr const char* RegisterNameOf(std::uint8_t page, std::uint8_t reg) {
  for (const RegisterName& run : kRegisterNames) {
    if (run.page != page) continue;
    for (unsigned k = 0; k < run.count; ++k) {
      const unsigned first = run.base + k * run.stride;
      if (reg >= first && reg < first + run.length) return run.name;
    }
  }
  return nullptr;
}
