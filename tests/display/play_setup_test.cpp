#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "display/display_state.h"
#include "display/play_layout.h"
#include "display/play_split_direct.h"
#include "tests/display/display_test.h"

namespace test {
namespace {

using AccessList = std::vector<Access>;

AccessList operator+(AccessList first, const AccessList& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

// ---- What the preparation should write --------------------------------------------------------

AccessList Shown() {
  return {W(kAll, 1, 0x10, 0x94), W(kAll, 1, 0x18, 0x95), W(kAll, 1, 0x20, 0x96),
          W(kAll, 1, 0x28, 0x97)};
}

// The paths of a chip's four channels; the first is opened.
AccessList Paths(int chip, int first, int second, int third, int fourth) {
  return {W(chip, 1, 0x16, first), W(chip, 1, 0x1E, second), W(chip, 1, 0x26, third),
          W(chip, 1, 0x2E, fourth)};
}

AccessList PathsOf(int channels) {
  switch (channels) {
    case 4:
      return Paths(kAll, 0x90, 0x11, 0x12, 0x13);
    case 8:
      return Paths(kMaster, 0x90, 0x11, 0x12, 0x13) + Paths(kSlave1, 0x94, 0x15, 0x16, 0x17);
    case 16:
      return Paths(kMaster, 0x90, 0x11, 0x12, 0x13) + Paths(kSlave1, 0x94, 0x15, 0x16, 0x17) +
             Paths(kSlave2, 0x98, 0x19, 0x1A, 0x1B) + Paths(kSlave3, 0x9C, 0x1D, 0x1E, 0x1F);
    default:
      return {};
  }
}

AccessList Source(int value) { return {W(kAll, 1, 0x01, value)}; }

AccessList Overlays(int value) {
  return {W(kAll, 1, 0x12, value), W(kAll, 1, 0x1A, value), W(kAll, 1, 0x22, value),
          W(kAll, 1, 0x2A, value), W(kAll, 1, 0x06, 0x00)};
}

AccessList Pattern(int a, int b, int c, int d) {
  return {W(kAll, 0, 0x86, a), W(kAll, 0, 0x87, b), W(kAll, 0, 0x88, c), W(kAll, 0, 0x89, d),
          W(kAll, 0, 0x96, a), W(kAll, 0, 0x97, b), W(kAll, 0, 0x98, c), W(kAll, 0, 0x99, d),
          W(kAll, 0, 0xA6, a), W(kAll, 0, 0xA7, b), W(kAll, 0, 0xA8, c), W(kAll, 0, 0xA9, d),
          W(kAll, 0, 0xB6, a), W(kAll, 0, 0xB7, b), W(kAll, 0, 0xB8, c), W(kAll, 0, 0xB9, d)};
}

struct Row {
  int channels;
  int mode;
  AccessList after_source;  // all that follows the first write of the source
  unsigned cycles;          // of the whole preparation, four a write
};

const std::vector<Row>& Rows() {
  static const std::vector<Row> rows = {
      {4, 0, Overlays(0x20) + Pattern(0xFF, 0xFF, 0x7F, 0xFF), 4 * 30},
      {4, 1, Overlays(0x20) + Pattern(0xFF, 0xFF, 0xFF, 0xFF), 4 * 30},
      {4, 2, Pattern(0xF7, 0xFF, 0xF7, 0xFF) + Source(0x03), 4 * 26},
      {8, 0, Overlays(0x20) + Pattern(0xAA, 0xAA, 0x55, 0x55), 4 * 34},
      {8, 1, Overlays(0x20) + Pattern(0xAA, 0xAA, 0xAA, 0xAA), 4 * 34},
      {8, 2, Overlays(0x00) + Pattern(0xAA, 0xAA, 0xAA, 0xAA) + Source(0x03), 4 * 35},
      {16, 0, Overlays(0x20) + Pattern(0x7F, 0xFF, 0x3F, 0xFF), 4 * 42},
      {16, 1, Overlays(0x20) + Pattern(0x7F, 0xFF, 0x7F, 0xFF), 4 * 42},
      {16, 2, Overlays(0x20) + Pattern(0xFF, 0xFF, 0x7F, 0xFF), 4 * 42},
  };
  return rows;
}

class PlaySetup : public DisplayTest {
 protected:
  void Expect(const AccessList& expected) {
    EXPECT_EQ(Accesses(), expected);
    EXPECT_EQ(DebugText(), "");
    EXPECT_EQ(Elapsed(), 0u);
  }
};

// Holds: vexo play "Prepares the chips for decoded pictures."
// Holds: Chips: vexo "`SETUP`: pattern of the decoded pictures"
TEST_F(PlaySetup, WritesExactlyTheRegistersOfEveryModeOnEveryBoardAndStandard) {
  for (const Row& row : Rows()) {
    for (const int standard : {0, 1, 2}) {
      SCOPED_TRACE(std::to_string(row.channels) + " channels, mode " + std::to_string(row.mode) +
                   ", standard " + std::to_string(standard));
      UseBoard(row.channels, standard);
      TW_SetPlaySetup(static_cast<std::uint8_t>(row.mode), 0);
      Expect(Shown() + PathsOf(row.channels) + Source(0x02) + row.after_source);
      EXPECT_EQ(Cycles(), row.cycles);
    }
  }
}

// Holds: Chips: vexo "`SETUP`: pattern of the decoded pictures"
TEST_F(PlaySetup, StopsAfterTheSourceInEveryOtherMode) {
  for (const int channels : {4, 8, 16}) {
    UseBoard(channels);
    for (int mode = 3; mode < 256; ++mode) {
      SCOPED_TRACE(std::to_string(channels) + " channels, mode " + std::to_string(mode));
      Mark();
      TW_SetPlaySetup(static_cast<std::uint8_t>(mode), 0);
      Expect(Shown() + PathsOf(channels) + Source(0x02));
      if (HasFailure()) return;
    }
  }
}

// Holds: vexo play "On 12 channels neither paths nor pattern are written."
TEST_F(PlaySetup, OpensNoPathOnABoardOfAnotherSizeAndStopsAfterTheSource) {
  for (const int channels : {0, 12}) {
    UseBoard(channels);
    for (std::uint8_t mode = 0; mode < 4; ++mode) {
      SCOPED_TRACE(std::to_string(channels) + " channels, mode " + std::to_string(mode));
      Mark();
      TW_SetPlaySetup(mode, 0);
      Expect(Shown() + Source(0x02));
    }
  }
}

// Holds: vexo play "The option is printed and not used."
// Holds: Chips: vexo "`OPTION`: any"
TEST_F(PlaySetup, DoesNotUseItsSecondArgument) {
  for (const Row& row : Rows()) {
    for (const std::uint8_t option : Channels{1, 2, 3, 0x80, 0xFF}) {
      SCOPED_TRACE(std::to_string(row.channels) + " channels, mode " + std::to_string(row.mode) +
                   ", option " + std::to_string(option));
      UseBoard(row.channels);
      TW_SetPlaySetup(static_cast<std::uint8_t>(row.mode), option);
      Expect(Shown() + PathsOf(row.channels) + Source(0x02) + row.after_source);
    }
  }
}

TEST_F(PlaySetup, NeitherLooksAtTheViewNorChangesAnyDisplayState) {
  for (const int channels : {4, 8, 16}) {
    for (const std::uint8_t view : Channels{1, 2}) {
      SCOPED_TRACE(std::to_string(channels) + " channels, view " + std::to_string(view));
      UseBoard(channels);
      g_display.view = view;
      g_display.play_split = 3;
      g_display.live_split = 5;
      g_display.blank_mask = {0x11, 0x22};
      g_playback = {7, 9};
      TW_SetPlaySetup(1, 0);
      Expect(Shown() + PathsOf(channels) + Source(0x02) +
             Rows()
                 .at(channels == 4   ? 1
                     : channels == 8 ? 4
                                     : 7)
                 .after_source);
      EXPECT_EQ(g_display.view, view);
      EXPECT_EQ(g_display.play_split, 3);
      EXPECT_EQ(g_display.live_split, 5);
      EXPECT_EQ(g_display.blank_mask.live, 0x11u);
      EXPECT_EQ(g_display.blank_mask.playback, 0x22u);
      EXPECT_EQ(g_playback.full_picture, 7);
      EXPECT_EQ(g_playback.centred_picture, 9);
    }
  }
}

TEST_F(PlaySetup, LeavesTheSourceAt2OrAt3AsTheTableOfModesSays) {
  struct Case {
    int channels;
    std::array<int, 3> source;  // by mode
  };
  for (const Case& c : {Case{4, {2, 2, 3}}, Case{8, {2, 2, 3}}, Case{16, {2, 2, 2}}}) {
    UseBoard(c.channels);
    for (std::uint8_t mode = 0; mode < 3; ++mode) {
      TW_SetPlaySetup(mode, 0);
      for (int p = 0; p < c.channels / 4; ++p) {
        EXPECT_EQ(Register(p, 1, 0x01), c.source.at(mode)) << c.channels << ", mode " << +mode;
      }
    }
  }
}

TEST_F(PlaySetup, LeavesOverlaysAndDisplayModeOfAFourChannelBoardAloneInMode2) {
  UseBoard(4);
  for (const int reg : {0x12, 0x1A, 0x22, 0x2A, 0x06}) {
    world().board.Poke(0, 1, static_cast<std::uint8_t>(reg), 0x5B);
  }
  TW_SetPlaySetup(2, 0);
  for (const int reg : {0x12, 0x1A, 0x22, 0x2A, 0x06}) EXPECT_EQ(Register(0, 1, reg), 0x5B) << reg;
}

}  // namespace
}  // namespace test
