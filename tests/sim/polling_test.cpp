// Notices of reads that nothing answers otherwise.
#include "sim/polling.h"

#include <gtest/gtest.h>

#include "platform/platform.h"
#include "tests/sim/fixture.h"

namespace sim {
namespace {

void Select(Polling& polling, std::uint8_t select, std::uint8_t reg) {
  polling.OnCycle(false, BusWindow::Select, select);
  polling.OnCycle(false, BusWindow::Address, reg);
}

TEST(Polling, CountsReadsUntilSomethingIsWritten) {
  Polling polling;
  Select(polling, 0xFD, 0x04);
  for (int i = 0; i < 3; ++i) polling.OnCycle(true, BusWindow::Data, 0x0F);
  EXPECT_EQ(polling.Reads(), 3u);
  polling.OnCycle(false, BusWindow::Data, 1);
  EXPECT_EQ(polling.Reads(), 0u);
  polling.OnCycle(true, BusWindow::Data, 0x0F);
  polling.Progress();
  EXPECT_EQ(polling.Reads(), 0u);
}

TEST(Polling, KnowsTheLastDifferentReads) {
  Polling polling;
  for (int i = 0; i < 100; ++i) {
    Select(polling, 0xFD, 0x04);
    polling.OnCycle(true, BusWindow::Data, 0x00);
    Select(polling, 0xF7, 0x04);
    polling.OnCycle(true, BusWindow::Data, 0xFF);
  }
  const std::vector<Polling::Read> expected = {{0xFD, 0x04, 0x00}, {0xF7, 0x04, 0xFF}};
  EXPECT_EQ(polling.Last(), expected);
}

TEST(Polling, TheAddressAdvancesWithEachRead) {
  Polling polling;
  Select(polling, 0xFD, 0x10);
  polling.OnCycle(true, BusWindow::Data, 1);
  polling.OnCycle(true, BusWindow::Data, 2);
  const std::vector<Polling::Read> expected = {{0xFD, 0x10, 1}, {0xFD, 0x11, 2}};
  EXPECT_EQ(polling.Last(), expected);
}

}  // namespace
}  // namespace sim
