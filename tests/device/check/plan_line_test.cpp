// The device reads plans as a PC does.
#include "device/check/plan_line.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "device/plan/plan.h"

namespace check {
namespace {

// The line of the plan that the device's reader refuses; 0: none.
unsigned RefusedHere(std::string_view text) {
  PlanOrder order;
  PlanLine line;
  unsigned number = 0;
  while (!text.empty()) {
    ++number;
    const std::size_t end = std::min(text.find('\n'), text.size());
    if (ReadPlanLine(text.data(), text.data() + end, line) != nullptr) return number;
    if (order.Next(line) != nullptr) return number;
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return order.AtEnd() == nullptr ? 0 : number + 1;
}

unsigned RefusedThere(const std::string& text) {
  try {
    plan::ParsePlan(text, "p");
  } catch (const plan::FormatError& error) {
    return static_cast<unsigned>(std::stoul(std::string(error.what()).substr(2)));
  }
  return 0;
}

class PlanLines : public testing::TestWithParam<const char*> {};

TEST_P(PlanLines, AreTakenOrRefusedInBothPlaces) {
  const std::string text =
      std::string("vexoplan 1\nscript \"a\"\nstep 1 \"x\"\n") + GetParam() + "\nend\n";
  EXPECT_EQ(RefusedHere(text), RefusedThere(text));
}

INSTANTIATE_TEST_SUITE_P(
    Taken, PlanLines,
    testing::Values("load", "unload", "initialize", "initialize invalid", "uninitialize", "debug 1",
                    "output 0", "version", "version -", "command 0xF001 00", "command 61441 -",
                    "motion 255 255 01", "text a", "load\nprints x",
                    "text \"a\\x0A\\\\ \\\" \\n\\r\\t\"", "wait 0xFFFFFFFF", "load\nresult -8",
                    "load\nresult -2147483648", "load\nresult 0x7FFFFFFF",
                    "command 1 00\nrecord 00 FF", "load\nanswer \"\"", "load\nmessage 1 2 3",
                    "load\nmessage 1 2 3 00", "load\nmessage 1 2 3 00 FF", "load\nmessages any",
                    "load\nregister slave3 2 255 0 1", "load\nregister master 0 0 0",
                    "load\ncycles 1 2", "load\nprints \"x\"", "  load  # so", "", "#", "\tload\r",
                    "script \"b\"\nstep 0 \"y\"\nload"));

INSTANTIATE_TEST_SUITE_P(
    Refused, PlanLines,
    testing::Values("lod", "loads", "load 1", "debug 2", "initialize x", "version x", "command",
                    "command 0xF001", "command 0xF001 0", "command 0xF001 0G", "command -1 -",
                    "command 4294967296 -", "command 0x -", "motion 256 0 00", "motion 0 0 -",
                    "text", "text a\"", "text \"a", "text \"a\"b", "text \"\\y\"", "text \"\\x1\"",
                    "text \"\\x00\"", "wait", "wait -1", "wait 1x", "result 0", "load\nresult",
                    "load\nresult -", "load\nresult - 1", "load\nresult 2147483648",
                    "load\nresult -2147483649", "load\nresult 1\nresult 1", "load\nrecord 00",
                    "command 1 -\nrecord 00", "load\nmessage 1 2", "load\nmessages some",
                    "load\nregister all 0 0 0", "load\nregister master 3 0 0",
                    "load\nregister master 0 256 0", "load\nregister master 0 0 0 256",
                    "load\ncycles 1", "load\nprints", "board \"x\"", "vexoplan 1", "end",
                    "step 2 \"x\"\nresult 1", "script \"b\"\nload", "step x \"y\"", "\xC3\xA4"));

TEST(PlanLine, RecordsMasksAndTextsAreKept) {
  const std::string text = "message 0x2402 1 2 28FE F8";
  PlanLine line;
  ASSERT_EQ(ReadPlanLine(text.data(), text.data() + text.size(), line), nullptr);
  EXPECT_EQ(line.kind, LineKind::Message);
  EXPECT_EQ(line.numbers[0], 0x2402u);
  EXPECT_EQ(line.numbers[2], 2u);
  ASSERT_EQ(line.byte_count, 2u);
  EXPECT_EQ(line.bytes[1], 0xFE);
  ASSERT_EQ(line.mask_count, 1u);
  EXPECT_EQ(line.mask[0], 0xF8);
}

TEST(PlanLine, ATextOf255CharactersIsTheLongest) {
  PlanLine line;
  std::string text = "text \"" + std::string(255, 'x') + "\"";
  EXPECT_EQ(ReadPlanLine(text.data(), text.data() + text.size(), line), nullptr);
  EXPECT_EQ(std::string(line.text), std::string(255, 'x'));
  text = "text \"" + std::string(256, 'x') + "\"";
  EXPECT_NE(ReadPlanLine(text.data(), text.data() + text.size(), line), nullptr);
}

TEST(PlanLine, WhatHasNoEndIsRefusedBehindItsLastLine) {
  EXPECT_EQ(RefusedHere("vexoplan 1\n"), 2u);
  EXPECT_EQ(RefusedHere(""), 1u);
  EXPECT_EQ(RefusedHere("vexoplan 1\nend\n"), 0u);
  EXPECT_EQ(RefusedHere("vexoplan 2\nend\n"), 1u);
  EXPECT_EQ(RefusedHere("vexoplan 1\nend\nend\n"), 3u);
}

}  // namespace
}  // namespace check
