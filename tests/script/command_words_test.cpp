// Commands by name: their records, and what comes back.
#include "script/command_words.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "VexoCtrlSDK.h"
#include "display/board_variant.h"
#include "harness/host.h"
#include "tests/script/script_run.h"

namespace script {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr std::size_t kRecord = harness::kCommandRecordBytes;

// The record of "live-split mode 16 ...".
sim::Bytes Record(const std::string& line) {
  const std::vector<std::string> words = SplitWords(line);
  Arguments arguments(std::span<const std::string>(words).subspan(1));
  sim::Bytes record = RecordOf(ParseRecordFields(*FindCommand(words.front()), arguments));
  record.resize(kRecord);
  return record;
}

std::string Mistake(const std::string& line) {
  try {
    Record(line);
  } catch (const Malformed& error) {
    return error.what();
  }
  return "none";
}

template <typename T>
T As(const sim::Bytes& record) {
  T as;
  std::memcpy(&as, record.data(), sizeof as);
  return as;
}

// ---- Records ------------------------------------------------------------------------------------

TEST(CommandRecord, HoldsASplitByItsPictures) {
  const auto split = As<VexoSplitRecord>(Record("live-split mode 16 channels 0-15"));
  EXPECT_EQ(split.mode, VEXO_SPLIT_16);
  EXPECT_EQ(split.option, 0);
  for (unsigned k = 0; k < VEXO_MAX_CHANNELS; ++k) EXPECT_EQ(split.channels[k], k);
  EXPECT_EQ(As<VexoSplitRecord>(Record("play-split option 1 mode full")).option, 1);
  const std::pair<const char*, unsigned> modes[] = {
      {"full", VEXO_SPLIT_FULL}, {"4", VEXO_SPLIT_4},     {"6", VEXO_SPLIT_6},
      {"8", VEXO_SPLIT_8},       {"9", VEXO_SPLIT_9},     {"13", VEXO_SPLIT_13},
      {"16", VEXO_SPLIT_16},     {"0x06", VEXO_SPLIT_16}, {"0xFF", 0xFF},
  };
  for (const auto& [word, mode] : modes) {
    const std::string fields = std::string(" channels 1 mode ") + word;
    EXPECT_EQ(As<VexoLiveModeRecord>(Record("live-mode" + fields)).mode, mode) << word;
    EXPECT_EQ(As<VexoPlayModeRecord>(Record("play-mode" + fields)).mode, mode) << word;
  }
}

TEST(CommandRecord, TakesChannelsAsNumbersAndRanges) {
  const auto split = As<VexoLiveModeRecord>(Record("live-mode channels 3,2,9-11,255"));
  EXPECT_THAT(std::vector<std::uint8_t>(split.channels, split.channels + 7),
              ElementsAre(3, 2, 9, 10, 11, 255, 0));
}

TEST(CommandRecord, TakesMasksAsChannelsOrNumbers) {
  const auto masks = As<VexoChannelMasksRecord>(
      Record("channel-masks live-display all record 0-3,15 play-display 0xF0F0F0F0"));
  EXPECT_EQ(masks.live_display, 0xFFFFu);
  EXPECT_EQ(masks.record, 0x800Fu);
  EXPECT_EQ(masks.play_display, 0xF0F0F0F0u);
  EXPECT_EQ(As<VexoMaskRecord>(Record("blank-mask mask 4")).mask, 4u);
  EXPECT_EQ(As<VexoMaskRecord>(Record("blank-mask mask 4-4")).mask, 16u);
  EXPECT_EQ(As<VexoMaskRecord>(Record("blank-mask mask none")).mask, 0u);
}

TEST(CommandRecord, TakesBytesUpToTheNextField) {
  const auto record =
      As<VexoMotionMaskRecord>(Record("motion-mask mask 12 ab FF channel 3 level 2"));
  EXPECT_EQ(record.channel, 3);
  EXPECT_EQ(record.level, 2);
  EXPECT_THAT(std::vector<std::uint8_t>(record.mask, record.mask + 4),
              ElementsAre(0x12, 0xAB, 0xFF, 0));
}

TEST(CommandRecord, TakesARegister) {
  const auto record = As<VexoRegRecord>(Record("write-reg chip slave2 page 1 reg 0x30 value 0x5A"));
  EXPECT_EQ(record.chip_select, VEXO_CHIP_SLAVE2);
  EXPECT_EQ(record.page, 1);
  EXPECT_EQ(record.reg, 0x30);
  EXPECT_EQ(record.value, 0x5A);
}

TEST(CommandRecord, TakesWideNumbers) {
  const auto record = As<VexoInitRecord>(Record("init reserved2 0x1234 reserved1 7"));
  EXPECT_EQ(record.reserved1, 7);
  EXPECT_EQ(record.reserved2, 0x1234);
}

TEST(CommandRecord, SaysWhatItExpected) {
  const std::pair<const char*, const char*> cases[] = {
      {"live-split mod 4",
       "expected live-split's mode or channels, found 'mod'; did you mean mode?"},
      {"live-split mode 4 mode 9", "expected live-split's channels, found 'mode'"},
      {"live-split mode 7",
       "expected mode full, 4, 6, 8, 9, 13 or 16, or a value from 0x00 on, found '7'"},
      {"live-split mode ful",
       "expected mode full, 4, 6, 8, 9, 13 or 16, or a value from 0x00 on, found 'ful'; did you "
       "mean full?"},
      {"live-split mode 0x100", "expected mode 0 to 255, found '0x100'"},
      {"live-split mode",
       "expected mode full, 4, 6, 8, 9, 13 or 16, or a value from 0x00 on, found the end of the "
       "line"},
      {"play-split mode 13", "expected mode full, 4, 9 or 16, or a value from 0x00 on, found '13'"},
      {"live-split channels 0-16",
       "expected channels as numbers up to 255, 16 at most (0-3,7), found '0-16'"},
      {"live-split channels 256",
       "expected channels as numbers up to 255, 16 at most (0-3,7), found '256'"},
      {"live-split channels 3-1",
       "expected channels as numbers up to 255, 16 at most (0-3,7), found '3-1'"},
      {"live-split channels",
       "expected channels as numbers up to 255, 16 at most (0-3,7), found the end of the line"},
      {"motion-mask level 256", "expected level 0 to 255, found '256'"},
      {"motion-mask mask x", "expected a byte of two hexadecimal digits, found 'x'"},
      {"init reserved1 65536", "expected reserved1 0 to 65535, found '65536'"},
      {"init chip-id 00 01 02 03 04", "expected 4 bytes of chip-id, found '04'"},
      {"blank-mask mask 0-16",
       "expected mask as channels (0-3,7), all, none or a number, found '0-16'"},
      {"motion-clear 00", "expected the end of the line, found '00'"},
  };
  for (const auto& [line, mistake] : cases) EXPECT_EQ(Mistake(line), mistake) << line;
}

// ---- What comes back ----------------------------------------------------------------------------

std::vector<std::string> Return(const std::string& line, std::int64_t result,
                                unsigned channels = 0) {
  const std::vector<std::string> words = SplitWords(line);
  const sim::Bytes record = Record(line);
  return ReturnInWords(FindCommand(words.front())->code, record, record, result, channels);
}

TEST(CommandReturn, ShowsTheFieldsThatTheLibraryFillsIn) {
  const sim::Bytes returned = Record("init chip-count 4 video-standard pal chip-id 28 28 28 2F");
  EXPECT_THAT(ReturnInWords(VEXO_CMD_INIT, sim::Bytes(kRecord), returned, 0),
              ElementsAre("< chip-count 4, video-standard pal, chip-id 28 28 28 2f", "= 0"));
  EXPECT_THAT(Return("read-reg chip slave1 page 1 value 0x5A", 0),
              ElementsAre("< value 0x5A", "= 0"));
  EXPECT_THAT(Return("live-split mode 4 channels 0-3", 0), ElementsAre("= 0"));
  EXPECT_THAT(Return("init video-standard 0x03", 0),
              ElementsAre("< chip-count 0, video-standard 0x00000003, chip-id 00 00 00 00", "= 0"));
}

TEST(CommandReturn, ShowsOnlyWhatWasTouchedAfterAFailure) {
  const sim::Bytes sent = Record("init chip-id 01 02 03 04");
  EXPECT_THAT(ReturnInWords(VEXO_CMD_INIT, sent, sent, -1),
              ElementsAre("= -1: no chip answers; the lock stays held"));
  EXPECT_THAT(ReturnInWords(VEXO_CMD_INIT, sent, sim::Bytes(kRecord), -1),
              ElementsAre("< chip-id 00 00 00 00", StartsWith("= -1: no chip answers")));
}

TEST(CommandReturn, TellsTheValueThatWasRefused) {
  EXPECT_THAT(Return("live-split mode 0x07", -5),
              ElementsAre("= -5: mode 0x07 is none of full, 4, 6, 8, 9, 13 or 16"));
  EXPECT_THAT(Return("play-split mode 0x02", -5),
              ElementsAre("= -5: mode 0x02 is none of full, 4, 9 or 16"));
  EXPECT_THAT(Return("motion-mask channel 9 level 7", -5),
              ElementsAre("= -5: channel 9: the board has no such channel"))
      << "the level would have been taken";
}

TEST(CommandReturn, TellsWhyASplitFailed) {
  EXPECT_THAT(Return("live-split mode 16", -1),
              ElementsAre("= -1: mode 16: the board lacks it, or playback is shown"));
  EXPECT_THAT(Return("live-split mode 16", -1, 4),
              ElementsAre("= -1: mode 16: the board lacks it"));
  EXPECT_THAT(Return("live-split mode 16", -1, 16),
              ElementsAre("= -1: mode 16: playback is shown"));
  EXPECT_THAT(Return("play-split mode 4", -1, 8),
              ElementsAre("= -1: mode 4: live pictures are shown"));
  EXPECT_THAT(Return("live-split mode full", -1, 12),
              ElementsAre("= -1: mode full: the board lacks it"));
}

TEST(CommandReturn, KnowsWhichSplitsABoardHas) {
  for (const unsigned channels : {4U, 8U, 12U, 16U}) {
    const BoardVariant* const board = FindBoardVariant(static_cast<std::uint8_t>(channels));
    for (const char* mode : {"full", "4", "6", "8", "9", "13", "16"}) {
      const std::string line = std::string("live-split mode ") + mode;
      const bool has = board != nullptr && Record(line)[4] <= board->highest_split_mode;
      EXPECT_THAT(Return(line, -1, channels),
                  ElementsAre(HasSubstr(has ? "playback is shown" : "the board lacks it")))
          << line << " on " << channels;
    }
  }
}

TEST(CommandReturn, TellsWhatCameOfValuesThatWereTaken) {
  EXPECT_THAT(Return("live-mode mode 0x07", 0),
              ElementsAre("= 0: mode 0x07 is none of full, 4, 6, 8, 9, 13 or 16: live pictures are "
                          "shown, their split is not laid out"));
  EXPECT_THAT(Return("live-mode mode 9", 0, 4),
              ElementsAre("= 0: mode 9, which the board lacks: live pictures are shown, their "
                          "split is not laid out"));
  EXPECT_THAT(Return("live-mode mode 9", 0, 8), ElementsAre("= 0"));
  EXPECT_THAT(Return("motion-setup cell-type 5 timing-low 12 timing-high 11", 0),
              ElementsAre("= 0: cell-type 5 is none of 0-4: they look as with 0; timing-low 12 is "
                          "none of 0-11: it is 3"));
  EXPECT_THAT(Return("motion-reg channel 16", 0),
              ElementsAre("= 0: channel 16 is none of 0-15: nothing is written"));
  EXPECT_THAT(
      Return("write-reg chip 0x01 page 3", 0),
      ElementsAre("= 0: chip 0x01 is none of master, slave1, slave2, slave3 or all: no chip "
                  "is selected; page 3 is none of 0-2: nothing is written"));
}

TEST(CommandReturn, TellsAMissingRecord) {
  EXPECT_THAT(ReturnInWords(VEXO_CMD_LIVE_SPLIT, {}, {}, -5),
              ElementsAre("= -5: the command needs a record"));
  EXPECT_THAT(ReturnInWords(VEXO_CMD_MOTION_MASK, {}, {}, -5),
              ElementsAre("= -5: the command needs a record"));
  EXPECT_THAT(ReturnInWords(VEXO_CMD_INIT, {}, {}, -5),
              ElementsAre("= -5: the command needs a record; the lock stays held"));
  EXPECT_THAT(ReturnInWords(VEXO_CMD_STOP_MONITOR, {}, {}, 0), ElementsAre("= 0"));
}

TEST(CommandReturn, TellsOtherResults) {
  EXPECT_THAT(Return("live-split mode 4", -8),
              ElementsAre("= -8: not ready: not attached, no window, or chips not initialized"));
  EXPECT_THAT(Return("play-mode mode 4", -8), ElementsAre(HasSubstr("or 12 channels, which")));
  EXPECT_THAT(Return("blank-mask mask 1", -1),
              ElementsAre("= -1: no layout fits the board (12 channels)"));
  EXPECT_THAT(ReturnInWords(0x1F012, {}, {}, -1),
              ElementsAre("= -1: 0x1F012 is no command; the lock stays held"));
  EXPECT_THAT(ReturnInWords(0xF012, {}, {}, -8), ElementsAre("= -8"));
  EXPECT_THAT(Return("live-split mode 4", 3), ElementsAre("= 3"));
}

TEST(CommandReturn, TakesARecordWithoutBytesForZeros) {
  EXPECT_THAT(ReturnInWords(VEXO_CMD_LIVE_SPLIT, {}, sim::Bytes(kRecord), -5),
              ElementsAre("= -5: a value is refused"));
}

// ---- In scripts ---------------------------------------------------------------------------------

class CommandLines : public ScriptRunTest {};

TEST_F(CommandLines, CallTheLibraryAsTheNumbersDo) {
  EXPECT_EQ(RunBound("command motion-setup cell-type 1 channel 0xAA\ncommand 0xF00E channel 170\n"
                     "command motion-setup null\ncommand motion-setup"),
            kExitDone)
      << Err();
  EXPECT_THAT(harness::TheFake().calls,
              testing::IsSupersetOf({"command_proc 0xF00E 010000aa", "command_proc 0xF00E 000000aa",
                                     "command_proc 0xF00E null", "command_proc 0xF00E 00000000"}));
}

TEST_F(CommandLines, ExpectRecordByField) {
  EXPECT_EQ(RunBound("command motion-setup timing-low 5 channel 3\n"
                     "expect record channel 3 timing-low 5 cell-type 0\nexpect record channel 3"),
            kExitDone)
      << Err();
  EXPECT_EQ(RunBound("command motion-setup timing-low 5 channel 3\n"
                     "expect record channel 4 timing-low 5 cell-type 1"),
            kExitUnmet);
  EXPECT_EQ(Err(),
            "s.vexo:4: expect record channel 4 timing-low 5 cell-type 1: the record has channel 3, "
            "cell-type 0\n");
  EXPECT_EQ(RunBound("command motion-setup channel 3\nexpect record mode 4"), kExitUnmet);
  EXPECT_EQ(Err(),
            "s.vexo:4: expect record mode 4: 'command motion-setup channel 3' has no such field\n");
  std::string mask = "\nmotioninfo 3 0";
  for (int i = 0; i < 24; ++i) mask += " 03";
  EXPECT_EQ(RunBound("command motion-setup" + mask + "\nexpect record cell-type 3"), kExitUnmet)
      << "the record is of another call";
  EXPECT_EQ(RunBound("run 0\nexpect record mode 4"), kExitUnmet);
  EXPECT_EQ(Err(), "s.vexo:4: expect record mode 4: 'run 0' has no record\n");
}

TEST_F(CommandLines, SayWhatTheyExpect) {
  const std::pair<const char*, const char*> cases[] = {
      {"command live-splt",
       "expected a command code or its name (help commands), found 'live-splt'; did you mean "
       "live-split?"},
      {"command 0xF005 x", "expected a byte of two hexadecimal digits, found 'x'"},
      {"command live-split null 00", "expected the end of the line, found '00'"},
      {"expect record mde 4",
       "expected an offset below 64 or a field of a record, found 'mde'; did you mean mode?"},
      {"expect record mode 5",
       "expected mode full, 4, 6, 8, 9, 13 or 16, or a value from 0x00 on, found '5'"},
      {"expect record mode 4 level 2", "expected live-split's channels, found 'level'"},
      {"expect message video-inf",
       "expected a message number, or status, init-result, video-info, motion-status, "
       "chip-version or register-value, found 'video-inf'; did you mean video-info?"},
  };
  for (const auto& [line, mistake] : cases) {
    EXPECT_EQ(Run(std::string("attach\n") + line), kExitWrong) << line;
    EXPECT_THAT(Err(), StartsWith(std::string("s.vexo:2: ") + mistake + " (")) << line;
  }
}

TEST_F(CommandLines, ExpectMessagesByName) {
  EXPECT_EQ(RunBound("command motion-mask\nexpect message motion-status\n"
                     "expect message motion-status 4\nexpect no message video-info"),
            kExitDone)
      << Err();
  EXPECT_EQ(RunBound("command motion-mask\nexpect no message motion-status"), kExitUnmet);
  EXPECT_EQ(RunBound("command motion-mask\nexpect message video-info"), kExitUnmet);
}

}  // namespace
}  // namespace script
