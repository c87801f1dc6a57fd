#include "display/live_split_direct.h"

#include <string>

#include "chip/video_state.h"
#include "display/display_state.h"
#include "display/live_split.h"
#include "display/window_tables.h"
#include "tests/model/display_model.h"

namespace test {
namespace {

// The text path's split told a second time.
class DirectModel {
 public:
  explicit DirectModel(DisplayModel& model) : m_(model), count_(model.channels) {}

  void Split(int mode, int first, int option) {
    for (int n = 0; n < 4; ++n) m_.Write(kAll, 1, 0x10 + 8 * n, 0x90 + n);
    m_.Poll(0);
    if (count_ != 0 || mode == 0) Place(mode, first, option);  // the others count channels
    for (int p = 0; p < m_.chips; ++p) {
      const int chip = kChips.at(static_cast<std::size_t>(p));
      for (int n = 0; n < 4; ++n) {
        const bool held = (m_.Read(chip, 1, 0x10 + 8 * n) & 0x10) != 0;
        if (held) m_.Write(chip, 1, 0x10 + 8 * n, mode == 1 ? n : 0);
      }
    }
  }

 private:
  void Place(int mode, int first, int option) {
    const bool sixteen = count_ == 16;
    int start = first + 1;  // channel of window 1
    switch (mode) {
      case 0:
        return Full(first);
      case 1:
        for (int n = 0; n < count_; ++n) m_.Scale(n, 1);
        for (int k = 0; k < 4; ++k) Show((first + k) % count_, mode, k);
        for (int n = 0; n < 4; ++n) m_.Write(kAll, 0, 0x80 + 0x10 * n, 0x40 * n + 1);
        return;
      case 2:
        if (count_ == 8 && option != 0) start = first + 3 * option;
        if (sixteen && option == 1) start = first + 6;
        if (sixteen && option == 2) start = first + 11;
        return LargeAndSmall(mode, first, start, {2, 0x0}, {4, 0xA});
      case 3:
        if (sixteen && option != 0) first = (first + 8) % 16;
        return LargeAndSmall(mode, first, first + 1, {3, 0x0}, {6, 0xF});
      case 5:
        if (sixteen && option != 0) start = first + 4;
        return LargeAndSmall(mode, first, start, {1, 0x5}, {6, 0xF});
      case 4:
        return ThreeByThree(first, option);
      default:
        for (int n = 0; n < count_; ++n) m_.Scale(n, 6);
        for (int k = 0; k < 16; ++k) ShowWithCode((first + k) % count_, 6, k, 0xF);
    }
  }

  void Full(int first) {
    for (int n = 0; n < count_; ++n) m_.Scale(n, 0);
    for (int n = 0; n < 4; ++n) m_.Window(kAll, n, m_.windows[0][0]);
    if (count_ == 4) {
      for (int n = 0; n < 4; ++n) {
        m_.Write(kAll, 1, 0x10 + 8 * n, (n == first ? 0xC0 : 0x80) + n);
      }
    } else {
      for (int n = 0; n < 4; ++n) m_.Write(kAll, 1, 0x10 + 8 * n, 0x80 + n);
      m_.Write(ChipOf(first), 1, 0x10 + 8 * (first % 4), 0xC0 + first % 4);
    }
    for (int n = 0; n < 4; ++n) m_.Write(kAll, 0, 0x80 + 0x10 * n, 0x40 * n);
  }

  void ThreeByThree(int first, int option) {
    for (int n = 0; n < count_; ++n) m_.Scale(n, 4);
    if (count_ == 4) return;
    for (int k = 0; k < (count_ == 8 ? 8 : 9); ++k) {
      int c = first + k;
      if (count_ == 16 && option != 0 && k >= 2) c = first + 9 + (k - 2);
      ShowWithCode(c % count_, 4, k, 0xA);
    }
  }

  struct Look {
    int scale;
    int code;
  };
  void LargeAndSmall(int mode, int large, int start, Look large_look, Look small_look) {
    m_.Scale(large, large_look.scale);
    ShowWithCode(large, mode, 0, large_look.code);
    for (int k = 1; k < kWindows.at(static_cast<std::size_t>(mode)); ++k) {
      const int c = (start + k - 1) % count_;
      m_.Scale(c, small_look.scale);
      ShowWithCode(c, mode, k, small_look.code);
    }
  }

  void ShowWithCode(int channel, int mode, int window, int code) {
    m_.Layout(ChipOf(channel), channel % 4, code);
    Show(channel, mode, window);
  }
  void Show(int channel, int mode, int window) {
    const int n = channel % 4;
    m_.Window(ChipOf(channel), n,
              m_.windows.at(static_cast<std::size_t>(mode)).at(static_cast<std::size_t>(window)));
    m_.Write(ChipOf(channel), 1, 0x10 + 8 * n, 0xC0 + n);
  }

  DisplayModel& m_;
  int count_;
};

class DirectSplit : public DisplayTest, public ::testing::WithParamInterface<BoardCase> {
 protected:
  void SetUp() override { UseBoard(GetParam().channels, GetParam().standard); }

  void Run(int mode, int first, int option) {
    SCOPED_TRACE("mode " + std::to_string(mode) + ", first channel " + std::to_string(first) +
                 ", option " + std::to_string(option));
    Scribble(++seed_);
    g_display.selected_channel = 0x77;
    DisplayModel model = Model();
    DirectModel(model).Split(mode, first, option);
    TW_SetLiveSplitDirect(static_cast<std::uint8_t>(mode), static_cast<std::uint8_t>(first),
                          static_cast<std::uint8_t>(option));
    ExpectLike(model);
    EXPECT_EQ(g_display.live_split, mode);
    EXPECT_EQ(g_display.split_option, option);
    EXPECT_EQ(g_display.selected_channel, mode == 0 ? first : 0x77);
    EXPECT_EQ(DebugText(), "");
  }

 private:
  unsigned seed_ = 0;
};

TEST_P(DirectSplit, MakesExactlyTheAccessesOfItsStepsForEveryModeOptionAndFirstChannel) {
  for (int mode = 0; mode < 7; ++mode) {
    for (const int option : {0, 1, 2, 3, 255}) {
      for (const int first : {0, 1, 3, 5, 7, 8, 11, 13, 15, 16, 18, 250, 255}) {
        Run(mode, first, option);
        if (HasFailure()) return;
      }
    }
  }
}

TEST_P(DirectSplit, RefusesModesAbove6AndChangesNothing) {
  g_display.live_split = 3;
  g_display.split_option = 2;
  g_display.selected_channel = 5;
  for (int mode = 7; mode < 256; ++mode) {
    Mark();
    TW_SetLiveSplitDirect(static_cast<std::uint8_t>(mode), 1, 1);
    EXPECT_EQ(Cycles(), 0u);
    ExpectPrinted(">> Invlaid Live Split Mode !!");
  }
  EXPECT_EQ(g_display.live_split, 3);
  EXPECT_EQ(g_display.split_option, 2);
  EXPECT_EQ(g_display.selected_channel, 5);
}

INSTANTIATE_TEST_SUITE_P(Boards, DirectSplit,
                         ::testing::Values(BoardCase{0, 0}, BoardCase{4, 0}, BoardCase{4, 1},
                                           BoardCase{8, 0}, BoardCase{8, 1}, BoardCase{12, 0},
                                           BoardCase{12, 1}, BoardCase{16, 0}, BoardCase{16, 1},
                                           BoardCase{16, 2}),
                         NameOf);

class DirectSplitEdges : public DisplayTest {};

TEST_F(DirectSplitEdges, IsNotRefusedInPlaybackView) {
  UseBoard(16);
  g_display.view = 2;
  DisplayModel model = Model();
  DirectModel(model).Split(1, 0, 0);
  TW_SetLiveSplitDirect(1, 0, 0);
  ExpectLike(model);
  EXPECT_EQ(g_display.view, 2);
}

TEST_F(DirectSplitEdges, OnlyHoldsABoardWithoutChannelsInModesThatCountChannels) {
  UseBoard(0);
  for (std::uint8_t mode = 1; mode < 7; ++mode) {
    SCOPED_TRACE(+mode);
    Mark();
    TW_SetLiveSplitDirect(mode, 0, 4);
    EXPECT_EQ(Accesses(), (std::vector<Access>{W(kAll, 1, 0x10, 0x90), W(kAll, 1, 0x18, 0x91),
                                               W(kAll, 1, 0x20, 0x92), W(kAll, 1, 0x28, 0x93)}));
    EXPECT_EQ(g_display.live_split, mode);
    EXPECT_EQ(g_display.split_option, 4);
  }
}

TEST_F(DirectSplitEdges, WaitsForTheChipsWithoutALimitAndWithoutAWord) {
  UseBoard(8);
  world().board.SetSettle(700);
  DisplayModel model = Model();
  model.busy_polls = 700;
  DirectModel(model).Split(1, 2, 0);
  TW_SetLiveSplitDirect(1, 2, 0);
  ExpectLike(model);
  EXPECT_EQ(Waits(), std::vector<std::uint32_t>(700, 5));
  EXPECT_TRUE(KernelDebug().empty());
  EXPECT_EQ(DebugText(), "");
}

TEST_F(DirectSplitEdges, DoesNotReadWhatTheDisplayRegistersHeldBefore) {
  UseBoard(4);
  TW_SetLiveSplitDirect(1, 0, 0);
  ASSERT_GE(Accesses().size(), 4u);
  for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(Accesses()[i].kind, 'w');
}

TEST_F(DirectSplitEdges, SwitchesOffHeldChannelsWith0AndIn2x2WithTheirPosition) {
  UseBoard(16);
  TW_SetLiveSplitDirect(1, 0, 0);
  for (int n = 4; n < 16; ++n) EXPECT_EQ(Register(n / 4, 1, 0x10 + 8 * (n % 4)), n % 4) << n;
  TW_SetLiveSplitDirect(2, 0, 0);
  for (int n = 6; n < 16; ++n) EXPECT_EQ(Register(n / 4, 1, 0x10 + 8 * (n % 4)), 0) << n;
}

TEST_F(DirectSplitEdges, NeverWritesTheFieldMode) {
  UseBoard(16, 1);
  for (std::uint8_t mode = 0; mode < 7; ++mode) {
    TW_SetLiveSplitDirect(mode, 0, 0);
  }
  for (const Access& access : Writes()) {
    EXPECT_FALSE(access.page == 0 && access.reg == 0xC5) << access;
  }
}

TEST_F(DirectSplitEdges, PlacesNoWindowInThe3x3OfAFourChannelBoard) {
  UseBoard(4);
  TW_SetLiveSplitDirect(4, 0, 0);
  for (int n = 0; n < 4; ++n) EXPECT_EQ(Register(0, 1, 0x10 + 8 * n), 0) << n;
  for (const Access& access : Writes()) {
    EXPECT_FALSE(access.page == 1 && access.reg >= 0x30 && access.reg < 0x40) << access;
  }
}

TEST_F(DirectSplitEdges, OnlyFullScreenStoresTheSelectedChannel) {
  UseBoard(16);
  TW_SetLiveSplitDirect(0, 11, 0);
  EXPECT_EQ(g_display.selected_channel, 11);
  for (std::uint8_t mode = 1; mode < 7; ++mode) TW_SetLiveSplitDirect(mode, 3, 0);
  EXPECT_EQ(g_display.selected_channel, 11);
  const Channels list = {4};
  EXPECT_EQ(TW_SetLiveSplitMode(0, list.data()), 0);
  EXPECT_EQ(g_display.selected_channel, 11);
}

TEST_F(DirectSplitEdges, AChannelPlacedTwiceIsShownInItsLastWindow) {
  UseBoard(4);
  TW_SetLiveSplitDirect(6, 0, 0);
  const std::vector<Rect> rects = DefaultRects(6, true);
  for (int n = 0; n < 4; ++n) {
    for (std::size_t i = 0; i < 4; ++i) {
      EXPECT_EQ(Register(0, 1, 0x30 + 4 * n + static_cast<int>(i)),
                rects.at(static_cast<std::size_t>(12 + n)).at(i));
    }
  }
}

// ---- Offsets of the live windows --------------------------------------------------------------

class LiveSplitOffset : public DisplayTest {};

TEST_F(LiveSplitOffset, IsUsedByTheNextSplitOfBothPaths) {
  UseBoard(16);
  VexoProc_SetLiveSplitOffset(1, 1, 1, 2, 3, 4);
  DisplayModel model = Model();
  model.windows[1][1] = {0x5B, 0xB3, 0x03, 0x40};
  const Channels list = {0, 1, 2, 3};
  model.LiveSplit(1, list);
  EXPECT_EQ(TW_SetLiveSplit16Ch(1, list.data()), 0);
  ExpectLike(model);

  Scribble(2);
  DisplayModel direct = Model();
  direct.windows[1][1] = {0x5B, 0xB3, 0x03, 0x40};
  DirectModel(direct).Split(1, 5, 0);
  TW_SetLiveSplitDirect(1, 5, 0);
  ExpectLike(direct);
}

}  // namespace
}  // namespace test
