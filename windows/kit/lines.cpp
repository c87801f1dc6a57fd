#include "lines.h"

#include <future>
#include <stdexcept>
#include <string>
#include <thread>

#include "VexoDesk.h"
#include "board.h"
#include "desk/console/console.h"
#include "desk/port/port.h"
#include "exports.h"
#include "script/words.h"

namespace kit {
namespace {

// What stands here is the process's until it ends: nothing is destroyed under its threads.

class Access : public desk::BoardAccess {
 public:
  void Enter() override { EnterBoard(); }
  void Leave() override { LeaveBoard(); }
  // Messages of the calling thread's windows are handled meanwhile.
  void LetTimePass(std::uint32_t ms) override {
    const AwayFromBoard away;
    const ULONGLONG end = GetTickCount64() + ms;
    for (;;) {
      MSG message;
      while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
      const ULONGLONG now = GetTickCount64();
      if (now >= end) return;
      MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(end - now), QS_ALLINPUT);
    }
  }
};

desk::Console& TheConsole() {
  static desk::Console& console = []() -> desk::Console& {
    UseLoadedExports();
    static Access& access = *new Access;
    const AtBoard at_board;
    return *new desk::Console(access);
  }();
  return console;
}

desk::Answer Run(const std::string& line) {
  try {
    RefuseForSystem(line);
  } catch (const std::exception& refusal) {
    return {desk::Answer::Result::Refused, refusal.what()};
  }
  return TheConsole().Run(line);
}

std::promise<int>& PortPromise() {
  static std::promise<int>& promise = *new std::promise<int>;
  return promise;
}

std::shared_future<int>& PortNumber() {
  static std::shared_future<int>& number =
      *new std::shared_future<int>(PortPromise().get_future().share());
  return number;
}

bool g_port_wanted = false;

void Listen(std::uint16_t number) {
  try {
    auto* const port = new desk::Port({.control = number}, Run);
    Say("control port " + std::to_string(port->Number()) + " on 127.0.0.1");
    {
      const AtBoard at_board;
      sim::TheWorld().trace.AddListener(port->Events());
    }
    PortPromise().set_value(port->Number());
  } catch (const std::exception& error) {
    Say(error.what());
    PortPromise().set_value(VEXODESK_ERROR_SYSTEM);
  }
}

}  // namespace

void RefuseForSystem(const std::string& line) {
  const std::vector<std::string> words = script::SplitWords(line);
  if (!words.empty() && words.front() == "seed") {
    throw std::runtime_error("'seed' is refused: the system chooses among threads here");
  }
}

int RunLine(const char* line, char* answer, std::size_t capacity) {
  using Result = desk::Answer::Result;
  if (line == nullptr) return VEXODESK_ERROR_ARGUMENT;
  if (BoardKind() != Kind::Real) return VEXODESK_ERROR_STATE;
  SwitchOn();
  const desk::Answer found = Run(line);
  if (answer != nullptr && capacity != 0) {
    answer[found.text.copy(answer, capacity - 1)] = '\0';
  }
  switch (found.result) {
    case Result::Done:
      return VEXODESK_OK;
    case Result::Unmet:
      return VEXODESK_ERROR_UNMET;
    case Result::Refused:
      break;
  }
  return VEXODESK_ERROR_LINE;
}

void OpenPort(std::uint16_t number) {
  g_port_wanted = true;
  PortNumber();
  std::thread(Listen, number).detach();
}

int ControlPort() {
  if (BoardKind() != Kind::Real) return VEXODESK_ERROR_STATE;
  SwitchOn();
  return g_port_wanted ? PortNumber().get() : 0;
}

}  // namespace kit
