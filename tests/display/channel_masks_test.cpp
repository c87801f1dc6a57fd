#include "display/channel_masks.h"

#include <array>
#include <string>

#include "VexoCtrlSDK.h"
#include "chip/video_state.h"
#include "display/display_state.h"
#include "tests/display/display_test.h"

namespace test {
namespace {

class ChannelMasks : public DisplayTest, public ::testing::WithParamInterface<int> {
 protected:
  void SetUp() override { UseBoard(GetParam()); }
  bool HasVariant() const { return HasLayouts(GetParam()); }
};

// Holds: vexo pbank show "pbank init and the blank masks of binary commands"
TEST_P(ChannelMasks, AreWrittenChannelByChannelAndKeptForTheView) {
  for (const std::uint32_t mask :
       {0u, 0xFFFFFFFFu, 0x00000001u, 0x00008000u, 0x00005A96u, 0xFFFF0000u}) {
    for (const std::uint8_t view : Channels{1, 2, 3}) {
      SCOPED_TRACE("mask " + std::to_string(mask) + ", view " + std::to_string(view));
      g_display.view = view;
      g_display.blank_mask = {0x11111111u, 0x22222222u};
      g_display.bit0_mask = {0x33333333u, 0x44444444u};
      const bool live = view == 1;

      Scribble(mask + view);
      ReferenceModel model = Model();
      const int result = HasVariant() ? 0 : -1;
      EXPECT_EQ(model.BlankMask(mask), result);
      EXPECT_EQ(TW_SetChannelBlankMask(mask), result);
      ExpectLike(model);
      EXPECT_EQ(g_display.blank_mask.live, HasVariant() && live ? mask : 0x11111111u);
      EXPECT_EQ(g_display.blank_mask.playback, HasVariant() && !live ? mask : 0x22222222u);
      EXPECT_EQ(g_display.bit0_mask.live, 0x33333333u);
      EXPECT_EQ(g_display.bit0_mask.playback, 0x44444444u);

      g_display.blank_mask = {0x11111111u, 0x22222222u};
      Scribble(mask + view + 1);
      model = Model();
      EXPECT_EQ(model.Bit0Mask(mask), result);
      EXPECT_EQ(TW_SetChannelBit0Mask(mask), result);
      ExpectLike(model);
      EXPECT_EQ(g_display.bit0_mask.live, HasVariant() && live ? mask : 0x33333333u);
      EXPECT_EQ(g_display.bit0_mask.playback, HasVariant() && !live ? mask : 0x44444444u);
      EXPECT_EQ(g_display.blank_mask.live, 0x11111111u);
      EXPECT_EQ(g_display.blank_mask.playback, 0x22222222u);
      EXPECT_EQ(DebugText(), "");
    }
  }
}

// Holds: VexoChannelMasksRecord "live_display: 0 channels shown in live display"
TEST_P(ChannelMasks, OfTheRecordAreStoredAppliedByViewAndToTheRecordPath) {
  // At an odd address: the record may come from anywhere in the caller's memory.
  const std::array<std::uint8_t, 13> bytes = {0xEE, 0x01, 0x82, 0x03, 0x84, 0xA5, 0x5A,
                                              0x07, 0x08, 0x39, 0xC6, 0x0B, 0x8C};
  for (const std::uint8_t view : Channels{1, 2, 0, 3}) {
    SCOPED_TRACE(+view);
    g_display.live_mask = 0;
    g_display.record_mask = 0;
    g_display.play_mask = 0;
    g_display.view = view;
    Scribble(view + 5u);
    ReferenceModel model = Model();
    model.ChannelMasks({0x84038201u, 0x08075AA5u, 0x8C0BC639u});
    EXPECT_EQ(TW_SetChannelMaskInfo(bytes.data() + 1), 0);
    ExpectLike(model);
    EXPECT_EQ(g_display.live_mask, 0x84038201u);
    EXPECT_EQ(g_display.record_mask, 0x08075AA5u);
    EXPECT_EQ(g_display.play_mask, 0x8C0BC639u);
    EXPECT_EQ(g_display.view, view);
    EXPECT_EQ(DebugText(), "");
  }
}

TEST_P(ChannelMasks, AreRestoredFromTheDisplayMaskOfTheView) {
  g_display.live_mask = 0xFFFF1234u;
  g_display.play_mask = 0x0000FEDCu;
  for (const std::uint8_t view : Channels{1, 2, 0, 3}) {
    SCOPED_TRACE(+view);
    g_display.view = view;
    Scribble(view + 9u);
    ReferenceModel model = Model();
    EXPECT_EQ(model.RestoreBlank(), HasVariant() ? 0 : -1);
    EXPECT_EQ(TW_RestoreChannelBlankMask(), HasVariant() ? 0 : -1);
    ExpectLike(model);
  }
}

// Holds: VexoChannelMasksRecord "Bit n stands for channel n."
// Holds: VexoChannelMasksRecord "record: 4 channels that are recorded"
TEST_P(ChannelMasks, ApplyTheRecordMaskToEveryChannel) {
  for (const std::uint32_t mask : {0u, 0xFFFFFFFFu, 0x00009C63u}) {
    g_display.record_mask = mask;
    Scribble(mask);
    ReferenceModel model = Model();
    model.RecordMask(mask);
    ApplyRecordMask();
    ExpectLike(model);
  }
}

// ---- The text path's helpers ------------------------------------------------------------------

// Holds: vexo pbank init "Blanks every channel for playback."
// Holds: vexo pbank show "pbank init and the blank masks of binary commands"
TEST_P(ChannelMasks, BlankAllWritesEveryRegisterOfTheBoardTwice) {
  for (const std::uint8_t view : Channels{1, 2}) {
    g_display.view = view;
    g_display.blank_mask = {0x55u, 0xABCD0000u};
    Scribble(view);
    ReferenceModel model = Model();
    model.BlankAll();
    TW_BlankAllChannels();
    ExpectLike(model);
    const std::uint32_t expected = HasVariant() ? AllChannels(GetParam()) : 0xABCD0000u;
    EXPECT_EQ(g_display.blank_mask.playback, expected);
    EXPECT_EQ(g_display.blank_mask.live, 0x55u);
    EXPECT_EQ(g_display.view, view);
  }
}

// Holds: vexo pbank clear "Shows every channel."
TEST_P(ChannelMasks, UnblankAllClearsEveryBlankBitOfTheBoard) {
  for (const std::uint8_t view : Channels{1, 2}) {
    g_display.view = view;
    g_display.blank_mask = {0x55u, 0xABCD1234u};
    Scribble(view);
    ReferenceModel model = Model();
    model.UnblankAll();
    TW_UnblankAllChannels();
    ExpectLike(model);
    EXPECT_EQ(g_display.blank_mask.playback, 0u);
    EXPECT_EQ(g_display.blank_mask.live, 0x55u);
    EXPECT_EQ(g_display.view, view);
  }
}

// Holds: vexo pbank show "Shows a channel and the next one"
TEST_P(ChannelMasks, UnblankPairShowsAChannelAndTheNextOne) {
  for (int n = 0; n < GetParam(); ++n) {
    for (const std::uint32_t blanked : {1u << n, 2u << n, 3u << n, 0xFFFFFFFFu, ~(3u << n), 0u}) {
      SCOPED_TRACE("channel " + std::to_string(n) + ", mask " + std::to_string(blanked));
      g_display.blank_mask = {0xFFFFFFFFu, blanked};
      Scribble(static_cast<unsigned>(n) + blanked);
      ReferenceModel model = Model();
      const std::uint32_t pair = n == 15 ? 0x8000u : 3u << n;  // no board has a channel 16
      const bool any = (blanked & pair) != 0;
      model.UnblankPair(n);
      TW_UnblankChannelPair(static_cast<std::uint16_t>(n));
      ExpectLike(model);
      EXPECT_EQ(g_display.blank_mask.playback, any ? blanked & ~pair : blanked);
      EXPECT_EQ(g_display.blank_mask.live, 0xFFFFFFFFu);
    }
  }
}

TEST_P(ChannelMasks, UnblankPairOfAChannelThatTheBoardLacksDoesNothing) {
  g_display.blank_mask.playback = 0xFFFFFFFFu;
  for (const int n : {GetParam(), GetParam() + 1, 31, 32, 255, 256, 0x101, 0xFFFF}) {
    TW_UnblankChannelPair(static_cast<std::uint16_t>(n));
  }
  EXPECT_EQ(g_display.blank_mask.playback, 0xFFFFFFFFu);
  ExpectUntouched();
}

INSTANTIATE_TEST_SUITE_P(Boards, ChannelMasks, ::testing::Values(4, 8, 12, 16),
                         [](const auto& tested) {
                           return std::to_string(tested.param) + "Channels";
                         });

// ---- Single cases -----------------------------------------------------------------------------

class ChannelMaskEdges : public DisplayTest {};

TEST_F(ChannelMaskEdges, AMaskWithOnlyBit16ChangesNoChannelOfASixteenChannelBoard) {
  UseBoard(16);
  EXPECT_EQ(TW_SetChannelBlankMask(0), 0);
  EXPECT_EQ(TW_SetChannelBit0Mask(0), 0);
  const RegisterImage before = Image();
  EXPECT_EQ(TW_SetChannelBlankMask(0x10000), 0);
  EXPECT_EQ(TW_SetChannelBit0Mask(0x10000), 0);
  EXPECT_EQ(Image(), before);
  EXPECT_EQ(g_display.blank_mask.live, 0x10000u);
  EXPECT_EQ(g_display.bit0_mask.live, 0x10000u);
}

TEST_F(ChannelMaskEdges, InPlaybackViewThePlaybackDisplayMaskIsApplied) {
  UseBoard(4);
  g_display.view = 2;
  const std::vector<std::uint8_t> record = {0x0F, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0x05, 0, 0, 0};
  EXPECT_EQ(TW_SetChannelMaskInfo(record.data()), 0);
  for (int n = 0; n < 4; ++n) {
    EXPECT_EQ(Register(0, 1, 0x11 + 8 * n) & kBlankBit, n % 2 == 0 ? 0 : kBlankBit) << n;
  }
  EXPECT_EQ(g_display.blank_mask.playback, ~0x05u);
  EXPECT_EQ(g_display.blank_mask.live, 0u);
}

TEST_F(ChannelMaskEdges, ANullRecordIsRefusedInSilence) {
  UseBoard(16);
  g_display.live_mask = 5;
  EXPECT_EQ(TW_SetChannelMaskInfo(nullptr), -5);
  ExpectUntouched();
  EXPECT_EQ(g_display.live_mask, 5u);
}

TEST_F(ChannelMaskEdges, BoardsWithoutChannelsAreRefusedOrLeftAlone) {
  UseBoard(0);
  g_display.blank_mask = {7, 7};
  g_display.bit0_mask = {7, 7};
  const std::vector<std::uint8_t> record(12, 0);
  EXPECT_EQ(TW_SetChannelBlankMask(1), -1);
  EXPECT_EQ(TW_SetChannelBit0Mask(1), -1);
  EXPECT_EQ(TW_RestoreChannelBlankMask(), -1);
  EXPECT_EQ(TW_SetChannelMaskInfo(record.data()), 0);
  TW_UnblankChannelPair(0);
  ExpectUntouched();
  EXPECT_EQ(g_display.blank_mask.live, 7u);
  EXPECT_EQ(g_display.blank_mask.playback, 7u);
  EXPECT_EQ(g_display.bit0_mask.live, 7u);
  TW_BlankAllChannels();
  EXPECT_EQ(g_display.blank_mask.playback, 7u);
  TW_UnblankAllChannels();
  EXPECT_EQ(g_display.blank_mask.playback, 0u);
}

TEST_F(ChannelMaskEdges, ThePairOfAFourChannelBoardsLastChannelReachesForSlave1) {
  UseBoard(4);
  g_display.blank_mask.playback = 0xF;
  TW_UnblankChannelPair(3);
  const std::vector<Access> accesses = Accesses();
  ASSERT_EQ(accesses.size(), 4u);
  EXPECT_EQ(accesses[2], R(kSlave1, 1, 0x11, 0xFF));  // nobody answers
  EXPECT_EQ(accesses[3], W(kSlave1, 1, 0x11, 0xFB));
  EXPECT_EQ(g_display.blank_mask.playback, 0x7u);
}

TEST_F(ChannelMaskEdges, ThePairOfAnEightChannelBoardsLastChannelReachesForSlave2) {
  UseBoard(8);
  g_display.blank_mask.playback = 0x100;  // the bit past the last channel counts
  TW_UnblankChannelPair(7);
  const std::vector<Access> accesses = Accesses();
  ASSERT_EQ(accesses.size(), 4u);
  EXPECT_EQ(accesses[1].reg, 0x29);
  EXPECT_EQ(accesses[3], W(kSlave2, 1, 0x11, 0xFB));
  EXPECT_EQ(g_display.blank_mask.playback, 0u);
}

// Holds: vexo pbank show "What comes after channel 15 is channel 12."
TEST_F(ChannelMaskEdges, ThePairOfASixteenChannelBoardsLastChannelTouchesChannel12) {
  UseBoard(16);
  world().board.Poke(3, 1, 0x11, 0xFF);
  world().board.Poke(3, 1, 0x29, 0xFF);
  g_display.blank_mask.playback = 0xFFFF;
  TW_UnblankChannelPair(15);
  EXPECT_EQ(Register(3, 1, 0x29), 0xFB);
  EXPECT_EQ(Register(3, 1, 0x11), 0xFB);
  EXPECT_EQ(g_display.blank_mask.playback, 0x7FFFu);  // channel 12 still counts as blanked
}

TEST_F(ChannelMaskEdges, AMaskBitOfAChannelThatNoBoardHasShowsNothingAndStays) {
  UseBoard(16);
  g_display.blank_mask.playback = 0xFFFF0000u;
  TW_UnblankChannelPair(15);
  ExpectUntouched();
  EXPECT_EQ(g_display.blank_mask.playback, 0xFFFF0000u);
  g_display.blank_mask.playback = 0xFFFF8000u;
  TW_UnblankChannelPair(15);
  EXPECT_EQ(Accesses().size(), 4u);
  EXPECT_EQ(g_display.blank_mask.playback, 0xFFFF0000u);
}

// ---- Through the commands -----------------------------------------------------------------------

// Holds: VexoCtrlSDK.h "All multi-byte fields are little-endian."
// Holds: VexoMaskRecord "Read: all 4 bytes."
TEST_F(ChannelMaskEdges, TheCommandsTakeTheirMasksLittleEndian) {
  UseBoard(16);
  EXPECT_EQ(Command(VEXO_CMD_BLANK_MASK, {0x78, 0x56, 0x34, 0x12}), 0);
  EXPECT_EQ(g_display.blank_mask.live, 0x12345678u);
  EXPECT_EQ(Command(VEXO_CMD_BIT0_MASK, {0x21, 0x43, 0x65, 0x87}), 0);
  EXPECT_EQ(g_display.bit0_mask.live, 0x87654321u);
  EXPECT_EQ(Command(VEXO_CMD_CHANNEL_MASKS, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}), 0);
  EXPECT_EQ(g_display.live_mask, 0x04030201u);
  EXPECT_EQ(g_display.record_mask, 0x08070605u);
  EXPECT_EQ(g_display.play_mask, 0x0C0B0A09u);
  EXPECT_EQ(g_display.blank_mask.live, ~0x04030201u);
  EXPECT_EQ(Command(VEXO_CMD_BLANK_MASK, {0, 0, 0, 0}), 0);
  EXPECT_EQ(CommandNull(VEXO_CMD_RESTORE_BLANK), 0);
  EXPECT_EQ(g_display.blank_mask.live, ~0x04030201u);
}

TEST_F(ChannelMaskEdges, TheMaskCommandsHandThroughTheRefusalOfATwelveChannelBoard) {
  UseBoard(12);
  EXPECT_EQ(Command(VEXO_CMD_BLANK_MASK, {1}), -1);
  EXPECT_EQ(Command(VEXO_CMD_BIT0_MASK, {1}), -1);
  EXPECT_EQ(CommandNull(VEXO_CMD_RESTORE_BLANK), -1);
  EXPECT_EQ(Cycles(), 0u);
}

}  // namespace
}  // namespace test
