#include "tools/vexosim/listing/register_listing.h"

#include <algorithm>
#include <array>
#include <span>
#include <vector>

#include "script/words.h"
#include "sim/text.h"

namespace vexosim {
namespace {

constexpr const char* kNoName = "(no name)";
constexpr unsigned kBytesALine = 16;
constexpr unsigned kMostBytesOfAPiece = 8;
constexpr std::size_t kNameColumns = 26;

std::string Padded(std::string text, std::size_t columns) {
  text.resize(std::max(columns, text.size() + 1), ' ');
  return text;
}

// " 2" for the third of a name that repeats, else nothing.
std::string ChannelOf(std::uint8_t page, unsigned reg, const char* name) {
  const auto* row = std::find_if(kRegisters.begin(), kRegisters.end(), [&](const Register& r) {
    return r.page == page && r.name == name;
  });
  return row->count == 1 ? "" : ' ' + std::to_string((reg - row->first) / row->stride);
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
  // Neighbours with the same name and, where the name repeats, of the same channel.
  struct Piece {
    const char* name = nullptr;  // null: none
    std::string channel;
    unsigned base = 0;
    unsigned length = 0;
  };

  bool Changed(unsigned reg) const { return now_[reg] != before_[reg]; }
  bool Changed(const Piece& piece) const {
    for (unsigned i = 0; i < piece.length; ++i) {
      if (Changed(piece.base + i)) return true;
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
    const std::vector<Piece> pieces = Pieces();
    std::string changed;
    std::string same;
    for (const Register& row : kRegisters) {
      if (row.page != page_) continue;
      std::vector<Piece> places;
      for (const Piece& piece : pieces) {
        if (piece.name != row.name) continue;
        if (Changed(piece)) {
          changed += ChangeOf(piece);
        } else if (!places.empty() && Continues(places.back(), piece)) {
          places.back().length += piece.length;
        } else {
          places.push_back(piece);
        }
      }
      if (places.empty()) continue;
      same += "    " + Padded(row.name, kNameColumns);
      for (const Piece& place : places) same += ' ' + Range(place);
      same += '\n';
    }
    for (const Piece& piece : pieces) {
      if (piece.name == nullptr && Changed(piece)) changed += ChangeOf(piece);
    }
    if (!has_before_) return "  names\n" + same;
    if (changed.empty()) return "  nothing changed since attach\n" + same;
    return "  * changed since attach\n" + changed + (same.empty() ? "" : "  not changed\n" + same);
  }

  std::vector<Piece> Pieces() const {
    std::vector<Piece> pieces;
    for (unsigned reg = 0; reg < kRegistersPerPage; ++reg) {
      const char* const name = RegisterNameOf(page_, static_cast<std::uint8_t>(reg));
      const std::string channel = name == nullptr ? "" : ChannelOf(page_, reg, name);
      // Registers without a name stand alone: nothing says that neighbours belong together.
      if (pieces.empty() || name == nullptr || pieces.back().name != name ||
          pieces.back().channel != channel || pieces.back().length == kMostBytesOfAPiece) {
        pieces.push_back({name, channel, reg, 0});
      }
      ++pieces.back().length;
    }
    return pieces;
  }

  std::string ChangeOf(const Piece& piece) const {
    const std::string name = piece.name == nullptr ? kNoName : piece.name + piece.channel;
    const auto bytes = [&](const Values& values) {
      return sim::HexBytes(std::span(values).subspan(piece.base, piece.length), " ");
    };
    return "    " + sim::Hex(piece.base) + "  " + Padded(name, kNameColumns) + bytes(before_) +
           " -> " + bytes(now_) + '\n';
  }

  static bool Continues(const Piece& piece, const Piece& next) {
    return next.channel == piece.channel && next.base == piece.base + piece.length;
  }

  static std::string Range(const Piece& piece) {
    const std::string first = TwoDigits(piece.base);
    return piece.length == 1 ? first : first + '-' + TwoDigits(piece.base + piece.length - 1);
  }

  static std::string TwoDigits(unsigned value) {
    return sim::HexBytes(std::array{static_cast<std::uint8_t>(value)});
  }

  using Values = std::array<std::uint8_t, kRegistersPerPage>;
  std::uint8_t page_;
  bool colour_;
  bool has_before_;
  Values now_{};
  Values before_{};
};

}  // namespace

std::string ListRegisters(const sim::Board& board, unsigned position,
                          std::optional<std::uint8_t> page,
                          const std::optional<sim::RegisterSnapshot>& at_attach, bool colour) {
  const std::string chip(script::ChipWords()[position]);
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

}  // namespace vexosim
