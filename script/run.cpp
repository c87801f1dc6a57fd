#include "script/run.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "script/interpreter.h"
#include "script/parse.h"
#include "script/report_words.h"
#include "sim/text.h"
#include "sim/world.h"

namespace script {
namespace {

// What is said when a script has run.
class Summary {
 public:
  Summary(const Script& script, const RunOptions& options, Surroundings& around, std::ostream& out,
          std::ostream& err)
      : script_(script), options_(options), around_(around), out_(out), err_(err) {}

  // Returns the exit status.
  int Print(const Interpreter& run) {
    status_ = run.Status();
    if (options_.registers) around_.ShowRegisters(out_, {true, 0}, std::nullopt);
    if (options_.picture) WritePicture();
    PrintChecks(run.Checks(), run.UnmetChecks());
    if (options_.machine != nullptr) PrintMachine(*options_.machine);
    out_.flush();
    for (const std::string& warning : WarningsInWords(sim::TheWorld().reports.All())) {
      err_ << "warning: " << warning << '\n';
    }
    return status_;
  }

 private:
  void WritePicture() {
    try {
      around_.SavePicture(*options_.picture);
    } catch (const std::exception& error) {
      err_ << error.what() << std::endl;
      status_ = kExitWrong;
    }
  }

  void PrintChecks(unsigned checks, unsigned unmet) {
    if (checks == 0) return;
    if (!script_.variant.empty()) out_ << script_.variant << ": ";
    out_ << (unmet == 0 ? std::to_string(checks)
                        : std::to_string(unmet) + " of " + std::to_string(checks))
         << (checks == 1 ? " expectation" : " expectations") << (unmet == 0 ? " met" : " not met")
         << '\n';
  }

  void PrintMachine(const harness::ImageRun& machine) {
    if (!options_.quiet) {
      out_ << "image: " << machine.Instructions() << " instructions, " << machine.DeepestStack()
           << " bytes of stack\n";
    }
    // One in a thread comes out when the host pauses next, which may be never.
    if (machine.FirstFault() && status_ == kExitDone) {
      err_ << script_.name << ": " << *machine.FirstFault() << std::endl;
      status_ = kExitUnmet;
    }
  }

  const Script& script_;
  const RunOptions& options_;
  Surroundings& around_;
  std::ostream& out_;
  std::ostream& err_;
  int status_ = kExitDone;
};

// Of a script's variants those that are to run. Throws ScriptError.
std::vector<Script> ChosenVariants(std::vector<Script> scripts, const std::string& name,
                                   const RunOptions& options) {
  std::vector<std::string_view> names;
  names.reserve(scripts.size());
  for (const Script& script : scripts) names.push_back(script.variant);
  if (options.variant) {
    std::erase_if(scripts,
                  [&](const Script& script) { return script.variant != *options.variant; });
    if (!scripts.empty() && !options.variant->empty()) return scripts;
    throw ScriptError(name + ": expected " +
                      (names.front().empty() ? "no variant, it has none" : sim::OneOf(names)) +
                      ", found '" + *options.variant + "'");
  }
  if (scripts.size() > 1 &&
      (options.trace != nullptr || !options.sinks.empty() || options.picture)) {
    throw ScriptError(name + ": a trace or a picture is of one variant: choose " +
                      sim::OneOf(names) + " (--variant)");
  }
  return scripts;
}

}  // namespace

int RunScript(const Script& script, const RunOptions& options, Surroundings& around,
              std::ostream& out, std::ostream& err) {
  if (!options.quiet && !script.variant.empty()) out << "variant " << script.variant << '\n';
  InterpreterOptions how;
  how.quiet = options.quiet;
  how.seed = options.seed;
  how.cycle_ns = options.cycle_ns;
  how.limits = options.limits;
  how.sinks = options.sinks;
  how.waveform = options.waveform;
  std::optional<JsonSink> trace;
  if (options.trace != nullptr) how.sinks.push_back(&trace.emplace(*options.trace));
  Interpreter interpreter(how, around, out, err);
  ScriptSource source(script);
  interpreter.Run(source);
  return Summary(script, options, around, out, err).Print(interpreter);
}

int RunScript(std::istream& in, const std::string& name, const RunOptions& options,
              Surroundings& around, std::ostream& out, std::ostream& err) {
  try {
    int status = kExitDone;
    for (const Script& script : ChosenVariants(ParseScript(in, name), name, options)) {
      status = std::max(status, RunScript(script, options, around, out, err));
    }
    return status;
  } catch (const ScriptError& error) {
    err << error.what() << std::endl;
    return kExitWrong;
  }
}

}  // namespace script
