#include "display/play_mode.h"

#include <string>
#include <vector>

#include "VexoCtrlSDK.h"
#include "chip/video_state.h"
#include "display/display_state.h"
#include "display/play_layout.h"
#include "display/play_split.h"
#include "tests/display/play_test.h"

namespace test {
namespace {

constexpr const char* kAlreadyPlayback = ">> TW_SetPlaybackModeInfo ALREADY PLAYBACK MODE\r\n";

// A playback mode record: five bytes that nobody reads, the mode, the channel list.
Channels RecordOf(int mode, const Channels& list) {
  Channels record = {0xDE, 0xAD, 0xBE, 0xEF, 0x55, static_cast<std::uint8_t>(mode)};
  record.insert(record.end(), list.begin(), list.end());
  return record;
}

// Lists that fill all windows, some, none, and in an order that the walk does not meet.
std::vector<Channels> Lists() {
  return {Ascending(),
          {15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0},
          {2, 3, 0xFF, 1, 0, 7, 4, 16, 6, 5, 9, 8, 12, 11, 10, 15},
          {9, 10, 11, 12, 13, 14, 15, 0, 0, 1, 2, 3, 4, 5, 6, 7},
          {9, 10, 11, 12, 13, 14, 15, 0, 1, 2, 3, 4, 5, 6, 7, 8},
          {1, 3, 6, 8, 9, 13, 14, 15, 200, 200, 200, 200, 200, 200, 200, 200},
          Channels(16, 0xFF)};
}

const VexoPlayModeRecord* RecordIn(const Channels& bytes) {
  return reinterpret_cast<const VexoPlayModeRecord*>(bytes.data());
}

std::int32_t CallVariant(int channels, const VexoPlayModeRecord* record) {
  if (channels == 4) return TW_SetPlaybackModeInfo4Ch(record);
  return channels == 8 ? TW_SetPlaybackModeInfo8Ch(record) : TW_SetPlaybackModeInfo16Ch(record);
}

// ---- Every board and standard -------------------------------------------------------------------

class PlayMode : public PlayTest, public ::testing::WithParamInterface<BoardCase> {
 protected:
  void SetUp() override { UsePlayback(GetParam().channels, GetParam().standard); }
};

// Holds: VexoSplitRecord "In playback, here and in VEXO_CMD_PLAY_MODE"
TEST_P(PlayMode, SwitchMakesExactlyTheAccessesOfItsStepsInEveryModeFromBothViews) {
  for (const int mode : {0, 1, 2, 3, 4, 5, 6, 7, 255}) {
    for (const Channels& list : Lists()) {
      for (const std::uint8_t view : Channels{kLive, kPlayback}) {
        for (const std::uint8_t full : Channels{0, 1}) {
          SCOPED_TRACE("mode " + std::to_string(mode) + ", first channel " +
                       std::to_string(list[0]) + ", view " + std::to_string(view) + ", full " +
                       std::to_string(full));
          const Channels record = RecordOf(mode, list);
          g_display.view = view;
          g_playback = {full, 1};
          g_display.play_split = 7;
          ReferenceModel model = Begin();
          EXPECT_EQ(model.PlayMode(mode, list), 0);
          EXPECT_EQ(TW_SetPlaybackModeInfo(RecordIn(record)), 0);
          ExpectPlayed(model);
          if (HasFailure()) return;
        }
      }
    }
  }
}

TEST_P(PlayMode, VariantGivesTheResultOfItsSplitAndBlanksNothingAfterARefusal) {
  const int highest = HighestMode(GetParam().channels);
  for (const int mode : {0, 1, 2, 3, 4, 5, 6, 7, 255}) {
    SCOPED_TRACE(mode);
    const Channels record = RecordOf(mode, Ascending());
    g_playback = {1, 1};
    const std::uint8_t before = g_display.play_split;
    ReferenceModel model = Begin();
    model.PlayModeVariant(mode, Ascending());
    EXPECT_EQ(CallVariant(GetParam().channels, RecordIn(record)), mode <= highest ? 0 : -5);
    ExpectPlayed(model);
    if (mode > highest) {
      EXPECT_EQ(g_display.play_split, before);
      for (const Access& access : Accesses()) EXPECT_EQ(access.kind, 'w');
    }
  }
}

TEST_P(PlayMode, VariantLeavesTheViewAloneAndWritesNoZoomOfItsOwn) {
  const Channels record = RecordOf(1, Ascending());
  g_display.view = kLive;
  ReferenceModel model = Begin();
  model.PlayModeVariant(1, Ascending());
  EXPECT_EQ(CallVariant(GetParam().channels, RecordIn(record)), 0);
  ExpectPlayed(model);
  EXPECT_EQ(g_display.view, kLive);
  // In live view the mask is kept for live pictures.
  EXPECT_EQ(g_display.blank_mask.live, (1u << GetParam().channels) - 1);
  EXPECT_EQ(g_display.blank_mask.playback, 0xA5A5C3C3u);
  for (const Access& access : Accesses()) EXPECT_FALSE(access.page == 1 && access.reg == 0x0C);
}

TEST_P(PlayMode, VariantRefusesANullRecordInSilence) {
  const ReferenceModel model = Begin();
  EXPECT_EQ(CallVariant(GetParam().channels, nullptr), -5);
  ExpectPlayed(model);
  ExpectUntouched();
}

TEST_P(PlayMode, RefusesANullRecordInSilenceAndStaysInItsView) {
  for (const std::uint8_t view : Channels{kLive, kPlayback}) {
    g_display.view = view;
    g_playback = {1, 1};
    const ReferenceModel model = Begin();
    EXPECT_EQ(TW_SetPlaybackModeInfo(nullptr), -5);
    ExpectPlayed(model);
    ExpectUntouched();
  }
}

TEST_P(PlayMode, CalledTwiceTellsSoAndWritesEverythingAgainAndGives0BothTimes) {
  const Channels record = RecordOf(1, Ascending());
  g_display.view = kLive;
  Begin();
  EXPECT_EQ(TW_SetPlaybackModeInfo(RecordIn(record)), 0);
  EXPECT_EQ(DebugText(), "");
  const std::vector<Access> first = Writes();
  Begin();
  EXPECT_EQ(TW_SetPlaybackModeInfo(RecordIn(record)), 0);
  ExpectPrinted(kAlreadyPlayback);
  const std::vector<Access> second = Writes();
  ASSERT_EQ(second.size(), first.size());
  // The attributes keep bits of what the registers held, which is other bytes by now.
  const std::size_t blanks = static_cast<std::size_t>(GetParam().channels);
  for (std::size_t i = 0; i + blanks < first.size(); ++i) EXPECT_EQ(second[i], first[i]) << i;
}

// Holds: VexoPlayModeRecord "Read: byte 5"
TEST_P(PlayMode, ShowsMode0AsTheCentredPictureWhateverElseTheRecordHolds) {
  for (const std::uint8_t other : Channels{0x00, 0x01, 0xFF}) {
    const Channels record = {other, other, other, other, other, 0,    2,    3,    0xFF, 0xFF, 0xFF,
                             0xFF,  0xFF,  0xFF,  0xFF,  0xFF,  0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    Begin();
    EXPECT_EQ(TW_SetPlaybackModeInfo(RecordIn(record)), 0);
    EXPECT_EQ(g_display.play_split, 1);
    EXPECT_EQ(g_playback.centred_picture, 1);
    EXPECT_EQ(g_playback.full_picture, 0);
    for (int c = 0; c < 4; ++c) {
      EXPECT_EQ(RectOf(c), c < 2 ? kHidden : CentredPictureRect(GetParam().standard == 0));
    }
    EXPECT_EQ(Register(0, 1, 0x20), 0xD6);
    EXPECT_EQ(Register(0, 1, 0x28), 0x97);
  }
}

// Holds: VexoPlayModeRecord "Otherwise all channels are blank afterwards"
TEST_P(PlayMode, EndsWithEveryChannelOfTheBoardBlankedAndKeepsTheLiveMask) {
  const int channels = GetParam().channels;
  for (int mode = 0; mode <= HighestMode(channels); ++mode) {
    const Channels record = RecordOf(mode, Ascending());
    const ReferenceModel before = Begin();
    EXPECT_EQ(TW_SetPlaybackModeInfo(RecordIn(record)), 0);
    EXPECT_EQ(g_display.blank_mask.playback, AllChannels(channels));
    EXPECT_EQ(g_display.blank_mask.live, before.live_blank);
    for (int c = 0; c < channels; ++c) {
      const int old = before.image.at(static_cast<std::size_t>(c / 4))
                          .at(1)
                          .at(static_cast<std::size_t>(0x11 + 8 * (c % 4)));
      EXPECT_EQ(Register(c / 4, 1, 0x11 + 8 * (c % 4)), old | 0x04) << mode << ", " << c;
    }
  }
}

// Holds: VexoPlayModeRecord "Answers VEXO_OK also when the board lacks the mode"
TEST_P(PlayMode, AModeThatTheBoardLacksGives0AndBlanksNoChannel) {
  for (const int mode : {HighestMode(GetParam().channels) + 1, 7, 128, 255}) {
    const Channels record = RecordOf(mode, Ascending());
    g_display.view = kLive;
    const ReferenceModel before = Begin();
    EXPECT_EQ(TW_SetPlaybackModeInfo(RecordIn(record)), 0);
    EXPECT_EQ(g_display.blank_mask.playback, before.play_blank);
    EXPECT_EQ(g_display.play_split, before.play_split);
    EXPECT_EQ(g_display.view, kPlayback);
    for (const int reg : {0x11, 0x19, 0x21, 0x29}) {
      EXPECT_EQ(Register(0, 1, reg), before.image[0][1].at(static_cast<std::size_t>(reg)));
    }
  }
}

// Holds: VEXOAPI_CommandProc "VEXO_CMD_PLAY_MODE: 100 ms"
TEST_P(PlayMode, TakesTheSettlingTimeOfTheSplitAnd50MsAtItsEnd) {
  for (int mode = 0; mode < 8; ++mode) {
    SCOPED_TRACE(mode);
    const bool settles =
        mode <= HighestMode(GetParam().channels) && mode != 2 && mode != 3 && mode != 5;
    const Channels record = RecordOf(mode, Ascending());
    Begin();
    EXPECT_EQ(TW_SetPlaybackModeInfo(RecordIn(record)), 0);
    EXPECT_EQ(Elapsed(), settles ? 100u : 50u);
    const std::vector<Pause> pauses = Pauses();
    ASSERT_EQ(pauses.size(), settles ? 2u : 1u);
    const std::vector<Access> accesses = Accesses();
    EXPECT_EQ(pauses.back(), (Pause{accesses.size(), 50}));
    if (!settles) continue;
    EXPECT_EQ(pauses.front().ms, 50u);
    EXPECT_EQ(accesses.at(pauses.front().after), W(kAll, 1, 0x12, 0x20));
  }
}

INSTANTIATE_TEST_SUITE_P(Boards, PlayMode,
                         ::testing::Values(BoardCase{4, 0}, BoardCase{4, 1}, BoardCase{8, 0},
                                           BoardCase{8, 1}, BoardCase{16, 0}, BoardCase{16, 1},
                                           BoardCase{16, 2}),
                         NameOf);

// ---- Single boards ------------------------------------------------------------------------------

class PlayModeEdges : public PlayTest {};

TEST_F(PlayModeEdges, WritesTheSourcesOfEveryChipThatTheBoardHasBeforeTheSplit) {
  const std::vector<Access> rows = {
      W(0x03, 1, 0x1E, 0x11), W(0x03, 1, 0x26, 0x12), W(0x03, 1, 0x2E, 0x13),
      W(0x0C, 1, 0x1E, 0x15), W(0x0C, 1, 0x26, 0x16), W(0x0C, 1, 0x2E, 0x17),
      W(0x30, 1, 0x1E, 0x19), W(0x30, 1, 0x26, 0x1A), W(0x30, 1, 0x2E, 0x1B),
      W(0xC0, 1, 0x1E, 0x1D), W(0xC0, 1, 0x26, 0x1E), W(0xC0, 1, 0x2E, 0x1F)};
  for (const int channels : {4, 8, 16}) {
    UsePlayback(channels);
    const Channels record = RecordOf(1, Ascending());
    EXPECT_EQ(TW_SetPlaybackModeInfo(RecordIn(record)), 0);
    std::vector<Access> expected = {W(0xFF, 1, 0x0C, 0x00)};
    expected.insert(expected.end(), rows.begin(), rows.begin() + 3 * (channels / 4));
    expected.push_back(W(0xFF, 1, 0x01, 0x02));
    expected.push_back(W(0xFF, 1, 0x06, 0x04));  // the split begins
    std::vector<Access> begun = Accesses();
    ASSERT_GT(begun.size(), expected.size());
    begun.resize(expected.size());
    EXPECT_EQ(begun, expected) << channels;
    int others = 0;  // source registers are written nowhere else
    for (const Access& access : Accesses()) {
      if (access.page == 1 && (access.reg == 0x1E || access.reg == 0x26 || access.reg == 0x2E)) {
        ++others;
      }
    }
    EXPECT_EQ(others, 3 * (channels / 4));
  }
}

TEST_F(PlayModeEdges, Mode6OnFourChannelsGives0AndStillResetsTheOverlay) {
  UsePlayback(4);
  const Channels record = RecordOf(6, Ascending());
  EXPECT_EQ(TW_SetPlaybackModeInfo(RecordIn(record)), 0);
  EXPECT_EQ(Accesses(), (std::vector<Access>{W(0xFF, 1, 0x0C, 0x00), W(0x03, 1, 0x1E, 0x11),
                                             W(0x03, 1, 0x26, 0x12), W(0x03, 1, 0x2E, 0x13),
                                             W(0xFF, 1, 0x01, 0x02), W(0xFF, 1, 0x22, 0x60),
                                             W(0xFF, 1, 0x2A, 0x60), W(0xFF, 1, 0x06, 0x04)}));
  EXPECT_EQ(Elapsed(), 50u);
  ExpectPrinted(kAlreadyPlayback);
}

TEST_F(PlayModeEdges, Mode5OnEightChannelsGives0AndStillResetsTheOverlay) {
  UsePlayback(8);
  g_display.view = kLive;
  const Channels record = RecordOf(5, Ascending());
  EXPECT_EQ(TW_SetPlaybackModeInfo(RecordIn(record)), 0);
  EXPECT_EQ(Accesses(), (std::vector<Access>{
                            W(0xFF, 1, 0x0C, 0x00), W(0x03, 1, 0x1E, 0x11), W(0x03, 1, 0x26, 0x12),
                            W(0x03, 1, 0x2E, 0x13), W(0x0C, 1, 0x1E, 0x15), W(0x0C, 1, 0x26, 0x16),
                            W(0x0C, 1, 0x2E, 0x17), W(0xFF, 1, 0x01, 0x02), W(0xFF, 1, 0x22, 0x60),
                            W(0xFF, 1, 0x2A, 0x60), W(0xFF, 1, 0x06, 0x04)}));
  EXPECT_EQ(DebugText(), "");
}

TEST_F(PlayModeEdges, Mode7On16ChannelsGives0AndResetsNoOverlay) {
  UsePlayback(16);
  const Channels record = RecordOf(7, Ascending());
  EXPECT_EQ(TW_SetPlaybackModeInfo(RecordIn(record)), 0);
  const std::vector<Access> accesses = Accesses();
  ASSERT_EQ(accesses.size(), 14u);
  EXPECT_EQ(accesses.front(), W(0xFF, 1, 0x0C, 0x00));
  EXPECT_EQ(accesses.back(), W(0xFF, 1, 0x01, 0x02));
}

TEST_F(PlayModeEdges, OverlayRegistersEndResetOn4And8ChannelsAndAsTheSplitWroteThemOn16) {
  // -1: the split does not write the display mode.
  struct Row {
    int mode;
    int overlay;
    int display_mode;
  };
  for (const int channels : {4, 8, 16}) {
    for (const Row& row :
         {Row{0, 0x20, 0x04}, Row{1, 0x20, 0x04}, Row{2, 0x00, -1}, Row{3, 0x20, -1},
          Row{4, 0x20, 0x04}, Row{5, 0x20, -1}, Row{6, 0x20, 0x04}}) {
      if (row.mode > HighestMode(channels)) continue;
      SCOPED_TRACE(std::to_string(channels) + " channels, mode " + std::to_string(row.mode));
      UsePlayback(channels);
      const bool reset = channels != 16;
      const Channels record = RecordOf(row.mode, Ascending());
      const RegisterImage before = Image();
      EXPECT_EQ(TW_SetPlaybackModeInfo(RecordIn(record)), 0);
      for (int p = 0; p < channels / 4; ++p) {
        EXPECT_EQ(Register(p, 1, 0x12), row.overlay);
        EXPECT_EQ(Register(p, 1, 0x1A), row.overlay);
        EXPECT_EQ(Register(p, 1, 0x22), reset ? 0x60 : row.overlay);
        EXPECT_EQ(Register(p, 1, 0x2A), reset ? 0x60 : row.overlay);
        const int kept = before.at(static_cast<std::size_t>(p))[1][0x06];
        EXPECT_EQ(Register(p, 1, 0x06), reset                  ? 0x04
                                        : row.display_mode < 0 ? kept
                                                               : row.display_mode);
      }
    }
  }
}

TEST_F(PlayModeEdges, AfterAFullPictureTheZoomGoesTwiceAndTheOverlayIsResetForASplit) {
  // The split has no option, so the flag never lives until the reset, a refused mode included.
  for (const int mode : {0, 1, 6}) {
    SCOPED_TRACE(mode);
    UsePlayback(4);
    const Channels list = Ascending();
    ASSERT_EQ(TW_SetPlaySplitMode(0, 1, list.data()), 0);
    ASSERT_EQ(g_playback.full_picture, 1);
    ASSERT_EQ(Register(0, 1, 0x0C), 0xC0);
    const Channels record = RecordOf(mode, list);
    Mark();
    EXPECT_EQ(TW_SetPlaybackModeInfo(RecordIn(record)), 0);
    EXPECT_EQ(g_playback.full_picture, 0);
    const std::vector<Access> accesses = Accesses();
    EXPECT_EQ(accesses.at(0), W(0xFF, 1, 0x0C, 0x00));
    EXPECT_EQ(accesses.at(4), W(0xFF, 1, 0x01, 0x02));
    EXPECT_EQ(accesses.at(5), W(0xFF, 1, 0x0C, 0x00));
    EXPECT_EQ(Register(0, 1, 0x0C), 0x00);
    EXPECT_EQ(Register(0, 1, 0x22), 0x60);
    EXPECT_EQ(Register(0, 1, 0x2A), 0x60);
    EXPECT_EQ(Register(0, 1, 0x06), 0x04);
  }
}

TEST_F(PlayModeEdges, ResetOverlayFollowsTheFullPictureFlagAloneOnEveryBoard) {
  for (const int channels : {0, 4, 8, 12, 16}) {
    for (const std::uint8_t centred : Channels{0, 1}) {
      UsePlayback(channels);
      g_playback = {1, centred};
      TW_ResetPlayOverlay();
      EXPECT_EQ(Accesses(),
                (std::vector<Access>{
                    W(0xFF, 1, 0x12, 0x00), W(0xFF, 1, 0x1A, 0x00), W(0xFF, 1, 0x22, 0x00),
                    W(0xFF, 1, 0x2A, 0x00), W(0xFF, 1, 0x0D, 0x00), W(0xFF, 1, 0x0E, 0x00),
                    W(0xFF, 1, 0x22, 0x00), W(0xFF, 1, 0x2A, 0x00), W(0xFF, 1, 0x06, 0x00)}));
      g_playback = {0, centred};
      Mark();
      TW_ResetPlayOverlay();
      EXPECT_EQ(Accesses(), (std::vector<Access>{W(0xFF, 1, 0x22, 0x60), W(0xFF, 1, 0x2A, 0x60),
                                                 W(0xFF, 1, 0x06, 0x04)}));
      EXPECT_EQ(g_playback.full_picture, 0);
      EXPECT_EQ(g_playback.centred_picture, centred);
    }
  }
}

// Holds: Result codes "VEXO_ERROR_NOT_READY: no host window"
// Holds: VEXOAPI_CommandProc "It comes back although a part was not done"
TEST_F(PlayModeEdges, ABoardOfAnotherSizeGivesMinus8AfterTheZoomWriteAndStaysInPlayback) {
  for (const int channels : {0, 12}) {
    for (const std::uint8_t view : Channels{kLive, kPlayback}) {
      SCOPED_TRACE(std::to_string(channels) + " channels, view " + std::to_string(view));
      UsePlayback(channels);
      g_display.view = view;
      g_playback = {1, 1};
      const Channels record = RecordOf(1, Ascending());
      const ReferenceModel before = Next();
      EXPECT_EQ(TW_SetPlaybackModeInfo(RecordIn(record)), -8);
      EXPECT_EQ(Accesses(), (std::vector<Access>{W(0xFF, 1, 0x0C, 0x00)}));
      EXPECT_EQ(Elapsed(), 0u);
      EXPECT_EQ(DebugText(),
                view == kPlayback ? std::string("[VexoCtrlSDK]: ") + kAlreadyPlayback : "");
      EXPECT_EQ(g_display.view, kPlayback);
      EXPECT_EQ(g_display.play_split, before.play_split);
      EXPECT_EQ(g_display.blank_mask.playback, before.play_blank);
      EXPECT_EQ(g_playback.full_picture, 1);
      EXPECT_EQ(g_playback.centred_picture, 1);
    }
  }
}

TEST_F(PlayModeEdges, AVariantGivesTheResultOfTheBlankMaskAfterASplit) {
  for (const int channels : {4, 8, 16}) {
    UsePlayback(channels);
    g_video.max_channel = 12;  // masks are refused, the variant's split is not
    const Channels record = RecordOf(1, Ascending());
    EXPECT_EQ(CallVariant(channels, RecordIn(record)), -1) << channels;
    EXPECT_EQ(g_display.play_split, 1);
  }
}

TEST_F(PlayModeEdges, CostsTheCyclesOfItsStepsOnEveryBoardInEveryMode) {
  // Accesses around the split: zoom and source, three a chip, three of the reset (not on 16
  // channels), two a channel of the blank mask.
  struct Row {
    int channels;
    int mode;
    unsigned split;  // accesses
    unsigned cycles;
  };
  const std::vector<Row> rows = {
      {4, 0, 58, 4 * 74},    {4, 1, 61, 4 * 77},    {8, 0, 74, 4 * 101},  {8, 1, 77, 4 * 104},
      {8, 2, 62, 4 * 89},    {8, 3, 80, 4 * 107},   {8, 4, 73, 4 * 100},  {16, 0, 106, 4 * 152},
      {16, 1, 109, 4 * 155}, {16, 2, 62, 4 * 108},  {16, 3, 80, 4 * 126}, {16, 4, 106, 4 * 152},
      {16, 5, 125, 4 * 171}, {16, 6, 102, 4 * 148},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::to_string(row.channels) + " channels, mode " + std::to_string(row.mode));
    const auto channels = static_cast<unsigned>(row.channels);
    const unsigned around = 2 + 3 * (channels / 4) + (channels == 16 ? 0 : 3) + 2 * channels;
    EXPECT_EQ(row.cycles, 4 * (around + row.split));
    for (const int standard : {0, 1}) {
      UsePlayback(row.channels, standard);
      const Channels record = RecordOf(row.mode, Ascending());
      EXPECT_EQ(TW_SetPlaybackModeInfo(RecordIn(record)), 0);
      EXPECT_EQ(Cycles(), row.cycles);
    }
  }
  for (const auto& [channels, mode, cycles] :
       {std::array{4, 2, 4 * 8}, std::array{8, 5, 4 * 11}, std::array{16, 7, 4 * 14}}) {
    UsePlayback(channels);
    const Channels record = RecordOf(mode, Ascending());
    EXPECT_EQ(TW_SetPlaybackModeInfo(RecordIn(record)), 0);
    EXPECT_EQ(Cycles(), static_cast<std::uint64_t>(cycles));
  }
}

// ---- Through the command ------------------------------------------------------------------------

TEST_F(PlayModeEdges, TheCommandSetsTheViewWordWhateverTheOperationReturns) {
  struct Row {
    int channels;
    int mode;
    int result;
  };
  for (const Row& row :
       {Row{4, 1, 0}, Row{4, 6, 0}, Row{8, 3, 0}, Row{12, 1, -8}, Row{0, 1, -8}, Row{16, 5, 0}}) {
    SCOPED_TRACE(std::to_string(row.channels) + " channels, mode " + std::to_string(row.mode));
    UsePlayback(row.channels);
    g_display.view = kLive;
    g_display.g_view_mode = 0xAABBCCDD;
    EXPECT_EQ(Command(VEXO_CMD_PLAY_MODE, RecordOf(row.mode, Ascending())), row.result);
    EXPECT_EQ(g_display.g_view_mode, 1u);
    EXPECT_EQ(g_display.view, kPlayback);
  }
}

TEST_F(PlayModeEdges, TheCommandNeedsARecordAndChipsAndElseLeavesTheViewWord) {
  UsePlayback(4);
  g_display.g_view_mode = 5;
  EXPECT_EQ(CommandNull(VEXO_CMD_PLAY_MODE), -5);
  g_video.g_chip_ready = 0;
  EXPECT_EQ(Command(VEXO_CMD_PLAY_MODE, RecordOf(1, Ascending())), -8);
  EXPECT_EQ(g_display.g_view_mode, 5u);
  ExpectUntouched();
}

TEST_F(PlayModeEdges, TheCommandPassesModeAndListOfItsRecordAndWritesNothingToIt) {
  UsePlayback(16);
  const Channels list = {9, 10, 11, 12, 13, 14, 15, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
  ReferenceModel model = Begin();
  model.PlayMode(4, list);
  const Channels record = RecordOf(4, list);
  EXPECT_EQ(Command(VEXO_CMD_PLAY_MODE, record), 0);
  ExpectPlayed(model);
  Channels after = last_record;
  ASSERT_EQ(after.size(), 64u);
  for (std::size_t i = record.size(); i < 64; ++i) EXPECT_EQ(after[i], 0);
  after.resize(record.size());
  EXPECT_EQ(after, record);
}

}  // namespace
}  // namespace test
