#include "tools/vexosim/card_run.h"

#include <filesystem>

#include "files/exit_status.h"
#include "files/input.h"
#include "files/printable.h"
#include "script/action_printer.h"
#include "script/parse.h"
#include "sim/text.h"
#include "sim/world.h"
#include "tools/vexosim/card_script.h"
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

// "program 2 (recorder.exe)", of those behind the first.
std::string NameOf(const emulator::Device& device, const emulator::Program& program) {
  return "program " + std::to_string(device.NumberOf(program)) + " (" +
         files::Printable(emulator::NameOf(program.Path())) + ')';
}

std::string InWords(std::uint32_t exit_code) {
  return " ended with exit code " + std::to_string(static_cast<std::int32_t>(exit_code));
}

// Titles as they come, with the program's number where it is not the first; and ends.
void TellPrograms(emulator::Device& device, std::ostream& out) {
  device.Windows().on_title = [&](const emulator::Program& program, const std::string& title) {
    const unsigned number = device.NumberOf(program);
    out << '=' << (number == 1 ? "" : std::to_string(number)) << ' ' << files::Printable(title)
        << std::endl;
  };
  device.on_end = [&](const emulator::Program& program) {
    if (device.NumberOf(program) == 1) return;
    out << NameOf(device, program) << InWords(program.ExitCode()) << std::endl;
  };
}

int Play(const CardRun& run, const CardScript& script, script::Surroundings& around,
         std::ostream& out, std::ostream& err) {
  const std::string name = files::Printable(run.program);
  std::string arguments;
  for (const std::string& argument : run.arguments) {
    arguments += (arguments.empty() ? "" : " ") + argument;
  }
  try {
    emulator::Device device(run.card, run.device);
    TellPrograms(device, out);
    script::Session session(out, around);
    script.Play(session, device);
    const std::uint32_t code = [&] {
      const DebugPrinter printer(out);
      return device.Run(run.program, arguments);
    }();
    for (const auto& program : device.Programs()) {
      if (program->ExitCode() != emulator::kStillActive) continue;
      out << NameOf(device, *program) << " was running still" << std::endl;
    }
    out << name << InWords(code) << std::endl;
    return files::kExitDone;
  } catch (const script::ScriptError& error) {
    err << files::Printable(error.what()) << std::endl;
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
  CardScript script;
  try {
    if (!run.script.empty()) script = CardScript(run.script);
    script::Session session(out, around);
    script.MakeBoard(session);
  } catch (const script::ScriptError& error) {
    err << files::Printable(error.what()) << std::endl;
    return files::kExitWrong;
  }
  if (run.seed != 0) world.kernel.SetSeed(run.seed);
  world.kernel.SetCycleTime(run.cycle_ns);
  for (script::TraceSink* const sink : run.sinks) sink->Begin(world.trace);
  script::RunWatch watch(run.limits, around);
  watch.Attach();
  return Play(run, script, around, out, err);
}

}  // namespace vexosim
