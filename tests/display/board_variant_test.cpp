#include "display/board_variant.h"

#include <gtest/gtest.h>

namespace {

TEST(BoardVariant, DescribesBoardsOf4And8And16Channels) {
  struct Row {
    std::uint8_t channels;
    int chips;
    int highest_split_mode;
    int all_channels;
  };
  for (const Row& row : {Row{4, 1, 1, 0xF}, Row{8, 2, 4, 0xFF}, Row{16, 4, 6, 0xFFFF}}) {
    SCOPED_TRACE(+row.channels);
    const BoardVariant* board = FindBoardVariant(row.channels);
    ASSERT_NE(board, nullptr);
    EXPECT_EQ(board->channels, row.channels);
    EXPECT_EQ(board->chips, row.chips);
    EXPECT_EQ(board->highest_split_mode, row.highest_split_mode);
    EXPECT_EQ(board->all_channels, row.all_channels);
  }
}

TEST(BoardVariant, DoesNotExistForAnyOtherChannelCount) {
  for (unsigned count = 0; count < 256; ++count) {
    if (count == 4 || count == 8 || count == 16) continue;
    EXPECT_EQ(FindBoardVariant(static_cast<std::uint8_t>(count)), nullptr) << count;
  }
}

}  // namespace
