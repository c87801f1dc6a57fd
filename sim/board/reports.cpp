#include "sim/board/reports.h"

namespace sim {

void Reports::Add(const Report& report) {
  const auto [place, fresh] = places_.try_emplace(report, reports_.size());
  if (fresh) {
    reports_.push_back(report);
  } else {
    ++reports_[place->second].count;
  }
}

unsigned Reports::Count(ReportKind kind) const {
  unsigned count = 0;
  for (const Report& report : reports_) {
    if (report.kind == kind) count += report.count;
  }
  return count;
}

}  // namespace sim
