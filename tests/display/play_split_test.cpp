#include "display/play_split.h"

#include <string>

#include "VexoCtrlSDK.h"
#include "chip/video_state.h"
#include "display/display_state.h"
#include "display/play_layout.h"
#include "tests/display/play_test.h"

namespace test {
namespace {

constexpr const char* kLiveMode = ">> ERROR TW_SetPlaySplitMode CURREENT LIVE MODE!!";
constexpr const char* kInvalid = ">> ERROR TW_SetPlaySplitMode INVALID PARAM!!";

const Channels kAscending = Ascending();

std::int32_t Split(int mode, int option, const Channels& list = kAscending) {
  return TW_SetPlaySplitMode(static_cast<std::uint8_t>(mode), static_cast<std::uint8_t>(option),
                             list.data());
}

class PlaySplit : public PlayTest {
 protected:
  // Whether the channel's blank bit is set.
  bool Blanked(int channel) {
    return (Register(channel / 4, 1, 0x11 + 8 * (channel % 4)) & 0x04) != 0;
  }
  // Nothing at all has changed since Begin() but what is printed.
  void ExpectRefused(const ReferenceModel& before, const std::string& text) {
    EXPECT_EQ(Cycles(), 0u);
    ReferenceModel model = before;
    if (!text.empty()) model.printed = {text};
    ExpectPlayed(model);
  }
};

// ---- Refusals -----------------------------------------------------------------------------------

TEST_F(PlaySplit, RefusesEveryRequestInLiveView) {
  for (const int channels : {0, 4, 8, 12, 16}) {
    for (const int mode : {0, 1, 2, 3, 4, 5, 6, 7, 255}) {
      for (const int option : {0, 1}) {
        SCOPED_TRACE(std::to_string(channels) + " channels, mode " + std::to_string(mode));
        UsePlaybackAfter(channels, 1, 0);
        g_display.view = kLive;
        ReferenceModel before = Begin();
        EXPECT_EQ(Split(mode, option), -1);
        ExpectRefused(before, kLiveMode);
        before = Begin();
        EXPECT_EQ(TW_SetPlaySplitMode(static_cast<std::uint8_t>(mode), 0, nullptr), -1);
        ExpectRefused(before, kLiveMode);
      }
    }
  }
}

TEST_F(PlaySplit, RefusesAnyViewButPlayback) {
  for (const std::uint8_t view : Channels{0, 3, 255}) {
    UsePlayback(4);
    g_display.view = view;
    const ReferenceModel before = Begin();
    EXPECT_EQ(Split(1, 0), -1);
    ExpectRefused(before, kLiveMode);
  }
}

TEST_F(PlaySplit, RefusesModesThatDoNotExist) {
  for (const int channels : {0, 4, 8, 12, 16}) {
    for (const int mode : {7, 8, 100, 255}) {
      SCOPED_TRACE(std::to_string(channels) + " channels, mode " + std::to_string(mode));
      UsePlaybackAfter(channels, 1, 0);
      const ReferenceModel before = Begin();
      EXPECT_EQ(Split(mode, 0), -5);
      ExpectRefused(before, kInvalid);
    }
  }
}

TEST_F(PlaySplit, RefusesARequestWithoutAList) {
  for (const int channels : {0, 4, 8, 12, 16}) {
    for (int mode = 0; mode <= 7; ++mode) {  // before the mode is looked at
      SCOPED_TRACE(std::to_string(channels) + " channels, mode " + std::to_string(mode));
      UsePlaybackAfter(channels, 1, 0);
      const ReferenceModel before = Begin();
      EXPECT_EQ(TW_SetPlaySplitMode(static_cast<std::uint8_t>(mode), 1, nullptr), -5);
      ExpectRefused(before, kInvalid);
    }
  }
}

// Holds: VexoSplitRecord "VEXO_CMD_LIVE_SPLIT (reads byte 4"
TEST_F(PlaySplit, RefusesLayoutsThatOnlyTheModeSwitchMayUse) {
  // On every board, of 16 channels too, whose variant knows them.
  for (const int channels : {0, 4, 8, 12, 16}) {
    for (const int mode : {2, 3, 5}) {
      SCOPED_TRACE(std::to_string(channels) + " channels, mode " + std::to_string(mode));
      UsePlaybackAfter(channels, 1, 0);
      const ReferenceModel before = Begin();
      EXPECT_EQ(Split(mode, 0), -5);
      ExpectRefused(before, ">> ERROR TW_SetPlaySplitMode NOT SUPPORT SPLIT MODE(" +
                                std::to_string(mode) + ")!!");
    }
  }
}

TEST_F(PlaySplit, FailsOnBoardsWithoutAVariantAndTouchesNothing) {
  for (const int channels : {0, 12}) {
    for (const int mode : {0, 1, 4, 6}) {
      SCOPED_TRACE(std::to_string(channels) + " channels, mode " + std::to_string(mode));
      UsePlaybackAfter(channels, 1, 0);
      const ReferenceModel before = Begin();
      EXPECT_EQ(Split(mode, 0), -1);
      ExpectRefused(before, "");
    }
  }
}

TEST_F(PlaySplit, IsSilentWithTheOutputSwitchOffAndRefusesAllTheSame) {
  UsePlayback(16);
  VEXOAPI_SetEnableOutputMsg(0);
  const ReferenceModel before = Begin();
  EXPECT_EQ(Split(5, 0), -5);
  EXPECT_EQ(Split(7, 0), -5);
  ExpectRefused(before, "");
}

TEST_F(PlaySplit, VariantsRefuseModesThatTheyLack) {
  for (const Variant& row : kVariants) {
    UsePlayback(row.channels);
    for (int mode = 0; mode <= 9; ++mode) {
      SCOPED_TRACE(std::to_string(row.channels) + " channels, mode " + std::to_string(mode));
      Begin();
      EXPECT_EQ(CallPlaySplit(row.channels, mode, 1, kAscending),
                mode <= row.highest_mode ? 0 : -5);
      if (mode > row.highest_mode) {
        EXPECT_EQ(Cycles(), 0u);
        EXPECT_EQ(g_display.play_split, row.highest_mode);
        EXPECT_EQ(DebugText(), "");
        EXPECT_EQ(Elapsed(), 0u);
      }
    }
    EXPECT_EQ(CallPlaySplit(row.channels, 255, 1, kAscending), -5);
  }
}

// ---- Blank masks --------------------------------------------------------------------------------

TEST_F(PlaySplit, BlanksEveryChannelBeforeAnythingElse) {
  for (const int channels : {4, 8, 16}) {
    SCOPED_TRACE(channels);
    UsePlaybackAfter(channels, 1, 0);  // its first write would be the zoom control
    ReferenceModel blanked = Begin();
    blanked.AttributeMask(0xFFFF, 0x04);
    EXPECT_EQ(Split(1, 0), 0);
    const std::vector<Access> accesses = Accesses();
    ASSERT_GT(accesses.size(), blanked.accesses.size());
    for (std::size_t i = 0; i < blanked.accesses.size(); ++i) {
      EXPECT_EQ(accesses[i], blanked.accesses[i]);
    }
    EXPECT_EQ(accesses[blanked.accesses.size()], W(kAll, 1, 0x0C, 0x00));
  }
}

TEST_F(PlaySplit, EndsWithTheChannelsOfThePlayDisplayMaskShown) {
  for (const int channels : {4, 8, 16}) {
    for (const std::uint32_t mask : {0xFFFFFFFFu, 0u, 0x0000A5C3u, 0xFFFF0001u}) {
      SCOPED_TRACE(std::to_string(channels) + " channels, mask " + std::to_string(mask));
      UsePlayback(channels);
      g_display.play_mask = mask;
      g_display.live_mask = 0x12345678;  // no matter
      ReferenceModel model = Begin();
      EXPECT_EQ(model.PlaySplit(0, 1, &kAscending), 0);
      EXPECT_EQ(Split(0, 1), 0);
      ExpectPlayed(model);
      for (int n = 0; n < channels; ++n) EXPECT_EQ(Blanked(n), (mask >> n & 1) == 0) << n;
      EXPECT_EQ(g_display.blank_mask.playback, ~mask);
      EXPECT_EQ(g_display.blank_mask.live, 0x5A5A5A5Au);
    }
  }
}

TEST_F(PlaySplit, AppliesTheMaskAgainThatWasInForceWhenTheBoardLacksTheMode) {
  struct Row {
    int channels;
    int mode;
  };
  for (const Row& row : {Row{8, 6}, Row{4, 4}, Row{4, 6}}) {
    for (const std::uint32_t mask : {0u, 0xA5A5C3C6u, 0xFFFFFFFFu}) {
      SCOPED_TRACE(std::to_string(row.channels) + " channels, mode " + std::to_string(row.mode));
      UsePlayback(row.channels);
      g_display.blank_mask.playback = mask;
      g_display.play_mask = 0x3C;
      ReferenceModel model = Begin();
      EXPECT_EQ(model.PlaySplit(row.mode, 0, &kAscending), -1);
      EXPECT_EQ(Split(row.mode, 0), -1);
      ExpectPlayed(model);  // no pause, no print, the mask and the stored mode as they were
      EXPECT_EQ(g_display.blank_mask.playback, mask);
      EXPECT_EQ(g_display.play_split, 7);
      for (int n = 0; n < row.channels; ++n) EXPECT_EQ(Blanked(n), (mask >> n & 1) != 0) << n;
    }
  }
}

TEST_F(PlaySplit, KeepsAllSixteenChannelsBlankedWhileItPauses) {
  for (const int channels : {4, 8, 16}) {
    SCOPED_TRACE(channels);
    UsePlayback(channels);
    Begin();
    bool looked = false;
    world().kernel.StartHostThread([this, channels, &looked] {  // runs when the split pauses
      looked = true;
      EXPECT_EQ(g_display.blank_mask.playback, 0xFFFFu);
      for (int n = 0; n < channels; ++n) EXPECT_TRUE(Blanked(n)) << n;
    });
    EXPECT_EQ(Split(1, 0), 0);
    EXPECT_TRUE(looked);
  }
}

TEST_F(PlaySplit, PutsTheAppliedMaskBackBeforeTheLastMaskIsApplied) {
  UsePlayback(4);
  g_display.play_mask = 0x0F;
  Begin();
  // Another thread looks again and again.
  std::vector<std::uint32_t> seen = {g_display.blank_mask.playback};
  bool done = false;
  world().kernel.StartHostThread([this, &seen, &done] {
    while (!done) {
      if (seen.back() != g_display.blank_mask.playback) {
        seen.push_back(g_display.blank_mask.playback);
      }
      world().kernel.Idle(1);
    }
  });
  world().kernel.SetSeed(1);
  world().kernel.SetPreemption(1);
  EXPECT_EQ(Split(1, 0), 0);
  world().kernel.SetPreemption(0);
  world().kernel.Idle(2);
  done = true;
  world().kernel.Idle(2);
  EXPECT_EQ(seen, (std::vector<std::uint32_t>{0xA5A5C3C3, 0xFFFF, 0xA5A5C3C3, 0xFFFFFFF0}));
}

TEST_F(PlaySplit, OnAnEightChannelBoardTurnsMode5And6DownAndRestoresTheBlankMask) {
  UsePlayback(8);
  g_display.blank_mask.playback = 0x0000006A;
  Begin();
  // The variant lacks both.
  EXPECT_EQ(TW_SetPlaySplit8Ch(5, 0, kAscending.data()), -5);
  EXPECT_EQ(TW_SetPlaySplit8Ch(6, 0, kAscending.data()), -5);
  EXPECT_EQ(Cycles(), 0u);
  // The entry hands on 6 alone.
  EXPECT_EQ(Split(6, 0), -1);
  EXPECT_EQ(g_display.blank_mask.playback, 0x0000006Au);
  for (int n = 0; n < 8; ++n) EXPECT_EQ(Blanked(n), (0x6A >> n & 1) != 0) << n;
  EXPECT_EQ(Cycles(), 4u * 2 * (2 * 8));
}

// ---- The pause ----------------------------------------------------------------------------------

TEST_F(PlaySplit, PausesFor50MsBeforeTheDecodedInputOpensAndNotInLargeWindowLayouts) {
  for (const int channels : {4, 8, 16}) {
    for (int mode = 0; mode <= HighestMode(channels); ++mode) {
      for (const int option : {0, 1}) {
        SCOPED_TRACE(std::to_string(channels) + " channels, mode " + std::to_string(mode));
        UsePlayback(channels);
        Begin();
        const std::uint32_t start = world().kernel.Now();
        const std::size_t from = world().trace.Mark();
        EXPECT_EQ(CallPlaySplit(channels, mode, option, kAscending), 0);
        if (mode == 2 || mode == 3 || mode == 5) {
          EXPECT_EQ(Elapsed(), 0u);
          EXPECT_TRUE(Pauses().empty());
          for (const Access& access : Writes()) {
            EXPECT_FALSE(access.page == 1 && access.reg == 0x16) << access;
          }
          continue;
        }
        EXPECT_EQ(Elapsed(), 50u);
        // Before it everything else, after it the overlay of all channels and the open inputs.
        std::vector<Access> after;
        for (const sim::RegisterAccess& access : sim::DecodeAccesses(world().trace, from)) {
          if (access.t == start) continue;
          EXPECT_EQ(access.t, start + 50);
          after.push_back(W(access.Chip(), access.Page(), access.reg, access.value));
        }
        const int overlay = mode == 0 && option == 1 ? 0x00 : 0x20;
        EXPECT_EQ(after,
                  (std::vector<Access>{W(kAll, 1, 0x12, overlay), W(kAll, 1, 0x1A, overlay),
                                       W(kAll, 1, 0x22, overlay), W(kAll, 1, 0x2A, overlay),
                                       W(kMaster, 1, 0x16, 0x90), W(kSlave1, 1, 0x16, 0x94),
                                       W(kSlave2, 1, 0x16, 0x98), W(kSlave3, 1, 0x16, 0x9C)}));
      }
    }
  }
}

// ---- Overlay reset ------------------------------------------------------------------------------

TEST_F(PlaySplit, ResetsTheOverlayAsTheFullPictureFlagSays) {
  const std::vector<Access> full = {
      W(kAll, 1, 0x12, 0x00), W(kAll, 1, 0x1A, 0x00), W(kAll, 1, 0x22, 0x00),
      W(kAll, 1, 0x2A, 0x00), W(kAll, 1, 0x0D, 0x00), W(kAll, 1, 0x0E, 0x00),
      W(kAll, 1, 0x22, 0x00), W(kAll, 1, 0x2A, 0x00), W(kAll, 1, 0x06, 0x00)};
  const std::vector<Access> other = {W(kAll, 1, 0x22, 0x60), W(kAll, 1, 0x2A, 0x60),
                                     W(kAll, 1, 0x06, 0x04)};
  for (const int channels : {0, 4, 8, 12, 16}) {
    for (const int centred : {0, 1}) {
      SCOPED_TRACE(channels);
      UsePlaybackAfter(channels, 1, centred);
      ReferenceModel model = Begin();
      model.ResetOverlay();
      TW_ResetPlayOverlay();
      EXPECT_EQ(Accesses(), full);
      ExpectPlayed(model);  // the flags stay
      UsePlaybackAfter(channels, 0, centred);
      model = Begin();
      model.ResetOverlay();
      TW_ResetPlayOverlay();
      EXPECT_EQ(Accesses(), other);
      ExpectPlayed(model);
    }
  }
}

// ---- The binary command -------------------------------------------------------------------------

// Holds: VexoSplitRecord "option: 5 playback only"
// Holds: VexoSplitRecord "channels: 6 channel of each window"
// Holds: VexoSplitRecord "mode: 4 VEXO_SPLIT_..."
TEST_F(PlaySplit, TakesModeOptionAndListFromTheRecordOfTheCommand) {
  struct Row {
    int mode;
    int option;
  };
  for (const Row& row : {Row{0, 0}, Row{0, 7}, Row{1, 0}, Row{4, 0}, Row{6, 0}, Row{5, 0}}) {
    SCOPED_TRACE(row.mode);
    UsePlayback(16, 1);
    g_display.play_mask = 0xF0F0;
    Channels record = {0xEE,
                       0xEE,
                       0xEE,
                       0xEE,
                       static_cast<std::uint8_t>(row.mode),
                       static_cast<std::uint8_t>(row.option)};
    const Channels list = {2, 3, 5, 8, 9, 10, 0, 1, 4, 6, 7, 11, 12, 13, 14, 15};
    record.insert(record.end(), list.begin(), list.end());
    ReferenceModel model = Begin();
    const int expected = model.PlaySplit(row.mode, row.option, &list);
    EXPECT_EQ(Command(VEXO_CMD_PLAY_SPLIT, record), expected);
    ExpectPlayed(model);
  }
}

TEST_F(PlaySplit, HandsThroughTheResultsOfTheCommand) {
  UsePlayback(8);
  ReferenceModel before = Begin();
  EXPECT_EQ(CommandNull(VEXO_CMD_PLAY_SPLIT), -5);
  EXPECT_EQ(Cycles(), 0u);
  EXPECT_EQ(Command(VEXO_CMD_PLAY_SPLIT, {0, 0, 0, 0, 7, 0, 0, 1, 2, 3}), -5);
  EXPECT_EQ(Cycles(), 0u);
  EXPECT_EQ(Command(VEXO_CMD_PLAY_SPLIT, {0, 0, 0, 0, 6, 0, 0, 1, 2, 3}), -1);
  EXPECT_EQ(Command(VEXO_CMD_PLAY_SPLIT, {0, 0, 0, 0, 1, 0, 0, 1, 2, 3}), 0);
  EXPECT_EQ(g_display.play_split, 1);
  g_display.view = kLive;
  before = Begin();
  EXPECT_EQ(Command(VEXO_CMD_PLAY_SPLIT, {0, 0, 0, 0, 1, 0, 0, 1, 2, 3}), -1);
  ExpectRefused(before, kLiveMode);
}

}  // namespace
}  // namespace test
