#include "sim/board/reports.h"

#include <gtest/gtest.h>

namespace sim {
namespace {

TEST(Reports, TheSameReportIsKeptOnceAndCounted) {
  Reports reports;
  reports.Add(ReportKind::Contention, "a");
  reports.Add(ReportKind::Contention, "b");
  reports.Add(ReportKind::Contention, "a");
  reports.Add(ReportKind::WideAccess, "a");
  ASSERT_EQ(reports.All().size(), 3u);
  EXPECT_EQ(reports.All()[0].text, "a");
  EXPECT_EQ(reports.All()[0].count, 2u);
  EXPECT_EQ(reports.All()[1].text, "b");
  EXPECT_EQ(reports.All()[2].kind, ReportKind::WideAccess);
  EXPECT_EQ(reports.Count(ReportKind::Contention), 3u);
  EXPECT_EQ(reports.Count(ReportKind::WideAccess), 1u);
  EXPECT_EQ(reports.Count(ReportKind::UnmappedAccess), 0u);
}

}  // namespace
}  // namespace sim
