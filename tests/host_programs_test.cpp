// docs/host-programs.md: how long each call takes, as its table says it, on the simulated board.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <optional>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "VexoCtrlSDK.h"
#include "harness/host.h"
#include "tests/support/library_test.h"

namespace test {
namespace {

std::string ReadText(const char* path) {
  std::ifstream file(std::string(VEXO_SOURCE_DIR) + "/" + path);
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

const std::string& Page() {
  static const std::string text = ReadText("docs/host-programs.md");
  return text;
}

const std::string& Header() {
  static const std::string text = ReadText("include/VexoCtrlSDK.h");
  return text;
}

// ---- The table --------------------------------------------------------------------------------

struct Row {
  std::string call;
  std::uint32_t pauses_ms = 0;
  std::optional<std::uint32_t> settling_ms;  // none: without a limit
  std::uint32_t answer_ms = 0;
  std::uint64_t cycles = 0;
};

void PrintTo(const Row& row, std::ostream* out) { *out << row.call; }

std::uint32_t NumberOr0(const std::string& digits) {
  return digits.empty() ? 0 : static_cast<std::uint32_t>(std::stoul(digits));
}

std::vector<Row> Rows() {
  static const std::regex line(
      R"(\| `([^`]+)` \| (\d+) ms \| (?:(\d+) ms |(without a limit ))?\| (?:(\d+) ms )?\| (\d+) \|)");
  std::vector<Row> rows;
  for (std::sregex_iterator at(Page().begin(), Page().end(), line), end; at != end; ++at) {
    const std::smatch& match = *at;
    Row row{.call = match[1], .pauses_ms = NumberOr0(match[2]), .settling_ms = 0};
    row.settling_ms = NumberOr0(match[3]);
    if (match[4].matched) row.settling_ms.reset();
    row.answer_ms = NumberOr0(match[5]);
    row.cycles = NumberOr0(match[6]);
    rows.push_back(row);
  }
  return rows;
}

std::string NameOf(const ::testing::TestParamInfo<Row>& info) {
  std::string name;
  for (const char c : info.param.call) {
    if (std::isalnum(static_cast<unsigned char>(c)) != 0) name += c;
  }
  return name;
}

// ---- The calls --------------------------------------------------------------------------------

std::vector<std::string> CommandNames() {
  static const std::regex define(R"(#define (VEXO_CMD_\w+) 0x)");
  std::vector<std::string> names;
  for (std::sregex_iterator at(Header().begin(), Header().end(), define), end; at != end; ++at) {
    names.push_back((*at)[1]);
  }
  return names;
}

// 0 for a name that the header does not have.
std::uint32_t CodeOf(const std::string& name) {
  std::smatch match;
  const std::regex define("#define " + name + " 0x([0-9A-F]+)u");
  if (!std::regex_search(Header(), match, define)) return 0;
  return static_cast<std::uint32_t>(std::stoul(match[1], nullptr, 16));
}

// Bytes at the start of a record, then the sixteen channels.
std::vector<std::uint8_t> WithAllChannels(std::vector<std::uint8_t> record) {
  for (std::uint8_t n = 0; n < 16; ++n) record.push_back(n);
  return record;
}

std::vector<std::uint8_t> RecordOf(std::uint32_t code) {
  switch (code) {
    case VEXO_CMD_READ_REG:
      return {VEXO_CHIP_MASTER, 1, 0xAB, 0};
    case VEXO_CMD_WRITE_REG:
      return {VEXO_CHIP_ALL, 2, 0x67, 1};
    case VEXO_CMD_MOTION_SETUP:
      return {0, 3, 9, 15};
    case VEXO_CMD_LIVE_SPLIT:
    case VEXO_CMD_PLAY_SPLIT:
      return WithAllChannels({0, 0, 0, 0, VEXO_SPLIT_16, 0});
    case VEXO_CMD_LIVE_MODE:
      return WithAllChannels({0, 0, 0, 0, VEXO_SPLIT_16});
    case VEXO_CMD_PLAY_MODE:
      return WithAllChannels({0, 0, 0, 0, 0, VEXO_SPLIT_16});
    default:
      return {};
  }
}

class HostProgramsPage : public LibraryTest, public ::testing::WithParamInterface<Row> {
 protected:
  HostProgramsPage() { ExpectReports(); }  // a dump reads registers that have no name

  void SetUp() override {
    StartBoard(16);
    if (GetParam().call == "VEXO_CMD_PLAY_SPLIT") {
      ASSERT_EQ(Command(VEXO_CMD_PLAY_MODE, RecordOf(VEXO_CMD_PLAY_MODE)), VEXO_OK);
    }
    Mark();
    first_event_ = world().trace.Events().size();
  }

  int Call() {
    const std::string& call = GetParam().call;
    if (call.starts_with("vexo ")) return harness::TextCommandProc(call + " ");
    if (call == VEXO_EXPORT_SET_MOTION_INFO) {
      sim::Bytes mask(VEXO_MOTION_MASK_BYTES);
      return harness::SetMotionInfo(0, 0, &mask);
    }
    const std::uint32_t code = CodeOf(call);
    return Command(code, RecordOf(code));
  }

  // Without those of the monitor.
  std::uint64_t CyclesOfTheCall() {
    const auto& events = world().trace.Events();
    return static_cast<std::uint64_t>(
        std::count_if(events.begin() + static_cast<std::ptrdiff_t>(first_event_), events.end(),
                      [](const sim::Event& event) {
                        return event.by == sim::By::Host && event.kind != sim::Event::Kind::Other;
                      }));
  }

 private:
  std::size_t first_event_ = 0;
};

// Holds: Exports "Times are those of the pauses that the library asks"
// Holds: VEXOAPI_CommandProc "Once it has the lock"
// Holds: VEXOAPI_CommandProc "VEXO_CMD_INIT: 440 ms"
// Holds: VEXOAPI_CommandProc "VEXO_CMD_PLAY_SPLIT: 50 ms"
// Holds: VEXOAPI_CommandProc "VEXO_CMD_PLAY_MODE: 100 ms"
// Holds: VEXOAPI_CommandProc "any other: nothing"
// Holds: VEXOAPI_CommandProc "VEXO_CMD_INIT makes 1776"
// Holds: VEXOAPI_TextCommandProc ""vexo init" takes 1240 ms"
TEST_P(HostProgramsPage, SaysWhatTheCallTakes) {
  EXPECT_EQ(Call(), VEXO_OK);
  EXPECT_EQ(Elapsed(), GetParam().pauses_ms);
  EXPECT_EQ(CyclesOfTheCall(), GetParam().cycles);
}

// Holds: VEXOAPI_CommandProc "VEXO_CMD_INIT, VEXO_CMD_LIVE_SPLIT, VEXO_CMD_LIVE_MODE"
// Holds: VEXOAPI_TextCommandProc ""vexo init" takes 1240 ms"
// Holds: VEXOAPI_TextCommandProc ""vexo lsplit", "mpip stop" and "bluescr" wait"
// Holds: Text commands "`lsplit`, `mpip stop` and `bluescr init` wait until the chips"
TEST_P(HostProgramsPage, SaysHowLongItWaitsForChipsThatDoNotSettle) {
  constexpr int kBusyReads = 1000;  // far beyond any limit, 5 ms each
  const Row& row = GetParam();
  world().board.SetSettle(kBusyReads);
  EXPECT_EQ(Call(), VEXO_OK);
  EXPECT_EQ(Elapsed(), row.pauses_ms + row.settling_ms.value_or(5 * kBusyReads));
}

// Holds: VEXOAPI_CommandProc "VEXO_CMD_READ_REG: up to 5000 ms"
// Holds: VEXOAPI_TextCommandProc ""vexo init" takes 1240 ms"
TEST_P(HostProgramsPage, SaysHowLongItWaitsForAWindowThatDoesNotAnswer) {
  world().windows.deaf = true;
  EXPECT_EQ(Call(), VEXO_OK);
  EXPECT_EQ(Elapsed(), GetParam().pauses_ms + GetParam().answer_ms);
}

INSTANTIATE_TEST_SUITE_P(Calls, HostProgramsPage, ::testing::ValuesIn(Rows()), NameOf);

TEST(HostProgramsTable, HasARowForEachCommandAndOneDump) {
  std::vector<std::string> called;
  for (const Row& row : Rows()) called.push_back(row.call);
  for (const std::string& name : CommandNames()) {
    if (name.find("_DUMP_") != std::string::npos && name != "VEXO_CMD_DUMP_MASTER_P0") continue;
    EXPECT_EQ(std::count(called.begin(), called.end(), name), 1) << name;
  }
}

// ---- What the table leaves to words -------------------------------------------------------------

class HostProgramsWords : public LibraryTest {
 protected:
  std::string CyclesOfInit(int channels) {
    harness::Restart();
    world().board.FitChips(static_cast<unsigned>(channels) / 4);
    world().faults.Set(sim::Fault::Thread, true);  // no monitor, whose cycles would count too
    AttachAndBind();
    Mark();
    EXPECT_EQ(Command(VEXO_CMD_INIT, {}), VEXO_OK);
    return std::to_string(Cycles());
  }
};

// Holds: VEXOAPI_CommandProc "VEXO_CMD_INIT makes 1776"
TEST_F(HostProgramsWords, TellTheBusCyclesOfInitializationOfEachBoard) {
  const std::string on_4 = CyclesOfInit(4);
  const std::string on_8 = CyclesOfInit(8);
  const std::string on_12 = CyclesOfInit(12);
  const std::string on_16 = CyclesOfInit(16);
  EXPECT_NE(Page().find(on_4 + ", " + on_8 + " and " + on_12), std::string::npos);
  EXPECT_NE(Header().find(on_4 + ", " + on_8 + ", " + on_12 + " or " + on_16), std::string::npos);
}

// Holds: VEXOAPI_CommandProc "VEXO_CMD_INIT: 440 ms"
// Holds: VEXOAPI_CommandProc "VEXO_CMD_STOP_MONITOR: up to 21 ms"
// Holds: VEXOAPI_CommandProc "That happens where the sync bit was never set"
TEST_F(HostProgramsWords, TellWhatEndingAMonitorTakesThatCannotBeAnswered) {
  AttachAndBind();
  ASSERT_EQ(Command(VEXO_CMD_INIT, {}), VEXO_OK);
  Mark();  // its first message waits for the host's thread, which is this one
  ASSERT_EQ(Command(VEXO_CMD_INIT, {}), VEXO_OK);
  EXPECT_EQ(Elapsed(), 440u + 21u);
  Mark();
  ASSERT_EQ(CommandNull(VEXO_CMD_STOP_MONITOR), VEXO_OK);
  EXPECT_EQ(Elapsed(), 21u);
}

}  // namespace
}  // namespace test
