#include "text/tokenizer.h"

#include "harness/host.h"
#include "report/diagnostics.h"
#include "tests/support/library_test.h"

namespace test {
namespace {

using Texts = std::vector<std::string>;

constexpr const char* kSeparators = " ,\n";

class Tokenizer : public LibraryTest {
 protected:
  // All tokens of a line, as a parser sees them.
  static Texts Tokens(const std::string& line, const char* separators = kSeparators) {
    Texts tokens;
    for (const char* token = VexoTok_Next(line.c_str(), separators); token != nullptr;
         token = VexoTok_Next(nullptr, separators)) {
      tokens.emplace_back(token);
    }
    return tokens;
  }
  static void ExpectNoLine() {
    EXPECT_EQ(g_tokenizer.length, 0u);
    EXPECT_EQ(g_tokenizer.position, 0u);
    EXPECT_EQ(VexoTok_Next(nullptr, kSeparators), nullptr);
  }
};

TEST_F(Tokenizer, HasNoLineAtLoad) { ExpectNoLine(); }

// Holds: Text commands "`VEXOAPI_TextCommandProc` runs one line"
TEST_F(Tokenizer, CutsAtBlanksCommasAndLineFeeds) {
  EXPECT_EQ(Tokens("vexo lsplit 1 2 "), (Texts{"vexo", "lsplit", "1", "2"}));
  EXPECT_EQ(Tokens("a,bb\nccc d,"), (Texts{"a", "bb", "ccc", "d"}));
  EXPECT_EQ(Tokens("a\n"), Texts{"a"});
}

TEST_F(Tokenizer, CarriageReturnsAndTabsAreOrdinaryCharacters) {
  EXPECT_EQ(Tokens("a\tb c\rd \r\n"), (Texts{"a\tb", "c\rd", "\r"}));
  EXPECT_EQ(Tokens("\x80\xFF \x01 "), (Texts{"\x80\xFF", "\x01"}));
}

TEST_F(Tokenizer, TheSeparatorsAreTheCallers) {
  EXPECT_EQ(Tokens("a b;c d;", ";"), (Texts{"a b", "c d"}));
  EXPECT_EQ(Tokens("a b ", ""), Texts{});
}

TEST_F(Tokenizer, TheLastTokenCountsOnlyWithASeparatorBehindIt) {
  EXPECT_EQ(Tokens("vexo init"), Texts{"vexo"});
  EXPECT_EQ(Tokens("vexo init "), (Texts{"vexo", "init"}));
  EXPECT_EQ(Tokens("vexo"), Texts{});
  EXPECT_EQ(Tokens("vexo "), Texts{"vexo"});
}

// Holds: VEXOAPI_TextCommandProc "Runs one line of text"
// Holds: Text commands "A last word without a separator after it is dropped"
TEST_F(Tokenizer, AnEmptyTokenEndsTheLine) {
  for (const char* line : {"vexo  init ", "vexo, init ", "vexo\n\ninit ", "vexo ,init "}) {
    EXPECT_EQ(Tokens(line), Texts{"vexo"}) << line;
  }
  EXPECT_EQ(Tokens(" vexo init "), Texts{});
  EXPECT_EQ(Tokens("\n"), Texts{});
}

TEST_F(Tokenizer, AnEmptyLineHasNoToken) {
  EXPECT_EQ(Tokens(""), Texts{});
  ExpectNoLine();
}

TEST_F(Tokenizer, ForgetsTheLineOnceItHasAnsweredNull) {
  for (const char* line : {"a b ", "a b", "a  b c ", "a", " a ", ""}) {
    SCOPED_TRACE(line);
    Tokens(line);
    ExpectNoLine();
    ExpectNoLine();
  }
}

TEST_F(Tokenizer, KeepsItsPlaceBetweenTokens) {
  EXPECT_STREQ(VexoTok_Next("vexo lsplit 1 ", kSeparators), "vexo");
  EXPECT_EQ(g_tokenizer.length, 14u);
  EXPECT_EQ(g_tokenizer.position, 5u);
  EXPECT_STREQ(VexoTok_Next(nullptr, kSeparators), "lsplit");
  EXPECT_EQ(g_tokenizer.position, 12u);
}

// Holds: VEXOAPI_TextCommandProc "Runs one line of text"
TEST_F(Tokenizer, WorksOnACopyOfTheLine) {
  std::string line = "one two ";
  EXPECT_STREQ(VexoTok_Next(line.c_str(), kSeparators), "one");
  line.assign(line.size(), 'x');
  EXPECT_STREQ(VexoTok_Next(nullptr, kSeparators), "two");
}

TEST_F(Tokenizer, ANewLineReplacesOneThatWasLeftEarly) {
  EXPECT_STREQ(VexoTok_Next("first second third fourth ", kSeparators), "first");
  EXPECT_STREQ(VexoTok_Next(nullptr, kSeparators), "second");
  EXPECT_STREQ(VexoTok_Next("a b ", kSeparators), "a");
  EXPECT_STREQ(VexoTok_Next(nullptr, kSeparators), "b");
  // Nothing of the longer line before shows behind the shorter one.
  EXPECT_EQ(VexoTok_Next(nullptr, kSeparators), nullptr);
  ExpectNoLine();
}

TEST_F(Tokenizer, AnEmptyLineReplacesOneThatWasLeftEarly) {
  EXPECT_STREQ(VexoTok_Next("first second ", kSeparators), "first");
  EXPECT_EQ(VexoTok_Next("", kSeparators), nullptr);
  ExpectNoLine();
}

TEST_F(Tokenizer, TheSeparatorsMayChangeWithinALine) {
  EXPECT_STREQ(VexoTok_Next("a b;c ", kSeparators), "a");
  EXPECT_STREQ(VexoTok_Next(nullptr, ";"), "b");
  EXPECT_STREQ(VexoTok_Next(nullptr, kSeparators), "c");
}

TEST_F(Tokenizer, AShorterTokenIsEndedWhereItEnds) {
  EXPECT_EQ(Tokens("longest short a "), (Texts{"longest", "short", "a"}));
}

TEST_F(Tokenizer, TakesLinesOf255Characters) {
  const std::string word(254, 'w');
  EXPECT_EQ(Tokens(word + " "), Texts{word});
  EXPECT_EQ(Tokens(word + "w"), Texts{});
  std::string many;
  for (int i = 0; i < 127; ++i) many += "k ";
  EXPECT_EQ(Tokens(many + "\n").size(), 127u);
  static_assert(kLineMax == 255);
}

// ---- Hexadecimal numbers ----------------------------------------------------------------------

class HexNumbers : public LibraryTest {
 protected:
  HexNumbers() {
    AttachAndBind();
    Mark();
  }
};

TEST_F(HexNumbers, OneToEightDigitsAreTheirValue) {
  struct {
    const char* text;
    std::uint32_t value;
  } const cases[] = {{"ff", 255},
                     {"FF", 255},
                     {"fF", 255},
                     {"0", 0},
                     {"9", 9},
                     {"a", 10},
                     {"12345678", 0x12345678u},
                     {"9abcdef0", 0x9ABCDEF0u},
                     {"FFFFFFFF", 0xFFFFFFFFu},
                     {"80000000", 0x80000000u},
                     {"00000001", 1},
                     {"10", 16},
                     {"100", 256},
                     {"fffffff", 0x0FFFFFFFu}};
  for (const auto& c : cases) EXPECT_EQ(string_to_hex(c.text), c.value) << c.text;
  EXPECT_EQ(Debug(), Texts{});
}

TEST_F(HexNumbers, TheTextFfIs255EightFsAreAllOnesNineAreToldAnd0x1IsZero) {
  EXPECT_EQ(string_to_hex("ff"), 255u);
  EXPECT_EQ(string_to_hex("FFFFFFFF"), 0xFFFFFFFFu);
  EXPECT_EQ(string_to_hex("0x1"), 0u);
  EXPECT_EQ(Debug(), Texts{});
  EXPECT_EQ(string_to_hex("FFFFFFFFF"), 0u);
  EXPECT_EQ(Debug(), (Texts{"[VEXOSDK]: ", ">> string_to_hex invalid parameter ( 9 )\r\n"}));
}

TEST_F(HexNumbers, AnyOtherCharacterMakesItZeroWithoutAWord) {
  for (const char* text : {"0x12", "x", "g", "1g", "g1", "-1", "+1", " 1", "1 ", "1.", "12h",
                           "ffffffg", "fffffffg", "1\t", "\xFF"}) {
    EXPECT_EQ(string_to_hex(text), 0u) << text;
  }
  EXPECT_EQ(Debug(), Texts{});
}

TEST_F(HexNumbers, NoneOrMoreThanEightCharactersAreToldAtLevel2) {
  for (const auto& [text, length] :
       {std::pair{"", "0"}, {"123456789", "9"}, {"0x1234567890", "12"}, {"ggggggggg", "9"}}) {
    Mark();
    EXPECT_EQ(string_to_hex(text), 0u);
    EXPECT_EQ(Debug(), (Texts{"[VEXOSDK]: ", std::string(">> string_to_hex invalid parameter ( ") +
                                                 length + " )\r\n"}));
    Mark();
    VexoDbg_SetLevelThreshold(3);
    string_to_hex(text);
    EXPECT_EQ(Debug(), Texts{});
    VexoDbg_SetLevelThreshold(2);
    string_to_hex(text);
    EXPECT_EQ(Debug().size(), 2u);
  }
}

TEST_F(HexNumbers, TheTextGoesByTheDebugSwitch) {
  harness::SetEnableOutputMsg(0);
  Mark();
  string_to_hex("");
  EXPECT_EQ(Debug().size(), 2u);
  harness::SetEnableDebug(0);
  Mark();
  string_to_hex("");
  EXPECT_EQ(Debug(), Texts{});
}

TEST_F(HexNumbers, EveryOtherCharacterIsNoDigit) {
  for (int c = -128; c < 256; ++c) {
    std::uint32_t wanted = 0xFFFFFFFFu;
    if (c >= '0' && c <= '9') wanted = static_cast<std::uint32_t>(c - '0');
    if (c >= 'a' && c <= 'f') wanted = static_cast<std::uint32_t>(c - 'a' + 10);
    if (c >= 'A' && c <= 'F') wanted = static_cast<std::uint32_t>(c - 'A' + 10);
    EXPECT_EQ(hex_digit_value(static_cast<char>(c)), wanted) << c;
  }
}

}  // namespace
}  // namespace test
