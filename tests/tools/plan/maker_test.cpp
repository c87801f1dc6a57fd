// Plans made of scripts: what is expected of any board, and what no board can be asked for.
#include "tools/vexosim/plan/maker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>

#include "tools/vexosim/plan/scope.h"

namespace vexosim {
namespace {

using plan::ActionKind;
using plan::Step;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kUp = "board chips 1\nattach\nwindow\ncommand 0xF001\n";

std::vector<script::Script> Read(const std::string& text, const std::string& name = "a.vexo") {
  std::istringstream in(text);
  return script::ParseScript(in, name);
}

plan::Plan PlanOf(const std::string& text) { return MakePlan(Read(text)); }

std::string Refusal(const std::string& text) {
  try {
    PlanOf(text);
  } catch (const NoPlan& error) {
    return error.what();
  }
  return "it is a plan";
}

// The step of this script line, the first one if there are several.
const Step& StepOf(const plan::Plan& plan, unsigned line) {
  return *std::find_if(plan.steps.begin(), plan.steps.end(),
                       [line](const Step& step) { return step.script_line == line; });
}

const plan::ExpectedRegister* Find(const Step& step, std::uint8_t page, std::uint8_t number) {
  const auto found =
      std::find_if(step.registers.begin(), step.registers.end(),
                   [=](const auto& each) { return each.page == page && each.number == number; });
  return found == step.registers.end() ? nullptr : &*found;
}

std::vector<std::string> Actions(const plan::Plan& plan) {
  std::vector<std::string> actions;
  for (const Step& step : plan.steps) actions.push_back(plan::ActionInWords(step.action));
  return actions;
}

TEST(MakePlan, PlaysTheCallsAndLeavesTheLibraryUnloaded) {
  const plan::Plan plan = PlanOf(
      "attach\nwindow\nwindow invalid\nwindow\ndebug 7\noutput 0\nversion\nversion null\n"
      "command read-reg chip master page 0 reg 0xFE\ncommand 0xF002 null\nrun 20\nwait 5\n"
      "vexo init\n");
  EXPECT_THAT(Actions(plan),
              ElementsAre("load", "initialize", "initialize invalid", "initialize", "debug 1",
                          "output 0", "version", "version -", "command 0xF003 0300FE",
                          "command 0xF002 -", "wait 20", "wait 5", "text \"vexo init \"",
                          "wait 100", "command 0xF002 -", "uninitialize", "unload"));
  EXPECT_EQ(plan.steps[2].source, "window invalid");
  EXPECT_EQ(plan.steps[2].script_line, 3u);
  EXPECT_EQ(plan.steps.back().script_line, 0u);
  EXPECT_EQ(plan.steps.back().source, "the script ends");
}

TEST(MakePlan, WhatTheScriptUnloadsItselfStaysUnloaded) {
  EXPECT_THAT(Actions(PlanOf("attach\ndetach\nrun 5\n")), ElementsAre("load", "unload", "wait 5"));
}

TEST(MakePlan, EachOfSeveralCallsOfALineIsAnAction) {
  const plan::Plan plan = PlanOf("attach\nmotioninfo all 1 " + [] {
    std::string bytes;
    for (int i = 0; i < 24; ++i) bytes += " 0F";
    return bytes;
  }() + "\n");
  const auto calls = std::count_if(plan.steps.begin(), plan.steps.end(), [](const Step& step) {
    return step.action.kind == ActionKind::Motion && step.script_line == 2;
  });
  EXPECT_EQ(calls, 16);
}

TEST(MakePlan, ExpectsResultsRecordsAndAnswers) {
  const plan::Plan plan = PlanOf(std::string(kUp) + "command 0x1234 null\nversion\nrun 1\n");
  EXPECT_EQ(StepOf(plan, 2).result, 1);
  EXPECT_EQ(StepOf(plan, 5).result, -1);
  EXPECT_EQ(StepOf(plan, 6).result, 10);
  EXPECT_EQ(StepOf(plan, 6).answer, "1. 0. 1. 6");
  EXPECT_EQ(StepOf(plan, 7).result, std::nullopt);
  // One chip, of any revision.
  plan::MaskedBytes record;
  record.bytes = plan::Bytes(21);
  record.bytes[12] = 1;
  record.bytes[20] = 0x28;
  record.mask = plan::Bytes(20, 0xFF);
  record.mask.push_back(0xF8);
  EXPECT_EQ(StepOf(plan, 4).record, record);
}

TEST(MakePlan, ExpectsRegistersThatACallSetsAndNoOthers) {
  const plan::Plan plan = PlanOf(std::string(kUp) +
                                 "command write-reg chip master page 1 reg 0x6F value 0x5A\n"
                                 "command write-reg chip master page 1 reg 0x6F value 0x5A\n");
  EXPECT_THAT(StepOf(plan, 5).registers,
              ElementsAre(plan::ExpectedRegister{0, 0, 1, 0x6F, 0x5A, 0xFF}));
  EXPECT_THAT(StepOf(plan, 6).registers, IsEmpty());
  // All that is known stands at the script's end, and so does nothing that is not.
  const Step& end = StepOf(plan, 0);
  EXPECT_NE(Find(end, 1, 0x6F), nullptr);
  EXPECT_GT(end.registers.size(), 300u);
  EXPECT_THAT(StepOf(plan, 2).registers, IsEmpty());
}

TEST(MakePlan, LeavesOutWhatTheChipOwnsAndWhatNothingHasWritten) {
  const plan::Plan plan = PlanOf(kUp);
  const Step& end = StepOf(plan, 0);
  EXPECT_EQ(Find(end, 0, 0xFE), nullptr);  // identification
  const plan::ExpectedRegister* const input = Find(end, 0, 0x01);
  ASSERT_NE(input, nullptr);
  EXPECT_EQ(input->mask, 0xFE);  // whether it is NTSC is the camera's
}

TEST(MakePlan, AsksForNoRegisterBeforeTheChipsAreReady) {
  const plan::Plan plan = PlanOf("attach\nwindow\ncommand 0xF003 03 00 FE\n");
  for (const Step& step : plan.steps) EXPECT_THAT(step.registers, IsEmpty());
}

TEST(MakePlan, ExpectsMessagesInTheirOrderAndNoneOfMotion) {
  const plan::Plan plan = PlanOf(std::string(kUp) + "run 100\n");
  const Step& run = StepOf(plan, 5);
  EXPECT_FALSE(run.any_messages);
  ASSERT_FALSE(run.messages.empty());
  EXPECT_EQ(run.messages.front().message, 0x2403u);
  ASSERT_TRUE(run.messages.front().record);
  for (const auto& message : run.messages) EXPECT_NE(message.message, plan::kMotionMessage);
}

TEST(MakePlan, CountsTheCyclesOfACallThatDependOnNoChip) {
  const plan::Plan plan =
      PlanOf(std::string(kUp) + "output 0\ncommand dump-master-p0 null\nrun 9\n");
  EXPECT_FALSE(StepOf(plan, 4).cost);  // it waits until the chips have settled
  ASSERT_TRUE(StepOf(plan, 6).cost);
  EXPECT_GT(StepOf(plan, 6).cost->cycles, 500u);
  EXPECT_EQ(StepOf(plan, 6).cost->slept_ms, 0u);
  EXPECT_FALSE(StepOf(plan, 7).cost);
}

TEST(MakePlan, KeepsTextsButThoseOfABuildOrAThread) {
  const plan::Plan plan = PlanOf(kUp);
  EXPECT_THAT(StepOf(plan, 4).prints, Contains("[VexoCtrlSDK]: >> FINISH NTSC CAMERA!!"));
  EXPECT_THAT(plan::PrintPlan(plan), Not(HasSubstr(">> build")));
  EXPECT_THAT(plan::PrintPlan(plan), Not(HasSubstr("THREAD_ID")));
}

TEST(MakePlan, NamesTheBench) {
  EXPECT_THAT(PlanOf("attach\n").board, ElementsAre("board chips 4"));
  EXPECT_THAT(PlanOf("board chips 2\ncamera 3 off\nnvram record MDVR 1 8\nattach\n").board,
              ElementsAre("board chips 2", "camera 3 off", "nvram record MDVR 1 8"));
}

TEST(MakePlan, IsForOneBench) {
  std::vector<script::Script> scripts = Read("attach\n");
  scripts.push_back(Read("attach\n", "b.vexo").front());
  EXPECT_EQ(MakePlan(scripts).steps.size(), 10u);
  scripts.push_back(Read("board chips 2\nattach\n", "c.vexo").front());
  try {
    MakePlan(scripts);
    FAIL() << "two benches";
  } catch (const NoPlan& error) {
    EXPECT_STREQ(error.what(),
                 "c.vexo: a plan is for one bench, and the script before has another board");
  }
}

TEST(MakePlan, TheScriptsOwnExpectationsMustBeMet) {
  EXPECT_EQ(Refusal("attach\nexpect return 0\n"), "a.vexo:2: expect return 0: returned 1");
}

TEST(MakePlan, RefusesWhatNobodyCanDoAtABoard) {
  const std::string attached = "attach\nwindow\n";
  EXPECT_EQ(Refusal(attached + "camera 2 off\n"),
            "a.vexo:3: camera 2 off: nobody is at the board while a plan runs: it changes before "
            "the first call");
  EXPECT_EQ(Refusal(attached + "fault send on\n"),
            "a.vexo:3: fault send on: nobody is at the board while a plan runs: it changes before "
            "the first call");
  EXPECT_EQ(Refusal("fault send on\nattach\n"),
            "a.vexo:1: fault send on: a real board cannot be told so");
  EXPECT_EQ(Refusal("driver CAM1: null\nattach\n"),
            "a.vexo:1: driver CAM1: null: a real board cannot be told so");
  EXPECT_EQ(Refusal("motion 2 on\nattach\n"),
            "a.vexo:1: motion 2 on: what moves before the cameras is in no plan");
  EXPECT_EQ(Refusal(attached + "undo\n"),
            "a.vexo:3: undo: it is about a session on the simulated board; a plan runs once, from "
            "its begin to its end");
  EXPECT_EQ(Refusal(attached + "lowmem\n"),
            "a.vexo:3: lowmem: the system alone calls the library's entry: attach and detach load "
            "and unload it");
  EXPECT_EQ(Refusal("attach\ndetach\nattach\n"),
            "a.vexo:3: attach: the library is loaded once in a script: it would begin anew");
  EXPECT_EQ(Refusal("window\n"),
            "a.vexo:1: window: the library is not loaded here: attach comes first");
  EXPECT_EQ(Refusal(attached + "text \"" + std::string(256, 'x') + "\"\n").substr(0, 20),
            "a.vexo:3: text \"xxxx");
}

// Of the scripts of the tests those that a bench can have.
class PlanOfScript : public testing::TestWithParam<const char*> {};

TEST_P(PlanOfScript, ReadsAsItIsPrinted) {
  std::ifstream in(VEXO_SOURCE_DIR "/tests/scripts/" + std::string(GetParam()) + ".vexo");
  const script::Script script = script::ParseScript(in, GetParam()).front();
  const plan::Plan plan = MakePlan(std::span(&script, 1));
  const std::string text = plan::PrintPlan(plan);
  const plan::Plan read = plan::ParsePlan(text, "p");
  EXPECT_EQ(plan::PrintPlan(read), text);
  ASSERT_EQ(read.steps.size(), plan.steps.size());
  for (std::size_t i = 0; i < plan.steps.size(); ++i) {
    EXPECT_EQ(read.steps[i].action, plan.steps[i].action);
    EXPECT_EQ(read.steps[i].registers.size(), plan.steps[i].registers.size());
  }
}

INSTANTIATE_TEST_SUITE_P(Scripts, PlanOfScript,
                         testing::Values("attach", "blank_mask_16ch", "channel_masks",
                                         "commands_before_init", "dump_output_off",
                                         "live_split_16ch", "motion_mask", "motion_setup",
                                         "play_and_back_16ch", "twelve_channels", "unknown_code",
                                         "vpb_requests", "window_invalid", "write_register"));

}  // namespace
}  // namespace vexosim
