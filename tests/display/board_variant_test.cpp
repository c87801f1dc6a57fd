#include "display/board_variant.h"

#include <gtest/gtest.h>

#include "tests/model/board.h"

namespace {

TEST(BoardVariant, DescribesBoardsOf4And8And16Channels) {
  for (const test::Variant& row : test::kVariants) {
    SCOPED_TRACE(row.channels);
    const BoardVariant* board = FindBoardVariant(static_cast<std::uint8_t>(row.channels));
    ASSERT_NE(board, nullptr);
    EXPECT_EQ(board->channels, row.channels);
    EXPECT_EQ(board->chips, row.channels / 4);
    EXPECT_EQ(board->highest_split_mode, row.highest_mode);
    EXPECT_EQ(board->all_channels, test::AllChannels(row.channels));
  }
}

TEST(BoardVariant, DoesNotExistForAnyOtherChannelCount) {
  for (unsigned count = 0; count < 256; ++count) {
    if (test::HasLayouts(static_cast<int>(count))) continue;
    EXPECT_EQ(FindBoardVariant(static_cast<std::uint8_t>(count)), nullptr) << count;
  }
}

}  // namespace
