#include "script/report_words.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sim/world.h"

namespace script {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Access = sim::Report::Access;
using sim::ReportKind;

sim::Report Unnamed(Access access, unsigned position, std::uint8_t reg, unsigned count = 1) {
  return {.kind = ReportKind::UnnamedRegister,
          .access = access,
          .position = position,
          .page = 1,
          .reg = reg,
          .count = count};
}

TEST(Warnings, AreNoneForNoReport) { EXPECT_THAT(WarningsInWords({}), IsEmpty()); }

TEST(Warnings, SayWhatWasNoticedAndHowOften) {
  using enum ReportKind;
  const std::vector<sim::Report> reports = {
      {.kind = WideAccess, .access = Access::Write, .window = sim::BusWindow::Select, .bytes = 4},
      {.kind = WideAccess, .window = sim::BusWindow::Data, .bytes = 2},
      {.kind = WideAccess, .window = sim::BusWindow::Address, .bytes = 2},
      {.kind = Contention, .select = 0x55, .chips = 4, .reg = 0x30, .count = 3},
      {.kind = UnmappedAccess, .access = Access::Read},
      {.kind = UnmappedAccess, .access = Access::Write, .count = 2},
      {.kind = UnmappedAccess, .access = Access::Unmap}};
  EXPECT_THAT(WarningsInWords(reports),
              ElementsAre("4-byte store to the select window", "2-byte load from the data window",
                          "2-byte load from the address window",
                          "read of register 0x30 with 4 chips selected (0x55) (3 times)",
                          "a load from a window that is not mapped",
                          "a store to a window that is not mapped (2 times)",
                          "unmapping a window that is not mapped"));
}

TEST(Warnings, JoinNeighboursWithoutAName) {
  const std::vector<sim::Report> reports = {
      Unnamed(Access::Read, 0, 0x09), Unnamed(Access::Read, 0, 0x0A),
      Unnamed(Access::Read, 0, 0x0B), Unnamed(Access::Read, 0, 0xFE),
      Unnamed(Access::Read, 0, 0xFF), Unnamed(Access::Read, 0, 0x00)};
  EXPECT_THAT(WarningsInWords(reports),
              ElementsAre("read of MASTER page 1 registers 0x09 to 0x0B, which have no name",
                          "read of MASTER page 1 registers 0xFE to 0xFF, which have no name",
                          "read of MASTER page 1 register 0x00, which has no name"));
}

TEST(Warnings, JoinOnlyTheSameAccessJustAsOften) {
  const std::vector<sim::Report> reports = {
      Unnamed(Access::Read, 0, 0x40),     Unnamed(Access::Write, 0, 0x41),
      Unnamed(Access::Write, 1, 0x42),    Unnamed(Access::Write, 1, 0x43, 2),
      Unnamed(Access::Write, 1, 0x44, 2), {.kind = ReportKind::WideAccess, .bytes = 2},
      Unnamed(Access::Write, 1, 0x45, 2)};
  EXPECT_THAT(
      WarningsInWords(reports),
      ElementsAre("read of MASTER page 1 register 0x40, which has no name",
                  "write to MASTER page 1 register 0x41, which has no name",
                  "write to SLAVE1 page 1 register 0x42, which has no name",
                  "write to SLAVE1 page 1 registers 0x43 to 0x44, which have no name (2 times)",
                  "2-byte load from the data window",
                  "write to SLAVE1 page 1 register 0x45, which has no name (2 times)"));
}

// Contentions of neighbours stay apart: only registers without a name are told as ranges.
TEST(Warnings, JoinNoOtherNeighbours) {
  const sim::Report first = {
      .kind = ReportKind::Contention, .select = 0x5D, .chips = 2, .reg = 0x30};
  sim::Report second = first;
  second.reg = 0x31;
  EXPECT_THAT(WarningsInWords(std::vector{first, second}),
              ElementsAre("read of register 0x30 with 2 chips selected (0x5D)",
                          "read of register 0x31 with 2 chips selected (0x5D)"));
}

TEST(Warnings, TellWhatTheBoardNoticed) {
  sim::Reports reports;
  sim::Board board(reports);
  board.Store(sim::BusWindow::Select, 0xFD);  // master, page 1
  board.Store(sim::BusWindow::Address, 0xB0);
  for (int i = 0; i < 3; ++i) board.Load(sim::BusWindow::Data);
  board.Store(sim::BusWindow::Data, 0);
  board.Store(sim::BusWindow::Data, 0);
  EXPECT_THAT(WarningsInWords(reports.All()),
              ElementsAre("read of MASTER page 1 registers 0xB0 to 0xB2, which have no name",
                          "write to MASTER page 1 registers 0xB3 to 0xB4, which have no name"));
}

}  // namespace
}  // namespace script
