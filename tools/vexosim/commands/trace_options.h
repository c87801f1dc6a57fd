// Options of the subcommands that read traces and captures, or write waveforms.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <functional>
#include <string>

#include "tools/vexosim/traces/capture_columns.h"
#include "tools/vexosim/traces/vcd_writer.h"

namespace vexosim {

// --column LINE=NAME[:low] and --hex.
void AddCaptureColumns(CLI::App& app, CaptureColumns& columns);

// --vcd FILE; with it --cycle-ns N.
struct VcdOptions {
  std::string file;  // empty: none is written
  std::uint32_t cycle_ns = kDefaultCycleNs;
};
CLI::Option* AddVcdFile(CLI::App& app, VcdOptions& vcd);
CLI::Option* AddCycleTime(CLI::App& app, std::uint32_t& ns, const std::string& help);
void AddVcd(CLI::App& app, VcdOptions& vcd);

// Runs what reads files; a file that cannot be used is told on standard error, and is kExitWrong.
int WithFiles(const std::function<int()>& run);

}  // namespace vexosim
