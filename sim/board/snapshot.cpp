#include "sim/board/snapshot.h"

namespace sim {

RegisterSnapshot TakeSnapshot(const Board& board) {
  RegisterSnapshot snapshot;
  for (unsigned position = 0; position < kChipsMax; ++position) {
    if (!board.Fitted(position)) continue;
    RegisterSnapshot::Pages& pages = snapshot.chips[position].emplace();
    for (std::uint8_t page = 0; page < kPageCount; ++page) {
      for (unsigned reg = 0; reg < kRegistersPerPage; ++reg) {
        pages[page][reg] = board.Peek(position, page, static_cast<std::uint8_t>(reg));
      }
    }
  }
  return snapshot;
}

}  // namespace sim
