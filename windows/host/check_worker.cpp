// The worker and a host window that does not answer.
#include <array>

#include "VexoCtrlSDK.h"
#include "board_service.h"
#include "checks.h"
#include "real_time.h"
#include "sim/world.h"

namespace host {
namespace {

constexpr std::uint32_t kEnded = 0xFFFF0000u;  // exit code of a worker that was ended
constexpr unsigned kPasses = 21;

void SetCamera(unsigned channel, sim::Camera camera) {
  const BoardLock lock;
  sim::TheWorld().board.SetCamera(channel, camera);
}

void DeafWindow() {
  RealTimeWindow window;
  RealTimeLibrary library;
  window.deaf = true;
  library.exports.initialize(window.Handle());
  std::array<std::uint8_t, 64> record{};
  RequireEqual(library.exports.command_proc(VEXO_CMD_INIT, record.data()), VEXO_OK, "0xF001");
  RequireSoon([] { return !RealTimeSends().empty(); }, "the send is given up");
  const RealTimeSend send = RealTimeSends().front();
  RequireEqual(send.message, VEXO_MSG_VIDEO_INFO, "the message");
  RequireEqual(send.limit_ms, 5000u, "the limit");
  Require(!send.ok && send.took_ms >= 4900 && send.took_ms < 10'000,
          "given up after " + std::to_string(send.took_ms) + " ms");
  RequireSoon(
      [] {
        return RealTimeTexts().find(">> SendMessage Error occure 0x00002403 0x000005B4 \r\n") !=
               std::string::npos;
      },
      "the text of the failure");

  // It goes on, and is stuck again.
  SetCamera(1, sim::Camera::Off);
  RequireSoon([] { return g_sends_waiting == 1; }, "the next send");
  g_short_sleeps = 0;
  RequireEqual(library.exports.command_proc(VEXO_CMD_STOP_MONITOR, nullptr), VEXO_OK, "0xF002");
  RequireEqual(RealTimeTerminations().size(), 1u, "the number of threads that were ended");
  RequireEqual(RealTimeTerminations().front(), kEnded, "its exit code");
  RequireEqual(g_short_sleeps.load(), kPasses, "the number of passes");
  const std::uint64_t accesses = g_accesses;
  Sleep(100);
  RequireEqual(g_accesses.load(), accesses, "the number of accesses, later");
}

void WorkerBesideCommands() {
  RealTimeWindow window;
  RealTimeLibrary library(4);
  library.exports.initialize(window.Handle());
  std::array<std::uint8_t, 64> record{};
  RequireEqual(library.exports.command_proc(VEXO_CMD_INIT, record.data()), VEXO_OK, "0xF001");
  RequireSoon([] { return !RealTimeMessages().empty(); }, "a first message");
  const unsigned waits = g_worker_waits;
  constexpr unsigned kCommands = 2000;
  for (unsigned i = 0; i < kCommands; ++i) {
    const std::uint8_t write[64] = {VEXO_CHIP_MASTER, 0, 0x40, static_cast<std::uint8_t>(i)};
    std::array<std::uint8_t, 64> copy;
    std::copy(std::begin(write), std::end(write), copy.begin());
    RequireEqual(library.exports.command_proc(VEXO_CMD_WRITE_REG, copy.data()), VEXO_OK, "0xF004");
  }
  RequireSoon([&] { return g_worker_waits > waits + 5; }, "the worker's passes");
  RequireEqual(library.exports.command_proc(VEXO_CMD_STOP_MONITOR, nullptr), VEXO_OK, "0xF002");
  Require(RealTimeTerminations().empty(), "the worker did not end by itself");
}

constexpr std::array kChecks = {
    Check{"a send to a deaf window is given up, and a worker stuck in one is ended on pass 21",
          DeafWindow},
    Check{"worker and commands share the bus", WorkerBesideCommands},
};

}  // namespace

std::span<const Check> WorkerChecks() { return kChecks; }

}  // namespace host
