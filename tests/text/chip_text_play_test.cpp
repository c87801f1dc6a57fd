// The chip commands of playback: preparation, splits, window offsets, the bank of blanked channels.
#include "chip/video_state.h"
#include "display/channel_masks.h"
#include "display/display_state.h"
#include "display/play_split_direct.h"
#include "display/window_tables.h"
#include "report/diagnostics.h"
#include "tests/text/chip_text_test.h"

namespace test {
namespace {

using Texts = std::vector<std::string>;

constexpr BoardKind kFour = {4, VEXO_VIDEO_NTSC};

void Play(int mode, int option) {
  VexoDbg_Print(u">>TW_SetPlaySetup (%d %d)\r\n", mode, option);
  TW_SetPlaySetup(static_cast<std::uint8_t>(mode & 0xFF), static_cast<std::uint8_t>(option & 0xFF));
}

void Split(std::uint8_t mode, std::uint8_t channel, std::uint16_t mask) {
  VexoDbg_Print(u">> VEXO_TXT_PLAY_SPLIT !\r\n");
  TW_SetBlankMaskByChip(0xFFFF);
  TW_SetPlaySplitDirect(mode, channel);
  TW_SetBlankMaskByChip(mask);
}

constexpr std::array kPlayLines = {
    LineCase{"vexo play 0 1 ", [] { Play(0, 1); }},
    LineCase{"vexo play 1 0 ", [] { Play(1, 0); }},
    LineCase{"vexo play 2 7 ", [] { Play(2, 7); }},
    LineCase{"vexo play 3 0 ", [] { Play(3, 0); }},
    LineCase{"vexo play 257 65536 ", [] { Play(257, 65536); }},
    LineCase{"vexo play -254 -1 ", [] { Play(-254, -1); }},
    LineCase{"vexo psplit 0 1 ", [] { Split(0, 1, 0); }},
    LineCase{"vexo psplit 1 3 5 ", [] { Split(1, 3, 5); }},
    LineCase{"vexo psplit 2 0 65535 ", [] { Split(2, 0, 0xFFFF); }},
    LineCase{"vexo psplit 3 2 ", [] { Split(3, 2, 0); }},
    LineCase{"vexo psplit 4 1 ", [] { Split(4, 1, 0); }},
    LineCase{"vexo psplit 5 0 8 ", [] { Split(5, 0, 8); }},
    LineCase{"vexo psplit 6 2 ", [] { Split(6, 2, 0); }},
    LineCase{"vexo psplit 7 2 4 ", [] { Split(7, 2, 4); }},
    LineCase{"vexo psplit 257 258 65540 ", [] { Split(1, 2, 4); }},
    LineCase{"vexo psplit -255 -253 -65535 ", [] { Split(1, 3, 1); }},
    LineCase{"vexo psplit_pos 4 default ", [] { TW_BuildPlayLayout(); }},
    LineCase{"vexo psplit_pos nothing default ", [] { TW_BuildPlayLayout(); }},
    LineCase{"vexo psplit_pos 1 2 3 4 5 6 ", [] { TW_SetPlaySplitOffset(1, 2, 3, 4, 5, 6); }},
    LineCase{"vexo psplit_pos 258 261 -1 255 128 -128 ",
             [] { TW_SetPlaySplitOffset(2, 5, -1, -1, -128, -128); }},
    LineCase{"vexo pbank init ", [] { TW_BlankAllChannels(); }},
    LineCase{"vexo pbank clear ", [] { TW_UnblankAllChannels(); }},
};

class ChipTextPlay : public ChipTextTest {};

// Holds: vexo play "Prepares the chips for decoded pictures."
// Holds: vexo psplit "Lays out a playback split of consecutive channels"
// Holds: vexo psplit_pos "The mode is not used."
// Holds: vexo pbank init "Blanks every channel for playback."
// Holds: vexo pbank clear "Shows every channel."
TEST_F(ChipTextPlay, EachLineDoesWhatItsOperationsDoWithTheCutNumbersOnEveryBoard) {
  for (const LineCase& line : kPlayLines) ExpectDoesOnEveryBoard(line);
}

// Holds: vexo play "The option is printed and not used."
TEST_F(ChipTextPlay, PlayTellsItsNumbersAsTypedAndCutsThemForTheChips) {
  Fresh(kFour);
  EXPECT_EQ(Text("vexo play 256 -3 "), 0);
  EXPECT_EQ(Debug(), (Texts{"[VexoCtrlSDK]: ", ">>TW_SetPlaySetup (256 -3)\r\n"}));
  // Mode 0: the pattern of 4 channels.
  EXPECT_EQ(Register(0, 0, 0x86), 0xFF);
  EXPECT_EQ(Register(0, 0, 0x88), 0x7F);
}

TEST_F(ChipTextPlay, PlaySaysNothingBeforeInitialization) {
  FreshNotReady(kFour);
  EXPECT_EQ(Text("vexo play 1 2 "), 0);
  EXPECT_EQ(Debug(), Texts{});
}

// Holds: Chips: vexo "Even so `psplit` announces itself"
// Holds: vexo psplit "Announced before its arguments are read."
TEST_F(ChipTextPlay, PsplitIsToldBeforeItsArgumentsAreReadAndBeforeInitializationToo) {
  for (const bool ready : {true, false}) {
    for (const char* line :
         {"vexo psplit ", "vexo psplit 1 ", "vexo psplit 1", "vexo psplit  1 2 "}) {
      SCOPED_TRACE(line);
      Fresh(kFour);
      if (!ready) FreshNotReady(kFour);
      EXPECT_EQ(Text(line), -1);
      EXPECT_EQ(Debug(), (Texts{"[VexoCtrlSDK]: ", ">> VEXO_TXT_PLAY_SPLIT !\r\n"}));
      EXPECT_EQ(Cycles(), 0u);
    }
    // Once, and first.
    EXPECT_EQ(Text("vexo psplit 7 0 "), 0);
    const Texts events = Events();
    ASSERT_GE(events.size(), 2u);
    EXPECT_EQ(events[0], "debug [VexoCtrlSDK]: ");
    EXPECT_EQ(events[1], "debug >> VEXO_TXT_PLAY_SPLIT !\\r\\n");
  }
  Fresh(kFour);
  EXPECT_EQ(Text("vexo psplit"), -1);  // no separator: no keyword
  EXPECT_EQ(Debug(), Texts{});
  EXPECT_EQ(Text("vexo psplit_pos "), -1);
  EXPECT_EQ(Debug(), Texts{});
}

// Holds: vexo psplit_pos "Puts the whole playback window table back to its defaults."
TEST_F(ChipTextPlay, PsplitPosWithDefaultGivesTheWholeTableBackWithoutAWord) {
  Fresh(kFour);
  const WindowTable moved = g_layout.play;
  const WindowTable live = g_layout.live;
  EXPECT_EQ(Text("vexo psplit_pos 1 default "), 0);
  EXPECT_EQ(Events(), Texts{});
  for (std::uint8_t i = 0; i < kWindowsTotal; ++i) {
    EXPECT_EQ(g_layout.play[i].x_end - 1, moved[i].x_end);
    EXPECT_EQ(g_layout.live[i].x_start, live[i].x_start);
  }
}

// Holds: vexo psplit_pos "Moves the edges of a window of the playback table from their"
// Holds: vexo psplit_pos "Otherwise as lsplit_pos."
TEST_F(ChipTextPlay, PsplitPosSetsOneWindowOfThePlayTableWithoutAWord) {
  Fresh(kFour);
  EXPECT_EQ(Text("vexo psplit_pos 1 3 2 -1 -2 255 "), 0);
  EXPECT_EQ(Events(), Texts{});
  // 5A B0 3C 77, moved by x start 2, y start -1, x end -2, y end -1.
  const WindowRect& window = WindowOf(g_layout.play, 1, 3);
  EXPECT_EQ(window.x_start, 0x5C);
  EXPECT_EQ(window.x_end, 0xAE);
  EXPECT_EQ(window.y_start, 0x3B);
  EXPECT_EQ(window.y_end, 0x76);
  ExpectDoesNothing(kFour, "vexo psplit_pos 7 0 1 1 1 1 ");
  ExpectDoesNothing(kFour, "vexo psplit_pos 1 4 1 1 1 1 ");
}

// ---- The bank ---------------------------------------------------------------------------------

// "pbank show" after "pbank init", for it does nothing on an empty bank.
TEST_F(ChipTextPlay, PbankShowDoesWhatShowingThePairDoesWithTheNumberCutTo16Bits) {
  for (const BoardKind& board : kBoardKinds) {
    for (const int channel : {0, 1, 2, 3, 4, 7, 8, 11, 12, 15, 16, 255, 256, 65535}) {
      SCOPED_TRACE(channel);
      Fresh(board);
      TW_BlankAllChannels();
      Mark();
      TW_UnblankChannelPair(static_cast<std::uint16_t>(channel));
      const std::vector<Access> wanted = Accesses();
      const std::uint32_t mask = g_display.blank_mask.playback;
      for (const std::string& number : {std::to_string(channel), std::to_string(channel + 65536),
                                        std::to_string(channel - 65536)}) {
        Fresh(board);
        EXPECT_EQ(Text("vexo pbank init "), 0);
        EXPECT_EQ(Text("vexo pbank show " + number + " "), 0);
        EXPECT_EQ(Accesses(), wanted) << number;
        EXPECT_EQ(g_display.blank_mask.playback, mask) << number;
        EXPECT_EQ(Debug(), Texts{});
      }
    }
  }
}

// Holds: vexo pbank show "Shows a channel and the next one"
TEST_F(ChipTextPlay, PbankBlanksTwiceShowsAPairOnceAndClearsTheRest) {
  Fresh(kFour);
  EXPECT_EQ(Text("vexo pbank init "), 0);
  EXPECT_EQ(g_display.blank_mask.playback, 0x000Fu);
  EXPECT_EQ(Accesses().size(), 12u);  // a read and two writes of each channel
  EXPECT_EQ(Text("vexo pbank show 1 "), 0);
  EXPECT_EQ(g_display.blank_mask.playback, 0x0009u);
  EXPECT_EQ(Accesses().size(), 4u);
  EXPECT_EQ(Text("vexo pbank show 1 "), 0);  // shown already
  EXPECT_EQ(Accesses().size(), 0u);
  EXPECT_EQ(Text("vexo pbank show 4 "), 0);  // not on the board
  EXPECT_EQ(Accesses().size(), 0u);
  EXPECT_EQ(Text("vexo pbank show 256 "), 0);  // not cut to 8 bits
  EXPECT_EQ(Accesses().size(), 0u);
  EXPECT_EQ(Register(0, 1, 0x11) & 0x04, 0x04);
  EXPECT_EQ(Register(0, 1, 0x19) & 0x04, 0x00);
  EXPECT_EQ(Register(0, 1, 0x21) & 0x04, 0x00);
  EXPECT_EQ(Register(0, 1, 0x29) & 0x04, 0x04);
  EXPECT_EQ(Text("vexo pbank clear "), 0);
  EXPECT_EQ(g_display.blank_mask.playback, 0u);
  EXPECT_EQ(Accesses().size(), 8u);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(Register(0, 1, 0x11 + 8 * i) & 0x04, 0);
}

// Holds: vexo pbank init "Of 12 channels it reaches 0 to 3 alone"
TEST_F(ChipTextPlay, TheBankIsTheChannelsOfTheBoardAndUnchangedForOtherCounts) {
  for (const auto& [channels, mask] :
       {std::pair{4, 0x000Fu}, {8, 0x00FFu}, {12, 0x1234u}, {16, 0xFFFFu}}) {
    Fresh({channels, VEXO_VIDEO_NTSC});
    g_display.blank_mask.playback = 0x1234;
    EXPECT_EQ(Text("vexo pbank init "), 0);
    EXPECT_EQ(g_display.blank_mask.playback, mask) << channels;
    EXPECT_EQ(g_display.blank_mask.live, 0u);
  }
}

}  // namespace
}  // namespace test
