// The picture controls of an input: what they make of a colour, and that they are its own.
#include "sim/screen/input_colors.h"

#include <gtest/gtest.h>

#include "setup/init_table_data.h"
#include "tests/sim/screen/screen_bus.h"

namespace sim {
namespace {

constexpr Rgb kGrey{100, 100, 100};
constexpr Rgb kRed{168, 44, 44};  // luminance 81

struct Case {
  InputColors colors;
  Rgb from;
  Rgb to;
};

std::ostream& operator<<(std::ostream& out, const Case& c) {
  return out << int{c.colors.hue} << ' ' << int{c.colors.saturation} << ' '
             << int{c.colors.contrast} << ' ' << int{c.colors.brightness};
}

constexpr InputColors Hue(std::uint8_t value) { return {value, 0x80, 0x80, 0x80}; }
constexpr InputColors Saturation(std::uint8_t value) { return {0x80, value, 0x80, 0x80}; }
constexpr InputColors Contrast(std::uint8_t value) { return {0x80, 0x80, value, 0x80}; }
constexpr InputColors Brightness(std::uint8_t value) { return {0x80, 0x80, 0x80, value}; }

class ColorTableOf : public testing::TestWithParam<Case> {};

// Holds: Chips: vexo "`HUE`: 0 to 255"
// Holds: Chips: vexo "`SATURATION`: 0 grey"
// Holds: Chips: vexo "`CONTRAST`: 0 none"
// Holds: Chips: vexo "`BRIGHTNESS`: 0 dark"
TEST_P(ColorTableOf, MakesThisOfAColour) {
  const Case& c = GetParam();
  const Rgb to = ColorTable(c.colors)(c.from);
  EXPECT_EQ(to, c.to) << int{to.r} << ' ' << int{to.g} << ' ' << int{to.b};
}

const Case kCases[] = {
    // Brightness moves every level alike, and stops at black and white.
    {Brightness(0x80), kRed, kRed},
    {Brightness(0x81), kRed, {169, 45, 45}},
    {Brightness(0x60), kRed, {136, 12, 12}},
    {Brightness(0x00), kRed, {40, 0, 0}},
    {Brightness(0xFF), kRed, {255, 171, 171}},
    // Contrast multiplies the luminance.
    {Contrast(0x40), kGrey, {50, 50, 50}},
    {Contrast(0xC0), kGrey, {150, 150, 150}},
    {Contrast(0xFF), kGrey, {199, 199, 199}},
    {Contrast(0x00), kGrey, {0, 0, 0}},
    {Contrast(0x40), kRed, {127, 3, 3}},
    {Contrast(0x00), kRed, {87, 0, 0}},
    // Saturation multiplies what is not grey.
    {Saturation(0x00), kRed, {81, 81, 81}},
    {Saturation(0x40), kRed, {125, 63, 63}},
    {Saturation(0xC0), kRed, {211, 25, 25}},
    {Saturation(0x00), kGrey, kGrey},
    // Hue turns it: to green upwards, to purple downwards.
    {Hue(0x00), kGrey, kGrey},
    {Hue(0x00), kRed, {0, 118, 118}},
    {Hue(0x80), kRed, kRed},
    {Hue(0xC0), kRed, {60, 122, 0}},
    {Hue(0x40), kRed, {102, 40, 236}},
    // What a brightness set alone makes of a board whose other colours were never set by text.
    {{0, 0, 0, 50}, kRed, {0, 0, 0}},
    {{0, 0, 0, 178}, kRed, {50, 50, 50}},
};
INSTANTIATE_TEST_SUITE_P(Screen, ColorTableOf, testing::ValuesIn(kCases));

// Holds: vexo color "128 each is the picture as it comes."
TEST(ColorTable, OfTheNeutralColoursIsTheColourItself) {
  const ColorTable table(kNeutralColors);
  for (unsigned r = 0; r < 256; r += 5) {
    for (unsigned g = 0; g < 256; g += 5) {
      for (unsigned b = 0; b < 256; b += 5) {
        const Rgb color{static_cast<std::uint8_t>(r), static_cast<std::uint8_t>(g),
                        static_cast<std::uint8_t>(b)};
        ASSERT_EQ(table(color), color) << r << ' ' << g << ' ' << b;
      }
    }
  }
}

// Holds: vexo color "128 each is the picture as it comes."
TEST(NeutralColors, AreWhatInitializationWritesAndWhatThePowerBringsOn) {
  for (const InputTable& table : {kInputN, kInputP}) {
    const InputColors written = {table[kInputHue.first], table[kInputSaturation.first],
                                 table[kInputContrast.first], table[kInputBrightness.first]};
    EXPECT_EQ(written, kNeutralColors);
  }
  const ScreenOnBus bus;
  for (unsigned n = 0; n < 16; ++n) EXPECT_EQ(bus.board.Colors(n), kNeutralColors) << n;
}

// ---- On the screen ------------------------------------------------------------------------------

constexpr WindowRect kLeft{0x04, 0x5A, 0x01, 0x3C};
constexpr WindowRect kRight{0x5A, 0xB0, 0x01, 0x3C};
constexpr int kX = 200;  // of a patch without digits, lines or bar, and its place in both windows
constexpr int kY = 100;
constexpr int kInLeft = 0x04 * 4 + kX;
constexpr int kInRight = 0x5A * 4 + kX;

Rgb Patch(unsigned channel) { return TestCardPixel(channel, kX, kY, kCardHeightNtsc, 0); }

void SetColors(ScreenOnBus& bus, std::uint8_t chip, unsigned position, const InputColors& colors) {
  const auto reg = static_cast<std::uint8_t>(0x10 * position);
  bus.Write(chip, 0, reg + 0x07, colors.hue);
  bus.Write(chip, 0, reg + 0x08, colors.saturation);
  bus.Write(chip, 0, reg + 0x09, colors.contrast);
  bus.Write(chip, 0, reg + 0x0A, colors.brightness);
}

TEST(ScreenColors, AreThoseOfTheInputAlone) {
  ScreenOnBus bus(2);
  bus.Show(2, kLeft, kWhole);
  bus.Show(6, kRight, kWhole);
  const InputColors colors = {0x80, 0x00, 0x60, 0x90};
  SetColors(bus, kChipSlave1, 2, colors);
  const Image image = bus.Screen();
  EXPECT_EQ(image.At(kInLeft, 4 + kY), Patch(2));
  EXPECT_EQ(image.At(kInRight, 4 + kY), ColorTable(colors)(Patch(6)));
  EXPECT_NE(image.At(kInRight, 4 + kY), Patch(6));
}

TEST(ScreenColors, GoWithThePictureThatAScalerTakes) {
  ScreenOnBus bus(1);
  bus.Show(0, kLeft, kWhole);
  bus.Write(kChipMaster, 0, 0x80, 0x40);  // position 0 shows input 1
  const InputColors colors = {0x80, 0x80, 0x40, 0x80};
  SetColors(bus, kChipMaster, 1, colors);
  EXPECT_EQ(bus.Screen().At(kInLeft, 4 + kY), ColorTable(colors)(Patch(1)));
}

TEST(ScreenColors, OfAFrozenPictureAreThoseOfItsMoment) {
  ScreenOnBus bus(1);
  bus.Show(0, kLeft, kWhole);
  bus.Write(kChipMaster, 1, 0x11, 0x40);  // freeze
  SetColors(bus, kChipMaster, 0, {0x80, 0x80, 0x00, 0x80});
  EXPECT_EQ(bus.Screen().At(kInLeft, 4 + kY), Patch(0));
  bus.Write(kChipMaster, 1, 0x11, 0x00);
  EXPECT_NE(bus.Screen().At(kInLeft, 4 + kY), Patch(0));
}

TEST(ScreenColors, LeaveNoSignalAndDecodedPicturesAlone) {
  ScreenOnBus bus(1);
  bus.Show(0, kLeft, kWhole);
  bus.Show(1, kRight, kWhole);
  bus.board.SetCamera(1, Camera::Off);
  SetColors(bus, kChipAll, 1, {0, 0, 0, 0});
  EXPECT_EQ(bus.Screen().At(kInRight, 4 + kY), kScreenNoSignal);

  ScreenOnBus plain(1);
  for (ScreenOnBus* each : {&bus, &plain}) {
    each->Write(kChipMaster, 1, 0x10, 0x84);  // position 0 shows what is decoded
    each->Write(kChipMaster, 1, 0x16, 0x90);
    each->Write(kChipMaster, 1, 0x30, 0x04);
    each->Write(kChipMaster, 1, 0x31, 0x5A);
    each->Write(kChipMaster, 1, 0x32, 0x01);
    each->Write(kChipMaster, 1, 0x33, 0x3C);
  }
  SetColors(bus, kChipAll, 0, {0, 0, 0, 0});
  EXPECT_EQ(bus.Screen().At(kInLeft, 4 + kY), plain.Screen().At(kInLeft, 4 + kY));
  EXPECT_NE(bus.Screen().At(kInLeft, 4 + kY), kScreenNoPicture);
}

}  // namespace
}  // namespace sim
