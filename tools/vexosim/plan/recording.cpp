#include "tools/vexosim/plan/recording.h"

#include <algorithm>
#include <sstream>
#include <string_view>
#include <utility>

#include "VexoCtrlSDK.h"
#include "files/exit_status.h"
#include "harness/host.h"
#include "script/board_state.h"
#include "script/interpreter.h"
#include "sim/world.h"
#include "tools/vexosim/listing/terminal_surroundings.h"
#include "tools/vexosim/plan/scope.h"

namespace vexosim {
namespace {

using plan::ActionKind;
using script::LineGroup;
using script::Statement;

constexpr std::uint8_t kRevision = static_cast<std::uint8_t>(~kChipIdFamily);
constexpr int kSettleReads = 3;
constexpr std::uint32_t kSyncPeriod = 23;
constexpr std::uint32_t kReasonAttach = 1;

// What leaves board and library as the next script should find them: the monitor has told what it
// sees by then, whenever it was started.
constexpr std::array<std::string_view, 4> kClosing = {"wait 100", "command stop-monitor null",
                                                      "unbind", "detach"};
constexpr std::string_view kClosingSource = "the script ends";

plan::Action ActionOf(const sim::CallEvent& call) {
  const auto number = [&call](std::size_t i) {
    return static_cast<std::uint32_t>(call.args.at(i));
  };
  plan::Action action;
  if (call.fn == "DllMain") {
    action.kind = number(0) == kReasonAttach ? ActionKind::Load : ActionKind::Unload;
  } else if (call.fn == "VEXOAPI_Initialize") {
    action.kind = *call.valid ? ActionKind::Initialize : ActionKind::InitializeInvalid;
  } else if (call.fn == "VEXOAPI_Uninitialize") {
    action.kind = ActionKind::Uninitialize;
  } else if (call.fn == "VEXOAPI_SetEnableDebug" || call.fn == "VEXOAPI_SetEnableOutputMsg") {
    action.kind = call.fn == "VEXOAPI_SetEnableDebug" ? ActionKind::Debug : ActionKind::Output;
    action.number = number(0) != 0 ? 1 : 0;
  } else if (call.fn == "VEXOAPI_GetVersion") {
    action.kind = ActionKind::Version;
  } else if (call.fn == "VEXOAPI_CommandProc") {
    action.kind = ActionKind::Command;
    action.number = number(0);
    action.record = call.record;
    while (action.record && action.record->size() > 1 && action.record->back() == 0) {
      action.record->pop_back();  // what is not given is 0
    }
  } else if (call.fn == "VEXOAPI_SetMotionInfo") {
    action.kind = ActionKind::Motion;
    action.number = number(0);
    action.level = number(1);
    action.record = call.record;
  } else {
    action.kind = ActionKind::Text;
    action.text = *call.text;
  }
  return action;
}

// Runs a script's lines, and keeps what comes of them.
class Recorder : public script::LineSource, public sim::TraceListener {
 public:
  Recorder(const script::Script& script, Begin begin)
      : script_(script), begin_(begin), interpreter_(Quiet(), around_, out_, err_) {
    interpreter_.State().on_received = [this](const sim::ReceivedMessage& message) {
      if (acting_ && !asking_) {
        recording_.actions.back().messages.push_back(
            {message.message, message.wparam, 0, message.record});
      }
    };
    sim::World& world = sim::TheWorld();
    world.windows.procedure = [this](PlatWindow, std::uint32_t, std::uintptr_t,
                                     std::intptr_t lparam) {
      if (acting_ && !asking_) {
        recording_.actions.back().messages.back().lparam = static_cast<std::uint32_t>(lparam);
      }
    };
    world.trace.AddListener(*this);
  }
  ~Recorder() override {
    sim::TheWorld().trace.RemoveListener(*this);
    sim::TheWorld().windows.procedure = nullptr;
  }
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;

  Recording Run() {
    interpreter_.Run(*this);
    std::string complaint = err_.str();
    while (complaint.ends_with('\n')) complaint.pop_back();
    if (interpreter_.Status() != files::kExitDone) throw NoPlan(complaint);
    return std::move(recording_);
  }

  // script::LineSource
  std::optional<Statement> Next() override {
    while (next_ < script_.statements.size()) {
      const Statement& statement = script_.statements[next_++];
      if (statement.group == LineGroup::Action) {
        if (!begun_) BeginCalls();
        // What goes on with an action is looked at together with it.
        if (acting_ && !statement.goes_on) EndAction();
        return Start(statement);
      }
      if (statement.group == LineGroup::Board) return statement;
      if (statement.group == LineGroup::Check && begin_ == Begin::AsItIs) return statement;
    }
    return Close();
  }
  std::string Place(const Statement& statement) const override {
    return script_.name + ':' + std::to_string(statement.line) + ": ";
  }

  // sim::TraceListener
  void OnEvent(const sim::Event& event, const sim::EventDetail* detail) override {
    if (asking_ || !acting_) return;
    const bool host = event.by == sim::By::Host;
    if (const auto* call = std::get_if<sim::CallEvent>(detail)) {
      return Add(ActionOf(*call));
    }
    if (const auto* line = std::get_if<sim::LineEvent>(detail)) return Wait(line->text);
    if (recording_.actions.size() == first_of_line_) return;
    RecordedAction& action = recording_.actions.back();
    if (detail == nullptr) {
      if (host) ++action.cost.cycles;
    } else if (const auto* sleep = std::get_if<sim::SleepEvent>(detail)) {
      if (host && !sleep->wait) action.cost.slept_ms += sleep->ms;
    } else if (const auto* text = std::get_if<sim::DebugEvent>(detail)) {
      action.debug += text->text;
    } else if (const auto* end = std::get_if<sim::ReturnEvent>(detail)) {
      Returned(*end, action);
    }
  }

 private:
  static script::InterpreterOptions Quiet() {
    script::InterpreterOptions options;
    options.quiet = true;
    return options;
  }

  // Everything that the script says of the board has been said.
  void BeginCalls() {
    begun_ = true;
    sim::World& world = sim::TheWorld();
    recording_.board = script::BoardInLines(world);
    const bool usual =
        std::none_of(recording_.board.begin(), recording_.board.end(),
                     [](const std::string& line) { return line.starts_with("board "); });
    if (usual) {
      recording_.board.insert(recording_.board.begin(),
                              "board chips " + std::to_string(world.board.FittedCount()));
    }
    const sim::RegisterSnapshot before = sim::TakeSnapshot(world.board);
    const sim::RegisterSnapshot other = Turned(before);
    recording_.writable = before;
    for (unsigned chip = 0; chip < kChipsMax; ++chip) {
      if (!before.chips[chip]) continue;
      for (std::uint8_t page = 0; page < kPageCount; ++page) {
        for (std::size_t reg = 0; reg < kRegistersPerPage; ++reg) {
          (*recording_.writable.chips[chip])[page][reg] = static_cast<std::uint8_t>(
              (*before.chips[chip])[page][reg] ^ (*other.chips[chip])[page][reg]);
        }
      }
    }
    if (begin_ == Begin::AsItIs) return Restore(before);
    for (unsigned chip = 0; chip < kChipsMax; ++chip) {
      if (!before.chips[chip]) continue;
      world.board.SetId(chip, world.board.Peek(chip, kChipId) ^ kRevision);
      for (unsigned channel = 0; channel < kChannelsPerChip; ++channel) {
        world.board.SetMotion(chip * kChannelsPerChip + channel, true);
      }
    }
    world.board.SetSettle(kSettleReads);
    world.board.SetSyncPeriod(kSyncPeriod);
  }

  // Turns every bit round that a write reaches; returns what the chips then read.
  static sim::RegisterSnapshot Turned(const sim::RegisterSnapshot& before) {
    sim::RegisterSnapshot turned = before;
    for (auto& pages : turned.chips) {
      if (!pages) continue;
      for (auto& page : *pages) {
        for (std::uint8_t& value : page) value = static_cast<std::uint8_t>(~value);
      }
    }
    Restore(turned);
    return sim::TakeSnapshot(sim::TheWorld().board);
  }

  static void Restore(const sim::RegisterSnapshot& registers) {
    for (unsigned chip = 0; chip < kChipsMax; ++chip) {
      if (!registers.chips[chip]) continue;
      for (std::uint8_t page = 0; page < kPageCount; ++page) {
        for (std::size_t reg = 0; reg < kRegistersPerPage; ++reg) {
          sim::TheWorld().board.Poke(chip, page, static_cast<std::uint8_t>(reg),
                                     (*registers.chips[chip])[page][reg]);
        }
      }
    }
  }

  Statement Start(const Statement& statement) {
    acting_ = statement;
    first_of_line_ = recording_.actions.size();
    return statement;
  }

  void EndAction() {
    acting_.reset();
    if (recording_.actions.size() == first_of_line_) return;
    if (CanBeAsked()) {
      recording_.actions.back().registers = sim::TakeSnapshot(sim::TheWorld().board);
    }
  }

  // Whether the library reads a chip's identification for who asks.
  bool CanBeAsked() {
    const sim::World& world = sim::TheWorld();
    if (!loaded_ || world.board.FittedCount() == 0) return false;
    asking_ = true;
    VexoRegRecord record = {VEXO_CHIP_MASTER, kChipId.page, kChipId.first, 0};
    const int result = harness::CommandProc(VEXO_CMD_READ_REG, &record, sizeof record);
    asking_ = false;
    return result == VEXO_OK && record.value == world.board.Peek(0, kChipId);
  }

  void Add(plan::Action action) {
    RecordedAction recorded;
    recorded.line = acting_->line;
    recorded.source = acting_->text;
    recorded.action = std::move(action);
    recording_.actions.push_back(std::move(recorded));
  }

  void Wait(const std::string& line) {
    plan::Action action;
    action.kind = ActionKind::Wait;
    action.number = static_cast<std::uint32_t>(std::stoul(line.substr(line.find(' '))));
    Add(std::move(action));
  }

  void Returned(const sim::ReturnEvent& end, RecordedAction& action) {
    if (end.value) action.result = static_cast<std::int32_t>(*end.value);
    if (end.record) action.record = end.record;
    if (action.action.kind == ActionKind::Version) {
      if (end.text) {
        action.answer = end.text;
      } else {
        action.action.kind = ActionKind::VersionNull;
      }
    }
    if (action.action.kind == ActionKind::Load) loaded_ = true;
    if (action.action.kind == ActionKind::Unload) {
      loaded_ = false;
      action.result.reset();  // the system keeps what the entry returned
    }
  }

  std::optional<Statement> Close() {
    if (!begun_) BeginCalls();
    if (acting_) EndAction();
    if (!loaded_ || closed_ == kClosing.size()) return std::nullopt;
    Statement statement = *script::ParseLine(std::string(kClosing[closed_++]), true);
    Statement shown = Start(statement);
    acting_->text = kClosingSource;
    return shown;
  }

  const script::Script& script_;
  const Begin begin_;
  Recording recording_;
  std::size_t next_ = 0;    // of the statements
  std::size_t closed_ = 0;  // of the closing lines
  bool begun_ = false;      // calls have begun
  bool loaded_ = false;
  bool asking_ = false;  // what happens is the recorder's doing
  std::optional<Statement> acting_;
  std::size_t first_of_line_ = 0;  // its first action
  TerminalSurroundings around_;
  std::ostringstream out_;
  std::ostringstream err_;
  script::Interpreter interpreter_;
};

}  // namespace

Recording Record(const script::Script& script, Begin begin) {
  return Recorder(script, begin).Run();
}

}  // namespace vexosim
