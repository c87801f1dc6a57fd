// The image against the linked library: the same script must give the same trace.
#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "device/emulator/machine.h"
#include "script/parse.h"

namespace vexosim {

// What a script's run gave: everything that an observer of the library could tell apart. The build
// time in the banner is left out.
struct ScriptOutcome {
  int status = 0;
  std::string complaints;          // expectations, faults and warnings
  std::vector<std::string> trace;  // JSON lines

  bool operator==(const ScriptOutcome&) const = default;
};

// Runs a script on the machine, or on the linked library. The machine's image must be in use.
ScriptOutcome RunForComparison(const script::Script& script, const emulator::Machine* machine,
                               std::uint64_t seed = 0);

// Where two outcomes differ, in words; empty when they do not.
std::string Difference(const ScriptOutcome& library, const ScriptOutcome& image);

struct CompareOptions {
  std::string image;
  std::vector<std::string> scripts;
  std::vector<std::uint32_t> bases;  // none: its own and another
  bool relocations = false;          // also: does each relocation matter?
  std::uint64_t seed = 0;            // chooses among threads that could run
};

// Runs every script, in each of its variants, on the library and on the image at each base. Prints
// what differs and a summary. Returns one of kExit....
int CompareImage(const CompareOptions& options, std::ostream& out, std::ostream& err);

}  // namespace vexosim
