#include "script/listing/register_writes.h"

#include <algorithm>
#include <span>
#include <string>
#include <vector>

#include "script/register_words.h"
#include "sim/text.h"

namespace script {
namespace {

using Writes = std::span<const sim::RegisterAccess>;

constexpr std::size_t kMostBytes = 8;   // of a line
constexpr std::size_t kMostPieces = 8;  // of a run, a line each

std::string Padded(std::string text, std::size_t columns) {
  if (text.size() < columns) text.resize(columns, ' ');
  return text;
}

std::string ChipName(const sim::RegisterAccess& write) {
  const std::string_view chip = ChipOfSelect(write.select);
  return chip == "several" ? sim::Hex(write.select) : std::string(chip);
}

std::string LabelOf(const sim::RegisterAccess& write) {
  return RegisterLabel(write.Page(), write.reg);
}

void PrintLine(std::ostream& out, Writes writes) {
  constexpr std::size_t kChipColumns = 6;
  constexpr std::size_t kRegColumns = 9;
  constexpr std::size_t kLabelColumns = 25;
  const sim::RegisterAccess& first = writes.front();
  const sim::RegisterAccess& last = writes.back();
  std::string reg = sim::Hex(first.reg);
  std::string label = LabelOf(first);
  std::vector<std::uint8_t> bytes;
  for (const sim::RegisterAccess& write : writes) {
    if (bytes.size() < kMostBytes) bytes.push_back(write.value);
  }
  const bool cut = bytes.size() < writes.size();
  if (writes.size() > 1) {
    reg += '-' + sim::Hex(last.reg);
    if (LabelOf(last) != label) label += " to " + LabelOf(last);
  }
  const std::string page = first.Page() < kPageCount ? std::to_string(first.Page()) : "-";
  out << (first.read ? "      r " : "      w ") << Padded(ChipName(first), kChipColumns) << " page "
      << page << "  " << Padded(reg, kRegColumns) << ' ' << Padded(label, kLabelColumns) << " = ";
  if (writes.size() == 1) {
    out << sim::Hex(first.value);
    const std::string fields = FieldsInWords(first.Page(), first.reg, first.value);
    if (!fields.empty()) out << " (" << fields << ')';
  } else {
    out << sim::HexBytes(bytes, " ");
  }
  if (cut) out << " ... (" << writes.size() << " bytes)";
  if (first.by == sim::By::Worker) out << " (worker)";
  out << '\n';
}

}  // namespace

bool Continues(const sim::RegisterAccess& last, const sim::RegisterAccess& next) {
  return next.read == last.read && next.select == last.select && next.by == last.by &&
         next.reg == last.reg + 1;
}

void PrintRun(std::ostream& out, std::span<const sim::RegisterAccess> run) {
  std::vector<Writes> pieces;
  for (Writes rest = run; !rest.empty(); rest = rest.subspan(pieces.back().size())) {
    std::size_t length = 1;
    while (length < rest.size() && LabelOf(rest[length]) == LabelOf(rest.front())) ++length;
    pieces.push_back(rest.first(length));
  }
  if (pieces.size() > kMostPieces) return PrintLine(out, run);
  for (const Writes piece : pieces) PrintLine(out, piece);
}

void PrintAccesses(std::ostream& out, std::span<const sim::RegisterAccess> accesses) {
  for (std::size_t begin = 0; begin < accesses.size();) {
    std::size_t end = begin + 1;
    while (end < accesses.size() && Continues(accesses[end - 1], accesses[end])) ++end;
    PrintRun(out, accesses.subspan(begin, end - begin));
    begin = end;
  }
}

void PrintWrites(std::ostream& out, const sim::Trace& trace, std::size_t first_event) {
  const std::vector<sim::RegisterAccess> accesses = sim::DecodeAccesses(trace, first_event);
  const auto is_write = [](const sim::RegisterAccess& access) { return !access.read; };
  for (auto begin = accesses.begin(); begin != accesses.end();) {
    begin = std::find_if(begin, accesses.end(), is_write);
    const auto end = std::find_if_not(begin, accesses.end(), is_write);
    PrintAccesses(out, {begin, end});
    begin = end;
  }
}

}  // namespace script
