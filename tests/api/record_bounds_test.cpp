// The records of layout commands, no longer than the public header says is read.
#include <numeric>

#include "VexoCtrlSDK.h"
#include "display/display_state.h"
#include "harness/host.h"
#include "tests/api/fenced_record.h"
#include "tests/model/board.h"
#include "tests/model/windows.h"
#include "tests/support/library_test.h"

namespace {

using Bytes = std::vector<std::uint8_t>;
using Side = test::FencedRecord::Side;

constexpr int kBoards[] = {4, 8, 12, 16};
constexpr Side kSides[] = {Side::Left, Side::Right};

// Past 6 there is no mode, and no window.
const Bytes kModes = {0, 1, 2, 3, 4, 5, 6, 7, 8, 0x80, 0xFF};

std::size_t WindowsOf(std::uint8_t mode) {
  return mode < test::kWindows.size() ? static_cast<std::size_t>(test::kWindows[mode]) : 0;
}

// Whether a board lays a mode out.
bool Has(int channels, std::uint8_t mode) { return mode <= test::HighestMode(channels); }

// Channel lists of a length that lead a cursor to the end, nowhere, and to places in between.
std::vector<Bytes> ListsOf(std::size_t length) {
  std::vector<Bytes> lists;
  for (unsigned first = 0; first < 17; first += 3) {
    Bytes list(length);
    std::iota(list.begin(), list.end(), static_cast<std::uint8_t>(first));
    lists.push_back(list);
    for (std::uint8_t& channel : list) channel %= 16;
    lists.push_back(list);
    lists.emplace_back(list.rbegin(), list.rend());
    lists.emplace_back(length, static_cast<std::uint8_t>(first));
  }
  lists.emplace_back(length, 0xFF);
  return lists;
}

class RecordBounds : public test::LibraryTest {
 protected:
  void Board(int channels) {
    harness::Restart();
    PretendBoard(channels);
    world().trace.SetEnabled(false);
  }

  // A command on a record of `head` and each list of `length` bytes, against either fence.
  void RunOnEachList(std::uint32_t code, const Bytes& head, std::size_t length, std::uint8_t view,
                     int result) {
    for (const Bytes& list : ListsOf(length)) {
      Bytes record = head;
      record.insert(record.end(), list.begin(), list.end());
      for (const Side side : kSides) {
        g_display.view = view;
        EXPECT_EQ(VEXOAPI_CommandProc(code, fenced_.Place(record, side)), result);
        EXPECT_EQ(fenced_.Content(), record);
        EXPECT_TRUE(fenced_.Intact());
        ++runs_;
      }
    }
  }

  void TearDown() override { EXPECT_GT(runs_, 0u); }

  test::FencedRecord fenced_;
  unsigned runs_ = 0;
};

// Holds: VexoCtrlSDK.h "Reserved bytes are neither read nor written."
// Holds: VexoSplitRecord "VEXO_CMD_LIVE_SPLIT (reads byte 4"
TEST_F(RecordBounds, LiveSplitReadsOneByteAWindow) {
  for (const int channels : kBoards) {
    Board(channels);
    for (const std::uint8_t mode : kModes) {
      SCOPED_TRACE(testing::Message() << channels << " channels, mode " << +mode);
      const int result = mode > 6 ? -5 : Has(channels, mode) ? 0 : -1;
      RunOnEachList(VEXO_CMD_LIVE_SPLIT, {9, 9, 9, 9, mode, 9}, WindowsOf(mode), kViewLive, result);
    }
  }
}

// Holds: VexoLiveModeRecord "Read: byte 4"
TEST_F(RecordBounds, LiveModeReadsOneByteAWindow) {
  for (const int channels : kBoards) {
    Board(channels);
    for (const std::uint8_t mode : kModes) {
      SCOPED_TRACE(testing::Message() << channels << " channels, mode " << +mode);
      RunOnEachList(VEXO_CMD_LIVE_MODE, {9, 9, 9, 9, mode}, WindowsOf(mode), kViewPlayback, 0);
    }
  }
}

// Holds: VexoSplitRecord "VEXO_CMD_LIVE_SPLIT (reads byte 4"
TEST_F(RecordBounds, PlaySplitReadsOneByteAWindowAndForACentredPictureOneAChannel) {
  for (const int channels : kBoards) {
    Board(channels);
    for (const std::uint8_t mode : kModes) {
      for (const std::uint8_t option : Bytes{0, 1}) {
        SCOPED_TRACE(testing::Message()
                     << channels << " channels, mode " << +mode << ", option " << +option);
        const bool refused = mode == VEXO_SPLIT_6 || mode == VEXO_SPLIT_8 || mode == VEXO_SPLIT_13;
        const int result = mode > 6 || refused ? -5 : Has(channels, mode) ? 0 : -1;
        const bool centred = mode == VEXO_SPLIT_FULL && option == 0;
        RunOnEachList(VEXO_CMD_PLAY_SPLIT, {9, 9, 9, 9, mode, option},
                      centred ? static_cast<std::size_t>(channels) : WindowsOf(mode), kViewPlayback,
                      result);
      }
    }
  }
}

// Holds: VexoPlayModeRecord "Read: byte 5"
TEST_F(RecordBounds, PlayModeReadsOneByteAWindowAndForACentredPictureOneAChannel) {
  for (const int channels : kBoards) {
    Board(channels);
    for (const std::uint8_t mode : kModes) {
      SCOPED_TRACE(testing::Message() << channels << " channels, mode " << +mode);
      RunOnEachList(VEXO_CMD_PLAY_MODE, {9, 9, 9, 9, 9, mode},
                    mode == VEXO_SPLIT_FULL ? static_cast<std::size_t>(channels) : WindowsOf(mode),
                    kViewLive, channels == 12 ? -8 : 0);
    }
  }
}

// Holds: VexoMotionMaskRecord "Read: all 26 bytes (byte 0 alone when the channel"
TEST_F(RecordBounds, MotionMasksOfARefusedChannelReadItsNumberAlone) {
  for (const int channels : kBoards) {
    Board(channels);
    const Bytes record = {static_cast<std::uint8_t>(channels)};
    for (const std::uint32_t code : {VEXO_CMD_MOTION_MASK, VEXO_CMD_MOTION_MASK_PREVIEW}) {
      for (const Side side : kSides) {
        EXPECT_EQ(VEXOAPI_CommandProc(code, fenced_.Place(record, side)), -5);
        EXPECT_EQ(fenced_.Content(), record);
        EXPECT_TRUE(fenced_.Intact());
        ++runs_;
      }
    }
  }
}

// ---- The fence itself: without it all of the above would prove nothing -----------------------

std::uint8_t ReadAt(const volatile std::uint8_t* address) { return *address; }

TEST(FencedRecordDeathTest, StopsAReadBeyondEitherEnd) {
  test::FencedRecord fenced;
  std::uint8_t* record = fenced.Place({1, 2, 3}, Side::Right);
  EXPECT_EQ(ReadAt(record + 2), 3);
  EXPECT_DEATH(ReadAt(record + 3), "");
  record = fenced.Place({1, 2, 3}, Side::Left);
  EXPECT_EQ(ReadAt(record), 1);
  EXPECT_DEATH(ReadAt(record - 1), "");
}

TEST(FencedRecord, NoticesAWriteBesideTheRecord) {
  for (const Side side : kSides) {
    test::FencedRecord fenced;
    std::uint8_t* record = fenced.Place({1, 2, 3}, side);
    EXPECT_TRUE(fenced.Intact());  // opens the page
    record[0] = 0;
    EXPECT_TRUE(fenced.Intact());
    EXPECT_EQ(fenced.Content(), (Bytes{0, 2, 3}));
    (side == Side::Left ? record[3] : record[-1]) = 0;
    EXPECT_FALSE(fenced.Intact());
  }
}

}  // namespace
