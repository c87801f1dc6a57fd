#include "sim/world.h"

#include <memory>

namespace sim {

World::World()
    : board(reports),
      system_texts{{5, "Access is denied.\r\n"},
                   {6, "The handle is invalid.\r\n"},
                   {8, "Not enough storage is available to process this command.\r\n"},
                   {183, "Cannot create a file when that file already exists.\r\n"},
                   {1400, "Invalid window handle.\r\n"},
                   {1460, "This operation returned because the timeout period expired.\r\n"}},
      kernel(*this) {
  board.on_countdown = [this] { polling.Progress(); };
  windows.on_destroyed = [this](PlatWindow window) { kernel.WindowDestroyed(window); };
}

World::~World() = default;

World* g_the_world = nullptr;

namespace {

// Ends the threads that are left when the process ends.
struct EndOfProcess {
  ~EndOfProcess() {
    if (g_the_world != nullptr && g_the_world->kernel.OpenToProgram()) {
      // A program that ends with its board open: threads of it and of the library may still be
      // here.
      g_the_world->kernel.StopForGood();
      return;
    }
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
