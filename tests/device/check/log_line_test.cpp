// Lines of the log as the device writes them, read as a PC reads them.
#include "device/check/log_line.h"

#include <gtest/gtest.h>

#include <string>

#include "device/plan/log.h"
#include "tests/device/check/fake_system.h"

namespace check {
namespace {

TEST(LogLine, WritesNumbersTextsAndBytes) {
  FakeSystem system;
  system.us = 4'294'967'295'000;
  LogLine(system, 100'000, "x").Number(4'294'967'295).Signed(-2'147'483'647 - 1).Signed(7).Write();
  LogLine(system, 0, "x").Hex(0).Hex(0xFFFFFFFF).Write();
  const std::uint8_t bytes[] = {0x00, 0xFE};
  LogLine(system, 0, "x").Text("a\"\\\n").Text(u"\u00E4\u20AC").Bytes(bytes, 2).Write();
  EXPECT_EQ(system.log,
            "100000 4294967295 x 4294967295 -2147483648 7\n"
            "0 0 x 0x0 0xFFFFFFFF\n"
            "0 1 x \"a\\\"\\\\\\x0A\" \"\\xE4?\" 00FE\n");
}

TEST(LogLine, WhatIsTooLongIsCutAndReadsAllTheSame) {
  FakeSystem system;
  LogLine(system, 0, "begin").Text(std::string(5000, '"').c_str()).Write();
  const plan::Log log = plan::ParseLog(system.log, "log");
  ASSERT_EQ(log.entries.size(), 1u);
  EXPECT_GT(log.entries[0].texts.at(0).size(), 500u);
}

TEST(Words, AreJoinedAndCut) {
  EXPECT_STREQ(Words().Add("a ").Add(120).Add(" b").Get(), "a 120 b");
  EXPECT_EQ(std::string(Words().Add(std::string(1000, 'x').c_str()).Get()), std::string(399, 'x'));
}

}  // namespace
}  // namespace check
