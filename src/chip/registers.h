// The TW2835 register map as far as this system touches it: chips, registers, bits.
//
// One description for the library, the simulated chip, the decoded listings and the documentation.
// The registers themselves are the rows of chip/registers.inc.
#pragma once

#include <array>
#include <cstdint>

#include "chip/register.h"

inline constexpr std::uint8_t kChipsMax = 4;
inline constexpr std::uint8_t kChannelsPerChip = 4;
inline constexpr std::uint8_t kChannelsMax = kChipsMax * kChannelsPerChip;

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

// ---- Fields -----------------------------------------------------------------------------------

// Page 0.
inline constexpr Field kInputIsNtsc{0x01, "NTSC",
                                    "the camera sends NTSC, else PAL; the chip's own"};
inline constexpr Field kPositionOfPath{0xC0, "position", "whose input"};
inline constexpr Field kScalerPosition{0xC0, "position", "whose picture"};
inline constexpr Field kScalerFilterY{0x0C, "filter y", "lines averaged, less one"};
inline constexpr Field kScalerFilterX{0x03, "filter x", "samples averaged, less one"};
inline constexpr Field kRecordLayoutPosition{0xC0, "position", "whose picture"};
inline constexpr Field kRecordLayoutSize{0x30, "layout", "size, by record mode"};
inline constexpr Field kChipIdFamily{0xF8, "family", "0x28: a TW2835"};
inline constexpr Field kChipIdRevision{0x07, "revision", "of the chip"};
inline constexpr std::uint8_t kChipIdTw2835 = 0x28;

// Page 1, display.
inline constexpr Field kSystemPal{0x80, "PAL", "PAL picture, else NTSC"};
inline constexpr Field kSystemPlace{0x03, "place", "in the cascade"};
inline constexpr Field kSettleBits{0x0F, "busy", "held channels not settled; the chip's own"};
inline constexpr Field kDisplayModeZoom{0x04, "zoom", "zoomed, or a split of decoded pictures"};
inline constexpr Field kZoomOn{0x80, "on", "the picture is zoomed"};
inline constexpr Field kZoomDecoded{0x40, "decoded", "with on: a decoded picture in full size"};
inline constexpr Field kZoomArea{0x3D, "area", "set up before zooming"};
inline constexpr Field kCascadeAdjustStep{0x30, "step", "of the cascade's timing"};
inline constexpr Field kDisplayEnable{0x80, "enable", "shown"};
inline constexpr Field kDisplayFront{0x40, "front", "above channels without it"};
inline constexpr Field kDisplayHold{0x10, "hold", "held while the layout changes"};
inline constexpr Field kDisplayDecoded{0x04, "decoded", "the decoded picture of its path"};
inline constexpr Field kDisplayPosition{0x03, "position", "whose scaler"};
inline constexpr Field kAttributeFreeze{0x40, "freeze", "the picture stands still"};
inline constexpr Field kAttributeOverlay{0x08, "overlay", "set while pictures are decoded"};
inline constexpr Field kAttributeBlank{0x04, "blank", "black"};
inline constexpr Field kAttributeLive{0x02, "live", "a camera's picture"};
inline constexpr Field kAttributeBit0{0x01, "bit 0", "as the host sets it"};
inline constexpr Field kOverlayReset{0x60, "reset", "both bits: after a switch to playback"};
inline constexpr Field kOverlaySplit{0x20, "split", "decoded pictures share the screen"};
inline constexpr Field kPathOpen{0x80, "open", "of position 0: the chip's decoded input is on"};
inline constexpr Field kPathDecoded{0x10, "decoded", "from the decoder"};
inline constexpr Field kPathChannel{0x0F, "channel", "which decoded channel"};

// Page 1, record path, status and output.
inline constexpr Field kRecordModeQuadBit{0x40, "quad", "four channels in one picture"};
inline constexpr Field kRecordControlOn{0x80, "on", "recorded"};
inline constexpr Field kRecordControlMode{0x30, "mode", "by record mode"};
inline constexpr Field kRecordControlPosition{0x03, "position", "whose picture"};
inline constexpr Field kRecordChannelOff{0x04, "off", "left out of the record"};
inline constexpr Field kLossSecond{0xF0, "second loss", "a bit a channel; the chip's own"};
inline constexpr Field kLossFirst{0x0F, "loss", "a bit a channel; the chip's own"};
inline constexpr Field kMotionSeen{0x0F, "motion", "a bit a channel; the chip's own"};
inline constexpr Field kRecordOutputOn{0x20, "on", "recorded pictures are put out"};
inline constexpr Field kStatusRefEdge{0x08, "edge", "rising edges of sync count, else falling"};
inline constexpr Field kStatusFlagBits{0xF0, "flags", "the chip's own"};
inline constexpr Field kStatusSync{0x10, "sync", "of the master: the field's sync"};
inline constexpr Field kColorBar{0x08, "colour bar", "in the place of the picture"};

// Page 2.
inline constexpr Field kFillHighTop{0xFC, "top", "high bits of the top line"};
inline constexpr Field kFillHighAlways{0x02, "always", "set in every fill"};
inline constexpr Field kFillHighBottom{0x01, "bottom", "high bit of the bottom line"};
inline constexpr Field kFillBusy{0x80, "busy", "written: start; reads set until done"};
inline constexpr Field kMotionTimingHigh{0xF0, "high", "0 to 11"};
inline constexpr Field kMotionTimingLow{0x0F, "low", "0 to 11"};
inline constexpr Field kBoxEnable{0x80, "enable", "shown"};
inline constexpr Field kBoxLook{0x38, "look", "of the cells"};
inline constexpr Field kBoxPosition{0x03, "position", "whose box"};
inline constexpr Field kBoxColorHigh{0xF0, "high", "the host's first number"};
inline constexpr Field kBoxColorLow{0x0F, "low", "the host's second number"};

// ---- Registers --------------------------------------------------------------------------------

namespace register_detail {

template <unsigned kStride, unsigned kLength>
constexpr auto Make(std::uint8_t page, std::uint8_t first, const char* name,
                    const std::array<Field, Register::kFieldsMax>& fields) {
  if constexpr (kStride == 0) {
    return ChipRegister<kLength>{{page, first, 0, 1, kLength, name, fields}};
  } else {
    return ChannelRegister<kLength>{
        {page, first, kStride, kChannelsPerChip, kLength, name, fields}};
  }
}

}  // namespace register_detail

#define FIELDS(...) \
  {                 \
    { __VA_ARGS__ } \
  }
#define REGISTER(constant, page, first, stride, length, name, fields) \
  inline constexpr auto constant = register_detail::Make<stride, length>(page, first, name, fields);
#include "chip/registers.inc"
#undef REGISTER

// All of them, in order of precedence.
inline constexpr std::array kRegisters = {
#define REGISTER(constant, page, first, stride, length, name, fields) Register{constant},
#include "chip/registers.inc"
#undef REGISTER
};
#undef FIELDS

// The register that covers a number, null where this system has none.
constexpr const Register* FindRegister(std::uint8_t page, std::uint8_t number) {
  for (const Register& each : kRegisters) {
    if (Covers(each, {page, number})) return &each;
  }
  return nullptr;
}

// Its name, null when this system has no name for it.
constexpr const char* RegisterNameOf(std::uint8_t page, std::uint8_t number) {
  const Register* found = FindRegister(page, number);
  return found == nullptr ? nullptr : found->name;
}

inline constexpr std::uint8_t kMotionMaskBytes = kMotionMask.length;
