#include "script/listing/register_listing.h"

#include <algorithm>
#include <array>
#include <vector>

#include "script/register_words.h"
#include "script/words.h"
#include "sim/text.h"

namespace script {
namespace {

constexpr unsigned kBytesALine = 16;
constexpr std::size_t kNameColumns = 26;

std::string Padded(std::string text, std::size_t columns) {
  text.resize(std::max(columns, text.size() + 1), ' ');
  return text;
}

// One page now and, when it is known, as it was.
class PageListing {
 public:
  PageListing(const sim::Board& board, unsigned position, std::uint8_t page,
              const sim::RegisterSnapshot::Pages* before, bool colour)
      : page_(page), colour_(colour), has_before_(before != nullptr) {
    for (unsigned reg = 0; reg < kRegistersPerPage; ++reg) {
      now_[reg] = board.Peek(position, page, static_cast<std::uint8_t>(reg));
    }
    before_ = has_before_ ? (*before)[page] : now_;
  }

  std::string Text() const { return Bytes() + Names(); }

 private:
  bool Changed(unsigned reg) const { return now_[reg] != before_[reg]; }
  bool Changed(const RegisterRun& run) const {
    for (unsigned i = 0; i < run.length; ++i) {
      if (Changed(run.first + i)) return true;
    }
    return false;
  }

  std::string Bytes() const {
    std::string text = "     ";
    for (unsigned column = 0; column < kBytesALine; ++column) {
      text += " .";
      text += "0123456789abcdef"[column];
    }
    for (unsigned reg = 0; reg < kRegistersPerPage; ++reg) {
      const bool first = reg % kBytesALine == 0;
      if (first) text += "\n  " + TwoDigits(reg) + "  ";
      // A mark takes the place of the blank after its byte.
      if (!first && !Changed(reg - 1)) text += ' ';
      const std::string byte = TwoDigits(now_[reg]);
      if (!Changed(reg)) {
        text += byte;
      } else {
        text += colour_ ? "\033[1m" + byte + "*\033[0m" : byte + '*';
      }
    }
    return text + '\n';
  }

  // What changed, then the names of all else.
  std::string Names() const {
    const std::vector<RegisterRun> runs = RegisterRuns(page_);
    std::string changed;
    std::string same;
    for (const Register& row : kRegisters) {
      if (row.page != page_) continue;
      std::vector<RegisterRun> places;
      for (const RegisterRun& run : runs) {
        if (run.row != &row) continue;
        if (Changed(run)) {
          changed += ChangeOf(run);
        } else if (!places.empty() && Continues(places.back(), run)) {
          places.back().length += run.length;
        } else {
          places.push_back(run);
        }
      }
      if (places.empty()) continue;
      same += "    " + Padded(row.name, kNameColumns);
      for (const RegisterRun& place : places) same += ' ' + Range(place);
      same += '\n';
    }
    for (const RegisterRun& run : runs) {
      if (run.row == nullptr && Changed(run)) changed += ChangeOf(run);
    }
    if (!has_before_) return "  names\n" + same;
    if (changed.empty()) return "  nothing changed since attach\n" + same;
    return "  * changed since attach\n" + changed + (same.empty() ? "" : "  not changed\n" + same);
  }

  std::string ChangeOf(const RegisterRun& run) const {
    return "    " + ChangeInWords(run, before_, now_) + '\n';
  }

  static bool Continues(const RegisterRun& run, const RegisterRun& next) {
    return next.label == run.label && next.first == run.first + run.length;
  }

  static std::string Range(const RegisterRun& run) {
    const std::string first = TwoDigits(run.first);
    return run.length == 1 ? first : first + '-' + TwoDigits(run.first + run.length - 1);
  }

  static std::string TwoDigits(unsigned value) {
    return sim::HexBytes(std::array{static_cast<std::uint8_t>(value)});
  }

  std::uint8_t page_;
  bool colour_;
  bool has_before_;
  RegisterPage now_{};
  RegisterPage before_{};
};

}  // namespace

std::string ListRegisters(const sim::Board& board, unsigned position,
                          std::optional<std::uint8_t> page,
                          const std::optional<sim::RegisterSnapshot>& at_attach, bool colour) {
  const std::string chip(ChipWords()[position]);
  if (!board.Fitted(position)) {
    return chip + ": not fitted, identification " + sim::Hex(board.Peek(position, kChipId)) + '\n';
  }
  const sim::RegisterSnapshot::Pages* before = nullptr;
  if (at_attach && at_attach->chips[position]) before = &*at_attach->chips[position];
  std::string text;
  for (std::uint8_t p = 0; p < kPageCount; ++p) {
    if (page && *page != p) continue;
    text += chip + " page " + std::to_string(p) + '\n' +
            PageListing(board, position, p, before, colour).Text();
  }
  return text;
}

}  // namespace script
