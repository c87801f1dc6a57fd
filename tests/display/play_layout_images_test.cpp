// Every playback layout of every board: all accesses in their order, all registers, the pause and
// the state afterwards, against the model; and the bytes of a few told once more by hand.
#include <algorithm>
#include <random>
#include <string>

#include "display/display_state.h"
#include "display/play_split.h"
#include "display/window_tables.h"
#include "tests/display/play_test.h"

namespace test {
namespace {

// Entries of a list that are read: one a window, or one a channel for the centred picture.
std::size_t EntriesOf(int channels, int mode, int option) {
  if (mode == 0 && option == 0) return static_cast<std::size_t>(std::max(channels, 4));
  return static_cast<std::size_t>(kWindows.at(static_cast<std::size_t>(mode)));
}

// Lists of exactly the entries that are read, with every turn that the walks can take.
std::vector<Channels> ListsFor(int channels, std::size_t entries) {
  const auto count = static_cast<std::size_t>(channels);
  const auto from = [&](std::size_t first, std::size_t step) {
    Channels list;
    for (std::size_t k = 0; k < entries; ++k) {
      list.push_back(static_cast<std::uint8_t>(first + step * k));
    }
    return list;
  };
  std::vector<Channels> lists = {from(0, 1),
                                 from(1, 1),
                                 from(0, 2),
                                 from(1, 3),
                                 from(count - 1, 1),
                                 from(count, 1),
                                 from(9, 1),
                                 Channels(entries, 0xFF),
                                 Channels(entries, static_cast<std::uint8_t>(channels)),
                                 Channels(entries, 0),
                                 Channels(entries, 2)};
  if (count >= entries) lists.push_back(from(count - entries, 1));
  Channels descending = from(0, 1);
  std::reverse(descending.begin(), descending.end());
  lists.push_back(descending);
  for (const std::size_t empty : {std::size_t{0}, entries / 2, entries - 1}) {
    Channels list = from(0, 1);
    list.at(empty) = 0xFF;
    lists.push_back(list);
    list.at(empty) = static_cast<std::uint8_t>(channels);  // the first number that is no channel
    lists.push_back(list);
  }
  for (std::size_t given = 1; given < 4 && given < entries; ++given) {  // partially filled
    Channels list = from(0, 1);
    std::fill(list.begin() + static_cast<std::ptrdiff_t>(given), list.end(), std::uint8_t{0xFF});
    lists.push_back(list);
  }
  Channels pairs;  // each channel twice
  for (std::size_t k = 0; k < entries; ++k) pairs.push_back(static_cast<std::uint8_t>(k / 2));
  lists.push_back(pairs);
  Channels swapped = from(0, 1);
  if (entries > 2) std::swap(swapped[1], swapped[2]);
  lists.push_back(swapped);
  Channels wrapped = from(9, 1);  // 9, 10, ... 15, 0, 1
  for (std::uint8_t& entry : wrapped) entry %= 16;
  lists.push_back(wrapped);
  if (entries >= 9) {
    wrapped[8] = 0;  // 9, 10, ... 15, 0, 0
    lists.push_back(wrapped);
    wrapped[7] = 0xFF;
    lists.push_back(wrapped);
    wrapped[7] = 1;
    lists.push_back(wrapped);
    wrapped[0] = 8;  // no second page
    lists.push_back(wrapped);
  }
  return lists;
}

std::string Text(int mode, int option, const Channels& list) {
  std::string text = "mode " + std::to_string(mode) + ", option " + std::to_string(option);
  for (const std::uint8_t entry : list) text += " " + std::to_string(entry);
  return text;
}

struct Request {
  int mode;
  int option;
};

std::vector<Request> RequestsOf(int channels) {
  std::vector<Request> requests = {{0, 0}, {0, 1}, {0, 0xFF}};
  for (int mode = 1; mode <= HighestMode(channels); ++mode) requests.push_back({mode, 0});
  requests.push_back({1, 1});  // an option that nothing reads
  return requests;
}

class PlayLayoutImages : public PlayTest, public ::testing::WithParamInterface<BoardCase> {
 protected:
  void SetUp() override { UsePlayback(Count(), GetParam().standard); }
  int Count() const { return GetParam().channels; }

  void RunVariant(const Request& request, const Channels& list) {
    SCOPED_TRACE(Text(request.mode, request.option, list));
    g_display.play_split = 7;
    ReferenceModel model = Begin();
    ASSERT_EQ(model.PlayVariant(request.mode, request.option, list), 0);
    EXPECT_EQ(CallPlaySplit(Count(), request.mode, request.option, list), 0);
    ExpectPlayed(model);
  }
  void RunEntry(const Request& request, const Channels& list) {
    SCOPED_TRACE(Text(request.mode, request.option, list));
    g_display.play_split = 7;
    ReferenceModel model = Begin();
    const int expected = model.PlaySplit(request.mode, request.option, &list);
    EXPECT_EQ(TW_SetPlaySplitMode(static_cast<std::uint8_t>(request.mode),
                                  static_cast<std::uint8_t>(request.option), list.data()),
              expected);
    ExpectPlayed(model);
  }
};

TEST_P(PlayLayoutImages, OfTheVariantFollowItsStepsForEveryModeAndKindOfList) {
  for (const Request& request : RequestsOf(Count())) {
    for (const Channels& list :
         ListsFor(Count(), EntriesOf(Count(), request.mode, request.option))) {
      RunVariant(request, list);
      if (HasFailure()) return;
    }
  }
}

TEST_P(PlayLayoutImages, OfTheEntryFollowItsStepsForEveryModeAndKindOfList) {
  for (const Request& request : RequestsOf(Count())) {
    for (const Channels& list :
         ListsFor(Count(), EntriesOf(Count(), request.mode, request.option))) {
      RunEntry(request, list);
      if (HasFailure()) return;
    }
  }
}

TEST_P(PlayLayoutImages, OfTheVariantFollowItsStepsForListsByChance) {
  std::mt19937 random(21);
  for (const Request& request : RequestsOf(Count())) {
    for (int i = 0; i < 25; ++i) {
      Channels list;
      for (std::size_t k = 0; k < EntriesOf(Count(), request.mode, request.option); ++k) {
        list.push_back(static_cast<std::uint8_t>(random() % static_cast<unsigned>(Count() + 2)));
      }
      if (i % 2 == 0) std::sort(list.begin(), list.end());
      RunVariant(request, list);
      if (HasFailure()) return;
    }
  }
}

TEST_P(PlayLayoutImages, FollowOneAnotherWithTheFlagsThatTheLastOneLeft) {
  std::mt19937 random(22);
  for (int i = 0; i < 60; ++i) {
    const int mode = static_cast<int>(random() % 7);
    const int option = static_cast<int>(random() % 2);
    const Channels list = Ascending();
    SCOPED_TRACE(Text(mode, option, list));
    g_display.play_mask = static_cast<std::uint32_t>(random());
    ReferenceModel model = i % 4 == 0 ? Begin() : Next();
    if (i % 3 == 0) {
      EXPECT_EQ(CallPlaySplit(Count(), mode, option, list), model.PlayVariant(mode, option, list));
    } else {
      EXPECT_EQ(TW_SetPlaySplitMode(static_cast<std::uint8_t>(mode),
                                    static_cast<std::uint8_t>(option), list.data()),
                model.PlaySplit(mode, option, &list));
    }
    ExpectPlayed(model);
    if (HasFailure()) return;
  }
}

TEST_P(PlayLayoutImages, TakeTheirWindowsFromThePlayTableAlone) {
  for (WindowRect& rect : g_layout.live) rect = {0xEE, 0xEE, 0xEE, 0xEE};
  for (int mode = 1; mode <= HighestMode(Count()); ++mode) {
    SCOPED_TRACE(mode);
    const Channels list = Ascending();
    g_display.play_split = 7;
    ReferenceModel model = Begin();
    // Every window at a place of its own.
    int byte = mode;
    std::vector<Rect>& windows = model.windows.at(static_cast<std::size_t>(mode));
    for (std::size_t k = 0; k < windows.size(); ++k) {
      for (int& edge : windows[k]) edge = byte++;
      g_layout.play.at(kFirstWindowOfMode.at(static_cast<std::size_t>(mode)) + k) = {
          static_cast<std::uint8_t>(windows[k][0]), static_cast<std::uint8_t>(windows[k][1]),
          static_cast<std::uint8_t>(windows[k][2]), static_cast<std::uint8_t>(windows[k][3])};
    }
    model.PlayVariant(mode, 0, list);
    EXPECT_EQ(CallPlaySplit(Count(), mode, 0, list), 0);
    ExpectPlayed(model);
  }
}

TEST_P(PlayLayoutImages, TakeNoWindowOfATableForASinglePicture) {
  for (WindowRect& rect : g_layout.live) rect = {0xEE, 0xEE, 0xEE, 0xEE};
  for (WindowRect& rect : g_layout.play) rect = {0xDD, 0xDD, 0xDD, 0xDD};
  RunVariant({0, 0}, Ascending());
  RunVariant({0, 1}, Ascending());
}

INSTANTIATE_TEST_SUITE_P(Boards, PlayLayoutImages,
                         ::testing::Values(BoardCase{4, 0}, BoardCase{4, 1}, BoardCase{8, 0},
                                           BoardCase{8, 1}, BoardCase{16, 0}, BoardCase{16, 1},
                                           BoardCase{16, 2}),
                         NameOf);

// ---- By hand ------------------------------------------------------------------------------------

class PlayLayoutBytes : public PlayTest {
 protected:
  void ExpectWindow(int channel, const Rect& rect) {
    EXPECT_EQ(RectOf(channel), rect) << "channel " << channel;
  }
};

TEST_F(PlayLayoutBytes, OfTheFullPictureOfAFourChannelBoardComeInThisOrder) {
  UsePlayback(4);
  const Channels list = {2};
  Begin();
  EXPECT_EQ(TW_SetPlaySplit4Ch(0, 1, list.data()), 0);
  std::vector<Access> expected = {
      W(kAll, 1, 0x06, 0x00),    W(kMaster, 1, 0x16, 0x10), W(kSlave1, 1, 0x16, 0x14),
      W(kSlave2, 1, 0x16, 0x18), W(kSlave3, 1, 0x16, 0x1C), W(kAll, 1, 0x10, 0x94),
      W(kAll, 1, 0x18, 0x95),    W(kAll, 1, 0x20, 0x96),    W(kAll, 1, 0x28, 0x97)};
  for (const int first : {0x86, 0x96, 0xA6, 0xB6}) {
    for (int i = 0; i < 4; ++i) expected.push_back(W(kAll, 0, first + i, 0xFF));
  }
  for (const int first : {0x30, 0x34, 0x38, 0x3C}) {
    expected.push_back(W(kAll, 1, first, 0x00));
    expected.push_back(W(kAll, 1, first + 1, 0xB4));
    expected.push_back(W(kAll, 1, first + 2, 0x00));
    expected.push_back(W(kAll, 1, first + 3, 0x78));
  }
  const std::vector<Access> rest = {
      W(kMaster, 1, 0x20, 0xD6), W(kAll, 1, 0x0D, 0x00),    W(kAll, 1, 0x0E, 0x00),
      W(kAll, 1, 0x0C, 0xC0),    W(kAll, 0, 0x85, 0x00),    W(kAll, 0, 0x80, 0x00),
      W(kAll, 0, 0x95, 0x00),    W(kAll, 0, 0x90, 0x40),    W(kAll, 0, 0xA5, 0x00),
      W(kAll, 0, 0xA0, 0x80),    W(kAll, 0, 0xB5, 0x00),    W(kAll, 0, 0xB0, 0xC0),
      W(kAll, 1, 0x12, 0x00),    W(kAll, 1, 0x1A, 0x00),    W(kAll, 1, 0x22, 0x00),
      W(kAll, 1, 0x2A, 0x00),    W(kMaster, 1, 0x16, 0x90), W(kSlave1, 1, 0x16, 0x94),
      W(kSlave2, 1, 0x16, 0x98), W(kSlave3, 1, 0x16, 0x9C)};
  expected.insert(expected.end(), rest.begin(), rest.end());
  EXPECT_EQ(Accesses(), expected);
  EXPECT_EQ(Pauses(), (std::vector<Pause>{{expected.size() - 8, 50}}));
}

TEST_F(PlayLayoutBytes, OfTheLargeWindowLayoutsComeInThreePasses) {
  UsePlayback(8);
  const Channels list = {5, 0xFF, 0, 8, 7, 0xFF};
  Begin();
  EXPECT_EQ(TW_SetPlaySplit8Ch(2, 0, list.data()), 0);
  const std::vector<Access> expected = {
      W(kAll, 1, 0x12, 0x00), W(kAll, 1, 0x1A, 0x00), W(kAll, 1, 0x22, 0x00),
      W(kAll, 1, 0x2A, 0x00), W(kAll, 1, 0x10, 0x94), W(kAll, 1, 0x18, 0x95),
      W(kAll, 1, 0x20, 0x96), W(kAll, 1, 0x28, 0x97),
      // Channel 5 is the large one.
      W(kSlave1, 0, 0x96, 0xAA), W(kSlave1, 0, 0x97, 0xAA), W(kSlave1, 0, 0x98, 0xAA),
      W(kSlave1, 0, 0x99, 0xAA), W(kSlave1, 1, 0x34, 0x04), W(kSlave1, 1, 0x35, 0x77),
      W(kSlave1, 1, 0x36, 0x02), W(kSlave1, 1, 0x37, 0x50), W(kSlave1, 0, 0x95, 0x00),
      // Channels 0 and 7 in windows 2 and 4.
      W(kMaster, 0, 0x86, 0x55), W(kMaster, 0, 0x87, 0x55), W(kMaster, 0, 0x88, 0x55),
      W(kMaster, 0, 0x89, 0x55), W(kSlave1, 0, 0xB6, 0x55), W(kSlave1, 0, 0xB7, 0x55),
      W(kSlave1, 0, 0xB8, 0x55), W(kSlave1, 0, 0xB9, 0x55), W(kMaster, 1, 0x30, 0x77),
      W(kMaster, 1, 0x31, 0xB0), W(kMaster, 1, 0x32, 0x29), W(kMaster, 1, 0x33, 0x50),
      W(kSlave1, 1, 0x3C, 0x3D), W(kSlave1, 1, 0x3D, 0x77), W(kSlave1, 1, 0x3E, 0x50),
      W(kSlave1, 1, 0x3F, 0x76), W(kMaster, 0, 0x85, 0x05), W(kSlave1, 0, 0xB5, 0x05)};
  EXPECT_EQ(Accesses(), expected);
  EXPECT_TRUE(Pauses().empty());
}

TEST_F(PlayLayoutBytes, OfTheLargeWindowKindsDifferByMode) {
  struct Row {
    int mode;
    int large_pattern;
    int large_kind;
    int small_pattern;
    int small_kind;
    int overlay;
  };
  for (const Row& row : {Row{2, 0xAA, 0x00, 0x55, 0x05, 0x00}, Row{3, 0xFF, 0x00, 0x7F, 0x09, 0x20},
                         Row{5, 0xFF, 0x08, 0x7F, 0x09, 0x20}}) {
    SCOPED_TRACE(row.mode);
    const Channels list = {3, 9, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    UsePlayback(16);
    Begin();
    EXPECT_EQ(TW_SetPlaySplit16Ch(static_cast<std::uint8_t>(row.mode), 0, list.data()), 0);
    EXPECT_EQ(Register(0, 0, 0xB6), row.large_pattern);
    EXPECT_EQ(Register(0, 0, 0xB5), row.large_kind);
    EXPECT_EQ(Register(2, 0, 0x96), row.small_pattern);
    EXPECT_EQ(Register(2, 0, 0x95), row.small_kind);
    EXPECT_EQ(Register(3, 1, 0x2A), row.overlay);
  }
}

TEST_F(PlayLayoutBytes, OfAWindowThatIsMovedAreTheDefaultPlusTheOffset) {
  UsePlayback(4);
  SetWindowOffset(g_layout.play, 1, 2, {1, -2, 3, -4});
  const Channels list = {0, 1, 2, 3};
  Begin();
  EXPECT_EQ(TW_SetPlaySplitMode(1, 0, list.data()), 0);
  ExpectWindow(0, {0x04, 0x5A, 0x01, 0x3C});
  ExpectWindow(1, {0x5A, 0xB0, 0x01, 0x3C});
  ExpectWindow(2, {0x05, 0x5D, 0x3A, 0x73});
  ExpectWindow(3, {0x5A, 0xB0, 0x3C, 0x77});
}

TEST_F(PlayLayoutBytes, OfALiveWindowThatIsMovedDoNotReachPlayback) {
  UsePlayback(4);
  SetWindowOffset(g_layout.live, 1, 2, {1, -2, 3, -4});
  const Channels list = {0, 1, 2, 3};
  Begin();
  EXPECT_EQ(TW_SetPlaySplitMode(1, 0, list.data()), 0);
  ExpectWindow(2, {0x04, 0x5A, 0x3C, 0x77});
}

// Holds: VexoSplitRecord "List channels in ascending order"
TEST_F(PlayLayoutBytes, OfAListThatIsNotAscendingShowOnlyTheChannelsThatTheWalkMeets) {
  const Rect hidden = {0, 0, 0, 0};
  UsePlayback(4);
  const Channels list = {1, 0, 2, 3};
  Begin();
  EXPECT_EQ(TW_SetPlaySplitMode(1, 0, list.data()), 0);
  ExpectWindow(0, hidden);
  ExpectWindow(1, {0x04, 0x5A, 0x01, 0x3C});
  ExpectWindow(2, hidden);
  ExpectWindow(3, hidden);
  // All that are listed come to the front, the hidden ones too.
  for (int n = 0; n < 4; ++n) EXPECT_EQ(Register(0, 1, 0x10 + 8 * n), 0xD4 + n);
}

// Holds: VexoSplitRecord "A number not below the board's channel count shows nothing."
TEST_F(PlayLayoutBytes, OfAListWithAnEntryThatIsNoChannelLeaveItsWindowEmpty) {
  for (const std::uint8_t none : Channels{0xFF, 16}) {
    SCOPED_TRACE(none);
    UsePlayback(16, 1);
    Channels list = {0, 1, 2, 3, 4, none, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    Begin();
    const std::uint8_t old = Register(1, 1, 0x34);
    EXPECT_EQ(TW_SetPlaySplitMode(6, 0, list.data()), 0);
    EXPECT_EQ(Register(1, 1, 0x34), old);  // channel 5 is not touched
    ExpectWindow(4, {0x04, 0x2F, 0x25, 0x48});
    ExpectWindow(6, {0x5A, 0x85, 0x25, 0x48});

    // In a walk, no later entry is met.
    Begin();
    list = {0, none, 2, 3};
    EXPECT_EQ(TW_SetPlaySplitMode(1, 0, list.data()), 0);
    ExpectWindow(0, {0x04, 0x5A, 0x02, 0x48});
    for (int n = 1; n < 16; ++n) ExpectWindow(n, {0, 0, 0, 0});
    EXPECT_EQ(Register(0, 1, 0x18), 0x95);
    EXPECT_EQ(Register(0, 1, 0x20), 0xD6);
  }
}

TEST_F(PlayLayoutBytes, OfTheSecondPageGiveChannelsZeroAndOneTheLastTwoWindows) {
  struct Row {
    Channels list;
    int zero;  // window of channel 0, -1 when hidden
    int one;
  };
  // The last entry is compared with 0, though it is channel 1 that takes its window.
  for (const Row& row :
       {Row{{9, 10, 11, 12, 13, 14, 15, 0, 1}, 7, -1}, Row{{9, 10, 11, 12, 13, 14, 15, 0, 0}, 7, 8},
        Row{{9, 10, 11, 12, 13, 14, 15, 1, 0}, -1, 8},
        Row{{9, 10, 11, 12, 13, 14, 15, 0xFF, 0xFF}, -1, -1},
        Row{{8, 10, 11, 12, 13, 14, 15, 0, 0}, -1, -1}}) {
    SCOPED_TRACE(Text(4, 0, row.list));
    UsePlayback(16);
    Begin();
    EXPECT_EQ(TW_SetPlaySplitMode(4, 0, row.list.data()), 0);
    const std::vector<Rect> nine = DefaultRects(4, true);
    const auto rect = [&](int window) {
      return window < 0 ? Rect{0, 0, 0, 0} : nine.at(static_cast<std::size_t>(window));
    };
    ExpectWindow(0, rect(row.zero));
    ExpectWindow(1, rect(row.one));
    if (row.list[0] == 9) {
      for (int n = 9; n < 16; ++n) ExpectWindow(n, rect(n - 9));
    }
  }
}

// Holds: VexoSplitRecord "Only the 3 x 3 page of 16 channels that begins with 9 goes"
TEST_F(PlayLayoutBytes, OfTheSecondPageAreNoMatterToEightChannels) {
  UsePlayback(8);
  const Channels list = {9, 10, 11, 12, 13, 14, 15, 0, 0};
  Begin();
  EXPECT_EQ(TW_SetPlaySplitMode(4, 0, list.data()), 0);
  for (int n = 0; n < 8; ++n) ExpectWindow(n, {0, 0, 0, 0});
  EXPECT_EQ(Register(0, 0, 0x85), 0x05);  // listed all the same
}

}  // namespace
}  // namespace test
