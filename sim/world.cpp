#include "sim/world.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace sim {

// ---- Windows ------------------------------------------------------------------------------------

PlatWindow Windows::Create() {
  const PlatWindow window = next_;
  next_ += 2;
  windows_.push_back(window);
  return window;
}

void Windows::Destroy(PlatWindow window) {
  if (std::erase(windows_, window) != 0 && on_destroyed) on_destroyed(window);
}

bool Windows::Exists(PlatWindow window) const {
  return std::find(windows_.begin(), windows_.end(), window) != windows_.end();
}

// ---- Bus windows --------------------------------------------------------------------------------

std::array<std::uint8_t, BusWindows::kCount * BusWindows::kBytes> BusWindows::memory_;

std::optional<BusWindow> BusWindows::AtPhysical(std::uint32_t physical) {
  switch (physical) {
    case 0x06600000:
      return BusWindow::Select;
    case 0x06400000:
      return BusWindow::Address;
    case 0x06200000:
      return BusWindow::Data;
    default:
      return std::nullopt;
  }
}

volatile std::uint8_t* BusWindows::Address(BusWindow window) {
  return &memory_[static_cast<std::size_t>(window) * kBytes];
}

bool BusWindows::Unmap(BusWindow window) {
  unsigned& mapped = mapped_[static_cast<std::size_t>(window)];
  if (mapped == 0) return false;
  --mapped;
  return true;
}

// ---- Snapshot -----------------------------------------------------------------------------------

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

// ---- World --------------------------------------------------------------------------------------

World::World()
    : board(reports),
      system_texts{{5, "Access is denied.\r\n"},
                   {6, "The handle is invalid.\r\n"},
                   {8, "Not enough storage is available to process this command.\r\n"},
                   {183, "Cannot create a file when that file already exists.\r\n"},
                   {1400, "Invalid window handle.\r\n"},
                   {1460, "This operation returned because the timeout period expired.\r\n"}},
      kernel(*this) {
  windows.on_destroyed = [this](PlatWindow window) { kernel.WindowDestroyed(window); };
}

World::~World() = default;

void World::Record(EventDetail detail) {
  trace.Add(kernel.Now(), kernel.Current(), std::move(detail));
}

World* g_the_world = nullptr;

namespace {

// Ends the threads that are left when the process ends.
struct EndOfProcess {
  ~EndOfProcess() {
    delete g_the_world;
    g_the_world = nullptr;
  }
};

}  // namespace

World& MakeTheWorld() {
  static EndOfProcess end;
  g_the_world = new World;
  return *g_the_world;
}

void ResetWorld() {
  // Threads that are being ended may still look at the old world: it goes before the new one comes.
  delete g_the_world;
  MakeTheWorld();
}

}  // namespace sim
