// What all chip commands have in common: how lines are matched, refused, ignored.
#include "text/chip_text.h"

#include <sstream>

#include "chip/video_state.h"
#include "harness/host.h"
#include "tests/text/chip_text_test.h"
#include "text/tokenizer.h"

namespace test {
namespace {

using Texts = std::vector<std::string>;

constexpr BoardKind kFour = {4, VEXO_VIDEO_NTSC};

const Texts kSplitText = {"debug [VexoCtrlSDK]: ", "debug >> VEXO_TXT_PLAY_SPLIT !\\r\\n"};

// A command with all of its arguments, and how many of its tokens must be there.
struct Sample {
  const char* tokens;
  std::size_t required;
  bool needs_chips = true;
};

// One for each command.
constexpr std::array kSamples = {
    Sample{"init 5", 1, false},
    Sample{"uninit", 1, false},
    Sample{"stream on", 2, false},
    Sample{"stream off", 2, false},
    Sample{"xscale 1 2 3", 4},
    Sample{"yscale 1 2", 3},
    Sample{"lsplit 1 2 3", 3},
    Sample{"lsplit_pos 1 default", 3},
    Sample{"lsplit_pos 1 2 3 4 5 6", 7},
    Sample{"pip start 1 2 3", 4},
    Sample{"pip stop", 2},
    Sample{"mpip start 1 2 3 4 5 6 7", 8},
    Sample{"mpip move 1 2 3 4 5 6", 7},
    Sample{"mpip stop 1 2 3", 4},
    Sample{"zoom start 1", 2},
    Sample{"zoom stop 1", 2},
    Sample{"zoom pos 1 2 3", 4},
    Sample{"frz 1 2", 2},
    Sample{"loss 1", 2},
    Sample{"rec 1 4", 3},
    Sample{"play 1 2", 3},
    Sample{"stop", 1},
    Sample{"psplit 1 2 3", 3},
    Sample{"psplit_pos 1 default", 3},
    Sample{"psplit_pos 1 2 3 4 5 6", 7},
    Sample{"pbank init", 2},
    Sample{"pbank show 1", 3},
    Sample{"pbank clear", 2},
    Sample{"minit", 1},
    Sample{"mlevel 1 2", 3},
    Sample{"mcell show 1 0 3", 5},
    Sample{"mcell clear", 2},
    Sample{"mmask change all 1 0", 5},
    Sample{"mmask change 1 2 3", 5},
    Sample{"mshow 1", 2},
    Sample{"clrbar 1", 2},
    Sample{"bluescr init", 2},
    Sample{"bluescr clear", 2},
    Sample{"rver", 1, false},
    Sample{"set_emif 1 2 3 4 5 6 7 8 9 10", 11, false},
    Sample{"rr 3 1 ab", 4},
    Sample{"wr 3 1 10 ab", 5},
    Sample{"change_vdo ntsc", 2},
    Sample{"change_vdo pal", 2},
    Sample{"change_vdo auto", 2},
    Sample{"color 1 all 2 3 4 5", 7},
    Sample{"color 1 hue 2", 4},
    Sample{"color 1 sat 2", 4},
    Sample{"color 1 con 2", 4},
    Sample{"color 1 bri 2", 4},
};

Texts Words(const std::string& text) {
  std::istringstream in(text);
  Texts words;
  for (std::string word; in >> word;) words.push_back(word);
  return words;
}

// The header and the first `count` tokens, a separator after each.
std::string LineOf(const Sample& sample, std::size_t count = 99) {
  std::string line = "vexo ";
  const Texts tokens = Words(sample.tokens);
  for (std::size_t i = 0; i < count && i < tokens.size(); ++i) line += tokens[i] + " ";
  return line;
}

bool IsPlaySplit(const Sample& sample) { return Words(sample.tokens).front() == "psplit"; }

class ChipText : public ChipTextTest {};

TEST_F(ChipText, TheSamplesAreTheCommandsOneByOne) {
  ASSERT_EQ(kSamples.size(), kChipGrammar.count);
  EXPECT_STREQ(kChipGrammar.header, "vexo");
  for (std::size_t i = 0; i < kSamples.size(); ++i) {
    const Texts tokens = Words(kSamples[i].tokens);
    const Texts words = Words(kChipGrammar.pattern(static_cast<std::uint8_t>(i)));
    ASSERT_EQ(tokens.size(), words.size()) << kSamples[i].tokens;
    for (std::size_t k = 0; k < words.size(); ++k) {
      const bool stands_for_itself = words[k].front() >= 'a' && words[k].front() <= 'z';
      if (stands_for_itself) {
        EXPECT_EQ(tokens[k], words[k]);
      }
      EXPECT_EQ(words[k].front() == '[', k >= kSamples[i].required) << kSamples[i].tokens;
    }
  }
}

TEST_F(ChipText, EveryCommandIsAcceptedWithAllOfItsArguments) {
  for (const Sample& sample : kSamples) {
    Fresh(kFour);
    EXPECT_EQ(Text(LineOf(sample)), 0) << sample.tokens;
  }
}

TEST_F(ChipText, CountsTheKeywordAndEachArgument) {
  for (const Sample& sample : kSamples) {
    Fresh(kFour);
    EXPECT_EQ(VexoText_Parse(LineOf(sample).c_str()),
              static_cast<std::int32_t>(Words(sample.tokens).size()))
        << sample.tokens;
  }
}

// Holds: Text commands "-1: rejected: the first word is not the header"
TEST_F(ChipText, EveryMissingArgumentRefusesTheLineAndNothingIsDone) {
  for (const Sample& sample : kSamples) {
    for (std::size_t count = 0; count < sample.required; ++count) {
      const std::string line = LineOf(sample, count);
      SCOPED_TRACE(line);
      Fresh(kFour);
      const std::vector<std::uint8_t> before = State();
      EXPECT_EQ(Text(line), -1);
      EXPECT_EQ(Events(), count != 0 && IsPlaySplit(sample) ? kSplitText : Texts{});
      EXPECT_EQ(State(), before);
    }
  }
}

TEST_F(ChipText, AMissingArgumentIsRefusedBeforeInitializationToo) {
  for (const Sample& sample : kSamples) {
    for (std::size_t count = 0; count < sample.required; ++count) {
      FreshNotReady(kFour);
      EXPECT_EQ(Text(LineOf(sample, count)), -1) << sample.tokens << " cut to " << count;
    }
  }
}

// Holds: Text commands "A last word without a separator after it is dropped"
TEST_F(ChipText, TheLastArgumentCountsOnlyWithASeparatorBehindIt) {
  for (const Sample& sample : kSamples) {
    const std::size_t tokens = Words(sample.tokens).size();
    std::string line = LineOf(sample);
    line.pop_back();
    if (tokens == sample.required) {
      Fresh(kFour);
      EXPECT_EQ(Text(line), -1) << line;
    } else {
      const Outcome cut = OutcomeOf(kFour, line);
      EXPECT_EQ(cut.result, 0) << line;
      EXPECT_TRUE(cut == OutcomeOf(kFour, LineOf(sample, sample.required))) << line;
    }
  }
}

// Holds: Chips: vexo "`BLANK_MASK`: channels to blank"
TEST_F(ChipText, AMissingOptionalMaskCountsAsZero) {
  unsigned masks = 0;
  for (const Sample& sample : kSamples) {
    const std::string required = LineOf(sample, sample.required);
    if (required == LineOf(sample) || !sample.needs_chips) continue;
    ++masks;
    const Outcome missing = OutcomeOf(kFour, required);
    EXPECT_EQ(missing.result, 0) << required;
    EXPECT_TRUE(missing == OutcomeOf(kFour, required + "0 ")) << required;
    EXPECT_FALSE(missing == OutcomeOf(kFour, required + "15 ")) << required;
  }
  EXPECT_EQ(masks, 10u);
}

// Holds: VEXOAPI_TextCommandProc "Runs one line of text"
// Holds: Text commands "More than a command takes is not read either."
TEST_F(ChipText, MoreTokensThanArgumentsAreNotRead) {
  for (const Sample& sample : kSamples) {
    const std::string line = LineOf(sample);
    const Outcome alone = OutcomeOf(kFour, line);
    const Outcome with_more = OutcomeOf(kFour, line + "7 extra ");
    EXPECT_EQ(with_more.result, 0) << line;
    EXPECT_TRUE(alone == with_more) << line;
  }
}

// Holds: Text commands "`VEXOAPI_TextCommandProc` runs one line"
TEST_F(ChipText, CommasAndLineFeedsSeparateTokensToo) {
  for (const Sample& sample : kSamples) {
    for (const char separator : {',', '\n'}) {
      std::string line = LineOf(sample);
      for (char& c : line) {
        if (c == ' ') c = separator;
      }
      const Outcome found = OutcomeOf(kFour, line);
      EXPECT_EQ(found.result, 0) << line;
      EXPECT_TRUE(found == OutcomeOf(kFour, LineOf(sample))) << line;
    }
  }
}

// Holds: VEXOAPI_TextCommandProc "Returns VEXO_OK for a line that is a command"
// Holds: Text commands "0: done; or accepted without effect"
// Holds: Chips: vexo "Before the chips are initialized these commands are accepted"
TEST_F(ChipText, BeforeInitializationEveryChipCommandIsAcceptedAndDoesNothing) {
  for (const Sample& sample : kSamples) {
    if (!sample.needs_chips) continue;
    SCOPED_TRACE(sample.tokens);
    FreshNotReady(kFour);
    const std::vector<std::uint8_t> before = State();
    EXPECT_EQ(Text(LineOf(sample)), 0);
    EXPECT_EQ(Events(), IsPlaySplit(sample) ? kSplitText : Texts{});
    EXPECT_EQ(State(), before);
  }
}

// Holds: Chips: vexo "Before the chips are initialized these commands are accepted"
TEST_F(ChipText, WhatNeedsNoChipsDoesTheSameBeforeInitialization) {
  for (const Sample& sample : kSamples) {
    if (sample.needs_chips || std::string(sample.tokens) == "rver") continue;
    FreshNotReady(kFour);
    EXPECT_EQ(Text(LineOf(sample)), 0) << sample.tokens;
    const Texts not_ready = Events();
    EXPECT_EQ(not_ready, OutcomeOf(kFour, LineOf(sample)).events) << sample.tokens;
  }
}

// Holds: Exports "Two ask for more"
// Holds: VEXOAPI_TextCommandProc "Takes no lock"
// Holds: Chips: vexo "None of them takes the lock that the binary commands take."
TEST_F(ChipText, NoCommandTakesTheLock) {
  for (const Sample& sample : kSamples) {
    for (const bool ready : {true, false}) {
      Fresh(kFour);
      if (!ready) FreshNotReady(kFour);
      Text(LineOf(sample));
      for (const std::string& event : Events()) {
        EXPECT_NE(event.rfind("lock", 0), 0u) << sample.tokens;
        EXPECT_NE(event.rfind("unlock", 0), 0u) << sample.tokens;
      }
    }
  }
}

// ---- Words that are not in the table --------------------------------------------------------

// Holds: Text commands "-1: rejected: the first word is not the header"
TEST_F(ChipText, AnUnknownKeywordIsRefusedWithoutAWord) {
  for (const char* keyword : {"nonsense", "Init", "ini", "initx", "INIT", "lsplit_", "lsplit_posx",
                              "vexo", "vpb", "0", "[NUMBER]", "default", "\tinit", "init\r"}) {
    ExpectRefused(kFour, std::string("vexo ") + keyword + " 1 2 3 4 5 6 ");
  }
}

TEST_F(ChipText, NothingIsLookedForBehindAnUnknownKeyword) {
  ExpectRefused(kFour, "vexo nonsense loss 5 ");
  ExpectRefused(kFour, "vexo vexo loss 5 ");
  ExpectRefused(kFour, "vexo move zoom pos 1 2 ");
}

// Holds: VEXOAPI_TextCommandProc "Returns VEXO_OK for a line that is a command"
// Holds: Text commands "0: done; or accepted without effect"
TEST_F(ChipText, AnUnknownSubKeywordIsAcceptedAndDoesNothing) {
  for (const char* tokens :
       {"stream maybe",    "stream ON",       "stream onn",           "stream o",
        "pip move 1 2 3",  "pip 1 2 3",       "mpip pos 1 2 3 4 5 6", "mpip st 1 2",
        "zoom in 1",       "zoom pause",      "pbank hide 1",         "pbank 1",
        "mcell hide",      "mcell 1 2 3",     "mmask set all 1 2",    "mmask all 1 2",
        "bluescr on",      "bluescr 1",       "change_vdo secam",     "change_vdo 1",
        "change_vdo NTSC", "color 1 value 2", "color 4 brightness 2", "color 1 2 3 4 5",
        "color bri 1 2"}) {
    ExpectDoesNothing(kFour, std::string("vexo ") + tokens + " ");
    FreshNotReady(kFour);
    EXPECT_EQ(Text(std::string("vexo ") + tokens + " "), 0) << tokens;
    EXPECT_EQ(Events(), Texts{}) << tokens;
  }
}

TEST_F(ChipText, TheZoomPositionKeywordIsPosAndMoveDoesNothing) {
  ExpectDoesNothing(kFour, "vexo zoom move 1 2 ");
}

TEST_F(ChipText, NothingIsReadAfterAnUnknownSubKeyword) {
  const std::string read = "vexo zoom move ";
  Fresh(kFour);
  EXPECT_EQ(Text(read + "1 2 3 "), 0);
  EXPECT_EQ(g_tokenizer.position, read.size());
  // The next line replaces what was left.
  EXPECT_EQ(Text("vexo zoom "), -1);
}

// Holds: Text commands "A word that is no number reads as 0."
TEST_F(ChipText, AWordWhereANumberStandsReadsAsZero) {
  EXPECT_TRUE(OutcomeOf(kFour, "vexo lsplit one two three ") ==
              OutcomeOf(kFour, "vexo lsplit 0 0 0 "));
  EXPECT_TRUE(OutcomeOf(kFour, "vexo lsplit 1x +2 3.9 ") == OutcomeOf(kFour, "vexo lsplit 1 2 3 "));
  EXPECT_TRUE(OutcomeOf(kFour, "vexo lsplit 0x1 02 3 ") == OutcomeOf(kFour, "vexo lsplit 0 2 3 "));
}

// ---- Header -----------------------------------------------------------------------------------

// Holds: Text commands "-1: rejected: the first word is not the header"
TEST_F(ChipText, AFirstTokenThatIsNotTheHeaderIsToldAndRefused) {
  for (const char* line :
       {"vexos minit ", "avexo minit ", "xvexox minit ", "minit vexo ", "vexo\tminit ",
        "\tvexo minit ", "vexo\r\n", " vexo minit ", ",vexo ", "vexo", "minit vexo"}) {
    SCOPED_TRACE(line);
    Fresh(kFour);
    EXPECT_EQ(Text(line), -1);
    EXPECT_EQ(Events(),
              (Texts{"debug [VexoCtrlSDK]: ", "debug >> Parse VEXO TEXT Not Found Header!\\r\\n"}));
  }
}

TEST_F(ChipText, ALineWithoutAKeywordIsRefusedWithoutAWord) {
  for (const char* line : {"vexo ", "vexo\n", "vexo,", "vexo  ", "vexo  minit ", "vexo, minit ",
                           "vexo minit", "vexo init"}) {
    ExpectRefused(kFour, line);
  }
}

// Holds: Text commands "A last word without a separator after it is dropped"
TEST_F(ChipText, AnEmptyTokenEndsTheLine) {
  ExpectRefused(kFour, "vexo xscale 1  2 3 ");
  // What was read before it counts: the mask is missing.
  const Outcome cut = OutcomeOf(kFour, "vexo lsplit 1 2  15 ");
  EXPECT_EQ(cut.result, 0);
  EXPECT_TRUE(cut == OutcomeOf(kFour, "vexo lsplit 1 2 "));
}

}  // namespace
}  // namespace test
