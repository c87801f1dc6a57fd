#include "script/report_words.h"

#include <array>

#include "sim/text.h"

namespace script {
namespace {

using sim::Hex;
using sim::Report;
using Access = Report::Access;

constexpr std::array kPositionNames = {"MASTER", "SLAVE1", "SLAVE2", "SLAVE3"};
constexpr std::array kWindowNames = {"select", "address", "data"};

std::string Contention(const Report& report) {
  return "read of register " + Hex(report.reg) + " with " + std::to_string(report.chips) +
         " chips selected (" + Hex(report.select) + ')';
}

std::string UnmappedAccess(const Report& report) {
  static constexpr std::array kAccess = {"a load from", "a store to", "unmapping"};
  return kAccess.at(static_cast<std::size_t>(report.access)) +
         std::string(" a window that is not mapped");
}

std::string WideAccess(const Report& report) {
  return std::to_string(report.bytes) +
         (report.access == Access::Read ? "-byte load from the " : "-byte store to the ") +
         kWindowNames.at(static_cast<std::size_t>(report.window)) + " window";
}

// Of registers that follow each other.
std::string UnnamedRegisters(const Report& first, const Report& last) {
  const std::string text = std::string(first.access == Access::Read ? "read of " : "write to ") +
                           kPositionNames.at(first.position) + " page " +
                           std::to_string(first.page);
  if (first.reg == last.reg) return text + " register " + Hex(first.reg) + ", which has no name";
  return text + " registers " + Hex(first.reg) + " to " + Hex(last.reg) + ", which have no name";
}

std::string InWords(const Report& first, const Report& last) {
  switch (first.kind) {
    case sim::ReportKind::Contention:
      return Contention(first);
    case sim::ReportKind::UnmappedAccess:
      return UnmappedAccess(first);
    case sim::ReportKind::WideAccess:
      return WideAccess(first);
    case sim::ReportKind::UnnamedRegister:
      break;
  }
  return UnnamedRegisters(first, last);
}

// Whether a report is the same as another but for its register, the one behind that of the other.
bool Continues(const Report& report, const Report& before) {
  Report expected = before;
  ++expected.reg;
  return before.kind == sim::ReportKind::UnnamedRegister && before.reg != 0xFF &&
         report == expected;
}

}  // namespace

std::vector<std::string> WarningsInWords(std::span<const sim::Report> reports) {
  std::vector<std::string> warnings;
  for (std::size_t i = 0; i < reports.size(); ++i) {
    const Report& first = reports[i];
    while (i + 1 < reports.size() && Continues(reports[i + 1], reports[i])) ++i;
    std::string text = InWords(first, reports[i]);
    if (first.count > 1) text += " (" + std::to_string(first.count) + " times)";
    warnings.push_back(std::move(text));
  }
  return warnings;
}

}  // namespace script
