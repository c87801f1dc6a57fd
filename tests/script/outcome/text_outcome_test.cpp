// What is said about a text line is what happened.
#include "script/outcome/text_outcome.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "script/grammar/pattern_walk.h"
#include "script/grammar/text_help.h"
#include "tests/script/outcome/outcome_fixture.h"
#include "text/back_end_text.h"
#include "text/chip_text.h"

namespace script {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

class TextOutcome : public OutcomeTest {};

// ---- What is said, command by command -----------------------------------------------------------

struct Case {
  unsigned chips;
  const char* line;  // the last of several, each ended by a semicolon, is looked at
  const char* said;
  bool written;  // registers
};

std::ostream& operator<<(std::ostream& out, const Case& c) {
  return out << c.line << " on " << c.chips << " chips";
}

class TextOutcomeOf : public OutcomeTest, public testing::WithParamInterface<Case> {};

TEST_P(TextOutcomeOf, IsWhatHappened) {
  const Case& c = GetParam();
  Start(c.chips);
  std::istringstream lines(c.line);
  std::string said;
  for (std::string line; std::getline(lines, line, ';');) said = Said(line);
  EXPECT_EQ(Result(), 0);
  EXPECT_EQ(said, c.said);
  EXPECT_EQ(Writes() != 0, c.written);
}

constexpr const char* kNoGrid =
    "no grid was drawn: only one, four, nine or sixteen pictures have one, and channels that are "
    "shown live";

const Case kSystem[] = {
    {4, "vexo uninit ", "this command asks for nothing: nothing was done", false},
    {4, "vexo set_emif 1 2 3 4 5 6 7 8 9 300 ", "this command asks for nothing: nothing was done",
     false},
    {4, "vexo rver ", "", false},
    {4, "vexo init 5 ", "", true},
    {4, "vexo init  5 ", "two separators in a row end the line: '5' is not read; NUMBER is 65535",
     true},
    {4, "vexo rr c0 0 1 ", "", false},
    {4, "vexo rr ff 0 fe ", "one chip can be read at a time: what all of them answer is no value",
     false},
    {4, "vexo rr 5 0 1 ",
     "CHIP 0x05 is none of 0x03, 0x0C, 0x30, 0xC0 and 0xFF: no chip was selected", false},
    {4, "vexo rr 3 3 1 ", "PAGE 3 is above 2: nothing was read", false},
    {2, "vexo rr 30 0 1 ", "slave2 is not fitted: no chip answered", false},
    {4, "vexo wr ff 1 6 4 ", "", true},
    {4, "vexo wr 3 3 6 4 ", "PAGE 3 is above 2: nothing was written", false},
    {1, "vexo wr c 1 6 4 ", "slave1 is not fitted: no chip took the value", true},
    {4, "vexo change_vdo pal ", "", false},
};
INSTANTIATE_TEST_SUITE_P(System, TextOutcomeOf, testing::ValuesIn(kSystem));

const Case kLive[] = {
    {4, "vexo zoom start  5 ",
     "two separators in a row end the line: '5' is not read; BLANK_MASK is 0", true},
    {4, "vexo zoom move 5 ", "unknown word 'move', expected start, stop or pos: nothing was done",
     false},
    {4, "vexo xscale 0 1 5 ", "VERTICAL 5 is no scale: nothing was written", false},
    {4, "vexo xscale 0 5 1 ", "HORIZONTAL 5 is no scale: the vertical ratio alone was written",
     true},
    {4, "vexo xscale 16 1 1 ",
     "CHANNEL 16 is none of the board's 16: channel 12 was written in its place", true},
    {2, "vexo xscale 8 1 1 ",
     "CHANNEL 8 is none of the board's 8: slave2 is not fitted and took nothing of what was "
     "written",
     true},
    {4, "vexo yscale 0 3 ", "RECORD_MODE 3 is above 2: nothing was written", false},
    {4, "vexo yscale 15 2 ", "", true},
    {4, "vexo lsplit 6 0 ", "", true},
    {4, "vexo lsplit 6 0 65535 ", "", true},
    {4, "vexo lsplit 7 0 ",
     "MODE 7 is no split: nothing was laid out, the blank mask alone was written", true},
    {4, "vexo lsplit 6 16 ", "CHANNEL 16 is none of the board's 16: it counts as 0", true},
    {4, "vexo lsplit 2 17 ",
     "CHANNEL 17 is none of the board's 16: channel 13 was written in the large window", true},
    {2, "vexo lsplit 2 9 ", "CHANNEL 9 is none of the board's 8: no channel is in the large window",
     true},
    {1, "vexo lsplit 0 12 ", "CHANNEL 12 is none of the board's 4: no channel is in front", true},
    {1, "vexo lsplit 2 0 ",
     "the board's 4 channels do not fill 6 windows: counted round, each is in the last one it got",
     true},
    {1, "vexo lsplit 4 0 ", "4 channels do not fill a 3 x 3: nothing is shown", true},
    {2, "vexo lsplit 4 0 ", "window 8 stays empty: the board has 8 channels", true},
    {3, "vexo lsplit 6 0 ", "windows 12 to 15 stay empty: the board has 12 channels", true},
    {2, "vexo mpip stop 6 0 256 ",
     "windows 8 to 15 stay empty: the board has 8 channels\n"
     "the board has no channel 8: those bits of BLANK_MASK count for nothing",
     true},
    {4, "vexo lsplit_pos 9 default ", "", false},
    {4, "vexo lsplit_pos 1 3 2 0 2 0 ", "", false},
    {4, "vexo lsplit_pos 1 4 2 0 2 0 ", "WINDOW 4 is above 3: nothing was done", false},
    {4, "vexo lsplit_pos 7 0 2 0 2 0 ", "MODE 7 is above 6: nothing was done", false},
    {4, "vexo pip start 3 3 ", "MAIN and INSET are one channel: it is the inset alone", true},
    {4, "vexo pip stop 9 ", "'9' is too much: it is not read", true},
    {1, "vexo pip start 0 5 ",
     "INSET 5 is none of the board's 4: slave1 is not fitted and took nothing of what was written",
     true},
    {4, "vexo mpip start 2 0 132 90 10 40 ", "the window ends before it begins: it shows nothing",
     true},
    {4, "vexo mpip move 2 20 62 40 40 ", "the window ends before it begins: it shows nothing",
     true},
    {3, "vexo zoom start ", "12 channels have no zoom: the blank mask alone was written", true},
    {4, "vexo zoom pos 181 120 ", "X 181 is past the edge: 180 was written", true},
    {4, "vexo zoom pos 0 121 ", "Y 121 is past the edge: 120 was written", true},
    {4, "vexo zoom pos 256 1 ", "X '256' is read as 0", true},
    {3, "vexo loss 1 ", "of 12 channels the masks reach 0 to 7 alone", true},
    {3, "vexo frz 1 ", "of 12 channels the masks reach 0 to 7 alone", true},
    {3, "vexo pip start 0 1 1 ", "", true},
    {3, "vexo pip start 0 1 256 ", "of 12 channels the masks reach 0 to 7 alone", true},
    {1, "vexo loss 17 ", "the board has no channel 4: those bits of BLANK_MASK count for nothing",
     true},
    {4, "vexo rec 3 0 ", "RECORD_MODE 3 is above 2: nothing was written", false},
    {4, "vexo rec 0 1 ", "SWITCHING 1 is neither 0 nor 4: nothing was written", false},
    {3, "vexo rec 0 0 ", "the queues of 12 channels are not written", true},
    {3, "vexo stop ", "of 12 channels the attributes of 0 to 3 alone were written", true},
};
INSTANTIATE_TEST_SUITE_P(Live, TextOutcomeOf, testing::ValuesIn(kLive));

const Case kPlayback[] = {
    {4, "vexo play 3 0 ", "SETUP 3 is above 2: no pattern was written", true},
    {3, "vexo play 0 0 ",
     "12 channels have no setup of their own: neither paths nor pattern were written", true},
    {4, "vexo psplit 7 0 ",
     "MODE 7 is no split: nothing was laid out, the blank mask alone was written", true},
    {4, "vexo psplit 6 3 ",
     "CHANNEL 3 is not used: each channel is in the window of its own number", true},
    {3, "vexo psplit 6 0 ", "of 12 channels 0 to 7 alone are shown", true},
    {2, "vexo psplit 0 8 ", "CHANNEL 8 is none of the board's 8: no picture is shown", true},
    {2, "vexo psplit 1 9 ", "CHANNEL 9 is none of the board's 8: it counts as 1", true},
    {1, "vexo psplit 4 0 ", "windows 4 to 8 stay empty: the board has 4 channels", true},
    {4, "vexo psplit_pos 6 16 1 1 1 1 ", "WINDOW 16 is above 15: nothing was done", false},
    {4, "vexo pbank show 0 ", "by the library's record neither is blanked: nothing was done",
     false},
    {4, "vexo pbank init ;vexo pbank show 0 ", "", true},
    {4, "vexo pbank init ;vexo pbank show 15 ",
     "the next channel is none of the board's: channel 12 was shown in its place", true},
    {2, "vexo pbank init ;vexo pbank show 7 ",
     "the next channel is none of the board's: no chip took it", true},
    {2, "vexo pbank show 8 ", "CHANNEL 8 is none of the board's 8: nothing was done", false},
    {3, "vexo pbank init ", "of 12 channels 0 to 3 alone were reached", true},
    {3, "vexo pbank init ;vexo pbank show 0 ",
     "by the library's record neither is blanked: nothing was done", false},
};
INSTANTIATE_TEST_SUITE_P(Playback, TextOutcomeOf, testing::ValuesIn(kPlayback));

const Case kMotion[] = {
    {4, "vexo mlevel 0 4 ", "LEVEL 4 is above 3: nothing was written", false},
    {4, "vexo mlevel 3 3 ", "", true},
    {4, "vexo mcell show 0 1 0 ", "", true},
    {4, "vexo mcell show 5 1 0 ", "TYPE 5 is taken for 0", true},
    {4, "vexo mcell show 0 2 0 ", kNoGrid, true},
    {4, "vexo mcell show 0 7 0 ", "MODE 7 is above 6: the cells were cleared and no grid drawn",
     true},
    {2, "vexo mcell show 0 6 8 ", "CHANNEL 8 is none of the board's 8: it has no cells", true},
    {4, "vexo frz 1 ;vexo mcell show 0 1 0 ", "frozen channels get no cells", true},
    {4, "vexo mmask change all 16 0 ", "CHANNEL 16 is above 15: nothing was done", false},
    {4, "vexo mmask change 0 1 12 ", "ROW 12 is above 11: nothing was done", false},
    {4, "vexo mmask change 0 20 1 ", "COLUMN 20 is above 15: it was taken for 12", true},
    {1, "vexo mmask change 7 1 1 ",
     "CHANNEL 7 is none of the board's 4: slave1 is not fitted and took nothing of what was "
     "written",
     true},
    {4, "vexo mshow 3 ", "REQUEST 3 is neither 1 nor 2: nothing was done", false},
    {4, "vexo mshow 1 ", "", true},
    {4, "vexo lsplit 3 0 ;vexo mshow 1 ", kNoGrid, true},
};
INSTANTIATE_TEST_SUITE_P(Motion, TextOutcomeOf, testing::ValuesIn(kMotion));

const Case kColors[] = {
    {4, "vexo color 17 all 128 128 128 128 ",
     "CHANNEL 17 is none of the board's 16: nothing was written", false},
    {4, "vexo color 16 all 128 128 128 128 ", "", true},
    {4, "vexo color 16 hue 3 ",
     "the hue of all channels cannot be set at once: nothing was written", false},
    {4, "vexo color 16 bri 50 ",
     "hue, saturation and contrast went to 0 with it: a text command left them so, or none has set "
     "them yet",
     true},
    {4, "vexo color 3 all 128 128 128 128 ;vexo color 3 bri 50 ", "", true},
    {4, "vexo color 3 all 128 128 0 128 ;vexo color 3 bri 50 ",
     "contrast went to 0 with it: a text command left it so, or none has set it yet", true},
};
INSTANTIATE_TEST_SUITE_P(Colors, TextOutcomeOf, testing::ValuesIn(kColors));

const Case kBackEnd[] = {
    {4, "vpb default ", "the driver is closed: nothing was sent (vpb init opens it)", false},
    {4, "vpb uninit ", "the driver is closed already: nothing was done", false},
    {4, "vpb init ", "", false},
    {4, "vpb init ;vpb init ", "the driver is open already", false},
    {4, "vpb init ;vpb set_wndpos 256 1 2 ", "WINDOW '256' is read as 0", false},
    {4, "vpb init ;vpb blen on 128 ", "", false},
    {4, "vpb init ;vpb uninit ", "", false},
};
INSTANTIATE_TEST_SUITE_P(BackEnd, TextOutcomeOf, testing::ValuesIn(kBackEnd));

// ---- Circumstances ------------------------------------------------------------------------------

TEST_F(TextOutcome, OfALineThatTheLibraryRefusesIsTheReason) {
  Start(1);
  EXPECT_EQ(Said("vexo lsplit 6 "), "missing: CHANNEL\nvexo lsplit MODE CHANNEL [BLANK_MASK]");
  EXPECT_EQ(Result(), -1);
  EXPECT_EQ(Said("lsplit 6 0 "), "a text line begins with vexo or vpb");
  EXPECT_EQ(Result(), -4);
  EXPECT_EQ(Said(std::string(256, 'x')), "a line has 255 characters at most");
  EXPECT_EQ(Result(), -1);
}

TEST_F(TextOutcome, TellsWhyTheLibraryIsNotInitialized) {
  Start(1);
  Watch([] { harness::Entry(0); });
  EXPECT_EQ(Said("vexo rver "), "the library is not initialized: attach comes first");
  EXPECT_EQ(Result(), -6);
}

TEST_F(TextOutcome, TellsThatAnotherProcessHasTheLibrary) {
  World().faults.Set(sim::Fault::EventExists, true);
  Watch([] { harness::Entry(1); });
  EXPECT_EQ(Said("vexo rver "), "the library is not initialized: another process has it");
  EXPECT_EQ(Result(), -6);
}

TEST_F(TextOutcome, OfAnInitializationWithoutChips) {
  Attach(0);
  EXPECT_EQ(Said("vexo init "), "no chip answered: the chips are not initialized");
  EXPECT_EQ(Said("vexo rver "), "the chips are not initialized: 0 was sent");
  Start(2);
  World().board.FitChips(0);
  EXPECT_EQ(Said("vexo init "),
            "no chip answered: the library goes on as initialized, with no channels");
  EXPECT_EQ(Said("vexo lsplit 6 0 "), "the library knows of no channels: nothing was laid out");
}

TEST_F(TextOutcome, OfAnInitializationWithoutTheBus) {
  World().faults.Set(sim::Fault::MapSelect, true);
  Watch([] { harness::Entry(1); });
  EXPECT_EQ(Said("vexo init "), "the bus windows are not mapped: nothing was done");
}

TEST_F(TextOutcome, TellsThatAChipHasDied) {
  Start(4);
  World().board.SetId(2, sim::kEmptyId);
  EXPECT_EQ(Said("vexo mlevel 9 1 "),
            "slave2 does not answer: it took nothing of what was written");
  EXPECT_EQ(Said("vexo mlevel 1 1 "), "");
}

TEST_F(TextOutcome, TellsThatADriverOrTheSettingsFail) {
  Start(1);
  World().drivers.Set("CAM1:", sim::Drivers::State::Absent);
  EXPECT_EQ(Said("vexo stream on "), "CAM1: could not be opened: nothing was done");
  World().nvram.SetFailure(sim::Nvram::Failure::Read);
  EXPECT_EQ(Said("vexo change_vdo pal "), "the stored settings cannot be read: nothing was stored");
  World().nvram.SetFailure(sim::Nvram::Failure::Write);
  EXPECT_EQ(Said("vexo change_vdo pal "),
            "the stored settings cannot be written: nothing was stored");
}

TEST_F(TextOutcome, OfAFailedOpenLastsUntilUninit) {
  Attach(1);
  World().drivers.Set("VBE1:", sim::Drivers::State::Absent);
  EXPECT_EQ(Said("vpb init "), "VBE1: could not be opened");
  World().drivers.Set("VBE1:", sim::Drivers::State::Present);
  EXPECT_EQ(Said("vpb init "),
            "an open that failed counts as open until vpb uninit: nothing was opened");
  EXPECT_EQ(Said("vpb default "),
            "no driver took the request: its open had failed (vpb uninit, then vpb init)");
  EXPECT_EQ(Said("vpb uninit "),
            "its open had failed: there was no driver to close, the next vpb init tries anew");
  EXPECT_EQ(Said("vpb init "), "");
  EXPECT_EQ(Said("vpb default "), "");
}

// ---- All commands, all boards -------------------------------------------------------------------

std::vector<std::string> Words(const std::string& line) {
  std::istringstream in(line);
  return {std::istream_iterator<std::string>(in), {}};
}

std::string LineOf(const std::vector<std::string>& words) {
  std::string line;
  for (const std::string& word : words) line += word + ' ';
  return line;
}

// The example of each command, and it with its numbers changed one by one, and cut short.
std::vector<std::string> Lines() {
  std::vector<std::string> lines;
  for (const auto& [grammar, help] :
       {std::pair(&kChipGrammar, ChipTextHelp()), std::pair(&kBackEndGrammar, BackEndTextHelp())}) {
    for (const TextHelp& command : help) {
      const std::vector<std::string> example = Words(std::string(command.example));
      std::vector<std::string> pattern = Words(std::string(command.pattern));
      pattern.insert(pattern.begin(), grammar->header);
      lines.push_back(LineOf(example));
      lines.push_back(LineOf(example) + "9 ");
      lines.push_back(LineOf(example) + " 9 ");
      lines.push_back(LineOf({example.begin(), example.end() - 1}));
      for (std::size_t i = 0; i < example.size(); ++i) {
        if (!IsNumber(pattern[i])) continue;
        for (const char* number :
             {"0", "1", "3", "7", "12", "16", "17", "255", "256", "70000", "-1", "x"}) {
          std::vector<std::string> words = example;
          words[i] = number;
          lines.push_back(LineOf(words));
        }
      }
    }
  }
  return lines;
}

constexpr const char* kNothing = ": nothing was (done|written|sent|read|stored|opened)";

TEST_F(TextOutcome, SaysThatNothingWasDoneWhenNothingWasAndNeverElse) {
  for (const unsigned chips : {0u, 1u, 2u, 3u, 4u}) {
    if (chips == 0) {
      Attach(4);  // not initialized
    } else {
      Start(chips);
    }
    for (const std::string& line : Lines()) {
      if (chips == 0 && line.starts_with("vexo init")) continue;
      const std::string said = Said(line);
      std::ostringstream where;
      where << line << "on " << chips << " chips: " << said;
      if (Result() != 0) {
        EXPECT_NE(said, "") << where.str();
        EXPECT_TRUE(Still()) << where.str();
      } else if (Still() && line.find("split_pos") == std::string::npos) {
        // Window tables are the library's own.
        EXPECT_THAT(said, ContainsRegex(kNothing)) << where.str();
      } else if (!Still()) {
        EXPECT_THAT(said, Not(ContainsRegex(": nothing was (done|written|sent)"))) << where.str();
      }
    }
  }
}

TEST_F(TextOutcome, TellsOfEveryCommandThatTheChipsAreNotInitialized) {
  Attach(4);
  unsigned told = 0;
  for (const TextHelp& command : ChipTextHelp()) {
    const std::string_view keyword = KeywordOf(command.pattern);
    if (keyword == "init") continue;
    const std::string said = Said(std::string(command.example));
    const bool runs =
        keyword == "uninit" || keyword == "stream" || keyword == "set_emif" || keyword == "rver";
    EXPECT_EQ(said == "the chips are not initialized: nothing was done", !runs)
        << command.example << said;
    EXPECT_EQ(Writes(), 0u) << command.example;
    if (!runs) ++told;
  }
  EXPECT_EQ(told, ChipTextHelp().size() - 6);
}

TEST_F(TextOutcome, OfEveryExampleIsNothingToSayOnTheBoardsThatTheyAreFor) {
  Start(4);
  for (const TextHelp& command : ChipTextHelp()) {
    const std::string said = Said(std::string(command.example));
    const std::string_view keyword = KeywordOf(command.pattern);
    if (keyword == "uninit" || keyword == "set_emif") continue;
    EXPECT_EQ(said, "") << command.example;
    if (keyword == "frz") Said("vexo frz 0 ");  // else cells have something to say
  }
  // A reader who has typed them all still sees pictures.
  for (unsigned n = 0; n < kChannelsMax; ++n) {
    const sim::InputColors colors = World().board.Colors(n);
    EXPECT_GT(colors.contrast, 0x60) << n;
    EXPECT_GT(colors.saturation, 0x60) << n;
    EXPECT_GT(colors.brightness, 0x60) << n;
  }
}

// ---- Layouts ------------------------------------------------------------------------------------

// Channels of the board that have an area on the screen.
unsigned Shown(const sim::Board& board, bool decoded) {
  unsigned shown = 0;
  for (unsigned n = 0; n < kChannelsMax; ++n) {
    const unsigned chip = n / kChannelsPerChip;
    const unsigned p = n % kChannelsPerChip;
    if (!board.Fitted(chip)) continue;
    const unsigned display = board.Peek(chip, kChannelDisplay.At(p));
    const bool area = board.Peek(chip, kWindow.At(p, 1)) > board.Peek(chip, kWindow.At(p, 0));
    const bool is_decoded = (display & kDisplayDecoded) != 0;
    if ((display & kDisplayEnable) != 0 && is_decoded == decoded && area) ++shown;
  }
  return shown;
}

TEST_F(TextOutcome, OfALayoutThatTheBoardCannotFillIsSeenInItsRegisters) {
  struct Layout {
    unsigned chips;
    const char* line;
    unsigned shown;
  };
  for (const Layout& c : {Layout{1, "vexo lsplit 4 0 ", 0}, Layout{2, "vexo lsplit 4 0 ", 8},
                          Layout{3, "vexo lsplit 4 0 ", 9}, Layout{3, "vexo lsplit 6 0 ", 12},
                          Layout{1, "vexo lsplit 2 0 ", 4}, Layout{4, "vexo lsplit 2 0 ", 6},
                          Layout{1, "vexo psplit 4 0 ", 4}, Layout{3, "vexo psplit 6 0 ", 8},
                          Layout{4, "vexo psplit 6 0 ", 16}, Layout{2, "vexo psplit 0 8 ", 0},
                          Layout{2, "vexo psplit 0 7 ", 1}}) {
    Start(c.chips);
    Said(c.line);
    EXPECT_EQ(Shown(World().board, std::string_view(c.line).find("psplit") != std::string::npos),
              c.shown)
        << c.line << c.chips;
  }
}

}  // namespace
}  // namespace script
