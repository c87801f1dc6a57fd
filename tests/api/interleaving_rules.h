// What must hold of the bus, the lock and the messages whatever the order of the threads.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/platform.h"
#include "sim/trace.h"
#include "sim/world.h"

namespace test {

// Hears everything that happens in a world, and what its host threads are about to do. What breaks
// a rule fails the test, with words for it.
//
// - Each thread's bus cycles are whole accesses: select, address, data, release, and no other.
// - A host thread makes them only while it holds the lock, but where a command runs outside of it;
//   so no two accesses under the lock cut into each other.
// - What takes the lock gives it back, once, before it returns.
// - A command's messages come in its own time and order; the worker only sends, first the video,
//   and no loss mask twice in a row.
// - What a message points to is there when it comes: posted ones point to what lives with the
//   library alone.
class InterleavingRules : public sim::TraceListener {
 public:
  // Listens to the present world from now on.
  void Attach();

  // Beside the codes of binary commands.
  static constexpr std::uint32_t kText = 0;      // one that tells the host nothing
  static constexpr std::uint32_t kTextInit = 1;  // "vexo init", with nobody beside it

  // The calling thread begins and ends what has this code.
  void Begin(std::uint32_t code);
  // record: as the command left it.
  void End(const std::vector<std::uint8_t>& record);

  void OnEvent(const sim::Event& event, const sim::EventDetail* detail) override;

 private:
  struct Sent {
    std::uint32_t message = 0;
    bool post = false;
    std::vector<std::uint8_t> record;
  };
  struct HostThread {
    std::uint32_t code = 0;
    bool outside = false;    // it may be on the bus without the lock
    std::vector<Sent> sent;  // of this command
  };
  enum class Access : std::uint8_t { None, Selected, Addressed, Moved };

  void OnCycle(const sim::Event& event);
  void OnLock(const sim::LockEvent& lock);
  void OnMessage(sim::By by, const sim::MessageEvent& message);
  void OnWorkersMessage(const sim::MessageEvent& message);
  void OnArrival(PlatWindow window, std::uint32_t message, std::uintptr_t wparam);

  std::map<std::uint32_t, HostThread> commands_;  // in progress, by thread
  std::map<std::uint32_t, Access> accesses_;      // by thread
  std::optional<std::uint32_t> owner_;            // of the lock
  std::optional<std::uint32_t> told_loss_;        // by this worker, none before its first message
};

}  // namespace test
