#include "text/command_pattern.h"

#include <algorithm>
#include <array>
#include <set>
#include <sstream>

#include "tests/support/library_test.h"
#include "text/back_end_text.h"
#include "text/chip_text.h"
#include "text/tokenizer.h"

namespace test {
namespace {

using Texts = std::vector<std::string>;

// ---- Lines through a small grammar --------------------------------------------------------------

constexpr std::array kPatterns = {
    "go",        "set alpha A",   "set beta $B [C]",         "set N end",
    "set N X Y", "jump [HEIGHT]", "put A B C D E F G H I J", "put_it A",
};
const char* ToyPattern(std::uint8_t i) { return kPatterns.at(i); }
constexpr TextGrammar kToy = {"toy", kPatterns.size(), ToyPattern};

struct Read {
  TextResult keyword = TextResult::kMatched;
  TextResult arguments = TextResult::kMatched;
  TextMatch match;
  std::vector<std::uint32_t> Numbers() const {
    return {match.numbers.value, match.numbers.value + match.numbers.count};
  }
};

class CommandPattern : public LibraryTest {
 protected:
  static Read ReadLine(const char* line) {
    Read read;
    read.keyword = ReadKeyword(kToy, line, read.match);
    if (read.keyword == TextResult::kMatched) {
      read.arguments = ReadArguments(kToy, read.match);
    }
    return read;
  }
};

TEST_F(CommandPattern, EveryPatternIsFoundByItsLine) {
  struct {
    const char* line;
    std::uint8_t row;
    std::vector<std::uint32_t> numbers;
    std::uint8_t tokens;
  } const cases[] = {
      {"toy go ", 0, {}, 1},
      {"toy set alpha 5 ", 1, {5}, 3},
      {"toy set beta 1F 7 ", 2, {0x1F, 7}, 4},
      {"toy set beta 1F ", 2, {0x1F}, 3},
      {"toy set 3 end ", 3, {3}, 3},
      {"toy set 3 4 5 ", 4, {3, 4, 5}, 4},
      {"toy jump ", 5, {}, 1},
      {"toy jump 9 ", 5, {9}, 2},
      {"toy put 1 2 3 4 5 6 7 8 9 10 ", 6, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, 11},
      {"toy put_it 1 ", 7, {1}, 2},
      {"toy,set\n3,end\n", 3, {3}, 3},
  };
  for (const auto& c : cases) {
    const Read read = ReadLine(c.line);
    EXPECT_EQ(read.keyword, TextResult::kMatched) << c.line;
    EXPECT_EQ(read.arguments, TextResult::kMatched) << c.line;
    EXPECT_EQ(read.match.row, c.row) << c.line;
    EXPECT_EQ(read.Numbers(), c.numbers) << c.line;
    EXPECT_EQ(read.match.tokens, c.tokens) << c.line;
  }
}

TEST_F(CommandPattern, TheFirstTokenIsTheHeaderAndNothingElse) {
  for (const char* line : {"", " ", "toy", "toys go ", "to go ", "Toy go ", "xtoy go ", "go toy ",
                           " toy go ", "toy\tgo "}) {
    EXPECT_EQ(ReadLine(line).keyword, TextResult::kWrongHeader) << line;
  }
}

TEST_F(CommandPattern, AMissingOrUnknownKeywordIsRejected) {
  for (const char* line : {"toy ", "toy go", "toy  go ", "toy gox ", "toy g ", "toy Go ",
                           "toy put_i 1 ", "toy 1 ", "toy A ", "toy alpha 1 "}) {
    EXPECT_EQ(ReadLine(line).keyword, TextResult::kRejected) << line;
  }
}

TEST_F(CommandPattern, AMissingArgumentIsRejectedUnlessItIsOptional) {
  for (const char* line :
       {"toy set ", "toy set alpha ", "toy set beta ", "toy set 3 ", "toy set 3 4 ",
        "toy set alpha 5", "toy set alpha  5 ", "toy put 1 2 3 4 5 6 7 8 9 ", "toy put_it "}) {
    const Read read = ReadLine(line);
    EXPECT_EQ(read.keyword, TextResult::kMatched) << line;
    EXPECT_EQ(read.arguments, TextResult::kRejected) << line;
  }
  EXPECT_EQ(ReadLine("toy jump 9").arguments, TextResult::kMatched);
  EXPECT_EQ(ReadLine("toy jump  9 ").match.numbers.count, 0);
}

TEST_F(CommandPattern, ALaterWordThatIsUnknownIsToldApart) {
  // Where a number may stand no word is unknown.
  EXPECT_EQ(ReadLine("toy set gamma 1 2 ").arguments, TextResult::kMatched);
  EXPECT_EQ(ReadLine("toy set gamma 1 2 ").match.row, 4);
  // Where one of several words must stand there is none here, so a grammar of its own.
  static const TextGrammar kWordsOnly = {
      "toy", 2, [](std::uint8_t i) { return i == 0 ? "switch on" : "switch off"; }};
  for (const char* line : {"toy switch maybe ", "toy switch o ", "toy switch onn ",
                           "toy switch ON ", "toy switch 1 "}) {
    TextMatch match;
    EXPECT_EQ(ReadKeyword(kWordsOnly, line, match), TextResult::kMatched);
    EXPECT_EQ(ReadArguments(kWordsOnly, match), TextResult::kUnknownWord) << line;
  }
}

TEST_F(CommandPattern, TokensBehindThePatternAreNotRead) {
  EXPECT_EQ(ReadLine("toy go 1 2 ").match.tokens, 1);
  EXPECT_EQ(g_tokenizer.position, std::string("toy go ").size());
  EXPECT_EQ(ReadLine("toy set 3 end 4 ").Numbers(), (std::vector<std::uint32_t>{3}));
  EXPECT_EQ(ReadLine("toy put 1 2 3 4 5 6 7 8 9 10 11 ").match.numbers.count, 10);
}

TEST_F(CommandPattern, AWordOfThePatternGoesBeforeANumber) {
  EXPECT_EQ(ReadLine("toy set alpha 1 ").match.row, 1);
  EXPECT_EQ(ReadLine("toy set 3 end ").match.row, 3);
  EXPECT_EQ(ReadLine("toy set 3 ending 1 ").match.row, 4);
}

TEST_F(CommandPattern, MissingNumbersAreZero) {
  const Read read = ReadLine("toy set beta ff ");
  EXPECT_EQ(read.match.numbers.value[0], 0xFFu);
  for (std::size_t i = 1; i < kNumbersMax; ++i) EXPECT_EQ(read.match.numbers.value[i], 0u);
}

TEST_F(CommandPattern, NumbersAreDecimalOrHexadecimalAsThePatternSays) {
  const std::pair<const char*, std::uint32_t> decimal[] = {{"10", 10},
                                                           {"010", 10},
                                                           {"-1", 0xFFFFFFFFu},
                                                           {"+7", 7},
                                                           {"1e3", 1},
                                                           {"0x10", 0},
                                                           {"ff", 0},
                                                           {"2147483647", 0x7FFFFFFFu},
                                                           {"-2147483648", 0x80000000u},
                                                           {"12abc", 12},
                                                           {"\t5", 5},
                                                           {"--5", 0}};
  for (const auto& [text, value] : decimal) {
    const std::string line = std::string("toy put_it ") + text + " ";
    EXPECT_EQ(ReadLine(line.c_str()).match.numbers.value[0], value) << text;
  }
  const std::pair<const char*, std::uint32_t> hexadecimal[] = {
      {"10", 0x10}, {"ff", 0xFF}, {"-1", 0}, {"0x10", 0}, {"FFFFFFFF", 0xFFFFFFFFu}, {"xyz", 0}};
  for (const auto& [text, value] : hexadecimal) {
    const std::string line = std::string("toy set beta ") + text + " ";
    EXPECT_EQ(ReadLine(line.c_str()).match.numbers.value[0], value) << text;
  }
}

// Holds: Text commands "A number is cut to the width that its operation takes"
TEST_F(CommandPattern, OperationsTakeTheLowBits) {
  TextNumbers numbers;
  numbers.value[0] = 0x12345680u;
  EXPECT_EQ(numbers.U8(0), 0x80);
  EXPECT_EQ(numbers.U16(0), 0x5680);
  EXPECT_EQ(numbers.S8(0), -128);
  numbers.value[1] = 0xFFFFFFFFu;
  EXPECT_EQ(numbers.U8(1), 0xFF);
  EXPECT_EQ(numbers.U16(1), 0xFFFF);
  EXPECT_EQ(numbers.S8(1), -1);
}

// ---- The two grammars ---------------------------------------------------------------------------

struct GrammarCase {
  const char* name;
  const TextGrammar* grammar;
};

class Grammar : public ::testing::TestWithParam<GrammarCase> {
 protected:
  static std::vector<Texts> Patterns() {
    const TextGrammar& grammar = *GetParam().grammar;
    std::vector<Texts> patterns;
    for (std::uint8_t i = 0; i < grammar.count; ++i) {
      std::istringstream in(grammar.pattern(i));
      Texts& words = patterns.emplace_back();
      for (std::string word; in >> word;) words.push_back(word);
    }
    return patterns;
  }
  static bool IsLiteral(const std::string& word) { return word[0] >= 'a' && word[0] <= 'z'; }
  static bool IsOptional(const std::string& word) { return word[0] == '['; }
  // How many words two patterns begin with alike.
  static std::size_t Shared(const Texts& a, const Texts& b) {
    std::size_t k = 0;
    while (k < a.size() && k < b.size() && a[k] == b[k]) ++k;
    return k;
  }
};

INSTANTIATE_TEST_SUITE_P(Both, Grammar,
                         ::testing::Values(GrammarCase{"Chip", &kChipGrammar},
                                           GrammarCase{"BackEnd", &kBackEndGrammar}),
                         [](const auto& made) { return std::string(made.param.name); });

TEST_P(Grammar, HasWordsSeparatedBySingleBlanks) {
  const TextGrammar& grammar = *GetParam().grammar;
  ASSERT_GT(grammar.count, 0);
  const std::vector<Texts> patterns = Patterns();
  for (std::uint8_t i = 0; i < grammar.count; ++i) {
    std::string joined;
    for (const std::string& word : patterns[i]) joined += (joined.empty() ? "" : " ") + word;
    EXPECT_EQ(grammar.pattern(i), joined);
    EXPECT_FALSE(joined.empty());
  }
}

TEST_P(Grammar, OffsetsIntoItsPatternsFitAByte) {
  const TextGrammar& grammar = *GetParam().grammar;
  for (std::uint8_t i = 0; i < grammar.count; ++i) {
    EXPECT_LE(std::string(grammar.pattern(i)).size(), 255u) << grammar.pattern(i);
  }
}

TEST_P(Grammar, SpellsWordsNumbersAndOptionalNumbersAsAgreed) {
  const std::string small = "abcdefghijklmnopqrstuvwxyz0123456789_";
  const std::string capital = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";
  for (const Texts& pattern : Patterns()) {
    EXPECT_TRUE(IsLiteral(pattern.front())) << pattern.front();
    for (std::string word : pattern) {
      const std::string whole = word;
      const bool literal = IsLiteral(word);
      if (IsOptional(word)) {
        EXPECT_EQ(word.back(), ']') << whole;
        word = word.substr(1, word.size() - 2);
      } else if (word[0] == '$') {
        word.erase(0, 1);
      }
      ASSERT_FALSE(word.empty()) << whole;
      EXPECT_EQ(word.find_first_not_of(literal ? small : capital), std::string::npos) << whole;
      if (!literal) {
        EXPECT_TRUE(word[0] >= 'A' && word[0] <= 'Z') << whole;
      }
    }
  }
}

TEST_P(Grammar, HasAtMostTenNumbersALine) {
  for (const Texts& pattern : Patterns()) {
    EXPECT_LE(std::count_if(pattern.begin(), pattern.end(),
                            [](const std::string& word) { return !IsLiteral(word); }),
              static_cast<std::ptrdiff_t>(kNumbersMax))
        << pattern.front();
  }
}

TEST_P(Grammar, HasOptionalNumbersOnlyAtTheEnd) {
  for (const Texts& pattern : Patterns()) {
    for (std::size_t k = 0; k + 1 < pattern.size(); ++k) {
      EXPECT_FALSE(IsOptional(pattern[k])) << pattern.front();
    }
  }
}

TEST_P(Grammar, HasPatternsThatBeginAlikeTogether) {
  const std::vector<Texts> patterns = Patterns();
  for (std::size_t i = 0; i < patterns.size(); ++i) {
    for (std::size_t j = i + 1; j < patterns.size(); ++j) {
      for (std::size_t between = i + 1; between < j; ++between) {
        EXPECT_GE(Shared(patterns[i], patterns[between]), Shared(patterns[i], patterns[j]))
            << GetParam().grammar->pattern(static_cast<std::uint8_t>(j));
      }
    }
  }
}

// Where two patterns part, the first goes on with a word, and not with the word of the second: so a
// token never fits both, but for a word that would read as a number too.
TEST_P(Grammar, SpellsWhatPatternsShareAlikeAndHasWordsBeforeNumbers) {
  const std::vector<Texts> patterns = Patterns();
  for (std::size_t i = 0; i < patterns.size(); ++i) {
    for (std::size_t j = i + 1; j < patterns.size(); ++j) {
      const std::size_t k = Shared(patterns[i], patterns[j]);
      ASSERT_LT(k, patterns[i].size()) << "begins another: " << patterns[i].front();
      ASSERT_LT(k, patterns[j].size()) << "begins another: " << patterns[j].front();
      EXPECT_TRUE(IsLiteral(patterns[i][k]))
          << GetParam().grammar->pattern(static_cast<std::uint8_t>(i)) << " before "
          << GetParam().grammar->pattern(static_cast<std::uint8_t>(j));
      EXPECT_FALSE(IsOptional(patterns[j][k])) << patterns[j].front();
    }
  }
}

TEST_P(Grammar, HasAHeaderWithoutASeparator) {
  const std::string header = GetParam().grammar->header;
  EXPECT_FALSE(header.empty());
  EXPECT_EQ(header.find_first_of(" ,\n"), std::string::npos);
}

}  // namespace
}  // namespace test
