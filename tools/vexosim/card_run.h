// A program of a card run on the emulated device, with the simulated board.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "device/emulator/device.h"
#include "script/run_watch.h"
#include "script/trace_sink.h"

namespace vexosim {

struct CardRun {
  std::string card;                    // the folder that stands for the device's file system
  std::string program;                 // of it, "VexoCheck.exe" or a path on the device
  std::vector<std::string> arguments;  // of the program
  std::string script;                  // the board, and what happens; empty: the board as it is
  std::uint64_t seed = 0;
  std::uint32_t cycle_ns = 0;  // how much of the device's time a bus cycle takes
  emulator::DeviceOptions device;
  script::Limits limits;
  std::vector<script::TraceSink*> sinks;
};

// Runs it to its end, with its debug output and the titles of its windows on `out`. Returns
// kExitDone and tells its exit code, or kExitUnmet when it could not be loaded, did what no program
// may, or was ended.
int RunCard(const CardRun& run, std::ostream& out, std::ostream& err);

}  // namespace vexosim
