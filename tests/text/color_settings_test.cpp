#include "text/color_settings.h"

#include <array>
#include <cstring>

#include "chip/video_state.h"
#include "tests/support/at_events.h"
#include "tests/support/library_test.h"

namespace test {
namespace {

class ColorSettingsTest : public LibraryTest {
 protected:
  static constexpr ColorSettings kColors = {
      .brightness = 1, .contrast = 2, .hue = 3, .saturation = 4};

  static bool AllZero(const ColorState& colors) {
    constexpr std::array<std::uint8_t, sizeof(ColorState)> kZero{};
    return std::memcmp(kZero.data(), &colors, sizeof colors) == 0;
  }
};

// Holds: vexo color "Sets the hue of one channel"
TEST_F(ColorSettingsTest, AreZeroAtLoad) {
  EXPECT_TRUE(AllZero(g_color));
  static_assert(sizeof(ColorState) == 64);
  PretendBoard(4);
  SetColorHue(0, 13);
  EXPECT_EQ(Accesses(), (std::vector<Access>{W(0x03, 0, 0x07, 13), W(0x03, 0, 0x08, 0),
                                             W(0x03, 0, 0x09, 0), W(0x03, 0, 0x0A, 0)}));
}

TEST_F(ColorSettingsTest, AnEntryIsBrightnessContrastHueSaturation) {
  PretendBoard(4);
  SetColors(2, kColors);
  const std::uint8_t wanted[4] = {1, 2, 3, 4};
  EXPECT_EQ(std::memcmp(&g_color.channel[2], wanted, 4), 0);
}

TEST_F(ColorSettingsTest, AreWrittenAsHueSaturationContrastBrightness) {
  PretendBoard(8);
  SetColors(6, kColors);
  EXPECT_EQ(Accesses(), (std::vector<Access>{W(0x0C, 0, 0x27, 3), W(0x0C, 0, 0x28, 4),
                                             W(0x0C, 0, 0x29, 2), W(0x0C, 0, 0x2A, 1)}));
}

// A line of another thread that comes in between sets one field, and writes the others from here.
TEST_F(ColorSettingsTest, AreKeptBeforeTheFirstOfThemIsWritten) {
  PretendBoard(4);
  for (const std::uint8_t channel : {std::uint8_t{2}, std::uint8_t{4}}) {
    g_color = {};
    std::vector<int> hues;
    const AtEvents look(
        [&hues](const auto&, const auto*) { hues.push_back(g_color.channel[2].hue); });
    SetColors(channel, kColors);
    EXPECT_EQ(hues, std::vector<int>(channel == 4 ? 64 : 16, kColors.hue));
  }
}

TEST_F(ColorSettingsTest, EachFieldLeavesTheOthersAsTheyAre) {
  PretendBoard(4);
  SetColors(0, kColors);
  SetColorHue(0, 13);
  SetColorSaturation(0, 14);
  SetColorContrast(0, 12);
  Mark();
  SetColorBrightness(0, 11);
  EXPECT_EQ(Accesses(), (std::vector<Access>{W(0x03, 0, 0x07, 13), W(0x03, 0, 0x08, 14),
                                             W(0x03, 0, 0x09, 12), W(0x03, 0, 0x0A, 11)}));
  EXPECT_EQ(g_color.channel[1].hue, 0);
}

TEST_F(ColorSettingsTest, TheChannelCountIsEveryChannelInTurn) {
  PretendBoard(16);
  SetColorContrast(16, 7);
  ASSERT_EQ(Accesses().size(), 64u);
  EXPECT_EQ(Accesses()[0], W(0x03, 0, 0x07, 0));
  EXPECT_EQ(Accesses()[63], W(0xC0, 0, 0x3A, 0));
  for (const ColorSettings& colors : g_color.channel) EXPECT_EQ(colors.contrast, 7);
}

TEST_F(ColorSettingsTest, EntriesOfChannelsThatTheBoardLacksStay) {
  PretendBoard(8);
  SetColorSaturation(8, 7);
  SetColors(8, kColors);
  for (int n = 0; n < 16; ++n) EXPECT_EQ(g_color.channel[n].brightness, n < 8 ? 1 : 0) << n;
  SetColorBrightness(8, 9);
  for (int n = 0; n < 16; ++n) EXPECT_EQ(g_color.channel[n].brightness, n < 8 ? 9 : 0) << n;
}

TEST_F(ColorSettingsTest, HueKnowsNoEveryChannel) {
  for (const int channels : {4, 8, 12, 16}) {
    g_color = {};
    PretendBoard(channels);
    SetColorHue(static_cast<std::uint8_t>(channels), 9);
    EXPECT_TRUE(AllZero(g_color)) << channels;
    EXPECT_EQ(Cycles(), 0u) << channels;
  }
}

TEST_F(ColorSettingsTest, ChannelsAboveTheCountChangeNothing) {
  PretendBoard(4);
  for (const std::uint8_t channel : std::initializer_list<std::uint8_t>{5, 15, 16, 255}) {
    SetColorHue(channel, 9);
    SetColorSaturation(channel, 9);
    SetColorContrast(channel, 9);
    SetColorBrightness(channel, 9);
    SetColors(channel, kColors);
  }
  EXPECT_TRUE(AllZero(g_color));
  EXPECT_EQ(Cycles(), 0u);
}

}  // namespace
}  // namespace test
