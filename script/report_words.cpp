#include "script/report_words.h"

#include <optional>
#include <string_view>

#include "sim/text.h"

namespace script {
namespace {

// Reports with the same words of registers first to last.
struct Run {
  std::string access;  // "read of MASTER page 1"
  unsigned long first = 0;
  unsigned long last = 0;
  unsigned count = 0;
};

constexpr std::string_view kRegister = " register 0x";
constexpr std::string_view kNoName = ", which has no name";
constexpr std::size_t kDigits = 2;

// None for a report of another kind.
std::optional<Run> RunOf(const sim::Report& report) {
  const std::string& text = report.text;
  const std::size_t at = text.find(kRegister);
  if (report.kind != sim::ReportKind::UnnamedRegister || at == std::string::npos ||
      text.substr(at + kRegister.size() + kDigits) != kNoName) {
    return std::nullopt;
  }
  const unsigned long reg = std::stoul(text.substr(at + kRegister.size(), kDigits), nullptr, 16);
  return Run{text.substr(0, at), reg, reg, report.count};
}

std::string InWords(const Run& run) {
  if (run.first == run.last)
    return run.access + " register " + sim::Hex(run.first) + std::string(kNoName);
  return run.access + " registers " + sim::Hex(run.first) + " to " + sim::Hex(run.last) +
         ", which have no name";
}

std::string Times(unsigned count) {
  return count > 1 ? " (" + std::to_string(count) + " times)" : "";
}

}  // namespace

std::vector<std::string> WarningsInWords(std::span<const sim::Report> reports) {
  std::vector<std::string> warnings;
  for (std::size_t i = 0; i < reports.size(); ++i) {
    std::optional<Run> run = RunOf(reports[i]);
    if (!run) {
      warnings.push_back(reports[i].text + Times(reports[i].count));
      continue;
    }
    for (; i + 1 < reports.size(); ++i) {
      const std::optional<Run> next = RunOf(reports[i + 1]);
      if (!next || next->access != run->access || next->first != run->last + 1 ||
          next->count != run->count) {
        break;
      }
      run->last = next->first;
    }
    warnings.push_back(InWords(*run) + Times(run->count));
  }
  return warnings;
}

}  // namespace script
