// From live pictures to decoded ones and back through the binary commands: what every register,
// mask and mode is worth at each stop.
#include <array>
#include <string>
#include <vector>

#include "VexoCtrlSDK.h"
#include "chip/video_state.h"
#include "display/display_state.h"
#include "display/play_layout.h"
#include "harness/host.h"
#include "tests/display/play_test.h"
#include "tests/model/command_model.h"

namespace test {
namespace {

void Append(Channels& record, std::uint32_t value) {
  for (int shift = 0; shift < 32; shift += 8) {
    record.push_back(static_cast<std::uint8_t>(value >> shift));
  }
}

// A command and its record, as a host fills it.
struct Request {
  std::uint32_t code;
  Channels record;
};

Request LiveModeRequest(int mode) {
  const Channels list = Ascending();
  Channels record = {0, 0, 0, 0, static_cast<std::uint8_t>(mode)};
  record.insert(record.end(), list.begin(), list.end());
  return {VEXO_CMD_LIVE_MODE, record};
}
Request PlayModeRequest(int mode) {
  Channels record = {0, 0, 0, 0, 0, static_cast<std::uint8_t>(mode)};
  const Channels list = Ascending();
  record.insert(record.end(), list.begin(), list.end());
  return {VEXO_CMD_PLAY_MODE, record};
}
Request SplitRequest(std::uint32_t code, int mode, int option = 0) {
  Channels record = {
      0, 0, 0, 0, static_cast<std::uint8_t>(mode), static_cast<std::uint8_t>(option)};
  const Channels list = Ascending();
  record.insert(record.end(), list.begin(), list.end());
  return {code, record};
}
Request MasksRequest(const HostMasks& masks) {
  Channels record;
  for (const std::uint32_t mask : {masks.live, masks.record, masks.play}) Append(record, mask);
  return {VEXO_CMD_CHANNEL_MASKS, record};
}
Request BlankRequest(std::uint32_t mask) {
  Channels record;
  Append(record, mask);
  return {VEXO_CMD_BLANK_MASK, record};
}

class RoundTrip : public PlayTest {
 protected:
  int Send(const Request& request) {
    if (request.record.empty()) return CommandNull(request.code);
    return Command(request.code, request.record);
  }
  int LiveMode(int mode) { return Send(LiveModeRequest(mode)); }
  int PlayMode(int mode) { return Send(PlayModeRequest(mode)); }
  int LiveSplit(int mode) { return Send(SplitRequest(VEXO_CMD_LIVE_SPLIT, mode)); }
  int PlaySplit(int mode, int option = 0) {
    return Send(SplitRequest(VEXO_CMD_PLAY_SPLIT, mode, option));
  }
  int SetMasks(const HostMasks& masks) { return Send(MasksRequest(masks)); }
  int BlankMask(std::uint32_t mask) { return Send(BlankRequest(mask)); }
  int RestoreBlank() { return CommandNull(VEXO_CMD_RESTORE_BLANK); }

  // Bit n: the blank bit of channel n is set; its record register is off (0x04).
  std::uint32_t BlankBits(int channels) {
    std::uint32_t bits = 0;
    for (int c = 0; c < channels; ++c) {
      if ((Register(c / 4, 1, 0x11 + 8 * (c % 4)) & 0x04) != 0) bits |= 1u << c;
    }
    return bits;
  }
  std::uint32_t UnrecordedBits(int channels) {
    std::uint32_t bits = 0;
    for (int c = 0; c < channels; ++c) {
      const int value = Register(c / 4, 1, 0x61 + 3 * (c % 4));
      EXPECT_TRUE(value == 0x00 || value == 0x04) << "channel " << c << " holds " << value;
      if (value == 0x04) bits |= 1u << c;
    }
    return bits;
  }
};

// ---- Every live layout, every playback layout, every board --------------------------------------

class RoundTripOfAllLayouts : public RoundTrip, public ::testing::WithParamInterface<BoardCase> {
 protected:
  // One command on the chips and on the model, compared.
  void Check(CommandModel& commands, const Request& request, const std::string& what) {
    SCOPED_TRACE(what);
    const int expected = commands.Run(request.code, request.record);
    EXPECT_EQ(Send(request), expected);
    const ReferenceModel& model = commands.display;
    ExpectPlayed(model);
    EXPECT_EQ(g_display.live_mask, model.masks.live);
    EXPECT_EQ(g_display.record_mask, model.masks.record);
    EXPECT_EQ(g_display.live_split, model.live_split);
    EXPECT_EQ(g_display.g_view_mode, model.view_word);
    Next();  // marks
  }

  void Trip(CommandModel& m, int live, int play, int back) {
    const Request full_picture = SplitRequest(VEXO_CMD_PLAY_SPLIT, 0, 1);
    const Request restore = {VEXO_CMD_RESTORE_BLANK, {}};
    Check(m, LiveModeRequest(live), "live mode");
    Check(m, MasksRequest({0xFFFF7A3Cu, 0x0000C5A6u, 0xFFFE9D5Bu}), "masks in live view");
    Check(m, SplitRequest(VEXO_CMD_PLAY_SPLIT, 1), "playback split in live view");
    Check(m, BlankRequest(0x2491), "blank mask in live view");
    Check(m, PlayModeRequest(play), "playback mode");
    Check(m, SplitRequest(VEXO_CMD_PLAY_SPLIT, play), "playback split");
    Check(m, full_picture, "full picture");
    Check(m, MasksRequest({0x0000B6E7u, 0xFFFF3A59u, 0x0000E17Du}), "masks in playback view");
    Check(m, BlankRequest(0x9248), "blank mask in playback view");
    Check(m, SplitRequest(VEXO_CMD_LIVE_SPLIT, live), "live split in playback view");
    Check(m, PlayModeRequest(play), "playback mode again");
    Check(m, restore, "blank mask restored in playback view");
    Check(m, LiveModeRequest(back), "back to live mode");
    Check(m, SplitRequest(VEXO_CMD_LIVE_SPLIT, live), "live split");
    Check(m, restore, "blank mask restored in live view");
  }
};

TEST_P(RoundTripOfAllLayouts, EndsWithTheRegistersMasksAndModesOfItsSteps) {
  const int channels = GetParam().channels;
  UsePlayback(channels, GetParam().standard);
  CommandModel commands;
  commands.ready = true;
  commands.display = Begin();
  const int layouts = HighestMode(channels) + 2;  // one that the board lacks is among them
  for (int live = 0; live < layouts; ++live) {
    for (int play = 0; play < layouts; ++play) {
      SCOPED_TRACE("live " + std::to_string(live) + ", playback " + std::to_string(play));
      Trip(commands, live, play, (live + play) % layouts);
      if (HasFailure()) return;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Boards, RoundTripOfAllLayouts,
                         ::testing::Values(BoardCase{4, 0}, BoardCase{4, 1}, BoardCase{8, 0},
                                           BoardCase{8, 1}, BoardCase{12, 0}, BoardCase{16, 0},
                                           BoardCase{16, 1}),
                         NameOf);

// ---- Stops, told without a model ----------------------------------------------------------------

constexpr std::array<int, 3> kBoards = {4, 8, 16};

TEST_F(RoundTrip, KeepsTheBlankMasksOfTheTwoViewsApart) {
  for (const int channels : kBoards) {
    SCOPED_TRACE(channels);
    UseBoard(channels);
    EXPECT_EQ(LiveMode(1), 0);
    EXPECT_EQ(BlankMask(0x0A), 0);
    EXPECT_EQ(g_display.blank_mask.live, 0x0Au);
    EXPECT_EQ(g_display.blank_mask.playback, 0u);
    EXPECT_EQ(PlayMode(1), 0);
    EXPECT_EQ(g_display.blank_mask.live, 0x0Au);
    EXPECT_EQ(g_display.blank_mask.playback, AllChannels(channels));
    EXPECT_EQ(BlankMask(0x05), 0);
    EXPECT_EQ(BlankBits(channels), 0x05u);
    EXPECT_EQ(g_display.blank_mask.live, 0x0Au);
    EXPECT_EQ(g_display.blank_mask.playback, 0x05u);
    EXPECT_EQ(LiveMode(0), 0);
    EXPECT_EQ(BlankBits(channels), 0u);
    EXPECT_EQ(g_display.blank_mask.live, 0u);
    EXPECT_EQ(g_display.blank_mask.playback, 0x05u);
  }
}

TEST_F(RoundTrip, BlanksEveryChannelAtTheSwitchAndShowsThePlaybackMaskAtTheNextSplit) {
  for (const int channels : kBoards) {
    for (int play = 0; play <= HighestMode(channels); ++play) {
      SCOPED_TRACE(std::to_string(channels) + " channels, playback " + std::to_string(play));
      UseBoard(channels);
      EXPECT_EQ(SetMasks({0xFFFFFFF3u, 0xFFFFFFFF, 0xFFFFFFF5u}), 0);
      EXPECT_EQ(LiveMode(1), 0);
      EXPECT_EQ(BlankBits(channels), 0x0Cu);
      EXPECT_EQ(PlayMode(play), 0);
      EXPECT_EQ(BlankBits(channels), AllChannels(channels));
      const bool refused = play == 2 || play == 3 || play == 5;
      EXPECT_EQ(PlaySplit(play), refused ? -5 : 0);
      EXPECT_EQ(BlankBits(channels), refused ? AllChannels(channels) : 0x0Au);
      EXPECT_EQ(PlaySplit(0, 1), 0);
      EXPECT_EQ(BlankBits(channels), 0x0Au);
      EXPECT_EQ(g_display.blank_mask.playback, 0xAu);
      EXPECT_EQ(g_display.blank_mask.live, 0xCu);
      EXPECT_EQ(LiveMode(1), 0);
      EXPECT_EQ(BlankBits(channels), 0x0Cu);
    }
  }
}

TEST_F(RoundTrip, ASplitThatTheBoardLacksPutsBackTheMaskOfTheSwitch) {
  UseBoard(8);
  EXPECT_EQ(PlayMode(3), 0);
  EXPECT_EQ(PlaySplit(6), -1);
  EXPECT_EQ(BlankBits(8), 0xFFu);
  EXPECT_EQ(g_display.blank_mask.playback, 0xFFu);
  EXPECT_EQ(g_display.play_split, 3);
  EXPECT_EQ(BlankMask(0x12), 0);
  EXPECT_EQ(PlaySplit(6), -1);
  EXPECT_EQ(BlankBits(8), 0x12u);
  EXPECT_EQ(g_display.blank_mask.playback, 0x12u);
}

TEST_F(RoundTrip, NewChannelMasksApplyTheOneOfTheViewThatIsShown) {
  for (const int channels : kBoards) {
    SCOPED_TRACE(channels);
    UseBoard(channels);
    EXPECT_EQ(LiveMode(1), 0);
    EXPECT_EQ(SetMasks({0xFFFFFFF9u, 0xFFFFFFFF, 0xFFFFFFF6u}), 0);
    EXPECT_EQ(BlankBits(channels), 0x06u);
    EXPECT_EQ(PlayMode(1), 0);
    EXPECT_EQ(SetMasks({0xFFFFFFFEu, 0xFFFFFFFF, 0xFFFFFFFCu}), 0);
    EXPECT_EQ(BlankBits(channels), 0x03u);
    EXPECT_EQ(g_display.blank_mask.live, 0x06u);
    EXPECT_EQ(g_display.blank_mask.playback, 0x03u);
    EXPECT_EQ(BlankMask(0), 0);
    EXPECT_EQ(RestoreBlank(), 0);
    EXPECT_EQ(BlankBits(channels), 0x03u);
    EXPECT_EQ(LiveMode(1), 0);
    EXPECT_EQ(BlankBits(channels), 0x01u);
    EXPECT_EQ(BlankMask(0), 0);
    EXPECT_EQ(RestoreBlank(), 0);
    EXPECT_EQ(BlankBits(channels), 0x01u);
  }
}

TEST_F(RoundTrip, RecordBitsChangeWithTheMasksAndTheLiveSwitchAlone) {
  for (const int channels : kBoards) {
    SCOPED_TRACE(channels);
    UseBoard(channels);
    const auto poke = [&](std::uint8_t value) {
      for (unsigned c = 0; c < static_cast<unsigned>(channels); ++c) {
        world().board.Poke(c / 4, 1, static_cast<std::uint8_t>(0x61 + 3 * (c % 4)), value);
      }
    };
    const std::uint32_t off = 0x5A5Au & AllChannels(channels);
    EXPECT_EQ(SetMasks({0xFFFFFFFF, ~off, 0xFFFFFFFF}), 0);
    EXPECT_EQ(UnrecordedBits(channels), off);
    for (const std::uint8_t value : Channels{0x00, 0x04}) {
      poke(value);
      const std::uint32_t poked = value == 0 ? 0 : AllChannels(channels);
      EXPECT_EQ(PlayMode(1), 0);
      EXPECT_EQ(PlaySplit(1), 0);
      EXPECT_EQ(PlaySplit(0, 1), 0);
      EXPECT_EQ(BlankMask(0xFFFF), 0);
      EXPECT_EQ(RestoreBlank(), 0);
      EXPECT_EQ(UnrecordedBits(channels), poked);
      EXPECT_EQ(LiveMode(1), 0);
      EXPECT_EQ(UnrecordedBits(channels), off);
      poke(value);
      EXPECT_EQ(LiveSplit(0), 0);
      EXPECT_EQ(BlankMask(0xFFFF), 0);
      EXPECT_EQ(RestoreBlank(), 0);
      EXPECT_EQ(UnrecordedBits(channels), poked);
    }
    EXPECT_EQ(PlayMode(1), 0);
    EXPECT_EQ(SetMasks({0xFFFFFFFF, off, 0xFFFFFFFF}), 0);
    EXPECT_EQ(UnrecordedBits(channels), ~off & AllChannels(channels));
  }
}

TEST_F(RoundTrip, TheMasksOfTheHostSurviveEveryOtherCommand) {
  UseBoard(16);
  EXPECT_EQ(SetMasks({0x12345678u, 0x9ABCDEF0u, 0x0F1E2D3Cu}), 0);
  for (int trip = 0; trip < 3; ++trip) {
    EXPECT_EQ(PlayMode(6), 0);
    EXPECT_EQ(PlaySplit(4), 0);
    EXPECT_EQ(BlankMask(0x0F0F), 0);
    EXPECT_EQ(LiveMode(6), 0);
    EXPECT_EQ(LiveSplit(3), 0);
    EXPECT_EQ(RestoreBlank(), 0);
  }
  EXPECT_EQ(g_display.live_mask, 0x12345678u);
  EXPECT_EQ(g_display.record_mask, 0x9ABCDEF0u);
  EXPECT_EQ(g_display.play_mask, 0x0F1E2D3Cu);
}

TEST_F(RoundTrip, EachViewKeepsItsSplitModeWhileTheOtherIsShown) {
  UseBoard(16);
  EXPECT_EQ(LiveMode(5), 0);
  EXPECT_EQ(PlayMode(3), 0);
  EXPECT_EQ(g_display.live_split, 5);
  EXPECT_EQ(g_display.play_split, 3);
  EXPECT_EQ(g_display.g_view_mode, 1u);
  EXPECT_EQ(LiveSplit(0), -1);
  EXPECT_EQ(g_display.live_split, 5);
  EXPECT_EQ(PlaySplit(6), 0);
  EXPECT_EQ(LiveMode(2), 0);
  EXPECT_EQ(g_display.live_split, 2);
  EXPECT_EQ(g_display.play_split, 6);
  EXPECT_EQ(g_display.g_view_mode, 0u);
  EXPECT_EQ(PlaySplit(1), -1);
  EXPECT_EQ(g_display.play_split, 6);
}

TEST_F(RoundTrip, AFullPictureIsRememberedThroughLiveViewUntilTheNextPlaybackSplit) {
  for (const int channels : kBoards) {
    SCOPED_TRACE(channels);
    UseBoard(channels);
    EXPECT_EQ(PlayMode(1), 0);
    EXPECT_EQ(PlaySplit(0, 1), 0);
    EXPECT_EQ(Register(0, 1, 0x0C), 0xC0);
    EXPECT_EQ(LiveMode(1), 0);
    EXPECT_EQ(Register(0, 1, 0x0C), 0x00);
    EXPECT_EQ(g_playback.full_picture, 1);
    Mark();
    EXPECT_EQ(PlayMode(1), 0);
    EXPECT_EQ(g_playback.full_picture, 0);
    int zoom_writes = 0;  // the switch's own, and the split's for the flag
    for (const Access& access : Writes()) {
      if (access == W(kAll, 1, 0x0C, 0x00)) ++zoom_writes;
    }
    EXPECT_EQ(zoom_writes, 2);
  }
}

TEST_F(RoundTrip, ShowsAllChannelsInTheLiveWayAgainWhateverThePlaybackLayoutWas) {
  for (const int channels : kBoards) {
    for (int play = 0; play <= HighestMode(channels) + 1; ++play) {
      for (int live = 0; live <= HighestMode(channels); ++live) {
        SCOPED_TRACE(std::to_string(channels) + " channels, playback " + std::to_string(play) +
                     ", live " + std::to_string(live));
        UseBoard(channels);
        EXPECT_EQ(PlayMode(play), 0);
        EXPECT_EQ(PlaySplit(0, 1), 0);
        EXPECT_EQ(LiveMode(live), 0);
        for (int c = 0; c < channels; ++c) {
          const int p = c / 4;
          const int n = c % 4;
          EXPECT_EQ(Register(p, 1, 0x10 + 8 * n), 0xC0 + n);
          EXPECT_EQ(Register(p, 1, 0x11 + 8 * n) & 0x0E, 0x02);
          EXPECT_EQ(Register(p, 1, 0x12 + 8 * n), 0x00);
          EXPECT_EQ(Register(p, 1, 0x16 + 8 * n), n);
        }
        for (int p = 0; p < channels / 4; ++p) {
          EXPECT_EQ(Register(p, 1, 0x06), 0x00);
          EXPECT_EQ(Register(p, 1, 0x0C), 0x00);
          EXPECT_EQ(Register(p, 1, 0x01), 0x02);  // of the playback switch: live does not write it
        }
        if (HasFailure()) return;
      }
    }
  }
}

// A board that was initialized for good: what a trip leaves behind is only what live display never
// writes.
TEST_F(RoundTrip, LeavesNothingBehindButTheRegistersOfDecodedPictures) {
  struct Row {
    int channels;
    int live;  // a layout that places every channel
  };
  for (const Row& row : {Row{4, 1}, Row{8, 3}, Row{16, 6}}) {
    for (int play = 0; play <= HighestMode(row.channels); ++play) {
      for (const int option : {0, 1}) {
        SCOPED_TRACE(std::to_string(row.channels) + " channels, playback " + std::to_string(play) +
                     ", option " + std::to_string(option));
        harness::Restart();
        StartBoard(row.channels, VEXO_VIDEO_NTSC);
        world().board.HoldSync(false);  // or its bit changes while time passes
        ASSERT_EQ(LiveMode(row.live), 0);
        const RegisterImage before = Image();
        ASSERT_EQ(PlayMode(play), 0);
        ASSERT_EQ(PlaySplit(option == 0 ? 1 : 0, option), 0);
        EXPECT_NE(Image(), before);
        ASSERT_EQ(LiveMode(row.live), 0);
        const RegisterImage after = Image();
        for (std::size_t p = 0; p < 4; ++p) {
          for (std::size_t page = 0; page < 3; ++page) {
            for (std::size_t reg = 0; reg < 256; ++reg) {
              const bool decoded_window =
                  page == 0 && reg >= 0x80 && reg < 0xC0 && reg % 16 >= 5 && reg % 16 <= 9;
              const bool decoded_path = page == 1 && (reg == 0x01 || reg == 0x0D || reg == 0x0E);
              if (decoded_window || decoded_path) continue;
              ASSERT_EQ(+after[p][page][reg], +before[p][page][reg])
                  << "chip " << p << ", page " << page << ", register 0x" << std::hex << reg;
            }
          }
        }
      }
    }
  }
}

TEST_F(RoundTrip, ATwelveChannelBoardSwitchesItsViewAndItsRecordBitsAndNothingElse) {
  UseBoard(12);
  EXPECT_EQ(SetMasks({0, ~0x123u, 0}), 0);
  EXPECT_EQ(UnrecordedBits(12), 0x123u);
  const std::uint32_t blank = BlankBits(12);
  EXPECT_EQ(PlayMode(1), -8);
  EXPECT_EQ(g_display.view, kPlayback);
  EXPECT_EQ(PlaySplit(1), -1);
  EXPECT_EQ(BlankMask(0xFFF), -1);
  EXPECT_EQ(RestoreBlank(), -1);
  EXPECT_EQ(SetMasks({0, ~0x456u, 0}), 0);
  EXPECT_EQ(UnrecordedBits(12), 0x456u);
  EXPECT_EQ(LiveMode(1), 0);
  EXPECT_EQ(g_display.view, kLive);
  EXPECT_EQ(LiveSplit(1), -1);
  EXPECT_EQ(RestoreBlank(), -1);
  EXPECT_EQ(BlankBits(12), blank);
  EXPECT_EQ(g_display.blank_mask.live, 0u);
  EXPECT_EQ(g_display.blank_mask.playback, 0u);
  EXPECT_EQ(g_display.live_split, 7);
  EXPECT_EQ(g_display.play_split, 7);
}

}  // namespace
}  // namespace test
