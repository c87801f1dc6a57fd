// The chip commands of the live display: scale, splits, picture in picture, zoom, masks, record.
#include <gmock/gmock.h>

#include "chip/video_state.h"
#include "display/channel_masks.h"
#include "display/display_state.h"
#include "display/live_mode.h"
#include "display/live_pip.h"
#include "display/live_scale.h"
#include "display/live_split_direct.h"
#include "display/live_zoom.h"
#include "display/record_path.h"
#include "display/window_tables.h"
#include "report/diagnostics.h"
#include "tests/support/at_events.h"
#include "tests/text/chip_text_test.h"
#include "text/chip_text.h"

namespace test {
namespace {

using Texts = std::vector<std::string>;

constexpr BoardKind kFour = {4, VEXO_VIDEO_NTSC};
constexpr BoardKind kSixteen = {16, VEXO_VIDEO_NTSC};

void Mask(std::uint16_t mask) { TW_SetBlankMaskByChip(mask); }

void Split(std::uint8_t mode, std::uint8_t channel, std::uint16_t mask) {
  Mask(0xFFFF);
  TW_SetLiveSplitDirect(mode, channel, 0);
  Mask(mask);
}

// Each line, and the calls with the numbers as they must arrive: in their order, cut to their
// widths.
constexpr std::array kLiveLines = {
    LineCase{"vexo xscale 1 2 3 ", [] { TW_SetLiveScaleX(1, 3, 2); }},
    LineCase{"vexo xscale 6 0 4 ", [] { TW_SetLiveScaleX(6, 4, 0); }},
    LineCase{"vexo xscale 2 6 5 ", [] { TW_SetLiveScaleX(2, 5, 6); }},
    LineCase{"vexo xscale 2 5 6 ", [] { TW_SetLiveScaleX(2, 6, 5); }},
    LineCase{"vexo xscale 259 257 258 ", [] { TW_SetLiveScaleX(3, 2, 1); }},
    LineCase{"vexo xscale -255 -254 -252 ", [] { TW_SetLiveScaleX(1, 4, 2); }},
    LineCase{"vexo yscale 3 2 ", [] { TW_SetLiveScaleY(3, 2); }},
    LineCase{"vexo yscale 2 3 ", [] { TW_SetLiveScaleY(2, 3); }},
    LineCase{"vexo yscale 258 257 ", [] { TW_SetLiveScaleY(2, 1); }},
    LineCase{"vexo yscale 1 -1 ", [] { TW_SetLiveScaleY(1, 255); }},
    LineCase{"vexo lsplit 1 2 ", [] { Split(1, 2, 0); }},
    LineCase{"vexo lsplit 1 2 5 ", [] { Split(1, 2, 5); }},
    LineCase{"vexo lsplit 0 3 65535 ", [] { Split(0, 3, 0xFFFF); }},
    LineCase{"vexo lsplit 2 1 42405 ", [] { Split(2, 1, 0xA5A5); }},
    LineCase{"vexo lsplit 3 0 ", [] { Split(3, 0, 0); }},
    LineCase{"vexo lsplit 4 1 8 ", [] { Split(4, 1, 8); }},
    LineCase{"vexo lsplit 5 2 65537 ", [] { Split(5, 2, 1); }},
    LineCase{"vexo lsplit 6 0 -2 ", [] { Split(6, 0, 0xFFFE); }},
    LineCase{"vexo lsplit 7 0 3 ", [] { Split(7, 0, 3); }},
    LineCase{"vexo lsplit 257 259 65552 ", [] { Split(1, 3, 0x10); }},
    LineCase{"vexo lsplit -255 -253 ", [] { Split(1, 3, 0); }},
    LineCase{"vexo lsplit_pos 4 default ", [] { TW_BuildLiveLayout(); }},
    LineCase{"vexo lsplit_pos nothing default ", [] { TW_BuildLiveLayout(); }},
    LineCase{"vexo lsplit_pos 1 2 3 4 5 6 ",
             [] {
               VexoProc_SetLiveSplitOffset(1, 2, 3, 4, 5, 6);
               VexoDbg_Print(u">> END VexoProc_SetLiveSplitOffset <<\r\n");
             }},
    LineCase{"vexo lsplit_pos 258 261 -1 255 128 -128 ",
             [] {
               VexoProc_SetLiveSplitOffset(2, 5, -1, -1, -128, -128);
               VexoDbg_Print(u">> END VexoProc_SetLiveSplitOffset <<\r\n");
             }},
    LineCase{"vexo lsplit_pos 7 0 1 1 1 1 ",
             [] { VexoDbg_Print(u">> END VexoProc_SetLiveSplitOffset <<\r\n"); }},
    LineCase{"vexo pip start 3 0 ",
             [] {
               TW_SetLivePip(3, 0);
               Mask(0);
             }},
    LineCase{"vexo pip start 0 1 12 ",
             [] {
               TW_SetLivePip(0, 1);
               Mask(12);
             }},
    LineCase{"vexo pip start 258 257 68104 ",
             [] {
               TW_SetLivePip(2, 1);
               Mask(0x0A08);
             }},
    LineCase{"vexo pip stop ", [] { TW_StopLivePip(); }},
    LineCase{"vexo mpip start 1 2 30 40 50 60 ",
             [] {
               TW_SetLiveMultiPip(1, 2, 30, 40, 50, 60);
               Mask(0);
             }},
    LineCase{"vexo mpip start 2 1 3 4 5 6 7 ",
             [] {
               TW_SetLiveMultiPip(2, 1, 3, 4, 5, 6);
               Mask(7);
             }},
    LineCase{"vexo mpip start 257 258 -1 260 261 518 -62207 ",
             [] {
               TW_SetLiveMultiPip(1, 2, 255, 4, 5, 6);
               Mask(0x0D01);
             }},
    LineCase{"vexo mpip move 3 10 20 30 40 ",
             [] {
               TW_MoveLiveMultiPip(3, 10, 20, 30, 40);
               Mask(0);
             }},
    LineCase{"vexo mpip move 259 266 276 286 296 102402 ",
             [] {
               TW_MoveLiveMultiPip(3, 10, 20, 30, 40);
               Mask(0x9002);
             }},
    LineCase{"vexo mpip stop 1 2 ",
             [] {
               TW_StopLiveMultiPip();
               Split(1, 2, 0);
             }},
    LineCase{"vexo mpip stop 256 259 65541 ",
             [] {
               TW_StopLiveMultiPip();
               Split(0, 3, 5);
             }},
    LineCase{"vexo zoom start ",
             [] {
               TW_SetLiveZoomArea();
               TW_SetLiveZoomStart();
               Mask(0);
             }},
    LineCase{"vexo zoom start 81677 ",
             [] {
               TW_SetLiveZoomArea();
               TW_SetLiveZoomStart();
               Mask(0x3F0D);
             }},
    LineCase{"vexo zoom stop ",
             [] {
               TW_SetLiveZoomStop();
               Mask(0);
             }},
    LineCase{"vexo zoom stop 22275 ",
             [] {
               TW_SetLiveZoomStop();
               Mask(0x5703);
             }},
    LineCase{"vexo zoom pos 20 30 ",
             [] {
               TW_SetLiveZoomMove(20, 30);
               Mask(0);
             }},
    LineCase{"vexo zoom pos 200 150 9 ",
             [] {
               TW_SetLiveZoomMove(200, 150);
               Mask(9);
             }},
    LineCase{"vexo zoom pos 256 -1 116489 ",
             [] {
               TW_SetLiveZoomMove(0, 255);
               Mask(0xC709);
             }},
    LineCase{"vexo frz 5 ",
             [] {
               TW_SetBit6MaskByChip(5);
               Mask(0);
             }},
    LineCase{"vexo frz 10 3 ",
             [] {
               TW_SetBit6MaskByChip(10);
               Mask(3);
             }},
    LineCase{"vexo frz 65537 -65534 ",
             [] {
               TW_SetBit6MaskByChip(1);
               Mask(2);
             }},
    LineCase{"vexo loss 6 ", [] { Mask(6); }},
    LineCase{"vexo loss 65544 ", [] { Mask(8); }},
    LineCase{"vexo loss -1 ", [] { Mask(0xFFFF); }},
    LineCase{"vexo rec 0 4 ", [] { TW_SetRecordSetup(0, 4); }},
    LineCase{"vexo rec 1 0 ", [] { TW_SetRecordSetup(1, 0); }},
    LineCase{"vexo rec 2 4 ", [] { TW_SetRecordSetup(2, 4); }},
    LineCase{"vexo rec 4 0 ", [] { TW_SetRecordSetup(4, 0); }},
    LineCase{"vexo rec 0 1 ", [] { TW_SetRecordSetup(0, 1); }},
    LineCase{"vexo rec 256 260 ", [] { TW_SetRecordSetup(0, 4); }},
    LineCase{"vexo stop ", [] { TW_ResetLiveDisplay(); }},
};

class ChipTextLive : public ChipTextTest {};

// Holds: Text commands "A number is cut to the width that its operation takes"
// Holds: vexo lsplit "Lays out a live split of consecutive channels from the given"
// Holds: vexo lsplit_pos "The mode is not used."
// Holds: vexo mpip start "Shows a channel as an inset over the current layout"
// Holds: vexo mpip move "Moves the inset"
// Holds: vexo zoom stop "Shows the whole picture again."
// Holds: vexo loss "Blanks the channels of the mask and shows the others."
// Holds: Chips: vexo "`BLANK_MASK`: channels to blank"
// Holds: vexo mpip stop "Takes the inset away and lays out a live split as lsplit"
TEST_F(ChipTextLive, EachLineDoesWhatItsOperationsDoWithTheCutNumbersOnEveryBoard) {
  for (const LineCase& line : kLiveLines) ExpectDoesOnEveryBoard(line);
}

// Holds: vexo xscale "Sets the scaler ratios of a channel."
TEST_F(ChipTextLive, TheThirdNumberOfXscaleIsTheVerticalCode) {
  Fresh(kFour);
  EXPECT_EQ(Text("vexo xscale 1 2 4 "), 0);
  EXPECT_EQ(Accesses(), (std::vector<Access>{W(0x03, 0, 0x91, 0x55), W(0x03, 0, 0x92, 0x55),
                                             W(0x03, 0, 0x93, 0xAA), W(0x03, 0, 0x94, 0xAA)}));
}

// Holds: vexo yscale "Sets the layout of a channel on the record path."
TEST_F(ChipTextLive, YscaleWritesTheRecordLayout) {
  Fresh(kFour);
  EXPECT_EQ(Text("vexo yscale 3 2 "), 0);
  EXPECT_EQ(Accesses(), (std::vector<Access>{W(0x03, 0, 0xBA, 0xF0)}));
}

// Holds: vexo lsplit "Lays out a live split of consecutive channels from the given"
TEST_F(ChipTextLive, LsplitWithoutAMaskBlanksEverythingThenShowsEverything) {
  Fresh(kFour);
  EXPECT_EQ(Text("vexo lsplit 1 2 "), 0);
  const std::vector<Access> all = Accesses();
  ASSERT_GT(all.size(), 16u);
  for (int i = 0; i < 4; ++i) {
    const auto k = static_cast<std::size_t>(2 * i);
    EXPECT_EQ(all[k].kind, 'r');
    EXPECT_EQ(all[k + 1], W(0x03, 1, 0x11 + 8 * i, all[k].value | 0x04));
    const std::size_t last = all.size() - 8 + k;
    EXPECT_EQ(all[last].kind, 'r');
    EXPECT_EQ(all[last + 1], W(0x03, 1, 0x11 + 8 * i, all[last].value & 0xFB));
  }
  // Channel 2 is top left.
  EXPECT_EQ(Register(0, 1, 0x38), 0x05);  // 0x04, one further in this board's table
  EXPECT_EQ(Register(0, 1, 0x39), 0x5A);
  EXPECT_EQ(g_display.live_split, 1);
  EXPECT_EQ(g_display.split_option, 0);
}

// Holds: vexo lsplit_pos "Puts the whole live window table back to its defaults."
TEST_F(ChipTextLive, LsplitPosWithDefaultGivesTheWholeTableBackWithoutAWord) {
  Fresh(kFour);
  const WindowTable moved = g_layout.live;
  EXPECT_EQ(Text("vexo lsplit_pos 1 default "), 0);
  EXPECT_EQ(Events(), Texts{});
  EXPECT_NE(moved[0].x_start, g_layout.live[0].x_start);
  for (std::uint8_t i = 0; i < kWindowsTotal; ++i) {
    EXPECT_EQ(g_layout.live[i].x_start + 1, moved[i].x_start);
  }
}

// Holds: vexo lsplit_pos "Moves the edges of a window of the live table from their"
// Holds: Chips: vexo "`DX_START`: left edge"
// Holds: Chips: vexo "`DY_START`: upper edge"
// Holds: Chips: vexo "`DX_END`: right edge"
// Holds: Chips: vexo "`DY_END`: lower edge"
TEST_F(ChipTextLive, LsplitPosSetsOneWindowOfTheLiveTableFromItsDefault) {
  Fresh(kFour);
  for (int times = 0; times < 2; ++times) {
    EXPECT_EQ(Text("vexo lsplit_pos 1 3 2 -1 -2 255 "), 0);
    EXPECT_EQ(Events(), (Texts{"debug [VexoCtrlSDK]: ",
                               "debug >> END VexoProc_SetLiveSplitOffset <<\\r\\n"}));
    // 5A B0 3C 77, moved by x start 2, y start -1, x end -2, y end -1.
    const WindowRect& window = WindowOf(g_layout.live, 1, 3);
    EXPECT_EQ(window.x_start, 0x5C);
    EXPECT_EQ(window.x_end, 0xAE);
    EXPECT_EQ(window.y_start, 0x3B);
    EXPECT_EQ(window.y_end, 0x76);
  }
}

// Another thread that lays out on that word finds it so.
TEST_F(ChipTextLive, LsplitPosIsToldAfterTheWindowHasMoved) {
  Fresh(kFour);
  std::vector<int> x_starts;
  const AtEvents look([&x_starts](const auto&, const auto*) {
    x_starts.push_back(WindowOf(g_layout.live, 1, 3).x_start);
  });
  VexoText_Parse("vexo lsplit_pos 1 3 2 -1 -2 255 ");
  EXPECT_EQ(x_starts, (std::vector<int>{0x5C, 0x5C}));
}

TEST_F(ChipTextLive, DefaultIsAWordOfItsOwnAndOnlyAtItsPlace) {
  ExpectRefused(kFour, "vexo lsplit_pos default ");
  ExpectRefused(kFour, "vexo lsplit_pos 1 defaults ");
  ExpectRefused(kFour, "vexo lsplit_pos 1 Default ");
  // At a number's place it is a token without digits.
  EXPECT_TRUE(OutcomeOf(kFour, "vexo lsplit_pos 1 2 default 1 1 1 ") ==
              OutcomeOf(kFour, "vexo lsplit_pos 1 2 0 1 1 1 "));
}

// Holds: vexo pip start "Shows one channel full size and another as an inset over it."
// Holds: vexo pip stop "Brings all channels to the front"
TEST_F(ChipTextLive, PipStartBeginsWithEveryChannelBehindAndPipStopEndsInFront) {
  Fresh(kFour);
  EXPECT_EQ(Text("vexo pip start 1 0 "), 0);
  const std::vector<Access> start = Writes();
  ASSERT_GE(start.size(), 4u);
  EXPECT_EQ(start[0], W(0xFF, 1, 0x10, 0x80));
  EXPECT_EQ(start[1], W(0xFF, 1, 0x18, 0x81));
  EXPECT_EQ(start[2], W(0xFF, 1, 0x20, 0x82));
  EXPECT_EQ(start[3], W(0xFF, 1, 0x28, 0x83));
  EXPECT_EQ(Text("vexo pip stop "), 0);
  EXPECT_EQ(Accesses(), (std::vector<Access>{W(0xFF, 1, 0x10, 0xC0), W(0xFF, 1, 0x18, 0xC1),
                                             W(0xFF, 1, 0x20, 0xC2), W(0xFF, 1, 0x28, 0xC3)}));
}

// Holds: vexo mpip stop "Takes the inset away and lays out a live split as lsplit"
TEST_F(ChipTextLive, MpipStopShowsInFrontThenBlanksThenSplits) {
  Fresh(kFour);
  EXPECT_EQ(Text("vexo mpip stop 1 0 "), 0);
  const std::vector<Access> writes = Writes();
  ASSERT_GE(writes.size(), 12u);
  EXPECT_EQ(writes[0], W(0xFF, 1, 0x10, 0xC0));
  EXPECT_EQ(writes[3], W(0xFF, 1, 0x28, 0xC3));
  EXPECT_EQ(writes[4].reg, 0x11);
  EXPECT_EQ(writes[4].value & 0x04, 0x04);
  EXPECT_EQ(writes[8], W(0xFF, 1, 0x10, 0x90));  // the split's hold
}

// Holds: vexo zoom start "Zooms into the live picture."
TEST_F(ChipTextLive, ZoomStartPreparesTheZoomChipThenSwitchesTheZoomOn) {
  for (const auto& [channels, chip] : {std::pair{4, 0x03}, {8, 0x0C}, {16, 0xC0}}) {
    Fresh({channels, VEXO_VIDEO_NTSC});
    EXPECT_EQ(Text("vexo zoom start "), 0);
    const std::vector<Access> all = Accesses();
    ASSERT_GE(all.size(), 4u);
    EXPECT_EQ(all[0], W(chip, 1, 0x0C, 0x3D)) << channels;
    EXPECT_EQ(all[1], R(0x03, 1, 0x06, 0x3B)) << channels;
    EXPECT_EQ(all[2], W(0xFF, 1, 0x06, 0x3F)) << channels;
    EXPECT_EQ(all[3], W(chip, 1, 0x0C, 0x80)) << channels;
  }
}

// Holds: vexo zoom start "12 channels have no zoom"
TEST_F(ChipTextLive, ZoomOnTwelveChannelsIsRefusedInWordsAndTheMaskGoesOn) {
  Fresh({12, VEXO_VIDEO_NTSC});
  EXPECT_EQ(Text("vexo zoom start 17 "), 0);
  EXPECT_EQ(DebugText(),
            "[VexoCtrlSDK]: >> TW_SetLiveZoomArea Invalid channel!!\r\n"
            "[VexoCtrlSDK]: >> TW_SetLiveZoomStart Invalid channel!!\r\n");
  EXPECT_EQ(Writes().size(), 8u);  // master and slave 1
  for (const Access& write : Writes()) {
    EXPECT_TRUE(write.chip == 0x03 || write.chip == 0x0C);
    EXPECT_EQ((write.value & 0x04) != 0, write.reg == 0x11);
  }
}

// Holds: vexo frz "Freezes the channels of the first mask"
// Holds: Chips: vexo "`FREEZE_MASK`: channels to freeze"
TEST_F(ChipTextLive, FrzKeepsItsMaskForTheMotionBoxes) {
  Fresh(kSixteen);
  EXPECT_EQ(Text("vexo frz 33025 2 "), 0);
  EXPECT_EQ(g_display.bit6_mask, 0x8101);
  EXPECT_EQ(Register(0, 1, 0x11) & 0x44, 0x40);
  EXPECT_EQ(Register(0, 1, 0x19) & 0x44, 0x04);
  EXPECT_EQ(Register(2, 1, 0x11) & 0x44, 0x40);
  EXPECT_EQ(Register(3, 1, 0x29) & 0x44, 0x40);
}

// Holds: vexo rec "Programs the record path of all chips."
TEST_F(ChipTextLive, RecPassesItsNumbersInTheirOrder) {
  Fresh(kFour);
  EXPECT_EQ(Text("vexo rec 3 0 "), 0);
  EXPECT_EQ(DebugText(), "[VexoCtrlSDK]: >> ERROR TW_SetRecordSetup RECORD MODE(3)!!\r\n");
  EXPECT_EQ(Text("vexo rec 0 3 "), 0);
  EXPECT_EQ(DebugText(), "[VexoCtrlSDK]: >> ERROR TW_SetRecordSetup SWITCHING MODE(3)!!\r\n");
  EXPECT_EQ(Text("vexo rec 0 4 "), 0);
  EXPECT_THAT(Accesses(), ::testing::Contains(W(0x03, 1, 0x56, 0x70)));
}

// Holds: vexo stop "Programs the display for live pictures again"
TEST_F(ChipTextLive, StopChangesNeitherSplitNorView) {
  Fresh(kFour);
  g_display.view = kViewPlayback;
  EXPECT_EQ(Text("vexo stop "), 0);
  EXPECT_EQ(g_display.view, kViewPlayback);
  EXPECT_EQ(g_display.live_split, 6);
  EXPECT_EQ(Register(0, 1, 0x06), 0x00);
}

}  // namespace
}  // namespace test
