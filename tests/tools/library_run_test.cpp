// The tool on the real library: the same script is the same run, and the demo shows what it says.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "sim/world.h"
#include "tests/support/temp_path.h"
#include "tools/vexosim/demo.h"
#include "tools/vexosim/host.h"
#include "tools/vexosim/script.h"

namespace vexosim {
namespace {

using testing::HasSubstr;
using testing::Not;

class LibraryRun : public testing::Test {
 protected:
  void SetUp() override { Restart(); }
  void TearDown() override { Restart(); }
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
  std::ostringstream trace;
  RunOptions options;
  options.trace = &trace;
  options.seed = seed;
  EXPECT_EQ(RunScript(in, "s.vexo", options, out, err), kExitDone) << err.str();
  return trace.str();
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
  EXPECT_EQ(RunScript(first, "first", {}, out, err), kExitDone);
  EXPECT_EQ(RunScript(second, "second", {}, out, err), kExitDone) << err.str();
}

TEST_F(LibraryRun, KeepsStateOverADetachInTheSameRun) {
  std::istringstream in(
      "attach\nwindow\ncommand 0xF001\ncommand 0xF002\ndetach\nattach\nwindow\n"
      "command 0xF005 00 00 00 00 00 00 05\nexpect return 0");
  std::ostringstream out;
  std::ostringstream err;
  EXPECT_EQ(RunScript(in, "s.vexo", {}, out, err), kExitDone) << err.str();
}

TEST_F(LibraryRun, DemoTellsOfLossMotionAndLayouts) {
  DemoOptions options;
  options.picture = test::TempPath("vexosim_demo_test.png");
  std::ostringstream out;
  std::ostringstream err;
  EXPECT_EQ(RunDemo(options, out, err), kExitDone) << err.str();
  EXPECT_EQ(err.str(), "");
  for (const char* text :
       {">> FINISH NTSC CAMERA!!", "loss mask 0x0000: no channel lost; NTSC on 0-15",
        "loss mask 0x0020: channel 5 lost; NTSC on 0-4,6-15", "mask 0x0004: motion on channel 2",
        "4-split", "8-split", "full screen of channel 5",
        "chips           4, identification 28 28 28 28", "standard        NTSC", "bus cycles",
        "virtual time", "real time"}) {
    EXPECT_THAT(out.str(), HasSubstr(text));
  }
  EXPECT_THAT(out.str(), Not(HasSubstr("\033")));
  std::ifstream picture(options.picture, std::ios::binary);
  EXPECT_EQ(picture.get(), 0x89);
  std::remove(options.picture.c_str());
}

TEST_F(LibraryRun, DemoFailsWhenItsPictureCannotBeWritten) {
  DemoOptions options;
  options.picture = "/no/such/folder/demo.png";
  std::ostringstream out;
  std::ostringstream err;
  EXPECT_EQ(RunDemo(options, out, err), kExitUnmet);
  EXPECT_THAT(err.str(), HasSubstr("vexosim demo: "));
}

}  // namespace
}  // namespace vexosim
