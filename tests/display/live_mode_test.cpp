#include "display/live_mode.h"

#include <string>

#include "VexoCtrlSDK.h"
#include "chip/video_state.h"
#include "display/display_state.h"
#include "tests/display/display_test.h"

namespace test {
namespace {

constexpr const char* kAlreadyLive = ">> TW_SetLiveModeInfo ALREADY LIVE MODE\r\n";

const VexoLiveModeRecord* RecordIn(const Channels& bytes) {
  return reinterpret_cast<const VexoLiveModeRecord*>(bytes.data() + 1);
}

std::int32_t CallVariant(int channels, const VexoLiveModeRecord* record) {
  if (channels == 4) return TW_SetLiveModeInfo4Ch(record);
  return channels == 8 ? TW_SetLiveModeInfo8Ch(record) : TW_SetLiveModeInfo16Ch(record);
}

// A live mode record at an odd address, with bytes 0 to 3 that nobody reads.
Channels RecordOf(int mode, const Channels& list) {
  Channels record = {0xEE, 0xDE, 0xAD, 0xBE, 0xEF, static_cast<std::uint8_t>(mode)};
  record.insert(record.end(), list.begin(), list.end());
  return record;
}

class LiveMode : public DisplayTest, public ::testing::WithParamInterface<BoardCase> {
 protected:
  void SetUp() override { UseBoard(GetParam().channels, GetParam().standard); }
};

TEST_P(LiveMode, SwitchMakesExactlyTheAccessesOfItsSteps) {
  unsigned seed = 1;
  for (int mode = 0; mode < 8; ++mode) {
    for (const bool was_live : {false, true}) {
      SCOPED_TRACE("mode " + std::to_string(mode) + (was_live ? ", was live" : ""));
      const auto windows =
          mode < 7 ? static_cast<std::size_t>(kWindows.at(static_cast<std::size_t>(mode))) : 1u;
      const Channels record = RecordOf(mode, Ascending(windows));
      g_display.view = was_live ? 1 : 2;
      g_display.live_mask = 0xFFFF9BD3u;
      g_display.record_mask = 0x0000A5C6u;
      g_display.blank_mask = {1, 2};
      Scribble(seed++);
      ReferenceModel model = Model();
      EXPECT_EQ(model.LiveMode(mode, Ascending(windows)), 0);
      EXPECT_EQ(TW_SetLiveModeInfo(RecordIn(record)), 0);
      ExpectLike(model);
      EXPECT_EQ(g_display.view, 1);
      EXPECT_EQ(DebugText(), was_live ? std::string("[VexoCtrlSDK]: ") + kAlreadyLive : "");
      EXPECT_EQ(g_display.blank_mask.live, GetParam().channels % 12 != 0 ? ~0xFFFF9BD3u : 1u);
      EXPECT_EQ(g_display.blank_mask.playback, 2u);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Boards, LiveMode,
                         ::testing::Values(BoardCase{0, 0}, BoardCase{4, 0}, BoardCase{4, 1},
                                           BoardCase{8, 0}, BoardCase{8, 1}, BoardCase{12, 0},
                                           BoardCase{12, 1}, BoardCase{16, 0}, BoardCase{16, 1},
                                           BoardCase{16, 2}),
                         NameOf);

class LiveModeVariant : public DisplayTest, public ::testing::WithParamInterface<int> {};

TEST_P(LiveModeVariant, ClearsOnlyBit2OfTheDisplayModeAndKeepsWhatElseTheMasterHolds) {
  UseBoard(GetParam());
  for (const int old : {0x00, 0x04, 0xFF, 0xFB, 0x45}) {
    SCOPED_TRACE(old);
    Scribble(7);
    for (unsigned p = 0; p < 4; ++p) world().board.Poke(p, 1, 0x06, 0x3C);
    world().board.Poke(0, 1, 0x06, static_cast<std::uint8_t>(old));
    const Channels record = RecordOf(1, Ascending(4));
    ReferenceModel model = Model();
    EXPECT_EQ(model.LiveModeVariant(1, Ascending(4)), 0);
    EXPECT_EQ(CallVariant(GetParam(), RecordIn(record)), 0);
    ExpectLike(model);
    EXPECT_EQ(Register(GetParam() / 4 - 1, 1, 0x06), old & 0xFB);
  }
}

TEST_P(LiveModeVariant, HandsThroughTheRefusalOfAModeThatTheBoardLacks) {
  UseBoard(GetParam());
  const Channels record = RecordOf(7, Ascending());
  ReferenceModel model = Model();
  EXPECT_EQ(model.LiveModeVariant(7, Ascending()), -5);
  EXPECT_EQ(CallVariant(GetParam(), RecordIn(record)), -5);
  ExpectLike(model);
  EXPECT_EQ(g_display.live_split, 7);
}

TEST_P(LiveModeVariant, RefusesANullRecordInSilence) {
  UseBoard(GetParam());
  EXPECT_EQ(CallVariant(GetParam(), nullptr), -5);
  ExpectUntouched();
}

// Holds: vexo stop "Programs the display for live pictures again"
TEST_P(LiveModeVariant, ResetProgramsTheLivePathWithoutASplitAndWithoutAChangeOfState) {
  UseBoard(GetParam());
  for (const std::uint8_t view : Channels{1, 2}) {
    for (const int display_mode : {0x00, 0x01, 0x04}) {
      SCOPED_TRACE("view " + std::to_string(view) + ", mode " + std::to_string(display_mode));
      Scribble(view);
      world().board.Poke(0, 1, 0x06, static_cast<std::uint8_t>(display_mode));
      g_display.view = view;
      g_display.live_split = 3;
      g_display.blank_mask = {5, 6};
      ReferenceModel model = Model();
      model.ResetLiveDisplay();
      TW_ResetLiveDisplay();
      ExpectLike(model);
      EXPECT_EQ(g_display.view, view);
      EXPECT_EQ(g_display.live_split, 3);
      EXPECT_EQ(g_display.blank_mask.live, 5u);
      EXPECT_EQ(g_display.blank_mask.playback, 6u);
      EXPECT_EQ(DebugText(), "");
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Boards, LiveModeVariant, ::testing::Values(4, 8, 16),
                         [](const auto& tested) {
                           return std::to_string(tested.param) + "Channels";
                         });

class LiveModeEdges : public DisplayTest {};

TEST_F(LiveModeEdges, WhileAlreadyLiveTellsSoAndReprogramsEverything) {
  UseBoard(8);
  const Channels record = RecordOf(4, Ascending(9));
  EXPECT_EQ(TW_SetLiveModeInfo(RecordIn(record)), 0);
  ExpectPrinted(kAlreadyLive);
  const std::vector<Access> first = Writes();
  Mark();
  EXPECT_EQ(TW_SetLiveModeInfo(RecordIn(record)), 0);
  ExpectPrinted(kAlreadyLive);
  EXPECT_EQ(Writes().size(), first.size());
  EXPECT_GT(first.size(), 100u);
}

// Holds: VexoLiveModeRecord "Answers VEXO_OK also when the board lacks the mode"
TEST_F(LiveModeEdges, AModeThatTheBoardLacksStillGives0AndProgramsAllButTheSplit) {
  UseBoard(8);
  g_display.view = kViewPlayback;
  g_display.live_split = 4;
  const Channels record = RecordOf(5, Ascending(13));
  ReferenceModel model = Model();
  EXPECT_EQ(model.LiveMode(5, {}), 0);
  EXPECT_EQ(TW_SetLiveModeInfo(RecordIn(record)), 0);
  ExpectLike(model);
  EXPECT_EQ(g_display.view, kViewLive);
  EXPECT_EQ(g_display.live_split, 4);
  for (int n = 0; n < 8; ++n) EXPECT_EQ(Register(n / 4, 1, 0x61 + 3 * (n % 4)), 0x00);
}

// Holds: VexoSplitRecord "In live display"
TEST_F(LiveModeEdges, TheSecond3x3PageShowsChannels0And1AsInTheSplitCommand) {
  UseBoard(16);
  g_display.view = kViewPlayback;
  EXPECT_EQ(Command(VEXO_CMD_LIVE_MODE,
                    {0, 0, 0, 0, VEXO_SPLIT_9, 9, 10, 11, 12, 13, 14, 15, 0xFF, 0xFF}),
            0);
  const std::vector<Rect> rects = DefaultRects(4, true);
  EXPECT_EQ(RectOf(0), rects.at(7));
  EXPECT_EQ(RectOf(1), rects.at(8));
  for (int n = 2; n < 9; ++n) EXPECT_EQ(RectOf(n), kHidden) << n;
  for (int n = 9; n < 16; ++n) EXPECT_EQ(RectOf(n), rects.at(static_cast<std::size_t>(n - 9))) << n;
}

// Holds: VEXOAPI_CommandProc "It comes back although a part was not done"
TEST_F(LiveModeEdges, ATwelveChannelBoardSkipsVariantAndBlankMask) {
  UseBoard(12);
  const Channels record = RecordOf(1, Ascending(4));
  g_display.record_mask = 0x00000FF0u;
  EXPECT_EQ(TW_SetLiveModeInfo(RecordIn(record)), 0);
  std::vector<Access> expected = {W(kAll, 1, 0x12, 0), W(kAll, 1, 0x1A, 0), W(kAll, 1, 0x22, 0),
                                  W(kAll, 1, 0x2A, 0), W(kAll, 1, 0x06, 0), W(kAll, 1, 0x0C, 0)};
  for (const int reg : {0x61, 0x64, 0x67, 0x6A}) expected.push_back(W(kMaster, 1, reg, 0x04));
  for (const int reg : {0x61, 0x64, 0x67, 0x6A}) expected.push_back(W(kSlave1, 1, reg, 0x00));
  for (const int reg : {0x61, 0x64, 0x67, 0x6A}) expected.push_back(W(kSlave2, 1, reg, 0x00));
  EXPECT_EQ(Accesses(), expected);
  EXPECT_EQ(g_display.live_split, 7);
}

TEST_F(LiveModeEdges, ANullRecordIsRefusedInSilenceAndTheViewStays) {
  UseBoard(16);
  g_display.view = 2;
  EXPECT_EQ(TW_SetLiveModeInfo(nullptr), -5);
  ExpectUntouched();
  EXPECT_EQ(g_display.view, 2);
  g_display.view = 1;
  EXPECT_EQ(TW_SetLiveModeInfo(nullptr), -5);
  ExpectUntouched();
}

TEST_F(LiveModeEdges, ASplitIsAcceptedAgainOnceTheViewIsLive) {
  UseBoard(16);
  g_display.view = 2;
  EXPECT_EQ(Command(VEXO_CMD_LIVE_SPLIT, {0, 0, 0, 0, 0, 0, 3}), -1);
  g_display.g_view_mode = 1;
  EXPECT_EQ(Command(VEXO_CMD_LIVE_MODE, {0, 0, 0, 0, 1, 0, 1, 2, 3}), 0);
  EXPECT_EQ(g_display.g_view_mode, 0u);
  EXPECT_EQ(g_display.view, 1);
  EXPECT_EQ(g_display.live_split, 1);
  EXPECT_EQ(Command(VEXO_CMD_LIVE_SPLIT, {0, 0, 0, 0, 0, 0, 3}), 0);
  EXPECT_EQ(g_display.live_split, 0);
}

TEST_F(LiveModeEdges, TheRegisterBlockGoesOutAsOneTableWrite) {
  UseBoard(4);
  TW_ResetLiveDisplay();
  // Select, address and release once for the 21 bytes; every other access has its own.
  const std::size_t others = Accesses().size() - 21;
  EXPECT_EQ(Cycles(), 24u + 4u * others);
}

}  // namespace
}  // namespace test
