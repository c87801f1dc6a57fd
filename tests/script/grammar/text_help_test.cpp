// Help and manual page say what the tables of the text commands say.
#include "script/grammar/text_help.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

#include "VexoCtrlSDK.h"
#include "script/grammar/pattern_walk.h"
#include "tests/support/library_test.h"
#include "text/back_end_text.h"
#include "text/chip_text.h"

namespace script {
namespace {

using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::Not;

struct Family {
  const TextGrammar& grammar;
  std::span<const TextHelp> help;
  std::span<const PlaceholderHelp> numbers;
};

std::vector<Family> Families() {
  return {{kChipGrammar, ChipTextHelp(), ChipPlaceholders()},
          {kBackEndGrammar, BackEndTextHelp(), BackEndPlaceholders()}};
}

TEST(TextHelp, HasOneEntryForEachCommandInTheirOrder) {
  for (const Family& family : Families()) {
    std::vector<std::string_view> commands;
    for (std::uint8_t i = 0; i < family.grammar.count; ++i) {
      commands.emplace_back(family.grammar.pattern(i));
    }
    std::vector<std::string_view> helped;
    for (const TextHelp& help : family.help) helped.push_back(help.pattern);
    EXPECT_THAT(helped, ElementsAreArray(commands)) << family.grammar.header;
  }
}

TEST(TextHelp, ExplainsInWholeSentences) {
  for (const Family& family : Families()) {
    for (const TextHelp& help : family.help) {
      ASSERT_FALSE(help.effect.empty()) << help.pattern;
      EXPECT_EQ(help.effect.back(), '.') << help.pattern;
    }
  }
}

TEST(TextHelp, DescribesEveryNumberThatIsUsedAndNoOther) {
  for (const Family& family : Families()) {
    std::set<std::string_view> used;
    for (const TextHelp& help : family.help) {
      std::istringstream in{std::string(help.pattern)};
      for (std::string word; in >> word;) {
        if (!IsNumber(word)) continue;
        const PlaceholderHelp* const number = FindPlaceholder(family.grammar, word);
        ASSERT_NE(number, nullptr) << word << " of " << help.pattern;
        EXPECT_FALSE(number->range.empty()) << word;
        used.insert(number->name);
      }
    }
    std::set<std::string_view> described;
    for (const PlaceholderHelp& number : family.numbers) {
      EXPECT_TRUE(described.insert(number.name).second) << number.name << " twice";
    }
    EXPECT_EQ(used, described) << family.grammar.header;
  }
}

class TextExamples : public test::LibraryTest {};

TEST_F(TextExamples, AreLinesOfTheirOwnCommandsAndSucceed) {
  for (const Family& family : Families()) {
    for (std::size_t i = 0; i < family.help.size(); ++i) {
      const std::string line(family.help[i].example);
      TextMatch match;
      ASSERT_EQ(ReadKeyword(family.grammar, line.c_str(), match), TextResult::kMatched) << line;
      ASSERT_EQ(ReadArguments(family.grammar, match), TextResult::kMatched) << line;
      EXPECT_EQ(match.row, i) << line;
    }
  }
  StartBoard(16, VEXO_VIDEO_NTSC);
  for (const Family& family : Families()) {
    for (const TextHelp& help : family.help) {
      EXPECT_EQ(VEXOAPI_TextCommandProc(std::string(help.example).c_str()), VEXO_OK)
          << help.example;
    }
  }
}

TEST(TextHelp, ExplainsAKeywordOfBothFamiliesFromBoth) {
  const std::string text = HelpOnKeyword("init");
  EXPECT_THAT(text, HasSubstr("vexo init [NUMBER]\n"));
  EXPECT_THAT(text, HasSubstr("vpb init\n"));
  EXPECT_THAT(text, Not(HasSubstr("minit")));
  EXPECT_EQ(HelpOnKeyword("ini"), "");
  EXPECT_EQ(HelpOnKeyword(""), "");
}

TEST(TextHelp, ExplainsLsplitWithItsNumbersAndAnExample) {
  const std::string text = HelpOnKeyword("lsplit");
  EXPECT_THAT(text, HasSubstr("vexo lsplit MODE CHANNEL [BLANK_MASK]\n"));
  EXPECT_THAT(text, HasSubstr("for example: vexo lsplit 6 0"));
  EXPECT_THAT(text, HasSubstr("  MODE: split: 0 one picture"));
  EXPECT_THAT(text, HasSubstr("  CHANNEL: 0 to 15"));
  EXPECT_THAT(text, HasSubstr("  BLANK_MASK: channels to blank"));
  EXPECT_THAT(text, Not(HasSubstr("lsplit_pos")));
}

TEST(TextHelp, DescribesNumbersThatShareALineOnce) {
  const std::string text = HelpOnKeyword("setp_base");
  const std::size_t first = text.find("  A: ");
  ASSERT_NE(first, std::string::npos);
  EXPECT_EQ(text.find("  A: ", first + 1), std::string::npos);
}

TEST(TextManual, IsThePageInTheDocuments) {
  std::ifstream file(VEXO_SOURCE_DIR "/docs/text-commands.md");
  ASSERT_TRUE(file.is_open());
  const std::string page{std::istreambuf_iterator<char>(file), {}};
  EXPECT_TRUE(page == TextCommandManual())
      << "docs/text-commands.md is out of date; write it anew:\n"
         "  ./run.sh manual > docs/text-commands.md";
}

TEST(TextManual, HasEveryCommandNumberAndResult) {
  const std::string page = TextCommandManual();
  for (const Family& family : Families()) {
    for (std::uint8_t i = 0; i < family.grammar.count; ++i) {
      EXPECT_THAT(page, HasSubstr("### `" + std::string(family.grammar.header) + ' ' +
                                  family.grammar.pattern(i) + "`\n"));
    }
    for (const PlaceholderHelp& number : family.numbers) {
      EXPECT_THAT(page, HasSubstr("| `" + std::string(number.name) + "` | "));
    }
  }
  for (const int result :
       {VEXO_OK, VEXO_ERROR_FAILED, VEXO_ERROR_NO_HEADER, VEXO_ERROR_UNINITIALIZED}) {
    EXPECT_THAT(page, HasSubstr("\n| " + std::to_string(result) + " | "));
  }
}

}  // namespace
}  // namespace script
