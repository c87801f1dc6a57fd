#include "script/report_words.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sim/world.h"

namespace script {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto kUnnamed = sim::ReportKind::UnnamedRegister;

sim::Report Unnamed(const std::string& access, const std::string& digits, unsigned count = 1) {
  return {kUnnamed, access + " register 0x" + digits + ", which has no name", count};
}

TEST(Warnings, AreNoneForNoReport) { EXPECT_THAT(WarningsInWords({}), IsEmpty()); }

TEST(Warnings, SayWhatWasNoticedAndHowOften) {
  const std::vector<sim::Report> reports = {
      {sim::ReportKind::WideAccess, "4-byte store through the data window", 1},
      {sim::ReportKind::Contention, "read of register 0x30 with 4 chips selected (0x55)", 3}};
  EXPECT_THAT(WarningsInWords(reports),
              ElementsAre("4-byte store through the data window",
                          "read of register 0x30 with 4 chips selected (0x55) (3 times)"));
}

TEST(Warnings, JoinNeighboursWithoutAName) {
  const std::vector<sim::Report> reports = {
      Unnamed("read of MASTER page 1", "09"), Unnamed("read of MASTER page 1", "0A"),
      Unnamed("read of MASTER page 1", "0B"), Unnamed("read of MASTER page 1", "FE")};
  EXPECT_THAT(WarningsInWords(reports),
              ElementsAre("read of MASTER page 1 registers 0x09 to 0x0B, which have no name",
                          "read of MASTER page 1 register 0xFE, which has no name"));
}

TEST(Warnings, JoinOnlyTheSameAccessJustAsOften) {
  const std::vector<sim::Report> reports = {
      Unnamed("read of MASTER page 1", "40"),     Unnamed("write to MASTER page 1", "41"),
      Unnamed("write to SLAVE1 page 1", "42"),    Unnamed("write to SLAVE1 page 1", "43", 2),
      Unnamed("write to SLAVE1 page 1", "44", 2), {sim::ReportKind::WideAccess, "wide", 1},
      Unnamed("write to SLAVE1 page 1", "45", 2)};
  EXPECT_THAT(
      WarningsInWords(reports),
      ElementsAre("read of MASTER page 1 register 0x40, which has no name",
                  "write to MASTER page 1 register 0x41, which has no name",
                  "write to SLAVE1 page 1 register 0x42, which has no name",
                  "write to SLAVE1 page 1 registers 0x43 to 0x44, which have no name (2 times)",
                  "wide", "write to SLAVE1 page 1 register 0x45, which has no name (2 times)"));
}

// The words are the board's: they must be understood as it writes them.
TEST(Warnings, UnderstandTheBoard) {
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
