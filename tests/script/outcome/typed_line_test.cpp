// A line is read as the library's tokenizer and grammar read it.
#include "script/outcome/typed_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "script/grammar/pattern_walk.h"
#include "text/back_end_text.h"
#include "text/chip_text.h"

namespace script {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::int64_t> Values(const TypedLine& line) {
  std::vector<std::int64_t> values;
  for (const TypedNumber& number : line.numbers) values.push_back(number.value);
  return values;
}

TEST(TypedLine, HasItsPatternAndItsNumbers) {
  const TypedLine line = ReadTypedLine("vexo,lsplit 6\n3 5 ");
  EXPECT_EQ(line.grammar, &kChipGrammar);
  EXPECT_EQ(line.pattern, "lsplit MODE CHANNEL [BLANK_MASK]");
  EXPECT_THAT(Values(line), ElementsAre(6, 3, 5));
  EXPECT_EQ(line.numbers[1].name, "CHANNEL");
  EXPECT_THAT(line.notes, IsEmpty());
}

TEST(TypedLine, FillsInWhatMayBeMissing) {
  EXPECT_THAT(Values(ReadTypedLine("vexo lsplit 6 3 ")), ElementsAre(6, 3, 0));
  EXPECT_THAT(Values(ReadTypedLine("vexo init ")), ElementsAre(65535));
  EXPECT_THAT(ReadTypedLine("vexo init ").notes, IsEmpty());
}

struct Fault {
  std::string_view line;
  std::string_view fault;
};

TEST(TypedLine, SaysWhyItIsNoWholeCommand) {
  const Fault cases[] = {
      {"lsplit 6 0 ", "a text line begins with vexo or vpb"},
      {"", "a text line begins with vexo or vpb"},
      {"set vexo 1 ", "the first word must be vexo, found 'set'"},
      {"vpb vexo 1 ", "the first word must be vexo, found 'vpb'"},
      {" vexo rver ", "the first word must be vexo, found a separator"},
      {"vexo", "the first word must be vexo; no separator after 'vexo', so it is not read"},
      {"vexo ", "no keyword"},
      {"vexo rver", "no separator after 'rver', so it is not read"},
      {"vexo  rver ", "two separators in a row end the line: 'rver' is not read"},
      {"vexo lspit 6 0 ", "unknown keyword 'lspit'; did you mean lsplit or psplit?"},
      {"vexo lsplit\t6 0 ", "unknown keyword 'lsplit?6'; did you mean lsplit?"},
      {"vexo rver\r\n", "unknown keyword 'rver?'; did you mean rver?"},
      {"vexo lsplit 6 ", "missing: CHANNEL\nvexo lsplit MODE CHANNEL [BLANK_MASK]"},
      {"vexo lsplit 6 0",
       "missing: CHANNEL; no separator after '0', so it is not read\n"
       "vexo lsplit MODE CHANNEL [BLANK_MASK]"},
      {"vexo lsplit 6, 0 ",
       "missing: CHANNEL; two separators in a row end the line: '0' is not read\n"
       "vexo lsplit MODE CHANNEL [BLANK_MASK]"},
      {"vexo zoom move ", "unknown word 'move', expected start, stop or pos"},
      {"vpb trans maybe ", "unknown word 'maybe', expected on or off"},
  };
  for (const Fault& c : cases) {
    const TypedLine line = ReadTypedLine(c.line);
    EXPECT_EQ(line.fault, c.fault) << c.line;
    EXPECT_FALSE(line.Whole()) << c.line;
  }
  EXPECT_EQ(ReadTypedLine(std::string(256, ' ')).fault, "a line has 255 characters at most");
}

struct Note {
  std::string_view line;
  std::vector<std::int64_t> values;
  std::vector<std::string> notes;
};

TEST(TypedLine, TellsWhatIsNotReadAsItIsTyped) {
  const Note cases[] = {
      // Nothing to tell.
      {"vexo loss 65535 ", {65535}, {}},
      {"vexo loss +007 ", {7}, {}},
      {"vexo rr c0 1 Ab ", {0xC0, 1, 0xAB}, {}},
      {"vexo lsplit_pos 1 0 -128 127 0 0 ", {1, 0, -128, 127, 0, 0}, {}},
      {"vexo lsplit_pos 999 default ", {999}, {}},
      {"vexo play 1 300 ", {1, 300}, {}},
      {"vpb setp_base -1 4294967295 ", {0xFFFFFFFF, 0xFFFFFFFF}, {}},
      // Read otherwise.
      {"vexo loss 65536 ", {0}, {"BLANK_MASK '65536' is read as 0"}},
      {"vexo loss 0x10 ", {0}, {"BLANK_MASK '0x10' is read as 0"}},
      {"vexo mlevel 5x two ", {5, 0}, {"CHANNEL '5x' is read as 5", "LEVEL 'two' is read as 0"}},
      {"vexo mlevel 256 -1 ",
       {0, 255},
       {"CHANNEL '256' is read as 0", "LEVEL '-1' is read as 255"}},
      {"vexo zoom pos 300 1 ", {44, 1, 0}, {"X '300' is read as 44"}},
      {"vexo pbank show 256 ", {256}, {}},
      {"vexo lsplit_pos 1 0 200 0 0 0 ", {1, 0, -56, 0, 0, 0}, {"DX_START '200' is read as -56"}},
      {"vexo rr 0x3 1 1 ", {0, 1, 1}, {"CHIP '0x3' is read as 0x00"}},
      {"vexo wr 3 1 6 1ff ", {3, 1, 6, 0xFF}, {"VALUE '1ff' is read as 0xFF"}},
      {"vexo wr 3 1 6 000000004 ", {3, 1, 6, 0}, {"VALUE '000000004' is read as 0x00"}},
      {"vpb blen on 256 ", {0}, {"LEVEL '256' is read as 0"}},
      {"vpb set_wndcfg 256 256 0 0 0 0 0 0 ", {0, 256, 0, 0, 0, 0, 0, 0}, {"A '256' is read as 0"}},
      {"vpb set_bmpcfg 0 256 0 0 0 0 0 0 ", {0, 0, 0, 0, 0, 0, 0, 0}, {"B '256' is read as 0"}},
      {"vpb set_wndpos 0 256 1 ", {0, 0, 1}, {"X '256' is read as 0"}},
      // Not read.
      {"vexo zoom start  5 ",
       {0},
       {"two separators in a row end the line: '5' is not read; BLANK_MASK is 0"}},
      {"vexo init,,5 ",
       {65535},
       {"two separators in a row end the line: '5' is not read; NUMBER is 65535"}},
      {"vexo lsplit 0 0 5",
       {0, 0, 0},
       {"no separator after '5', so it is not read; BLANK_MASK is 0"}},
      {"vexo pip stop 9 10 ", {}, {"'9 10' is too much: it is not read"}},
      {"vexo lsplit 0 0 5  6 ", {0, 0, 5}, {"'6' is too much: it is not read"}},
      {"vexo zoom start   ", {0}, {}},
  };
  for (const Note& c : cases) {
    const TypedLine line = ReadTypedLine(c.line);
    EXPECT_EQ(line.fault, "") << c.line;
    EXPECT_EQ(Values(line), c.values) << c.line;
    EXPECT_EQ(line.notes, c.notes) << c.line;
  }
}

}  // namespace
}  // namespace script
