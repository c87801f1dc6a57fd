// Text from files, as a terminal may have it.
#include "files/printable.h"

#include <gtest/gtest.h>

namespace files {
namespace {

struct Shown {
  const char* name;
  std::string text;
  const char* shown;
};

void PrintTo(const Shown& shown, std::ostream* out) { *out << shown.name; }

class PrintableText : public testing::TestWithParam<Shown> {};

TEST_P(PrintableText, IsShown) { EXPECT_EQ(Printable(GetParam().text), GetParam().shown); }

INSTANTIATE_TEST_SUITE_P(
    Files, PrintableText,
    testing::Values(Shown{"Plain", "camera 2 off", "camera 2 off"},  //
                    Shown{"Letters", "Größe ▲ 😀", "Größe ▲ 😀"},
                    Shown{"Escape", "\x1B[31mred", "\\x1B[31mred"},
                    Shown{"TabLineEndAndDelete", "a\tb\n\x7F", "a\tb\\x0A\\x7F"},
                    Shown{"Zero", std::string("a\0b", 3), "a\\x00b"},
                    Shown{"ControlOfTwoBytes",
                          "\xC2\x9B"
                          "31m",
                          "\\xC2\\x9B31m"},
                    Shown{"LoneByte", "\x80\xFF", "\\x80\\xFF"},
                    Shown{"CutCharacter", "\xE2\x96", "\\xE2\\x96"},
                    Shown{"Overlong", "\xC0\xAF\xE0\x80\xAF", "\\xC0\\xAF\\xE0\\x80\\xAF"},
                    Shown{"Surrogate", "\xED\xA0\x80", "\\xED\\xA0\\x80"},
                    Shown{"BeyondTheLast", "\xF4\x90\x80\x80", "\\xF4\\x90\\x80\\x80"}),
    [](const auto& shown) { return std::string(shown.param.name); });

TEST(Printable, KeepsTheLinesOfATextOfSeveral) {
  EXPECT_EQ(PrintableLines("a\x1B\n\nbcdef\n", 4), "a...\n\nbcde...\n");
  EXPECT_EQ(PrintableLines("", 4), "");
}

TEST(Printable, CutsALongTextBetweenCharacters) {
  EXPECT_EQ(Printable("abcdef", 4), "abcd...");
  EXPECT_EQ(Printable("abc▲", 4), "abc...");
  EXPECT_EQ(Printable(std::string(1000, 'x')), std::string(200, 'x') + "...");
}

}  // namespace
}  // namespace files
