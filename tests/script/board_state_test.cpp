// A board said in lines is the same board when the lines have run on a fresh one.
#include "script/board_state.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "script/line.h"
#include "tests/script/board_script.h"

namespace script {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class BoardState : public BoardScriptTest {
 protected:
  static std::vector<std::string> LinesAfter(const std::string& script) {
    return BoardInLines(After(script));
  }
  static std::string Joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += line + '\n';
    return text;
  }
};

// All that board lines can change, without the words that are tested.
std::string Everything(const sim::World& world) {
  std::ostringstream text;
  for (unsigned position = 0; position < kChipsMax; ++position) {
    for (unsigned page = 0; page < kPageCount; ++page) {
      for (unsigned reg = 0; reg < kRegistersPerPage; ++reg) {
        text << +world.board.Peek(position, static_cast<std::uint8_t>(page),
                                  static_cast<std::uint8_t>(reg))
             << ' ';
      }
    }
  }
  for (unsigned channel = 0; channel < kChannelsMax; ++channel) {
    const sim::ChannelInput& input = world.board.Input(channel);
    text << '\n' << input.pal << input.lost << input.weak << input.motion;
  }
  text << '\n'
       << world.board.SettleReads() << ' ' << world.board.SyncPeriod() << ' '
       << (world.board.SyncHeld() ? static_cast<int>(*world.board.SyncHeld()) : -1) << '\n'
       << sim::HexBytes(world.nvram.Content()) << static_cast<int>(world.nvram.GetFailure());
  const sim::DataLines& lines = world.board.GetDataLines();
  const auto [a, b] = lines.exchanged.value_or(std::pair(0U, 0U));
  text << '\n' << a << b << ' ' << +lines.low << ' ' << +lines.high;
  for (const auto& [path, file] : world.files.All()) {
    text << '\n' << path << ' ' << static_cast<int>(file.state);
    for (const auto number : file.version) text << ' ' << number;
  }
  for (const auto driver : sim::kDriverNames) {
    text << '\n' << static_cast<int>(world.drivers.Get(std::string(driver)));
  }
  for (std::size_t i = 0; i < sim::kFaults.size(); ++i) {
    const auto plan = world.faults.ToCome(static_cast<sim::Fault>(i));
    if (plan) text << ' ' << i << ' ' << plan->first << '-' << plan->last;
  }
  text << '\n' << world.windows.deaf << ' ' << world.kernel.Seed();
  return text.str();
}

// Lines that change a fresh board, by the words of their kind.
const std::multimap<std::string, std::string> kLines = {
    {"board chips", "board chips 0"},
    {"board chips", "board chips 3"},
    {"board id", "board id slave2 0x2B"},
    {"board id", "board id master 0x30"},
    {"board id", "board id all 0xFF"},
    {"camera", "camera 5 off"},
    {"camera", "camera 6 pal"},
    {"camera", "camera all pal"},
    {"camera", "camera 3 pal\ncamera 3 off"},
    {"weak", "weak 15 on"},
    {"motion", "motion all on"},
    {"settle", "settle 7"},
    {"settle", "settle never"},
    {"sync period", "sync period 33"},
    {"sync hold", "sync hold 0"},
    {"sync hold", "sync period 7\nsync hold 1"},
    {"bus exchange", "bus exchange 2 5"},
    {"bus hold", "bus hold 0 1"},
    {"bus hold", "bus hold 7 0"},
    {"nvram record", "nvram record MDVR 1 8"},
    {"nvram record", "nvram record \"a \\x00\\\"\" 255 0"},
    {"nvram record", "nvram record \"\" 0 0"},
    {"nvram blank", "nvram blank"},
    {"nvram fail", "nvram fail read"},
    {"nvram fail", "nvram fail write"},
    {"file", "file \\Windows\\Main.exe 1.2.3.4"},
    {"file", "file \\Windows\\Main.exe absent"},
    {"file", "file \"\\\\a # b\" unreadable"},
    {"file", "file \\other.dll noroot"},
    {"driver", "driver CAM1: absent"},
    {"driver", "driver VBE1: null"},
    {"fault", "fault wait nth 3"},
    {"fault", "fault release from 2"},
    {"window deaf", "window deaf"},
    {"seed", "seed 7"},
};

TEST_F(BoardState, OfAFreshBoardThereIsNothingToSay) { EXPECT_THAT(LinesAfter(""), IsEmpty()); }

TEST_F(BoardState, EveryBoardLineComesBack) {
  std::multimap<std::string, std::string> lines = kLines;
  for (const sim::FaultWords& fault : sim::kFaults) {
    lines.emplace("fault", "fault " + std::string(fault.word) + " on");
  }
  std::string all;
  const std::string fresh = Everything(After(""));
  for (const auto& [kind, line] : lines) {
    all += line + '\n';
    const std::string expected = Everything(After(line));
    EXPECT_NE(expected, fresh) << line;
    EXPECT_EQ(Everything(After(Joined(LinesAfter(line)))), expected) << line;
  }
  EXPECT_EQ(Everything(After(Joined(LinesAfter(all)))), Everything(After(all)));
  for (const LineKind& kind : BoardLines()) {
    if (kind.words == "window hearing" || kind.words == "bus good") continue;  // the way back
    EXPECT_TRUE(lines.contains(std::string(kind.words))) << kind.words;
  }
}

TEST_F(BoardState, WhatIsPutBackIsNotTold) {
  EXPECT_THAT(LinesAfter("board chips 1\nboard chips 4\ncamera 5 off\ncamera 5 ntsc\nweak 1 on\n"
                         "weak 1 off\nsettle 9\nsettle 0\nbus exchange 1 2\nbus hold 3 0\nbus "
                         "good\nsync hold 1\nsync period 20\n"
                         "nvram fail read\nnvram fail none\ndriver CAM1: null\n"
                         "driver CAM1: present\nfault send on\nfault send off\nwindow deaf\n"
                         "window hearing\nseed 4\nseed 0"),
              IsEmpty());
}

TEST_F(BoardState, OfAPlannedFaultTheCallsToComeAreTold) {
  sim::World& world = After("fault event nth 3\nfault close from 2\nfault load nth 1");
  EXPECT_THAT(BoardInLines(world),
              ElementsAre("fault event nth 3", "fault close from 2", "fault load nth 1"));
  for (const auto fault : {sim::Fault::Event, sim::Fault::Close, sim::Fault::Load}) {
    world.faults.Fires(fault);
  }
  EXPECT_THAT(BoardInLines(world), ElementsAre("fault event nth 2", "fault close on"));
}

TEST_F(BoardState, ChannelsHaveALineEachOrOneForAll) {
  EXPECT_THAT(
      LinesAfter("camera all off\ncamera 3 pal\nmotion 2 on"),
      ElementsAre("camera 3 pal", "camera 0 off", "camera 1 off", "camera 2 off", "camera 4 off",
                  "camera 5 off", "camera 6 off", "camera 7 off", "camera 8 off", "camera 9 off",
                  "camera 10 off", "camera 11 off", "camera 12 off", "camera 13 off",
                  "camera 14 off", "camera 15 off", "motion 2 on"));
  EXPECT_THAT(LinesAfter("weak all on"), ElementsAre("weak all on"));
}

TEST_F(BoardState, SettingsThatAnAttachMadeAreToldAndRegistersAreNot) {
  EXPECT_THAT(LinesAfter("attach\npoke master 1 0x10 0x5A"), ElementsAre("nvram record MDVR 0 16"));
}

TEST_F(BoardState, TheLinePrintsThem) {
  std::istringstream in("camera 5 off\nsync hold 1\nboard");
  std::ostringstream out;
  std::ostringstream err;
  vexosim::TerminalSurroundings around;
  RunOptions quiet;
  quiet.quiet = true;
  ASSERT_EQ(RunScript(in, "s.vexo", quiet, around, out, err), kExitDone) << err.str();
  EXPECT_EQ(out.str(), "      camera 5 off\n      sync hold 1\n");
}

}  // namespace
}  // namespace script
