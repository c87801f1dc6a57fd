// The text path's 16-bit masks, written to the chips as they are.
#include <string>

#include "chip/video_state.h"
#include "display/channel_masks.h"
#include "display/display_state.h"
#include "tests/display/display_test.h"

namespace test {
namespace {

// Everything else that the display room keeps.
struct Kept {
  ViewMasks blank = {0x11112222u, 0x33334444u};
  ViewMasks bit0 = {0x55556666u, 0x77778888u};
};

class ChipMasks : public DisplayTest, public ::testing::WithParamInterface<int> {
 protected:
  void SetUp() override {
    UseBoard(GetParam());
    g_display.blank_mask = Kept().blank;
    g_display.bit0_mask = Kept().bit0;
    g_display.live_mask = 0xA1;
    g_display.record_mask = 0xA2;
    g_display.play_mask = 0xA3;
  }

  // Chips that the mask writers go to.
  int Visited() const { return GetParam() == 4 ? 1 : GetParam() == 16 ? 4 : 2; }

  void ExpectNothingElseKept() {
    EXPECT_EQ(g_display.blank_mask.live, Kept().blank.live);
    EXPECT_EQ(g_display.blank_mask.playback, Kept().blank.playback);
    EXPECT_EQ(g_display.bit0_mask.live, Kept().bit0.live);
    EXPECT_EQ(g_display.bit0_mask.playback, Kept().bit0.playback);
    EXPECT_EQ(g_display.live_mask, 0xA1u);
    EXPECT_EQ(g_display.record_mask, 0xA2u);
    EXPECT_EQ(g_display.play_mask, 0xA3u);
    EXPECT_EQ(DebugText(), "");
  }

  static std::vector<unsigned> Masks() {
    std::vector<unsigned> masks = {0x0000, 0xFFFF, 0x5A96, 0xA569, 0x0021, 0x000F, 0xFFF0};
    for (unsigned bit = 0; bit < 16; ++bit) {
      masks.push_back(1u << bit);
      masks.push_back(0xFFFFu & ~(1u << bit));
    }
    return masks;
  }
};

// Holds: vexo loss "Blanks the channels of the mask and shows the others."
// Holds: vexo pbank show "pbank init and the blank masks of binary commands"
TEST_P(ChipMasks, BlankWriterReadsAndWritesEveryPositionOfEveryChipInOrder) {
  g_display.bit6_mask = 0x1234;
  unsigned seed = 1;
  for (const unsigned mask : Masks()) {
    for (const std::uint8_t view : Channels{1, 2}) {
      SCOPED_TRACE(mask);
      g_display.view = view;
      Scribble(++seed);
      ReferenceModel model = Model();
      model.ChipMask(mask, kBlankBit);
      TW_SetBlankMaskByChip(static_cast<std::uint16_t>(mask));
      ExpectLike(model);
      ExpectNothingElseKept();
      EXPECT_EQ(g_display.bit6_mask, 0x1234) << "the blank mask is kept nowhere";
      if (HasFailure()) return;
    }
  }
}

TEST_P(ChipMasks, Bit6WriterDoesTheSameWithBit6AndKeepsItsMask) {
  unsigned seed = 100;
  for (const unsigned mask : Masks()) {
    SCOPED_TRACE(mask);
    g_display.bit6_mask = static_cast<std::uint16_t>(~mask & 0xFFFF);
    Scribble(++seed);
    ReferenceModel model = Model();
    model.ChipMask(mask, kFreezeBit);
    TW_SetBit6MaskByChip(static_cast<std::uint16_t>(mask));
    ExpectLike(model);
    ExpectNothingElseKept();
    EXPECT_EQ(g_display.bit6_mask, mask) << "all sixteen bits, those of absent chips as well";
    if (HasFailure()) return;
  }
}

TEST_P(ChipMasks, KeepTheOtherSevenBitsWhateverTheyAre) {
  for (unsigned old = 0; old < 256; ++old) {
    SCOPED_TRACE(old);
    for (unsigned p = 0; p < 4; ++p) {
      for (unsigned i = 0; i < 4; ++i) {
        world().board.Poke(p, 1, static_cast<std::uint8_t>(0x11 + 8 * i),
                           static_cast<std::uint8_t>(old));
      }
    }
    const int fitted = GetParam() / 4;
    TW_SetBlankMaskByChip(0xFFFF);
    TW_SetBit6MaskByChip(0x0000);
    for (int p = 0; p < fitted; ++p) {
      const bool visited = p < Visited();
      for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(Register(p, 1, 0x11 + 8 * i), visited ? (old | 0x04u) & 0xBFu : old) << p << i;
      }
    }
    TW_SetBlankMaskByChip(0x0000);
    TW_SetBit6MaskByChip(0xFFFF);
    for (int p = 0; p < fitted; ++p) {
      const bool visited = p < Visited();
      for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(Register(p, 1, 0x11 + 8 * i), visited ? (old | 0x40u) & 0xFBu : old) << p << i;
      }
    }
    if (HasFailure()) return;
  }
}

INSTANTIATE_TEST_SUITE_P(Boards, ChipMasks, ::testing::Values(0, 4, 8, 12, 16),
                         [](const ::testing::TestParamInfo<int>& board) {
                           return std::to_string(board.param) + "Channels";
                         });

class ChipMasksEdges : public DisplayTest {};

TEST_F(ChipMasksEdges, Mask0x0021BlanksChannels0And5OfAnEightChannelBoardAlone) {
  UseBoard(8);
  for (unsigned p = 0; p < 2; ++p) {
    for (std::uint8_t i = 0; i < 4; ++i) {
      // The two that are to be blanked are shown, the other six are blanked.
      const bool named = 4 * p + i == 0 || 4 * p + i == 5;
      world().board.Poke(p, 1, static_cast<std::uint8_t>(0x11 + 8 * i), named ? 0xA1 : 0xA5);
    }
  }
  Mark();
  TW_SetBlankMaskByChip(0x0021);
  EXPECT_EQ(Accesses(),
            (std::vector<Access>{
                R(kMaster, 1, 0x11, 0xA1), W(kMaster, 1, 0x11, 0xA5), R(kSlave1, 1, 0x11, 0xA5),
                W(kSlave1, 1, 0x11, 0xA1), R(kMaster, 1, 0x19, 0xA5), W(kMaster, 1, 0x19, 0xA1),
                R(kSlave1, 1, 0x19, 0xA1), W(kSlave1, 1, 0x19, 0xA5), R(kMaster, 1, 0x21, 0xA5),
                W(kMaster, 1, 0x21, 0xA1), R(kSlave1, 1, 0x21, 0xA5), W(kSlave1, 1, 0x21, 0xA1),
                R(kMaster, 1, 0x29, 0xA5), W(kMaster, 1, 0x29, 0xA1), R(kSlave1, 1, 0x29, 0xA5),
                W(kSlave1, 1, 0x29, 0xA1)}));
}

// Holds: Chips: vexo "Of 12 channels every mask reaches 0 to 7 alone."
// Holds: vexo loss "Of 12 channels it reaches 0 to 7 alone."
TEST_F(ChipMasksEdges, TwelveChannelsLeaveSlave2AsItWas) {
  UseBoard(12);
  const RegisterImage before = Image();
  TW_SetBlankMaskByChip(0xFFFF);
  TW_SetBit6MaskByChip(0xFFFF);
  EXPECT_EQ(Image()[2], before[2]);
  for (int p = 0; p < 2; ++p) {
    for (int i = 0; i < 4; ++i) EXPECT_EQ(Register(p, 1, 0x11 + 8 * i) & 0x44, 0x44) << p << i;
  }
}

TEST_F(ChipMasksEdges, AnyUnknownChannelCountVisitsMasterAndSlave1) {
  UseBoard(16);
  for (int channels = 0; channels < 256; ++channels) {
    if (channels == 4 || channels == 16) continue;
    g_video.max_channel = static_cast<std::uint8_t>(channels);
    for (const int bit : {kBlankBit, kFreezeBit}) {
      SCOPED_TRACE(std::to_string(channels) + ", bit " + std::to_string(bit));
      Mark();
      ReferenceModel model = Model();
      model.channels = channels;
      model.ChipMask(0x8421, bit);
      if (bit == kBlankBit) {
        TW_SetBlankMaskByChip(0x8421);
      } else {
        TW_SetBit6MaskByChip(0x8421);
      }
      ExpectLike(model);
    }
  }
}

// Holds: vexo frz "Freezes the channels of the first mask"
TEST_F(ChipMasksEdges, TheBit6MaskIsTheFreezeOfTheChannels) {
  UseBoard(16);
  TW_SetBit6MaskByChip(0x8001);
  for (int n = 0; n < 16; ++n) {
    EXPECT_EQ(Register(n / 4, 1, 0x11 + 8 * (n % 4)) & 0x40, n == 0 || n == 15 ? 0x40 : 0) << n;
  }
  TW_SetBit6MaskByChip(0x0002);
  EXPECT_EQ(g_display.bit6_mask, 0x0002) << "the new mask replaces the old one";
  for (int n = 0; n < 16; ++n) {
    EXPECT_EQ(Register(n / 4, 1, 0x11 + 8 * (n % 4)) & 0x40, n == 1 ? 0x40 : 0) << n;
  }
}

}  // namespace
}  // namespace test
