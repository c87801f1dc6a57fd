#include "tools/vexosim/register_listing.h"

#include <array>

#include "tools/vexosim/text.h"

namespace vexosim {
namespace {

constexpr std::array kNames = {"master", "slave1", "slave2", "slave3"};
constexpr unsigned kBytesALine = 16;

std::string ListPage(const sim::Board& board, unsigned position, std::uint8_t page) {
  std::string text = std::string(kNames[position]) + " page " + std::to_string(page) + "\n     ";
  for (unsigned column = 0; column < kBytesALine; ++column) {
    text += " .";
    text += "0123456789abcdef"[column];
  }
  text += '\n';
  for (unsigned base = 0; base < kRegistersPerPage; base += kBytesALine) {
    std::array<std::uint8_t, kBytesALine> bytes{};
    for (unsigned i = 0; i < kBytesALine; ++i) {
      bytes[i] = board.Peek(position, page, static_cast<std::uint8_t>(base + i));
    }
    const std::array<std::uint8_t, 1> first = {static_cast<std::uint8_t>(base)};
    text += "  " + HexBytes(first) + "  " + HexBytes(bytes, " ") + '\n';
  }
  return text;
}

}  // namespace

std::string ListRegisters(const sim::Board& board, unsigned position,
                          std::optional<std::uint8_t> page) {
  if (!board.Fitted(position)) {
    return std::string(kNames[position]) + ": not fitted, identification " +
           Hex(board.Peek(position, kPage0, kChipId)) + '\n';
  }
  std::string text;
  for (std::uint8_t p = 0; p < kPageCount; ++p) {
    if (!page || *page == p) text += ListPage(board, position, p);
  }
  return text;
}

}  // namespace vexosim
