#include "motion/motion_cells.h"

#include <array>

#include "chip/register_bus.h"
#include "display/display_state.h"
#include "display/split_layout.h"
#include "motion/motion_state.h"

namespace {

struct BoxLook {
  std::uint8_t control;
  std::uint8_t attribute;
};

// By cell type.
constexpr std::array<BoxLook, 5> kLooks = {{
    {0xA0, 0x00},
    {0xA0, 0x10},
    {0x98, 0x28},
    {0xB8, 0x28},
    {0xB8, 0x38},
}};

// A single picture's boxes carry these bits too.
constexpr BoxLook kSinglePictureBits = {0x08, 0x32};

// Cell size of a split mode, and how far its grid lies inside the window.
struct CellGrid {
  std::uint8_t width;
  std::uint8_t height_ntsc;
  std::uint8_t height_other;
  std::uint8_t x_inset;
  std::uint8_t y_inset;
};

constexpr CellGrid kGridFull = {0x15, 0x13, 0x16, 0, 0};
constexpr CellGrid kGrid4 = {0x09, 0x09, 0x0A, 0, 0};
constexpr CellGrid kGrid9 = {0x05, 0x05, 0x06, 3, 2};
constexpr CellGrid kGrid16 = {0x04, 0x04, 0x05, 0, 0};

void WriteBox(std::uint8_t chip, RegisterAddress at, unsigned value) {
  Write(chip, at, static_cast<std::uint8_t>(value));
}

// Box control to its rest value on all chips; the attribute of position p to p or to 0.
void ResetBoxes(bool attribute_is_position) {
  for (unsigned p = 0; p < kChannelsPerChip; ++p) {
    WriteBox(kChipAll, kBoxControl.At(p), p);
    WriteBox(kChipAll, kBoxAttribute.At(p), attribute_is_position ? p : 0u);
  }
}

// Draws a channel's grid at the corner of a live window.
void DrawGrid(std::uint8_t channel, const BoxLook& look, const CellGrid& grid,
              const WindowRect& window) {
  const std::uint8_t chip = TW_GetChipSelect(channel);
  const unsigned p = ChannelPosition(channel);
  if (!HasChannel(g_display.bit6_mask, channel)) {
    WriteBox(chip, kBoxControl.At(p), look.control | p);
    WriteBox(chip, kBoxAttribute.At(p), look.attribute);
  }
  WriteBox(chip, kBoxX.At(p), window.x_start + grid.x_inset);
  WriteBox(chip, kBoxY.At(p), window.y_start + grid.y_inset);
  WriteBox(chip, kBoxWidth.At(p), grid.width);
  WriteBox(chip, kBoxHeight.At(p), IsNtsc() ? grid.height_ntsc : grid.height_other);
}

void DrawSinglePicture(const BoxLook& look, std::uint8_t channel) {
  if (!HasChannel(g_display.live_mask, channel)) return;
  for (unsigned i = 0; i < kMotionTiming.length; ++i) {
    Write(TW_GetChipSelect(channel), kMotionTiming.At(i), g_motion.timing);
  }
  const BoxLook single = {static_cast<std::uint8_t>(look.control | kSinglePictureBits.control),
                          static_cast<std::uint8_t>(look.attribute | kSinglePictureBits.attribute)};
  DrawGrid(channel, single, kGridFull, WindowOf(g_layout.live, kSplitFull, 0));
}

void DrawWindows(std::uint8_t mode, const BoxLook& look, const CellGrid& grid, unsigned channel) {
  const std::uint8_t count = g_video.max_channel;
  if (count == 0) return;
  const std::uint8_t windows =
      mode == kSplit9 && count == 8 ? std::uint8_t{8} : kWindowsOfMode[mode];
  for (std::uint8_t k = 0; k < windows; ++k) {
    if (mode == kSplit9 && k == kPageSkipWindow && g_display.split_option != 0) {
      channel = (channel + kPageSkip) % count;
    }
    if (HasChannel(g_display.live_mask, channel)) {
      DrawGrid(static_cast<std::uint8_t>(channel), look, grid, WindowOf(g_layout.live, mode, k));
    }
    if (++channel >= count) channel = 0;
  }
}

}  // namespace

void TW_ShowMotionCells(std::uint8_t cell_type, std::uint8_t split_mode,
                        std::uint8_t first_channel) {
  const BoxLook& look = kLooks[cell_type < kLooks.size() ? cell_type : 0];
  ResetBoxes(true);
  switch (split_mode) {
    case kSplitFull:
      return DrawSinglePicture(look, first_channel);
    case kSplit4:
      return DrawWindows(split_mode, look, kGrid4, first_channel);
    case kSplit9:
      return DrawWindows(split_mode, look, kGrid9, first_channel);
    case kSplit16:
      return DrawWindows(split_mode, look, kGrid16, first_channel);
    default:
      return;  // layouts with a large window have no grid
  }
}

void TW_HideMotionCells() { ResetBoxes(false); }

void TW_SetMotionCellDisplay(std::uint8_t request) {
  const bool from_zero = g_video.max_channel == 4 && g_display.live_split == kSplit4;
  const std::uint8_t first = from_zero ? std::uint8_t{0} : g_display.selected_channel;
  if (request == 1) TW_ShowMotionCells(0, g_display.live_split, first);
  if (request == 2) TW_ShowMotionCells(1, g_display.live_split, first);
}

void TW_SetMotionBoxAttr(std::uint8_t channel, std::uint8_t high, std::uint8_t low) {
  if (channel >= kChannelsMax) return;
  WriteBox(TW_GetChipSelect(channel), kBoxColor.At(ChannelPosition(channel)),
           static_cast<unsigned>(high << 4) | (low & 0x0Fu));
}
