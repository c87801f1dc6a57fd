#include "tools/vexosim/commands/trace_options.h"

#include <iostream>

#include "files/exit_status.h"
#include "files/file_error.h"
#include "tools/vexosim/commands/options.h"

namespace vexosim {

void AddCaptureColumns(CLI::App& app, CaptureColumns& columns) {
  app.add_option_function<std::vector<std::string>>(
         "--column",
         [&columns](const std::vector<std::string>& assignments) {
           for (const std::string& assignment : assignments) {
             const std::string wrong = columns.Set(assignment);
             if (!wrong.empty()) throw CLI::ValidationError("--column", wrong);
           }
         },
         "What a line of the bus is called in a capture: select, address, data, write, read,\n"
         "enable_select, enable_address or enable_data; with :low it is active low")
      ->type_name("LINE=NAME[:low]")
      ->allow_extra_args(false);
  app.add_flag("--hex", columns.hexadecimal, "Numbers of a CSV without 0x are hexadecimal too");
}

CLI::Option* AddVcdFile(CLI::App& app, VcdOptions& vcd) {
  return app.add_option("--vcd", vcd.file, "Writes the bus as a waveform, for GTKWave and others")
      ->type_name("FILE.vcd")
      ->check(FileName());
}

CLI::Option* AddCycleTime(CLI::App& app, std::uint32_t& ns, const std::string& help) {
  return app.add_option("--cycle-ns", ns, help)
      ->type_name("N")
      ->transform(WholeNumber(kLeastCycleNs, kMostCycleNs));
}

void AddVcd(CLI::App& app, VcdOptions& vcd) {
  CLI::Option* const file = AddVcdFile(app, vcd);
  AddCycleTime(app, vcd.cycle_ns, "How long a bus cycle is in the waveform")
      ->capture_default_str()
      ->needs(file);
}

int WithFiles(const std::function<int()>& run) {
  try {
    return run();
  } catch (const files::FileError& error) {
    std::cout.flush();
    std::cerr << "vexosim: " << error.what() << std::endl;
    return files::kExitWrong;
  }
}

}  // namespace vexosim
