#include "sim/trace_json.h"

#include <gtest/gtest.h>

#include <sstream>

namespace sim {
namespace {

using sim::By;

// The line of one event, at 12 ms by the worker.
std::string LineOf(sim::EventDetail detail) {
  sim::Trace trace;
  trace.Add(12, By::Worker, std::move(detail));
  std::ostringstream out;
  TraceWriter(out).Write(trace);
  const std::string start = R"({"t":12,"by":"worker",)";
  EXPECT_EQ(out.str().substr(0, start.size()), start);
  return out.str().substr(start.size());
}

struct Case {
  sim::EventDetail detail;
  const char* line;
};

TEST(TraceJson, WritesEachKindOfEventWithItsMembersInOrder) {
  const std::vector<Case> cases = {
      {sim::CallEvent{.fn = "VEXOAPI_CommandProc", .args = {0xF002}},
       R"("ev":"call","fn":"VEXOAPI_CommandProc","args":[61442]})"},
      {sim::CallEvent{.fn = "VEXOAPI_CommandProc", .args = {0xF005}, .record = sim::Bytes{1, 0xAB}},
       R"("ev":"call","fn":"VEXOAPI_CommandProc","args":[61445],"record":"01ab"})"},
      {sim::CallEvent{.fn = "VEXOAPI_TextCommandProc", .text = "vexo rver "},
       R"("ev":"call","fn":"VEXOAPI_TextCommandProc","args":[],"text":"vexo rver "})"},
      {sim::CallEvent{.fn = "VEXOAPI_Initialize", .args = {4096}, .valid = false},
       R"("ev":"call","fn":"VEXOAPI_Initialize","args":[4096],"valid":false})"},
      {sim::CallEvent{.fn = "VEXOAPI_Uninitialize"},
       R"("ev":"call","fn":"VEXOAPI_Uninitialize","args":[]})"},
      {sim::ReturnEvent{"VEXOAPI_CommandProc", -8, sim::Bytes{0x00, 0xAB}, std::nullopt},
       R"("ev":"return","fn":"VEXOAPI_CommandProc","value":-8,"record":"00ab"})"},
      {sim::ReturnEvent{"VEXOAPI_GetVersion", 10, std::nullopt, "1. 0. 1. 6"},
       R"("ev":"return","fn":"VEXOAPI_GetVersion","value":10,"record":"1. 0. 1. 6"})"},
      {sim::ReturnEvent{"VEXOAPI_Uninitialize", std::nullopt, std::nullopt, std::nullopt},
       R"("ev":"return","fn":"VEXOAPI_Uninitialize","value":null})"},
      {sim::DebugEvent{false, ">> \"x\"\r\n"}, R"("ev":"debug","text":">> \"x\"\r\n"})"},
      {sim::DebugEvent{true, "k"}, R"("ev":"kernel","text":"k"})"},
      {sim::MessageEvent{false, 0x2404, 4, 0, true, std::nullopt},
       R"("ev":"send","message":9220,"wparam":4,"lparam":0,"ok":true})"},
      {sim::MessageEvent{true, 0x2402, std::nullopt, 0, false, sim::Bytes(12, 1)},
       R"("ev":"post","message":9218,"wparam":null,"lparam":0,"ok":false,)"
       R"("record":"010101010101010101010101"})"},
      {sim::LockEvent{false, "CS4_GlobalLock", true},
       R"("ev":"lock","name":"CS4_GlobalLock","ok":true})"},
      {sim::LockEvent{true, "CS4_GlobalLock", false},
       R"("ev":"unlock","name":"CS4_GlobalLock","ok":false})"},
      {sim::SleepEvent{false, 240}, R"("ev":"sleep","ms":240})"},
      {sim::SleepEvent{true, 3}, R"("ev":"wait","ms":3})"},
      {sim::OpenEvent{"CAM1:", 0xC0000000, 0, 3, true},
       R"("ev":"open","name":"CAM1:","access":3221225472,"share":0,"disposition":3,"ok":true})"},
      {sim::IoctlEvent{"CAM1:", 5, {0xDE, 0xAD}, false},
       R"("ev":"ioctl","name":"CAM1:","code":5,"in":"dead","ok":false})"},
      {sim::CloseEvent{"CAM1:"}, R"("ev":"close","name":"CAM1:","ok":true})"},
      {sim::CloseEvent{"VBE1:", false}, R"("ev":"close","name":"VBE1:","ok":false})"},
      {sim::NvramEvent{"read", 1, 0, 6, {0x4D, 0x44}, true},
       R"("ev":"nvram","op":"read","block":1,"offset":0,"length":6,"data":"4d44","ok":true})"},
      {sim::MapEvent{0x06600000, 4, false, true},
       R"("ev":"map","physical":106954752,"length":4,"cached":false,"ok":true})"},
      {sim::UnmapEvent{sim::BusWindow::Address}, R"("ev":"unmap","window":"address"})"},
      {sim::ThreadEvent{"end", 0xF0000001}, R"("ev":"thread","what":"end","code":4026531841})"},
      {sim::LineEvent{"camera 5 off"}, R"("ev":"line","text":"camera 5 off"})"},
  };
  for (const Case& c : cases) EXPECT_EQ(LineOf(c.detail), std::string(c.line) + '\n');
}

TEST(TraceJson, WritesBusCycles) {
  sim::Trace trace;
  trace.AddCycle(0, By::Host, false, sim::BusWindow::Select, 0xFC);
  trace.AddCycle(7, By::Worker, true, sim::BusWindow::Data, 0);
  trace.AddCycle(4294967295U, By::Host, false, sim::BusWindow::Address, 255);
  std::ostringstream out;
  TraceWriter(out).Write(trace);
  EXPECT_EQ(
      out.str(),
      "{\"t\":0,\"by\":\"host\",\"ev\":\"store\",\"window\":\"select\",\"value\":252}\n"
      "{\"t\":7,\"by\":\"worker\",\"ev\":\"load\",\"window\":\"data\",\"value\":0}\n"
      "{\"t\":4294967295,\"by\":\"host\",\"ev\":\"store\",\"window\":\"address\",\"value\":255}"
      "\n");
}

TEST(TraceJson, WritesCyclesAsTheJsonLibraryWould) {
  sim::Trace trace;
  for (const auto window :
       {sim::BusWindow::Select, sim::BusWindow::Address, sim::BusWindow::Data}) {
    trace.AddCycle(1, By::Host, false, window, 16);
    trace.AddCycle(2, By::Worker, true, window, 200);
  }
  std::ostringstream out;
  TraceWriter(out).Write(trace);
  std::string expected;
  for (const sim::Event& event : trace.Events())
    expected += EventToJson(trace, event).dump() + '\n';
  EXPECT_EQ(out.str(), expected);
}

TEST(TraceJson, WritesOnlyWhatIsNew) {
  sim::Trace trace;
  std::ostringstream out;
  TraceWriter writer(out);
  trace.Add(0, By::Host, sim::SleepEvent{false, 1});
  writer.Write(trace);
  out.str({});
  writer.Write(trace);
  EXPECT_EQ(out.str(), "");
  trace.Add(1, By::Host, sim::SleepEvent{false, 2});
  writer.Write(trace);
  EXPECT_EQ(out.str(), "{\"t\":1,\"by\":\"host\",\"ev\":\"sleep\",\"ms\":2}\n");
}

TEST(TraceJson, WritesEachEventAsItHappensToo) {
  std::ostringstream out;
  TraceWriter writer(out);
  const sim::EventDetail sleep = sim::SleepEvent{false, 3};
  TraceListener& listener = writer;
  listener.OnEvent({.t = 5, .by = By::Worker}, &sleep);
  listener.OnEvent({.t = 8, .kind = Event::Kind::Load, .window = BusWindow::Data, .value = 40},
                   nullptr);
  EXPECT_EQ(out.str(),
            "{\"t\":5,\"by\":\"worker\",\"ev\":\"sleep\",\"ms\":3}\n"
            "{\"t\":8,\"by\":\"host\",\"ev\":\"load\",\"window\":\"data\",\"value\":40}\n");
}

TEST(TraceJson, ShowsTextThatIsNoUtf8AsFarAsItGoes) {
  EXPECT_EQ(LineOf(sim::DebugEvent{false, "a\xFF"}),
            "\"ev\":\"debug\",\"text\":\"a\xEF\xBF\xBD\"}\n");
}

}  // namespace
}  // namespace sim
