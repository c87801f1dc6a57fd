#include "sim/screen/tape_card.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "sim/screen/test_card.h"
#include "tests/sim/screen/screen_bus.h"
#include "tests/sim/screen/tape_reader.h"

namespace sim {
namespace {

constexpr std::uint32_t At(unsigned hours, unsigned minutes, unsigned seconds, unsigned ms) {
  return ((hours * 60 + minutes) * 60 + seconds) * 1000 + ms;
}

int Distance(Rgb a, Rgb b) {
  return std::abs(a.r - b.r) + std::abs(a.g - b.g) + std::abs(a.b - b.b);
}

// The picture in blocks of 60 x 30 pixels: a 16-split on 48 terminal columns.
Image Coarse(const Image& picture) {
  constexpr int kWide = 60;
  constexpr int kHigh = 30;
  Image coarse = FilledImage(picture.width / kWide, picture.height / kHigh, {});
  for (int y = 0; y < coarse.height; ++y) {
    for (int x = 0; x < coarse.width; ++x) {
      int r = 0;
      int g = 0;
      int b = 0;
      for (int i = 0; i < kWide * kHigh; ++i) {
        const Rgb pixel = picture.At(x * kWide + i % kWide, y * kHigh + i / kWide);
        r += pixel.r;
        g += pixel.g;
        b += pixel.b;
      }
      constexpr int kCount = kWide * kHigh;
      coarse.At(x, y) = {static_cast<std::uint8_t>(r / kCount),
                         static_cast<std::uint8_t>(g / kCount),
                         static_cast<std::uint8_t>(b / kCount)};
    }
  }
  return coarse;
}

TEST(TapeCard, CannotBeTakenForALiveCardEvenInCoarseBlocks) {
  std::vector<Image> cameras;
  for (unsigned live = 0; live < 16; ++live) cameras.push_back(Coarse(TestCard(live)));
  for (unsigned tape = 0; tape < 16; ++tape) {
    const Image played = Coarse(TapeCard(tape));
    for (unsigned live = 0; live < 16; ++live) {
      const Image& camera = cameras[live];
      int apart = 0;
      for (std::size_t i = 0; i < played.pixels.size(); ++i) {
        if (Distance(played.pixels[i], camera.pixels[i]) > 60) ++apart;
      }
      EXPECT_GT(apart, static_cast<int>(played.pixels.size()) / 2) << tape << " " << live;
    }
  }
}

TEST(TapeCard, IsPalerThanTheLiveCardOfItsChannel) {
  const auto spread = [](Rgb c) { return std::max({c.r, c.g, c.b}) - std::min({c.r, c.g, c.b}); };
  for (unsigned channel = 0; channel < 16; ++channel) {
    if (channel == 14) continue;  // a grey card from the start
    const int tape = spread(TapeCardPixel(channel, 30, 240, kCardHeightNtsc, 0));
    const int live = spread(TestCardPixel(channel, 700, 240, kCardHeightNtsc, 0));
    EXPECT_LT(3 * tape, 2 * live) << channel;
  }
}

TEST(TapeCard, KeepsNeighboursOnTheScreenApart) {
  for (unsigned a = 0; a < 16; ++a) {
    for (const unsigned b : {a + 1, a + 4}) {
      if (b >= 16) continue;
      EXPECT_GT(Distance(TapeCardPixel(a, 30, 240, kCardHeightNtsc, 0),
                         TapeCardPixel(b, 30, 240, kCardHeightNtsc, 0)),
                15)
          << a << " " << b;
    }
  }
}

TEST(TapeCard, HasADarkBandWithBrightHolesAtTheTopAndAtTheBottom) {
  for (const int height : {kCardHeightNtsc, kCardHeightPal}) {
    for (const int middle : {24, height - 24}) {
      int dark = 0;
      int holes = 0;
      for (int x = 1; x < kCardWidth; ++x) {
        const Rgb pixel = TapeCardPixel(6, x, middle, height, 0);
        if (pixel.g < 40) ++dark;
        if (pixel.g > 150 && TapeCardPixel(6, x - 1, middle, height, 0).g < 40) ++holes;
      }
      EXPECT_EQ(holes, 12) << height << " " << middle;
      EXPECT_GT(dark, kCardWidth / 4);
    }
    for (const int edge : {0, 5, height - 6, height - 1}) {
      for (int x = 0; x < kCardWidth; ++x) {
        ASSERT_LT(TapeCardPixel(6, x, edge, height, 0).g, 40) << x << ", " << edge;
      }
    }
  }
}

TEST(TapeCard, PointsAnAmberTriangleToTheRight) {
  const Image card = TapeCard(4);
  const auto amber = [&](int y) {
    int count = 0;
    for (int x = 0; x < card.width; ++x) count += card.At(x, y).r - card.At(x, y).b > 97 ? 1 : 0;
    return count;
  };
  constexpr int kMiddle = 189;
  EXPECT_NEAR(amber(kMiddle), 180, 4);
  for (int away = 1; away < 100; ++away) {
    EXPECT_LT(amber(kMiddle + away), amber(kMiddle + away - 1) + 1) << away;
    EXPECT_NEAR(amber(kMiddle - away), amber(kMiddle + away), 3) << away;
    EXPECT_NEAR(amber(kMiddle + away), 180 - away * 180.0 / 107, 6) << away;
  }
}

TEST(TapeCard, ShowsItsChannelNumber) {
  for (const int height : {kCardHeightNtsc, kCardHeightPal}) {
    for (unsigned channel = 0; channel < 16; ++channel) {
      EXPECT_EQ(ReadNumber(TapeCard(channel, height)), std::to_string(channel)) << height;
    }
  }
}

TEST(TapeCard, ShowsTheTimeInHoursMinutesSecondsAndFrames) {
  struct Case {
    std::uint32_t time_ms;
    const char* ntsc;
    const char* pal;
  };
  for (const Case& c :
       {Case{0, "00:00:00:00", "00:00:00:00"}, Case{At(0, 0, 0, 33), "00:00:00:00", "00:00:00:00"},
        Case{At(0, 0, 0, 34), "00:00:00:01", "00:00:00:00"},
        Case{At(0, 0, 0, 40), "00:00:00:01", "00:00:00:01"},
        Case{At(0, 0, 0, 999), "00:00:00:29", "00:00:00:24"},
        Case{At(0, 0, 1, 0), "00:00:01:00", "00:00:01:00"},
        Case{At(0, 1, 0, 0), "00:01:00:00", "00:01:00:00"},
        Case{At(0, 59, 59, 500), "00:59:59:15", "00:59:59:12"},
        Case{At(12, 34, 56, 600), "12:34:56:18", "12:34:56:15"},
        Case{At(7, 8, 9, 800), "07:08:09:24", "07:08:09:20"},
        Case{At(23, 59, 59, 999), "23:59:59:29", "23:59:59:24"},
        Case{At(24, 0, 0, 0), "00:00:00:00", "00:00:00:00"},
        Case{0xFFFFFFFF, "17:02:47:08", "17:02:47:07"}}) {
    EXPECT_EQ(ReadTimeCode(TapeCard(5, kCardHeightNtsc, c.time_ms)), c.ntsc);
    EXPECT_EQ(ReadTimeCode(TapeCard(5, kCardHeightPal, c.time_ms)), c.pal);
  }
}

TEST(TapeCard, ChangesNothingButTheTimeCodeWithTime) {
  const Image before = TapeCard(11, kCardHeightNtsc, At(0, 0, 1, 0));
  const Image after = TapeCard(11, kCardHeightNtsc, At(23, 34, 56, 789));
  for (int y = 0; y < before.height; ++y) {
    if (y >= 320 && y < 420) continue;
    for (int x = 0; x < kCardWidth; ++x)
      ASSERT_EQ(before.At(x, y), after.At(x, y)) << x << "," << y;
  }
  EXPECT_NE(before, after);
}

TEST(TapeCard, ComesPixelByPixelAsItComesLineByLine) {
  const Image card = TapeCard(9, kCardHeightPal, At(1, 2, 3, 456));
  for (int y = 0; y < card.height; y += 5) {
    for (int x = 0; x < card.width; x += 7) {
      ASSERT_EQ(TapeCardPixel(9, x, y, kCardHeightPal, At(1, 2, 3, 456)), card.At(x, y));
    }
  }
}

}  // namespace
}  // namespace sim
