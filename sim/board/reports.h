// What the simulated board noticed that a real one would suffer in silence.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "sim/board/bus_windows.h"

namespace sim {

enum class ReportKind : std::uint8_t {
  Contention,       // a read with several chips selected
  UnmappedAccess,   // an access through a window that is not mapped, or unmapping it
  WideAccess,       // an access wider than a byte
  UnnamedRegister,  // a read or write of a register that the register map does not name
};

struct Report {
  enum class Access : std::uint8_t { Read, Write, Unmap };

  ReportKind kind = ReportKind::Contention;
  Access access = Access::Read;
  std::uint8_t select = 0;             // Contention: the select byte
  unsigned chips = 0;                  // Contention: how many it selects
  BusWindow window = BusWindow::Data;  // WideAccess
  unsigned bytes = 1;                  // WideAccess
  unsigned position = 0;               // UnnamedRegister: of the chip
  std::uint8_t page = 0;               // UnnamedRegister
  std::uint8_t reg = 0;                // UnnamedRegister, Contention
  unsigned count = 1;                  // how often; the same report is kept once

  // NOLINTNEXTLINE(modernize-use-nullptr): the zero of the comparison that this stands for
  auto operator<=>(const Report&) const = default;
};

class Reports {
 public:
  void Add(const Report& report);  // with a count of 1
  const std::vector<Report>& All() const { return reports_; }
  unsigned Count(ReportKind kind) const;

 private:
  std::vector<Report> reports_;
  std::map<Report, std::size_t> places_;  // in reports_, of each report as it was added
};

}  // namespace sim
