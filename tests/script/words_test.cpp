#include "script/words.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace script {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string MistakeOf(const std::string& line) {
  try {
    SplitWords(line);
  } catch (const Malformed& error) {
    return error.what();
  }
  return "none";
}

TEST(ScriptWords, AreSeparatedByBlanksAndTabs) {
  EXPECT_THAT(SplitWords("camera 3 off"), ElementsAre("camera", "3", "off"));
  EXPECT_THAT(SplitWords("  camera\t3   off  "), ElementsAre("camera", "3", "off"));
  EXPECT_THAT(SplitWords("attach\r"), ElementsAre("attach"));
  EXPECT_THAT(SplitWords(""), IsEmpty());
}

TEST(ScriptWords, EndAtAComment) {
  EXPECT_THAT(SplitWords("# nothing"), IsEmpty());
  EXPECT_THAT(SplitWords("attach # the library"), ElementsAre("attach"));
  EXPECT_THAT(SplitWords("attach#the library"), ElementsAre("attach"));
  EXPECT_THAT(SplitWords("text \"# no comment\" # one"), ElementsAre("text", "# no comment"));
}

TEST(ScriptWords, HaveTheirCommentBehindThem) {
  EXPECT_EQ(CommentBegin("# nothing"), 0U);
  EXPECT_EQ(CommentBegin("attach # it"), 7U);
  EXPECT_EQ(CommentBegin("attach"), 6U);
  EXPECT_EQ(CommentBegin(R"(text "#\"#"#)"), 11U);
  EXPECT_EQ(CommentBegin(R"(text "#\\"#)"), 10U);
  EXPECT_EQ(CommentBegin(R"(text \x#)"), 7U);
}

TEST(ScriptWords, MayBeQuotedWithCEscapes) {
  EXPECT_THAT(SplitWords(R"(text "vexo init \n")"), ElementsAre("text", "vexo init \n"));
  EXPECT_THAT(SplitWords(R"("\r\n\t\\\"\x41\x7f")"), ElementsAre("\r\n\t\\\"A\x7f"));
  EXPECT_THAT(SplitWords(R"(text "")"), ElementsAre("text", ""));
  EXPECT_THAT(SplitWords(R"("\x414")"), ElementsAre("A4"));  // two digits, no more
}

TEST(ScriptWords, KeepBackslashesOutsideQuotes) {
  EXPECT_THAT(SplitWords(R"(file \Windows\Main.exe absent)"),
              ElementsAre("file", R"(\Windows\Main.exe)", "absent"));
}

TEST(ScriptWords, RefuseQuotesThatDoNotEndOrStandInsideAWord) {
  EXPECT_EQ(MistakeOf("text \"vexo"), "expected a closing quote, found the end of the line");
  EXPECT_EQ(MistakeOf("text \"vexo\\\""), "expected a closing quote, found the end of the line");
  EXPECT_EQ(MistakeOf("text \"a\"b"), "expected a blank after the closing quote, found 'b'");
  EXPECT_EQ(MistakeOf("text a\"b\""), "expected a blank before a quoted word, found '\"'");
}

TEST(ScriptWords, RefuseOtherEscapes) {
  const std::string start = R"(expected one of the escapes \n \r \t \\ \" \xHH, found ')";
  EXPECT_EQ(MistakeOf(R"("\NAND")"), start + "\\N'");
  EXPECT_EQ(MistakeOf(R"("\0")"), start + "\\0'");
  EXPECT_EQ(MistakeOf(R"("\x4")"), start + "\\x4\"'");
  EXPECT_EQ(MistakeOf(R"("\xg0")"), start + "\\xg0'");
  EXPECT_EQ(MistakeOf("\"\\"), start + "\\'");
}

// Reads one word with `read` and gives the mistake, or "none".
template <typename Read>
std::string MistakeOfReading(const std::string& word, Read read) {
  const std::vector<std::string> words = {word};
  Arguments arguments(words);
  try {
    read(arguments);
  } catch (const Malformed& error) {
    return error.what();
  }
  return "none";
}

TEST(ScriptArguments, ReadDecimalAndHexadecimalNumbers) {
  const std::vector<std::string> words = {"0", "255", "0xff", "0XFF", "4294967295", "-1", "0x10"};
  Arguments arguments(words);
  EXPECT_EQ(arguments.Number("n"), 0U);
  EXPECT_EQ(arguments.Byte("a byte"), 255);
  EXPECT_EQ(arguments.Byte("a byte"), 255);
  EXPECT_EQ(arguments.Byte("a byte"), 255);
  EXPECT_EQ(arguments.Number("n"), 4294967295U);
  EXPECT_EQ(arguments.SignedNumber("n"), -1);
  EXPECT_EQ(arguments.SignedNumber("n"), 16);
  EXPECT_TRUE(arguments.AtEnd());
}

TEST(ScriptArguments, RefuseWhatIsNoNumberOrOutOfRange) {
  for (const char* word : {"", "x", "0x", "12x", "1.5", "0b1", "+1", "-1", "--1", "-", "4294967296",
                           "99999999999999999999"}) {
    EXPECT_EQ(MistakeOfReading(word, [](Arguments& a) { a.Number("a number"); }),
              "expected a number, found '" + std::string(word) + "'");
  }
  EXPECT_EQ(MistakeOfReading("256", [](Arguments& a) { a.Byte("a value"); }),
            "expected a value 0 to 255, found '256'");
  EXPECT_EQ(MistakeOfReading("2147483648", [](Arguments& a) { a.SignedNumber("a number"); }),
            "expected a number, found '2147483648'");
}

TEST(ScriptArguments, ReadRecordBytesOfExactlyTwoHexadecimalDigits) {
  EXPECT_EQ(MistakeOfReading("aF", [](Arguments& a) { EXPECT_EQ(a.RecordByte(), 0xAF); }), "none");
  for (const char* word : {"", "1", "123", "0x", "g1", "-1", "+1"}) {
    EXPECT_EQ(MistakeOfReading(word, [](Arguments& a) { a.RecordByte(); }),
              "expected a byte of two hexadecimal digits, found '" + std::string(word) + "'");
  }
}

TEST(ScriptArguments, ReadChannelsChipsAndPages) {
  const std::vector<std::string> words = {"15", "all", "slave3", "all", "2"};
  Arguments arguments(words);
  EXPECT_THAT(arguments.Channels(), ElementsAre(15U));
  EXPECT_EQ(arguments.Channels().size(), 16U);
  const ChipChoice slave3 = arguments.Chips();
  EXPECT_FALSE(slave3.all);
  EXPECT_EQ(slave3.position, 3U);
  EXPECT_TRUE(arguments.Chips().all);
  EXPECT_EQ(arguments.Page(), 2);

  EXPECT_EQ(MistakeOfReading("16", [](Arguments& a) { a.Channels(); }),
            "expected a channel 0 to 15 or all, found '16'");
  EXPECT_EQ(MistakeOfReading("slave4", [](Arguments& a) { a.Chips(); }),
            "expected master, slave1, slave2, slave3 or all, found 'slave4'");
  EXPECT_EQ(MistakeOfReading("3", [](Arguments& a) { a.Page(); }),
            "expected a page 0 to 2, found '3'");
}

}  // namespace
}  // namespace script
