#include "tools/vexosim/traces/json_events.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sim/trace_json.h"
#include "tests/tools/traces/trace_file.h"

namespace vexosim {
namespace {

using testing::HasSubstr;

TEST(JsonEvents, ReadsEachKindOfEventAsItIsWritten) {
  const std::vector<sim::EventDetail> details = {
      sim::CallEvent{.fn = "DllMain", .args = {1}},
      sim::CallEvent{.fn = "VEXOAPI_CommandProc", .args = {0xF005}, .record = sim::Bytes{0, 0xAB}},
      sim::CallEvent{.fn = "VEXOAPI_TextCommandProc", .text = "vexo rver "},
      sim::CallEvent{.fn = "VEXOAPI_Initialize", .args = {65552}, .valid = false},
      sim::ReturnEvent{"VEXOAPI_CommandProc", -8, sim::Bytes{0, 0xAB}, std::nullopt},
      sim::ReturnEvent{"VEXOAPI_GetVersion", 10, std::nullopt, "1. 0. 1. 6"},
      sim::ReturnEvent{"VEXOAPI_Uninitialize", std::nullopt, std::nullopt, std::nullopt},
      sim::DebugEvent{false, ">> \"x\"\r\n"},
      sim::DebugEvent{true, "k\xC3\xBC"},
      sim::MessageEvent{false, 0x2404, 4, 0, true, std::nullopt},
      sim::MessageEvent{true, 0x2402, std::nullopt, 7, false, sim::Bytes(12, 1)},
      sim::LockEvent{false, "CS4_GlobalLock", true},
      sim::LockEvent{true, "CS4_GlobalLock", false},
      sim::SleepEvent{false, 240},
      sim::SleepEvent{true, 4294967295U},
      sim::OpenEvent{"CAM1:", 0xC0000000, 1, 3, true},
      sim::IoctlEvent{"CAM1:", 5, {0xDE, 0xAD}, false},
      sim::CloseEvent{"VBE1:", false},
      sim::NvramEvent{"read", 1, 2, 6, {0x4D, 0x44}, true},
      sim::MapEvent{0x06600000, 4, false, true},
      sim::UnmapEvent{sim::BusWindow::Address},
      sim::ThreadEvent{"end", 0xF0000001},
      sim::LineEvent{"camera 5 off"},
  };
  for (const sim::EventDetail& detail : details) {
    const sim::Event event{.t = 12, .by = sim::By::Worker};
    const auto json = sim::EventToJson(event, &detail);
    const auto read = EventFromJson(nlohmann::json(json));
    ASSERT_TRUE(read && read->detail) << json;
    EXPECT_EQ(read->event.t, 12U);
    EXPECT_EQ(read->event.by, sim::By::Worker);
    EXPECT_EQ(sim::EventToJson(read->event, read->Detail()), json);
  }
}

TEST(JsonEvents, ReadsBusCycles) {
  const TempFile file("cycles.jsonl",
                      R"({"t":1,"by":"host","ev":"store","window":"select","value":252})"
                      "\n"
                      R"({"t":1,"by":"host","ev":"load","window":"data","value":40})"
                      "\n");
  EXPECT_THAT(CyclesOf(file.Path()), testing::ElementsAre("store select 0xFC", "load data 0x28"));
}

TEST(JsonEvents, PassesOverKindsAndMembersThatItDoesNotKnow) {
  EXPECT_FALSE(EventFromJson(nlohmann::json::parse(R"({"t":1,"by":"host","ev":"dream"})")));
  const auto read = EventFromJson(
      nlohmann::json::parse(R"({"t":1,"by":"host","ev":"sleep","ms":3,"color":"red"})"));
  ASSERT_TRUE(read);
  EXPECT_EQ(read->As<sim::SleepEvent>()->ms, 3U);
}

struct Case {
  std::string line;
  const char* what;
};

TEST(JsonEvents, TellsWhatIsWrongInOneSentenceWithItsLine) {
  const std::string cycle = R"("by":"host","ev":"store","window":"data","value":1})";
  const std::vector<Case> cases = {
      {"rubbish", "expected a JSON object, found 'rubbish'"},
      {std::string("\x01\x1B[31m\xFF", 7), "found '\\x01\\x1B[31m\\xFF'"},
      {"[1]", "expected an object, found [1]"},
      {R"({"by":"host","ev":"sleep","ms":1})", "expected the member \"t\", found none"},
      {R"({"t":4294967296,)" + cycle,
       "expected as \"t\" a number 0 to 4294967295, found 4294967296"},
      {R"({"t":-1,)" + cycle, "found -1"},
      {R"({"t":1e3,)" + cycle, "found 1000.0"},
      {R"({"t":99999999999999999999999999,)" + cycle, "expected as \"t\" a number"},
      {R"({"t":1,"by":"nobody","ev":"sleep","ms":1})", "expected as \"by\" host or worker"},
      {R"({"t":1,"by":"host","ev":"store","window":"door","value":1})",
       "select, address or data, found \"door\""},
      {R"({"t":1,"by":"host","ev":"load","window":"data","value":256})",
       "expected as \"value\" a number 0 to 255, found 256"},
      {R"({"t":1,"by":"host","ev":"debug","text":5})", "expected as \"text\" a text, found 5"},
      {R"({"t":1,"by":"host","ev":"lock","name":"x","ok":1})", "true or false, found 1"},
      {R"({"t":1,"by":"host","ev":"call","fn":"f","args":[1.5]})", "whole numbers"},
      {R"({"t":1,"by":"host","ev":"call","fn":"f","args":[],"record":"0"})",
       "hexadecimal digits, two a byte, found \"0\""},
      {R"({"t":1,"by":"host","ev":"call","fn":"f","args":[],"record":"0g"})", "found \"0g\""},
  };
  const std::string good = R"({"t":1,"by":"host","ev":"sleep","ms":1})";
  for (const Case& c : cases) {
    std::string lines = good;
    for (const std::string& line : {std::string(c.line), good}) lines.append("\n").append(line);
    const std::string wrong = WrongWith("wrong.jsonl", lines += '\n');
    EXPECT_EQ(wrong.substr(0, 4), ":2: ") << wrong;
    EXPECT_THAT(wrong, HasSubstr(c.what));
  }
}

TEST(JsonEvents, TellsThatATraceIsCut) {
  const std::string good = R"({"t":1,"by":"host","ev":"sleep","ms":1})";
  EXPECT_EQ(WrongWith("cut.jsonl", good + '\n' + good.substr(0, 20)),
            ":2: expected the end of the object, found the end of the file");
  EXPECT_EQ(WrongWith("whole.jsonl", good + '\n' + good), "");  // only the line end is missing
}

TEST(JsonEvents, TakesNoLineOfMoreThanAMebibyte) {
  EXPECT_THAT(WrongWith("long.jsonl", R"({"t":1,"by":"host","ev":"sleep","ms":1})"
                                      "\n" +
                                          std::string(2'000'000, '{')),
              HasSubstr("line 2 has more than 1 MiB"));
}

TEST(JsonEvents, TellsWhatIsNoFile) {
  EXPECT_THROW(OpenEvents(testing::TempDir(), {}), BadFile);
  EXPECT_THROW(OpenEvents(test::TempPath("there_is_none.jsonl"), {}), BadFile);
}

}  // namespace
}  // namespace vexosim
