// What the simulated board noticed that a real one would suffer in silence.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace sim {

enum class ReportKind {
  Contention,       // a read with several chips selected
  UnmappedAccess,   // an access through a window that is not mapped
  WideAccess,       // an access wider than a byte
  UnnamedRegister,  // a read or write of a register that the register map does not name
};

struct Report {
  ReportKind kind;
  std::string text;  // one line, without a line end
  unsigned count;    // how often; the same report is kept once
};

class Reports {
 public:
  void Add(ReportKind kind, const std::string& text);
  const std::vector<Report>& All() const { return reports_; }
  unsigned Count(ReportKind kind) const;

 private:
  std::vector<Report> reports_;
  std::map<std::pair<ReportKind, std::string>, std::size_t> places_;  // in reports_
};

}  // namespace sim
