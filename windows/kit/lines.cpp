#include "lines.h"

#include <atomic>
#include <filesystem>
#include <future>
#include <stdexcept>
#include <string>
#include <thread>

#include "VexoDesk.h"
#include "board.h"
#include "desk/console/console.h"
#include "desk/port/moment_taker.h"
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

Access& TheAccess() {
  static Access& access = *new Access;
  return access;
}

desk::Console& TheConsole() {
  static desk::Console& console = []() -> desk::Console& {
    UseLoadedExports();
    const AtBoard at_board;
    return *new desk::Console(TheAccess());
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

// A port's number, which is there once it listens.
struct Listening {
  std::atomic<bool> wanted = false;
  std::promise<int> promise;
  std::shared_future<int> number = promise.get_future().share();
};

Listening& TheControlPort() {
  static Listening& listening = *new Listening;
  return listening;
}
Listening& ThePage() {
  static Listening& listening = *new Listening;
  return listening;
}

// Null when it does not listen.
desk::Port* Listen(const desk::PortSettings& settings, Listening& listening) {
  try {
    auto* const port = new desk::Port(settings, Run);
    {
      const AtBoard at_board;
      sim::TheWorld().trace.AddListener(port->Events());
    }
    if (settings.page) {
      Say("page http://127.0.0.1:" + std::to_string(port->PageNumber()) + "/");
    } else {
      Say("control port " + std::to_string(port->Number()) + " on 127.0.0.1");
    }
    listening.promise.set_value(settings.page ? port->PageNumber() : port->Number());
    return port;
  } catch (const std::exception& error) {
    Say(error.what());
    listening.promise.set_value(VEXODESK_ERROR_SYSTEM);
    return nullptr;
  }
}

void ListenForControl(std::uint16_t number) { Listen({.control = number}, TheControlPort()); }

void ListenForPages(std::uint16_t number) {
  wchar_t program[MAX_PATH];
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  const std::u8string title = std::filesystem::path(program).stem().u8string();
  desk::Port* const port =
      Listen({.page = desk::PageSettings{.port = number, .title = {title.begin(), title.end()}}},
             ThePage());
  if (port != nullptr) new desk::MomentTaker(*port, TheAccess());
}

int NumberOf(Listening& listening) {
  if (BoardKind() != Kind::Real) return VEXODESK_ERROR_STATE;
  SwitchOn();
  return listening.wanted ? listening.number.get() : 0;
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
  TheControlPort().wanted = true;
  std::thread(ListenForControl, number).detach();
}

void OpenPage(std::uint16_t number) {
  ThePage().wanted = true;
  std::thread(ListenForPages, number).detach();
}

int ControlPort() { return NumberOf(TheControlPort()); }
int PagePort() { return NumberOf(ThePage()); }

}  // namespace kit
