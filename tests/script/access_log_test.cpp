// Which accesses of the bus are remembered, and by which cycles they are found.
#include "script/access_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "chip/registers.h"
#include "sim/world.h"
#include "tests/script/script_run.h"

namespace script {
namespace {

using testing::HasSubstr;

class AccessLogTest : public testing::Test {
 protected:
  AccessLogTest() {
    sim::ResetWorld();
    sim::TheWorld().trace.SetCapacity(0);
    sim::TheWorld().trace.AddListener(log_);
  }
  ~AccessLogTest() override { sim::ResetWorld(); }

  static void Cycle(bool load, sim::BusWindow window, std::uint8_t value) {
    sim::TheWorld().trace.AddCycle(0, sim::By::Host, load, window, value);
  }
  // Three cycles.
  static void Write(std::uint8_t reg, std::uint8_t value) {
    Cycle(false, sim::BusWindow::Select, kChipMaster);
    Cycle(false, sim::BusWindow::Address, reg);
    Cycle(false, sim::BusWindow::Data, value);
  }

  AccessLog log_;
};

TEST_F(AccessLogTest, AnAccessIsOfTheCycleThatReachesTheRegister) {
  Write(0x10, 1);
  Write(0x20, 2);
  EXPECT_EQ(log_.Between(1, 2).size(), 0U);
  ASSERT_EQ(log_.Between(1, 3).size(), 1U);
  EXPECT_EQ(log_.Between(1, 3)[0].reg, 0x10);
  ASSERT_EQ(log_.Between(4, 6).size(), 1U);
  EXPECT_EQ(log_.Between(4, 6)[0].reg, 0x20);
  EXPECT_EQ(log_.Between(3, 6).size(), 2U);
  EXPECT_EQ(log_.Between(7, 100).size(), 0U);
  EXPECT_EQ(log_.Known(), 1U);
}

TEST_F(AccessLogTest, ATableAndAReadAreAnAccessForEachOfTheirBytes) {
  Write(0x30, 1);
  Cycle(false, sim::BusWindow::Data, 2);
  Cycle(true, sim::BusWindow::Data, 3);
  const auto accesses = log_.Between(3, 5);
  ASSERT_EQ(accesses.size(), 3U);
  EXPECT_EQ(accesses[1].reg, 0x31);
  EXPECT_FALSE(accesses[1].read);
  EXPECT_EQ(accesses[2].reg, 0x32);
  EXPECT_EQ(accesses[2].value, 3);
  EXPECT_TRUE(accesses[2].read);
}

TEST_F(AccessLogTest, TheLastOnesAreKept) {
  for (std::size_t i = 0; i < AccessLog::kMost; ++i) Write(0x10, 1);
  EXPECT_EQ(log_.Known(), 1U);
  Write(0x11, 1);
  EXPECT_EQ(log_.Known(), 4U);
  EXPECT_EQ(log_.Between(1, 3).size(), 0U);
  constexpr std::uint64_t kEnd = 3 * (AccessLog::kMost + 1);
  EXPECT_EQ(log_.Between(1, kEnd).size(), AccessLog::kMost);
  EXPECT_EQ(log_.Between(1, kEnd).back().reg, 0x11);
  ASSERT_EQ(log_.Between(kEnd - 3, kEnd).size(), 2U);
  EXPECT_EQ(log_.Between(kEnd - 3, kEnd)[0].reg, 0x10);
  EXPECT_EQ(log_.Between(kEnd - 3, kEnd)[1].reg, 0x11);
}

class AccessesLine : public ScriptRunTest {};

TEST_F(AccessesLine, IsRefusedWithoutTwoCyclesInTheirOrder) {
  EXPECT_EQ(Run("accesses 5 4"), kExitWrong);
  EXPECT_THAT(Err(), HasSubstr("the number of a later bus cycle"));
  EXPECT_EQ(Run("accesses 0 4"), kExitWrong);
}

}  // namespace
}  // namespace script
