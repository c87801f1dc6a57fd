#include "display/split_layout.h"

#include <array>

#include "tests/model/display_model.h"

namespace test {
namespace {

struct Row {
  int large_code;
  int large_scale;
  int small_code;
  int small_scale;
  bool has_large;
};

// By mode.
constexpr std::array<Row, 7> kRows = {{{0x0, 0, 0x0, 0, false},
                                       {0x1, 1, 0x1, 1, false},
                                       {0x0, 2, 0xA, 4, true},
                                       {0x0, 3, 0xF, 6, true},
                                       {0xA, 4, 0xA, 4, false},
                                       {0x5, 1, 0xF, 6, true},
                                       {0xF, 6, 0xF, 6, false}}};

class SplitLayout : public DisplayTest {};

TEST_F(SplitLayout, HasTheCodesAndScalesOfEveryModesWindows) {
  for (std::uint8_t mode = 0; mode < 7; ++mode) {
    SCOPED_TRACE(+mode);
    const Row& row = kRows.at(mode);
    EXPECT_EQ(HasLargeWindow(mode), row.has_large);
    EXPECT_EQ(ScaleOfWindow(mode, 0).layout, row.large_code);
    EXPECT_EQ(ScaleOfWindow(mode, 0).scale, row.large_scale);
    for (std::uint8_t window = 1; window < kWindows.at(mode); ++window) {
      EXPECT_EQ(ScaleOfWindow(mode, window).layout, row.small_code);
      EXPECT_EQ(ScaleOfWindow(mode, window).scale, row.small_scale);
    }
  }
}

TEST_F(SplitLayout, ScalesEveryChannelOfTheBoard) {
  for (const int channels : {4, 8, 12, 16}) {
    UseBoard(channels);
    for (std::uint8_t mode = 0; mode < 7; ++mode) {
      SCOPED_TRACE(std::to_string(channels) + " channels, mode " + std::to_string(mode));
      Scribble(mode + 1u);
      DisplayModel model = Model();
      for (int n = 0; n < channels; ++n) model.Scale(n, kRows.at(mode).small_scale);
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

}  // namespace
}  // namespace test
