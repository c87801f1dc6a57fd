#include "sim/picture/terminal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace sim {
namespace {

const std::string kBlock = "\u2580";

std::size_t Occurrences(const std::string& text, const std::string& of) {
  std::size_t count = 0;
  for (std::size_t at = text.find(of); at != std::string::npos; at = text.find(of, at + 1)) ++count;
  return count;
}

TEST(Terminal, DrawsTwoPixelRowsALine) {
  struct Case {
    int width, height, columns;
    std::size_t lines;
  };
  for (const Case& c : {Case{720, 480, 96, 32}, Case{720, 576, 100, 40}, Case{720, 480, 80, 27},
                        Case{4, 4, 4, 2}, Case{4, 1, 4, 1}}) {
    const std::string text =
        RenderForTerminal(FilledImage(c.width, c.height, {1, 2, 3}), c.columns);
    EXPECT_EQ(Occurrences(text, "\n"), c.lines) << c.columns;
    EXPECT_EQ(Occurrences(text, kBlock), c.lines * static_cast<std::size_t>(c.columns));
    EXPECT_EQ(Occurrences(text, "\x1b[0m\n"), c.lines) << "a line leaves its colours on";
  }
}

TEST(Terminal, PutsTheUpperPixelInFrontAndTheLowerBehind) {
  Image image = FilledImage(1, 2, {1, 2, 3});
  image.At(0, 1) = {4, 5, 6};
  EXPECT_EQ(RenderForTerminal(image, 1), "\x1b[38;2;1;2;3m\x1b[48;2;4;5;6m" + kBlock + "\x1b[0m\n");
}

TEST(Terminal, AveragesTheAreaOfEachCell) {
  Image image = FilledImage(2, 4, {0, 0, 0});
  image.At(0, 0) = {100, 0, 0};
  image.At(1, 1) = {0, 40, 0};
  image.At(0, 3) = {0, 0, 8};
  EXPECT_EQ(RenderForTerminal(image, 1),
            "\x1b[38;2;25;10;0m\x1b[48;2;0;0;2m" + kBlock + "\x1b[0m\n");
}

TEST(Terminal, SetsAColorOnlyWhereItChanges) {
  Image image = FilledImage(3, 2, {9, 9, 9});
  image.At(2, 0) = {7, 7, 7};
  EXPECT_EQ(RenderForTerminal(image, 3), "\x1b[38;2;9;9;9m\x1b[48;2;9;9;9m" + kBlock + kBlock +
                                             "\x1b[38;2;7;7;7m" + kBlock + "\x1b[0m\n");
}

TEST(Terminal, CanBeWiderThanTheImage) {
  const std::string text = RenderForTerminal(FilledImage(2, 2, {1, 1, 1}), 5);
  EXPECT_EQ(Occurrences(text, kBlock), 15u);
}

TEST(Terminal, DrawsNothingOfNothing) {
  EXPECT_EQ(RenderForTerminal(Image{}, 80), "");
  EXPECT_EQ(RenderForTerminal(FilledImage(2, 2, {}), 0), "");
}

}  // namespace
}  // namespace sim
