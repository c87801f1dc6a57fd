// The functions of VexoDesk.h: their arguments looked at, their refusals put into words.
#include <algorithm>
#include <cstring>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "VexoDesk.h"
#include "desk/library/board.h"
#include "platform/platform.h"
#include "sim/world.h"

namespace {

using desk::Board;
using desk::Call;
using desk::g_board;
using desk::g_gate;
using desk::Refusal;

std::mutex g_opening;  // a board is opened or closed
thread_local std::string t_error;

int Refuse(int result, const std::string& why) {
  t_error = why;
  return result;
}

// Runs what may be refused.
template <typename Run>
int Guarded(const Run& run) {
  try {
    return run();
  } catch (const Refusal& refusal) {
    return Refuse(refusal.result, refusal.what());
  } catch (const std::exception& error) {
    return Refuse(VEXODESK_ERROR_SYSTEM, error.what());
  }
}

constexpr const char* kNoBoard = "no board is open: VexoDesk_Open opens one";

void NeedBoard(const Call& call) {
  if (!call) throw Refusal(VEXODESK_ERROR_STATE, kNoBoard);
}

void NeedWindowThread() {
  if (g_board->IsWindowThread()) return;
  throw Refusal(VEXODESK_ERROR_THREAD,
                "this is for the thread that opened the board, whose the windows are");
}

std::vector<std::string> Lines(const char* text) {
  std::vector<std::string> lines;
  if (text == nullptr) return lines;
  std::string_view rest = text;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    lines.emplace_back(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return lines;
}

desk::Settings SettingsOf(const VexoDeskOptions& options) {
  const auto need = [](bool right, const std::string& what) {
    if (!right) throw Refusal(VEXODESK_ERROR_ARGUMENT, what);
  };
  need(options.size == sizeof(VexoDeskOptions),
       "expected size to be " + std::to_string(sizeof(VexoDeskOptions)) + ", found " +
           std::to_string(options.size) + ": begin with VEXODESK_DEFAULTS");
  need(options.time <= VEXODESK_REAL,
       "expected time to be VEXODESK_VIRTUAL or VEXODESK_REAL, found " +
           std::to_string(options.time));
  desk::Settings settings;
  settings.real_time = options.time == VEXODESK_REAL;
  const auto port = [&](std::uint32_t number, const char* option) -> std::optional<std::uint16_t> {
    need(number <= 0xFFFF || number == VEXODESK_ANY_PORT,
         std::string("expected ") + option + " to be 0 to 65535 or VEXODESK_ANY_PORT, found " +
             std::to_string(number));
    if (number == 0) return std::nullopt;
    return number == VEXODESK_ANY_PORT ? std::uint16_t{0} : static_cast<std::uint16_t>(number);
  };
  settings.port = port(options.control_port, "control_port");
  settings.page = port(options.page_port, "page_port");
  settings.lines = Lines(options.board);
  const auto path = [&](const char* name, const char* option) {
    if (name == nullptr) return std::string();
    need(*name != '\0', std::string("expected ") + option + " to name a file, found nothing");
    return std::string(name);
  };
  settings.texts = path(options.texts, "texts");
  settings.trace = path(options.trace, "trace");
  return settings;
}

// As much of a text as fits, whole characters.
void CopyText(const std::string& text, char* out, std::size_t capacity) {
  if (out == nullptr || capacity == 0) return;
  std::size_t bytes = std::min(text.size(), capacity - 1);
  const auto continues = [&](std::size_t at) {
    return at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80;
  };
  while (bytes > 0 && continues(bytes)) --bytes;
  std::memcpy(out, text.data(), bytes);
  out[bytes] = '\0';
}

// Longer than it can pass by: what the system takes for ever.
std::uint32_t Duration(std::uint32_t ms) { return std::min(ms, kPlatForever - 1); }

}  // namespace

const char* VexoDesk_Error(void) { return t_error.c_str(); }

int VexoDesk_Open(const VexoDeskOptions* options) {
  return Guarded([=] {
    const std::lock_guard opening(g_opening);
    if (g_board != nullptr) throw Refusal(VEXODESK_ERROR_STATE, "a board is open already");
    static constexpr VexoDeskOptions kDefaults = VEXODESK_DEFAULTS;
    g_board =
        std::make_unique<Board>(SettingsOf(options == nullptr ? kDefaults : *options)).release();
    g_gate.Open();
    return VEXODESK_OK;
  });
}

int VexoDesk_Close(void) {
  return Guarded([] {
    const std::lock_guard opening(g_opening);
    if (g_board == nullptr) throw Refusal(VEXODESK_ERROR_STATE, kNoBoard);
    NeedWindowThread();
    if (!g_gate.Close()) {
      throw Refusal(VEXODESK_ERROR_BUSY, "a call is still under way");
    }
    const std::unique_ptr<Board> board(std::exchange(g_board, nullptr));
    board->Close();
    return VEXODESK_OK;
  });
}

int VexoDesk_ControlPort(void) {
  return Guarded([] {
    const Call call;
    NeedBoard(call);
    return static_cast<int>(g_board->PortNumber());
  });
}

int VexoDesk_PagePort(void) {
  return Guarded([] {
    const Call call;
    NeedBoard(call);
    return static_cast<int>(g_board->PageNumber());
  });
}

int VexoDesk_Line(const char* line, char* answer, size_t capacity) {
  return Guarded([=] {
    if (!g_gate.Enter()) {
      CopyText(kNoBoard, answer, capacity);
      throw Refusal(VEXODESK_ERROR_STATE, kNoBoard);
    }
    struct Leave {
      ~Leave() { g_gate.Leave(); }
    } const leave;
    if (line == nullptr || (answer == nullptr && capacity != 0)) {
      throw Refusal(VEXODESK_ERROR_ARGUMENT, line == nullptr
                                                 ? "expected a line, found null"
                                                 : "expected room for the answer, found null");
    }
    const desk::Answer said = g_board->RunLine(line);
    CopyText(said.text, answer, capacity);
    switch (said.result) {
      case desk::Answer::Result::Done:
        return VEXODESK_OK;
      case desk::Answer::Result::Unmet:
        return Refuse(VEXODESK_ERROR_UNMET, said.text);
      case desk::Answer::Result::Refused:
        break;
    }
    return Refuse(VEXODESK_ERROR_LINE, said.text);
  });
}

VexoWindow VexoDesk_CreateWindow(VexoDeskProcedure procedure, void* context) {
  VexoWindow window = nullptr;
  Guarded([=, &window] {
    const Call call;
    NeedBoard(call);
    NeedWindowThread();
    window = g_board->CreateWindow(procedure, context);
    return VEXODESK_OK;
  });
  return window;
}

int VexoDesk_DestroyWindow(VexoWindow window) {
  return Guarded([=] {
    const Call call;
    NeedBoard(call);
    NeedWindowThread();
    g_board->DestroyWindow(window);
    return VEXODESK_OK;
  });
}

int VexoDesk_Pump(uint32_t duration_ms) {
  return Guarded([=] {
    const Call call;
    NeedBoard(call);
    NeedWindowThread();
    sim::World& world = sim::TheWorld();
    const std::uint32_t ms = Duration(duration_ms);
    world.Record(sim::LineEvent{"run " + std::to_string(ms)});
    return static_cast<int>(world.kernel.Pump(ms));
  });
}

int VexoDesk_Sleep(uint32_t duration_ms) {
  return Guarded([=] {
    const Call call;
    NeedBoard(call);
    sim::TheWorld().kernel.Sleep(Duration(duration_ms));
    return VEXODESK_OK;
  });
}

uint64_t VexoDesk_Now(void) {
  const Call call;
  return call ? sim::TheWorld().kernel.NowUnwrapped() : 0;
}
