// Plans played on a device that a test is: what is called, what the log says, what is counted.
#include "device/check/player.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "device/plan/log.h"
#include "device/plan/plan.h"
#include "tests/device/check/fake_system.h"

namespace check {
namespace {

using plan::EntryKind;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* kBegin = "vexoplan 1\nscript \"a\"\nstep 1 \"x\"\n";

class PlayerTest : public testing::Test {
 protected:
  PlayerTest() { system_.player = &player_; }

  // The entries of the log, after one that every log begins with.
  std::vector<plan::Entry> Play(const std::string& lines) {
    const std::string text = kBegin + lines + "end\n";
    played_ = player_.Play(text.data(), static_cast<unsigned>(text.size()));
    player_.Finish(nullptr);
    log_ = plan::ParseLog("0 0 begin \"x\"\n" + system_.log, "log");
    EXPECT_TRUE(log_.Whole());
    return log_.entries;
  }

  // As expected, and not.
  std::pair<std::int64_t, std::int64_t> Counts() const {
    const plan::Entry& end = log_.entries.back();
    return {end.numbers.at(0), end.numbers.at(1)};
  }

  std::string Kinds() const {
    std::string kinds;
    for (const plan::Entry& entry : log_.entries) {
      kinds += std::to_string(entry.plan_line) + ' ' + std::string(plan::WordOf(entry.kind)) + '\n';
    }
    return kinds;
  }

  const plan::Entry* Find(EntryKind kind) const {
    for (const plan::Entry& entry : log_.entries) {
      if (entry.kind == kind) return &entry;
    }
    return nullptr;
  }

  FakeSystem system_;
  Player player_{system_};
  plan::Log log_;
  bool played_ = false;
};

using Counted = std::pair<std::int64_t, std::int64_t>;

TEST_F(PlayerTest, CallsWhatThePlanSays) {
  Play(
      "load\ninitialize\ninitialize invalid\ndebug 1\noutput 0\nversion\nversion -\n"
      "command 0xF002 -\ncommand 0xF005 07\nmotion 9 2 01\ntext \"vexo rver \"\nwait 30\n"
      "uninitialize\nunload\n");
  EXPECT_TRUE(played_);
  EXPECT_THAT(system_.calls,
              ElementsAre("load", "initialize", "initialize invalid", "debug 1", "output 0",
                          "version", "version -", "command 61442 -", "command 61445 7",
                          "motion 9 2 0", "text vexo rver ", "wait 30", "uninitialize", "unload"));
}

TEST_F(PlayerTest, TellsOfACallBeforeAndAfterIt) {
  Play("load\nresult 1\nversion\nanswer \"1. 0. 1. 6\"\nresult 10\ncommand 0xF001 00\n");
  EXPECT_EQ(
      Kinds(),
      "0 begin\n0 plan\n4 called\n4 returned\n4 took\n6 called\n6 returned\n6 took\n6 answer\n"
      "9 called\n9 returned\n9 took\n9 record\n0 summary\n0 end\n");
  EXPECT_EQ(Counts(), Counted(3, 0));
}

TEST_F(PlayerTest, NamesThePlanByItsLinesAndItsChecksum) {
  Play("wait 1\n");
  const std::string text = std::string(kBegin) + "wait 1\nend\n";
  EXPECT_THAT(Find(EntryKind::Plan)->numbers, ElementsAre(5, plan::Checksum(text)));
}

TEST_F(PlayerTest, APlanThatIsWrongIsNotBegun) {
  Play("load\nfly\n");
  EXPECT_FALSE(played_);
  EXPECT_THAT(system_.calls, IsEmpty());
  ASSERT_NE(Find(EntryKind::Wrong), nullptr);
  EXPECT_EQ(Find(EntryKind::Wrong)->plan_line, 5u);
  EXPECT_THAT(Find(EntryKind::Wrong)->texts, ElementsAre("expected a line of a plan"));
}

TEST_F(PlayerTest, MeasuresACallWithoutWhatTheLogTakes) {
  system_.meanwhile = [this] { system_.Send(0x2401, 7); };
  Play("load\nmessage 0x2401 0x7 0x0\n");
  EXPECT_EQ(Find(EntryKind::Took)->numbers.at(0), 250);
}

TEST_F(PlayerTest, ResultsRecordsAndAnswersAreCompared) {
  system_.result = -8;
  system_.record_after[1] = 0x2F;
  Play("load\ncommand 0xF001 00\nresult 0\nrecord 0028 FFF8\nrecord 00\nversion\nanswer \"2\"\n");
  EXPECT_FALSE(played_);  // of one kind only one
  system_.log.clear();
  Play("load\ncommand 0xF001 00\nresult 0\nrecord 0028 FFF8\nversion\nanswer \"2\"\n");
  EXPECT_EQ(Counts(), Counted(1, 2));
  EXPECT_THAT(Find(EntryKind::Summary)->texts.at(0),
              "1 results are as expected, 2 differ; the first difference is seen at line 6 of the "
              "plan.");
}

TEST_F(PlayerTest, ARecordOfZerosIsExpectedBehindWhatIsGiven) {
  system_.record_after[63] = 1;
  Play("load\ncommand 0xF001 00\nrecord 00\n");
  EXPECT_EQ(Counts(), Counted(0, 1));
}

TEST_F(PlayerTest, MessagesAreComparedInTheirOrder) {
  system_.meanwhile = [this] {
    if (system_.calls.back() != "wait 5") return;
    system_.Send(0x2403, 0, {1, 2, 3});
    system_.Send(0x2404, 5);
    system_.Send(0x2405, 0x01010101);
  };
  Play("wait 5\nmessage 0x2403 0x0 0x0 0102FF FFFF00\nmessage 0x2405 0x1010101 0x0\n");
  EXPECT_EQ(Counts(), Counted(2, 0));
  EXPECT_THAT(system_.log, HasSubstr(" message 0x2404 0x5 0x0\n"));
}

TEST_F(PlayerTest, AMessageThatDiffersIsMissingOrTooMuchIsADifference) {
  system_.meanwhile = [this] { system_.Send(0x2401, 5); };
  Play("wait 5\nmessage 0x2401 0x6 0x0\n");
  EXPECT_EQ(Counts(), Counted(0, 1));
  system_.log.clear();
  Play("wait 5\nmessage 0x2401 0x5 0x0\nmessage 0x2401 0x5 0x0\n");
  EXPECT_EQ(Counts(), Counted(1, 2));  // with the one before
  system_.log.clear();
  Play("wait 5\n");
  EXPECT_EQ(Counts(), Counted(1, 3));
  system_.log.clear();
  Play("wait 5\nmessages any\n");
  EXPECT_EQ(Counts(), Counted(1, 3));
}

TEST_F(PlayerTest, RegistersAreReadWithoutDebugOutputAndWithoutAMessage) {
  system_.registers[{0x03, 1, 0x10}] = 0xD4;
  system_.registers[{0xC0, 0, 0x01}] = 0xC9;
  Play("load\nregister master 1 0x10 0xD4\nregister slave3 0 1 0xC8 0xFE\nwait 1\n");
  EXPECT_EQ(Counts(), Counted(2, 0));
  EXPECT_THAT(system_.calls, ElementsAre("load", "output 0", "read", "read", "output 1", "wait 1"));
  EXPECT_EQ(Find(EntryKind::Message), nullptr);
  EXPECT_EQ(Find(EntryKind::Value)->plan_line, 5u);
  EXPECT_EQ(Find(EntryKind::Value)->numbers.at(0), 0xD4);
}

TEST_F(PlayerTest, AReadThatWentAstrayIsMadeAgainButNotForEver) {
  system_.astray = 2;
  Play("load\nregister master 1 0x10 0\n");
  EXPECT_EQ(Counts(), Counted(1, 0));
  EXPECT_EQ(std::count(system_.calls.begin(), system_.calls.end(), "read"), 3);
  system_.log.clear();
  system_.calls.clear();
  system_.astray = 3;
  Play("unload\nload\nregister master 1 0x10 0\n");
  EXPECT_EQ(Counts(), Counted(1, 1));
  EXPECT_EQ(std::count(system_.calls.begin(), system_.calls.end(), "read"), 3);
}

TEST_F(PlayerTest, OutputThatThePlanTurnedOffStaysOff) {
  Play("load\noutput 0\nregister master 1 0x10 0\nwait 1\n");
  EXPECT_THAT(system_.calls, ElementsAre("load", "output 0", "output 0", "read", "wait 1"));
}

TEST_F(PlayerTest, ARegisterThatDiffersOrCannotBeReadIsADifference) {
  Play("load\nregister master 1 0x10 0xD4\n");
  EXPECT_EQ(Counts(), Counted(0, 1));
  system_.log.clear();
  system_.read_result = -8;
  Play("register master 1 0x10 0\n");
  EXPECT_EQ(Find(EntryKind::Unread), nullptr);
  EXPECT_EQ(Counts(), Counted(0, 1));
}

TEST_F(PlayerTest, WithoutTheLibraryItsActionsAreNotCalled) {
  system_.load_error = 126;
  Play("load\nresult 1\ninitialize\nresult 0\nwait 3\nunload\n");
  EXPECT_THAT(system_.calls, ElementsAre("load", "wait 3"));
  EXPECT_THAT(Find(EntryKind::Error)->numbers, ElementsAre(126));
  EXPECT_EQ(Find(EntryKind::Returned)->numbers.at(0), 0);
  EXPECT_EQ(Counts(), Counted(0, 2));
}

TEST_F(PlayerTest, ACallWhoseExportIsMissingIsNotMade) {
  system_.exports = false;
  Play("load\ninitialize\nresult 0\nunload\n");
  EXPECT_THAT(system_.calls, ElementsAre("load", "unload"));
  EXPECT_EQ(Counts(), Counted(0, 1));
}

TEST_F(PlayerTest, MoreMessagesThanThereIsRoomForAreADifference) {
  system_.meanwhile = [this] {
    for (int i = 0; i < 65; ++i) system_.Send(0x2401, 1);
  };
  std::string lines = "wait 1\n";
  for (int i = 0; i < 64; ++i) lines += "message 0x2401 0x1 0x0\n";
  Play(lines);
  EXPECT_EQ(Counts(), Counted(64, 1));
}

}  // namespace
}  // namespace check
