// The tool on the real library: the same script is the same run, and the demo shows what it says.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <set>
#include <span>
#include <sstream>

#include "VexoCtrlSDK.h"
#include "harness/host.h"
#include "script/run.h"
#include "sim/text.h"
#include "sim/world.h"
#include "tests/support/temp_path.h"
#include "tools/vexosim/demo.h"
#include "tools/vexosim/listing/terminal_surroundings.h"

namespace vexosim {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::Pair;
using testing::StartsWith;

class LibraryRun : public testing::Test {
 protected:
  void SetUp() override { harness::Restart(); }
  void TearDown() override { harness::Restart(); }

  static std::string Content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
};

const char* const kScript = R"(
attach
expect return 1
expect debug ">> VEXO SDK Version : 1. 0. 1. 6\r\n"
window
command 0xF001
expect return 0
run 1000
expect message 0x2403
camera 5 off
run 100
expect message 0x2403
motion 2 on
run 100
expect message 0x2404 0x0004
command 0xF005 00 00 00 00 01 00 00 01 02 03
expect return 0
command 0xF002
detach
)";

std::string TraceOf(std::uint64_t seed) {
  std::istringstream in(kScript);
  std::ostringstream out;
  std::ostringstream err;
  TerminalSurroundings around;
  std::ostringstream trace;
  script::RunOptions options;
  options.trace = &trace;
  options.seed = seed;
  EXPECT_EQ(script::RunScript(in, "s.vexo", options, around, out, err), script::kExitDone)
      << err.str();
  return trace.str();
}

TEST_F(LibraryRun, BusCyclesTakeTimeWhenTheRunSaysHowMuch) {
  std::uint32_t without = 0;  // what the library sleeps, in ms
  for (const std::uint32_t cycle_ns : {0u, 1'000u}) {
    std::istringstream script("attach\nwindow\ncommand init\n");
    std::ostringstream out;
    std::ostringstream err;
    script::RunOptions options;
    options.cycle_ns = cycle_ns;
    TerminalSurroundings around;
    EXPECT_EQ(script::RunScript(script, "s.vexo", options, around, out, err), script::kExitDone);
    const sim::World& world = sim::TheWorld();
    if (cycle_ns == 0) without = world.kernel.Now();
    const std::uint64_t cycles_ms = world.trace.Cycles() * cycle_ns / 1'000'000;
    EXPECT_EQ(cycles_ms != 0, cycle_ns != 0);
    EXPECT_EQ(world.kernel.Now(), without + cycles_ms);
  }
}

TEST_F(LibraryRun, IsTheSameEveryTime) {
  const std::string first = TraceOf(0);
  EXPECT_THAT(first, HasSubstr(R"("by":"worker")"));
  EXPECT_EQ(first, TraceOf(0));
  EXPECT_EQ(TraceOf(42), TraceOf(42));
}

TEST_F(LibraryRun, ForgetsTheLibrarysState) {
  std::istringstream first("attach\nwindow\ncommand 0xF001");
  std::istringstream second("attach\nwindow\ncommand 0xF005\nexpect return -8");
  std::ostringstream out;
  std::ostringstream err;
  TerminalSurroundings around;
  EXPECT_EQ(script::RunScript(first, "first", {}, around, out, err), script::kExitDone);
  EXPECT_EQ(script::RunScript(second, "second", {}, around, out, err), script::kExitDone)
      << err.str();
}

TEST_F(LibraryRun, KeepsStateOverADetachInTheSameRun) {
  std::istringstream in(
      "attach\nwindow\ncommand 0xF001\ncommand 0xF002\ndetach\nattach\nwindow\n"
      "command 0xF005 00 00 00 00 00 00 05\nexpect return 0");
  std::ostringstream out;
  std::ostringstream err;
  TerminalSurroundings around;
  EXPECT_EQ(script::RunScript(in, "s.vexo", {}, around, out, err), script::kExitDone) << err.str();
}

TEST_F(LibraryRun, ShowsADumpInFullAndWarnsOfItOnce) {
  std::istringstream in(
      "attach\nwindow\ncommand 0xF001\ncommand 0xFF0B null\nexpect return 0\n"
      "expect debug \"[VexoCtrlSDK]: ==>> READ SLAVE3 PAGE2 \\r\\n==\"\n"
      "expect debug \"==>> SLAVE3 PAGE2\\r\\n==>> [00] \"\ncommand 0xF002");
  std::ostringstream out;
  std::ostringstream err;
  TerminalSurroundings around;
  EXPECT_EQ(script::RunScript(in, "s.vexo", {}, around, out, err), script::kExitDone) << err.str();
  const std::string rule = "      | " + std::string(65, '=') + '\n';
  const std::size_t begin = out.str().find(rule);
  const std::size_t end = out.str().rfind(rule);
  ASSERT_LT(begin, end);
  EXPECT_THAT(out.str().substr(end + rule.size()), StartsWith("      = 0\n"));
  std::vector<std::string> lines = sim::TextLines(out.str().substr(begin, end - begin));
  ASSERT_EQ(lines.size(), 18U);
  EXPECT_EQ(lines[1], "      |  ==>> SLAVE3 PAGE2");
  const sim::Board& board = sim::TheWorld().board;
  for (unsigned row = 0; row < 16; ++row) {
    char text[80];
    std::snprintf(text, sizeof text, "      | ==>> [%02X] ", 16 * row);
    std::string line = text;
    for (unsigned reg = 16 * row; reg < 16 * row + 16; ++reg) {
      if (reg % 4 == 0) line += "  ";
      std::snprintf(text, sizeof text, "%02X ", board.Peek(3, 2, static_cast<std::uint8_t>(reg)));
      line += text;
    }
    EXPECT_EQ(lines[2 + row], line);
  }
  EXPECT_EQ(err.str(),
            "warning: read of SLAVE3 page 2 register 0x04, which has no name\n"
            "warning: read of SLAVE3 page 2 registers 0x0B to 0x0F, which have no name\n");
}

TEST_F(LibraryRun, DemoTellsOfLossMotionAndLayouts) {
  DemoOptions options;
  options.picture = test::TempPath("vexosim_demo_test.png");
  std::ostringstream out;
  std::ostringstream err;
  EXPECT_EQ(RunDemo(options, out, err), script::kExitDone) << err.str();
  EXPECT_EQ(err.str(), "");
  for (const char* text : {">> FINISH NTSC CAMERA!!",
                           "loss mask 0x0000: no channel lost; NTSC on 0-15",
                           "loss mask 0x0020: channel 5 lost; NTSC on 0-4,6-15",
                           "mask 0x0004: motion on channel 2",
                           "4-split",
                           "8-split",
                           "full screen of channel 5",
                           "chips           4, identification 28 28 28 28",
                           "standard        NTSC",
                           "bus cycles",
                           "virtual time",
                           "real time",
                           "0xF00A from live pictures to recorded ones",
                           "0xF006 16-split",
                           "0xF006 9-split",
                           "0xF006 4-split",
                           "0xF006 full picture of channel 5",
                           "0xF006 centred picture of channel 5",
                           "0xF00A 13-split, channel 5 large",
                           "0xF00D show the channels again",
                           "0xF009 16-split",
                           "| [VexoCtrlSDK]: ==>> READ MASTER PAGE1",
                           "| ==>> [F0]   00 00 00 00   ",
                           "(read of MASTER page 1 registers 0x40 to 0x4F, "}) {
    EXPECT_THAT(out.str(), HasSubstr(text));
  }
  EXPECT_THAT(out.str(), Not(HasSubstr("\033")));
  EXPECT_THAT(Content(options.picture), StartsWith("\x89PNG"));
  EXPECT_THAT(Content(PlaybackPicture(options.picture)), StartsWith("\x89PNG"));
  EXPECT_NE(Content(options.picture), Content(PlaybackPicture(options.picture)));
  std::remove(options.picture.c_str());
  std::remove(PlaybackPicture(options.picture).c_str());
}

TEST_F(LibraryRun, DemoReturnsToTheLivePicture) {
  DemoOptions options;
  options.picture = test::TempPath("vexosim_demo_live.png");
  std::ostringstream out;
  std::ostringstream err;
  EXPECT_EQ(RunDemo(options, out, err), script::kExitDone) << err.str();
  const sim::Board& board = sim::TheWorld().board;
  for (unsigned chip = 0; chip < kChipsMax; ++chip) {
    for (unsigned p = 0; p < kChannelsPerChip; ++p) {
      const auto display = [&](const ChannelRegister<1>& of) { return board.Peek(chip, of.At(p)); };
      EXPECT_EQ(display(kChannelPath), p) << chip;
      EXPECT_EQ(display(kChannelAttribute), kAttributeLive) << chip << ' ' << p;
      EXPECT_EQ(display(kChannelDisplay), kDisplayEnable | kDisplayFront | p) << chip;
    }
  }
  std::remove(options.picture.c_str());
  std::remove(PlaybackPicture(options.picture).c_str());
}

TEST_F(LibraryRun, DemoDrawsEachLayoutInColour) {
  DemoOptions options;
  options.picture = test::TempPath("vexosim_demo_colour.png");
  options.style.colour = true;
  std::ostringstream out;
  std::ostringstream err;
  EXPECT_EQ(RunDemo(options, out, err), script::kExitDone) << err.str();
  for (const char* title :
       {"4-split", "full screen of channel 5", "playback, 16-split", "playback, 9-split",
        "playback, 4-split", "playback, full picture of channel 5",
        "playback, centred picture of channel 5", "playback, 13-split", "live, 16-split"}) {
    EXPECT_THAT(out.str(), HasSubstr("\n   " + std::string(title) + "\n\033["));
  }
  std::remove(options.picture.c_str());
  std::remove(PlaybackPicture(options.picture).c_str());
}

// The different windows that channels have after the first `count` register accesses.
using Windows = std::set<std::vector<std::uint8_t>>;
Windows WindowsAfter(const std::vector<sim::RegisterAccess>& accesses, std::size_t count) {
  std::array<std::array<std::uint8_t, kRegistersPerPage>, kChipsMax> page1{};
  for (const sim::RegisterAccess& access : std::span(accesses).first(count)) {
    if (access.read || access.Page() != kPage1) continue;
    for (unsigned chip = 0; chip < kChipsMax; ++chip) {
      if ((access.Chip() & kChipByPosition[chip]) != 0) page1[chip][access.reg] = access.value;
    }
  }
  Windows windows;
  for (const auto& registers : page1) {
    for (unsigned p = 0; p < kChannelsPerChip; ++p) {
      const auto* const window = registers.begin() + kWindow.At(p, 0).number;
      windows.emplace(window, window + kWindow.length);
    }
  }
  windows.erase({0, 0, 0, 0});
  return windows;
}

TEST_F(LibraryRun, DemoLaysOutWhatItSays) {
  DemoOptions options;
  options.picture = test::TempPath("vexosim_demo_layouts.png");
  std::ostringstream out;
  std::ostringstream err;
  EXPECT_EQ(RunDemo(options, out, err), script::kExitDone) << err.str();
  const sim::Trace& trace = sim::TheWorld().trace;
  const std::vector<sim::RegisterAccess> accesses = sim::DecodeAccesses(trace);
  // From the first playback command on: its code, and the windows when it is done.
  std::vector<std::pair<std::int64_t, std::size_t>> layouts;
  std::vector<Windows> windows;
  std::int64_t code = 0;
  for (std::size_t i = 0; i < trace.Mark(); ++i) {
    const auto* call = trace.As<sim::CallEvent>(trace.Events()[i]);
    if (call != nullptr && call->fn == "VEXOAPI_CommandProc") code = call->args.at(0);
    const auto* done = trace.As<sim::ReturnEvent>(trace.Events()[i]);
    if (done == nullptr || done->fn != "VEXOAPI_CommandProc") continue;
    if (layouts.empty() && code != VEXO_CMD_PLAY_MODE) continue;
    const std::size_t later = sim::DecodeAccesses(trace, i).size();
    windows.push_back(WindowsAfter(accesses, accesses.size() - later));
    layouts.emplace_back(code, windows.back().size());
  }
  EXPECT_THAT(layouts, ElementsAre(Pair(VEXO_CMD_PLAY_MODE, 16), Pair(VEXO_CMD_PLAY_SPLIT, 16),
                                   Pair(VEXO_CMD_PLAY_SPLIT, 9), Pair(VEXO_CMD_PLAY_SPLIT, 4),
                                   Pair(VEXO_CMD_PLAY_SPLIT, 1), Pair(VEXO_CMD_PLAY_SPLIT, 1),
                                   Pair(VEXO_CMD_PLAY_MODE, 13), Pair(VEXO_CMD_RESTORE_BLANK, 13),
                                   Pair(VEXO_CMD_LIVE_MODE, 16), Pair(VEXO_CMD_DUMP_MASTER_P1, 16),
                                   Pair(VEXO_CMD_STOP_MONITOR, 16)));
  EXPECT_THAT(windows.at(4), ElementsAre(ElementsAre(0x00, 0xB4, 0x00, 0x78)));  // full
  EXPECT_THAT(windows.at(5), ElementsAre(ElementsAre(0x2C, 0x82, 0x1E, 0x58)));  // centred
  std::remove(options.picture.c_str());
  std::remove(PlaybackPicture(options.picture).c_str());
}

TEST(DemoPicture, OfPlaybackStandsBesideTheLiveOne) {
  EXPECT_EQ(PlaybackPicture("vexosim-demo.png"), "vexosim-demo-playback.png");
  EXPECT_EQ(PlaybackPicture("/tmp/a.b/c.png"), "/tmp/a.b/c-playback.png");
  EXPECT_EQ(PlaybackPicture("a.b/c"), "a.b/c-playback");
}

TEST_F(LibraryRun, DemoFailsWhenItsPictureCannotBeWritten) {
  DemoOptions options;
  options.picture = "/no/such/folder/demo.png";
  std::ostringstream out;
  std::ostringstream err;
  EXPECT_EQ(RunDemo(options, out, err), script::kExitWrong);
  EXPECT_THAT(err.str(), HasSubstr("vexosim demo: "));
}

}  // namespace
}  // namespace vexosim
