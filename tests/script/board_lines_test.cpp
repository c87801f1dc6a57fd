// Each board line has its effect on the simulated PC.
#include <gtest/gtest.h>

#include "tests/script/board_script.h"

namespace script {
namespace {

constexpr unsigned kMaster = 0;
constexpr unsigned kSlave1 = 1;
constexpr unsigned kSlave3 = 3;

class BoardLine : public BoardScriptTest {};

TEST_F(BoardLine, DefaultsAreFourChipsWithNtscCamerasAndNoFault) {
  sim::World& world = After("");
  EXPECT_EQ(world.board.FittedCount(), 4U);
  for (unsigned position = 0; position < 4; ++position) {
    EXPECT_EQ(world.board.Peek(position, kChipId), 0x28);
    EXPECT_EQ(world.board.Peek(position, kLossStatus), 0x00);
    EXPECT_EQ(world.board.Peek(position, kInputStatus.At(0)) & kInputIsNtsc, 1);
  }
  EXPECT_FALSE(world.windows.deaf);
  EXPECT_EQ(world.drivers.Get("CAM1:"), sim::Drivers::State::Present);
  EXPECT_NE(world.files.Find("\\nand flash\\mdvr\\vexoctrlsdk.dll"), nullptr);
}

TEST_F(BoardLine, ChipsFitsTheFirstPositions) {
  sim::World& world = After("board chips 2");
  EXPECT_TRUE(world.board.Fitted(1));
  EXPECT_FALSE(world.board.Fitted(2));
}

TEST_F(BoardLine, IdSetsTheIdentificationOfOnePositionOrAll) {
  EXPECT_EQ(After("board id slave1 0x2B").board.Peek(kSlave1, kChipId), 0x2B);
  EXPECT_FALSE(After("board id slave1 0x30").board.Fitted(kSlave1));
  EXPECT_EQ(After("board id all 0x00").board.FittedCount(), 0U);
}

TEST_F(BoardLine, CameraSetsLossAndStandard) {
  sim::World& world = After("camera 5 off\ncamera 6 pal");
  EXPECT_EQ(world.board.Peek(kSlave1, kLossStatus), 0x02);
  EXPECT_EQ(world.board.Peek(kSlave1, kPage0, 0x21) & kInputIsNtsc, 0);
  EXPECT_EQ(After("camera all off").board.Peek(kSlave3, kLossStatus), 0x0F);
  EXPECT_EQ(After("camera all off\ncamera all ntsc").board.Peek(kMaster, kLossStatus), 0);
}

TEST_F(BoardLine, WeakSetsTheSecondLossBit) {
  EXPECT_EQ(After("weak 0 on").board.Peek(kMaster, kLossStatus), 0x10);
  EXPECT_EQ(After("weak all on\nweak 0 off").board.Peek(kMaster, kLossStatus), 0xE0);
}

TEST_F(BoardLine, MotionSetsTheMotionBit) {
  EXPECT_EQ(After("motion 15 on").board.Peek(kSlave3, kMotionStatus), 0x08);
  EXPECT_EQ(After("motion all on\nmotion 15 off").board.Peek(kSlave3, kMotionStatus), 0x07);
}

TEST_F(BoardLine, PokeSetsAStoredByteWithoutABusCycle) {
  sim::World& world = After("poke slave3 2 0x83 0x77\npoke all 1 0x30 9");
  EXPECT_EQ(world.board.Peek(kSlave3, kPage2, 0x83), 0x77);
  EXPECT_EQ(world.board.Peek(kMaster, kPage2, 0x83), 0x00);
  EXPECT_EQ(world.board.Peek(kMaster, kPage1, 0x30), 9);
  EXPECT_EQ(world.board.Peek(kSlave3, kPage1, 0x30), 9);
  EXPECT_EQ(world.trace.Cycles(), 0U);
}

// Status reads that are busy after a hold, ten at most.
unsigned BusyReads(sim::Board& board) {
  board.Store(sim::BusWindow::Select, 0xFD);  // master, page 1
  board.Store(sim::BusWindow::Address, kChannelDisplay.first);
  board.Store(sim::BusWindow::Data, kDisplayHold);
  unsigned busy = 0;
  for (int i = 0; i < 10; ++i) {
    board.Store(sim::BusWindow::Address, kSettleStatus.first);
    busy += board.Load(sim::BusWindow::Data) & kSettleBits ? 1U : 0U;
  }
  return busy;
}

TEST_F(BoardLine, SettleKeepsTheStatusBusyAfterAHold) {
  EXPECT_EQ(BusyReads(After("settle 0").board), 0U);
  EXPECT_EQ(BusyReads(After("settle 3").board), 3U);
  EXPECT_EQ(BusyReads(After("settle never").board), 10U);
}

TEST_F(BoardLine, BusChangesTheDataLines) {
  using Lines = sim::DataLines;
  EXPECT_EQ(After("bus exchange 2 5").board.GetDataLines(), (Lines{.exchanged = {{2, 5}}}));
  EXPECT_EQ(After("bus hold 0 1\nbus hold 6 0").board.GetDataLines(),
            (Lines{.low = 0x40, .high = 0x01}));
  EXPECT_EQ(After("bus hold 0 1\nbus hold 0 0").board.GetDataLines(), (Lines{.low = 0x01}));
  EXPECT_EQ(After("bus exchange 2 5\nbus hold 0 1\nbus good").board.GetDataLines(), Lines());
}

TEST_F(BoardLine, SyncTogglesOrIsHeld) {
  EXPECT_FALSE(After("run 19").board.Sync());
  EXPECT_TRUE(After("run 20").board.Sync());
  EXPECT_TRUE(After("sync period 5\nrun 5").board.Sync());
  EXPECT_FALSE(After("sync period 5\nrun 10").board.Sync());
  EXPECT_TRUE(After("sync hold 1").board.Sync());
  EXPECT_FALSE(After("sync hold 0\nrun 20").board.Sync());
}

TEST_F(BoardLine, NvramSetsTheSettings) {
  using sim::Bytes;
  EXPECT_EQ(After("board chips 2\nattach").nvram.Content(), (Bytes{'M', 'D', 'V', 'R', 0, 8}));
  EXPECT_EQ(After("attach\nboard chips 2\ndetach\nattach").nvram.Content(),
            (Bytes{'M', 'D', 'V', 'R', 0, 16}));
  EXPECT_EQ(After("nvram record MDVR 1 4\nattach").nvram.Content(),
            (Bytes{'M', 'D', 'V', 'R', 1, 4}));
  EXPECT_EQ(After("nvram record AB 1 4").nvram.Content(), (Bytes{'A', 'B', 0, 0, 1, 4}));
  EXPECT_EQ(After("nvram blank\nattach").nvram.Content(), Bytes(6, 0xFF));
}

TEST_F(BoardLine, NvramFailMakesReadsOrWritesFail) {
  std::uint8_t byte = 0;
  sim::Nvram& reads = After("nvram blank\nnvram fail read").nvram;
  EXPECT_FALSE(reads.Read(1, 0, 1, &byte));
  EXPECT_TRUE(reads.Write(1, 0, 1, &byte));
  sim::Nvram& writes = After("nvram blank\nnvram fail write").nvram;
  EXPECT_TRUE(writes.Read(1, 0, 1, &byte));
  EXPECT_FALSE(writes.Write(1, 0, 1, &byte));
  sim::Nvram& none = After("nvram blank\nnvram fail write\nnvram fail none").nvram;
  EXPECT_TRUE(none.Write(1, 0, 1, &byte));
}

TEST_F(BoardLine, FileSetsAVersionResource) {
  const auto find = [](sim::World& world) { return world.files.Find("\\WINDOWS\\MAIN.EXE"); };
  using State = sim::VersionFile::State;
  const sim::VersionFile* file = find(After("file \\Windows\\Main.exe 5.6.7.65535"));
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(file->version, (std::array<std::uint16_t, 4>{5, 6, 7, 65535}));
  EXPECT_EQ(file->state, State::Present);
  EXPECT_EQ(find(After("file \\Windows\\Main.exe absent")), nullptr);
  EXPECT_EQ(find(After("file \\Windows\\Main.exe unreadable"))->state, State::Unreadable);
  EXPECT_EQ(find(After("file \\windows\\main.exe noroot"))->state, State::NoRoot);
}

TEST_F(BoardLine, DriverSetsWhatAnOpenGives) {
  using State = sim::Drivers::State;
  EXPECT_EQ(After("driver CAM1: absent").drivers.Get("CAM1:"), State::Absent);
  EXPECT_EQ(After("driver VBE1: null").drivers.Get("VBE1:"), State::Null);
  EXPECT_EQ(After("driver VBE1: null\ndriver VBE1: present").drivers.Get("VBE1:"), State::Present);
}

TEST_F(BoardLine, DriverKnowsEachDriver) {
  using State = sim::Drivers::State;
  for (const std::string_view name : sim::kDriverNames) {
    const std::string driver(name);
    EXPECT_EQ(After("").drivers.Get(driver), State::Present) << driver;
    EXPECT_EQ(After("driver " + driver + " absent").drivers.Get(driver), State::Absent) << driver;
  }
}

std::string FaultLine(const std::string& name, bool on) {
  return "fault " + name + (on ? " on\n" : " off\n");
}

TEST_F(BoardLine, FaultSwitchesEachFailureAndNoOther) {
  for (std::size_t i = 0; i < sim::kFaults.size(); ++i) {
    const std::string name(sim::kFaults[i].word);
    const std::string on = FaultLine(name, true);
    sim::World& world = After(on);
    for (std::size_t k = 0; k < sim::kFaults.size(); ++k) {
      EXPECT_EQ(world.faults.Fires(static_cast<sim::Fault>(k)), k == i) << name << ", " << k;
    }
    EXPECT_FALSE(After(on + FaultLine(name, false)).faults.Fires(static_cast<sim::Fault>(i)));
  }
}

TEST_F(BoardLine, WindowTurnsDeafAndHearing) {
  EXPECT_TRUE(After("window deaf").windows.deaf);
  EXPECT_FALSE(After("window deaf\nwindow hearing").windows.deaf);
}

}  // namespace
}  // namespace script
