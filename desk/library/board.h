// The board that a program has open: everything between VexoDesk_Open and VexoDesk_Close.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "VexoDesk.h"
#include "desk/console/console.h"
#include "desk/library/gate.h"
#include "desk/library/outputs.h"
#include "desk/port/moment_taker.h"
#include "desk/port/port.h"
#include "platform/platform.h"

namespace desk {

// A call that is refused: its result and the reason.
struct Refusal : std::runtime_error {
  Refusal(int of, const std::string& why) : std::runtime_error(why), result(of) {}
  int result;
};

struct Settings {
  bool real_time = false;
  std::optional<std::uint16_t> port;  // 0: one that is free; none: no control port
  std::optional<std::uint16_t> page;  // the same
  std::vector<std::string> lines;     // that make the board
  std::string texts;                  // empty: nowhere
  std::string trace;
};

// Its parts are for a thread that is in a call, which keeps it open.
class Board final : public BoardAccess {
 public:
  // The calling thread becomes the windows' own. Throws Refusal.
  explicit Board(const Settings& settings);
  ~Board() override;

  // Unloads the library. Throws Refusal when a file could not be written whole.
  void Close();

  bool IsWindowThread() const { return std::this_thread::get_id() == window_thread_; }
  std::uint16_t PortNumber() const { return port_ == nullptr ? std::uint16_t{0} : port_->Number(); }
  std::uint16_t PageNumber() const {
    return port_ == nullptr ? std::uint16_t{0} : port_->PageNumber();
  }
  Answer RunLine(const char* line) { return console_->Run(line); }

  // For a thread that is inside.
  VexoWindow CreateWindow(VexoDeskProcedure procedure, void* context);
  void DestroyWindow(VexoWindow window);  // throws Refusal

  void Enter() override;
  void Leave() override;
  void LetTimePass(std::uint32_t ms) override;

 private:
  struct Procedure {
    VexoDeskProcedure function = nullptr;
    void* context = nullptr;
  };

  void Begin(const Settings& settings);
  void End();
  void OnMessage(PlatWindow window, std::uint32_t message, std::uintptr_t wparam,
                 std::intptr_t lparam);

  const std::thread::id window_thread_ = std::this_thread::get_id();
  std::map<PlatWindow, Procedure> procedures_;
  std::unique_ptr<TextsOutput> texts_;
  std::unique_ptr<TraceOutput> trace_;
  std::unique_ptr<Console> console_;
  std::mutex whole_;            // held until it is
  std::unique_ptr<Port> port_;  // its threads use the rest, and the next one's it
  std::unique_ptr<MomentTaker> moments_;
};

// The board that is open, while it is: from its opening to its end calls can be begun.
inline Gate g_gate;
inline Board* g_board = nullptr;

// A call of the program: inside from beginning to end, if a board is open.
class Call {
 public:
  Call() : begun_(g_gate.Enter()) {
    if (begun_) g_board->Enter();
  }
  ~Call() {
    if (!begun_) return;
    g_board->Leave();
    g_gate.Leave();
  }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;
  explicit operator bool() const { return begun_; }

 private:
  const bool begun_;
};

}  // namespace desk
