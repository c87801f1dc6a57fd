// The worker, a host window that does not answer, and commands beside it.
#include <algorithm>
#include <array>

#include "checks.h"
#include "host.h"

namespace checks {
namespace {

constexpr std::uint32_t kEnded = 0xFFFF0000u;        // exit code of a worker that was ended
constexpr std::uint32_t kEndedItself = 0xF0000001u;  // and of one that ended by itself

void Initialize(const Library& library, const Window& window) {
  VexoInitRecord record = {};
  library.initialize(window.Handle());
  RequireEqual(library.command_proc(VEXO_CMD_INIT, &record), VEXO_OK, "0xF001");
}

void DeafWindow() {
  constexpr ULONGLONG kLimitMs = 5000;
  constexpr ULONGLONG kMostMs = 10'000;
  constexpr ULONGLONG kClockStepMs = 32;
  const std::string failure = ">> SendMessage Error occure 0x00002403 0x000005B4 \r\n";
  Window window;
  Library library;
  window.deaf = true;
  WorkerWatch worker;
  Initialize(library, window);
  worker.Find();
  RequireSoon([&] { return window.WaitingSince() != 0; }, "the send");
  const ULONGLONG begin = window.WaitingSince();
  RequireSoon([&] { return OwnTexts().find(failure) != std::string::npos; },
              "the text of the failure");
  const ULONGLONG took = GetTickCount64() - begin;
  Require(took >= kLimitMs - kClockStepMs && took < kMostMs,
          "given up after " + std::to_string(took) + " ms");

  // It goes on, and is stuck again.
  Board("camera 1 off");
  RequireSoon([&] { return window.WaitingSince() > begin; }, "the next send");
  Require(worker.Runs(), "the worker has ended before it was asked to");
  RequireEqual(library.command_proc(VEXO_CMD_STOP_MONITOR, nullptr), VEXO_OK, "0xF002");
  Require(!worker.Runs(), "the worker still runs");
  RequireEqual(worker.ExitCode(), kEnded, "its exit code");
  Board("run 100");
  Board("expect cycles 0");
  RequireEqual(window.Messages().size(), 0u, "the number of messages that a deaf window took");
}

void WorkerBesideCommands() {
  constexpr unsigned kCommands = 2000;
  constexpr unsigned kChanges = 5;
  Window window;
  Library library;
  WorkerWatch worker;
  Initialize(library, window);
  worker.Find();
  RequireSoon([&] { return !window.Messages().empty(); }, "a first message");
  for (unsigned i = 0; i < kCommands; ++i) {
    VexoRegRecord write = {VEXO_CHIP_MASTER, 0, 0x40, static_cast<std::uint8_t>(i)};
    RequireEqual(library.command_proc(VEXO_CMD_WRITE_REG, &write), VEXO_OK, "0xF004");
  }
  const auto losses = [&] { return std::ranges::count(window.Messages(), VEXO_MSG_VIDEO_INFO); };
  for (unsigned i = 0; i < kChanges; ++i) {
    const auto before = losses();
    Board(i % 2 == 0 ? "camera 3 off" : "camera 3 ntsc");
    RequireSoon([&] { return losses() > before; }, "the worker's next look at the cameras");
  }
  RequireEqual(library.command_proc(VEXO_CMD_STOP_MONITOR, nullptr), VEXO_OK, "0xF002");
  RequireEqual(worker.ExitCode(), kEndedItself, "the worker's exit code");
}

constexpr std::array kChecks = {
    Check{"a send to a deaf window is given up, and a worker stuck in one is ended", DeafWindow},
    Check{"worker and commands share the bus", WorkerBesideCommands},
};

}  // namespace

std::span<const Check> WorkerChecks() { return kChecks; }

}  // namespace checks
