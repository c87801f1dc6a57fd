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
}

INSTANTIATE_TEST_SUITE_P(Words, FaultInScripts, testing::ValuesIn(kCases), [](const auto& row) {
  std::string name(row.param.word);
  std::erase(name, '-');
  return name;
});

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
