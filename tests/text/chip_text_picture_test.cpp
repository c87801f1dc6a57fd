// The chip commands that change what a picture looks like: colour bar, test screen, colours.
#include "chip/video_state.h"
#include "display/live_scale.h"
#include "setup/test_patterns.h"
#include "tests/model/board.h"
#include "tests/text/chip_text_test.h"
#include "text/color_settings.h"

namespace test {
namespace {

using Texts = std::vector<std::string>;

constexpr BoardKind kFour = {4, VEXO_VIDEO_NTSC};

constexpr std::array kPictureLines = {
    LineCase{"vexo clrbar 1 ", [] { TW_ColorBarOn(); }},
    LineCase{"vexo clrbar 255 ", [] { TW_ColorBarOn(); }},
    LineCase{"vexo clrbar -1 ", [] { TW_ColorBarOn(); }},
    LineCase{"vexo clrbar 257 ", [] { TW_ColorBarOn(); }},
    LineCase{"vexo clrbar 0 ", [] { TW_ColorBarOff(); }},
    LineCase{"vexo clrbar 256 ", [] { TW_ColorBarOff(); }},
    LineCase{"vexo clrbar 65536 ", [] { TW_ColorBarOff(); }},
    LineCase{"vexo clrbar on ", [] { TW_ColorBarOff(); }},
    LineCase{"vexo bluescr init ", [] { TW_BlueScreenInit(); }},
    LineCase{"vexo bluescr clear ", [] { TW_BlueScreenClear(); }},
    LineCase{"vexo color 2 all 11 22 33 44 ",
             [] {
               SetColors(2, {44, 33, 11, 22});
             }},
    LineCase{"vexo color 258 all 267 278 289 -212 ",
             [] {
               SetColors(2, {44, 33, 11, 22});
             }},
    LineCase{"vexo color 1 hue 9 ", [] { SetColorHue(1, 9); }},
    LineCase{"vexo color 257 hue 265 ", [] { SetColorHue(1, 9); }},
    LineCase{"vexo color 1 sat 9 ", [] { SetColorSaturation(1, 9); }},
    LineCase{"vexo color 257 sat 265 ", [] { SetColorSaturation(1, 9); }},
    LineCase{"vexo color 1 con 9 ", [] { SetColorContrast(1, 9); }},
    LineCase{"vexo color -255 con 265 ", [] { SetColorContrast(1, 9); }},
    LineCase{"vexo color 1 bri 9 ", [] { SetColorBrightness(1, 9); }},
    LineCase{"vexo color 257 bri -247 ", [] { SetColorBrightness(1, 9); }},
};

class ChipTextPicture : public ChipTextTest {};

TEST_F(ChipTextPicture, EachLineDoesWhatItsOperationsDoWithTheCutNumbersOnEveryBoard) {
  for (const LineCase& line : kPictureLines) ExpectDoesOnEveryBoard(line);
}

// Holds: vexo clrbar "Shows the chips' colour bar"
TEST_F(ChipTextPicture, ClrbarWritesTheWholeStatusRegisterOfAllChips) {
  for (const auto& [line, value, state] : {std::tuple{"vexo clrbar 1 ", 0x08, "ON"},
                                           {"vexo clrbar 0 ", 0x00, "OFF"},
                                           {"vexo clrbar 256 ", 0x00, "OFF"},
                                           {"vexo clrbar 300 ", 0x08, "ON"}}) {
    Fresh(kFour);
    EXPECT_EQ(Text(line), 0);
    EXPECT_EQ(Accesses(), (std::vector<Access>{W(0xFF, 1, 0xAB, value)})) << line;
    EXPECT_EQ(KernelDebug(), (Texts{std::string("==>> TW2835 COLOR BAR ") + state + "\r\n"}));
    EXPECT_EQ(Debug(), Texts{});
  }
}

// ---- Colours: which word writes which register --------------------------------------------------

// Registers of a channel: hue, saturation, contrast, brightness.
std::vector<Access> ColorWrites(int channel, const std::array<int, 4>& values) {
  std::vector<Access> writes;
  writes.reserve(4);
  for (int i = 0; i < 4; ++i) {
    writes.push_back(W(ChipOf(channel), 0, 0x07 + i + 0x10 * (channel % 4),
                       values.at(static_cast<std::size_t>(i))));
  }
  return writes;
}

struct WordCase {
  const char* word;
  std::size_t place;  // among hue, saturation, contrast, brightness
  bool has_all;
};
constexpr std::array kWords = {WordCase{"hue", 0, false}, WordCase{"sat", 1, true},
                               WordCase{"con", 2, true}, WordCase{"bri", 3, true}};

class ChipTextColor : public ChipTextTest, public ::testing::WithParamInterface<int> {
 protected:
  int Color(int channel, const std::string& rest) {
    return Text("vexo color " + std::to_string(channel) + " " + rest + " ");
  }
};

INSTANTIATE_TEST_SUITE_P(Boards, ChipTextColor, ::testing::Values(4, 8, 12, 16));

// Holds: vexo color "Sets the colours of a channel"
// Holds: vexo color "Sets the hue of one channel"
// Holds: vexo color CHANNEL hue "Set all four first."
// Holds: vexo color "Sets the saturation of a channel"
// Holds: vexo color CHANNEL sat "Set all four first."
// Holds: vexo color "Sets the contrast of a channel"
// Holds: vexo color CHANNEL con "Set all four first."
// Holds: vexo color "Sets the brightness of a channel"
// Holds: vexo color CHANNEL bri "Set all four first."
// Holds: Chips: vexo "`VALUE`: 0 to 255"
TEST_P(ChipTextColor, AWordSetsItsFieldOfOneChannelAndWritesTheWholeEntry) {
  for (const WordCase& word : kWords) {
    for (int channel = 0; channel < GetParam(); ++channel) {
      Fresh({GetParam(), VEXO_VIDEO_NTSC});
      EXPECT_EQ(Color(channel, "all 1 2 3 4"), 0);
      EXPECT_EQ(Accesses(), ColorWrites(channel, {1, 2, 3, 4}));
      EXPECT_EQ(Color(channel, std::string(word.word) + " 99"), 0);
      std::array<int, 4> values = {1, 2, 3, 4};
      values.at(word.place) = 99;
      EXPECT_EQ(Accesses(), ColorWrites(channel, values)) << word.word << channel;
      EXPECT_EQ(Events().size(), 16u);  // nothing but the writes' four cycles each
    }
  }
}

// Holds: vexo color "Sets the saturation of a channel"
// Holds: vexo color "Sets the contrast of a channel"
// Holds: vexo color "Sets the brightness of a channel"
// Holds: Chips: vexo "`CHANNEL`: 0 to 15"
TEST_P(ChipTextColor, TheChannelCountSetsTheFieldOfEveryChannelButForTheHue) {
  const int count = GetParam();
  for (const WordCase& word : kWords) {
    Fresh({count, VEXO_VIDEO_NTSC});
    for (int n = 0; n < count; ++n) {
      Color(n, "all " + std::to_string(n) + " 20 " + std::to_string(30 + n) + " 40");
    }
    const std::vector<std::uint8_t> before = State();
    EXPECT_EQ(Color(count, std::string(word.word) + " 50"), 0);
    std::vector<Access> wanted;
    for (int n = 0; n < count && word.has_all; ++n) {
      std::array<int, 4> values = {n, 20, 30 + n, 40};
      values.at(word.place) = 50;
      const std::vector<Access> writes = ColorWrites(n, values);
      wanted.insert(wanted.end(), writes.begin(), writes.end());
    }
    EXPECT_EQ(Accesses(), wanted) << word.word;
    EXPECT_EQ(State() == before, !word.has_all) << word.word;
  }
}

// Holds: vexo color "Channels above the channel count do nothing."
TEST_P(ChipTextColor, ChannelsAboveTheCountDoNothing) {
  for (const int channel : {GetParam() + 1, 17, 100, 255}) {
    for (const WordCase& word : kWords) {
      ExpectDoesNothing({GetParam(), VEXO_VIDEO_NTSC},
                        "vexo color " + std::to_string(channel) + " " + word.word + " 50 ");
    }
    ExpectDoesNothing({GetParam(), VEXO_VIDEO_NTSC},
                      "vexo color " + std::to_string(channel) + " all 1 2 3 4 ");
  }
}

// Holds: vexo color "Sets the colours of a channel"
TEST_P(ChipTextColor, AllOfTheChannelCountSetsEveryEntryAndWritesEveryChannel) {
  const int count = GetParam();
  Fresh({count, VEXO_VIDEO_NTSC});
  EXPECT_EQ(Color(count, "all 1 2 3 4"), 0);
  std::vector<Access> wanted;
  for (int n = 0; n < count; ++n) {
    const std::vector<Access> writes = ColorWrites(n, {1, 2, 3, 4});
    wanted.insert(wanted.end(), writes.begin(), writes.end());
  }
  EXPECT_EQ(Accesses(), wanted);
  // The entries are kept: one more field goes with them.
  EXPECT_EQ(Color(count - 1, "hue 9"), 0);
  EXPECT_EQ(Accesses(), ColorWrites(count - 1, {9, 2, 3, 4}));
}

TEST_F(ChipTextPicture, TheChannelIsCutBeforeItIsComparedWithTheChannelCount) {
  // 260 is 4: every channel of a board of four.
  Fresh(kFour);
  EXPECT_EQ(Text("vexo color 260 bri 306 "), 0);
  EXPECT_EQ(Accesses().size(), 16u);
  for (int n = 0; n < 4; ++n) EXPECT_EQ(Register(0, 0, 0x0A + 0x10 * n), 50);
  ExpectDoesNothing(kFour, "vexo color 260 hue 50 ");
}

TEST_F(ChipTextPicture, Color4Bri50OnFourChannelsIsEveryBrightnessAndColor4Hue50IsNothing) {
  Fresh(kFour);
  EXPECT_EQ(Text("vexo color 4 bri 50 "), 0);
  for (int n = 0; n < 4; ++n) {
    EXPECT_EQ(g_color.channel[n].brightness, 50);
    EXPECT_EQ(Register(0, 0, 0x0A + 0x10 * n), 50);
  }
  ExpectDoesNothing(kFour, "vexo color 4 hue 50 ");
}

}  // namespace
}  // namespace test
