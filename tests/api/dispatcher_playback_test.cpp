// The codes of playback and of the register dumps: which bytes of the record go where, what comes
// back, which chip and page a code stands for.
#include "VexoCtrlSDK.h"
#include "chip/video_state.h"
#include "display/display_state.h"
#include "harness/host.h"
#include "tests/support/library_test.h"

namespace {

using Lines = std::vector<std::string>;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kRecordBytes = harness::kCommandRecordBytes;

// ---- 0xF006, 0xF00A ---------------------------------------------------------------------------

class DispatcherPlayback : public test::LibraryTest {
 protected:
  bool LockHeld() { return world().kernel.MutexHeld(u"CS4_GlobalLock"); }

  // Which channels of a board of four have a window, as bits.
  unsigned Shown() {
    unsigned shown = 0;
    for (int n = 0; n < 4; ++n) {
      if (Register(0, 1, 0x31 + 4 * n) != 0) shown |= 1u << n;
    }
    return shown;
  }
};

// Holds: Command codes of VEXOAPI_CommandProc "VEXO_CMD_PLAY_SPLIT: VexoSplitRecord"
TEST_F(DispatcherPlayback, PlaySplitTakesModeOptionAndChannelsFromBytesFourFiveAndSix) {
  StartBoard(4);
  g_display.view = kViewPlayback;
  // A full picture: every channel gets the whole screen, channel 2 is in front.
  EXPECT_EQ(Command(VEXO_CMD_PLAY_SPLIT, {9, 9, 9, 9, VEXO_SPLIT_FULL, 1, 2}), 0);
  EXPECT_EQ(g_display.play_split, VEXO_SPLIT_FULL);
  EXPECT_EQ(Register(0, 1, 0x39), 0xB4);
  EXPECT_EQ(Register(0, 1, 0x20), 0xD6);
  EXPECT_EQ(Register(0, 1, 0x28), 0x97);
  // Without the option a centred one, which counts as a 2 x 2.
  EXPECT_EQ(Command(VEXO_CMD_PLAY_SPLIT, {9, 9, 9, 9, VEXO_SPLIT_FULL, 0, 2, 9, 9, 9}), 0);
  EXPECT_EQ(g_display.play_split, VEXO_SPLIT_4);
  EXPECT_EQ(Register(0, 1, 0x38), 0x2C);
  EXPECT_EQ(Register(0, 1, 0x39), 0x82);
  EXPECT_EQ(Shown(), 0x4u);
  EXPECT_EQ(Command(VEXO_CMD_PLAY_SPLIT, {9, 9, 9, 9, VEXO_SPLIT_4, 1, 1, 3, 9, 9}), 0);
  EXPECT_EQ(g_display.play_split, VEXO_SPLIT_4);
  EXPECT_EQ(Shown(), 0xAu);
  EXPECT_FALSE(LockHeld());
}

// Holds: Result codes "VEXO_OK: done; some operations hand through a positive value"
TEST_F(DispatcherPlayback, PlaySplitHandsThroughWhatTheOperationAnswers) {
  struct Case {
    int channels;
    std::uint8_t view;
    std::uint8_t mode;
    int result;
  };
  constexpr Case kCases[] = {
      {4, kViewPlayback, VEXO_SPLIT_4, 0},    {16, kViewPlayback, VEXO_SPLIT_16, 0},
      {4, kViewLive, VEXO_SPLIT_4, -1},       {4, kViewPlayback, VEXO_SPLIT_16, -1},
      {8, kViewPlayback, VEXO_SPLIT_16, -1},  {12, kViewPlayback, VEXO_SPLIT_4, -1},
      {16, kViewPlayback, VEXO_SPLIT_6, -5},  {16, kViewPlayback, VEXO_SPLIT_8, -5},
      {16, kViewPlayback, VEXO_SPLIT_13, -5}, {16, kViewPlayback, 7, -5},
      {16, kViewPlayback, 255, -5},           {16, kViewLive, 7, -1},
  };
  for (const Case& c : kCases) {
    harness::Restart();
    PretendBoard(c.channels);
    g_display.view = c.view;
    EXPECT_EQ(Command(VEXO_CMD_PLAY_SPLIT, {0, 0, 0, 0, c.mode}), c.result)
        << c.channels << " channels, mode " << +c.mode;
    EXPECT_FALSE(LockHeld());
  }
}

// Holds: Command codes of VEXOAPI_CommandProc "VEXO_CMD_PLAY_MODE: VexoPlayModeRecord"
// Holds: VexoPlayModeRecord "mode: 5 VEXO_SPLIT_..."
// Holds: VexoPlayModeRecord "channels: 6 channel of each window"
TEST_F(DispatcherPlayback, PlayModeTakesModeAndChannelsFromBytesFiveAndSix) {
  StartBoard(4);
  EXPECT_EQ(Command(VEXO_CMD_PLAY_MODE, {9, 9, 9, 9, 9, VEXO_SPLIT_4, 0, 2, 9, 9}), 0);
  EXPECT_EQ(g_display.view, kViewPlayback);
  EXPECT_EQ(g_display.play_split, VEXO_SPLIT_4);
  EXPECT_EQ(Shown(), 0x5u);
  // In mode 0 the byte before the mode is no option: the picture is always centred.
  EXPECT_EQ(Command(VEXO_CMD_PLAY_MODE, {9, 9, 9, 9, 9, VEXO_SPLIT_FULL, 3, 9, 9, 9}), 0);
  EXPECT_EQ(Register(0, 1, 0x3C), 0x2C);
  EXPECT_EQ(Shown(), 0x8u);
  EXPECT_FALSE(LockHeld());
}

// Holds: Result codes "VEXO_OK: done; some operations hand through a positive value"
TEST_F(DispatcherPlayback, PlayModeHandsThroughWhatTheOperationAnswers) {
  for (const int channels : {4, 8, 12, 16}) {
    for (const std::uint8_t mode : Bytes{VEXO_SPLIT_FULL, VEXO_SPLIT_16, 7, 255}) {
      harness::Restart();
      PretendBoard(channels);
      EXPECT_EQ(Command(VEXO_CMD_PLAY_MODE, {0, 0, 0, 0, 0, mode}), channels == 12 ? -8 : 0)
          << channels << " channels, mode " << +mode;
      EXPECT_EQ(g_display.view, kViewPlayback);
      EXPECT_FALSE(LockHeld());
    }
  }
}

// The modes that the split command refuses.
// Holds: VexoSplitRecord "VEXO_CMD_LIVE_SPLIT (reads byte 4"
TEST_F(DispatcherPlayback, PlayModeLaysOutWhatPlaySplitRefuses) {
  for (const std::uint8_t mode : Bytes{VEXO_SPLIT_6, VEXO_SPLIT_8, VEXO_SPLIT_13}) {
    harness::Restart();
    PretendBoard(16);
    EXPECT_EQ(Command(VEXO_CMD_PLAY_MODE, {0, 0, 0, 0, 0, mode}), 0);
    EXPECT_EQ(g_display.play_split, mode);
  }
}

struct ModeCase {
  std::uint32_t code;
  std::uint32_t view_mode;
};
constexpr ModeCase kModeCases[] = {{VEXO_CMD_LIVE_MODE, 0}, {VEXO_CMD_PLAY_MODE, 1}};

TEST_F(DispatcherPlayback, TheViewWordStaysUntilTheConditionsOfAModeSwitchAreMet) {
  AttachAndBind();
  for (const ModeCase& c : kModeCases) {
    g_video.g_chip_ready = 0;
    g_display.g_view_mode = 7;
    EXPECT_EQ(Command(c.code, Bytes(24)), -8);
    g_video.g_chip_ready = 1;
    EXPECT_EQ(CommandNull(c.code), -5);
    EXPECT_EQ(g_display.g_view_mode, 7u);
  }
}

TEST_F(DispatcherPlayback, TheViewWordFollowsTheModeSwitchWhateverComesBack) {
  for (const ModeCase& c : kModeCases) {
    for (const int channels : {4, 8, 12, 16}) {  // 12: the switch into playback answers -8
      for (const std::uint8_t mode : Bytes{VEXO_SPLIT_FULL, VEXO_SPLIT_16, 200}) {
        harness::Restart();
        PretendBoard(channels);
        g_display.g_view_mode = 7;
        Command(c.code, {0, 0, 0, 0, mode, mode});
        EXPECT_EQ(g_display.g_view_mode, c.view_mode)
            << std::hex << c.code << std::dec << ", " << channels << " channels, mode " << +mode;
      }
    }
  }
}

TEST_F(DispatcherPlayback, NoOtherCommandTouchesTheViewWord) {
  StartBoard(4);
  g_display.g_view_mode = 7;
  for (std::uint32_t code = 0xF002; code <= 0xFF0C; ++code) {
    if (code == VEXO_CMD_LIVE_MODE || code == VEXO_CMD_PLAY_MODE) continue;
    if (code == 0xF013) code = 0xFEFF;
    Command(code, {kChipMaster, 2, 0x67});
    EXPECT_EQ(g_display.g_view_mode, 7u) << std::hex << code;
  }
  EXPECT_EQ(Command(VEXO_CMD_INIT, Bytes(24)), 0);
  EXPECT_EQ(g_display.g_view_mode, 7u);
  ExpectReports();  // the dumps read registers without a name
}

// ---- 0xFF00 to 0xFF0B ------------------------------------------------------------------------

struct DumpCase {
  std::uint32_t code;
  std::uint8_t chip;
  std::uint8_t page;
  const char* announcement;
};

class DispatcherDumps : public test::LibraryTest {
 protected:
  bool LockHeld() { return world().kernel.MutexHeld(u"CS4_GlobalLock"); }
};

constexpr DumpCase kDumpCases[] = {
    {VEXO_CMD_DUMP_MASTER_P0, 0x03, 0, "==>> READ MASTER PAGE0 \r\n"},
    {VEXO_CMD_DUMP_SLAVE1_P0, 0x0C, 0, "==>> READ SLAVE1 PAGE0 \r\n"},
    {VEXO_CMD_DUMP_SLAVE2_P0, 0x30, 0, "==>> READ SLAVE2 PAGE0 \r\n"},
    {VEXO_CMD_DUMP_SLAVE3_P0, 0xC0, 0, "==>> READ SLAVE3 PAGE0 \r\n"},
    {VEXO_CMD_DUMP_MASTER_P1, 0x03, 1, "==>> READ MASTER PAGE1 \r\n"},
    {VEXO_CMD_DUMP_SLAVE1_P1, 0x0C, 1, "==>> READ SLAVE1 PAGE1 \r\n"},
    {VEXO_CMD_DUMP_SLAVE2_P1, 0x30, 1, "==>> READ SLAVE2 PAGE1 \r\n"},
    {VEXO_CMD_DUMP_SLAVE3_P1, 0xC0, 1, "==>> READ SLAVE3 PAGE1 \r\n"},
    {VEXO_CMD_DUMP_MASTER_P2, 0x03, 2, "==>> READ MASTER PAGE2 \r\n"},
    {VEXO_CMD_DUMP_SLAVE1_P2, 0x0C, 2, "==>> READ SLAVE1 PAGE2 \r\n"},
    {VEXO_CMD_DUMP_SLAVE2_P2, 0x30, 2, "==>> READ SLAVE2 PAGE2 \r\n"},
    {VEXO_CMD_DUMP_SLAVE3_P2, 0xC0, 2, "==>> READ SLAVE3 PAGE2 \r\n"},
};

// The upper 16 bits count for nothing here either; no dump needs, reads or writes a record.
// Holds: Command codes of VEXOAPI_CommandProc "Register dumps to the debug output"
TEST_F(DispatcherDumps, EachCodeReachesItsChipAndPage) {
  PretendBoard(4);  // of the other chips it lists what the bus returns
  std::uint32_t code = 0xFF00;
  for (const DumpCase& c : kDumpCases) {
    EXPECT_EQ(c.code, code++);
    const Bytes record(kRecordBytes, 0x11);
    for (const std::uint32_t upper : {0u, 0x10000u, 0xABCD0000u}) {
      Mark();
      EXPECT_EQ(upper == 0 ? CommandNull(c.code) : Command(upper | c.code, record), 0)
          << std::hex << c.code;
      const std::vector<test::Access> accesses = Accesses();
      ASSERT_EQ(accesses.size(), 256u);
      for (std::size_t reg = 0; reg < accesses.size(); ++reg) {
        const test::Access& access = accesses[reg];
        EXPECT_EQ(access, test::R(c.chip, c.page, static_cast<int>(reg), access.value));
      }
      ASSERT_GE(Debug().size(), 2u);
      EXPECT_EQ(Debug()[1], c.announcement);
      EXPECT_FALSE(LockHeld());
    }
    EXPECT_EQ(last_record, record);
  }
  EXPECT_EQ(code, 0xFF0Cu);
  ExpectReports();  // dumps read registers without a name
}

TEST_F(DispatcherDumps, NeedInitializedChips) {
  AttachAndBind();
  Mark();
  for (const DumpCase& c : kDumpCases) {
    EXPECT_EQ(CommandNull(c.code), -8) << std::hex << c.code;
    EXPECT_FALSE(LockHeld());
  }
  EXPECT_EQ(Cycles(), 0u);
  EXPECT_EQ(Debug(), Lines{});
}

}  // namespace
