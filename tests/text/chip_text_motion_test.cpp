// The chip commands of motion detection.
#include "chip/video_state.h"
#include "display/display_state.h"
#include "motion/motion_cells.h"
#include "motion/motion_detect.h"
#include "motion/motion_state.h"
#include "tests/text/chip_text_test.h"

namespace test {
namespace {

constexpr BoardKind kFour = {4, VEXO_VIDEO_NTSC};

constexpr std::array kMotionLines = {
    LineCase{"vexo minit ", [] { TW_InitMotionDetect(); }},
    LineCase{"vexo mlevel 2 3 ", [] { TW_SetMotionLevel(2, 3); }},
    LineCase{"vexo mlevel 258 257 ", [] { TW_SetMotionLevel(2, 1); }},
    LineCase{"vexo mlevel -256 -254 ", [] { TW_SetMotionLevel(0, 2); }},
    LineCase{"vexo mcell show 1 0 3 ", [] { TW_ShowMotionCells(1, 0, 3); }},
    LineCase{"vexo mcell show 2 1 0 ", [] { TW_ShowMotionCells(2, 1, 0); }},
    LineCase{"vexo mcell show 3 4 1 ", [] { TW_ShowMotionCells(3, 4, 1); }},
    LineCase{"vexo mcell show 4 6 2 ", [] { TW_ShowMotionCells(4, 6, 2); }},
    LineCase{"vexo mcell show 5 2 2 ", [] { TW_ShowMotionCells(5, 2, 2); }},
    LineCase{"vexo mcell show 257 260 258 ", [] { TW_ShowMotionCells(1, 4, 2); }},
    LineCase{"vexo mcell show -1 0 0 ", [] { TW_ShowMotionCells(255, 0, 0); }},
    LineCase{"vexo mcell clear ", [] { TW_HideMotionCells(); }},
    LineCase{"vexo mmask change all 1 0 ", [] { TW_SetMotionMaskAll(1, 0); }},
    LineCase{"vexo mmask change all 2 1 ", [] { TW_SetMotionMaskAll(2, 1); }},
    LineCase{"vexo mmask change all 257 256 ", [] { TW_SetMotionMaskAll(1, 0); }},
    LineCase{"vexo mmask change all 3 -1 ", [] { TW_SetMotionMaskAll(3, 255); }},
    LineCase{"vexo mmask change 1 2 3 ", [] { TW_ToggleMotionCell(1, 2, 3); }},
    LineCase{"vexo mmask change 0 15 11 ", [] { TW_ToggleMotionCell(0, 15, 11); }},
    LineCase{"vexo mmask change 259 264 266 ", [] { TW_ToggleMotionCell(3, 8, 10); }},
    // A word that is not "all" is a number without digits.
    LineCase{"vexo mmask change some 2 3 ", [] { TW_ToggleMotionCell(0, 2, 3); }},
    LineCase{"vexo mshow 1 ", [] { TW_SetMotionCellDisplay(1); }},
    LineCase{"vexo mshow 2 ", [] { TW_SetMotionCellDisplay(2); }},
    LineCase{"vexo mshow 257 ", [] { TW_SetMotionCellDisplay(1); }},
};

class ChipTextMotion : public ChipTextTest {};

// Holds: vexo minit "Programs motion detection of all channels from the kept settings"
TEST_F(ChipTextMotion, EachLineDoesWhatItsOperationsDoWithTheCutNumbersOnEveryBoard) {
  for (const LineCase& line : kMotionLines) ExpectDoesOnEveryBoard(line);
}

// Holds: Text commands "0: done; or accepted without effect"
// Holds: vexo mlevel "A level above 3 does nothing."
// Holds: vexo mmask change "A channel above 15 and a row above 11 do nothing"
// Holds: vexo mshow "Draws the motion cells over the current live layout"
// Holds: Chips: vexo "`LEVEL`: sensitivity, 0 to 3"
TEST_F(ChipTextMotion, NumbersThatAskForNothingAreAcceptedAndDoNothing) {
  for (const char* line : {"vexo mlevel 1 4 ", "vexo mlevel 1 -1 ", "vexo mshow 0 ",
                           "vexo mshow 3 ", "vexo mshow 256 ", "vexo mmask change 0 0 12 "}) {
    ExpectDoesNothing(kFour, line);
  }
}

// Holds: vexo mlevel "Programs a channel's sensitivity"
TEST_F(ChipTextMotion, MlevelWritesTheThreeLevelRegistersOfTheChannel) {
  Fresh({8, VEXO_VIDEO_NTSC});
  EXPECT_EQ(Text("vexo mlevel 6 2 "), 0);
  EXPECT_EQ(Accesses(), (std::vector<Access>{W(0x0C, 2, 0xC3, 0x08), W(0x0C, 2, 0xC4, 0x09),
                                             W(0x0C, 2, 0xC5, 0x21)}));
}

// Holds: vexo mmask change "Turns one motion cell of a channel over."
TEST_F(ChipTextMotion, MmaskChangeWithNumbersTurnsOneCellOverAndBack) {
  Fresh(kFour);
  // Channel 1, column 10, row 3: bit 2 of byte 6. The mask bytes are 0x5A.
  EXPECT_EQ(Text("vexo mmask change 1 10 3 "), 0);
  EXPECT_EQ(Accesses(), (std::vector<Access>{W(0x03, 2, 0xAC, 0x5E)}));
  EXPECT_EQ(Text("vexo mmask change 1 10 3 "), 0);
  EXPECT_EQ(Accesses(), (std::vector<Access>{W(0x03, 2, 0xAC, 0x5A)}));
  // Column 2: bit 2 of byte 7.
  EXPECT_EQ(Text("vexo mmask change 1 2 3 "), 0);
  EXPECT_EQ(Accesses(), (std::vector<Access>{W(0x03, 2, 0xAD, 0x5E)}));
}

// Holds: vexo mmask change all "Sets all motion cells of a channel"
// Holds: Chips: vexo "`CLEAR`: 0 sets"
TEST_F(ChipTextMotion, MmaskChangeAllWritesEachOfThe24Bytes) {
  Fresh(kFour);
  for (const auto& [line, value] : {std::pair{"vexo mmask change all 2 0 ", 0xFF},
                                    {"vexo mmask change all 2 1 ", 0x00},
                                    {"vexo mmask change all 2 256 ", 0xFF}}) {
    EXPECT_EQ(Text(line), 0);
    std::vector<Access> wanted;
    wanted.reserve(24);
    for (int i = 0; i < 24; ++i) wanted.push_back(W(0x03, 2, 0xC6 + i, value));
    EXPECT_EQ(Accesses(), wanted) << line;
    for (const std::uint8_t byte : g_motion.mask[2]) EXPECT_EQ(byte, value);
  }
}

// Holds: vexo mcell clear "Takes the motion cells away."
TEST_F(ChipTextMotion, McellClearResetsTheBoxesOfAllChips) {
  Fresh(kFour);
  EXPECT_EQ(Text("vexo mcell clear "), 0);
  std::vector<Access> wanted;
  for (int p = 0; p < 4; ++p) {
    wanted.push_back(W(0xFF, 2, 0x60 + 8 * p, p));
    wanted.push_back(W(0xFF, 2, 0x61 + 8 * p, 0x00));
  }
  EXPECT_EQ(Accesses(), wanted);
}

// Holds: vexo mcell show "Draws the motion cells at the live windows of a split"
TEST_F(ChipTextMotion, McellShowTakesTypeThenModeThenChannel) {
  Fresh(kFour);
  // Type 2, a single picture, channel 1: control 0x98 | 1 | 0x08, attribute 0x28 | 0x32.
  EXPECT_EQ(Text("vexo mcell show 2 0 1 "), 0);
  EXPECT_EQ(Register(0, 2, 0x68), 0x99);
  EXPECT_EQ(Register(0, 2, 0x69), 0x3A);
  EXPECT_EQ(Register(0, 2, 0x6B), 0x15);
  EXPECT_EQ(Register(0, 2, 0x6D), 0x13);
  EXPECT_EQ(Register(0, 2, 0x60), 0x00);
}

// Holds: vexo mmask change "A channel above 15 and a row above 11 do nothing"
TEST_F(ChipTextMotion, ChannelsOf16AndMoreHaveNoCells) {
  // Channels of 16 and more have no mask: nothing is stored or written.
  ExpectDoesNothing(kFour, "vexo mmask change 16 0 0 ");
  ExpectDoesNothing(kFour, "vexo mmask change all 16 0 ");
}

}  // namespace
}  // namespace test
