#include "tools/vexosim/card_run.h"

#include <filesystem>

#include "files/exit_status.h"
#include "files/input.h"
#include "files/printable.h"
#include "script/action_printer.h"
#include "script/parse.h"
#include "sim/text.h"
#include "sim/world.h"
#include "tools/vexosim/listing/terminal_surroundings.h"

namespace vexosim {
namespace {

// Debug outputs as they come: | what programs write, ! what the kernel writes.
class DebugPrinter : public sim::TraceListener {
 public:
  explicit DebugPrinter(std::ostream& out) : out_(out) {
    sim::TheWorld().trace.AddListener(*this, sim::Trace::Hears::AllButCycles);
  }
  ~DebugPrinter() override {
    sim::TheWorld().trace.RemoveListener(*this);
    Print('|', debug_.Flush());
    Print('!', kernel_.Flush());
  }
  DebugPrinter(const DebugPrinter&) = delete;
  DebugPrinter& operator=(const DebugPrinter&) = delete;

  void OnEvent(const sim::Event&, const sim::EventDetail* detail) override {
    const auto* const text = std::get_if<sim::DebugEvent>(detail);
    if (text == nullptr) return;
    Print(text->kernel ? '!' : '|', (text->kernel ? kernel_ : debug_).Add(text->text));
  }

 private:
  void Print(char mark, const std::vector<std::string>& lines) {
    for (const std::string& line : lines) out_ << mark << ' ' << files::Printable(line) << '\n';
    out_.flush();
  }

  std::ostream& out_;
  script::DebugLines debug_;
  script::DebugLines kernel_;
};

// Throws script::ScriptError for a line that does more than to change the board.
std::vector<script::Statement> BoardOf(const std::string& name) {
  std::ifstream file = files::OpenInput(name);
  std::vector<script::Script> variants = script::ParseScript(file, name);
  if (variants.size() != 1) {
    throw script::ScriptError(name + ": a board has no variants");
  }
  for (const script::Statement& statement : variants.front().statements) {
    if (statement.group == script::LineGroup::Board) continue;
    throw script::ScriptError(name + ':' + std::to_string(statement.line) +
                              ": expected a line that changes the board, found '" + statement.text +
                              "': the program calls the library");
  }
  return std::move(variants.front().statements);
}

int Play(const CardRun& run, std::ostream& out, std::ostream& err) {
  const std::string name = files::Printable(run.program);
  std::string arguments;
  for (const std::string& argument : run.arguments) {
    arguments += (arguments.empty() ? "" : " ") + argument;
  }
  try {
    emulator::Device device(run.card, run.device);
    const std::uint32_t code = [&] {
      const DebugPrinter printer(out);
      return device.Run(run.program, arguments);
    }();
    out << name << " ended with exit code " << static_cast<std::int32_t>(code) << std::endl;
    return files::kExitDone;
  } catch (const emulator::LoaderRefusal& refusal) {
    err << name << " was not loaded: " << files::Printable(refusal.what()) << " (error "
        << refusal.error << ')' << std::endl;
  } catch (const harness::ImageFault& fault) {
    err << name << ": " << files::Printable(fault.what()) << std::endl;
  } catch (const sim::Deadlock& deadlock) {
    err << name << " does not go on: " << files::Printable(deadlock.what()) << std::endl;
  } catch (const script::Ended& ended) {
    err << name << " was ended: " << files::Printable(ended.what()) << std::endl;
  }
  return files::kExitUnmet;
}

}  // namespace

int RunCard(const CardRun& run, std::ostream& out, std::ostream& err) {
  if (!std::filesystem::is_directory(run.card)) {
    err << "vexosim: " << files::Printable(run.card) << " is no folder" << std::endl;
    return files::kExitWrong;
  }
  TerminalSurroundings around;
  sim::ResetWorld();
  sim::World& world = sim::TheWorld();
  world.trace.SetEnabled(false);
  world.windows.keep_received = false;
  emulator::ShowVersionsOf(emulator::Card(run.card));
  try {
    if (!run.script.empty()) {
      script::Session session(out, around);
      for (const script::Statement& statement : BoardOf(run.script)) statement.step(session);
    }
  } catch (const script::ScriptError& error) {
    err << files::Printable(error.what()) << std::endl;
    return files::kExitWrong;
  }
  if (run.seed != 0) world.kernel.SetSeed(run.seed);
  world.kernel.SetCycleTime(run.cycle_ns);
  for (script::TraceSink* const sink : run.sinks) sink->Begin(world.trace);
  script::RunWatch watch(run.limits, around);
  watch.Attach();
  return Play(run, out, err);
}

}  // namespace vexosim
