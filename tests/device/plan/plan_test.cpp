// Plans: every line read and printed, and what is no plan refused by line and reason.
#include "device/plan/plan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

namespace plan {
namespace {

using testing::ElementsAre;

constexpr const char* kBegin = "vexoplan 1\nscript \"a.vexo\"\nstep 1 \"attach\"\n";

Plan Parsed(const std::string& lines) { return ParsePlan(kBegin + lines + "end\n", "p"); }

Step Only(const std::string& lines) {
  Plan plan = Parsed(lines);
  EXPECT_EQ(plan.steps.size(), 1u);
  return plan.steps.at(0);
}

std::string Refusal(const std::string& text) {
  try {
    ParsePlan(text, "p");
  } catch (const FormatError& error) {
    return error.what();
  }
  return "it is a plan";
}

std::string RefusalOf(const std::string& line) { return Refusal(kBegin + line + "\nend\n"); }

// The block of lines in the document that begins with this one.
std::string Documented(const std::string& first) {
  std::ifstream file(VEXO_SOURCE_DIR "/docs/plan-format.md");
  const std::string text((std::istreambuf_iterator<char>(file)), {});
  const std::size_t begin = text.find("```\n" + first) + 4;
  return text.substr(begin, text.find("```", begin) - begin);
}

struct ActionCase {
  const char* line;
  Action action;
};

class PlanAction : public testing::TestWithParam<ActionCase> {};

TEST_P(PlanAction, IsReadAndPrinted) {
  EXPECT_EQ(Only(std::string(GetParam().line) + '\n').action, GetParam().action);
  EXPECT_EQ(ActionInWords(GetParam().action), GetParam().line);
}

INSTANTIATE_TEST_SUITE_P(
    All, PlanAction,
    testing::Values(ActionCase{"load", {ActionKind::Load, 0, 0, {}, {}}},
                    ActionCase{"unload", {ActionKind::Unload, 0, 0, {}, {}}},
                    ActionCase{"initialize", {ActionKind::Initialize, 0, 0, {}, {}}},
                    ActionCase{"initialize invalid", {ActionKind::InitializeInvalid, 0, 0, {}, {}}},
                    ActionCase{"uninitialize", {ActionKind::Uninitialize, 0, 0, {}, {}}},
                    ActionCase{"debug 1", {ActionKind::Debug, 1, 0, {}, {}}},
                    ActionCase{"output 0", {ActionKind::Output, 0, 0, {}, {}}},
                    ActionCase{"version", {ActionKind::Version, 0, 0, {}, {}}},
                    ActionCase{"version -", {ActionKind::VersionNull, 0, 0, {}, {}}},
                    ActionCase{"command 0xF002 -", {ActionKind::Command, 0xF002, 0, {}, {}}},
                    ActionCase{"command 0xF003 0300FE",
                               {ActionKind::Command, 0xF003, 0, Bytes{0x03, 0x00, 0xFE}, {}}},
                    ActionCase{"motion 200 3 0102030405060708090A0B0C0D0E0F101112131415161718",
                               {ActionKind::Motion,
                                200,
                                3,
                                Bytes{1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12,
                                      13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24},
                                {}}},
                    ActionCase{R"(text "say \"\\ \x0A")",
                               {ActionKind::Text, 0, 0, {}, "say \"\\ \n"}},
                    ActionCase{"wait 4294967295", {ActionKind::Wait, 0xFFFFFFFF, 0, {}, {}}}));

TEST(Plan, AnActionKnowsItsLineItsScriptAndWhatStandsThere) {
  const Plan plan = Parsed("load\nscript \"b.vexo\"\nstep 12 \"vexo init\"\ntext \"vexo init \"\n");
  ASSERT_EQ(plan.steps.size(), 2u);
  EXPECT_EQ(plan.steps[0].line, 4u);
  EXPECT_EQ(plan.steps[0].script, "a.vexo");
  EXPECT_EQ(plan.steps[0].script_line, 1u);
  EXPECT_EQ(plan.steps[0].source, "attach");
  EXPECT_EQ(plan.steps[1].line, 7u);
  EXPECT_EQ(plan.steps[1].script, "b.vexo");
  EXPECT_EQ(plan.steps[1].script_line, 12u);
  EXPECT_EQ(plan.steps[1].source, "vexo init");
}

TEST(Plan, EveryExpectationIsRead) {
  const Step step = Only(
      "command 0xF001 00\n"
      "result -5\n"
      "record 28FE F8\n"
      "answer \"1. 0. 1. 6\"\n"
      "message 0x2401 0x1003 0x7\n"
      "message 0x2402 0 0 0400 FF\n"
      "register slave3 2 0xFE 0x28 0xF8\n"
      "register master 0 1 255\n"
      "cycles 1776 440\n"
      "prints \">> FINISH\"\n");
  EXPECT_EQ(step.result, -5);
  EXPECT_EQ(step.record, (MaskedBytes{{0x28, 0xFE}, {0xF8}}));
  EXPECT_EQ(step.answer, "1. 0. 1. 6");
  EXPECT_FALSE(step.any_messages);
  EXPECT_THAT(step.messages,
              ElementsAre(ExpectedMessage{8, 0x2401, 0x1003, 7, {}},
                          ExpectedMessage{9, 0x2402, 0, 0, MaskedBytes{{4, 0}, {0xFF}}}));
  EXPECT_THAT(step.registers, ElementsAre(ExpectedRegister{10, 3, 2, 0xFE, 0x28, 0xF8},
                                          ExpectedRegister{11, 0, 0, 1, 255, 0xFF}));
  EXPECT_EQ(step.cost, (Cost{1776, 440}));
  EXPECT_THAT(step.prints, ElementsAre(">> FINISH"));
  EXPECT_TRUE(Only("wait 5\nmessages any\n").any_messages);
}

TEST(Plan, BoardLinesStandBeforeTheFirstScript) {
  EXPECT_THAT(
      ParsePlan("vexoplan 1\nboard \"board chips 1\"\nboard \"camera 2 off\"\nend\n", "p").board,
      ElementsAre("board chips 1", "camera 2 off"));
  EXPECT_EQ(RefusalOf("board \"board chips 1\""),
            "p:4: expected board lines before the first script, found one");
}

TEST(Plan, CommentsBlankLinesAndCarriageReturnsSayNothing) {
  const Plan plan = ParsePlan("# of the bench\r\n\r\nvexoplan 1\r\nend # and no more\r\n", "p");
  EXPECT_TRUE(plan.steps.empty());
  EXPECT_EQ(plan.lines, 4u);
}

TEST(Plan, KnowsItsLinesAndTheChecksumOfItsBytes) {
  EXPECT_EQ(Checksum(""), 0x811C9DC5u);
  EXPECT_EQ(Checksum("foobar"), 0xBF9CF968u);  // of the algorithm's authors
  const std::string text = "vexoplan 1\nend\n";
  EXPECT_EQ(ParsePlan(text, "p").lines, 2u);
  EXPECT_EQ(ParsePlan(text, "p").checksum, Checksum(text));
}

TEST(Plan, WhatIsPrintedReadsTheSame) {
  Plan plan = Parsed(
      "load\nresult 1\nstep 2 \"x\"\ncommand 0xF001 0000\nrecord 28 F8\n"
      "message 0x2402 0x0 0x0 28 F8\nmessages any\ncycles 3 4\nprints \"a\\\\b\"\n"
      "register master 1 0x10 0xD4\nregister slave1 2 0x11 0x5 0xF\n"
      "script \"b.vexo\"\nstep 0 \"end\"\nversion\nanswer \"1\"\nunload\n");
  const std::string text = PrintPlan(plan);
  const Plan again = ParsePlan(text, "p");
  EXPECT_EQ(again.board, plan.board);
  EXPECT_EQ(PrintPlan(again), text);
  ASSERT_EQ(again.steps.size(), plan.steps.size());
  for (std::size_t i = 0; i < plan.steps.size(); ++i) {
    Step step = again.steps[i];
    step.line = plan.steps[i].line;
    ASSERT_EQ(step.messages.size(), plan.steps[i].messages.size());
    for (std::size_t k = 0; k < step.messages.size(); ++k) {
      step.messages[k].line = plan.steps[i].messages[k].line;
    }
    ASSERT_EQ(step.registers.size(), plan.steps[i].registers.size());
    for (std::size_t k = 0; k < step.registers.size(); ++k) {
      step.registers[k].line = plan.steps[i].registers[k].line;
    }
    EXPECT_EQ(step, plan.steps[i]);
  }
}

TEST(Plan, TheDocumentedOneIsPrintedAsItStands) {
  const std::string text = Documented("vexoplan 1");
  EXPECT_EQ(PrintPlan(ParsePlan(text, "p")), text);
}

TEST(MaskedBytes, LeaveOutWhatTheirMaskLeavesOut) {
  const MaskedBytes masked{{0x28, 0x01}, {0xF8}};
  EXPECT_TRUE(masked.Matches({0x2F, 0x01}));
  EXPECT_TRUE(masked.Matches({0x28, 0x01, 0x00}));
  EXPECT_FALSE(masked.Matches({0x28, 0x02}));
  EXPECT_FALSE(masked.Matches({0x38, 0x01}));
  EXPECT_FALSE(masked.Matches({0x28, 0x01, 0x01}));
  EXPECT_FALSE(masked.Matches({0x28}));
}

struct WrongLine {
  const char* line;
  const char* reason;
};

class PlanRefusal : public testing::TestWithParam<WrongLine> {};

TEST_P(PlanRefusal, NamesLineAndReason) {
  EXPECT_EQ(RefusalOf(GetParam().line), std::string("p:4: ") + GetParam().reason);
}

INSTANTIATE_TEST_SUITE_P(
    All, PlanRefusal,
    testing::Values(WrongLine{"lod", "expected a line of a plan, found 'lod'"},
                    WrongLine{"load 1", "expected the end of the line, found '1'"},
                    WrongLine{"debug 2", "expected 0 or 1, found '2'"},
                    WrongLine{"command 0xF001",
                              "expected 1 to 64 bytes of two hexadecimal digits each, found the "
                              "end of the line"},
                    WrongLine{"command 0xF001 0",
                              "expected 1 to 64 bytes of two hexadecimal digits each, found '0'"},
                    WrongLine{"command 0xF001 0g",
                              "expected 1 to 64 bytes of two hexadecimal digits each, found '0g'"},
                    WrongLine{"motion 256 0 00", "expected a channel 0 to 255, found '256'"},
                    WrongLine{"wait -1", "expected a number of milliseconds, found '-1'"},
                    WrongLine{"text \"a", "expected a closing quote, found the end of the line"},
                    WrongLine{"text \"a\\x00\"",
                              "expected a line of text of 255 characters at most, without a byte "
                              "00, found 'a"},
                    WrongLine{"result 0",
                              "expected an action before what is expected of it, found none"},
                    WrongLine{"\xC3\xA4", "expected ASCII text, found another byte"}));

TEST(Plan, AnExpectationStandsBehindAnActionOfItsOwnStep) {
  EXPECT_EQ(RefusalOf("load\nstep 2 \"x\"\nresult 1"),
            "p:6: expected an action before what is expected of it, found none");
  EXPECT_EQ(RefusalOf("load\nresult 1\nresult 1"), "p:6: expected one result line, found a second");
  EXPECT_EQ(RefusalOf("load\nrecord 00"),
            "p:5: expected a call with a record before it, found none");
  EXPECT_EQ(RefusalOf("load\nregister all 0 0 0"),
            "p:5: expected master, slave1, slave2 or slave3, found 'all'");
}

TEST(Plan, HasABeginAndAnEnd) {
  EXPECT_EQ(Refusal(""), "p:1: expected the line 'end', found the end of the file");
  EXPECT_EQ(Refusal("load\n"), "p:1: expected vexoplan, found 'load'");
  EXPECT_EQ(Refusal("vexoplan 2\n"), "p:1: expected 1, the format of this program, found '2'");
  EXPECT_EQ(Refusal("vexoplan 1\n"), "p:2: expected the line 'end', found the end of the file");
  EXPECT_EQ(Refusal("vexoplan 1\nend\nend\n"), "p:3: expected nothing behind the end, found 'end'");
  EXPECT_EQ(Refusal("vexoplan 1\nload\nend\n"),
            "p:2: expected a step before the first action, found none");
  EXPECT_EQ(Refusal("vexoplan 1\nstep 1 \"x\"\nend\n"),
            "p:2: expected a script before the first step, found none");
}

TEST(Plan, MayNotBeEndless) {
  EXPECT_EQ(Refusal("vexoplan 1\n" + std::string(100'000, '\n')),
            "p: expected a plan of 1 MiB and 100,000 lines at most, found 100011 bytes and 100001 "
            "lines");
  EXPECT_EQ(Refusal("vexoplan 1\n#" + std::string(4000, ' ') + "\n"),
            "p:2: expected a line of 4000 characters at most, found 4001");
}

}  // namespace
}  // namespace plan
