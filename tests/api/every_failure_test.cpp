// Every platform call that can fail fails once, and from then on: nothing breaks, hangs or leaks,
// and the next session in the same process works.
//
// Of calls that are made thousands of times some are taken; with VEXO_EVERY_FAILURE=1 in the
// environment every single one.
#include <gtest/gtest.h>

#include <cstdlib>

#include "harness/host.h"
#include "tests/api/failure_session.h"

namespace test {
namespace {

using sim::Fault;

class EveryFailure : public testing::TestWithParam<std::size_t> {
 protected:
  void TearDown() override { harness::Restart(); }

  static unsigned Most() { return std::getenv("VEXO_EVERY_FAILURE") != nullptr ? 1'000'000 : 12; }
};

TEST_P(EveryFailure, LeavesNothingBrokenAndTheNextSessionWorks) {
  const auto fault = static_cast<Fault>(GetParam());
  const SessionEnd undisturbed = RunSession(std::nullopt);
  const std::uint64_t calls = undisturbed.calls.at(GetParam());
  ASSERT_GE(calls, 1u) << "the session makes no such call";
  unsigned sessions = 0;
  for (const std::uint64_t number : Numbers(calls, Most())) {
    for (const auto& plan : {sim::Faults::Nth(number), sim::Faults::From(number)}) {
      const Failure failure{fault, plan};
      SCOPED_TRACE(testing::PrintToString(failure));
      ExpectGoodEnd(RunSession(failure), undisturbed, failure);
      ++sessions;
      if (HasFatalFailure()) return;
    }
  }
  RecordProperty("calls", static_cast<int>(calls));
  RecordProperty("sessions", static_cast<int>(sessions));
}

INSTANTIATE_TEST_SUITE_P(Calls, EveryFailure, testing::Range(std::size_t{0}, sim::kFaults.size()),
                         [](const auto& row) {
                           std::string name(sim::kFaults.at(row.param).word);
                           std::erase(name, '-');
                           return name;
                         });

TEST(UndisturbedSession, EndsInPeace) {
  const SessionEnd end = RunSession(std::nullopt);
  EXPECT_FALSE(end.waited_for_ever);
  EXPECT_EQ(end.lock_depth, 0u);
  EXPECT_EQ(end.keeping_calls, 0u);
  EXPECT_EQ(end.threads, 0u);
  EXPECT_EQ(end.windows, 0u);
  EXPECT_FALSE(end.marked);
  EXPECT_EQ(end.next.results, (std::vector<int>{1, 0, 0, 0, 0, 0}));
  EXPECT_TRUE(end.next.video_told);
  harness::Restart();
}

}  // namespace
}  // namespace test
