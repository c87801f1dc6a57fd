// Every fault has its word in scripts, fires where the library meets it, and stands in the manual.
#include "sim/faults.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

#include "harness/host.h"
#include "script/run.h"
#include "sim/world.h"
#include "tools/vexosim/listing/terminal_surroundings.h"

namespace sim {
namespace {

struct FaultCase {
  Fault fault;
  const char* word;
  const char* lines;  // that come upon it
};

constexpr FaultCase kCases[] = {
    {Fault::Mutex, "mutex", "attach"},
    {Fault::EventExists, "event-exists", "attach"},
    {Fault::MapSelect, "map-select", "attach"},
    {Fault::MapAddress, "map-address", "attach"},
    {Fault::MapData, "map-data", "attach"},
    {Fault::Thread, "thread", "attach\nwindow\ncommand 0xF001"},
    {Fault::Send, "send", "attach\nwindow\ncommand 0xF001\ncommand 0xF003 03 00 FE"},
    {Fault::Post, "post", "attach\nwindow\ntext \"vexo init \""},
    {Fault::Allocate, "allocate", "attach"},
    {Fault::Terminate, "terminate",
     "sync period 600\nattach\nwindow\ncommand 0xF001\ncommand 0xF002"},
    {Fault::Event, "event", "attach"},
    {Fault::Wait, "wait", "attach\nwindow\ncommand 0xF002"},
    {Fault::Release, "release", "attach\nwindow\ncommand 0xF002"},
    {Fault::Close, "close", "attach\ndetach"},
    {Fault::ExitCode, "exit-code", "attach\nwindow\ncommand 0xF001\ncommand 0xF002"},
    {Fault::Quantum, "quantum", "attach\nwindow\ncommand 0xF001"},
    {Fault::NvramInit, "nvram-init", "attach"},
    {Fault::NvramRead, "nvram-read", "attach\nwindow\ncommand 0xF001"},
    {Fault::NvramWrite, "nvram-write", "attach\nwindow\ncommand 0xF001\nvexo change_vdo pal"},
    {Fault::NvramDeinit, "nvram-deinit", "attach\ndetach"},
    {Fault::DriverOpen, "driver-open", "attach\nvpb init"},
    {Fault::DriverControl, "driver-control", "attach\nvpb init\nvpb setp_base 1 2"},
    {Fault::DriverClose, "driver-close", "attach\nvpb init\nvpb uninit"},
    {Fault::VersionSize, "version-size", "attach"},
    {Fault::VersionRead, "version-read", "attach"},
    {Fault::VersionQuery, "version-query", "attach"},
    {Fault::Module, "module", "fault thread on\nfault text on\nattach\nwindow\ncommand 0xF001"},
    {Fault::Text, "text", "fault thread on\nattach\nwindow\ncommand 0xF001"},
    {Fault::Store, "store", "attach\nwindow\ncommand 0xF001"},
    {Fault::Load, "load", "attach\nwindow\ncommand 0xF001"},
};
static_assert(std::size(kCases) == kFaults.size(), "a case for each fault");

class FaultInScripts : public testing::TestWithParam<FaultCase> {
 protected:
  void SetUp() override { harness::Restart(); }
  void TearDown() override { harness::Restart(); }

  static unsigned HitsAfter(const std::string& lines) {
    std::istringstream in(lines);
    std::ostringstream out;
    std::ostringstream err;
    vexosim::TerminalSurroundings around;
    EXPECT_EQ(script::RunScript(in, "s.vexo", {}, around, out, err), script::kExitDone)
        << err.str();
    return TheWorld().faults.Hits(GetParam().fault);
  }
};

TEST_P(FaultInScripts, FiresWhenItIsOn) {
  const std::string fault = std::string("fault ") + GetParam().word;
  EXPECT_EQ(HitsAfter(GetParam().lines), 0u);
  EXPECT_GE(HitsAfter(fault + " on\n" + GetParam().lines), 1u);
  EXPECT_EQ(HitsAfter(fault + " on\n" + fault + " off\n" + GetParam().lines), 0u);
  EXPECT_EQ(
      HitsAfter(fault + " nth 1\n" + GetParam().lines + "\nexpect fault " + GetParam().word + " 1"),
      1u);
  EXPECT_EQ(HitsAfter(fault + " from 1000000\n" + GetParam().lines), 0u);
}

INSTANTIATE_TEST_SUITE_P(Words, FaultInScripts, testing::ValuesIn(kCases), [](const auto& row) {
  std::string name(row.param.word);
  std::erase(name, '-');
  return name;
});

// ---- By number ----------------------------------------------------------------------------------

// Which of the next calls fail.
std::string Fired(Faults& faults, Fault fault, unsigned calls) {
  std::string fired;
  for (unsigned i = 0; i < calls; ++i) fired += faults.Fires(fault) ? 'x' : '.';
  return fired;
}

TEST(FaultByNumber, FailsTheNthCallFromNowAlone) {
  Faults faults;
  EXPECT_EQ(Fired(faults, Fault::Wait, 2), "..");
  faults.Set(Fault::Wait, Faults::Nth(3));
  EXPECT_EQ(Fired(faults, Fault::Wait, 6), "..x...");
  EXPECT_EQ(faults.Hits(Fault::Wait), 1u);
  EXPECT_EQ(faults.Calls(Fault::Wait), 8u);
  EXPECT_EQ(Fired(faults, Fault::Release, 6), "......");
}

TEST(FaultByNumber, FailsThatCallAndAllLaterOnes) {
  Faults faults;
  faults.Set(Fault::Load, Faults::From(2));
  EXPECT_EQ(Fired(faults, Fault::Load, 5), ".xxxx");
  EXPECT_EQ(faults.Hits(Fault::Load), 4u);
  faults.Set(Fault::Load, false);
  EXPECT_EQ(Fired(faults, Fault::Load, 2), "..");
}

TEST(FaultByNumber, TakesTheLastPlanAndNoOther) {
  Faults faults;
  faults.Set(Fault::Send, Faults::Nth(1));
  faults.Set(Fault::Send, Faults::Nth(2));
  EXPECT_EQ(Fired(faults, Fault::Send, 3), ".x.");
  faults.Set(Fault::Send, true);
  EXPECT_EQ(Fired(faults, Fault::Send, 2), "xx");
}

TEST(FaultByNumber, TellsWhatIsStillToCome) {
  Faults faults;
  EXPECT_EQ(faults.ToCome(Fault::Close), std::nullopt);
  faults.Set(Fault::Close, Faults::Nth(2));
  EXPECT_EQ(faults.ToCome(Fault::Close), Faults::Nth(2));
  faults.Fires(Fault::Close);
  EXPECT_EQ(faults.ToCome(Fault::Close), Faults::Nth(1));
  faults.Fires(Fault::Close);
  EXPECT_EQ(faults.ToCome(Fault::Close), std::nullopt);
  faults.Set(Fault::Close, Faults::From(2));
  EXPECT_EQ(faults.ToCome(Fault::Close), Faults::From(2));
  faults.Fires(Fault::Close);
  EXPECT_EQ(faults.ToCome(Fault::Close), Faults::Always());
  faults.Fires(Fault::Close);
  EXPECT_EQ(faults.ToCome(Fault::Close), Faults::Always());
  faults.Set(Fault::Close, false);
  EXPECT_EQ(faults.ToCome(Fault::Close), std::nullopt);
}

TEST(FaultTable, IsWhatTheManualSays) {
  std::ifstream file(VEXO_SOURCE_DIR "/docs/script-language.md");
  ASSERT_TRUE(file.is_open());
  const std::string manual{std::istreambuf_iterator<char>(file), {}};
  std::string table = "| Fault | While it is on |\n|---|---|\n";
  for (const FaultWords& fault : kFaults) {
    table += "| `" + std::string(fault.word) + "` | " + std::string(fault.help) + " |\n";
  }
  EXPECT_NE(manual.find(table + '\n'), std::string::npos)
      << "docs/script-language.md lacks this table:\n"
      << table;
}

}  // namespace
}  // namespace sim
