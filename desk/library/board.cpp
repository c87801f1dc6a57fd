#include "desk/library/board.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <utility>

#include "files/file_error.h"
#include "harness/host.h"
#include "script/parse.h"
#include "script/words.h"
#include "sim/kernel/message_records.h"
#include "sim/world.h"

namespace desk {
namespace {

constexpr std::uint32_t kReasonDetach = 0;
constexpr std::uint32_t kReasonAttach = 1;

// Before anything is made: what is wrong with the lines leaves no trace.
void CheckLines(const std::vector<std::string>& lines) {
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const std::string place = "line " + std::to_string(i + 1) + " of the board: ";
    try {
      const auto statement = script::ParseLine(lines[i], false);
      if (!statement || statement->group == script::LineGroup::Board) continue;
      throw Refusal(VEXODESK_ERROR_LINE,
                    place + "expected a line that changes the board, found '" + lines[i] + "'");
    } catch (const script::Malformed& malformed) {
      throw Refusal(VEXODESK_ERROR_LINE, place + malformed.what());
    }
  }
}

void TellThatItDoesNotComeBack(const std::string& who_waits) {
  std::cerr << "VexoCtrlSDK: a call of the program does not come back: " << who_waits << std::endl;
}

}  // namespace

Board::Board(const Settings& settings) {
  CheckLines(settings.lines);
  const std::lock_guard not_yet(whole_);
  if (settings.port || settings.page) {
    PortSettings ports{.control = settings.port};
    if (settings.page) {
      ports.page = PageSettings{.port = *settings.page, .title = program_invocation_short_name};
    }
    port_ = std::make_unique<Port>(ports, [this](const std::string& line) {
      { const std::lock_guard wait(whole_); }
      if (console_ == nullptr) return Answer{Answer::Result::Refused, "there is no board"};
      return console_->Run(line);
    });
  }
  if (!settings.texts.empty()) {
    texts_ = std::make_unique<TextsOutput>(settings.texts, settings.trace);
  }
  if (!settings.trace.empty()) {
    trace_ = std::make_unique<TraceOutput>(settings.trace, settings.texts);
  }
  harness::Restart();
  try {
    Begin(settings);
  } catch (...) {
    End();
    throw;
  }
  if (settings.page) moments_ = std::make_unique<MomentTaker>(*port_, *this);
}

Board::~Board() = default;

void Board::Begin(const Settings& settings) {
  sim::World& world = sim::TheWorld();
  if (trace_ != nullptr) world.trace.AddListener(*trace_);
  if (texts_ != nullptr) {
    world.trace.AddListener(*texts_, sim::Trace::Hears::AllButCycles);
  }
  if (port_ != nullptr) world.trace.AddListener(port_->Events());
  world.windows.procedure = [this](PlatWindow window, std::uint32_t message, std::uintptr_t wparam,
                                   std::intptr_t lparam) {
    OnMessage(window, message, wparam, lparam);
  };
  using Pace = sim::Kernel::Pace;
  world.kernel.on_stuck = TellThatItDoesNotComeBack;
  world.kernel.OpenToProgram(settings.real_time ? Pace::Real : Pace::Virtual);
  Enter();
  console_ = std::make_unique<Console>(*this);
  Leave();
  for (const std::string& line : settings.lines) {
    const Answer answer = console_->Run(line);
    if (answer.result != Answer::Result::Done) throw Refusal(VEXODESK_ERROR_LINE, answer.text);
  }
  Enter();
  harness::Entry(kReasonAttach);
  Leave();
}

void Board::End() {
  if (console_ != nullptr) Enter();
  console_.reset();
  harness::Restart();
}

void Board::Close() {
  moments_.reset();
  console_->EndLines();
  if (port_ != nullptr) {
    Enter();
    sim::TheWorld().trace.RemoveListener(port_->Events());
    Leave();
    port_.reset();
  }
  Enter();
  harness::Entry(kReasonDetach);
  Leave();
  End();
  std::string failed;
  const auto commit = [&failed](auto& output) {
    try {
      if (output != nullptr) output->Commit();
    } catch (const files::FileError& error) {
      failed += (failed.empty() ? "" : "; ") + std::string(error.what());
    }
  };
  commit(texts_);
  commit(trace_);
  if (!failed.empty()) throw Refusal(VEXODESK_ERROR_SYSTEM, failed);
}

// ---- Windows ------------------------------------------------------------------------------------

VexoWindow Board::CreateWindow(VexoDeskProcedure procedure, void* context) {
  const PlatWindow window = sim::TheWorld().windows.Create();
  procedures_[window] = {procedure, context};
  return reinterpret_cast<VexoWindow>(window);
}

void Board::DestroyWindow(VexoWindow window) {
  const auto handle = reinterpret_cast<PlatWindow>(window);
  if (procedures_.erase(handle) == 0) {
    throw Refusal(VEXODESK_ERROR_ARGUMENT, "expected a window, found a handle that is none");
  }
  sim::TheWorld().windows.Destroy(handle);
}

void Board::OnMessage(PlatWindow window, std::uint32_t message, std::uintptr_t wparam,
                      std::intptr_t lparam) {
  const auto found = procedures_.find(window);
  if (found == procedures_.end() || found->second.function == nullptr) return;
  const Procedure procedure = found->second;
  // Its sender may end, and its record with it, while the procedure runs.
  std::array<std::uint8_t, sizeof(VideoDetectRecord)> record{};
  const std::size_t bytes = sim::MessageRecordBytes(message);
  if (message != VEXO_MSG_INIT_RESULT && bytes != 0 && wparam != 0) {
    std::memcpy(record.data(), reinterpret_cast<const void*>(wparam), bytes);
    wparam = reinterpret_cast<std::uintptr_t>(record.data());
  }
  Leave();
  procedure.function(reinterpret_cast<VexoWindow>(window), message, wparam, lparam,
                     procedure.context);
  Enter();
}

// ---- Access -------------------------------------------------------------------------------------

void Board::Enter() { sim::TheWorld().kernel.Enter(); }
void Board::Leave() { sim::TheWorld().kernel.Leave(); }
void Board::LetTimePass(std::uint32_t ms) { sim::TheWorld().kernel.Pump(ms); }

}  // namespace desk
