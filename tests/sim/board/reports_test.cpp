#include "sim/board/reports.h"

#include <gtest/gtest.h>

namespace sim {
namespace {

TEST(Reports, TheSameReportIsKeptOnceAndCounted) {
  Reports reports;
  const Report a = {.kind = ReportKind::Contention, .select = 0x5D, .chips = 2, .reg = 0x30};
  Report b = a;
  b.reg = 0x31;
  const Report wide = {.kind = ReportKind::WideAccess, .window = BusWindow::Select, .bytes = 4};
  for (const Report& report : {a, b, a, wide}) reports.Add(report);
  Report twice = a;
  twice.count = 2;
  EXPECT_EQ(reports.All(), (std::vector<Report>{twice, b, wide}));
  EXPECT_EQ(reports.Count(ReportKind::Contention), 3u);
  EXPECT_EQ(reports.Count(ReportKind::WideAccess), 1u);
  EXPECT_EQ(reports.Count(ReportKind::UnmappedAccess), 0u);
}

TEST(Reports, AnythingElseMakesAnotherReport) {
  const Report all[] = {{.kind = ReportKind::UnmappedAccess},
                        {.access = Report::Access::Write},
                        {.access = Report::Access::Unmap},
                        {.select = 0x5D},
                        {.chips = 2},
                        {.window = BusWindow::Address},
                        {.bytes = 2},
                        {.position = 1},
                        {.page = 1},
                        {.reg = 1}};
  Reports reports;
  for (const Report& report : all) reports.Add(report);
  EXPECT_EQ(reports.All().size(), std::size(all));
}

}  // namespace
}  // namespace sim
