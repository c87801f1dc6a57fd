#include "display/live_scale.h"

#include <array>
#include <string>

#include "VexoCtrlSDK.h"
#include "tests/display/display_test.h"

namespace test {
namespace {

class LiveScale : public DisplayTest {};

// Holds: vexo xscale "Sets the scaler ratios of a channel."
// Holds: Chips: vexo "`HORIZONTAL`: scale: 0 whole"
// Holds: Chips: vexo "`VERTICAL`: as HORIZONTAL"
TEST_F(LiveScale, WritesVerticalThenHorizontalRatioOfEveryPairOfCodes) {
  UseBoard(4);
  for (const int vertical : {0, 1, 2, 3, 4, 6}) {
    for (const int horizontal : {0, 1, 2, 3, 4, 6}) {
      SCOPED_TRACE(std::to_string(vertical) + " by " + std::to_string(horizontal));
      Mark();
      TW_SetLiveScaleX(1, static_cast<std::uint8_t>(vertical),
                       static_cast<std::uint8_t>(horizontal));
      const Ratio v = RatioOf(vertical).value();
      const Ratio h = RatioOf(horizontal).value();
      EXPECT_EQ(Accesses(),
                (std::vector<Access>{W(kMaster, 0, 0x91, v.high), W(kMaster, 0, 0x92, v.low),
                                     W(kMaster, 0, 0x93, h.high), W(kMaster, 0, 0x94, h.low)}));
      EXPECT_EQ(DebugText(), "");
    }
  }
}

// Holds: vexo xscale "A refused code is printed"
TEST_F(LiveScale, RefusesVerticalCode5AndWritesNothing) {
  UseBoard(4);
  TW_SetLiveScaleX(0, 5, 1);
  EXPECT_EQ(Cycles(), 0u);
  ExpectPrinted(">> TW_SetLiveScaleX INVALID V SCALE (5)!!\r\n");
}

// Holds: vexo xscale "A refused code is printed"
TEST_F(LiveScale, KeepsTheVerticalRatioWhenHorizontalCode5IsRefused) {
  UseBoard(4);
  const std::uint8_t old_high = Register(0, 0, 0x83);
  const std::uint8_t old_low = Register(0, 0, 0x84);
  TW_SetLiveScaleX(0, 1, 5);
  EXPECT_EQ(Accesses(),
            (std::vector<Access>{W(kMaster, 0, 0x81, 0x7F), W(kMaster, 0, 0x82, 0xFF)}));
  EXPECT_EQ(Register(0, 0, 0x83), old_high);
  EXPECT_EQ(Register(0, 0, 0x84), old_low);
  ExpectPrinted(">> TW_SetLiveScaleX INVALID H SCALE (5)!!\r\n");
}

TEST_F(LiveScale, ReportsOnlyTheVerticalCodeWhenBothAreRefused) {
  UseBoard(4);
  TW_SetLiveScaleX(0, 9, 5);
  EXPECT_EQ(Cycles(), 0u);
  ExpectPrinted(">> TW_SetLiveScaleX INVALID V SCALE (9)!!\r\n");
}

TEST_F(LiveScale, RefusesEveryCodeAbove6) {
  UseBoard(4);
  for (int code = 7; code < 256; ++code) {
    SCOPED_TRACE(code);
    Mark();
    TW_SetLiveScaleX(0, static_cast<std::uint8_t>(code), 0);
    EXPECT_EQ(Cycles(), 0u);
    ExpectPrinted(">> TW_SetLiveScaleX INVALID V SCALE (" + std::to_string(code) + ")!!\r\n");
    Mark();
    TW_SetLiveScaleX(0, 0, static_cast<std::uint8_t>(code));
    EXPECT_EQ(Cycles(), 8u);
    ExpectPrinted(">> TW_SetLiveScaleX INVALID H SCALE (" + std::to_string(code) + ")!!\r\n");
  }
}

// Holds: Chips: vexo "`CHANNEL`: 0 to 15"
TEST_F(LiveScale, ProgramsChannel6OnTheSecondChipInRegistersA1ToA4) {
  UseBoard(8);
  TW_SetLiveScaleX(6, 2, 4);
  EXPECT_EQ(Accesses(),
            (std::vector<Access>{W(kSlave1, 0, 0xA1, 0xAA), W(kSlave1, 0, 0xA2, 0xAA),
                                 W(kSlave1, 0, 0xA3, 0x55), W(kSlave1, 0, 0xA4, 0x55)}));
}

// Holds: Chips: vexo "Most commands do not check a channel"
TEST_F(LiveScale, DoesNotCheckTheChannelNumber) {
  UseBoard(4);
  for (const int channel : {7, 11, 15, 16, 200, 255}) {
    SCOPED_TRACE(channel);
    Mark();
    const int chip = ChipOf(channel);
    const int at = 0x10 * (channel % 4);
    TW_SetLiveScaleX(static_cast<std::uint8_t>(channel), 6, 6);
    TW_SetLiveScaleY(static_cast<std::uint8_t>(channel), 1);
    EXPECT_EQ(Accesses(),
              (std::vector<Access>{W(chip, 0, 0x81 + at, 0x3F), W(chip, 0, 0x82 + at, 0xFF),
                                   W(chip, 0, 0x83 + at, 0x3F), W(chip, 0, 0x84 + at, 0xFF),
                                   W(chip, 0, 0x8A + at, 0x40 * (channel % 4) + 0x10)}));
  }
}

// Holds: vexo yscale "Sets the layout of a channel on the record path."
TEST_F(LiveScale, WritesTheRecordLayoutOfEveryChannelAndRecordMode) {
  UseBoard(16);
  constexpr std::array<int, 3> kBits = {0x00, 0x10, 0x30};
  for (int channel = 0; channel < 16; ++channel) {
    for (std::size_t mode = 0; mode < kBits.size(); ++mode) {
      SCOPED_TRACE(std::to_string(channel) + " in mode " + std::to_string(mode));
      Mark();
      TW_SetLiveScaleY(static_cast<std::uint8_t>(channel), static_cast<std::uint8_t>(mode));
      const int n = channel % 4;
      EXPECT_EQ(Accesses(), std::vector<Access>{
                                W(ChipOf(channel), 0, 0x8A + 0x10 * n, 0x40 * n + kBits.at(mode))});
    }
  }
}

TEST_F(LiveScale, WritesF0ToRegisterBAForChannel3InRecordMode2) {
  UseBoard(4);
  TW_SetLiveScaleY(3, 2);
  EXPECT_EQ(Accesses(), std::vector<Access>{W(kMaster, 0, 0xBA, 0xF0)});
}

// Holds: vexo yscale "A refused mode is printed."
// Holds: Chips: vexo "`RECORD_MODE`: 0 to 2"
TEST_F(LiveScale, RefusesRecordModesAbove2) {
  UseBoard(4);
  for (const int mode : {3, 4, 255}) {
    SCOPED_TRACE(mode);
    Mark();
    TW_SetLiveScaleY(0, static_cast<std::uint8_t>(mode));
    EXPECT_EQ(Cycles(), 0u);
    ExpectPrinted(">> TW_SetLiveScaleY INVALID RECORD MODE (" + std::to_string(mode) + ")!!\r\n");
  }
}

TEST_F(LiveScale, SaysNothingOfARefusalWhileOutputMessagesAreOff) {
  UseBoard(4);
  VEXOAPI_SetEnableOutputMsg(0);
  TW_SetLiveScaleX(0, 5, 0);
  TW_SetLiveScaleX(0, 0, 5);
  TW_SetLiveScaleY(0, 3);
  EXPECT_EQ(DebugText(), "");
}

// ---- Input registers -------------------------------------------------------------------------

class InputRegs : public DisplayTest {
 protected:
  static void Append(std::vector<Access>& list, int channel) {
    const int at = 0x10 * (channel % 4);
    for (int i = 0; i < 4; ++i)
      list.push_back(W(ChipOf(channel), 0, 0x07 + at + i, 0x11 * (i + 1)));
  }
};

TEST_F(InputRegs, AreWrittenForOneChannelInArgumentOrder) {
  UseBoard(16);
  for (int channel = 0; channel < 16; ++channel) {
    SCOPED_TRACE(channel);
    Mark();
    TW_SetInputRegs(static_cast<std::uint8_t>(channel), 0x11, 0x22, 0x33, 0x44);
    std::vector<Access> expected;
    Append(expected, channel);
    EXPECT_EQ(Accesses(), expected);
    EXPECT_EQ(Cycles(), 16u);
  }
}

TEST_F(InputRegs, AreWrittenForEveryChannelWhenTheChannelIsTheChannelCount) {
  for (const int channels : {4, 8, 12, 16}) {
    SCOPED_TRACE(channels);
    UseBoard(channels);
    TW_SetInputRegs(static_cast<std::uint8_t>(channels), 0x11, 0x22, 0x33, 0x44);
    std::vector<Access> expected;
    for (int n = 0; n < channels; ++n) Append(expected, n);
    EXPECT_EQ(Accesses(), expected);
  }
}

TEST_F(InputRegs, OfAChannelAboveTheCountGoToTheChipOfThatNumber) {
  UseBoard(4);
  for (const int channel : {5, 10, 15, 16, 17, 255}) {
    SCOPED_TRACE(channel);
    Mark();
    TW_SetInputRegs(static_cast<std::uint8_t>(channel), 0x11, 0x22, 0x33, 0x44);
    std::vector<Access> expected;
    Append(expected, channel);
    EXPECT_EQ(Accesses(), expected);
  }
}

TEST_F(InputRegs, OfABoardWithoutChannelsAreNotWrittenForEveryChannel) {
  UseBoard(0);
  TW_SetInputRegs(0, 1, 2, 3, 4);
  ExpectUntouched();
}

}  // namespace
}  // namespace test
