#include "tools/vexosim/compare.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <sstream>

#include "device/emulator/exports.h"
#include "device/emulator/linker_map.h"
#include "files/input.h"
#include "script/run.h"
#include "sim/text.h"
#include "sim/world.h"
#include "tools/vexosim/listing/terminal_surroundings.h"
#include "tools/vexosim/traces/build_time.h"

namespace vexosim {
namespace {

// High in the part of a process's addresses where the system puts libraries.
constexpr std::uint32_t kOtherBase = 0x01E40000;

std::vector<script::Script> ReadScript(const std::string& path) {
  std::ifstream script = files::OpenInput(path);
  return script::ParseScript(script, path);
}

double Seconds(std::chrono::steady_clock::duration time) {
  return std::chrono::duration<double>(time).count();
}

class Comparison {
 public:
  Comparison(const CompareOptions& options, std::ostream& out) : options_(options), out_(out) {}

  int Run() {
    const emulator::PeImage image = emulator::PeImage::Load(options_.image);
    for (const std::string& path : options_.scripts) {
      for (script::Script& script : ReadScript(path)) scripts_.push_back(std::move(script));
    }
    for (const script::Script& script : scripts_) {
      library_.push_back(RunForComparison(script, nullptr, options_.seed));
      const ScriptOutcome& outcome = library_.back();
      // Not run at all, or not to its end, here and there: nothing was compared.
      if (outcome.status == script::kExitWrong) throw std::runtime_error(outcome.complaints);
      // Expectations are meant for the fixed order of threads.
      if (outcome.status != script::kExitDone && options_.seed == 0) {
        Complain(script.name + ": on the linked library: " + outcome.complaints);
      }
      events_ += outcome.trace.size();
    }
    std::vector<std::uint32_t> bases = options_.bases;
    if (bases.empty()) bases = {image.PreferredBase(), kOtherBase};
    // What the host lends is oddly aligned for one and in whole words for the next.
    for (std::size_t i = 0; i < bases.size(); ++i) OneBase(image, bases[i], i % 2 != 0);
    out_ << options_.scripts.size() << " scripts with " << events_ << " events at " << bases.size()
         << " bases: " << (differences_ == 0 ? "the same traces" : "differences") << '\n';
    if (options_.relocations) Relocations(image);
    return differences_ == 0 ? script::kExitDone : script::kExitUnmet;
  }

 private:
  void Complain(const std::string& what) {
    ++differences_;
    out_ << what << std::endl;
  }

  void OneBase(const emulator::PeImage& image, std::uint32_t base, bool lends_aligned) {
    emulator::MachineOptions machine_options;
    machine_options.base = base;
    machine_options.lends_aligned = lends_aligned;
    emulator::Machine machine(image, machine_options);
    const emulator::ImageInUse in_use(machine);
    const auto begin = std::chrono::steady_clock::now();
    for (std::size_t i = 0; i < scripts_.size(); ++i) {
      const std::string difference =
          Difference(library_[i], RunForComparison(scripts_[i], &machine, options_.seed));
      if (!difference.empty()) {
        Complain(scripts_[i].name + ": loaded at " + sim::Hex(base, 8) + ": " + difference);
      }
    }
    const double seconds = Seconds(std::chrono::steady_clock::now() - begin);
    out_ << "loaded at " << sim::Hex(base, 8) << ": " << machine.Instructions() << " instructions, "
         << machine.DeepestStack() << " bytes of stack, " << seconds << " s" << std::endl;
  }

  // Leaves out one relocation after the other, in the scripts that load its word.
  void Relocations(const emulator::PeImage& image) {
    emulator::MachineOptions machine_options;
    machine_options.base = kOtherBase;
    emulator::Machine machine(image, machine_options);
    const emulator::ImageInUse in_use(machine);
    const std::size_t count = image.Relocations().size();
    std::vector<std::vector<std::size_t>> scripts_of(count);
    for (std::size_t i = 0; i < scripts_.size(); ++i) {
      machine.ForgetLoads();
      RunForComparison(scripts_[i], &machine, options_.seed);
      for (std::size_t k = 0; k < count; ++k) {
        if (machine.Loaded(image.Relocations()[k])) scripts_of[k].push_back(i);
      }
    }
    const std::optional<emulator::LinkerMap> map = emulator::LinkerMap::Beside(options_.image);
    std::size_t unused = 0;
    std::size_t unnoticed = 0;
    for (std::size_t k = 0; k < count; ++k) {
      std::vector<std::size_t>& scripts = scripts_of[k];
      // Short ones first: most notice at once.
      std::stable_sort(scripts.begin(), scripts.end(), [this](std::size_t a, std::size_t b) {
        return library_[a].trace.size() < library_[b].trace.size();
      });
      emulator::ImageInUse::LeaveOut(k);
      const bool noticed = std::any_of(scripts.begin(), scripts.end(), [&](std::size_t i) {
        return library_[i] != RunForComparison(scripts_[i], &machine, options_.seed);
      });
      if (noticed) continue;
      ++(scripts.empty() ? unused : unnoticed);
      out_ << "relocation " << k << " at image+" << sim::Hex(image.Relocations()[k], 4)
           << (map ? ", " + emulator::NameOfRelocation(*map, image, k) : "")
           << (scripts.empty() ? ": no script loads its word" : ": loaded, but no script needs it")
           << std::endl;
    }
    emulator::ImageInUse::LeaveOut({});
    out_ << count << " relocations: " << count - unused - unnoticed << " matter, " << unused
         << " belong to words that no script loads, " << unnoticed << " make no difference\n";
  }

  const CompareOptions& options_;
  std::ostream& out_;
  std::vector<script::Script> scripts_;  // each variant
  std::vector<ScriptOutcome> library_;   // of each
  std::size_t events_ = 0;
  unsigned differences_ = 0;
};

}  // namespace

ScriptOutcome RunForComparison(const script::Script& script, const emulator::Machine* machine,
                               std::uint64_t seed) {
  std::ostringstream trace;
  std::ostringstream out;
  std::ostringstream err;
  script::RunOptions options;
  options.quiet = true;
  options.trace = &trace;
  options.machine = machine;
  options.seed = seed;
  TerminalSurroundings around;
  ScriptOutcome outcome;
  outcome.status = script::RunScript(script, options, around, out, err);
  outcome.complaints = err.str();
  std::istringstream lines(trace.str());
  for (std::string line; std::getline(lines, line);) {
    outcome.trace.push_back(WithoutBuildTime(line));
  }
  return outcome;
}

std::string Difference(const ScriptOutcome& library, const ScriptOutcome& image) {
  const auto [ours, theirs] = std::mismatch(library.trace.begin(), library.trace.end(),
                                            image.trace.begin(), image.trace.end());
  const bool traces = ours != library.trace.end() || theirs != image.trace.end();
  if (!traces && library == image) return {};
  std::string text;
  if (traces) {
    text = "event " + std::to_string(ours - library.trace.begin() + 1) +
           ":\n  library: " + (ours == library.trace.end() ? "none" : *ours) +
           "\n  image:   " + (theirs == image.trace.end() ? "none" : *theirs);
  }
  if (library.status != image.status) {
    text += "\n  exit status: " + std::to_string(library.status) + " and " +
            std::to_string(image.status);
  }
  if (library.complaints != image.complaints) {
    text += "\n  complaints of the library: " + library.complaints +
            "\n  complaints of the image:   " + image.complaints;
  }
  return text;
}

int CompareImage(const CompareOptions& options, std::ostream& out, std::ostream& err) {
  try {
    return Comparison(options, out).Run();
  } catch (const std::exception& error) {
    err << "vexosim compare: " << error.what() << std::endl;
    return script::kExitWrong;
  }
}

}  // namespace vexosim
