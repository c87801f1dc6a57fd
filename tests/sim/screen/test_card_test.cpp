#include "sim/screen/test_card.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "sim/screen/digits.h"

namespace sim {
namespace {

int Distance(Rgb a, Rgb b) {
  return std::abs(a.r - b.r) + std::abs(a.g - b.g) + std::abs(a.b - b.b);
}

bool IsWhite(Rgb pixel) { return pixel.r > 235 && pixel.g > 235 && pixel.b > 235; }

// Leftmost column where the bar lightens a line above the digits.
int BarAt(std::uint32_t time_ms) {
  const Rgb plain = TestCardPixel(3, 600, 40, kCardHeightNtsc, 0);
  for (int x = 0; x < kCardWidth; ++x) {
    const Rgb pixel = TestCardPixel(3, x, 40, kCardHeightNtsc, time_ms);
    if (pixel.r > plain.r + 20 && pixel.g > plain.g + 20 && pixel.b > plain.b + 20 && x > 14 &&
        x < 670) {
      return x;
    }
  }
  return -1;
}

TEST(TestCard, GivesEveryChannelItsOwnColor) {
  for (unsigned a = 0; a < 16; ++a) {
    for (unsigned b = 0; b < a; ++b) {
      const Rgb first = TestCardPixel(a, 600, 100, kCardHeightNtsc, 0);
      const Rgb second = TestCardPixel(b, 600, 100, kCardHeightNtsc, 0);
      EXPECT_GT(Distance(first, second), 30) << a << " " << b;
    }
  }
}

TEST(TestCard, ShowsTheChannelNumberInDigitsOfTwoThirdsOfItsHeight) {
  for (const int height : {kCardHeightNtsc, kCardHeightPal}) {
    for (unsigned channel = 0; channel < 16; ++channel) {
      int top = height;
      int bottom = 0;
      for (int y = 20; y < height - 90; ++y) {
        const CardLine line(channel, y, height, 0);
        for (int x = 100; x < 600; ++x) {
          if (!IsWhite(line.At(x))) continue;
          top = std::min(top, y);
          bottom = std::max(bottom, y);
        }
      }
      EXPECT_GT(bottom - top, 300) << channel;
      EXPECT_NEAR(top + bottom, height - 24, 6) << channel << ": not in the middle";
    }
  }
}

TEST(TestCard, DrawsDifferentDigitsForEveryChannel) {
  const auto digits = [](unsigned channel) {
    std::vector<bool> white;
    for (int y = 60; y < 400; y += 8) {
      const CardLine line(channel, y, kCardHeightNtsc, 0);
      for (int x = 100; x < 600; x += 8) white.push_back(IsWhite(line.At(x)));
    }
    return white;
  };
  for (unsigned a = 0; a < 16; ++a) {
    for (unsigned b = 0; b < a; ++b) EXPECT_NE(digits(a), digits(b)) << a << " " << b;
  }
}

// A digit drawn coarsely, one character for 20 x 30 pixels.
std::string Coarse(int digit) {
  std::string text;
  for (int top = 0; top < kDigitHeight; top += 30) {
    for (int left = 0; left < kDigitWidth; left += 20) {
      int ink = 0;
      for (int y = top; y < top + 30; ++y) {
        for (int x = left; x < left + 20; ++x) ink += DigitRow(digit, y)[x];
      }
      text += ink > 20 * 30 * 255 / 2 ? '#' : '.';
    }
    text += '\n';
  }
  return text;
}

TEST(TestCard, DrawsDigitsThatCanBeRead) {
  const char* const kExpected[10] = {
      "...####...\n"
      ".########.\n"
      "###....###\n"
      "###....###\n"
      "###....###\n"
      "###....###\n"
      "###....###\n"
      "###....###\n"
      "###....###\n"
      ".########.\n"
      "...####...\n",
      "....###...\n"
      "...####...\n"
      ".######...\n"
      ".##.###...\n"
      "....###...\n"
      "....###...\n"
      "....###...\n"
      "....###...\n"
      "....###...\n"
      "....###...\n"
      ".....##...\n",
      "...####...\n"
      ".########.\n"
      "###....###\n"
      ".#.....###\n"
      ".......###\n"
      ".....####.\n"
      "....####..\n"
      "...###....\n"
      "..###.....\n"
      ".########.\n"
      "##########\n",
      "..#####...\n"
      ".########.\n"
      "###....##.\n"
      ".......##.\n"
      "....#####.\n"
      "...######.\n"
      "......####\n"
      ".......###\n"
      "###....###\n"
      "#########.\n"
      "..#####...\n",
      ".....###..\n"
      ".....##...\n"
      "....###...\n"
      "...###....\n"
      "..###.##..\n"
      ".###..##..\n"
      ".########.\n"
      "##########\n"
      ".....###..\n"
      "......##..\n"
      "......##..\n",
      ".########.\n"
      ".########.\n"
      ".##.......\n"
      ".###......\n"
      ".#######..\n"
      ".##...###.\n"
      ".......###\n"
      ".......###\n"
      "###....###\n"
      "#########.\n"
      "..#####...\n",
      "......##..\n"
      "...#####..\n"
      "..####....\n"
      ".####.....\n"
      ".#######..\n"
      "#########.\n"
      "###....###\n"
      "###....###\n"
      "###....###\n"
      ".########.\n"
      "...####...\n",
      "##########\n"
      ".#########\n"
      "......###.\n"
      "......###.\n"
      "......##..\n"
      ".....###..\n"
      ".....##...\n"
      "....###...\n"
      "....##....\n"
      "...###....\n"
      "...##.....\n",
      "...####...\n"
      ".########.\n"
      ".##....##.\n"
      ".##....##.\n"
      ".########.\n"
      ".########.\n"
      "####..####\n"
      "###....###\n"
      "###....###\n"
      ".########.\n"
      "...####...\n",
      "...####...\n"
      ".########.\n"
      "###....###\n"
      "###....###\n"
      "###....###\n"
      ".#########\n"
      "..#######.\n"
      ".....####.\n"
      "....####..\n"
      "..#####...\n"
      "..##......\n",
  };
  for (int digit = 0; digit < 10; ++digit) EXPECT_EQ(Coarse(digit), kExpected[digit]) << digit;
}

TEST(TestCard, MovesABarAcrossInFourSeconds) {
  EXPECT_EQ(BarAt(1000), 180);
  EXPECT_EQ(BarAt(2000), 360);
  EXPECT_EQ(BarAt(3000), 540);
  EXPECT_EQ(BarAt(5000), 180) << "the bar comes round again";
}

TEST(TestCard, LetsTheBarLeaveOnTheRightWhileItEntersOnTheLeft) {
  constexpr std::uint32_t kBarAt710 = 3945;
  const Rgb plain = TestCardPixel(3, 300, 2, kCardHeightNtsc, kBarAt710);
  for (const int x : {0, 10, 712, 719}) {
    EXPECT_NE(TestCardPixel(3, x, 2, kCardHeightNtsc, kBarAt710), plain) << x;
  }
  for (const int x : {30, 700}) {
    EXPECT_EQ(TestCardPixel(3, x, 2, kCardHeightNtsc, kBarAt710), plain) << x;
  }
}

TEST(TestCard, KeepsItsBorderWithinWhatEveryWindowShows) {
  for (const int height : {kCardHeightNtsc, kCardHeightPal}) {
    const int middle = 30;
    EXPECT_TRUE(Distance(TestCardPixel(0, 11, middle, height, 2000),
                         TestCardPixel(0, 20, middle, height, 2000)) > 100);
    EXPECT_TRUE(Distance(TestCardPixel(0, 672, middle, height, 2000),
                         TestCardPixel(0, 660, middle, height, 2000)) > 100);
    EXPECT_TRUE(Distance(TestCardPixel(0, 300, height - 36, height, 2000),
                         TestCardPixel(0, 300, height - 46, height, 2000)) > 100);
  }
}

}  // namespace
}  // namespace sim
