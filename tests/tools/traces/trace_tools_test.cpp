// The tools that read traces, on events whose words are known.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <sstream>

#include "VexoCtrlSDK.h"
#include "files/exit_status.h"
#include "sim/trace_json.h"
#include "tests/tools/traces/trace_file.h"
#include "tools/vexosim/traces/diff.h"
#include "tools/vexosim/traces/replay.h"
#include "tools/vexosim/traces/show_trace.h"
#include "tools/vexosim/traces/summary.h"
#include "tools/vexosim/traces/vcd_writer.h"

namespace vexosim {
namespace {

using sim::BusWindow;
using sim::By;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

void Access(sim::Trace& trace, std::uint32_t t, By by, std::uint8_t select, std::uint8_t reg,
            const std::vector<std::uint8_t>& values, bool read = false) {
  trace.AddCycle(t, by, false, BusWindow::Select, select);
  trace.AddCycle(t, by, false, BusWindow::Address, reg);
  for (const std::uint8_t value : values) trace.AddCycle(t, by, read, BusWindow::Data, value);
  trace.AddCycle(t, by, false, BusWindow::Select, 0xFF);
}

// A board, a call that writes a window and a display register, and the worker's read.
sim::Trace Example(std::uint8_t display = 0x92, const std::string& built = "Jan 1") {
  sim::Trace trace;
  trace.Add(0, By::Host, sim::LineEvent{"board chips 1"});
  trace.Add(0, By::Host, sim::CallEvent{.fn = "DllMain", .args = {1}});
  trace.Add(0, By::Host, sim::DebugEvent{false, "[VexoCtrlSDK]: "});
  trace.Add(0, By::Host, sim::DebugEvent{false, ">> build : " + built + "\r\n"});
  trace.Add(0, By::Host, sim::ReturnEvent{"DllMain", 1, std::nullopt, std::nullopt});
  trace.Add(
      5, By::Host,
      sim::CallEvent{.fn = "VEXOAPI_CommandProc", .args = {0xF005}, .record = sim::Bytes(64)});
  Access(trace, 5, By::Host, 0xFD, 0x30, {4, 0x2F, 2, 0x1F});
  Access(trace, 5, By::Host, 0xFD, 0x10, {display});
  trace.Add(6, By::Host, sim::MessageEvent{false, 0x2404, 4, 0, true, std::nullopt});
  trace.Add(6, By::Host, sim::ReturnEvent{"VEXOAPI_CommandProc", 0, sim::Bytes(64), std::nullopt});
  Access(trace, 7, By::Worker, 0xFC, 0xFE, {0x28}, true);
  return trace;
}

std::string Json(const sim::Trace& trace) {
  std::ostringstream out;
  sim::TraceWriter(out).Write(trace);
  return out.str();
}

void Feed(const sim::Trace& trace, sim::TraceListener& listener) {
  for (const sim::Event& event : trace.Events()) listener.OnEvent(event, trace.DetailOf(event));
}

std::string Show(const sim::Trace& trace, const TraceFilter& filter = {}) {
  std::ostringstream out;
  TracePrinter printer(out, filter, true);
  Feed(trace, printer);
  printer.Finish();
  return out.str();
}

TEST(ShowTrace, HasALineForEachCallAccessTextAndMessage) {
  const std::string text = Show(Example());
  EXPECT_THAT(text, HasSubstr("       0 ms  host    line board chips 1\n"
                              "       0 ms  host    DllMain attach\n"
                              "       0 ms  host      | [VexoCtrlSDK]: >> build : Jan 1\n"
                              "       0 ms  host      = 1\n"
                              "       5 ms  host    VEXOAPI_CommandProc 0xF005 live-split, record "
                              "all 0\n"));
  EXPECT_THAT(text, HasSubstr("host      w master page 1  0x30-0x33 window 0                  = "
                              "04 2f 02 1f\n"));
  EXPECT_THAT(text, HasSubstr("host      w master page 1 0x10 channel display 0 = 0x92 (enable, "
                              "hold, position 2)\n"));
  EXPECT_THAT(text, HasSubstr("       6 ms  host      > 0x2404 motion status: mask 0x0004"));
  EXPECT_THAT(text, HasSubstr("       6 ms  host      = 0 (11 bus cycles)\n"));
  EXPECT_THAT(text, HasSubstr("       7 ms  worker    r master page 0 0xFE chip identification"));
}

TEST(ShowTrace, TellsRecordsAndResultsOfCommandsByName) {
  sim::Trace trace;
  const auto call = [&trace](std::uint32_t code, sim::Bytes sent, int result, sim::Bytes back) {
    sent.resize(64);
    back.resize(64);
    trace.Add(0, By::Host,
              sim::CallEvent{.fn = "VEXOAPI_CommandProc", .args = {code}, .record = sent});
    trace.Add(0, By::Host, sim::ReturnEvent{"VEXOAPI_CommandProc", result, back, std::nullopt});
  };
  const sim::Bytes nine = {0, 0, 0, 0, 4, 0, 0, 1, 2, 3};
  call(0xF005, nine, 0, nine);
  call(0xF003, {VEXO_CHIP_SLAVE1, 1, 0x10}, 0, {VEXO_CHIP_SLAVE1, 1, 0x10, 0xC0});
  const sim::Bytes stray = {0, 0, 0, 0, 7, 9};  // a byte that is in no field
  call(0xF005, stray, -5, stray);
  const std::string text = Show(trace);
  EXPECT_THAT(text, HasSubstr("VEXOAPI_CommandProc 0xF005 live-split, mode 9, channels 0-3,0"));
  EXPECT_THAT(text, HasSubstr("0xF003 read-reg, chip slave1, page 1, reg 0x10\n"));
  EXPECT_THAT(text, HasSubstr("  < value 0xC0\n       0 ms  host      = 0\n"));
  EXPECT_THAT(text, HasSubstr("live-split, record 00 00 00 00 07 09\n"));
  EXPECT_THAT(text, HasSubstr("= -5: mode 0x07 is none of full, 4, 6, 8, 9, 13 or 16\n"));
}

TEST(ShowTrace, ShowsOnlyWhatIsAskedFor) {
  TraceFilter filter;
  filter.calls = true;
  EXPECT_EQ(Show(Example(), filter),
            "       0 ms  host    DllMain attach\n"
            "       0 ms  host      = 1\n"
            "       5 ms  host    VEXOAPI_CommandProc 0xF005 live-split, record all 0\n"
            "       6 ms  host      = 0 (11 bus cycles)\n");
  filter = {};
  filter.registers = {{1, 0x10}};
  std::string text = Show(Example(), filter);
  EXPECT_THAT(text, HasSubstr("channel display 0"));
  EXPECT_THAT(text, HasSubstr("VEXOAPI_CommandProc"));
  EXPECT_THAT(text, Not(HasSubstr("window 0")));
  EXPECT_THAT(text, Not(HasSubstr("DllMain")));
  filter = {};
  filter.by = By::Worker;
  EXPECT_THAT(Show(Example(), filter), testing::StartsWith("       7 ms  worker"));
  filter = {};
  filter.chip = 1;
  EXPECT_EQ(Show(Example(), filter), "");
  filter = {};
  filter.from_ms = 6;
  filter.to_ms = 6;
  text = Show(Example(), filter);
  EXPECT_THAT(text, HasSubstr("> 0x2404"));
  EXPECT_THAT(text, Not(HasSubstr(" 5 ms")));
  EXPECT_THAT(text, Not(HasSubstr(" 7 ms")));
}

TEST(ShowTrace, ShowsNoControlBytes) {
  sim::Trace trace;
  trace.Add(0, By::Host, sim::DebugEvent{false, "\x1B[31mred\r\n"});
  trace.Add(0, By::Host, sim::LineEvent{"a\x07"});
  trace.Add(0, By::Host, sim::CallEvent{.fn = "\x1B", .text = "\x1B"});
  const std::string text = Show(trace);
  EXPECT_THAT(text, HasSubstr("\\x1B[31mred"));
  EXPECT_EQ(text.find_first_of("\x1B\x07"), std::string::npos);
}

TEST(Summary, CountsCyclesAndAccessesOfEachKindOfCall) {
  TraceSummary summary;
  Feed(Example(), summary);
  Feed(Example(), summary);
  std::ostringstream out;
  summary.Print(out);
  EXPECT_THAT(out.str(),
              testing::MatchesRegex(" +calls +stores +loads +reads +writes\n"
                                    "DllMain attach +2 +0 +0 +0 +0\n"
                                    "VEXOAPI_CommandProc 0xF005 live-split +2 +22 +0 +0 +10\n"
                                    "\\(worker\\) +0 +6 +2 +2 +0\n"
                                    "all +4 +28 +2 +2 +10\n"));
}

struct Outcome {
  int status;
  std::string text;
};

Outcome Diff(const std::string& a, const std::string& b, bool registers = false) {
  const TempFile first("a.jsonl", a);
  const TempFile second("b.jsonl", b);
  std::ostringstream out;
  const int status = DiffTraces({first.Path(), second.Path(), registers, {}}, out);
  return {status, out.str()};
}

TEST(Diff, FindsTracesTheSameApartFromBuildTimeThreadNumbersAndHandles) {
  const auto with = [](const std::string& built, const std::string& thread, std::int64_t handle) {
    sim::Trace trace = Example(0x92, built);
    trace.Add(8, By::Host, sim::DebugEvent{false, ">> [THREAD_ID 0x" + thread + "] check\r\n"});
    trace.Add(8, By::Host,
              sim::CallEvent{.fn = "VEXOAPI_Initialize", .args = {handle}, .valid = true});
    return Json(trace);
  };
  const Outcome same = Diff(with("Jan 1", "00000001", 5), with("Feb 2 2026", "f0000001", 77));
  EXPECT_EQ(same.status, files::kExitDone);
  EXPECT_EQ(same.text, "the same: 25 events\n");
}

TEST(Diff, NamesTheFirstDifferenceWithItsCallAndWhatWasBefore) {
  const Outcome outcome = Diff(Json(Example(0x92)), Json(Example(0x93)));
  EXPECT_EQ(outcome.status, files::kExitUnmet);
  EXPECT_THAT(outcome.text,
              HasSubstr(" differ: 5 ms, host, in VEXOAPI_CommandProc 0xF005 live-split\n"));
  EXPECT_THAT(outcome.text, HasSubstr("event      12  5 ms  host  w master page 1 0x33 window 0"));
  EXPECT_THAT(outcome.text, HasSubstr("a.jsonl  event      16  5 ms  host  w master page 1 0x10 "
                                      "channel display 0 = 0x92 (enable, hold, position 2)\n"));
  EXPECT_THAT(outcome.text, HasSubstr("b.jsonl  event      16  5 ms  host  w master page 1 0x10 "
                                      "channel display 0 = 0x93 (enable, hold, position 3)\n"));
}

TEST(Diff, TellsWhatACycleIsOnTheWayTo) {
  sim::Trace a;
  Access(a, 1, By::Host, 0xFD, 0x10, {1});
  sim::Trace b;
  Access(b, 1, By::Host, 0xF7, 0x10, {1});
  const std::string text = Diff(Json(a), Json(b)).text;
  EXPECT_THAT(text, HasSubstr("store select 0xFD, then w master page 1 0x10"));
  EXPECT_THAT(text, HasSubstr("store select 0xF7, then w slave1 page 1 0x10"));
}

TEST(Diff, TellsThatOneEnds) {
  const std::string whole = Json(Example());
  const Outcome outcome = Diff(whole, whole.substr(0, whole.find('\n') + 1));
  EXPECT_EQ(outcome.status, files::kExitUnmet);
  EXPECT_THAT(outcome.text, HasSubstr("ends after event 1\n"));
}

TEST(Diff, ComparesAccessesToRegistersAloneWhenItIsTold) {
  sim::Trace later;
  Access(later, 50, By::Worker, 0xFD, 0x30, {4, 0x2F, 2, 0x1F});
  Access(later, 50, By::Host, 0xFD, 0x10, {0x92});
  Access(later, 60, By::Host, 0xFC, 0xFE, {0x28}, true);
  EXPECT_EQ(Diff(Json(Example()), Json(later), true).text, "the same: 6 register accesses\n");
  EXPECT_EQ(Diff(Json(Example()), Json(later), false).status, files::kExitUnmet);
}

std::string Replay(const std::vector<sim::EventDetail>& details) {
  std::ostringstream out;
  ReplayWriter writer(out);
  for (const sim::EventDetail& detail : details) writer.OnEvent({}, &detail);
  writer.Finish();
  return out.str();
}

TEST(Replay, MakesALineOfEachCall) {
  sim::Bytes record(64);
  record[1] = 0xAB;
  std::string mask = "01";
  for (int i = 0; i < 23; ++i) mask += " 01";
  EXPECT_EQ(Replay({sim::LineEvent{"camera 5 off"},
                    sim::CallEvent{.fn = "DllMain", .args = {1}},
                    sim::CallEvent{.fn = "DllMain", .args = {0}},
                    sim::CallEvent{.fn = "DllMain", .args = {6}},
                    sim::CallEvent{.fn = "DllMain", .args = {9}},
                    sim::CallEvent{.fn = "VEXOAPI_Initialize", .args = {1}, .valid = true},
                    sim::CallEvent{.fn = "VEXOAPI_Initialize", .args = {2}, .valid = false},
                    sim::CallEvent{.fn = "VEXOAPI_Uninitialize"},
                    sim::CallEvent{.fn = "VEXOAPI_GetVersion"},
                    sim::ReturnEvent{"VEXOAPI_GetVersion", 10, std::nullopt, "1"},
                    sim::CallEvent{.fn = "VEXOAPI_GetVersion"},
                    sim::ReturnEvent{"VEXOAPI_GetVersion", 10, std::nullopt, std::nullopt},
                    sim::CallEvent{.fn = "VEXOAPI_SetEnableDebug", .args = {4294967295}},
                    sim::CallEvent{.fn = "VEXOAPI_SetEnableOutputMsg", .args = {0}},
                    sim::CallEvent{.fn = "VEXOAPI_CommandProc", .args = {0xF005}, .record = record},
                    sim::CallEvent{.fn = "VEXOAPI_CommandProc", .args = {0xF002}},
                    sim::CallEvent{
                        .fn = "VEXOAPI_SetMotionInfo", .args = {3, 2}, .record = sim::Bytes(24, 1)},
                    sim::CallEvent{.fn = "VEXOAPI_TextCommandProc", .text = "a \"b\" \\ \t"},
                    sim::CallEvent{.fn = "VEXOAPI_TextCommandProc",
                                   .record = sim::Bytes{'a', 0xFF},
                                   .text = "a\xEF\xBF\xBD"},
                    sim::LineEvent{"run 100"}}),
            "camera 5 off\nattach\ndetach\nlowmem\nentry 9\nwindow\nwindow invalid\nunbind\n"
            "version\nversion null\ndebug 4294967295\noutput 0\ncommand 0xF005 00 ab\n"
            "command 0xF002 null\nmotioninfo 3 2 " +
                mask + "\ntext \"a \\\"b\\\" \\\\ \\x09\"\ntext \"a\\xFF\"\nrun 100\n");
}

TEST(Replay, TellsWhatNoScriptCanDo) {
  const std::vector<std::vector<sim::EventDetail>> cases = {
      {},
      {sim::SleepEvent{}},
      {sim::CallEvent{.fn = "VEXOAPI_Fly"}},
      {sim::CallEvent{.fn = "DllMain"}},
      {sim::CallEvent{.fn = "DllMain", .args = {-1}}},
      {sim::CallEvent{.fn = "VEXOAPI_Initialize", .args = {1}}},
      {sim::CallEvent{.fn = "VEXOAPI_TextCommandProc"}},
      {sim::CallEvent{.fn = "VEXOAPI_SetMotionInfo", .args = {3, 2}}},
      {sim::CallEvent{.fn = "VEXOAPI_SetMotionInfo", .args = {256, 2}, .record = sim::Bytes(24)}},
      {sim::CallEvent{.fn = "VEXOAPI_CommandProc", .args = {1}, .record = sim::Bytes(65)}},
      {sim::CallEvent{.fn = "VEXOAPI_CommandProc", .args = {1}},
       sim::ReturnEvent{"VEXOAPI_CommandProc", 0, sim::Bytes(64), std::nullopt}},
      {sim::CallEvent{.fn = "VEXOAPI_TextCommandProc", .text = std::string(65'536, 'a')}},
      // A trace that was changed: what no script has, and what would look or write on its own.
      {sim::LineEvent{""}},
      {sim::LineEvent{"# camera 5 off"}},
      {sim::LineEvent{"run 1\nattach"}},
      {sim::LineEvent{"poke all 1 0x19 ue}2"}},
      {sim::CallEvent{.fn = "VEXOAPI_Uninitialize"}, sim::LineEvent{"expect return 0"}},
      {sim::LineEvent{"picture screen.png"}},
  };
  for (const auto& details : cases) EXPECT_THROW(Replay(details), NotReplayable);
}

TEST(Replay, SaysWhyALineIsNone) {
  try {
    Replay({sim::LineEvent{"camera 5 of"}});
    FAIL();
  } catch (const NotReplayable& error) {
    EXPECT_THAT(error.what(), AllOf(StartsWith("expected a line that changes the board or lets "
                                               "time pass, found 'camera 5 of': expected "),
                                    HasSubstr("(camera ")));
  }
}

std::string Waveform(const sim::Trace& trace, std::uint32_t cycle_ns = kDefaultCycleNs) {
  std::ostringstream out;
  VcdWriter writer(out, cycle_ns);
  Feed(trace, writer);
  writer.Finish();
  return out.str();
}

TEST(VcdWriter, WritesWhatACaptureIsReadFrom) {
  const TempFile waveform("bus.vcd", Waveform(Example()));
  const TempFile trace("bus.jsonl", Json(Example()));
  std::ostringstream out;
  EXPECT_EQ(DiffTraces({waveform.Path(), trace.Path(), false, {}}, out), files::kExitDone);
  EXPECT_EQ(out.str(), "the same: 6 register accesses\n");
}

TEST(VcdWriter, HasRegistersAndCallsAsTextWithoutBlanks) {
  const std::string text = Waveform(Example());
  EXPECT_THAT(text, HasSubstr("$var string 1 g register $end\n"));
  EXPECT_THAT(text, HasSubstr("\nsDllMain\\040attach h\n"));
  EXPECT_THAT(text, HasSubstr("\nsw\\040master\\040page\\0401\\0400x10\\040channel\\040display"));
  EXPECT_THAT(text, HasSubstr("\n#5000000\n"));
}

TEST(VcdWriter, ReadsTheSyncBitAsTheLibraryDoes) {
  sim::Trace trace;
  Access(trace, 0, By::Worker, 0xFD, 0xAB, {0x10}, true);
  Access(trace, 20, By::Worker, 0xFD, 0xAB, {0x00}, true);
  const std::string text = Waveform(trace);
  EXPECT_LT(text.find("\nxy\n"), text.find("\n1y\n"));
  EXPECT_LT(text.find("\n1y\n"), text.find("\n0y\n"));
  EXPECT_NE(text.find("\n0y\n"), std::string::npos);
}

TEST(VcdWriter, NeverGoesBackWhenMoreCyclesFallIntoAMillisecondThanFit) {
  sim::Trace trace;
  for (std::uint32_t t = 0; t < 3; ++t) Access(trace, t, By::Host, 0xFD, 0x10, {1, 2, 3});
  std::istringstream lines(Waveform(trace, 400'000));  // two and a half a millisecond
  std::uint64_t last = 0;
  std::size_t moments = 0;
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with('#')) continue;
    const std::uint64_t time = std::stoull(line.substr(1));
    EXPECT_TRUE(time > last || (time == 0 && moments == 0));
    last = time;
    ++moments;
  }
  EXPECT_EQ(last, 18U * 400'000);
  EXPECT_EQ(moments, 37U);
}

TEST(Capture, TheExampleIsWhatASimulatedBoardDoes) {
  sim::Trace trace;
  Access(trace, 0, By::Host, 0xFC, 0xFE, {0x28}, true);
  // Samples as an analyser takes them: two of each strobe, one between them.
  std::string csv =
      "select,address,data,write,read,enable_select,enable_address,enable_data\n"
      "x,x,x,0,0,0,0,0\n";
  std::array<std::string, 3> values = {"x", "x", "x"};
  for (const sim::Event& event : trace.Events()) {
    const auto window = static_cast<std::size_t>(event.window);
    values[window] = std::to_string(event.value);
    const bool load = event.kind == sim::Event::Kind::Load;
    const std::string bus = values[0] + ',' + values[1] + ',' + values[2];
    std::string strobe = bus;
    strobe += load ? ",0,1" : ",1,0";
    for (std::size_t i = 0; i < 3; ++i) strobe += i == window ? ",1" : ",0";
    strobe += '\n';
    csv.append(strobe).append(strobe).append(bus).append(",0,0,0,0,0\n");
  }
  std::ifstream in(VEXO_SOURCE_DIR "/docs/bus-capture.csv");
  std::ostringstream example;
  example << in.rdbuf();
  EXPECT_EQ(example.str(), csv);
  EXPECT_THAT(CyclesOf(VEXO_SOURCE_DIR "/docs/bus-capture.csv"),
              testing::ElementsAre("store select 0xFC", "store address 0xFE", "load data 0x28",
                                   "store select 0xFF"));
}

}  // namespace
}  // namespace vexosim
