#include "scripts.h"

#include <sstream>
#include <stdexcept>

#include "harness/export_table.h"
#include "harness/host.h"
#include "script_imports.h"
#include "turns.h"

namespace host {
namespace {

using harness::ExportTable;
using script::LineGroup;
using script::Statement;

// ---- The DLL as the script's host sees it -------------------------------------------------------

constexpr std::uint32_t kReasonDetach = 0;
constexpr std::uint32_t kReasonAttach = 1;

HMODULE g_library = nullptr;
ExportTable g_exports;
bool g_by_loader = false;    // the system's loader entered it
bool g_last_action = false;  // of the script

void Take(HMODULE library, bool by_loader) {
  g_library = library;
  g_by_loader = by_loader;
  g_exports = BindExports(library);
}

// A script that calls the library before its first attach finds it mapped and not entered.
const ExportTable& Exports() {
  if (g_library == nullptr) Take(MapWithoutEntry(ScriptImports()), false);
  return g_exports;
}

// The system's loader enters the library at the first attach, and at a detach that ends the script.
// Otherwise the image stays, with all that a detach leaves in it, and is entered as the loader
// does.
int Enter(PlatHandle, std::uint32_t reason, void*) {
  if (reason == kReasonAttach && g_library == nullptr) {
    Take(LoadWithImports(ScriptImports()), true);
    return 1;
  }
  if (reason == kReasonDetach && g_library != nullptr && g_by_loader && g_last_action &&
      !g_turns.AnyWorker()) {
    const HMODULE library = g_library;
    g_library = nullptr;
    return FreeLibrary(library);
  }
  Exports();
  return EntryOf(g_library)(g_library, reason, nullptr);
}

ExportTable LoadedExports() {
  ExportTable table = {};
  table.dll_entry = Enter;
  table.initialize = [](VexoWindow window) {
    return Exports().initialize(RealWindow(reinterpret_cast<PlatWindow>(window)));
  };
  table.uninitialize = [] { Exports().uninitialize(); };
  table.get_version = [](VexoChar16* buffer) { return Exports().get_version(buffer); };
  table.set_enable_debug = [](std::uint32_t enable) { Exports().set_enable_debug(enable); };
  table.set_enable_output_msg = [](std::uint32_t enable) {
    Exports().set_enable_output_msg(enable);
  };
  table.command_proc = [](std::uint32_t code, void* parameter) {
    return Exports().command_proc(code, parameter);
  };
  table.set_motion_info = [](std::uint8_t channel, std::uint8_t level, std::uint8_t* mask) {
    return Exports().set_motion_info(channel, level, mask);
  };
  table.text_command_proc = [](const char* line) { return Exports().text_command_proc(line); };
  table.reset = [] {};
  return table;
}

void Unload() {
  EndThreads();
  if (g_library != nullptr) FreeLibrary(g_library);
  g_library = nullptr;
  CloseLeftOvers();
}

// Time passes as the side has it; nobody looks at what a script shows.
class HostSurroundings : public script::Surroundings {
 public:
  explicit HostSurroundings(Side side) : side_(side) {}

  void LetTimePass(std::uint32_t ms) override {
    if (side_ == Side::Linked) return Surroundings::LetTimePass(ms);
    g_turns.Pump(ms, sim::TheWorld().windows.deaf);
  }
  void ShowRegisters(std::ostream&, script::ChipChoice, std::optional<std::uint8_t>) override {}
  void ShowWrites(std::ostream&, std::size_t) override {}
  void ShowScreen(std::ostream&) override {}
  void SavePicture(const std::string&) override {}

 private:
  Side side_;
};

// ---- Running ------------------------------------------------------------------------------------

class Run {
 public:
  explicit Run(Side side) : around_(side), session_(output_, around_) {}

  RunResult All(const std::vector<Statement>& statements) {
    std::size_t last_action = statements.size();
    for (std::size_t i = 0; i < statements.size(); ++i) {
      if (statements[i].group == LineGroup::Action) last_action = i;
    }
    for (std::size_t i = 0; i < statements.size(); ++i) {
      g_last_action = i == last_action;
      try {
        One(statements[i]);
      } catch (const script::Unmet& unmet) {
        Complain(statements[i], unmet.found);
      } catch (const std::exception& error) {
        Complain(statements[i], error.what());
        break;
      }
    }
    sim::World& world = sim::TheWorld();
    result_.registers = sim::TakeSnapshot(world.board);
    result_.received = std::move(world.windows.received);
    result_.trace = std::move(world.trace);
    result_.reports = world.reports.All();
    return std::move(result_);
  }

 private:
  void One(const Statement& statement) {
    switch (statement.group) {
      case LineGroup::Action:
        session_.BeginAction(statement.text);
        statement.step(session_);
        result_.actions.push_back({statement.line, statement.text, session_.returned,
                                   session_.FirstEvent(), session_.FirstReceived()});
        break;
      case LineGroup::Check:
        ++result_.checks;
        statement.step(session_);
        break;
      case LineGroup::Board:
      case LineGroup::Output:
      case LineGroup::Switch:
      case LineGroup::Tool:
        statement.step(session_);
        break;
    }
  }

  void Complain(const Statement& statement, const std::string& what) {
    result_.complaints.push_back("line " + std::to_string(statement.line) + ": " + statement.text +
                                 ": " + what);
  }

  std::ostringstream output_;
  HostSurroundings around_;
  script::Session session_;
  RunResult result_;
};

}  // namespace

RunResult RunOn(Side side, const std::vector<Statement>& statements) {
  harness::UseExports(side == Side::Linked ? harness::LinkedExports() : LoadedExports());
  harness::Restart();
  if (side == Side::Linked) return Run(side).All(statements);
  g_turns.Start();
  RunResult result = Run(side).All(statements);
  Unload();
  return result;
}

}  // namespace host
