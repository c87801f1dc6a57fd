// Logs: every entry read and printed, what is cut left out, and what is no log refused.
#include "device/plan/log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace plan {
namespace {

using testing::ElementsAre;

constexpr const char* kBegin = "0 0 begin \"1.0.1.6\"\n";

std::string Refusal(const std::string& text) {
  try {
    ParseLog(text, "l");
  } catch (const FormatError& error) {
    return error.what();
  }
  return "it is a log";
}

struct EntryCase {
  const char* line;
  Entry entry;
};

class LogEntry : public testing::TestWithParam<EntryCase> {};

TEST_P(LogEntry, IsReadAndPrinted) {
  const std::string text = std::string(kBegin) + GetParam().line + '\n';
  const Log log = ParseLog(text, "l");
  ASSERT_EQ(log.entries.size(), 2u);
  Entry expected = GetParam().entry;
  expected.line = 2;
  EXPECT_EQ(log.entries[1], expected);
  EXPECT_EQ(PrintLog(log), text);
}

INSTANTIATE_TEST_SUITE_P(
    All, LogEntry,
    testing::Values(
        EntryCase{"0 2 clock 1000000", {0, 0, 2, EntryKind::Clock, {}, {1'000'000}, {}}},
        EntryCase{R"(0 2 file "\\DLL\\A.DLL" 61440 0x1C0 0x10000000)",
                  {0, 0, 2, EntryKind::File, {"\\DLL\\A.DLL"}, {61440, 0x1C0, 0x10000000}, {}}},
        EntryCase{R"(0 2 absent "CEDDK.dll" 126)",
                  {0, 0, 2, EntryKind::Absent, {"CEDDK.dll"}, {126}, {}}},
        EntryCase{R"(0 2 missing "CEDDK.dll" "#8")",
                  {0, 0, 2, EntryKind::Missing, {"CEDDK.dll", "#8"}, {}, {}}},
        EntryCase{"0 2 imports 43 1", {0, 0, 2, EntryKind::Imports, {}, {43, 1}, {}}},
        EntryCase{R"(0 2 loading "A.DLL")", {0, 0, 2, EntryKind::Loading, {"A.DLL"}, {}, {}}},
        EntryCase{"0 2 loaded 0xFFFFFFF0", {0, 0, 2, EntryKind::Loaded, {}, {0xFFFFFFF0}, {}}},
        EntryCase{"0 2 refused 193", {0, 0, 2, EntryKind::Refused, {}, {193}, {}}},
        EntryCase{R"(0 2 path "\\A.DLL")", {0, 0, 2, EntryKind::Path, {"\\A.DLL"}, {}, {}}},
        EntryCase{R"(0 2 version "")", {0, 0, 2, EntryKind::Version, {""}, {}, {}}},
        EntryCase{R"(0 2 export "F" 0x0)", {0, 0, 2, EntryKind::Export, {"F"}, {0}, {}}},
        EntryCase{"0 2 again 0x1000", {0, 0, 2, EntryKind::Again, {}, {0x1000}, {}}},
        EntryCase{R"(0 2 process "ended" 15)", {0, 0, 2, EntryKind::Process, {"ended"}, {15}, {}}},
        EntryCase{"0 2 window 0x0", {0, 0, 2, EntryKind::Window, {}, {0}, {}}},
        EntryCase{R"(0 2 nvram "unknown")", {0, 0, 2, EntryKind::Nvram, {"unknown"}, {}, {}}},
        EntryCase{R"(0 2 nvram "stored" 4D445652)",
                  {0, 0, 2, EntryKind::Nvram, {"stored"}, {}, {0x4D, 0x44, 0x56, 0x52}}},
        EntryCase{"0 2 plan 31 0x811C9DC5", {0, 0, 2, EntryKind::Plan, {}, {31, 0x811C9DC5}, {}}},
        EntryCase{R"(7 2 wrong "why")", {0, 7, 2, EntryKind::Wrong, {"why"}, {}, {}}},
        EntryCase{"11 940 called", {0, 11, 940, EntryKind::Called, {}, {}, {}}},
        EntryCase{"11 940 returned", {0, 11, 940, EntryKind::Returned, {}, {}, {}}},
        EntryCase{"11 940 returned -8", {0, 11, 940, EntryKind::Returned, {}, {-8}, {}}},
        EntryCase{"11 940 error 126", {0, 11, 940, EntryKind::Error, {}, {126}, {}}},
        EntryCase{"11 940 took 4000000000", {0, 11, 940, EntryKind::Took, {}, {4'000'000'000}, {}}},
        EntryCase{"11 940 record 28FE", {0, 11, 940, EntryKind::Record, {}, {}, {0x28, 0xFE}}},
        EntryCase{R"(11 940 answer "1. 0")", {0, 11, 940, EntryKind::Answer, {"1. 0"}, {}, {}}},
        EntryCase{"11 940 message 0x2401 0x1003 0x0",
                  {0, 11, 940, EntryKind::Message, {}, {0x2401, 0x1003, 0}, {}}},
        EntryCase{"11 940 message 0x2402 0x0 0x0 28",
                  {0, 11, 940, EntryKind::Message, {}, {0x2402, 0, 0}, {0x28}}},
        EntryCase{"15 940 value 0xD4", {0, 15, 940, EntryKind::Value, {}, {0xD4}, {}}},
        EntryCase{"15 940 unread -8", {0, 15, 940, EntryKind::Unread, {}, {-8}, {}}},
        EntryCase{R"(0 2 summary "good")", {0, 0, 2, EntryKind::Summary, {"good"}, {}, {}}},
        EntryCase{"0 2 end 212 1", {0, 0, 2, EntryKind::End, {}, {212, 1}, {}}}));

TEST(Log, TheDocumentedOneIsPrintedAsItStands) {
  std::ifstream file(VEXO_SOURCE_DIR "/docs/plan-format.md");
  const std::string text((std::istreambuf_iterator<char>(file)), {});
  const std::size_t begin = text.find("```\n0 0 begin") + 4;
  const std::string example = text.substr(begin, text.find("```", begin) - begin);
  EXPECT_EQ(PrintLog(ParseLog(example, "l")), example);
}

TEST(Log, IsWholeWhenItEnds) {
  EXPECT_FALSE(ParseLog("", "l").Whole());
  EXPECT_FALSE(ParseLog(kBegin, "l").Whole());
  EXPECT_TRUE(ParseLog(std::string(kBegin) + "0 1 end 0 0\n", "l").Whole());
}

TEST(Log, ALineThatWasCutIsLeftOut) {
  const Log log = ParseLog(std::string(kBegin) + "7 5 called\n7 6 retur", "l");
  EXPECT_TRUE(log.cut);
  ASSERT_EQ(log.entries.size(), 2u);
  EXPECT_EQ(log.entries[1].kind, EntryKind::Called);
  EXPECT_FALSE(ParseLog(kBegin, "l").cut);
  EXPECT_TRUE(ParseLog("0 0 beg", "l").cut);
  EXPECT_TRUE(ParseLog("0 0 beg", "l").entries.empty());
}

TEST(Log, WhatIsNoLogIsRefusedByLineAndReason) {
  const std::string begin = kBegin;
  EXPECT_EQ(Refusal("0 0 called\n"), "l:1: expected 'begin' in the first line, found 'called'");
  EXPECT_EQ(Refusal(begin + begin), "l:2: expected one 'begin', found a second");
  EXPECT_EQ(Refusal(begin + "0 1 end 0 0\n0 2 called\n"),
            "l:3: expected nothing behind the end, found 'called'");
  EXPECT_EQ(Refusal(begin + "0 1 cald\n"), "l:2: expected an entry of a log, found 'cald'");
  EXPECT_EQ(Refusal(begin + "called\n"), "l:2: expected a line of the plan, found 'called'");
  EXPECT_EQ(Refusal(begin + "0 1 took\n"), "l:2: expected a number, found the end of the line");
  EXPECT_EQ(Refusal(begin + "0 1 took -1\n"), "l:2: expected a number, found '-1'");
  EXPECT_EQ(Refusal(begin + "0 1 took 1 2\n"), "l:2: expected the end of the line, found '2'");
  EXPECT_EQ(Refusal(begin + "\n"), "l:2: expected a line of the plan, found the end of the line");
}

}  // namespace
}  // namespace plan
