// A worker thread on a 4-channel board, with the sync level and the time in the test's hand.
#pragma once

#include "api/worker.h"
#include "chip/video_state.h"
#include "motion/motion_state.h"
#include "tests/api/trace_lines.h"
#include "tests/support/library_test.h"

namespace test {

using LineList = std::vector<Line>;

inline constexpr const char* kNoLoss = "send 2403 [0000000000000000000000000000000000000000]";
inline constexpr const char* kMotion0 = "send 2404 0";

inline Line Said(std::uint32_t t, const std::string& text) { return {t, sim::By::Worker, text}; }

class WorkerTest : public LibraryTest {
 protected:
  // A 4-channel board whose worker has seen its first sync level. Its start takes 200 ms; it then
  // polls at every even millisecond.
  void Start(bool rising, bool level) {
    Prepare(rising);
    world().board.HoldSync(level);
    EXPECT_EQ(VexoSDK_StartWorker(), 1);
    ASSERT_EQ(world().kernel.Now(), 200u);
  }
  // Falling edges count, the level is high.
  void StartFalling() { Start(false, true); }

  void Prepare(bool rising) {
    PretendBoard(4);
    g_motion.ready = 1;
    SelectEdge(rising);
  }
  void SelectEdge(bool rising) { world().board.Poke(0, 1, 0xA4, rising ? 0x08 : 0x00); }

  // The host pumps until a time.
  void PumpTo(std::uint32_t t) { world().kernel.Pump(t - world().kernel.Now()); }
  void SyncAt(std::uint32_t t, bool level) {
    PumpTo(t);
    world().board.HoldSync(level);
  }

  LineList Sent() { return LinesBy(sim::By::Worker, world().trace, 0, "send"); }
  LineList WorkerLines(const std::string& prefix, std::size_t from = 0) {
    return LinesBy(sim::By::Worker, world().trace, from, prefix);
  }
  std::size_t Place() { return world().trace.Mark(); }
};

}  // namespace test
