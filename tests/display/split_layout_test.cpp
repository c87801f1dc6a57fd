#include "display/split_layout.h"

#include <string>

#include "tests/display/display_test.h"

namespace test {
namespace {

class SplitLayout : public DisplayTest {};

TEST_F(SplitLayout, HasTheCodesAndScalesOfEveryModesWindows) {
  for (std::uint8_t mode = 0; mode < 7; ++mode) {
    SCOPED_TRACE(+mode);
    EXPECT_EQ(HasLargeWindow(mode), IsLargeAndSmall(mode));
    for (std::uint8_t window = 0; window < kWindows.at(mode); ++window) {
      EXPECT_EQ(ScaleOfWindow(mode, window).layout, ScalingOf(mode, window).code);
      EXPECT_EQ(ScaleOfWindow(mode, window).scale, ScalingOf(mode, window).scale);
    }
  }
}

TEST_F(SplitLayout, ScalesEveryChannelOfTheBoard) {
  for (const int channels : {4, 8, 12, 16}) {
    UseBoard(channels);
    for (std::uint8_t mode = 0; mode < 7; ++mode) {
      SCOPED_TRACE(std::to_string(channels) + " channels, mode " + std::to_string(mode));
      Scribble(mode + 1u);
      ReferenceModel model = Model();
      for (int n = 0; n < channels; ++n) model.Scale(n, ScalingOf(mode, 1).scale);
      ScaleEveryChannel(mode);
      ExpectLike(model);
    }
  }
}

TEST_F(SplitLayout, WritesTheFourPositionsOnAllChipsAtOnce) {
  UseBoard(16);
  WriteLayoutCodesToAll(0);
  WriteLayoutCodesToAll(1);
  EXPECT_EQ(Accesses(), (std::vector<Access>{W(kAll, 0, 0x80, 0x00), W(kAll, 0, 0x90, 0x40),
                                             W(kAll, 0, 0xA0, 0x80), W(kAll, 0, 0xB0, 0xC0),
                                             W(kAll, 0, 0x80, 0x01), W(kAll, 0, 0x90, 0x41),
                                             W(kAll, 0, 0xA0, 0x81), W(kAll, 0, 0xB0, 0xC1)}));
}

TEST_F(SplitLayout, WritesOneChannelsCodeOnItsChip) {
  UseBoard(16);
  WriteLayoutCode(0, 0xA);
  WriteLayoutCode(7, 0xF);
  WriteLayoutCode(14, 0x5);
  EXPECT_EQ(Accesses(), (std::vector<Access>{W(kMaster, 0, 0x80, 0x0A), W(kSlave1, 0, 0xB0, 0xCF),
                                             W(kSlave3, 0, 0xA0, 0x85)}));
}

TEST_F(SplitLayout, CountsToChannel0AroundABoardWithoutChannels) {
  UseBoard(0);
  EXPECT_EQ(ChannelAfter(5, 3), 0);
}

}  // namespace
}  // namespace test
