// What a watcher is sent of a moment.
#include "desk/page/picture.h"

#include <gtest/gtest.h>

#include "tests/desk/page/picture_reader.h"
#include "tests/sim/screen/screen_bus.h"

namespace desk {
namespace {

using Json = nlohmann::json;

TEST(Picture, IsTheScreenOfItsBoard) {
  sim::ScreenOnBus bus;
  PictureMaker maker;
  for (unsigned n = 0; n < 16; ++n) {
    bus.Show(n, sim::Sixteenth(n), sim::kQuarter);
    bus.board.SetTime(40 * n);
    EXPECT_EQ(ReadMessage(maker.Make({.board = bus.board}, n)).image, bus.Screen()) << n;
  }
  bus.Write(kChipMaster, 1, 0x00, 0x80);
  const ReadPicture pal = ReadMessage(maker.Make({.board = bus.board}, 16));
  EXPECT_EQ(pal.image, bus.Screen());
  EXPECT_EQ(pal.header["height"], 576);
  EXPECT_EQ(pal.header["pal"], true);
}

// The hardest picture for the compressor has to fit too.
TEST(Picture, HoldsWhateverIsOnTheScreen) {
  sim::ScreenOnBus bus(1);
  bus.Show(0, {0, 0xB4, 0, 0x78}, sim::kWhole);
  for (unsigned i = 0; i < 400; ++i) {
    const unsigned noise = i * 2654435761U;
    bus.Write(kChipMaster, 2, 0x10 + i % 0x40, noise >> 24);
    EXPECT_NO_THROW(PictureMaker().Make({.board = bus.board}, i));
    i += 39;
  }
  EXPECT_EQ(ReadMessage(PictureMaker().Make({.board = bus.board}, 0)).image, bus.Screen());
}

TEST(Picture, HasTheRegistersThatAPeekGives) {
  sim::ScreenOnBus bus(2);
  bus.board.Poke(1, 2, 0x34, 0x5A);
  bus.board.SetCamera(3, sim::Camera::Off);
  const ReadPicture picture = ReadMessage(PictureMaker().Make({.board = bus.board}, 0));
  std::string expected;
  for (unsigned chip = 0; chip < 4; ++chip) {
    for (unsigned page = 0; page < 3; ++page) {
      for (unsigned number = 0; number < 256; ++number) {
        expected += static_cast<char>(bus.board.Peek(chip, static_cast<std::uint8_t>(page),
                                                     static_cast<std::uint8_t>(number)));
      }
    }
  }
  EXPECT_EQ(picture.registers, expected);
  EXPECT_EQ(picture.registers[(1 * 3 + 2) * 256 + 0x34], 0x5A);
}

TEST(Picture, SaysWhenItWasAndWhatIsOnIt) {
  sim::ScreenOnBus bus(2);
  bus.Show(5, sim::Sixteenth(3), sim::kQuarter, 0, 0xC0);
  bus.Attribute(5, 0x40);
  bus.board.SetCamera(5, sim::Camera::Off);
  const Moment moment{.board = bus.board,
                      .time_ms = 5'000'000'000,
                      .cycles = 6'000'000'000,
                      .lag_ms = -3,
                      .stopped = "a \"break\""};
  const ReadPicture picture = ReadMessage(PictureMaker().Make(moment, 7));
  EXPECT_EQ(picture.header, Json::parse(R"({
    "moment": 7, "t": 5000000000, "cycles": 6000000000, "lag": -3, "stopped": "a \"break\"",
    "fitted": [true, true, false, false], "width": 720, "height": 480, "pal": false,
    "windows": [{"channel": 5, "chip": 1, "position": 1, "left": 532, "right": 704, "top": 8,
                 "bottom": 124, "front": true, "frozen": true, "shows": "camera", "picture": 5,
                 "signal": true}]})"));
  EXPECT_EQ(ReadMessage(PictureMaker().Make({.board = bus.board}, 0)).header["stopped"], nullptr);
}

}  // namespace
}  // namespace desk
