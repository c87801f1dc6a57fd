#include "display/record_path.h"

#include <string>

#include "tests/display/display_test.h"

namespace test {
namespace {

class RecordPath : public DisplayTest, public ::testing::WithParamInterface<int> {};

// Holds: vexo rec "Programs the record path of all chips."
// Holds: vexo rec "On 12 channels mode 0 leaves the queues as they are."
TEST_P(RecordPath, IsProgrammedWriteByWriteInEveryRecordAndSwitchingMode) {
  UseBoard(GetParam());
  unsigned seed = 2;
  for (const int record_mode : {0, 1, 2}) {
    for (const int switching : {0, 4}) {
      SCOPED_TRACE("record mode " + std::to_string(record_mode) + ", switching mode " +
                   std::to_string(switching));
      Scribble(seed++);
      ReferenceModel model = Model();
      model.RecordSetup(record_mode, switching);
      TW_SetRecordSetup(static_cast<std::uint8_t>(record_mode),
                        static_cast<std::uint8_t>(switching));
      ExpectLike(model);
      EXPECT_EQ(DebugText(), "");
    }
  }
}

TEST_P(RecordPath, DefaultIsRecordMode1Exactly) {
  UseBoard(GetParam());
  for (const int switching : {0, 4}) {
    SCOPED_TRACE(switching);
    Scribble(9);
    ReferenceModel model = Model();
    model.RecordSetup(1, switching);
    TW_SetRecordSetupDefault(static_cast<std::uint8_t>(switching));
    ExpectLike(model);
    EXPECT_EQ(DebugText(), "");
  }
}

// Holds: vexo rec "A refused number is printed"
// Holds: Chips: vexo "`SWITCHING`: 0 or 4"
TEST_P(RecordPath, RefusesOtherSwitchingModesAndWritesNothing) {
  UseBoard(GetParam());
  for (int switching = 1; switching < 256; ++switching) {
    if (switching == 4) continue;
    SCOPED_TRACE(switching);
    const std::string text =
        ">> ERROR TW_SetRecordSetup SWITCHING MODE(" + std::to_string(switching) + ")!!\r\n";
    for (const int record_mode : {0, 1, 2}) {
      Mark();
      TW_SetRecordSetup(static_cast<std::uint8_t>(record_mode),
                        static_cast<std::uint8_t>(switching));
      EXPECT_EQ(Cycles(), 0u);
      ExpectPrinted(text);
    }
    Mark();
    TW_SetRecordSetupDefault(static_cast<std::uint8_t>(switching));
    EXPECT_EQ(Cycles(), 0u);
    ExpectPrinted(text);
  }
}

INSTANTIATE_TEST_SUITE_P(Boards, RecordPath, ::testing::Values(0, 4, 8, 12, 16),
                         [](const auto& tested) {
                           return std::to_string(tested.param) + "Channels";
                         });

class RecordPathEdges : public DisplayTest {};

TEST_F(RecordPathEdges, Switching4InRecordMode0Writes70ToTheTwoChipsOfAnEightChannelBoardOnly) {
  UseBoard(8);
  TW_SetRecordSetup(0, 4);
  std::vector<Access> switching;
  for (const Access& write : Writes()) {
    if (write.page == 1 && write.reg == 0x56) switching.push_back(write);
  }
  EXPECT_EQ(switching, (std::vector<Access>{W(kMaster, 1, 0x56, 0x70), W(kSlave1, 1, 0x56, 0x70)}));
}

TEST_F(RecordPathEdges, RecordMode1WritesTheQueueOfAllFourChipCodesOnAFourChannelBoard) {
  UseBoard(4);
  TW_SetRecordSetup(1, 0);
  std::vector<Access> queues;
  for (const Access& write : Writes()) {
    if (write.page == 1 && write.reg == 0x57) queues.push_back(write);
  }
  EXPECT_EQ(queues, (std::vector<Access>{W(0x03, 1, 0x57, 0x80), W(0x0C, 1, 0x57, 0x80),
                                         W(0x30, 1, 0x57, 0x80), W(0xC0, 1, 0x57, 0x80)}));
}

TEST_F(RecordPathEdges, RecordMode1DoesNotUseTheSwitchingMode) {
  UseBoard(8);
  const std::uint8_t old = Register(0, 1, 0x56);
  TW_SetRecordSetup(1, 4);
  EXPECT_EQ(Register(0, 1, 0x56), old);
}

// Holds: vexo rec "A refused number is printed"
// Holds: Chips: vexo "`RECORD_MODE`: 0 to 2"
TEST_F(RecordPathEdges, RecordMode3IsRefusedAndChangesNothing) {
  UseBoard(16);
  for (const int mode : {3, 4, 255}) {
    Mark();
    TW_SetRecordSetup(static_cast<std::uint8_t>(mode), 0);
    EXPECT_EQ(Cycles(), 0u);
    ExpectPrinted(">> ERROR TW_SetRecordSetup RECORD MODE(" + std::to_string(mode) + ")!!\r\n");
  }
}

TEST_F(RecordPathEdges, ReportsTheSwitchingModeAloneWhenBothAreWrong) {
  UseBoard(16);
  TW_SetRecordSetup(3, 1);
  EXPECT_EQ(Cycles(), 0u);
  ExpectPrinted(">> ERROR TW_SetRecordSetup SWITCHING MODE(1)!!\r\n");
}

TEST_F(RecordPathEdges, RecordMode2LeavesItsControlEnableAndOrderBytes) {
  UseBoard(16);
  TW_SetRecordSetup(2, 0);
  for (int position = 0; position < 4; ++position) {
    EXPECT_EQ(Register(position, 1, 0x60), 0x80);
    EXPECT_EQ(Register(position, 1, 0x63), 0x81);
    EXPECT_EQ(Register(position, 1, 0x66), 0x82);
    EXPECT_EQ(Register(position, 1, 0x69), 0x83);
    EXPECT_EQ(Register(position, 1, 0x6C), 0x00);
    EXPECT_EQ(Register(position, 1, 0x6D), 0xE4);
  }
}

}  // namespace
}  // namespace test
