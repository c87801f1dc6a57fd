#include "script/help/completion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "script/grammar/pattern_walk.h"
#include "script/line.h"

namespace script {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;
using testing::StartsWith;
using testing::UnorderedElementsAre;

std::vector<std::string> Words(std::string_view line) { return Complete(line).words; }
std::vector<std::string> Hints(std::string_view line) { return Complete(line).hints; }

TEST(Completion, OffersHeadersScriptWordsAndShellCommandsFirst) {
  EXPECT_THAT(Words(""), IsSupersetOf({"vexo", "vpb", "help", "writes", "history", "quit", "camera",
                                       "board", "run", "expect", "print"}));
  EXPECT_THAT(Words(""), Not(Contains("lsplit")));
  EXPECT_THAT(Words("v"), UnorderedElementsAre("vexo", "vpb", "version"));
}

TEST(Completion, OffersKeywordsWithoutHeaderOnceTheyAreBegun) {
  EXPECT_THAT(Words("lspl"), ElementsAre("lsplit", "lsplit_pos"));
  EXPECT_THAT(Words("setp_"), ElementsAre("setp_base", "setp_vdo", "setp_bmp"));
  // A keyword of both families needs its header.
  EXPECT_THAT(Words("uninit"), IsEmpty());
  EXPECT_THAT(Words("zoom "), ElementsAre("start", "stop", "pos"));
}

struct NextWords {
  const char* line;
  std::vector<std::string> words;
};

TEST(Completion, OffersKeywordsAndSubKeywordsOfTextCommands) {
  const NextWords cases[] = {
      {"vexo z", {"zoom"}},
      {"vexo zoom ", {"start", "stop", "pos"}},
      {"vexo zoom st", {"start", "stop"}},
      {"vexo,zoom,p", {"pos"}},
      {"vexo mmask ", {"change"}},
      {"vexo mmask change ", {"all"}},
      {"vexo mmask change 3 ", {}},
      {"vexo color 3 ", {"all", "hue", "sat", "con", "bri"}},
      {"vexo color 3 all ", {}},
      {"vexo lsplit_pos 1 d", {"default"}},
      {"vexo change_vdo ", {"ntsc", "pal", "auto"}},
      {"vexo zoom zoom ", {}},
      {"vpb blen ", {"on", "off"}},
      {"vpb set_wnd", {"set_wndcfg", "set_wndenable", "set_wndpos", "set_wndsize"}},
      {"vpb zoom", {}},
  };
  for (const NextWords& next : cases) EXPECT_EQ(Words(next.line), next.words) << next.line;
}

TEST(Completion, SaysWhichNumberIsExpected) {
  EXPECT_THAT(Hints("vexo lsplit "), ElementsAre(StartsWith("MODE: split: 0 one picture")));
  EXPECT_THAT(Hints("vexo lsplit 6 "),
              ElementsAre("CHANNEL: 0 to 15, below the channel count. For color the count itself "
                          "means every channel, but for hue"));
  EXPECT_THAT(Hints("vexo lsplit 6 0 "), ElementsAre(StartsWith("[BLANK_MASK]: ")));
  EXPECT_THAT(Hints("vexo lsplit 6 0 0 "), IsEmpty());
  EXPECT_THAT(Hints("vexo rr "), ElementsAre(StartsWith("$CHIP: hexadecimal: 3 master")));
  EXPECT_THAT(Hints("vexo lsplit_pos 1 "), ElementsAre("WINDOW: window of the split, from 0"));
  EXPECT_THAT(Hints("vexo set_emif 1 2 "), ElementsAre("C: any; likewise B to J"));
  EXPECT_THAT(Hints("vpb blen on "), ElementsAre("LEVEL: 0 to 255"));
  EXPECT_THAT(Hints("loss "), ElementsAre(StartsWith("BLANK_MASK: ")));
}

TEST(Completion, SaysWhichWordStoodWrong) {
  EXPECT_THAT(Hints("vexo zoom move "), ElementsAre("'move' is not known here"));
}

TEST(Completion, ReachesEveryWordOfEveryTextCommand) {
  for (const TextGrammar* grammar : TextGrammars()) {
    for (std::uint8_t i = 0; i < grammar->count; ++i) {
      std::string line = std::string(grammar->header) + ' ';
      std::istringstream in{grammar->pattern(i)};
      for (std::string word; in >> word;) {
        if (IsNumber(word)) {
          EXPECT_THAT(Hints(line), Contains(StartsWith(word + ": "))) << grammar->pattern(i);
          line += "0 ";
        } else {
          EXPECT_THAT(Words(line), Contains(word)) << grammar->pattern(i);
          line += word + ' ';
        }
      }
      EXPECT_THAT(Words(line), IsEmpty()) << line;
    }
  }
}

TEST(Completion, ReachesEveryScriptLine) {
  for (const LineKind* kind : AllLines()) {
    std::string line;
    for (const std::string& word : SplitWords(kind->words)) {
      EXPECT_THAT(Words(line), Contains(word)) << kind->words;
      line += word + ' ';
    }
    if (kind->arguments.empty() || kind->words == "help" || kind->words == "?") continue;
    EXPECT_THAT(Hints(line), ElementsAre(kind->Usage() + ": " + std::string(kind->help)));
  }
}

TEST(Completion, OffersTheWordsAmongScriptArguments) {
  const NextWords cases[] = {
      {"camera 3 ", {"ntsc", "pal", "off"}},
      {"camera ", {}},
      {"registers ", {"master", "slave1", "slave2", "slave3", "all"}},
      {"registers slave2 ", {}},
      {"poke s", {"slave1", "slave2", "slave3"}},
      {"expect ",
       {"return", "register", "registers", "field", "debug", "message", "no", "record", "cycles",
        "fault"}},
      {"expect no ", {"debug", "message"}},
      {"nvram fail ", {"none", "read", "write"}},
      {"settle ", {"never"}},
      {"driver ", {"CAM1:", "VBE1:"}},
      {"driver VBE1: ", {"present", "absent", "null"}},
      {"fault map-", {"map-select", "map-address", "map-data"}},
      {"fault terminate ", {"on", "off", "nth", "from"}},
      {"sync ", {"period", "hold"}},
      {"window ", {"deaf", "hearing", "invalid"}},
  };
  for (const NextWords& next : cases) EXPECT_EQ(Words(next.line), next.words) << next.line;
}

TEST(Completion, ALineIsCompletedWhole) {
  using Lines = std::vector<std::string>;
  EXPECT_EQ(CompletedLines("camera 5 o"), Lines{"camera 5 off"});
  EXPECT_EQ(CompletedLines("  nvram fail "),
            (Lines{"  nvram fail none", "  nvram fail read", "  nvram fail write"}));
  EXPECT_EQ(CompletedLines("poke master \"channel dis").at(1), "poke master \"channel display 0\"");
  EXPECT_EQ(CompletedLines("vexo lsplit_"), Lines{"vexo lsplit_pos"});
  EXPECT_EQ(CompletedLines("no such "), Lines{});
}

TEST(Completion, OffersCommandsTheirFieldsAndTheirChoices) {
  const NextWords cases[] = {
      {"command live-", {"live-split", "live-mode"}},
      {"command live-split ", {"null", "mode", "channels"}},
      {"command 0xF005 ", {"null", "mode", "channels"}},
      {"command live-split mode ", {"full", "4", "6", "8", "9", "13", "16"}},
      {"command play-split mode 1", {"16"}},
      {"command live-split mode 16 ", {"channels"}},
      {"command live-split mode 16 channels ", {}},
      {"command live-split mode 16 channels 0-15 ", {}},
      {"command live-split mod 16 ", {}},
      {"command motion-mask mask FF ", {"channel", "level"}},
      {"command blank-mask mask ", {"all", "none"}},
      {"command init ", {"null", "reserved1", "reserved2"}},
      {"command init null ", {}},
      {"command stop-monitor ", {"null"}},
      {"command nothing ", {}},
      {"expect record chip-", {"chip-count", "chip-id"}},
      {"expect record video-standard ", {"ntsc", "pal", "none"}},
      {"expect record chip-count 4 v", {"video-standard"}},
      {"expect message video", {"video-info"}},
      {"expect no message m", {"motion-status"}},
  };
  for (const NextWords& next : cases) EXPECT_EQ(Words(next.line), next.words) << next.line;
  EXPECT_THAT(Hints("command live-split mode 16 channels "),
              Contains("channels: 16 channels (0-3,7); channel of each window, 0-15; others show "
                       "nothing"));
  EXPECT_THAT(Hints("command motion-mask level "), Contains("level: 0-3; sensitivity"));
  EXPECT_THAT(Hints("command motion-mask mask FF 00 "), Contains(StartsWith("mask: 24 bytes; ")));
  EXPECT_THAT(Hints("command motion-mask mask FF level 1 "), Not(Contains(StartsWith("mask: "))));
}

TEST(Completion, OffersRegistersInQuotesAndTheirFields) {
  const NextWords cases[] = {
      {"peek master \"chip", {"\"chip identification\""}},
      {"peek master \"window",
       {"\"window\"", "\"window 0\"", "\"window 1\"", "\"window 2\"", "\"window 3\"",
        "\"window block\""}},
      {"peek master wind", {"window"}},
      {"peek master pa", {"page"}},
      {"peek master page ", {}},
      {"peek master \"window 2\" ", {}},
      {"poke master \"channel display 1\" ", {"enable", "front", "hold", "decoded", "position"}},
      {"poke master \"channel display 1\" h", {"hold"}},
      {"expect field slave1 \"scaler control\" \"fi", {"\"filter y\"", "\"filter x\""}},
      {"expect field slave1 \"scaler control\" ", {"position", "\"filter y\"", "\"filter x\""}},
      {"poke master 1 ", {}},
      {"diff ", {"attach", "start", "now", "master", "slave1", "slave2", "slave3", "all"}},
      {"diff start n", {"now"}},
      {"break write \"chip", {"\"chip identification\""}},
      {"break read slave1 \"chip", {"\"chip identification\""}},
      {"mark ", {}},
  };
  for (const NextWords& next : cases) EXPECT_EQ(Words(next.line), next.words) << next.line;
  EXPECT_THAT(Words("fields all "), IsSupersetOf({"window", "\"channel display\"", "page"}));
  EXPECT_THAT(Words("fields all "), Not(Contains("\"window 0\"")));
}

TEST(Completion, KnowsTheShellsOwnCommands) {
  EXPECT_THAT(Words("writes "), ElementsAre("on", "off"));
  EXPECT_THAT(Words("writes on "), IsEmpty());
  EXPECT_THAT(Words("help lsplit_"), ElementsAre("lsplit_pos"));
  EXPECT_THAT(Words("help "), IsSupersetOf({"script", "vexo", "zoom", "setp", "camera", "quit"}));
  EXPECT_THAT(Words("help zoom "), IsEmpty());
}

TEST(CompletionKey, PutsInWhatIsCertain) {
  EXPECT_EQ(CompleteStep("vexo zo").insert, "om ");
  EXPECT_EQ(CompleteStep("vexo zoom").insert, " ");
  EXPECT_EQ(CompleteStep("vexo zoom s").insert, "t");
  EXPECT_EQ(CompleteStep("registers s").insert, "lave");
  EXPECT_EQ(CompleteStep("vexo mmask change a").insert, "ll ");
  EXPECT_EQ(CompleteStep("vexo zoom s").show, "");
}

TEST(CompletionKey, PutsQuotesAroundNamesWithBlanks) {
  EXPECT_EQ(CompleteStep("peek master \"chip").insert, " identification\" ");
  EXPECT_EQ(CompleteStep("peek master \"channel d").insert, "isplay");
  EXPECT_EQ(CompleteStep("poke master \"channel display 1\" po").insert, "sition ");
}

TEST(CompletionKey, ShowsWhatThereIsToChoose) {
  const CompletionStep words = CompleteStep("vexo zoom ");
  EXPECT_EQ(words.insert, "");
  EXPECT_EQ(words.show, "start  stop   pos\n");
  // A number may stand there too, so that the one word is not put in unasked.
  const CompletionStep both = CompleteStep("vexo mmask change ");
  EXPECT_EQ(both.insert, "");
  EXPECT_THAT(both.show, StartsWith("all\nCHANNEL: 0 to 15"));
  const CompletionStep number = CompleteStep("vexo zoom pos 1");
  EXPECT_EQ(number.insert, "");
  EXPECT_EQ(number.show, "X: 0 to 180 display units\n");
  EXPECT_EQ(CompleteStep("vexo nothing").show, "");
}

TEST(CompletionKey, WrapsLongLists) {
  std::istringstream lines(CompleteStep("vexo ").show);
  unsigned count = 0;
  for (std::string line; std::getline(lines, line); ++count) EXPECT_LE(line.size(), 80u);
  EXPECT_GT(count, 1u);
}

}  // namespace
}  // namespace script
